// The engine's calls back into the library.
#pragma once

#include "rar/engine.h"

namespace morvunp::rar {

/// The engine calls `callback` while this lives.
class Callbacks {
 public:
  Callbacks(Engine& engine, Callback callback, void* userData) : m_engine(engine) {
    m_engine.SetCallback(callback, reinterpret_cast<LPARAM>(userData));
  }
  ~Callbacks() { m_engine.ClearCallback(); }
  Callbacks(const Callbacks&) = delete;
  Callbacks& operator=(const Callbacks&) = delete;

 private:
  Engine& m_engine;
};

/// The message for an answer of the engine, if it has one.
void ShowProblem(int code);

}  // namespace morvunp::rar

// The engine's module and its archive object.
#pragma once

#include <string>

#include "sevenzip/component.h"
#include "sevenzip/interfaces.h"

namespace morvunp::sevenzip {

/// Loads the engine for every open and unloads it with every close. A copy has
/// neither module nor archive: both are released once, by whoever made them.
class Engine {
 public:
  Engine() = default;
  ~Engine();
  Engine(const Engine&) : Engine() {}
  Engine& operator=(const Engine& other);

  /// Closes what is held, loads the engine and creates an archive object for
  /// the file at `path`, which is opened by nobody here. False when there is no
  /// usable engine.
  bool CreateArchive(const std::wstring& path);
  /// Closes and releases the archive object and unloads the engine. False when
  /// there was no archive object.
  bool CloseArchive();
  /// Null when none is held.
  IInArchive* Archive() const { return m_pArchive.Get(); }

 private:
  bool FreeEngine();

  ComPtr<IInArchive> m_pArchive;
  HMODULE m_hEngine = nullptr;
};

}  // namespace morvunp::sevenzip

// Functions of modules that are loaded at run time.
#pragma once

#include "morvunp/platform/platform.h"

namespace morvunp::frame {

/// The function of this name, of which only its user knows the type; null when
/// the module has none.
template <class Function>
Function FunctionOf(HMODULE module, LPCSTR name) {
  // By way of the type that stands for any function.
  return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

}  // namespace morvunp::frame

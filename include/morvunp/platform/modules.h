// Modules that are loaded at run time.
//
// A name without a folder is looked for beside this library first and then at
// the places that this system keeps the module at; the system's own search
// path plays no part.
#pragma once

#include "morvunp/platform/types.h"

struct HINSTANCE__;
using HMODULE = HINSTANCE__*;
using FARPROC = INT_PTR (*)();

/// Null when there is no such module or it cannot be loaded. A module stays in
/// memory also when every handle was freed.
MORVUNP_API HMODULE LoadLibraryW(LPCWSTR name);
/// Null when the module has no such function.
MORVUNP_API FARPROC GetProcAddress(HMODULE module, LPCSTR name);
MORVUNP_API BOOL FreeLibrary(HMODULE module);

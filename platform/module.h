// Finding and loading the engine module next to the executable.
#pragma once
#include <cstddef>

namespace platform {

using ModuleHandle = void*;

// File name of the engine module's kind on this platform, appended to the module's base name.
extern const char16_t kModuleSuffix[];

// Full path of the running executable into `buffer` (always terminated, cut to fit).
// Returns the number of units written, 0 on failure.
size_t executablePath(char16_t* buffer, size_t capacity);

// Null when the module cannot be loaded.
ModuleHandle loadModule(const char16_t* path);
// Address of an exported symbol, null when the module does not export it.
void* findSymbol(ModuleHandle module, const char* name);
void unloadModule(ModuleHandle module);

} // namespace platform

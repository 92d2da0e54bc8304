#include "platform/module.h"

#include "platform/windows/wide_text.h"

#include <windows.h>

namespace platform {

const char16_t kModuleSuffix[] = u".dll";

size_t executablePath(char16_t* buffer, size_t capacity) {
    if (capacity == 0) return 0;
    const DWORD limit = capacity > MAXDWORD ? MAXDWORD : static_cast<DWORD>(capacity);
    wchar_t* wide = reinterpret_cast<wchar_t*>(buffer);
    const DWORD length = GetModuleFileNameW(GetModuleHandleW(nullptr), wide, limit);
    if (length == 0) {
        buffer[0] = 0;
        return 0;
    }
    // A path that does not fit comes back cut to the buffer, and not always terminated.
    const size_t count = length < limit ? length : limit - 1;
    buffer[count] = 0;
    return count;
}

ModuleHandle loadModule(const char16_t* path) {
    // A module that is there but cannot be loaded must fail the call, not stop a console
    // program with a message box.
    DWORD previousMode = 0;
    const bool quiet = SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &previousMode);
    HMODULE module = LoadLibraryW(asWide(path));
    if (quiet) SetThreadErrorMode(previousMode, nullptr);
    return reinterpret_cast<ModuleHandle>(module);
}

void* findSymbol(ModuleHandle module, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

void unloadModule(ModuleHandle module) {
    if (module) FreeLibrary(static_cast<HMODULE>(module));
}

} // namespace platform

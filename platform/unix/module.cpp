#include "platform/module.h"

#include "common/unicode.h"

#include <dlfcn.h>
#include <unistd.h>

namespace platform {

const char16_t kModuleSuffix[] = u".so";

size_t executablePath(char16_t* buffer, size_t capacity) {
    if (capacity == 0) return 0;
    char path[4096];
    ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
    if (length <= 0) {
        buffer[0] = 0;
        return 0;
    }
    path[length] = 0;
    std::u16string wide = utf8ToUtf16(path);
    size_t count = wide.size() < capacity ? wide.size() : capacity - 1;
    wide.copy(buffer, count);
    buffer[count] = 0;
    return count;
}

ModuleHandle loadModule(const char16_t* path) {
    return dlopen(utf16ToUtf8(path).c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* findSymbol(ModuleHandle module, const char* name) { return dlsym(module, name); }

void unloadModule(ModuleHandle module) {
    if (module) dlclose(module);
}

} // namespace platform

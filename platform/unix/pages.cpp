#include "platform/pages.h"

#include <sys/mman.h>

namespace platform {

void* allocatePages(size_t bytes) {
    void* base = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return base == MAP_FAILED ? nullptr : base;
}

void releasePages(void* base, size_t bytes) {
    if (base) munmap(base, bytes);
}

} // namespace platform

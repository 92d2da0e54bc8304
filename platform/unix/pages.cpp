#include "platform/pages.h"

#include <sys/mman.h>

namespace platform {

// Large runs (scene bodies, mostly) are written through from end to end at once; huge pages
// spare them hundreds of faults per megabyte where the system grants them on request.
constexpr size_t kHugePageRun = size_t(4) << 20;

void* allocatePages(size_t bytes) {
    void* base = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (base == MAP_FAILED) return nullptr;
    if (bytes >= kHugePageRun) madvise(base, bytes, MADV_HUGEPAGE);
    return base;
}

void releasePages(void* base, size_t bytes) {
    if (base) munmap(base, bytes);
}

} // namespace platform

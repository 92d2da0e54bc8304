#include "platform/pages.h"

#include <sys/mman.h>

#include <cstdint>

namespace platform {

namespace {

constexpr size_t kPageSize = 4096;

// Large runs (scene bodies and geometry arrays, mostly) are written through from end to end at
// once; huge pages spare them hundreds of faults per megabyte where the system grants them on
// request. Such a run starts on a huge-page boundary, so that none of it falls outside them.
constexpr size_t kHugePageRun = size_t(4) << 20;
constexpr size_t kHugePage = size_t(2) << 20;

} // namespace

void* allocatePages(size_t bytes) {
    const bool huge = bytes >= kHugePageRun && bytes <= SIZE_MAX - kHugePage;
    const size_t reserved = huge ? bytes + kHugePage : bytes;
    void* mapping = mmap(nullptr, reserved, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) return nullptr;
    if (!huge) return mapping;
    const uintptr_t start = reinterpret_cast<uintptr_t>(mapping);
    const uintptr_t aligned = (start + kHugePage - 1) & ~uintptr_t(kHugePage - 1);
    const size_t length = (bytes + kPageSize - 1) & ~(kPageSize - 1);
    if (aligned > start) munmap(mapping, aligned - start);
    const uintptr_t end = start + reserved;
    if (end > aligned + length) munmap(reinterpret_cast<void*>(aligned + length), end - (aligned + length));
    void* base = reinterpret_cast<void*>(aligned);
    madvise(base, length, MADV_HUGEPAGE);
    return base;
}

void releasePages(void* base, size_t bytes) {
    if (base) munmap(base, bytes);
}

} // namespace platform

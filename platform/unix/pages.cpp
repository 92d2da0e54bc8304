#include "platform/pages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace platform {

namespace {

constexpr size_t kPageSize = 4096;

// Large runs (scene bodies and geometry arrays, mostly) are written through from end to end at
// once; huge pages spare them hundreds of faults per megabyte where the system grants them on
// request. Such a run starts on a huge-page boundary, so that none of it falls outside them.
constexpr size_t kHugePageRun = size_t(2) << 20;
constexpr size_t kHugePage = size_t(2) << 20;

// No address space holds a run longer than this; asking for more fails before any rounding.
constexpr size_t kLongestRun = SIZE_MAX / 2;

bool wantsHugePages(size_t bytes) { return bytes >= kHugePageRun; }

// The length a run of `bytes` is mapped with: large runs end on a huge-page boundary too, so
// that their last part is no run of small pages.
size_t mappedLength(size_t bytes) {
    const size_t unit = wantsHugePages(bytes) ? kHugePage : kPageSize;
    return (bytes + unit - 1) & ~(unit - 1);
}

void* mapRun(size_t bytes, size_t length) {
    if (!wantsHugePages(bytes)) {
        // Small runs are the pool's regions and tables, carved up in full soon after: their pages
        // are faulted in by the one call, which under a hypervisor costs a fraction of taking
        // each page's fault as it is first written.
        void* mapping =
            mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
        return mapping == MAP_FAILED ? nullptr : mapping;
    }
    // One huge page more than needed, so that a boundary lies within the first; the spare
    // pages before and after it go back at once.
    const size_t reserved = length + kHugePage;
    void* mapping = mmap(nullptr, reserved, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) return nullptr;
    const uintptr_t start = reinterpret_cast<uintptr_t>(mapping);
    const uintptr_t aligned = (start + kHugePage - 1) & ~uintptr_t(kHugePage - 1);
    if (aligned > start) munmap(mapping, aligned - start);
    const uintptr_t end = start + reserved;
    if (end > aligned + length) munmap(reinterpret_cast<void*>(aligned + length), end - (aligned + length));
    void* base = reinterpret_cast<void*>(aligned);
    madvise(base, length, MADV_HUGEPAGE);
    return base;
}

} // namespace

void* allocatePages(size_t bytes) {
    if (bytes == 0 || bytes > kLongestRun) return nullptr;
    const size_t length = mappedLength(bytes);
    if (!claimMemory(length)) return nullptr;
    void* base = mapRun(bytes, length);
    if (!base) unclaimMemory(length);
    return base;
}

void releasePages(void* base, size_t bytes) {
    if (!base) return;
    munmap(base, mappedLength(bytes));
    unclaimMemory(mappedLength(bytes));
}

uint64_t physicalMemory() {
    static const uint64_t bytes = [] {
        const long pages = sysconf(_SC_PHYS_PAGES), size = sysconf(_SC_PAGESIZE);
        return pages > 0 && size > 0 ? uint64_t(pages) * uint64_t(size) : UINT64_MAX;
    }();
    return bytes;
}

} // namespace platform

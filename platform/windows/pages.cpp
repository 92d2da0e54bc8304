#include "platform/pages.h"

#include <windows.h>

namespace platform {

namespace {

constexpr size_t kPageSize = 4096;

// No address space holds a run longer than this; asking for more fails before any rounding.
constexpr size_t kLongestRun = SIZE_MAX / 2;

// Large pages would need a privilege that a user's process does not hold, so every run is
// of small pages.
size_t mappedLength(size_t bytes) { return (bytes + kPageSize - 1) & ~(kPageSize - 1); }

} // namespace

void* allocatePages(size_t bytes) {
    if (bytes == 0 || bytes > kLongestRun) return nullptr;
    const size_t length = mappedLength(bytes);
    if (!claimMemory(length)) return nullptr;
    void* base = VirtualAlloc(nullptr, length, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (!base) unclaimMemory(length);
    return base;
}

void releasePages(void* base, size_t bytes) {
    if (!base) return;
    VirtualFree(base, 0, MEM_RELEASE);
    unclaimMemory(mappedLength(bytes));
}

uint64_t physicalMemory() {
    static const uint64_t bytes = [] {
        MEMORYSTATUSEX status;
        status.dwLength = sizeof status;
        return GlobalMemoryStatusEx(&status) && status.ullTotalPhys > 0 ? uint64_t(status.ullTotalPhys)
                                                                        : UINT64_MAX;
    }();
    return bytes;
}

} // namespace platform

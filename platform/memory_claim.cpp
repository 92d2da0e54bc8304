// The allowance of physical memory, the same on every platform: only the size of the machine
// comes from the system.
#include "platform/pages.h"

#include <atomic>

namespace platform {

namespace {

// Bytes claimed and not yet given back.
std::atomic<uint64_t> gClaimedBytes{0};

} // namespace

bool claimMemory(size_t bytes) {
    const uint64_t allowance = physicalMemory();
    uint64_t claimed = gClaimedBytes.load(std::memory_order_relaxed);
    do {
        if (bytes > allowance || claimed > allowance - bytes) return false;
    } while (!gClaimedBytes.compare_exchange_weak(claimed, claimed + bytes, std::memory_order_relaxed));
    return true;
}

void unclaimMemory(size_t bytes) { gClaimedBytes.fetch_sub(bytes, std::memory_order_relaxed); }

} // namespace platform

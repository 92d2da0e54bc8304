#include "memory/page_source.h"

#include "platform/pages.h"

#include <atomic>

namespace poolmem {
namespace {

// Both are constant-initialised, so they are valid before any static constructor runs.
std::atomic<uint32_t> gFailingRequests{0};
std::atomic<uint64_t> gOutstandingBytes{0};

bool consumeInjectedFailure() {
    uint32_t left = gFailingRequests.load(std::memory_order_relaxed);
    while (left != 0) {
        if (gFailingRequests.compare_exchange_weak(left, left - 1, std::memory_order_relaxed)) return true;
    }
    return false;
}

} // namespace

void* requestPages(size_t bytes) {
    if (consumeInjectedFailure()) return nullptr;
    void* base = platform::allocatePages(bytes);
    if (base) gOutstandingBytes.fetch_add(bytes, std::memory_order_relaxed);
    return base;
}

void returnPages(void* base, size_t bytes) {
    if (!base) return;
    platform::releasePages(base, bytes);
    gOutstandingBytes.fetch_sub(bytes, std::memory_order_relaxed);
}

void failNextPageRequests(uint32_t count) { gFailingRequests.store(count, std::memory_order_relaxed); }

uint64_t pageBytesOutstanding() { return gOutstandingBytes.load(std::memory_order_relaxed); }

} // namespace poolmem

#include "memory/page_source.h"

#include "platform/pages.h"

#include <atomic>

// Under the leak checker the pool's pages are a heap it does not know: memory of
// the C library that is referenced only from pool blocks would be reported as
// leaked. Registered as root regions, the pages are scanned for such references.
// (GCC names AddressSanitizer with a macro, clang through __has_feature.)
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define POOLMEM_LEAK_ROOTS 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define POOLMEM_LEAK_ROOTS 1
#endif
#ifdef POOLMEM_LEAK_ROOTS
#include <sanitizer/lsan_interface.h>
#endif

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

bool takeInjectedFailure() {
    return consumeInjectedFailure();
}

void* requestPages(size_t bytes) {
    if (consumeInjectedFailure()) return nullptr;
    void* base = platform::allocatePages(bytes);
    if (!base) return nullptr;
    gOutstandingBytes.fetch_add(bytes, std::memory_order_relaxed);
#ifdef POOLMEM_LEAK_ROOTS
    __lsan_register_root_region(base, bytes);
#endif
    return base;
}

void returnPages(void* base, size_t bytes) {
    if (!base) return;
#ifdef POOLMEM_LEAK_ROOTS
    __lsan_unregister_root_region(base, bytes);
#endif
    platform::releasePages(base, bytes);
    gOutstandingBytes.fetch_sub(bytes, std::memory_order_relaxed);
}

void failNextPageRequests(uint32_t count) {
    gFailingRequests.store(count, std::memory_order_relaxed);
}

uint64_t pageBytesOutstanding() {
    return gOutstandingBytes.load(std::memory_order_relaxed);
}

} // namespace poolmem

// The only way the pool reaches the operating system's pages, so that tests can
// make page requests fail and can see how much memory the pool still holds.
#pragma once
#include <cstddef>
#include <cstdint>

namespace poolmem {

// Committed, zero-filled pages; null on failure (real or injected).
void* requestPages(size_t bytes);
void returnPages(void* base, size_t bytes);

// The next `count` page requests fail, whatever their size.
void failNextPageRequests(uint32_t count);
// Uses up one injected failure, if any is left: for allocations that stand in for a page
// request without making one.
bool takeInjectedFailure();
// Bytes handed out by requestPages and not yet returned, over all pools.
uint64_t pageBytesOutstanding();

} // namespace poolmem

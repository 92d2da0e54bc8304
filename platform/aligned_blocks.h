// Aligned blocks of the C runtime, for what must stay outside the pool.
#pragma once
#include <cstddef>

namespace platform {

// Null on failure. `bytes` must be a whole number of `alignment` units.
void* allocateAligned(size_t alignment, size_t bytes);
// Only for blocks of allocateAligned; null is allowed.
void freeAligned(void* block);

} // namespace platform

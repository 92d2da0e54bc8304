// Whole pages straight from the operating system, committed and zeroed.
#pragma once
#include <cstddef>

namespace platform {

// Null on failure. The memory is readable, writable and zero-filled.
void* allocatePages(size_t bytes);
// `bytes` must be the size given to allocatePages.
void releasePages(void* base, size_t bytes);

} // namespace platform

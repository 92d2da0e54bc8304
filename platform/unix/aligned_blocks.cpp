#include "platform/aligned_blocks.h"

#include <cstdlib>

namespace platform {

void* allocateAligned(size_t alignment, size_t bytes) { return std::aligned_alloc(alignment, bytes); }

void freeAligned(void* block) { std::free(block); }

} // namespace platform

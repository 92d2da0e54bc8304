#include "platform/aligned_blocks.h"

#include <malloc.h>

namespace platform {

// The Windows C runtime has no aligned_alloc: its aligned blocks go back through their own free.
void* allocateAligned(size_t alignment, size_t bytes) { return _aligned_malloc(bytes, alignment); }

void freeAligned(void* block) { _aligned_free(block); }

} // namespace platform

// The process's allocation functions on top of the pool.
#include "memory/pool.h"
#include "memory/pool_internals.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// From this size up a block carries a back pointer and is aligned to 32, the
// layout the containers' deallocation of big blocks expects.
constexpr size_t kBigBlock = 4096;
#if TAVI_SANITIZER_BLOCKS
// A pool block is then exactly as long as asked and 64-aligned, so the back pointer and the
// alignment to 32 take exactly 32 bytes, and the block ends where the request does.
constexpr size_t kBigBlockSlack = 32;
#else
constexpr size_t kBigBlockSlack = 39; // back pointer plus the alignment to 32
#endif
constexpr uintptr_t kBigBlockAlignment = 32;
constexpr uintptr_t kPoolAlignment = 64;

void writeBackPointer(char* block, void* raw) {
    std::memcpy(block - sizeof raw, &raw, sizeof raw);
}

void* readBackPointer(const void* block) {
    void* raw;
    std::memcpy(&raw, static_cast<const char*>(block) - sizeof raw, sizeof raw);
    return raw;
}

// Places a block of `alignment` behind room for the back pointer in `raw`.
void* alignBehindBackPointer(void* raw, uintptr_t alignment) {
    uintptr_t address = reinterpret_cast<uintptr_t>(raw) + sizeof(void*);
    char* block =
        static_cast<char*>(raw) + (((address + alignment - 1) & ~(alignment - 1)) - address) + sizeof(void*);
    writeBackPointer(block, raw);
    return block;
}

// There is nothing to return a failure to; the process ends.
[[noreturn]] void outOfMemory(size_t size) {
    std::fprintf(stderr, "poolmem: out of memory, %zu bytes requested\n", size);
    std::abort();
}

[[noreturn]] void foreignPointer(const void* block) {
    std::fprintf(stderr, "poolmem: %p was not handed out by the pool\n", block);
    std::abort();
}

} // namespace

void* clientTryNew(size_t size) {
    if (size == 0) return nullptr;
    PoolAllocator* pool = poolInstance();
    if (size < kBigBlock) return poolAlloc(pool, size);
    if (size > SIZE_MAX - kBigBlockSlack) return nullptr;
    void* raw = poolAlloc(pool, size + kBigBlockSlack);
    return raw ? alignBehindBackPointer(raw, kBigBlockAlignment) : nullptr;
}

void* clientNew(size_t size) {
    void* block = clientTryNew(size);
    if (!block && size >= kBigBlock) outOfMemory(size);
    return block;
}

// A pool block is 64-aligned; a big block sits 32 bytes into one. The pool is
// not passed on: the block's header names the shard it goes back to.
void clientDelete(void* block) {
    if (!block) return;
    switch (reinterpret_cast<uintptr_t>(block) % kPoolAlignment) {
    case 0:
        poolFree(nullptr, block);
        break;
    case kBigBlockAlignment:
        poolFree(nullptr, readBackPointer(block));
        break;
    default:
        foreignPointer(block);
    }
}

void* clientAlignedNew(size_t size, size_t alignment) {
    PoolAllocator* pool = poolInstance();
    if (alignment <= kPoolAlignment) return poolAlloc(pool, size);
    if (size > SIZE_MAX - alignment - sizeof(void*)) return nullptr;
    void* raw = poolAlloc(pool, size + alignment + sizeof(void*) - 1);
    return raw ? alignBehindBackPointer(raw, alignment) : nullptr;
}

void clientAlignedDelete(void* block, size_t alignment) {
    if (!block) return;
    if (alignment <= kPoolAlignment) {
        clientDelete(block);
    } else {
        poolFree(nullptr, readBackPointer(block));
    }
}

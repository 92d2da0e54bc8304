// The structures of the block allocator. Internal to memory/ and its tests.
#pragma once
#include "memory/slab.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

struct PoolShard;

// A mapped region of a shard; the records come from the slab layer.
struct PoolRegion {
    void* base;
    uint64_t size;
    PoolRegion* next;
};
static_assert(sizeof(PoolRegion) == 24);

// The header in front of every block. Words 4 to 7 only keep the payload that
// follows on a 64-byte boundary.
struct PoolBlock {
    PoolBlock* prevPhysical; // 0 for the first block of a region
    uint64_t sizeAndFlags;   // payload size, kBlockAllocated, kBlockLast
    union {
        PoolBlock* prevFree; // while free: neighbour in the bin
        PoolShard* owner;    // while allocated: the shard it goes back to
    };
    PoolBlock* nextFree;
    uint64_t alignment[4];
};
static_assert(sizeof(PoolBlock) == 64);
static_assert(offsetof(PoolBlock, prevPhysical) == 0x00);
static_assert(offsetof(PoolBlock, sizeAndFlags) == 0x08);
static_assert(offsetof(PoolBlock, prevFree) == 0x10);
static_assert(offsetof(PoolBlock, owner) == 0x10);
static_assert(offsetof(PoolBlock, nextFree) == 0x18);

struct PoolShard {
    PoolRegion* regions;
    uint64_t reservedBytes; // sum of the region sizes
    uint64_t usedBytes;     // sum of the payloads handed out
    struct PoolAllocator* owner;
    std::atomic<uint64_t> lock;
    PoolBlock* bins[64];
};
static_assert(offsetof(PoolShard, regions) == 0x00);
static_assert(offsetof(PoolShard, reservedBytes) == 0x08);
static_assert(offsetof(PoolShard, usedBytes) == 0x10);
static_assert(offsetof(PoolShard, owner) == 0x18);
static_assert(offsetof(PoolShard, lock) == 0x20);
static_assert(offsetof(PoolShard, bins) == 0x28);

namespace poolmem {
constexpr unsigned kShardCount = 256;
constexpr unsigned kBinCount = 64;
constexpr uint64_t kBlockAllocated = uint64_t(1) << 63;
constexpr uint64_t kBlockLast = uint64_t(1) << 62;
constexpr uint64_t kBlockSizeMask = kBlockLast - 1;
constexpr uint64_t kHeaderSize = sizeof(PoolBlock);
constexpr uint64_t kMinPayload = 64;
constexpr uint64_t kSplitSlack = 192;
constexpr uint64_t kRegionPage = 4096;
constexpr uint64_t kMinRegionSize = uint64_t(1) << 20;
// Larger requests could not be told apart from the flag bits; no machine maps that much.
constexpr uint64_t kMaxRequest = kBlockSizeMask - 2 * kMinRegionSize;

inline uint64_t payloadOf(const PoolBlock* block) {
    return block->sizeAndFlags & kBlockSizeMask;
}
inline bool isAllocated(const PoolBlock* block) {
    return (block->sizeAndFlags & kBlockAllocated) != 0;
}
inline bool isLast(const PoolBlock* block) {
    return (block->sizeAndFlags & kBlockLast) != 0;
}
inline PoolBlock* followingBlock(const PoolBlock* block) {
    return reinterpret_cast<PoolBlock*>(reinterpret_cast<uintptr_t>(block + 1) + payloadOf(block));
}
// Bin b holds the payloads from 64 << b up to (128 << b) - 64.
inline unsigned binOf(uint64_t payload) {
    return 63u - static_cast<unsigned>(__builtin_clzll(payload / kMinPayload));
}
} // namespace poolmem

struct PoolAllocator {
    PoolAllocator();
    ~PoolAllocator();
    PoolAllocator(const PoolAllocator&) = delete;
    PoolAllocator& operator=(const PoolAllocator&) = delete;

    PoolShard shards[poolmem::kShardCount];
    poolmemThreadAllocator slabs[poolmem::kShardCount];
    // 0 while running, 1 once the process is exiting, 2 once a thread has taken
    // on the destruction, so that the pool is destroyed exactly once.
    std::atomic<uint8_t> exitPending{0};
    std::atomic<uint64_t> liveBlocks{0};
};

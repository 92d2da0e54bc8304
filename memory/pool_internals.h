// What tests, benchmarks and the global operators may see of the pool beyond
// pool.h: private pools, the exit rule, failure injection and read-only statistics.
#pragma once
#include "memory/pool.h"

#include <cstddef>
#include <cstdint>

// ---- Shards -------------------------------------------------------------------

// The mixing of a thread id; its low 8 bits pick the thread's shard.
uint32_t poolMixThreadId(uint32_t threadId);
unsigned poolCurrentShardIndex();

// ---- Pool lifetime --------------------------------------------------------------

// A pool of its own, apart from poolInstance(); for tests and benchmarks.
PoolAllocator* poolCreate();
// Unmaps the pool and everything in it, blocks still handed out included.
void poolDestroy(PoolAllocator* pool);
// What the process exit does to the global pool: the pool is destroyed now if no
// block is live (true), else by the poolFree that frees the last one.
bool poolBeginExit(PoolAllocator* pool);

// ---- Failure injection ---------------------------------------------------------

// The next `count` requests for pages (pool objects, block regions, slab regions) fail.
void poolFailNextPageRequests(uint32_t count);
// Bytes of pages that all pools together hold now.
uint64_t poolPageBytesOutstanding();

// ---- Statistics ------------------------------------------------------------------

uint64_t poolLiveBlocks(const PoolAllocator* pool);

struct PoolShardStats {
    uint64_t reservedBytes;
    uint64_t usedBytes;
    uint32_t regionCount;
    uint32_t freeBlocks;
    uint64_t freeBytes; // sum of free payloads
    uint64_t largestFreePayload;
};
// Taken under the shard's lock.
PoolShardStats poolShardStats(PoolAllocator* pool, unsigned shard);
// The bin whose list holds the free block at `payload`, -1 if no bin holds it.
int poolFreeBlockBin(PoolAllocator* pool, unsigned shard, const void* payload);
const void* poolShardAddress(const PoolAllocator* pool, unsigned shard);

// The first four words of the header in front of `payload`.
struct PoolBlockWords {
    uint64_t prevPhysical;
    uint64_t sizeAndFlags;
    uint64_t link; // the owning shard while allocated, the previous free block while free
    uint64_t nextFree;
};
PoolBlockWords poolBlockWords(const void* payload);
constexpr uint64_t kPoolBlockAllocatedBit = uint64_t(1) << 63;
constexpr uint64_t kPoolBlockLastBit = uint64_t(1) << 62;
constexpr uint64_t kPoolBlockSizeMask = kPoolBlockLastBit - 1;

// Walks every region and bin of a shard under its lock and checks that they agree:
// the physical chain, the flags, the bins, no two free neighbours, the counters.
// Null when all is well, else what is wrong.
const char* poolCheckShard(PoolAllocator* pool, unsigned shard);

// ---- Client allocation -----------------------------------------------------------

// clientNew without the process end: null when the memory cannot be had.
void* clientTryNew(size_t size);
// Memory aligned to `alignment` (a power of two), freed by clientAlignedDelete with
// the same alignment. Up to 64 the pool's own alignment serves and clientDelete
// can free it too.
void* clientAlignedNew(size_t size, size_t alignment);
void clientAlignedDelete(void* block, size_t alignment);

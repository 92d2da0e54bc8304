// Read-only views of the pool and the failure hook, for tests and benchmarks.
#include "memory/page_source.h"
#include "memory/pool_internals.h"
#include "memory/pool_layout.h"
#include "memory/spin_lock.h"

using namespace poolmem;

namespace {

const char* endOf(const PoolBlock* block) {
    return reinterpret_cast<const char*>(followingBlock(block));
}

// Walks one region; counts what it finds into the totals.
const char* checkRegion(const PoolShard& shard, const PoolRegion& region, uint64_t& used,
                        uint64_t& freeBlocks) {
    const char* end = static_cast<const char*>(region.base) + region.size;
    const PoolBlock* prev = nullptr;
    for (const PoolBlock* block = static_cast<const PoolBlock*>(region.base);;) {
        if (block->prevPhysical != prev) return "a block does not point back at its physical predecessor";
        uint64_t payload = payloadOf(block);
        if (payload < kMinPayload || payload % kMinPayload != 0) return "a payload is not a multiple of 64";
        if (endOf(block) > end) return "a block runs past the end of its region";
        if (isAllocated(block)) {
            if (block->owner != &shard) return "an allocated block names another shard";
            used += payload;
        } else {
            if (prev && !isAllocated(prev)) return "two free blocks are neighbours";
            ++freeBlocks;
        }
        if (isLast(block)) return endOf(block) == end ? nullptr : "the last block does not end the region";
        if (endOf(block) == end) return "the block that ends the region is not flagged last";
        prev = block;
        block = reinterpret_cast<const PoolBlock*>(endOf(block));
    }
}

} // namespace

void poolFailNextPageRequests(uint32_t count) {
    failNextPageRequests(count);
}
uint64_t poolPageBytesOutstanding() {
    return pageBytesOutstanding();
}

uint64_t poolLiveBlocks(const PoolAllocator* pool) {
    return pool->liveBlocks.load();
}

const void* poolShardAddress(const PoolAllocator* pool, unsigned shard) {
    return &pool->shards[shard];
}

PoolShardStats poolShardStats(PoolAllocator* pool, unsigned index) {
    PoolShard& shard = pool->shards[index];
    SpinGuard<uint64_t> guard(shard.lock);
    PoolShardStats stats{shard.reservedBytes, shard.usedBytes, 0, 0, 0, 0};
    for (const PoolRegion* region = shard.regions; region; region = region->next)
        ++stats.regionCount;
    for (const PoolBlock* head : shard.bins) {
        for (const PoolBlock* block = head; block; block = block->nextFree) {
            ++stats.freeBlocks;
            stats.freeBytes += payloadOf(block);
            if (payloadOf(block) > stats.largestFreePayload) stats.largestFreePayload = payloadOf(block);
        }
    }
    return stats;
}

int poolFreeBlockBin(PoolAllocator* pool, unsigned index, const void* payload) {
    PoolShard& shard = pool->shards[index];
    SpinGuard<uint64_t> guard(shard.lock);
    const PoolBlock* wanted = static_cast<const PoolBlock*>(payload) - 1;
    for (unsigned bin = 0; bin < kBinCount; ++bin) {
        for (const PoolBlock* block = shard.bins[bin]; block; block = block->nextFree) {
            if (block == wanted) return static_cast<int>(bin);
        }
    }
    return -1;
}

PoolBlockWords poolBlockWords(const void* payload) {
    const PoolBlock* block = static_cast<const PoolBlock*>(payload) - 1;
    return PoolBlockWords{reinterpret_cast<uintptr_t>(block->prevPhysical), block->sizeAndFlags,
                          reinterpret_cast<uintptr_t>(block->prevFree),
                          reinterpret_cast<uintptr_t>(block->nextFree)};
}

const char* poolCheckShard(PoolAllocator* pool, unsigned index) {
    PoolShard& shard = pool->shards[index];
    SpinGuard<uint64_t> guard(shard.lock);
    uint64_t used = 0, freeInRegions = 0, reserved = 0;
    for (const PoolRegion* region = shard.regions; region; region = region->next) {
        if (const char* fault = checkRegion(shard, *region, used, freeInRegions)) return fault;
        reserved += region->size;
    }
    if (reserved != shard.reservedBytes) return "reservedBytes is not the sum of the region sizes";
    if (used != shard.usedBytes) return "usedBytes is not the sum of the allocated payloads";
    uint64_t freeInBins = 0;
    for (unsigned bin = 0; bin < kBinCount; ++bin) {
        const PoolBlock* prev = nullptr;
        for (const PoolBlock* block = shard.bins[bin]; block; block = block->nextFree) {
            if (++freeInBins > freeInRegions) return "the bins hold more blocks than the regions";
            if (isAllocated(block)) return "an allocated block is in a bin";
            if (binOf(payloadOf(block)) != bin) return "a free block is in the wrong bin";
            if (block->prevFree != prev) return "a bin's back link is broken";
            prev = block;
        }
    }
    if (freeInBins != freeInRegions) return "a free block is missing from the bins";
    return nullptr;
}

// The block allocator: 256 shards of binned free lists over 1 MiB regions.
#include "memory/pool.h"

#include "memory/page_source.h"
#include "memory/pool_internals.h"
#include "memory/pool_layout.h"
#include "memory/spin_lock.h"
#include "platform/pages.h"
#include "platform/thread.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#if TAVI_SANITIZER_BLOCKS
#include <sanitizer/asan_interface.h>
#endif

using namespace poolmem;

namespace {

// Constant-initialised, so the pool can be created from any static constructor.
std::atomic<PoolAllocator*> gPool{nullptr};
std::atomic<uint32_t> gInstanceLock{0};
bool gExitHandlerRegistered = false; // guarded by gInstanceLock
std::atomic<bool> gProcessExiting{false};

constexpr size_t kPoolObjectBytes = (sizeof(PoolAllocator) + kRegionPage - 1) & ~(kRegionPage - 1);

// The thread id cannot change while the thread lives, so its shard is worked out
// once. (A forked child keeps its parent's shard; any shard would do.)
thread_local unsigned tShardPlusOne = 0;

void pushFree(PoolShard* shard, PoolBlock* block) {
    PoolBlock*& head = shard->bins[binOf(payloadOf(block))];
    block->prevFree = nullptr;
    block->nextFree = head;
    if (head) head->prevFree = block;
    head = block;
}

void unlinkFree(PoolShard* shard, PoolBlock* block) {
    if (block->prevFree) {
        block->prevFree->nextFree = block->nextFree;
    } else {
        shard->bins[binOf(payloadOf(block))] = block->nextFree;
    }
    if (block->nextFree) block->nextFree->prevFree = block->prevFree;
}

PoolBlock* findFit(PoolShard* shard, uint64_t size, unsigned bin) {
    for (; bin < kBinCount; ++bin) {
        for (PoolBlock* block = shard->bins[bin]; block; block = block->nextFree) {
            if (payloadOf(block) >= size) return block;
        }
    }
    return nullptr;
}

// Gives a block back to its shard, merging it with free neighbours; the shard is
// locked. The allocated flag goes first, so that the header of a block that is
// merged away never again looks allocated and a late second free is ignored.
void releaseLocked(PoolShard* shard, PoolBlock* block) {
    if (!isAllocated(block)) return;
    uint64_t payload = payloadOf(block);
    shard->usedBytes -= payload;
    block->sizeAndFlags &= ~kBlockAllocated;
    if (!isLast(block)) {
        PoolBlock* next = followingBlock(block);
        if (!isAllocated(next)) {
            unlinkFree(shard, next);
            block->sizeAndFlags =
                (payload + kHeaderSize + payloadOf(next)) | (next->sizeAndFlags & kBlockLast);
            if (!isLast(block)) followingBlock(block)->prevPhysical = block;
        }
    }
    PoolBlock* prev = block->prevPhysical;
    if (prev && !isAllocated(prev)) {
        unlinkFree(shard, prev);
        prev->sizeAndFlags =
            (payloadOf(prev) + kHeaderSize + payloadOf(block)) | (block->sizeAndFlags & kBlockLast);
        if (!isLast(prev)) followingBlock(prev)->prevPhysical = prev;
        block = prev;
    }
    pushFree(shard, block);
}

// A region big enough for `size`, entered as one free block; the shard is locked.
bool addRegion(PoolAllocator* pool, PoolShard* shard, unsigned index, uint64_t size) {
    uint64_t regionSize = (size + kHeaderSize + kRegionPage - 1) & ~(kRegionPage - 1);
    if (regionSize < kMinRegionSize) regionSize = kMinRegionSize;
    void* record = pool->slabs[index].allocate();
    if (!record) return false;
    void* base = requestPages(regionSize);
    if (!base) {
        poolmemThreadAllocator::release(record);
        return false;
    }
    shard->regions = new (record) PoolRegion{base, regionSize, shard->regions};
    shard->reservedBytes += regionSize;
    PoolBlock* block = static_cast<PoolBlock*>(base);
    uint64_t payload = regionSize - kHeaderSize;
    block->prevPhysical = nullptr;
    block->sizeAndFlags = payload | kBlockAllocated | kBlockLast;
    block->owner = shard;
    shard->usedBytes += payload; // taken back by the release below
    releaseLocked(shard, block);
    return true;
}

// Leaves `size` bytes of payload in `block` and enters the rest as a free block.
void split(PoolShard* shard, PoolBlock* block, uint64_t size) {
    PoolBlock* rest = reinterpret_cast<PoolBlock*>(reinterpret_cast<char*>(block + 1) + size);
    rest->prevPhysical = block;
    rest->sizeAndFlags = (payloadOf(block) - size - kHeaderSize) | (block->sizeAndFlags & kBlockLast);
    block->sizeAndFlags = size | (block->sizeAndFlags & kBlockAllocated);
    if (!isLast(rest)) followingBlock(rest)->prevPhysical = rest;
    pushFree(shard, rest);
}

void destroyPool(PoolAllocator* pool) {
    PoolAllocator* expected = pool;
    gPool.compare_exchange_strong(expected, nullptr);
    pool->~PoolAllocator();
    returnPages(pool, kPoolObjectBytes);
}

// Whoever moves exitPending from 1 to 2 destroys the pool; nobody else may.
bool destroyIfClaimed(PoolAllocator* pool) {
    uint8_t pending = 1;
    if (!pool->exitPending.compare_exchange_strong(pending, 2)) return false;
    destroyPool(pool);
    return true;
}

void onProcessExit() {
    gProcessExiting.store(true);
    spinAcquire(gInstanceLock);
    PoolAllocator* pool = gPool.load();
    spinRelease(gInstanceLock);
    if (pool) poolBeginExit(pool);
}

} // namespace

// ---- Pool object --------------------------------------------------------------

PoolAllocator::PoolAllocator() {
    for (PoolShard& shard : shards) {
        shard.regions = nullptr;
        shard.reservedBytes = 0;
        shard.usedBytes = 0;
        shard.owner = this;
        shard.lock.store(0);
        for (PoolBlock*& head : shard.bins)
            head = nullptr;
    }
}

// Region records go back to the slab layer before the slab allocators (members)
// are flushed by their destructors.
PoolAllocator::~PoolAllocator() {
    for (PoolShard& shard : shards) {
        for (PoolRegion* region = shard.regions; region;) {
            PoolRegion* next = region->next;
            returnPages(region->base, region->size);
            poolmemThreadAllocator::release(region);
            region = next;
        }
        shard.regions = nullptr;
    }
}

uint32_t poolMixThreadId(uint32_t a) {
    a -= a << 6;
    a ^= a >> 17;
    a -= a << 9;
    a ^= a << 4;
    a -= a << 3;
    a ^= a << 10;
    a ^= a >> 15;
    return a;
}

unsigned poolCurrentShardIndex() {
    if (tShardPlusOne == 0) tShardPlusOne = (poolMixThreadId(platform::currentThreadId()) & 0xFF) + 1;
    return tShardPlusOne - 1;
}

PoolAllocator* poolCreate() {
    void* memory = requestPages(kPoolObjectBytes);
    return memory ? new (memory) PoolAllocator() : nullptr;
}

void poolDestroy(PoolAllocator* pool) {
    if (pool) destroyPool(pool);
}

bool poolBeginExit(PoolAllocator* pool) {
    uint8_t running = 0;
    pool->exitPending.compare_exchange_strong(running, 1);
    return pool->liveBlocks.load() == 0 && destroyIfClaimed(pool);
}

PoolAllocator* poolInstance() {
    PoolAllocator* pool = gPool.load(std::memory_order_acquire);
    if (pool) return pool;
    SpinGuard<uint32_t> guard(gInstanceLock);
    pool = gPool.load(std::memory_order_relaxed);
    if (pool) return pool;
    pool = poolCreate();
    if (!pool) return nullptr;
    if (gProcessExiting.load()) {
        pool->exitPending.store(1); // made after the exit handler ran: dies with its last block
    } else if (!gExitHandlerRegistered) {
        gExitHandlerRegistered = std::atexit(onProcessExit) == 0;
    }
    gPool.store(pool, std::memory_order_release);
    return pool;
}

// ---- Blocks of the sanitizer's own -------------------------------------------
// Carved from regions, blocks sit between other blocks of pool memory that the address
// sanitizer takes to be in use: an overrun of a block, or a read of one already freed,
// goes unseen. Built with TAVI_SANITIZER_BLOCKS, every block is an allocation of the
// C runtime instead, which the sanitizer fences with redzones and holds in quarantine
// once freed. The 64 bytes in front name the owning pool, so that the live count stays
// right; they and the rounding behind the requested bytes are poisoned.

#if TAVI_SANITIZER_BLOCKS
namespace {

constexpr uint64_t kSanitizerHeadBytes = 64;
constexpr uint64_t kSanitizerBlockMark = 0x7361626C6F636B73; // what no other head holds

struct SanitizerBlockHead {
    PoolAllocator* owner;
    uint64_t mark;
    uint64_t claimed; // bytes of the machine's memory, as the pool of regions claims them
};

SanitizerBlockHead* headOf(void* payload) {
    return reinterpret_cast<SanitizerBlockHead*>(static_cast<char*>(payload) - kSanitizerHeadBytes);
}

void* sanitizerAlloc(PoolAllocator* pool, uint64_t requested) {
    // A pool request this large would always map a region of its own, so it stands for the
    // page request that failure injection counts.
    if (requested + kHeaderSize >= kMinRegionSize && takeInjectedFailure()) return nullptr;
    const uint64_t rounded = (kSanitizerHeadBytes + requested + kMinPayload - 1) & ~(kMinPayload - 1);
    // What the machine cannot hold is refused here as the pool of regions refuses it, rather
    // than by the sanitizer, which ends the process on an allocation it cannot serve.
    if (!platform::claimMemory(rounded)) return nullptr;
    void* raw = std::aligned_alloc(kMinPayload, rounded);
    if (!raw) {
        platform::unclaimMemory(rounded);
        return nullptr;
    }
    const SanitizerBlockHead head{pool, kSanitizerBlockMark, rounded};
    std::memcpy(raw, &head, sizeof head);
    char* payload = static_cast<char*>(raw) + kSanitizerHeadBytes;
    ASAN_POISON_MEMORY_REGION(raw, kSanitizerHeadBytes);
    ASAN_POISON_MEMORY_REGION(payload + requested, rounded - kSanitizerHeadBytes - requested);
    pool->liveBlocks.fetch_add(1);
    return payload;
}

void sanitizerFree(void* payload) {
    SanitizerBlockHead* head = headOf(payload);
    ASAN_UNPOISON_MEMORY_REGION(head, kSanitizerHeadBytes);
    SanitizerBlockHead copy;
    std::memcpy(&copy, head, sizeof copy);
    if (copy.mark != kSanitizerBlockMark) {
        std::fprintf(stderr, "poolmem: %p was not handed out by the pool\n", payload);
        std::abort();
    }
    // The sanitizer reports a second free of the same block here, where the pool of regions
    // would have let it pass.
    std::free(head);
    platform::unclaimMemory(copy.claimed);
    PoolAllocator* owner = copy.owner;
    if (owner->liveBlocks.fetch_sub(1) == 1 && owner->exitPending.load() == 1) destroyIfClaimed(owner);
}

} // namespace
#endif

// ---- Allocation ---------------------------------------------------------------

void* poolAlloc(PoolAllocator* pool, size_t requested) {
    if (!pool || requested > kMaxRequest) return nullptr;
#if TAVI_SANITIZER_BLOCKS
    return sanitizerAlloc(pool, requested);
#endif
    uint64_t size = (uint64_t(requested) + 3) & ~uint64_t(3);
    unsigned bin = 0;
    if (size < kMinPayload) {
        size = kMinPayload;
    } else {
        size = (size + kMinPayload - 1) & ~(kMinPayload - 1);
        bin = binOf(size);
    }
    unsigned index = poolCurrentShardIndex();
    PoolShard* shard = &pool->shards[index];
    spinAcquire(shard->lock);
    PoolBlock* block = findFit(shard, size, bin);
    if (!block && addRegion(pool, shard, index, size)) block = findFit(shard, size, bin);
    if (!block) {
        spinRelease(shard->lock);
        return nullptr;
    }
    unlinkFree(shard, block);
    if (size + kSplitSlack <= payloadOf(block)) split(shard, block, size);
    block->sizeAndFlags |= kBlockAllocated;
    block->owner = shard;
    shard->usedBytes += payloadOf(block);
    spinRelease(shard->lock);
    pool->liveBlocks.fetch_add(1);
    return block + 1;
}

// The block goes back to the shard in its header, not to the caller's shard; the
// `pool` argument is not needed for that and may even be null.
void poolFree(PoolAllocator*, void* payload) {
    if (!payload) return;
#if TAVI_SANITIZER_BLOCKS
    sanitizerFree(payload);
    return;
#endif
    PoolBlock* block = static_cast<PoolBlock*>(payload) - 1;
    if (!isAllocated(block)) return;
    PoolShard* shard = block->owner;
    PoolAllocator* owner = shard->owner;
    spinAcquire(shard->lock);
    bool released = isAllocated(block);
    releaseLocked(shard, block);
    spinRelease(shard->lock);
    if (!released) return;
    if (owner->liveBlocks.fetch_sub(1) == 1 && owner->exitPending.load() == 1) destroyIfClaimed(owner);
}

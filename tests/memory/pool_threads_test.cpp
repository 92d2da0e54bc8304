// The pool under several threads: the owning shard of a block, and a churn of
// allocations and frees across threads with the contents checked.
#include "memory/pool_internals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace {

// Runs `work` on a new thread whose shard differs from `avoid`; a thread whose id
// happens to mix to the same shard is simply passed over. Returns its shard.
template <class Work> unsigned runOnOtherShard(unsigned avoid, Work work) {
    for (int attempt = 0; attempt < 64; ++attempt) {
        unsigned shard = 0;
        bool done = false;
        std::thread([&] {
            shard = poolCurrentShardIndex();
            if (shard == avoid) return;
            work();
            done = true;
        }).join();
        if (done) return shard;
    }
    ADD_FAILURE() << "no thread found on another shard";
    return avoid;
}

TEST(PoolThreads, BlockFreedOnAnotherThreadGoesBackToItsOwnersShard) {
    for (bool workerAllocates : {true, false}) {
        PoolAllocator* pool = poolCreate();
        const unsigned mainShard = poolCurrentShardIndex();
        void* block = nullptr;
        uintptr_t link = 0;
        uint64_t used = 0;
        auto allocate = [&] {
            block = poolAlloc(pool, 3000);
            link = poolBlockWords(block).link;
            used = poolShardStats(pool, poolCurrentShardIndex()).usedBytes;
        };
        if (!workerAllocates) allocate();
        const unsigned otherShard = runOnOtherShard(mainShard, [&] {
            if (workerAllocates)
                allocate();
            else
                poolFree(pool, block);
        });
        const unsigned ownerShard = workerAllocates ? otherShard : mainShard;
        if (workerAllocates) poolFree(pool, block);
        const PoolShardStats owner = poolShardStats(pool, ownerShard);
        const PoolShardStats freeing = poolShardStats(pool, workerAllocates ? mainShard : otherShard);
        EXPECT_EQ(link, reinterpret_cast<uintptr_t>(poolShardAddress(pool, ownerShard))) << workerAllocates;
        EXPECT_EQ(used, 3008u) << workerAllocates;
        EXPECT_EQ(owner.usedBytes, 0u) << workerAllocates;
        EXPECT_EQ(owner.freeBlocks, 1u) << workerAllocates;
        EXPECT_EQ(owner.largestFreePayload, (uint64_t(1) << 20) - 64) << workerAllocates;
        EXPECT_EQ(freeing.reservedBytes + freeing.freeBlocks, 0u)
            << "the freeing thread's shard is not touched";
        EXPECT_EQ(poolLiveBlocks(pool), 0u) << workerAllocates;
        poolDestroy(pool);
    }
}

// Each thread keeps slots of blocks filled with a byte pattern of its own; now
// and then it hands a block to a common exchange, from which any thread takes
// and frees it, so frees cross shards all the time.
TEST(PoolThreads, ConcurrentChurnKeepsContentsAndShardsIntact) {
    constexpr int kThreads = 4, kSteps = 30000, kSlots = 128;
    const size_t kSizes[] = {16, 24, 40, 64, 100, 256, 560, 1024, 3000, 0x1200, 0x3350, 70000};
    struct Block {
        unsigned char* data = nullptr;
        size_t size = 0;
        unsigned char fill = 0;
    };
    PoolAllocator* pool = poolCreate();
    ASSERT_NE(pool, nullptr);
    std::mutex exchangeLock;
    std::vector<Block> exchange;
    exchange.reserve(kThreads * kSteps);
    std::atomic<int> faults{0}; // corrupt contents or failed requests
    auto release = [&](const Block& b) {
        faults += !std::all_of(b.data, b.data + b.size, [&](unsigned char c) { return c == b.fill; });
        poolFree(pool, b.data);
    };
    auto worker = [&](int id) {
        std::mt19937 random(77 + id);
        Block slots[kSlots];
        for (int step = 0; step < kSteps; ++step) {
            Block& slot = slots[random() % kSlots];
            if (slot.data) {
                if (random() % 4 == 0) {
                    std::lock_guard<std::mutex> guard(exchangeLock);
                    exchange.push_back(slot);
                } else {
                    release(slot);
                }
                slot = Block{};
                continue;
            }
            const size_t size = kSizes[random() % std::size(kSizes)] - random() % 8;
            auto* data = static_cast<unsigned char*>(poolAlloc(pool, size));
            faults += !data;
            if (!data) continue;
            slot = Block{data, size, static_cast<unsigned char>(id * 61 + step)};
            std::memset(data, slot.fill, size);
            Block taken{};
            if (step % 3 == 0) {
                std::lock_guard<std::mutex> guard(exchangeLock);
                if (!exchange.empty()) {
                    taken = exchange.back();
                    exchange.pop_back();
                }
            }
            release(taken);
        }
        for (const Block& slot : slots)
            release(slot);
    };
    std::vector<std::thread> threads;
    for (int id = 0; id < kThreads; ++id)
        threads.emplace_back(worker, id);
    for (std::thread& thread : threads)
        thread.join();
    for (const Block& b : exchange)
        release(b);
    EXPECT_EQ(faults.load(), 0);
    EXPECT_EQ(poolLiveBlocks(pool), 0u);
    for (unsigned shard = 0; shard < 256; ++shard) {
        const char* fault = poolCheckShard(pool, shard);
        EXPECT_EQ(fault, nullptr) << "shard " << shard << ": " << fault;
        const PoolShardStats s = poolShardStats(pool, shard);
        EXPECT_EQ(s.usedBytes, 0u) << shard;
        EXPECT_EQ(s.freeBlocks, s.regionCount) << shard << ": every region merged back to one block";
    }
    poolDestroy(pool);
}

} // namespace

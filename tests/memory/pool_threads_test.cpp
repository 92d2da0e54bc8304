// The pool under several threads: the owning shard of a block, and a churn of
// allocations and frees across threads with the contents checked.
#include "memory/pool_internals.h"

#include <gtest/gtest.h>

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
    enum Direction { WorkerAllocatesMainFrees, MainAllocatesWorkerFrees };
    for (Direction direction : {WorkerAllocatesMainFrees, MainAllocatesWorkerFrees}) {
        PoolAllocator* pool = poolCreate();
        ASSERT_NE(pool, nullptr);
        unsigned mainShard = poolCurrentShardIndex();
        void* block = nullptr;
        unsigned ownerShard = mainShard, otherShard = 0;
        if (direction == WorkerAllocatesMainFrees) {
            ownerShard = otherShard = runOnOtherShard(mainShard, [&] { block = poolAlloc(pool, 3000); });
        } else {
            block = poolAlloc(pool, 3000);
        }
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(poolBlockWords(block).link,
                  reinterpret_cast<uintptr_t>(poolShardAddress(pool, ownerShard)));
        EXPECT_EQ(poolShardStats(pool, ownerShard).usedBytes, 3008u);

        if (direction == WorkerAllocatesMainFrees) {
            poolFree(pool, block);
        } else {
            otherShard = runOnOtherShard(mainShard, [&] { poolFree(pool, block); });
        }
        unsigned freeingShard = direction == WorkerAllocatesMainFrees ? mainShard : otherShard;
        PoolShardStats owner = poolShardStats(pool, ownerShard);
        PoolShardStats freeing = poolShardStats(pool, freeingShard);
        EXPECT_EQ(owner.usedBytes, 0u) << direction;
        EXPECT_EQ(owner.freeBlocks, 1u) << direction;
        EXPECT_EQ(owner.largestFreePayload, (uint64_t(1) << 20) - 64) << direction;
        EXPECT_EQ(freeing.reservedBytes, 0u) << direction << ": the freeing thread's shard is not touched";
        EXPECT_EQ(freeing.freeBlocks, 0u) << direction;
        EXPECT_EQ(poolLiveBlocks(pool), 0u) << direction;
        poolDestroy(pool);
    }
}

// Each thread keeps slots of blocks filled with a byte pattern of its own; now
// and then it hands a block to a common exchange, from which any thread takes
// and frees it, so frees cross shards all the time.
TEST(PoolThreads, ConcurrentChurnKeepsContentsAndShardsIntact) {
    constexpr int kThreads = 4;
    constexpr int kSteps = 30000;
    constexpr int kSlots = 128;
    const size_t kSizes[] = {16, 24, 40, 64, 100, 256, 560, 1024, 3000, 0x1200, 0x3350, 70000};

    struct Block {
        unsigned char* data = nullptr;
        size_t size = 0;
        unsigned char fill = 0;
    };
    auto intact = [](const Block& b) {
        for (size_t i = 0; i < b.size; ++i) {
            if (b.data[i] != b.fill) return false;
        }
        return true;
    };

    PoolAllocator* pool = poolCreate();
    ASSERT_NE(pool, nullptr);
    std::mutex exchangeLock;
    std::vector<Block> exchange;
    exchange.reserve(kThreads * kSteps);
    std::atomic<int> corrupt{0}, failed{0};

    auto worker = [&](int id) {
        std::mt19937 random(77 + id);
        Block slots[kSlots];
        for (int step = 0; step < kSteps; ++step) {
            Block& slot = slots[random() % kSlots];
            if (slot.data) {
                if (!intact(slot)) ++corrupt;
                if (random() % 4 == 0) {
                    std::lock_guard<std::mutex> guard(exchangeLock);
                    exchange.push_back(slot);
                } else {
                    poolFree(pool, slot.data);
                }
                slot = Block{};
                continue;
            }
            size_t size = kSizes[random() % std::size(kSizes)] - random() % 8;
            slot.data = static_cast<unsigned char*>(poolAlloc(pool, size));
            if (!slot.data) {
                ++failed;
                continue;
            }
            slot.size = size;
            slot.fill = static_cast<unsigned char>(id * 61 + step);
            std::memset(slot.data, slot.fill, size);
            if (step % 3 == 0) {
                Block taken{};
                {
                    std::lock_guard<std::mutex> guard(exchangeLock);
                    if (!exchange.empty()) {
                        taken = exchange.back();
                        exchange.pop_back();
                    }
                }
                if (taken.data) {
                    if (!intact(taken)) ++corrupt;
                    poolFree(pool, taken.data);
                }
            }
        }
        for (Block& slot : slots) {
            if (slot.data && !intact(slot)) ++corrupt;
            poolFree(pool, slot.data);
        }
    };
    std::vector<std::thread> threads;
    for (int id = 0; id < kThreads; ++id)
        threads.emplace_back(worker, id);
    for (std::thread& thread : threads)
        thread.join();
    for (const Block& b : exchange) {
        if (!intact(b)) ++corrupt;
        poolFree(pool, b.data);
    }

    EXPECT_EQ(corrupt.load(), 0);
    EXPECT_EQ(failed.load(), 0);
    EXPECT_EQ(poolLiveBlocks(pool), 0u);
    for (unsigned shard = 0; shard < 256; ++shard) {
        const char* fault = poolCheckShard(pool, shard);
        EXPECT_EQ(fault, nullptr) << "shard " << shard << ": " << fault;
        PoolShardStats s = poolShardStats(pool, shard);
        EXPECT_EQ(s.usedBytes, 0u) << shard;
        EXPECT_EQ(s.freeBlocks, s.regionCount) << shard << ": every region merged back to one block";
    }
    poolDestroy(pool);
}

} // namespace

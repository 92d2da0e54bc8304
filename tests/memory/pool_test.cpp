// The block allocator on a private pool, so that nothing else allocates from the
// shards under test.
#include "memory/pool_internals.h"
#include "platform/thread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

namespace {

constexpr uint64_t kMiB = uint64_t(1) << 20;

uint64_t payloadOf(const void* block) {
    return poolBlockWords(block).sizeAndFlags & kPoolBlockSizeMask;
}
bool allocated(const void* block) {
    return (poolBlockWords(block).sizeAndFlags & kPoolBlockAllocatedBit) != 0;
}
uint64_t headerOf(const void* block) {
    return reinterpret_cast<uintptr_t>(block) - 64;
}
bool sameStats(const PoolShardStats& a, const PoolShardStats& b) {
    return std::memcmp(&a, &b, sizeof a) == 0; // six counters, no padding
}

class PoolTest : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(pool, nullptr); }
    void TearDown() override {
        poolFailNextPageRequests(0);
        poolDestroy(pool);
    }
    PoolShardStats stats() { return poolShardStats(pool, shard); }
    void expectConsistent() {
        const char* fault = poolCheckShard(pool, shard);
        EXPECT_EQ(fault, nullptr) << fault;
    }

    PoolAllocator* pool = poolCreate();
    unsigned shard = poolCurrentShardIndex();
};

TEST(PoolShardChoice, MixesThreadIdsAndTakesTheLow8Bits) {
    const std::pair<uint32_t, uint32_t> cases[] = {
        {0, 0}, {1, 0xC2B73583}, {4242, 0xD0E8AFF5}, {0x12345678, 0x2976C9A2}, {0xFFFFFFFF, 0xD5866458}};
    for (const auto& [threadId, mixed] : cases)
        EXPECT_EQ(poolMixThreadId(threadId), mixed) << threadId;
    EXPECT_EQ(poolCurrentShardIndex(), poolMixThreadId(platform::currentThreadId()) & 0xFF);
}

TEST_F(PoolTest, RequestsAreRoundedToPayloadsOf64AndImpossibleOnesFail) {
    const std::pair<size_t, uint64_t> cases[] = {{0, 64},      {1, 64},      {60, 64},        {64, 64},
                                                 {65, 128},    {128, 128},   {129, 192},      {1000, 1024},
                                                 {4096, 4096}, {4097, 4160}, {0x3350, 0x3380}};
    for (const auto& [request, payload] : cases) {
        const uint64_t usedBefore = stats().usedBytes;
        void* block = poolAlloc(pool, request);
        ASSERT_NE(block, nullptr) << request;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 64, 0u) << request;
        EXPECT_EQ(payloadOf(block), payload) << request;
        EXPECT_TRUE(allocated(block)) << request;
        EXPECT_EQ(poolBlockWords(block).link, reinterpret_cast<uintptr_t>(poolShardAddress(pool, shard)));
        EXPECT_EQ(stats().usedBytes - usedBefore, payload) << request;
        std::memset(block, 0xA5, payload); // the whole payload is usable
        expectConsistent();
        poolFree(pool, block);
        EXPECT_EQ(stats().usedBytes, usedBefore) << request;
    }
    for (size_t request : {SIZE_MAX, SIZE_MAX - 63, (size_t(1) << 62) - 1, size_t(1) << 62}) {
        const uint64_t pagesBefore = poolPageBytesOutstanding();
        EXPECT_EQ(poolAlloc(pool, request), nullptr) << request;
        EXPECT_EQ(poolPageBytesOutstanding(), pagesBefore) << request << ": no pages asked for";
    }
    EXPECT_EQ(poolLiveBlocks(pool), 0u);
}

TEST_F(PoolTest, OneMebibyteGetsARegionOfItsOwn) {
    void* small = poolAlloc(pool, 100);
    EXPECT_EQ(stats().reservedBytes, kMiB);
    EXPECT_EQ(poolBlockWords(small).prevPhysical, 0u) << "first block of its region";
    void* big = poolAlloc(pool, kMiB);
    ASSERT_NE(big, nullptr);
    const PoolShardStats s = stats();
    EXPECT_EQ(s.regionCount, 2u);
    EXPECT_EQ(s.reservedBytes, 2 * kMiB + 4096) << "a region is rounded up to pages behind a header";
    EXPECT_EQ(payloadOf(big), kMiB);
    // The 4032 bytes behind the mebibyte are enough to split off a block of 3968.
    EXPECT_EQ(s.freeBlocks, 2u);
    EXPECT_EQ(s.freeBytes, (kMiB - 64 - 128 - 64) + (4032 - 64));
    poolFree(pool, big);
    poolFree(pool, small);
    EXPECT_EQ(stats().reservedBytes, s.reservedBytes) << "regions stay mapped";
    expectConsistent();
}

// A free block of 1024 bytes between the region start and an allocated guard is
// asked for different sizes: it is split only if 192 bytes of slack remain.
TEST_F(PoolTest, SplitsOnlyWith192BytesOfSlack) {
    const struct {
        size_t request;
        uint64_t payload;  // what the request gets
        uint64_t restSize; // payload of the free block behind it, 0 if not split
    } cases[] = {{1024, 1024, 0}, {896, 1024, 0},  {833, 1024, 0},
                 {832, 832, 128}, {576, 576, 384}, {64, 64, 896}};
    for (const auto& c : cases) {
        void* slot = poolAlloc(pool, 1024);
        void* guard = poolAlloc(pool, 64);
        poolFree(pool, slot);
        void* block = poolAlloc(pool, c.request);
        ASSERT_EQ(block, slot) << c.request;
        EXPECT_EQ(payloadOf(block), c.payload) << c.request;
        uint64_t guardPrev = headerOf(block);
        if (c.restSize != 0) {
            char* rest = static_cast<char*>(block) + c.payload + 64;
            EXPECT_EQ(payloadOf(rest), c.restSize) << c.request;
            EXPECT_FALSE(allocated(rest)) << c.request;
            EXPECT_EQ(poolBlockWords(rest).prevPhysical, headerOf(block)) << c.request;
            guardPrev = headerOf(rest);
        }
        EXPECT_EQ(poolBlockWords(guard).prevPhysical, guardPrev) << c.request;
        expectConsistent();
        poolFree(pool, block);
        poolFree(pool, guard);
        EXPECT_EQ(stats().freeBlocks, 1u) << c.request;
    }
}

TEST_F(PoolTest, FreeBlocksAreBinnedByTheLog2OfTheirPayloadIn64s) {
    const std::pair<size_t, int> cases[] = {{64, 0},  {128, 1},  {192, 1},  {256, 2},  {448, 2},
                                            {512, 3}, {1088, 4}, {4032, 5}, {4096, 6}, {524288, 13}};
    for (const auto& [payload, bin] : cases) {
        void* block = poolAlloc(pool, payload);
        void* guard = poolAlloc(pool, 64);
        poolFree(pool, block); // the first block of the region, held apart by the guard
        EXPECT_EQ(poolFreeBlockBin(pool, shard, block), bin) << payload;
        poolFree(pool, guard);
        EXPECT_EQ(poolFreeBlockBin(pool, shard, block), 13) << "merged back to the whole region";
    }
}

TEST_F(PoolTest, FreeingEverythingInAnyOrderLeavesOneBlockSpanningTheRegion) {
    for (int order = 0; order < 4; ++order) { // forward, backward, shuffled, every other one first
        std::mt19937 random(1234 + order);
        std::vector<void*> blocks;
        for (int i = 0; i < 200; ++i) {
            const size_t size = 1 + random() % 5000;
            blocks.push_back(poolAlloc(pool, size));
            ASSERT_NE(blocks.back(), nullptr);
            std::memset(blocks.back(), i, size);
        }
        ASSERT_EQ(stats().regionCount, 1u);
        if (order == 1) std::reverse(blocks.begin(), blocks.end());
        if (order == 2) std::shuffle(blocks.begin(), blocks.end(), random);
        if (order == 3) {
            std::vector<void*> evenFirst;
            for (size_t start : {0, 1})
                for (size_t i = start; i < blocks.size(); i += 2)
                    evenFirst.push_back(blocks[i]);
            blocks.swap(evenFirst);
        }
        for (void* block : blocks) {
            poolFree(pool, block);
            const char* fault = poolCheckShard(pool, shard);
            ASSERT_EQ(fault, nullptr) << fault << " (order " << order << ")";
        }
        const PoolShardStats s = stats();
        EXPECT_EQ(s.freeBlocks, 1u) << order;
        EXPECT_EQ(s.largestFreePayload, kMiB - 64) << order;
        EXPECT_EQ(s.usedBytes, 0u) << order;
        EXPECT_EQ(poolLiveBlocks(pool), 0u) << order;
    }
}

TEST_F(PoolTest, SecondFreeChangesNothing) {
    // Which of a, b, c (256 bytes each, before a guard) are freed, in order, before b is freed again:
    // b alone, b merged into a, b taken in by a's free, b merged with both neighbours.
    const std::vector<int> sequences[] = {{1}, {0, 1}, {1, 0}, {0, 2, 1}};
    for (const auto& sequence : sequences) {
        void* blocks[3] = {poolAlloc(pool, 256), poolAlloc(pool, 256), poolAlloc(pool, 256)};
        void* guard = poolAlloc(pool, 64);
        for (int index : sequence)
            poolFree(pool, blocks[index]);
        const PoolShardStats before = stats();
        const uint64_t liveBefore = poolLiveBlocks(pool);
        poolFree(pool, blocks[1]);
        EXPECT_TRUE(sameStats(stats(), before)) << sequence.size();
        EXPECT_EQ(poolLiveBlocks(pool), liveBefore) << sequence.size();
        expectConsistent();
        for (void* block : {blocks[0], blocks[1], blocks[2], guard})
            poolFree(pool, block);
        EXPECT_EQ(stats().freeBlocks, 1u);
        EXPECT_EQ(poolLiveBlocks(pool), 0u);
    }
    poolFree(pool, nullptr);
}

TEST_F(PoolTest, RefusedPagesGiveNullAndLeaveTheShardAsItWas) {
    const struct {
        const char* what;
        bool warmUp; // a region and a slab region exist before
        size_t request;
        uint32_t failures;
    } cases[] = {{"slab region refused", false, 100, 1},
                 {"every request refused", false, 3 * kMiB, 100},
                 {"block region refused", true, 2 * kMiB, 1}};
    for (const auto& c : cases) {
        PoolAllocator* fresh = poolCreate();
        ASSERT_NE(fresh, nullptr);
        void* warm = c.warmUp ? poolAlloc(fresh, 64) : nullptr;
        const PoolShardStats before = poolShardStats(fresh, shard);
        const uint64_t pagesBefore = poolPageBytesOutstanding();
        poolFailNextPageRequests(c.failures);
        EXPECT_EQ(poolAlloc(fresh, c.request), nullptr) << c.what;
        poolFailNextPageRequests(0);
        EXPECT_TRUE(sameStats(poolShardStats(fresh, shard), before)) << c.what;
        EXPECT_EQ(poolPageBytesOutstanding(), pagesBefore) << c.what;
        EXPECT_EQ(poolLiveBlocks(fresh), c.warmUp ? 1u : 0u) << c.what;
        void* later = poolAlloc(fresh, c.request);
        EXPECT_NE(later, nullptr) << c.what << ": works again once pages come";
        poolFree(fresh, later);
        poolFree(fresh, warm);
        poolDestroy(fresh);
    }
    poolFailNextPageRequests(1);
    EXPECT_EQ(poolCreate(), nullptr) << "creation fails when no pages come";
}

// Pages are counted across every pool, the process's included; a failing check allocates, so
// everything is observed first and checked at the end.
TEST(PoolLifetime, ExitDestroysAnIdlePoolAtOnceOrLeavesItToTheLastFree) {
    const uint64_t pagesBefore = poolPageBytesOutstanding();
    PoolAllocator* idle = poolCreate();
    poolFree(idle, poolAlloc(idle, 5000));
    const bool idleDestroyed = poolBeginExit(idle);
    const uint64_t pagesAfterIdle = poolPageBytesOutstanding();

    PoolAllocator* pool = poolCreate();
    void* first = poolAlloc(pool, 100);
    void* second = poolAlloc(pool, 2 * kMiB);
    const bool destroyedAtExit = poolBeginExit(pool);
    poolFree(pool, first);
    void* third = poolAlloc(pool, 64); // still usable while exit is pending
    poolFree(pool, third);
    const uint64_t pagesWithOneLive = poolPageBytesOutstanding();
    poolFree(pool, second);
    const uint64_t pagesAfterLast = poolPageBytesOutstanding();
    EXPECT_TRUE(idleDestroyed);
    EXPECT_EQ(pagesAfterIdle, pagesBefore) << "regions, slab regions and the pool are unmapped";
    EXPECT_FALSE(destroyedAtExit);
    EXPECT_TRUE(third && second && pagesWithOneLive > pagesBefore);
    EXPECT_EQ(pagesAfterLast, pagesBefore);
}

} // namespace

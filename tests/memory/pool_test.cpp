// The block allocator on a private pool, so that nothing else allocates from the
// shards under test.
#include "memory/pool_internals.h"
#include "platform/thread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
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

bool sameStats(const PoolShardStats& a, const PoolShardStats& b) {
    return a.reservedBytes == b.reservedBytes && a.usedBytes == b.usedBytes &&
           a.regionCount == b.regionCount && a.freeBlocks == b.freeBlocks && a.freeBytes == b.freeBytes &&
           a.largestFreePayload == b.largestFreePayload;
}

// ---- Shard choice ---------------------------------------------------------------

TEST(PoolShardChoice, MixesThreadIdsAsDefined) {
    struct Case {
        uint32_t threadId;
        uint32_t mixed;
    };
    const Case cases[] = {{0, 0},
                          {1, 0xC2B73583},
                          {2, 0xE90F1258},
                          {4, 0x7A10C2D3},
                          {1000, 0x2B11940C},
                          {4242, 0xD0E8AFF5},
                          {65535, 0x920502BF},
                          {0x12345678, 0x2976C9A2},
                          {0xFFFFFFFF, 0xD5866458}};
    for (const Case& c : cases)
        EXPECT_EQ(poolMixThreadId(c.threadId), c.mixed) << c.threadId;
}

TEST(PoolShardChoice, CurrentThreadUsesTheLow8BitsOfItsMixedId) {
    EXPECT_EQ(poolCurrentShardIndex(), poolMixThreadId(platform::currentThreadId()) & 0xFF);
}

// ---- Sizes ------------------------------------------------------------------------

TEST_F(PoolTest, RequestsAreRoundedToPayloadsOf64) {
    struct Case {
        size_t request;
        uint64_t payload;
    };
    const Case cases[] = {{0, 64},      {1, 64},      {3, 64},      {4, 64},         {60, 64},
                          {61, 64},     {64, 64},     {65, 128},    {128, 128},      {129, 192},
                          {1000, 1024}, {4096, 4096}, {4097, 4160}, {0x3350, 0x3380}};
    for (const Case& c : cases) {
        uint64_t usedBefore = stats().usedBytes;
        void* block = poolAlloc(pool, c.request);
        ASSERT_NE(block, nullptr) << c.request;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 64, 0u) << c.request;
        EXPECT_EQ(payloadOf(block), c.payload) << c.request;
        EXPECT_TRUE(allocated(block)) << c.request;
        EXPECT_EQ(poolBlockWords(block).link, reinterpret_cast<uintptr_t>(poolShardAddress(pool, shard)));
        EXPECT_EQ(stats().usedBytes - usedBefore, c.payload) << c.request;
        std::memset(block, 0xA5, c.payload); // the whole payload is usable
        expectConsistent();
        poolFree(pool, block);
        EXPECT_EQ(stats().usedBytes, usedBefore) << c.request;
    }
    EXPECT_EQ(poolLiveBlocks(pool), 0u);
}

TEST_F(PoolTest, ImpossibleSizesFailWithoutAskingForPages) {
    const size_t cases[] = {SIZE_MAX, SIZE_MAX - 63, (size_t(1) << 62) - 1, size_t(1) << 62};
    for (size_t request : cases) {
        uint64_t pagesBefore = poolPageBytesOutstanding();
        EXPECT_EQ(poolAlloc(pool, request), nullptr) << request;
        EXPECT_EQ(poolPageBytesOutstanding(), pagesBefore) << request;
    }
    EXPECT_EQ(poolLiveBlocks(pool), 0u);
}

// ---- Regions ----------------------------------------------------------------------

TEST_F(PoolTest, FirstRequestMakesARegionOfTheSizeRule) {
    struct Case {
        size_t request;
        uint64_t regionSize;
    };
    const Case cases[] = {{1, kMiB},
                          {kMiB - 64, kMiB},
                          {kMiB - 63, kMiB + 4096},
                          {kMiB, kMiB + 4096},
                          {3 * kMiB + 5, 3 * kMiB + 4096}};
    for (const Case& c : cases) {
        PoolAllocator* fresh = poolCreate();
        ASSERT_NE(fresh, nullptr);
        void* block = poolAlloc(fresh, c.request);
        ASSERT_NE(block, nullptr) << c.request;
        PoolShardStats s = poolShardStats(fresh, shard);
        EXPECT_EQ(s.regionCount, 1u) << c.request;
        EXPECT_EQ(s.reservedBytes, c.regionSize) << c.request;
        EXPECT_EQ(poolBlockWords(block).prevPhysical, 0u) << "first block of its region";
        poolDestroy(fresh);
    }
}

TEST_F(PoolTest, OneMebibyteGetsARegionOfItsOwn) {
    void* small = poolAlloc(pool, 100);
    ASSERT_NE(small, nullptr);
    ASSERT_EQ(stats().reservedBytes, kMiB);
    void* big = poolAlloc(pool, kMiB);
    ASSERT_NE(big, nullptr);
    PoolShardStats s = stats();
    EXPECT_EQ(s.regionCount, 2u);
    EXPECT_EQ(s.reservedBytes, 2 * kMiB + 4096);
    EXPECT_EQ(payloadOf(big), kMiB);
    EXPECT_EQ(poolBlockWords(big).prevPhysical, 0u);
    // The 4032 bytes behind the mebibyte are enough to split off a block of 3968.
    EXPECT_EQ(s.freeBlocks, 2u);
    EXPECT_EQ(s.freeBytes, (kMiB - 64 - 128 - 64) + (4032 - 64));
    expectConsistent();
    poolFree(pool, big);
    poolFree(pool, small);
    EXPECT_EQ(stats().reservedBytes, 2 * kMiB + 4096) << "regions stay mapped";
    expectConsistent();
}

// ---- Splitting ----------------------------------------------------------------------

// A free block of 1024 bytes between the region start and an allocated guard is
// asked for different sizes: it is split only if 192 bytes of slack remain.
TEST_F(PoolTest, SplitsOnlyWith192BytesOfSlack) {
    struct Case {
        size_t request;
        uint64_t payload;  // what the request gets
        uint64_t restSize; // payload of the free block behind it, 0 if not split
    };
    const Case cases[] = {{1024, 1024, 0}, {960, 1024, 0},  {896, 1024, 0}, {833, 1024, 0},
                          {832, 832, 128}, {576, 576, 384}, {64, 64, 896}};
    for (const Case& c : cases) {
        void* slot = poolAlloc(pool, 1024);
        void* guard = poolAlloc(pool, 64);
        ASSERT_NE(slot, nullptr);
        ASSERT_NE(guard, nullptr);
        poolFree(pool, slot);
        void* block = poolAlloc(pool, c.request);
        ASSERT_EQ(block, slot) << c.request;
        EXPECT_EQ(payloadOf(block), c.payload) << c.request;
        if (c.restSize == 0) {
            EXPECT_EQ(poolBlockWords(guard).prevPhysical, headerOf(block)) << c.request;
        } else {
            char* rest = static_cast<char*>(block) + c.payload + 64;
            EXPECT_EQ(payloadOf(rest), c.restSize) << c.request;
            EXPECT_FALSE(allocated(rest)) << c.request;
            EXPECT_EQ(poolBlockWords(rest).prevPhysical, headerOf(block)) << c.request;
            EXPECT_EQ(poolBlockWords(guard).prevPhysical, headerOf(rest)) << c.request;
        }
        expectConsistent();
        poolFree(pool, block);
        poolFree(pool, guard);
        EXPECT_EQ(stats().freeBlocks, 1u) << c.request;
    }
}

TEST_F(PoolTest, FreeBlocksAreBinnedByTheLog2OfTheirPayloadIn64s) {
    struct Case {
        size_t payload;
        int bin;
    };
    const Case cases[] = {{64, 0},   {128, 1},    {192, 1},     {256, 2},    {448, 2},
                          {512, 3},  {1024, 4},   {1088, 4},    {2048, 5},   {4032, 5},
                          {4096, 6}, {65536, 10}, {262144, 12}, {524288, 13}};
    for (const Case& c : cases) {
        void* block = poolAlloc(pool, c.payload);
        void* guard = poolAlloc(pool, 64);
        ASSERT_NE(block, nullptr);
        ASSERT_NE(guard, nullptr);
        poolFree(pool, block); // the first block of the region, held apart by the guard
        EXPECT_EQ(poolFreeBlockBin(pool, shard, block), c.bin) << c.payload;
        poolFree(pool, guard);
        EXPECT_EQ(poolFreeBlockBin(pool, shard, block), 13) << "merged back to the whole region";
    }
}

TEST_F(PoolTest, FirstFitInTheRequestsBinThenAnyLargerBin) {
    // Free blocks of 640 and 768 (bin 3), each held apart by a guard.
    void* a = poolAlloc(pool, 640);
    void* guardA = poolAlloc(pool, 64);
    void* b = poolAlloc(pool, 768);
    void* guardB = poolAlloc(pool, 64);
    poolFree(pool, b);
    poolFree(pool, a); // bin 3 now holds a (640), then b (768)
    EXPECT_EQ(poolAlloc(pool, 700), b) << "the walk goes on past a block that is too small";
    EXPECT_EQ(poolAlloc(pool, 600), a) << "a smaller block of the same bin";
    expectConsistent();
    for (void* block : {a, b, guardA, guardB})
        poolFree(pool, block);
}

// ---- Coalescing -------------------------------------------------------------------------

TEST_F(PoolTest, FreeingEverythingLeavesOneBlockSpanningTheRegion) {
    enum Order { Forward, Backward, Shuffled, Alternate };
    for (Order order : {Forward, Backward, Shuffled, Alternate}) {
        std::mt19937 random(1234 + order);
        std::vector<void*> blocks;
        for (int i = 0; i < 200; ++i) {
            size_t size = 1 + random() % 5000;
            void* block = poolAlloc(pool, size);
            ASSERT_NE(block, nullptr);
            std::memset(block, i, size);
            blocks.push_back(block);
        }
        ASSERT_EQ(stats().regionCount, 1u);
        if (order == Backward) std::reverse(blocks.begin(), blocks.end());
        if (order == Shuffled) std::shuffle(blocks.begin(), blocks.end(), random);
        if (order == Alternate) { // every other block first, then the holes between them
            std::vector<void*> evenFirst;
            for (size_t i = 0; i < blocks.size(); i += 2)
                evenFirst.push_back(blocks[i]);
            for (size_t i = 1; i < blocks.size(); i += 2)
                evenFirst.push_back(blocks[i]);
            blocks = evenFirst;
        }
        for (void* block : blocks) {
            poolFree(pool, block);
            const char* fault = poolCheckShard(pool, shard);
            ASSERT_EQ(fault, nullptr) << fault << " (order " << order << ")";
        }
        PoolShardStats s = stats();
        EXPECT_EQ(s.freeBlocks, 1u) << order;
        EXPECT_EQ(s.largestFreePayload, kMiB - 64) << order;
        EXPECT_EQ(s.usedBytes, 0u) << order;
        EXPECT_EQ(s.reservedBytes, kMiB) << order;
        EXPECT_EQ(poolLiveBlocks(pool), 0u) << order;
    }
}

// ---- Double free -----------------------------------------------------------------------

TEST_F(PoolTest, SecondFreeChangesNothing) {
    enum Scenario { Alone, MergedIntoPredecessor, MergedWithSuccessor, BothNeighbours };
    for (Scenario scenario : {Alone, MergedIntoPredecessor, MergedWithSuccessor, BothNeighbours}) {
        void* a = poolAlloc(pool, 256);
        void* b = poolAlloc(pool, 256);
        void* c = poolAlloc(pool, 256);
        void* guard = poolAlloc(pool, 64);
        void* twice = b;
        switch (scenario) {
        case Alone:
            poolFree(pool, b);
            break;
        case MergedIntoPredecessor:
            poolFree(pool, a);
            poolFree(pool, b);
            break;
        case MergedWithSuccessor: // b is taken in by a's free
            poolFree(pool, b);
            poolFree(pool, a);
            break;
        case BothNeighbours:
            poolFree(pool, a);
            poolFree(pool, c);
            poolFree(pool, b);
            break;
        }
        PoolShardStats before = stats();
        uint64_t liveBefore = poolLiveBlocks(pool);
        poolFree(pool, twice);
        EXPECT_TRUE(sameStats(stats(), before)) << scenario;
        EXPECT_EQ(poolLiveBlocks(pool), liveBefore) << scenario;
        expectConsistent();
        for (void* block : {a, b, c})
            poolFree(pool, block);
        poolFree(pool, guard);
        EXPECT_EQ(stats().freeBlocks, 1u) << scenario;
        EXPECT_EQ(poolLiveBlocks(pool), 0u) << scenario;
    }
    poolFree(pool, nullptr);
}

// ---- Failures ----------------------------------------------------------------------------

TEST_F(PoolTest, RefusedPagesGiveNullAndLeaveTheShardAsItWas) {
    struct Case {
        const char* what;
        bool warmUp; // a region and a slab region exist before
        size_t request;
        uint32_t failures;
    };
    const Case cases[] = {{"slab region refused", false, 100, 1},
                          {"every request refused", false, 3 * kMiB, 100},
                          {"block region refused", true, 2 * kMiB, 1}};
    for (const Case& c : cases) {
        PoolAllocator* fresh = poolCreate();
        ASSERT_NE(fresh, nullptr);
        void* warm = c.warmUp ? poolAlloc(fresh, 64) : nullptr;
        PoolShardStats before = poolShardStats(fresh, shard);
        uint64_t pagesBefore = poolPageBytesOutstanding();
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
}

TEST(PoolLifetime, CreationFailsWhenNoPagesCome) {
    poolFailNextPageRequests(1);
    EXPECT_EQ(poolCreate(), nullptr);
    poolFailNextPageRequests(0);
}

// ---- Exit rule -------------------------------------------------------------------------

TEST(PoolLifetime, ExitDestroysAnIdlePoolAtOnce) {
    uint64_t pagesBefore = poolPageBytesOutstanding();
    PoolAllocator* pool = poolCreate();
    ASSERT_NE(pool, nullptr);
    poolFree(pool, poolAlloc(pool, 5000));
    bool destroyed = poolBeginExit(pool);
    uint64_t pagesAfter = poolPageBytesOutstanding();
    EXPECT_TRUE(destroyed);
    EXPECT_EQ(pagesAfter, pagesBefore) << "regions, slab regions and the pool object are all unmapped";
}

TEST(PoolLifetime, ExitWithLiveBlocksLeavesTheDestructionToTheLastFree) {
    uint64_t pagesBefore = poolPageBytesOutstanding();
    PoolAllocator* pool = poolCreate();
    ASSERT_NE(pool, nullptr);
    void* first = poolAlloc(pool, 100);
    void* second = poolAlloc(pool, 2 * kMiB);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    bool destroyedAtExit = poolBeginExit(pool);
    poolFree(pool, first);
    uint64_t pagesWithOneLive = poolPageBytesOutstanding();
    void* third = poolAlloc(pool, 64); // still usable while exit is pending
    poolFree(pool, third);
    uint64_t pagesAfterThird = poolPageBytesOutstanding();
    poolFree(pool, second);
    uint64_t pagesAfterLast = poolPageBytesOutstanding();
    EXPECT_FALSE(destroyedAtExit);
    EXPECT_NE(third, nullptr);
    EXPECT_GT(pagesWithOneLive, pagesBefore);
    EXPECT_GT(pagesAfterThird, pagesBefore);
    EXPECT_EQ(pagesAfterLast, pagesBefore);
}

} // namespace

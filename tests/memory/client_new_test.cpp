// The client's allocation functions and the global operators on the process's pool.
#include "memory/pool.h"
#include "memory/pool_internals.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

// Made during static initialisation, before main.
int* gEarly = new int(42);

uintptr_t address(const void* block) {
    return reinterpret_cast<uintptr_t>(block);
}
uint64_t payloadOf(const void* block) {
    return poolBlockWords(block).sizeAndFlags & kPoolBlockSizeMask;
}

// True if `block` is an allocated pool block of the process's pool.
bool isGlobalPoolBlock(const void* block) {
    PoolBlockWords words = poolBlockWords(block);
    uintptr_t shards = address(poolShardAddress(poolInstance(), 0));
    uintptr_t shardEnd = address(poolShardAddress(poolInstance(), 255));
    return (words.sizeAndFlags & kPoolBlockAllocatedBit) && words.link >= shards && words.link <= shardEnd;
}

TEST(ClientNew, StaticInitialisationAllocatesFromThePool) {
    EXPECT_EQ(*gEarly, 42);
    EXPECT_EQ(address(gEarly) % 64, 0u);
    EXPECT_TRUE(isGlobalPoolBlock(gEarly));
}

TEST(ClientNew, ZeroBytesGiveNull) {
    EXPECT_EQ(clientNew(0), nullptr);
    clientDelete(nullptr);
}

TEST(ClientNew, SmallBlocksArePlainAndBigOnesCarryABackPointer) {
    struct Case {
        size_t size;
        bool big;
        uint64_t rawPayload;
    };
    const Case cases[] = {{1, false, 64},
                          {64, false, 64},
                          {100, false, 128},
                          {4095, false, 4096},
                          {4096, true, 4160},
                          {4097, true, 4160},
                          {4121, true, 4160},
                          {4122, true, 4224},
                          {5000, true, 5056},
                          {0x3350, true, 0x3380},
                          {size_t(1) << 20, true, (1u << 20) + 64}};
    PoolAllocator* pool = poolInstance();
    for (const Case& c : cases) {
        // Observed first and checked after the free, so that a failing check
        // (which allocates) cannot upset the count of live blocks.
        uint64_t liveBefore = poolLiveBlocks(pool);
        auto* block = static_cast<unsigned char*>(clientNew(c.size));
        uint64_t liveDuring = poolLiveBlocks(pool);
        ASSERT_NE(block, nullptr) << c.size;
        void* back = nullptr;
        if (c.big) std::memcpy(&back, block - 8, sizeof back);
        const unsigned char* raw = c.big ? block - 32 : block;
        bool fromPool = isGlobalPoolBlock(raw);
        uint64_t rawPayload = payloadOf(raw);
        std::memset(block, 0x5A, c.size);
        clientDelete(block);
        uint64_t liveAfter = poolLiveBlocks(pool);
        bool stillAllocated = poolBlockWords(raw).sizeAndFlags & kPoolBlockAllocatedBit;

        EXPECT_EQ(address(block) % 64, c.big ? 32u : 0u) << c.size;
        if (c.big) {
            EXPECT_EQ(back, raw) << c.size;
        }
        EXPECT_TRUE(fromPool) << c.size;
        EXPECT_EQ(rawPayload, c.rawPayload) << c.size;
        EXPECT_EQ(liveDuring, liveBefore + 1) << c.size;
        EXPECT_EQ(liveAfter, liveBefore) << c.size;
        EXPECT_FALSE(stillAllocated) << c.size;
    }
}

TEST(ClientNew, AlignedBlocksKeepTheirAlignment) {
    const size_t alignments[] = {16, 32, 64, 128, 256, 4096};
    const size_t sizes[] = {0, 1, 100, 5000};
    PoolAllocator* pool = poolInstance();
    for (size_t alignment : alignments) {
        for (size_t size : sizes) {
            uint64_t liveBefore = poolLiveBlocks(pool);
            void* block = clientAlignedNew(size, alignment);
            ASSERT_NE(block, nullptr) << alignment << " " << size;
            EXPECT_EQ(address(block) % alignment, 0u) << alignment << " " << size;
            std::memset(block, 1, size);
            clientAlignedDelete(block, alignment);
            EXPECT_EQ(poolLiveBlocks(pool), liveBefore) << alignment << " " << size;
        }
    }
}

TEST(ClientNew, GlobalOperatorsUseThePool) {
    struct alignas(128) Wide {
        char bytes[300];
    };
    PoolAllocator* pool = poolInstance();
    uint64_t liveBefore = poolLiveBlocks(pool);
    auto* one = new int(7);
    auto* array = new char[6000];
    auto* wide = new Wide;
    auto* wides = new Wide[3];
    auto* quiet = new (std::nothrow) char[10];
    void* empty1 = ::operator new(0);
    void* empty2 = ::operator new(0);
    std::vector<char> vector(10000);
    uint64_t liveDuring = poolLiveBlocks(pool);

    EXPECT_TRUE(isGlobalPoolBlock(one));
    EXPECT_EQ(address(array) % 64, 32u);
    EXPECT_EQ(address(wide) % 128, 0u);
    EXPECT_EQ(address(wides) % 128, 0u);
    EXPECT_TRUE(isGlobalPoolBlock(quiet));
    EXPECT_NE(empty1, nullptr);
    EXPECT_NE(empty1, empty2);
    EXPECT_EQ(address(vector.data()) % 64, 32u);
    EXPECT_EQ(liveDuring, liveBefore + 8);

    delete one;
    delete[] array;
    delete wide;
    delete[] wides;
    delete[] quiet;
    ::operator delete(empty1);
    ::operator delete(empty2, size_t(0));
    std::vector<char>().swap(vector);
    EXPECT_EQ(poolLiveBlocks(pool), liveBefore);
}

TEST(ClientNew, SmallRequestGivesNullWhenNoPagesCome) {
    // Use up what the thread's shard holds while every page request fails.
    PoolAllocator* pool = poolInstance();
    PoolShardStats shard = poolShardStats(pool, poolCurrentShardIndex());
    std::vector<void*> blocks;
    blocks.reserve(shard.reservedBytes / 4096 + 16);
    poolFailNextPageRequests(UINT32_MAX);
    bool gotNull = false;
    while (blocks.size() < blocks.capacity()) {
        void* block = clientNew(4000);
        if (!block) {
            gotNull = true;
            break;
        }
        blocks.push_back(block);
    }
    void* bigBlock = clientTryNew(size_t(1) << 30);
    poolFailNextPageRequests(0);
    for (void* block : blocks)
        clientDelete(block);
    EXPECT_TRUE(gotNull);
    EXPECT_EQ(bigBlock, nullptr);
    EXPECT_EQ(clientTryNew(SIZE_MAX), nullptr);
}

TEST(ClientNewDeathTest, BigRequestThatFailsEndsTheProcess) {
    EXPECT_DEATH(
        {
            poolFailNextPageRequests(UINT32_MAX);
            clientNew(size_t(1) << 30);
        },
        "out of memory");
    EXPECT_DEATH(clientNew(SIZE_MAX - 8), "out of memory");
}

TEST(ClientNewDeathTest, FreeingAForeignPointerEndsTheProcess) {
    alignas(64) static char notFromThePool[128];
    EXPECT_DEATH(clientDelete(notFromThePool + 8), "not handed out by the pool");
}

TEST(ClientNewDeathTest, ExitWithBlocksStillLiveIsClean) {
    EXPECT_EXIT(
        {
            static std::string* survivor = new std::string(1000, 'x');
            (void)survivor;
            auto* dying = new std::vector<int>(5000, 1);
            delete dying;
            std::exit(3);
        },
        ::testing::ExitedWithCode(3), "");
}

} // namespace

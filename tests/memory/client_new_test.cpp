// The client's allocation functions and the global operators on the process's pool.
#include "memory/pool.h"
#include "memory/pool_internals.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <utility>
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

// The compiler may leave out an allocation and its delete when the pointer goes nowhere, and
// clang does so for a block whose only use is an alignment it already knows. Handing the
// pointer to an opaque statement keeps the operators' calls in the test.
template <class T> T* kept(T* block) {
    asm volatile("" : : "r"(block) : "memory");
    return block;
}

// True if `block` is an allocated pool block of the process's pool.
bool isGlobalPoolBlock(const void* block) {
    PoolBlockWords words = poolBlockWords(block);
    uintptr_t shards = address(poolShardAddress(poolInstance(), 0));
    uintptr_t shardEnd = address(poolShardAddress(poolInstance(), 255));
    return (words.sizeAndFlags & kPoolBlockAllocatedBit) && words.link >= shards && words.link <= shardEnd;
}

TEST(ClientNew, StaticInitialisationAllocatesFromThePoolAndZeroBytesGiveNull) {
    EXPECT_EQ(*gEarly, 42);
    EXPECT_EQ(address(gEarly) % 64, 0u);
    EXPECT_TRUE(isGlobalPoolBlock(gEarly));
    EXPECT_EQ(clientNew(0), nullptr);
    clientDelete(nullptr);
}

TEST(ClientNew, SmallBlocksArePlainAndBigOnesCarryABackPointer) {
    // Request, raw payload; from 4096 bytes on a block is big.
    const std::pair<size_t, uint64_t> cases[] = {
        {1, 64},      {64, 64},     {100, 128},   {4095, 4096},     {4096, 4160},
        {4121, 4160}, {4122, 4224}, {5000, 5056}, {0x3350, 0x3380}, {size_t(1) << 20, (1u << 20) + 64}};
    PoolAllocator* pool = poolInstance();
    for (const auto& [size, payload] : cases) {
        // Observed first and checked after the free, so that a failing check
        // (which allocates) cannot upset the count of live blocks.
        const bool big = size >= 4096;
        const uint64_t liveBefore = poolLiveBlocks(pool);
        auto* block = static_cast<unsigned char*>(clientNew(size));
        const uint64_t liveDuring = poolLiveBlocks(pool);
        ASSERT_NE(block, nullptr) << size;
        void* back = nullptr;
        if (big) std::memcpy(&back, block - 8, sizeof back);
        const unsigned char* raw = big ? block - 32 : block;
        const bool fromPool = isGlobalPoolBlock(raw);
        const uint64_t rawPayload = payloadOf(raw);
        std::memset(block, 0x5A, size);
        clientDelete(block);
        const uint64_t liveAfter = poolLiveBlocks(pool);
        const bool stillAllocated = poolBlockWords(raw).sizeAndFlags & kPoolBlockAllocatedBit;

        EXPECT_EQ(address(block) % 64, big ? 32u : 0u) << size;
        EXPECT_EQ(back, big ? raw : nullptr) << size;
        EXPECT_TRUE(fromPool) << size;
        EXPECT_EQ(rawPayload, payload) << size;
        EXPECT_EQ(liveDuring, liveBefore + 1) << size;
        EXPECT_EQ(liveAfter, liveBefore) << size;
        EXPECT_FALSE(stillAllocated) << size;
    }
}

TEST(ClientNew, GlobalOperatorsUseThePool) {
    struct alignas(128) Wide {
        char bytes[300];
    };
    PoolAllocator* pool = poolInstance();
    const uint64_t liveBefore = poolLiveBlocks(pool);
    auto* one = kept(new int(7));
    auto* array = kept(new char[6000]);
    auto* wides = kept(new Wide[3]); // through the aligned path
    auto* quiet = kept(new (std::nothrow) char[10]);
    void* empty1 = kept(::operator new(0));
    void* empty2 = kept(::operator new(0));
    const uint64_t liveDuring = poolLiveBlocks(pool);

    EXPECT_TRUE(isGlobalPoolBlock(one) && isGlobalPoolBlock(quiet));
    EXPECT_EQ(address(array) % 64, 32u) << "a big block";
    EXPECT_EQ(address(wides) % 128, 0u);
    EXPECT_TRUE(empty1 && empty1 != empty2);
    EXPECT_EQ(liveDuring, liveBefore + 6);
    delete one;
    delete[] array;
    delete[] wides;
    delete[] quiet;
    ::operator delete(empty1);
    ::operator delete(empty2, size_t(0));
    EXPECT_EQ(poolLiveBlocks(pool), liveBefore);
}

TEST(ClientNew, SmallRequestGivesNullWhenNoPagesCome) {
    // Use up what the thread's shard holds while every page request fails.
    const PoolShardStats shard = poolShardStats(poolInstance(), poolCurrentShardIndex());
    std::vector<void*> blocks(shard.reservedBytes / 4096 + 16);
    poolFailNextPageRequests(UINT32_MAX);
    size_t taken = 0;
    while (taken < blocks.size() && (blocks[taken] = clientNew(4000)))
        ++taken;
    void* bigBlock = clientTryNew(size_t(1) << 30);
    poolFailNextPageRequests(0);
    for (void* block : blocks)
        clientDelete(block);
    EXPECT_LT(taken, blocks.size()) << "a null came before the shard was used up twice over";
    EXPECT_EQ(bigBlock, nullptr);
    EXPECT_EQ(clientTryNew(SIZE_MAX), nullptr);
}

TEST(ClientNewDeathTest, FailedBigRequestsAndForeignPointersEndTheProcessButExitIsClean) {
    EXPECT_DEATH(
        {
            poolFailNextPageRequests(UINT32_MAX);
            clientNew(size_t(1) << 30);
        },
        "out of memory");
    EXPECT_DEATH(clientNew(SIZE_MAX - 8), "out of memory");
    alignas(64) static char notFromThePool[128];
    EXPECT_DEATH(clientDelete(notFromThePool + 8), "not handed out by the pool");
    // Blocks still live at exit are no fault.
    EXPECT_EXIT(
        {
            static std::string* survivor = new std::string(1000, 'x');
            (void)survivor;
            delete new std::vector<int>(5000, 1);
            std::exit(3);
        },
        ::testing::ExitedWithCode(3), "");
}

} // namespace

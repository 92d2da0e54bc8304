// Chunk bodies that are zstd frames.
#include "memory/pool.h"
#include "memory/pool_internals.h"
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>
#include <zstd.h>

#include <algorithm>

using namespace scene_writer;

namespace {

Bytes pattern(size_t size, uint32_t seed) {
    Bytes bytes(size);
    uint32_t state = seed;
    for (uint8_t& b : bytes) {
        state = state * 1103515245u + 12345u;
        b = static_cast<uint8_t>((state >> 16) % 7); // compressible, but not trivially
    }
    return bytes;
}

Bytes joined(Bytes first, const Bytes& second) {
    append(first, second);
    return first;
}

struct BodyResult {
    SceneStatus status;
    Bytes decoded;
    bool outHeld;
    uint64_t attempts;
};

// Reads the one chunk of a scene whose body is `stored`, with compression 1. With
// `failPages`, the pool's next request for fresh pages fails.
BodyResult readFrame(const Bytes& stored, bool failPages = false) {
    OpenScene scene(sceneOf({storedChunk(99, stored, 100, 1)}));
    uint64_t offset = 0;
    EXPECT_EQ(scene.reader.nextChunk(offset), SceneOk);
    void* out = nullptr;
    uint64_t before = liveBlocks();
    // The compressed block must come from pages the pool already holds.
    if (failPages) poolFree(poolInstance(), poolAlloc(poolInstance(), stored.size()));
    poolFailNextPageRequests(failPages ? 1 : 0);
    BodyResult result{};
    result.status = scene.reader.readChunkBody(out, stored.size(), 1, 68);
    poolFailNextPageRequests(0);
    result.outHeld = out != nullptr;
    result.attempts = scene.reader.decodeAttempts;
    if (result.status == SceneOk) {
        const uint8_t* data = static_cast<const uint8_t*>(out);
        result.decoded.assign(data, data + scene.reader.bodySize);
    }
    poolFree(poolInstance(), out);
    EXPECT_EQ(liveBlocks(), before) << "nothing but `out` may stay allocated";
    return result;
}

// A frame header that claims a terabyte over a few dozen bytes of blocks.
Bytes terabyteClaim() {
    Bytes stored = zstdFrame(pattern(50, 7));
    EXPECT_EQ(stored[4] & 0xE7, 0x20) << "expected a single segment with a one-byte content size";
    Bytes forged = {0x28, 0xB5, 0x2F, 0xFD, 0xE0}; // single segment, 8-byte content size
    for (int i = 0; i < 8; ++i)
        forged.push_back(i == 5 ? 0x01 : 0x00);
    forged.insert(forged.end(), stored.begin() + 6, stored.end());
    EXPECT_EQ(ZSTD_getFrameContentSize(forged.data(), forged.size()), 1ull << 40);
    return forged;
}

// A size that no free block of the pool can serve, whatever earlier tests of this process left
// behind, so that a buffer of it needs fresh pages.
size_t beyondFreeBlocks() {
    const PoolShardStats shard = poolShardStats(poolInstance(), poolCurrentShardIndex());
    return std::max<size_t>(64u << 20, shard.largestFreePayload + (1u << 20));
}

TEST(ZstdBody, Frames) {
    struct Case {
        const char* what;
        Bytes stored;
        SceneStatus expected;
        uint64_t attempts;
        Bytes decoded;
        bool failPages = false;
    };
    const Bytes data = pattern(5000, 1), first = pattern(100, 4), second = pattern(300000, 5);
    const Case cases[] = {
        {"content size given", zstdFrame(data), SceneOk, 1, data},
        // The first frame declares only its own 100 bytes; 64 KiB more, then twice the room,
        // until all fit: 100, 65636, 131272, 262544 and 525088 bytes.
        {"declared size too small", joined(zstdFrame(first), zstdFrame(second)), SceneOk, 5,
         joined(first, second)},
        {"no content size", zstdFrame(pattern(100, 3), false), SceneInvalid, 0, {}},
        {"skippable frame first",
         joined(skippableFrame(16), zstdFrame(pattern(100, 2))),
         SceneInvalid,
         0,
         {}},
        {"declares 0 bytes", zstdFrame(Bytes{}), SceneInvalid, 0, {}},
        {"not a frame", Bytes(64, 0x42), SceneInvalid, 0, {}},
        {"a few bytes", Bytes{0x28, 0xB5}, SceneInvalid, 0, {}},
        {"corrupt frame", corruptFrame(pattern(100000, 6)), SceneOutOfMemory, 1, {}},
        {"content size the body cannot hold", terabyteClaim(), SceneOutOfMemory, 0, {}},
        // 64 MiB of zeros compress to a few kilobytes; the working buffer needs fresh pages.
        {"no pages for the working buffer", zstdFrame(Bytes(beyondFreeBlocks(), 0)), SceneOutOfMemory, 0, {}, true},
    };
    for (const Case& c : cases) {
        BodyResult result = readFrame(c.stored, c.failPages);
        EXPECT_EQ(result.status, c.expected) << c.what;
        EXPECT_EQ(result.attempts, c.attempts) << c.what;
        EXPECT_EQ(result.decoded, c.decoded) << c.what;
        EXPECT_TRUE(result.outHeld) << c.what << ": the caller frees the block it gets";
    }
}

} // namespace

// Chunk bodies that are zstd frames.
#include "memory/pool.h"
#include "memory/pool_internals.h"
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>
#include <zstd.h>

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

struct BodyResult {
    SceneStatus status;
    Bytes decoded;
    bool outHeld;
    uint64_t attempts;
};

// Reads the one chunk of a scene whose body is `stored`, with compression 1.
BodyResult readFrame(const Bytes& stored) {
    Chunk chunk = storedChunk(99, stored, 100, 1);
    OpenScene scene(sceneOf({chunk}));
    uint64_t offset = 0;
    EXPECT_EQ(scene.reader.nextChunk(offset), SceneOk);
    void* out = nullptr;
    uint64_t before = liveBlocks();
    BodyResult result{};
    result.status = scene.reader.readChunkBody(out, stored.size(), 1, 68);
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

TEST(ZstdBody, FrameWithContentSizeDecodesToItsExactSize) {
    Bytes data = pattern(5000, 1);
    BodyResult result = readFrame(zstdFrame(data));
    EXPECT_EQ(result.status, SceneOk);
    EXPECT_EQ(result.decoded, data);
    EXPECT_EQ(result.attempts, 1u);
}

TEST(ZstdBody, FramesWhoseSizeCannotBeTakenAreInvalid) {
    struct Case {
        const char* what;
        Bytes stored;
    };
    Bytes empty = zstdFrame(Bytes{});
    ASSERT_EQ(ZSTD_getFrameContentSize(empty.data(), empty.size()), 0u);
    Bytes skippable = skippableFrame(16);
    append(skippable, zstdFrame(pattern(100, 2)));
    const Case cases[] = {
        {"no content size", zstdFrame(pattern(100, 3), false)},
        {"skippable frame first", skippable},
        {"declares 0 bytes", empty},
        {"not a frame", Bytes(64, 0x42)},
        {"a few bytes", Bytes{0x28, 0xB5}},
    };
    for (const Case& c : cases) {
        BodyResult result = readFrame(c.stored);
        EXPECT_EQ(result.status, SceneInvalid) << c.what;
        EXPECT_TRUE(result.outHeld) << c.what << ": the compressed block stays with the caller";
        EXPECT_EQ(result.attempts, 0u) << c.what;
    }
}

TEST(ZstdBody, DeclaredSizeTooSmallGrowsUntilItFits) {
    // The first frame declares only its own 100 bytes; a second frame follows in the body.
    Bytes first = pattern(100, 4), second = pattern(300000, 5);
    Bytes stored = zstdFrame(first);
    append(stored, zstdFrame(second));
    BodyResult result = readFrame(stored);
    ASSERT_EQ(result.status, SceneOk);
    Bytes expected = first;
    append(expected, second);
    EXPECT_EQ(result.decoded, expected);
    // 100 bytes, then 64 KiB more each time, until 300100 fit.
    EXPECT_EQ(result.attempts, 1u + (300100 - 100 + 0xFFFF) / 0x10000);
}

TEST(ZstdBody, CorruptFrameEndsAtOnceAsOutOfMemory) {
    BodyResult result = readFrame(corruptFrame(pattern(100000, 6)));
    EXPECT_EQ(result.status, SceneOutOfMemory);
    EXPECT_EQ(result.attempts, 1u);
    EXPECT_TRUE(result.outHeld);
}

TEST(ZstdBody, ContentSizeTheBodyCannotHoldIsNeverAllocated) {
    // A frame header that claims a terabyte over a few dozen bytes of blocks.
    Bytes stored = zstdFrame(pattern(50, 7));
    ASSERT_EQ(stored[4] & 0xE7, 0x20) << "expected a single segment with a one-byte content size";
    Bytes forged = {0x28, 0xB5, 0x2F, 0xFD, 0xE0}; // single segment, 8-byte content size
    for (int i = 0; i < 8; ++i)
        forged.push_back(i == 5 ? 0x01 : 0x00);
    forged.insert(forged.end(), stored.begin() + 6, stored.end());
    ASSERT_EQ(ZSTD_getFrameContentSize(forged.data(), forged.size()), 1ull << 40);
    BodyResult result = readFrame(forged);
    EXPECT_EQ(result.status, SceneOutOfMemory);
    EXPECT_EQ(result.attempts, 0u);
}

TEST(ZstdBody, WorkingBufferThatCannotBeHadIsOutOfMemory) {
    // 64 MiB of zeros compress to a few kilobytes; the pool must map fresh pages for the
    // working buffer, and that request is made to fail.
    Bytes stored = zstdFrame(Bytes(64u << 20, 0));
    Chunk chunk = storedChunk(99, stored, 100, 1);
    OpenScene scene(sceneOf({chunk}));
    uint64_t offset = 0;
    ASSERT_EQ(scene.reader.nextChunk(offset), SceneOk);
    void* out = nullptr;
    uint64_t before = liveBlocks();
    // The compressed block must come from pages the pool already holds.
    poolFree(poolInstance(), poolAlloc(poolInstance(), stored.size()));
    poolFailNextPageRequests(1);
    SceneStatus status = scene.reader.readChunkBody(out, stored.size(), 1, 68);
    poolFailNextPageRequests(0);
    EXPECT_EQ(status, SceneOutOfMemory);
    EXPECT_EQ(scene.reader.decodeAttempts, 0u);
    EXPECT_NE(out, nullptr) << "the compressed block stays with the caller";
    poolFree(poolInstance(), out);
    EXPECT_EQ(liveBlocks(), before);
}

} // namespace

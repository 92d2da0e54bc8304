// The file header, the walk along the chain and stored bodies.
#include "memory/pool.h"
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

#include <optional>

using namespace scene_writer;

namespace {

SceneFile threeTexMaps() {
    SceneFile file;
    for (int id = 0; id < 3; ++id)
        file.add(storedChunk(kTexMap, texMapBody(1, id, "map" + std::to_string(id))));
    return file;
}

std::vector<int32_t> texMapIds(SceneFileReader& reader, SceneStatus& last) {
    return passIds<TexMapRecord>(readTexMap, reader, last);
}

TEST(SceneOpen, HeaderChecksInTheirOrder) {
    struct Case {
        const char* what;
        uint32_t version;
        uint64_t check;
        int magicByte; // flipped when not -1
        size_t cutTo;  // 0: whole file
        SceneStatus expected;
    };
    const Case cases[] = {
        {"version 103", 103, 1, -1, 0, SceneOk},
        {"version 0", 0, 1, -1, 0, SceneOk},
        {"version 104", 104, 1, -1, 0, SceneBadVersion},
        {"version before check", 104, 0, -1, 0, SceneBadVersion},
        {"check 0", 103, 0, -1, 0, SceneInvalid},
        {"magic, first byte", 103, 1, 0, 0, SceneInvalid},
        {"magic, last byte", 103, 1, 15, 0, SceneInvalid},
        {"35 bytes", 103, 1, -1, 35, SceneInvalid},
        {"a single byte", 103, 1, -1, 1, SceneInvalid},
    };
    for (const Case& c : cases) {
        SceneFile file = threeTexMaps();
        file.formatVersion = c.version;
        file.headerCheck = c.check;
        if (c.magicByte >= 0) file.magic[c.magicByte] ^= 0x20;
        Bytes bytes = file.build();
        if (c.cutTo) bytes.resize(c.cutTo);
        OpenScene scene(bytes);
        EXPECT_EQ(scene.status, c.expected) << c.what;
        if (c.expected == SceneOk) {
            EXPECT_EQ(scene.reader.filePosition, 36u) << c.what;
            EXPECT_EQ(scene.reader.fileSize, bytes.size()) << c.what;
        }
        uint64_t offset = 0;
        EXPECT_EQ(scene.reader.nextChunk(offset), c.expected) << c.what << ": a failed open is final";
    }
    SceneFileReader reader;
    EXPECT_EQ(reader.open(u"/nonexistent/folder/scene.tavi"), SceneIoError);
    EXPECT_EQ(reader.fileHandle, platform::kNoFile);
}

TEST(SceneWalk, FirstChunkOffsetAtOrBeyondTheEnd) {
    // At or beyond the end the chain is empty; a header cut by the end is invalid.
    const std::pair<int64_t, SceneStatus> cases[] = {
        {0, SceneEndOfChunks}, {100, SceneEndOfChunks}, {-10, SceneInvalid}};
    for (const auto& [fromEnd, expected] : cases) {
        SceneFile file = threeTexMaps();
        uint64_t size = file.build().size();
        file.firstChunkOffset = size + fromEnd;
        OpenScene scene(file.build());
        ASSERT_EQ(scene.status, SceneOk);
        uint64_t offset = 0;
        EXPECT_EQ(scene.reader.nextChunk(offset), expected) << fromEnd;
        EXPECT_EQ(offset, size + fromEnd);
    }
}

TEST(SceneWalk, ChainShapes) {
    struct Case {
        const char* what;
        std::vector<uint32_t> types; // chunk i is a record with id i
        std::vector<size_t> chain, layout;
        std::vector<int32_t> ids;
        SceneStatus last;
        int seeks = -1; // -1: not counted
        uint32_t secondHeaderSize = 32;
        bool endAtFileSize = false;
        uint64_t gap = 0;
    };
    const uint32_t T = kTexMap, M = kMaterial;
    const Case cases[] = {
        {"in file order", {T, T, T}, {}, {}, {0, 1, 2}, SceneOk, 0},
        {"chain order is not file order",
         {T, T, T},
         {1, 2, 0},
         {2, 0, 1},
         {1, 2, 0},
         SceneOk,
         -1,
         32,
         false,
         40},
        // The wanted chunk comes first; the scan must not come back round to it.
        {"link of 0 ends the scan", {T, M, kLight}, {}, {}, {0}, SceneEndOfChunks},
        {"link at the file size", {T, T, T}, {}, {}, {0, 1, 2}, SceneEndOfChunks, -1, 32, true},
        {"unknown types passed over", {0x1234, T, 0}, {}, {}, {1}, SceneEndOfChunks},
        {"16 header bytes the reader skips", {T, T, T}, {}, {}, {0, 1, 2}, SceneOk, 1, 48},
        {"a skipped body", {T, T, T, M}, {0, 3, 1, 2}, {0, 3, 1, 2}, {0, 1, 2}, SceneOk, 1},
    };
    for (const Case& c : cases) {
        SceneFile file;
        for (uint32_t type : c.types) {
            int32_t id = int32_t(file.size());
            file.add(storedChunk(type, type == T        ? texMapBody(1, id, "map")
                                       : type == M      ? materialBody(1, id, 0, "m")
                                       : type == kLight ? lightBody(5)
                                                        : Bytes(10, 1)));
        }
        file.chain = c.chain;
        file.layout = c.layout;
        file.gapBytes = c.gap;
        file[1].headerSize = c.secondHeaderSize;
        file.endChainAtFileSize = c.endAtFileSize;
        OpenScene scene(file.build());
        SceneStatus last;
        EXPECT_EQ(texMapIds(scene.reader, last), c.ids) << c.what;
        EXPECT_EQ(last, c.last) << c.what;
        if (c.seeks >= 0) {
            EXPECT_EQ(scene.reader.seekCount, uint64_t(c.seeks)) << c.what;
        }
        // The end of the chain lasts only until the next pass.
        EXPECT_EQ(texMapIds(scene.reader, last), c.ids) << c.what;
    }
}

TEST(SceneWalk, AChainThatComesBackIsInvalidAtOnce) {
    // Chunks: 0 texmap "first", 1 and 2 of the looping type; the last link goes back to
    // `loopTo`. Each record is read once: the walk stops the moment it meets a chunk again,
    // before a body is fetched a second time.
    struct Case {
        const char* what;
        uint32_t loopType;
        size_t loopTo;
        std::vector<int32_t> ids;
    };
    const Case cases[] = {
        {"wanted chunks, back two links", kTexMap, 1, {0, 1, 2}},
        {"wanted chunk, back to itself", kTexMap, 2, {0, 1, 2}},
        {"back to the first chunk", kTexMap, 0, {0, 1, 2}},
        {"chunks nobody wants", kMaterial, 1, {0}},
    };
    for (const Case& c : cases) {
        SceneFile file;
        file.add(storedChunk(kTexMap, texMapBody(1, 0, "first", 16)));
        for (int32_t id = 1; id <= 2; ++id) {
            file.add(storedChunk(c.loopType, c.loopType == kTexMap ? texMapBody(1, id, "a", 16)
                                                                   : materialBody(1, id, 0, "a", 16)));
        }
        file.build();
        file[2].next = file.offsetOf(c.loopTo);
        OpenScene scene(file.build());
        SceneStatus last;
        EXPECT_EQ(texMapIds(scene.reader, last), c.ids) << c.what;
        EXPECT_EQ(last, SceneInvalid) << c.what;
        EXPECT_EQ(scene.reader.bodyReadCount, c.ids.size()) << c.what;
    }
}

TEST(SceneWalk, ASelfLoopDecodesItsBodyOnce) {
    // A few kilobytes that decode to 64 MiB, linked to themselves: each visit would decode the
    // whole body again.
    Bytes body = texMapBody(1, 5, "big", 16);
    body.resize(64u << 20);
    SceneFile file;
    file.add(zstdChunk(kTexMap, body));
    file.build();
    file[0].next = file.offsetOf(0);
    OpenScene scene(file.build());
    ASSERT_LT(scene.reader.fileSize, 64u << 10);
    SceneStatus last;
    EXPECT_EQ(texMapIds(scene.reader, last), std::vector<int32_t>{5});
    EXPECT_EQ(last, SceneInvalid);
    EXPECT_EQ(scene.reader.decodeAttempts, 1u);
}

TEST(SceneWalk, AChainInFileOrderIsReadWithoutSeeking) {
    // Version 103, check 1, the first chunk at 36, zstd bodies.
    SceneFile file;
    for (int id = 0; id < 3; ++id) {
        TextureFilePlan plan;
        plan.id = id;
        file.add(zstdChunk(kTextureFile, textureFileBody(plan)));
    }
    OpenScene scene(file.build());
    ASSERT_EQ(scene.status, SceneOk);
    EXPECT_EQ(scene.reader.header.firstChunkOffset, 36u);
    SceneStatus last;
    EXPECT_EQ(passIds<TextureFileRecord>(readTextureFile, scene.reader, last),
              (std::vector<int32_t>{0, 1, 2}));
    EXPECT_EQ(last, SceneOk);
    EXPECT_EQ(scene.reader.seekCount, 0u);
    EXPECT_EQ(scene.reader.filePosition, scene.reader.fileSize);
}

TEST(SceneBody, OffsetsAndSizesBeyondTheFile) {
    struct Case {
        const char* what;
        bool bodyBeyondTheEnd;
        std::optional<uint64_t> storedSize; // of the last body
        size_t cut;
        SceneStatus expected;
    };
    const Case cases[] = {
        {"body offset beyond the end", true, {}, 0, SceneInvalid},
        {"stored size past the end", false, 0, 0, SceneIoError},
        {"stored size absurd", false, UINT64_MAX, 0, SceneIoError},
        {"file cut inside a body", false, {}, 5, SceneIoError},
    };
    for (const Case& c : cases) {
        SceneFile file = threeTexMaps();
        if (c.bodyBeyondTheEnd) {
            file[2].headerSize = uint32_t(file.build().size());
            file[2].bodyGap = 0;
        }
        if (c.storedSize) file[2].storedSize = *c.storedSize ? *c.storedSize : file[2].stored.size() + 1;
        Bytes bytes = file.build();
        bytes.resize(bytes.size() - c.cut);
        OpenScene scene(bytes);
        uint64_t before = liveBlocks();
        SceneStatus last;
        EXPECT_EQ(texMapIds(scene.reader, last).size(), 2u) << c.what;
        EXPECT_EQ(last, c.expected) << c.what;
        EXPECT_EQ(liveBlocks(), before) << c.what << ": the failed body was freed";
        uint64_t offset = 0;
        EXPECT_EQ(scene.reader.nextChunk(offset), c.expected) << c.what << ": the failure is final";
        EXPECT_EQ(offset, 0u) << c.what << ": a final status returns before touching anything";
    }
}

TEST(SceneBody, EveryCompressionButOneIsStoredDataReadInSlices) {
    Bytes body;
    for (int i = 0; i < 300; ++i)
        body.push_back(static_cast<uint8_t>(i * 7));
    for (uint32_t compression : {0u, 2u, 7u, 0xFFFFFFFFu}) {
        OpenScene scene(sceneOf({storedChunk(99, body, 100, compression)}));
        scene.reader.maxReadSlice = 7;
        uint64_t offset = 0;
        ASSERT_EQ(scene.reader.nextChunk(offset), SceneOk);
        void* out = nullptr;
        EXPECT_EQ(scene.reader.readChunkBody(out, body.size(), scene.reader.chunk.compression, 68), SceneOk);
        ASSERT_NE(out, nullptr);
        EXPECT_EQ(scene.reader.bodySize, body.size());
        EXPECT_EQ(scene.reader.bodyReadCount, 43u) << "42 slices of 7 and one of 6";
        EXPECT_EQ(scene.reader.filePosition, 68u + body.size());
        EXPECT_EQ(Bytes(static_cast<uint8_t*>(out), static_cast<uint8_t*>(out) + body.size()), body)
            << compression;
        poolFree(poolInstance(), out);
    }
}

} // namespace

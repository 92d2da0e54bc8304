// The file header, the walk along the chain and stored bodies.
#include "memory/pool.h"
#include "scene/scene_readers.h"
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

#include <functional>

using namespace scene_writer;

namespace {

SceneFile threeTexMaps() {
    SceneFile file;
    for (int id = 0; id < 3; ++id)
        file.add(storedChunk(kTexMap, texMapBody(1, id, "map" + std::to_string(id))));
    return file;
}

// Reads every texmap of a pass and gives their ids in the order read.
std::vector<int32_t> texMapIds(SceneFileReader& reader, SceneStatus& last) {
    std::vector<int32_t> ids;
    TexMapRecord record;
    uint64_t offset = 0;
    do {
        last = readTexMap(reader, record, offset);
        if (last == SceneOk) ids.push_back(record.id);
    } while (last == SceneOk && offset != 0 && ids.size() < 10000);
    return ids;
}

TEST(SceneOpen, HeaderChecksInTheirOrder) {
    struct Case {
        const char* what;
        std::function<void(SceneFile&)> change;
        std::function<void(Bytes&)> cut;
        SceneStatus expected;
    };
    const Case cases[] = {
        {"version 103", [](SceneFile&) {}, nullptr, SceneOk},
        {"version 0", [](SceneFile& f) { f.formatVersion = 0; }, nullptr, SceneOk},
        {"version 104", [](SceneFile& f) { f.formatVersion = 104; }, nullptr, SceneBadVersion},
        {"version before check",
         [](SceneFile& f) {
             f.formatVersion = 104;
             f.headerCheck = 0;
         },
         nullptr, SceneBadVersion},
        {"check 0", [](SceneFile& f) { f.headerCheck = 0; }, nullptr, SceneInvalid},
        {"magic, first byte", [](SceneFile& f) { f.magic[0] = 'T'; }, nullptr, SceneInvalid},
        {"magic, last byte", [](SceneFile& f) { f.magic = "tavirendererfilX"; }, nullptr, SceneInvalid},
        {"35 bytes", [](SceneFile&) {}, [](Bytes& b) { b.resize(35); }, SceneInvalid},
        {"empty file", [](SceneFile&) {}, [](Bytes& b) { b.clear(); }, SceneInvalid},
    };
    for (const Case& c : cases) {
        SceneFile file = threeTexMaps();
        c.change(file);
        Bytes bytes = file.build();
        if (c.cut) c.cut(bytes);
        OpenScene scene(bytes);
        EXPECT_EQ(scene.status, c.expected) << c.what;
        EXPECT_EQ(scene.reader.status, c.expected) << c.what;
    }
}

TEST(SceneOpen, MissingFileIsAnIoError) {
    SceneFileReader reader;
    EXPECT_EQ(reader.open(u"/nonexistent/folder/scene.tavi"), SceneIoError);
    EXPECT_EQ(reader.fileHandle, platform::kNoFile);
}

TEST(SceneOpen, PositionAndSizeAfterOpen) {
    Bytes bytes = threeTexMaps().build();
    OpenScene scene(bytes);
    ASSERT_EQ(scene.status, SceneOk);
    EXPECT_EQ(scene.reader.filePosition, 36u);
    EXPECT_EQ(scene.reader.fileSize, bytes.size());
    EXPECT_EQ(scene.reader.header.firstChunkOffset, 36u);
    EXPECT_EQ(scene.reader.header.headerCheck, 1u);
    scene.reader.close();
    EXPECT_EQ(scene.reader.fileHandle, platform::kNoFile);
}

TEST(SceneWalk, FirstChunkOffsetAtOrBeyondTheEnd) {
    struct Case {
        int64_t fromEnd;
        SceneStatus expected;
    };
    // At or beyond the end the chain is empty; a header cut by the end is invalid.
    const Case cases[] = {{0, SceneEndOfChunks}, {100, SceneEndOfChunks}, {-10, SceneInvalid}};
    for (const Case& c : cases) {
        SceneFile file = threeTexMaps();
        uint64_t size = file.build().size();
        file.firstChunkOffset = size + c.fromEnd;
        OpenScene scene(file.build());
        ASSERT_EQ(scene.status, SceneOk);
        uint64_t offset = 0;
        EXPECT_EQ(scene.reader.nextChunk(offset), c.expected) << c.fromEnd;
        EXPECT_EQ(offset, size + c.fromEnd);
    }
}

TEST(SceneWalk, EndOfChunksLastsUntilTheNextOperation) {
    OpenScene scene(threeTexMaps().build());
    SceneStatus last;
    EXPECT_EQ(texMapIds(scene.reader, last), (std::vector<int32_t>{0, 1, 2}));
    EXPECT_EQ(last, SceneOk);
    uint64_t past = scene.reader.fileSize;
    EXPECT_EQ(scene.reader.nextChunk(past), SceneEndOfChunks);
    // The next pass starts afresh.
    EXPECT_EQ(texMapIds(scene.reader, last), (std::vector<int32_t>{0, 1, 2}));
}

TEST(SceneWalk, OtherFailuresAreFinal) {
    SceneFile file = threeTexMaps();
    file[1].headerSize = 0x100000; // body far beyond the end
    file[1].bodyGap = 0;
    OpenScene scene(file.build());
    SceneStatus last;
    EXPECT_EQ(texMapIds(scene.reader, last).size(), 1u);
    EXPECT_EQ(last, SceneInvalid);
    uint64_t offset = 0;
    EXPECT_EQ(scene.reader.nextChunk(offset), SceneInvalid);
    EXPECT_EQ(offset, 0u) << "a final status returns before touching anything";
}

TEST(SceneWalk, ChainOrderIsNotFileOrder) {
    SceneFile file = threeTexMaps();
    file.layout = {2, 0, 1};
    file.chain = {1, 2, 0};
    file.gapBytes = 40;
    OpenScene scene(file.build());
    SceneStatus last;
    EXPECT_EQ(texMapIds(scene.reader, last), (std::vector<int32_t>{1, 2, 0}));
    EXPECT_EQ(last, SceneOk);
}

TEST(SceneWalk, LinkOfZeroEndsTheScanWithoutRestart) {
    // The wanted chunk comes first; a scan for it must not come back round to it.
    SceneFile file;
    file.add(storedChunk(kTexMap, texMapBody(1, 7, "only")));
    file.add(storedChunk(kMaterial, materialBody(1, 0, 0, "m")));
    file.add(storedChunk(kLight, lightBody(5)));
    OpenScene scene(file.build());
    SceneStatus last;
    EXPECT_EQ(texMapIds(scene.reader, last), (std::vector<int32_t>{7}));
    EXPECT_EQ(last, SceneEndOfChunks);

    MaterialRecord material;
    uint64_t offset = 0;
    EXPECT_EQ(readMaterial(scene.reader, material, offset), SceneOk);
    EXPECT_EQ(readMaterial(scene.reader, material, offset), SceneEndOfChunks);
}

TEST(SceneWalk, LinkAtTheFileSizeEndsTheChain) {
    SceneFile file = threeTexMaps();
    file.endChainAtFileSize = true;
    OpenScene scene(file.build());
    SceneStatus last;
    EXPECT_EQ(texMapIds(scene.reader, last), (std::vector<int32_t>{0, 1, 2}));
    EXPECT_EQ(last, SceneEndOfChunks);
}

TEST(SceneWalk, LoopingChainsEndAsInvalid) {
    struct Case {
        const char* what;
        uint32_t loopType;
    };
    // A loop of chunks nobody wants spins inside one scan; a loop of wanted chunks returns
    // the same record over and over. Both must end.
    const Case cases[] = {{"skipped chunks", kMaterial}, {"wanted chunks", kTexMap}};
    for (const Case& c : cases) {
        SceneFile file;
        // Short bodies keep the file small, and with it the number of links it can hold.
        file.add(storedChunk(kTexMap, texMapBody(1, 0, "first", 16)));
        Bytes body = c.loopType == kTexMap ? texMapBody(1, 1, "a", 16) : materialBody(1, 1, 0, "a", 16);
        size_t a = file.add(storedChunk(c.loopType, body));
        file.add(storedChunk(c.loopType, body));
        file.build();
        file[2].next = file.offsetOf(a);
        OpenScene scene(file.build());
        SceneStatus last;
        std::vector<int32_t> ids = texMapIds(scene.reader, last);
        EXPECT_EQ(last, SceneInvalid) << c.what;
        EXPECT_LE(ids.size(), scene.reader.fileSize / 32) << c.what;
    }
}

TEST(SceneWalk, AChainInFileOrderIsReadWithoutSeeking) {
    // The worked example: version 103, check 1, the first chunk at 36, zstd bodies.
    SceneFile file;
    for (int id = 0; id < 3; ++id) {
        TextureFilePlan plan;
        plan.id = id;
        file.add(zstdChunk(kTextureFile, textureFileBody(plan)));
    }
    OpenScene scene(file.build());
    ASSERT_EQ(scene.status, SceneOk);
    EXPECT_EQ(scene.reader.header.firstChunkOffset, 36u);
    TextureFileRecord record;
    uint64_t offset = 0;
    int read = 0;
    while (readTextureFile(scene.reader, record, offset) == SceneOk) {
        EXPECT_EQ(record.id, read++);
        if (offset == 0) break;
    }
    EXPECT_EQ(read, 3);
    EXPECT_EQ(scene.reader.status, SceneOk);
    EXPECT_EQ(scene.reader.seekCount, 0u);
    EXPECT_EQ(scene.reader.filePosition, scene.reader.fileSize);
}

TEST(SceneWalk, SkippingABodyCostsOneSeek) {
    SceneFile file = threeTexMaps();
    file.add(storedChunk(kMaterial, materialBody(1, 0, 0, "m")));
    file.chain = {0, 3, 1, 2};
    file.layout = {0, 3, 1, 2};
    OpenScene scene(file.build());
    SceneStatus last;
    EXPECT_EQ(texMapIds(scene.reader, last).size(), 3u);
    EXPECT_EQ(scene.reader.seekCount, 1u);
}

TEST(SceneBody, HeaderSizeSkipsExtensionBytes) {
    SceneFile file = threeTexMaps();
    file[1].headerSize = 48;
    OpenScene scene(file.build());
    SceneStatus last;
    EXPECT_EQ(texMapIds(scene.reader, last), (std::vector<int32_t>{0, 1, 2}));
    EXPECT_EQ(scene.reader.seekCount, 1u) << "the body stands behind 16 bytes the reader skips";
}

TEST(SceneBody, OffsetsAndSizesBeyondTheFile) {
    struct Case {
        const char* what;
        std::function<void(SceneFile&, uint64_t size)> change;
        std::function<void(Bytes&)> cut;
        SceneStatus expected;
    };
    const Case cases[] = {
        {"body offset beyond the end",
         [](SceneFile& f, uint64_t size) {
             f[2].headerSize = uint32_t(size);
             f[2].bodyGap = 0;
         },
         nullptr, SceneInvalid},
        {"stored size past the end", [](SceneFile& f, uint64_t) { f[2].storedSize = f[2].stored.size() + 1; },
         nullptr, SceneIoError},
        {"stored size absurd", [](SceneFile& f, uint64_t) { f[2].storedSize = UINT64_MAX; }, nullptr,
         SceneIoError},
        {"file cut inside a body", [](SceneFile&, uint64_t) {}, [](Bytes& b) { b.resize(b.size() - 5); },
         SceneIoError},
    };
    for (const Case& c : cases) {
        SceneFile file = threeTexMaps();
        c.change(file, file.build().size());
        Bytes bytes = file.build();
        if (c.cut) c.cut(bytes);
        OpenScene scene(bytes);
        uint64_t before = liveBlocks();
        SceneStatus last;
        EXPECT_EQ(texMapIds(scene.reader, last).size(), 2u) << c.what;
        EXPECT_EQ(last, c.expected) << c.what;
        EXPECT_EQ(liveBlocks(), before) << c.what << ": the failed body was freed";
    }
}

TEST(SceneBody, EveryCompressionButOneIsStoredData) {
    Bytes body;
    for (int i = 0; i < 300; ++i)
        body.push_back(static_cast<uint8_t>(i * 7));
    for (uint32_t compression : {0u, 2u, 7u, 0xFFFFFFFFu}) {
        OpenScene scene(sceneOf({storedChunk(99, body, 100, compression)}));
        uint64_t offset = 0;
        ASSERT_EQ(scene.reader.nextChunk(offset), SceneOk);
        void* out = nullptr;
        EXPECT_EQ(scene.reader.readChunkBody(out, body.size(), scene.reader.chunk.compression, 68), SceneOk);
        ASSERT_NE(out, nullptr);
        EXPECT_EQ(scene.reader.bodySize, body.size());
        EXPECT_EQ(Bytes(static_cast<uint8_t*>(out), static_cast<uint8_t*>(out) + body.size()), body)
            << compression;
        poolFree(poolInstance(), out);
    }
}

TEST(SceneBody, LongBodiesAreReadInSlices) {
    Bytes body;
    for (int i = 0; i < 100; ++i)
        body.push_back(static_cast<uint8_t>(i));
    OpenScene scene(sceneOf({storedChunk(99, body)}));
    scene.reader.maxReadSlice = 7;
    uint64_t offset = 0;
    ASSERT_EQ(scene.reader.nextChunk(offset), SceneOk);
    void* out = nullptr;
    ASSERT_EQ(scene.reader.readChunkBody(out, body.size(), 0, 68), SceneOk);
    EXPECT_EQ(scene.reader.bodyReadCount, 15u); // 14 slices of 7 and one of 2
    EXPECT_EQ(Bytes(static_cast<uint8_t*>(out), static_cast<uint8_t*>(out) + body.size()), body);
    EXPECT_EQ(scene.reader.filePosition, 68u + body.size());
    poolFree(poolInstance(), out);
}

TEST(SceneBody, UnknownChunkTypesArePassedOver) {
    SceneFile file;
    file.add(storedChunk(0x1234, Bytes(10, 1)));
    file.add(storedChunk(kTexMap, texMapBody(1, 5, "after")));
    file.add(storedChunk(0, Bytes()));
    OpenScene scene(file.build());
    SceneStatus last;
    EXPECT_EQ(texMapIds(scene.reader, last), (std::vector<int32_t>{5}));
    EXPECT_EQ(last, SceneEndOfChunks);
}

} // namespace

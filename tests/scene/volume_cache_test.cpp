// The volumetric material and the volume cache chunk that follows it.
#include "scene/phx_data.h"
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

#include <array>

using namespace scene_writer;

namespace {

Bytes volumeMaterial(int32_t id, bool cacheFollows) {
    Bytes body = materialBody(25, id, 0, "smoke" + std::to_string(id));
    body[kVolumeFlag] = cacheFollows ? 1 : 0;
    return body;
}

IPhxCache* cacheOf(const MaterialRecord& record) {
    IPhxCache* cache;
    std::memcpy(&cache, bytesOf(record) + kVolumeCacheOffset, sizeof cache);
    return cache;
}

TEST(VolumeMaterial, CacheChunkFollowsWhenFlagged) {
    PhxDataPlan plan;
    plan.gridX = 3;
    plan.gridY = 5;
    plan.gridZ = 7;
    for (size_t i = 0; i < 12; ++i)
        plan.transform[i] = float(i) + 0.5f;
    plan.channelOffsets[0] = 0;
    plan.channelOffsets[7] = 16;
    for (int i = 0; i < 32; ++i)
        plan.channelData.push_back(static_cast<uint8_t>(i));
    SceneFile file;
    file.add(zstdChunk(kMaterial, volumeMaterial(1, true)));
    file.add(zstdChunk(kPhxData, phxDataBody(plan)));
    file.add(storedChunk(kMaterial, materialBody(2, 2, 0, "after")));
    OpenScene scene(file.build());
    uint64_t before = liveBlocks();
    MaterialRecord record;
    uint64_t offset = 0;
    ASSERT_EQ(readMaterial(scene.reader, record, offset), SceneOk);
    EXPECT_EQ(offset, file.offsetOf(2)) << "the scan goes on behind the cache chunk";
    IPhxCache* cache = cacheOf(record);
    ASSERT_NE(cache, nullptr);
    EXPECT_EQ(liveBlocks(), before + 2) << "the object and the body it took over";

    std::array<uint32_t, 3> size;
    cache->GetGridSize(size.data());
    EXPECT_EQ(size, (std::array<uint32_t, 3>{3, 5, 7}));
    std::array<float, 12> transform;
    cache->GetTransform(transform.data());
    EXPECT_EQ(transform, plan.transform);
    for (int32_t channel = -1; channel <= 26; ++channel) {
        EXPECT_EQ(cache->HasChannel(channel), channel == 0 || channel == 7) << channel;
        if (channel != 0 && channel != 7) {
            EXPECT_EQ(cache->GetChannel(channel), nullptr) << channel;
        }
    }
    EXPECT_EQ(cache->GetChannel(0), static_cast<TRDF_Load::PhxData*>(cache)->body + 280)
        << "an offset of 0 is the start of the channel data";
    EXPECT_EQ(static_cast<uint8_t*>(cache->GetChannel(7))[0], 16);
    EXPECT_EQ(cache->reserved5() | cache->reserved6() | cache->reserved7(), 0);

    releaseMaterial(record);
    EXPECT_EQ(liveBlocks(), before);
    EXPECT_EQ(cacheOf(record), nullptr);
}

TEST(VolumeMaterial, WhatTheNextChunkDoes) {
    struct Case {
        const char* what;
        bool flag;
        uint32_t nextType;
        uint32_t nextVersion;
        std::vector<int32_t> idsRead;
        SceneStatus last;
        std::vector<bool> cached;
    };
    const Case cases[] = {
        {"flag clear, cache chunk unread", false, kPhxData, 100, {1, 2}, SceneOk, {false, false}},
        {"flag set, cache chunk read", true, kPhxData, 100, {1, 2}, SceneOk, {true, false}},
        // The material that stood where the cache should be is lost for this scan.
        {"flag set, another material next", true, kMaterial, 100, {1, 2}, SceneOk, {false, false}},
        {"flag set, cache of another version", true, kPhxData, 101, {}, SceneBadVersion, {}},
    };
    for (const Case& c : cases) {
        SceneFile file;
        file.add(storedChunk(kMaterial, volumeMaterial(1, c.flag)));
        file.add(storedChunk(c.nextType,
                             c.nextType == kPhxData ? phxDataBody({}) : materialBody(1, 99, 0, "lost"),
                             c.nextVersion));
        file.add(storedChunk(kMaterial, materialBody(1, 2, 0, "two")));
        OpenScene scene(file.build());
        uint64_t before = liveBlocks();
        std::vector<bool> cached;
        SceneStatus last;
        EXPECT_EQ(passIds<MaterialRecord>(
                      readMaterial, scene.reader, last,
                      [&](const MaterialRecord& r) { cached.push_back(cacheOf(r) != nullptr); }),
                  c.idsRead)
            << c.what;
        EXPECT_EQ(last, c.last) << c.what;
        EXPECT_EQ(cached, c.cached) << c.what;
        EXPECT_EQ(liveBlocks(), before) << c.what;
    }
}

TEST(VolumeMaterial, ChainEndingAfterAFlaggedMaterial) {
    for (bool atFileSize : {false, true}) {
        SceneFile file;
        file.add(storedChunk(kMaterial, materialBody(1, 0, 0, "first")));
        file.add(storedChunk(kMaterial, volumeMaterial(1, true)));
        file.endChainAtFileSize = atFileSize;
        OpenScene scene(file.build());
        SceneStatus last;
        // The end of the chain after the volume material never leads back to the start.
        EXPECT_EQ(passIds<MaterialRecord>(readMaterial, scene.reader, last), (std::vector<int32_t>{0}));
        EXPECT_EQ(last, SceneEndOfChunks) << atFileSize;
    }
}

TEST(VolumeMaterial, CacheBodiesThatDoNotHoldTheirChannels) {
    struct Case {
        const char* what;
        size_t bodySize;
        int64_t offset;
        SceneStatus expected;
    };
    const Case cases[] = {
        {"channel table cut", 200, -1, SceneInvalid},
        {"offset past the data", 280 + 8, 9, SceneInvalid},
        {"negative offset", 280 + 8, -2, SceneInvalid},
        {"offset at the data's end", 280 + 8, 8, SceneOk},
        {"all absent", 280, -1, SceneOk},
    };
    for (const Case& c : cases) {
        PhxDataPlan plan;
        plan.channelOffsets[3] = c.offset;
        Bytes body = phxDataBody(plan);
        body.resize(c.bodySize, 0);
        uint64_t before = liveBlocks();
        MaterialRecord record;
        EXPECT_EQ(readFirst<MaterialRecord>(
                      readMaterial,
                      sceneOf({storedChunk(kMaterial, volumeMaterial(1, true)), storedChunk(kPhxData, body)}),
                      record),
                  c.expected)
            << c.what;
        EXPECT_EQ(cacheOf(record) != nullptr, c.expected == SceneOk) << c.what;
        releaseMaterial(record);
        EXPECT_EQ(liveBlocks(), before) << c.what;
    }
}

} // namespace

// Damaged scene files: every reader ends, with a status, and frees what it took.
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

using namespace scene_writer;

namespace {

// One chunk of every kind the readers know, half of them as zstd frames.
Bytes fullScene() {
    SceneFile file;
    file.add(storedChunk(kTextureFile, textureFileBody({})));
    TextureDataPlan textureData;
    textureData.pixels = Bytes(16, 7);
    file.add(zstdChunk(kTextureData, textureDataBody(textureData)));
    file.add(storedChunk(kTexMap, texMapBody(4, 0, "map", 0x200)));
    Bytes volume = materialBody(25, 0, 0, "vol", 0x1960);
    volume[kVolumeFlag] = 1;
    file.add(zstdChunk(kMaterial, volume));
    PhxDataPlan grid;
    grid.channelOffsets[2] = 0;
    grid.channelData = Bytes(64, 1);
    file.add(storedChunk(kPhxData, phxDataBody(grid)));
    file.add(zstdChunk(kSettings, settingsBody({})));
    CameraPathPlan cameraPath;
    cameraPath.trackA = {FileKey{1, 2, 3, 4, 5, 6, 7, 8, 9}};
    file.add(storedChunk(kCamera, cameraBody(1)));
    file.add(zstdChunk(kCameraPath, cameraPathBody(cameraPath)));
    LightPathPlan lightPath;
    lightPath.track = {FileKey{}};
    file.add(zstdChunk(kLight, lightBody(8), lightVersion(8)));
    file.add(storedChunk(kLightPath, lightPathBody(lightPath)));
    return file.build();
}

// Runs one pass of a reader over fresh records and counts the records it read; -1 when it
// did not end on its own.
template <class Record> int pass(SceneFileReader& reader, RecordReader<Record> read) {
    uint64_t offset = 0;
    for (int records = 0; records < 64;) {
        auto record = std::make_unique<Record>();
        SceneStatus status = read(reader, *record, offset);
        releaseRecord(*record);
        EXPECT_GE(status, SceneOk);
        EXPECT_LE(status, SceneEndOfChunks);
        if (status == SceneOk) ++records;
        if (status != SceneOk || offset == 0) return records;
    }
    return -1;
}

std::vector<int> readEverything(SceneFileReader& reader) {
    return {pass<TextureFileRecord>(reader, readTextureFile),
            pass<TextureDataRecord>(reader, readTextureData),
            pass<TexMapRecord>(reader, readTexMap),
            pass<MaterialRecord>(reader, readMaterial),
            pass<SettingsRecord>(reader, readSettings),
            pass<TempCamera>(reader, readCamera),
            pass<TempLight>(reader, readLight)};
}

TEST(DamagedScene, RandomDamageNeverHangsOrLeaks) {
    const Bytes original = fullScene();
    {
        OpenScene scene(original);
        ASSERT_EQ(scene.status, SceneOk);
        ASSERT_EQ(readEverything(scene.reader), std::vector<int>(7, 1)) << "the undamaged file reads cleanly";
    }
    std::mt19937 random(20240611);
    for (int round = 0; round < 400; ++round) {
        Bytes bytes = original;
        int damages = 1 + static_cast<int>(random() % 6);
        for (int d = 0; d < damages; ++d) {
            size_t at = random() % bytes.size();
            switch (random() % 3) {
            case 0:
                bytes[at] ^= static_cast<uint8_t>(1u << (random() % 8));
                break;
            case 1:
                bytes[at] = static_cast<uint8_t>(random());
                break;
            default:
                bytes.resize(std::max<size_t>(at, 1));
                break;
            }
        }
        OpenScene scene(bytes);
        uint64_t before = liveBlocks();
        if (scene.status == SceneOk) {
            std::vector<int> counts = readEverything(scene.reader);
            EXPECT_EQ(std::count(counts.begin(), counts.end(), -1), 0) << "round " << round;
        }
        EXPECT_EQ(liveBlocks(), before) << "round " << round;
        if (HasFailure()) break;
    }
}

} // namespace

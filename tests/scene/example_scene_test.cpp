// The example scene that the build writes reads back completely, and names no texmap where it
// means none.
#include "common/unicode.h"
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>

namespace {

int32_t secondTexMapOf(const LightRecord& light) {
    int32_t id;
    std::memcpy(&id, reinterpret_cast<const uint8_t*>(&light) + kLightSecondTexMapOffset, sizeof id);
    return id;
}

// Records of a kind, each shown to `check` before it is given back.
template <class Record, class Check>
int countRecords(SceneFileReader& reader, RecordReader<Record> read, Check check) {
    int records = 0;
    uint64_t at = 0;
    SceneStatus status;
    do {
        auto record = std::make_unique<Record>();
        status = read(reader, *record, at);
        if (status == SceneOk) {
            ++records;
            check(*record);
        }
        releaseRecord(*record);
    } while (status == SceneOk && at != 0);
    EXPECT_TRUE(status == SceneOk || status == SceneEndOfChunks) << status;
    return records;
}

TEST(ExampleScene, EveryRecordReads) {
    SceneFileReader reader;
    ASSERT_EQ(reader.open(utf8ToUtf16(EXAMPLE_SCENE_PATH).c_str()), SceneOk);

    auto settings = std::make_unique<SettingsRecord>();
    initSettings(*settings);
    uint64_t offset = 0;
    ASSERT_EQ(readSettings(reader, *settings, offset), SceneOk);
    EXPECT_EQ(settings->ImageSizeX, 480);
    EXPECT_EQ(settings->NumChannels, 2);
    EXPECT_EQ(std::u16string(settings->Channels[1].name), u"normals");

    EXPECT_EQ(countRecords<TextureFileRecord>(reader, readTextureFile, [](auto&) {}), 0);
    EXPECT_EQ(countRecords<TextureDataRecord>(reader, readTextureData, [](auto&) {}), 1);
    EXPECT_EQ(countRecords<TexMapRecord>(reader, readTexMap, [](auto&) {}), 1);
    EXPECT_EQ(countRecords<MaterialRecord>(reader, readMaterial, [](auto&) {}), 5);
    EXPECT_EQ(countRecords<TempCamera>(reader, readCamera,
                                       [](const TempCamera& camera) {
                                           EXPECT_EQ(camera.cameraRole, 0);
                                           EXPECT_EQ(camera.camera.type, 1);
                                           EXPECT_EQ(camera.trackACount, 1u);
                                           EXPECT_EQ(camera.camera.DistortionMap, -1);
                                           EXPECT_EQ(camera.camera.ApertureMap, -1);
                                       }),
              1);
    EXPECT_EQ(countRecords<TempLight>(reader, readLight,
                                      [](const TempLight& light) {
                                          EXPECT_EQ(std::u16string(light.lightName), light.light.type == 9 ? u"sun" : u"sky");
                                          EXPECT_EQ(light.light.texMap, -1);
                                          if (light.light.type == 4) {
                                              EXPECT_EQ(secondTexMapOf(light.light), -1);
                                          }
                                      }),
              2);
}

} // namespace

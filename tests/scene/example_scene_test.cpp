// The example scene that the build writes reads back completely.
#include "common/unicode.h"
#include "scene/scene_readers.h"
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

TEST(ExampleScene, EveryRecordReads) {
    SceneFileReader reader;
    ASSERT_EQ(reader.open(utf8ToUtf16(EXAMPLE_SCENE_PATH).c_str()), SceneOk);

    auto settings = std::make_unique<SettingsRecord>();
    initSettings(*settings);
    uint64_t offset = 0;
    ASSERT_EQ(readSettings(reader, *settings, offset), SceneOk);
    EXPECT_EQ(settings->ImageSizeX, 320);
    EXPECT_EQ(settings->NumChannels, 2);
    EXPECT_EQ(std::u16string(settings->Channels[1].name), u"normals");

    int textures = 0, texMaps = 0, materials = 0, cameras = 0, lights = 0;
    auto count = [&](auto read, int& counter) {
        uint64_t at = 0;
        SceneStatus status;
        do {
            status = read(at);
            if (status == SceneOk) ++counter;
        } while (status == SceneOk && at != 0);
        EXPECT_TRUE(status == SceneOk || status == SceneEndOfChunks) << status;
    };
    count(
        [&](uint64_t& at) {
            TextureFileRecord r;
            return readTextureFile(reader, r, at);
        },
        textures);
    count(
        [&](uint64_t& at) {
            TextureDataRecord r;
            SceneStatus status = readTextureData(reader, r, at);
            if (status == SceneOk) releaseTextureData(r);
            return status;
        },
        textures);
    count(
        [&](uint64_t& at) {
            TexMapRecord r;
            return readTexMap(reader, r, at);
        },
        texMaps);
    count(
        [&](uint64_t& at) {
            MaterialRecord r;
            SceneStatus status = readMaterial(reader, r, at);
            releaseMaterial(r);
            return status;
        },
        materials);
    count(
        [&](uint64_t& at) {
            TempCamera camera;
            SceneStatus status = readCamera(reader, camera, at);
            if (status == SceneOk) {
                EXPECT_EQ(camera.cameraRole, 0);
                EXPECT_EQ(camera.camera.type, 1);
                EXPECT_EQ(camera.trackACount, 1u);
            }
            return status;
        },
        cameras);
    count(
        [&](uint64_t& at) {
            TempLight light;
            SceneStatus status = readLight(reader, light, at);
            if (status == SceneOk) {
                EXPECT_EQ(std::u16string(light.lightName), u"sun");
            }
            return status;
        },
        lights);
    EXPECT_EQ(textures, 2);
    EXPECT_EQ(texMaps, 2);
    EXPECT_EQ(materials, 2);
    EXPECT_EQ(cameras, 1);
    EXPECT_EQ(lights, 1);
}

} // namespace

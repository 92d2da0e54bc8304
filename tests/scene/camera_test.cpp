// Cameras and lights with their path chunks, the camera copy and the objects' release.
#include "scene/track_keys.h"
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

using namespace scene_writer;

namespace {

FileKey key(uint32_t first) {
    FileKey k;
    for (uint32_t i = 0; i < 9; ++i)
        k[i] = first + i;
    return k;
}

// The memory word each file word lands in; the made key's defaults are cleared first.
void expectKey(const TrackKey& actual, uint32_t first) {
    const size_t wordOf[9] = {0, 1, 4, 5, 6, 7, 8, 9, 2};
    uint32_t expected[16] = {};
    for (size_t i = 0; i < 9; ++i)
        expected[wordOf[i]] = first + i;
    EXPECT_EQ(std::vector<uint32_t>(actual.words, actual.words + 16),
              std::vector<uint32_t>(expected, expected + 16));
}

Bytes cameraFile(const Bytes& camera, const CameraPathPlan& path) {
    SceneFile file;
    file.add(storedChunk(kTexMap, texMapBody(1, 0, "before")));
    file.add(zstdChunk(kCamera, camera));
    file.add(storedChunk(kCameraPath, cameraPathBody(path)));
    return file.build();
}

TEST(ReadCamera, PathBodyFillsTheObjectAndTheCopyIsDeep) {
    CameraPathPlan path;
    path.trackA = {key(10), key(20)};
    path.trackB = {key(30)};
    path.word44 = 0x44;
    path.word48 = 0x48;
    path.word52 = 0x52;
    path.target = {1.5f, -2.0f, 3.25f};
    path.cameraFile = "shot.xml";
    const Bytes bytes = cameraFile(cameraBody(4), path);
    uint64_t before = liveBlocks();
    auto source = std::make_unique<TempCamera>();
    uint64_t offset = 1;
    ASSERT_EQ(readFirst(readCamera, bytes, *source, &offset), SceneOk);
    EXPECT_EQ(offset, 0u);
    EXPECT_EQ(source->camera.type, 4);
    EXPECT_EQ(source->cameraRole, 0);
    EXPECT_EQ(std::vector<float>(source->cameraTarget, source->cameraTarget + 4),
              (std::vector<float>{1.5f, -2.0f, 3.25f, 1.0f}));
    EXPECT_EQ(std::vector<uint32_t>({source->path4C, source->path50, source->path64}),
              (std::vector<uint32_t>{0x44, 0x48, 0x52}));
    EXPECT_EQ(std::u16string(source->cameraFile), u"shot.xml");
    ASSERT_EQ(source->trackACount, 2u);
    EXPECT_EQ(trackLength(source->trackA), 2u);
    expectKey(source->trackA[0], 10);
    expectKey(source->trackA[1], 20);
    ASSERT_EQ(source->trackBCount, 1u);
    expectKey(source->trackB[0], 30);
    EXPECT_EQ(source->trackC, nullptr);
    EXPECT_EQ(liveBlocks(), before + 2);
    source->value14 = 0x1414;
    {
        auto target = std::make_unique<TempCamera>();
        target->trackC = allocateTrack(5); // held before the copy, released by it
        target->trackCCount = 5;
        ASSERT_EQ(assignCamera(*target, *source), SceneOk);
        EXPECT_EQ(target->value14, 0x1414u);
        EXPECT_EQ(std::u16string(target->cameraFile), u"shot.xml");
        EXPECT_EQ(std::memcmp(&target->camera, &source->camera, sizeof(CameraRecord)), 0);
        ASSERT_EQ(target->trackACount, 2u);
        EXPECT_NE(target->trackA, source->trackA);
        EXPECT_EQ(trackLength(target->trackA), 2u);
        expectKey(target->trackA[1], 20);
        ASSERT_EQ(target->trackBCount, 1u);
        expectKey(target->trackB[0], 30);
        EXPECT_EQ(target->trackC, nullptr);
        EXPECT_EQ(target->trackCCount, 0u);
        EXPECT_EQ(liveBlocks(), before + 4);
    }
    EXPECT_EQ(assignCamera(*source, *source), SceneOk);
    EXPECT_EQ(source->trackACount, 2u);
    source.reset();
    EXPECT_EQ(liveBlocks(), before) << "the cameras destroy their tracks";
}

TEST(ReadCamera, ImageLengthsByType) {
    const size_t lengths[] = {0, 1160, 1036, 1028, 1040, 1032};
    for (int32_t type = 1; type <= 5; ++type) {
        // Bytes past the type's image are not part of the record.
        Bytes body = cameraBody(type, 1160);
        for (size_t i = 764; i < body.size(); ++i)
            body[i] = i < lengths[type] ? 0x11 : 0xAB;
        TempCamera camera;
        ASSERT_EQ(readFirst(readCamera, cameraFile(body, {}), camera), SceneOk) << type;
        const uint8_t* record = bytesOf(camera.camera);
        EXPECT_EQ(record[lengths[type] - 1], 0x11) << type;
        if (lengths[type] < 1160) {
            EXPECT_EQ(record[lengths[type]], 0) << type;
        }
    }
}

TEST(ReadCamera, ShortCameraBodyKeepsTheDefaultsBehindIt) {
    Bytes body = cameraBody(2, 200);
    putF32(body, 4, 36.0f);
    TempCamera camera;
    ASSERT_EQ(readFirst(readCamera, cameraFile(body, {}), camera), SceneOk);
    EXPECT_EQ(camera.camera.type, 2);
    EXPECT_EQ(camera.camera.SensorSize, 36.0f);
    EXPECT_EQ(camera.camera.WhiteBalanceK, -6500.0f);
    EXPECT_EQ(camera.camera.DistortionMap, -1);
}

using Change = std::function<void(SceneFile&)>;

Change pathBody(const Bytes& body) {
    return [body](SceneFile& f) { f[1].stored = body; };
}

Bytes cameraPath(const std::string& file, std::optional<uint64_t> at = {},
                 std::optional<uint32_t> count = {}) {
    CameraPathPlan path;
    path.cameraFile = file;
    if (at || count) path.trackA = {key(1)};
    path.trackAOffset = at;
    path.trackACount = count;
    return cameraPathBody(path);
}

Bytes lightPath(const std::string& secondName, std::optional<uint64_t> at = {}) {
    LightPathPlan path;
    path.secondName = secondName;
    if (at) path.track = {FileKey{}};
    path.trackOffset = at;
    return lightPathBody(path);
}

TEST(ObjectAndPath, Failures) {
    struct Case {
        const char* what;
        uint32_t kind;
        Change change;
        SceneStatus expected;
    };
    const Case cases[] = {
        {"camera type 0", kCamera, [](SceneFile& f) { f[0].stored = cameraBody(0, 1160); }, SceneInvalid},
        {"camera type 6", kCamera, [](SceneFile& f) { f[0].stored = cameraBody(6, 1160); }, SceneInvalid},
        {"camera version", kCamera, [](SceneFile& f) { f[0].version = 101; }, SceneBadVersion},
        {"camera path version", kCamera, [](SceneFile& f) { f[1].version = 99; }, SceneBadVersion},
        {"light path version", kLight, [](SceneFile& f) { f[1].version = 101; }, SceneBadVersion},
        {"camera path missing", kCamera,
         [](SceneFile& f) {
             f.chain = {0, 2, 1};
         },
         SceneInvalid},
        {"light path missing", kLight,
         [](SceneFile& f) {
             f.chain = {0, 2};
         },
         SceneInvalid},
        {"chain ends after the camera", kCamera, [](SceneFile& f) { f.chain = {0}; }, SceneEndOfChunks},
        {"chain ends after the light", kLight, [](SceneFile& f) { f.chain = {0}; }, SceneEndOfChunks},
        {"chain ends at the file size", kCamera,
         [](SceneFile& f) {
             f.chain = {0};
             f.endChainAtFileSize = true;
         },
         SceneEndOfChunks},
        {"camera file of 64 characters", kCamera, pathBody(cameraPath(std::string(64, 'c'))), SceneInvalid},
        // The key would end 10 bytes past the body.
        {"camera track outside the body", kCamera, pathBody(cameraPath("", 220)), SceneInvalid},
        {"camera track count beyond the body", kCamera, pathBody(cameraPath("", {}, ~0u)), SceneInvalid},
        {"light name of 64 characters", kLight, pathBody(lightPath(std::string(64, 's'))), SceneInvalid},
        {"light track outside the body", kLight, pathBody(lightPath("", 1u << 20)), SceneInvalid},
    };
    for (const Case& c : cases) {
        const bool camera = c.kind == kCamera;
        SceneFile file;
        file.add(camera ? storedChunk(kCamera, cameraBody(3)) : storedChunk(kLight, lightBody(3)));
        file.add(camera ? storedChunk(kCameraPath, cameraPathBody({}))
                        : storedChunk(kLightPath, lightPathBody({})));
        file.add(camera ? storedChunk(kLight, lightBody(5)) : storedChunk(kCamera, cameraBody(1)));
        c.change(file);
        const Bytes bytes = file.build();
        uint64_t before = liveBlocks();
        if (camera) {
            TempCamera object;
            EXPECT_EQ(readFirst(readCamera, bytes, object), c.expected) << c.what;
        } else {
            TempLight object;
            EXPECT_EQ(readFirst(readLight, bytes, object), c.expected) << c.what;
        }
        EXPECT_EQ(liveBlocks(), before) << c.what;
    }
}

TEST(ObjectAndPath, ReleaseFreesObjectAndTracks) {
    uint64_t before = liveBlocks();
    TempCamera* camera = TempCamera::create();
    TempLight* light = TempLight::create();
    ASSERT_TRUE(camera && light);
    camera->trackA = allocateTrack(2);
    camera->trackACount = 2;
    light->track = allocateTrack(3);
    light->trackCount = 3;
    EXPECT_EQ(liveBlocks(), before + 4);
    static_cast<bridgeCamera*>(camera)->Release();
    static_cast<bridgeLight*>(light)->Release();
    EXPECT_EQ(liveBlocks(), before);
    EXPECT_EQ(allocateTrack(uint64_t(1) << 60), nullptr);
}

} // namespace

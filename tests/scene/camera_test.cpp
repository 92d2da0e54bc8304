// Cameras: the object, its defaults, the camera chunk with its path, tracks and the copy.
#include "scene/scene_readers.h"
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

// The memory word each file word lands in, as the format maps them.
const size_t kExpectedWord[9] = {0, 1, 4, 5, 6, 7, 8, 9, 2};

void expectKey(const TrackKey& actual, uint32_t first) {
    uint32_t expected[16] = {};
    for (size_t i = 0; i < 9; ++i)
        expected[kExpectedWord[i]] = first + i;
    for (size_t w = 0; w < 16; ++w)
        EXPECT_EQ(actual.words[w], expected[w]) << "word " << w;
}

size_t offsetIn(const void* object, const void* field) {
    return static_cast<size_t>(static_cast<const uint8_t*>(field) - static_cast<const uint8_t*>(object));
}

TEST(TempCameraObject, LayoutAsTheEngineSeesIt) {
    auto camera = std::make_unique<TempCamera>();
    EXPECT_EQ(offsetIn(camera.get(), &camera->value14), 0x14u);
    EXPECT_EQ(offsetIn(camera.get(), &camera->trackA), 0x30u);
    EXPECT_EQ(offsetIn(camera.get(), &camera->trackC), 0x58u);
    EXPECT_EQ(offsetIn(camera.get(), &camera->cameraRole), 0x68u);
    EXPECT_EQ(offsetIn(camera.get(), &camera->camera), 0xECu);
    EXPECT_EQ(offsetIn(static_cast<bridgeCamera*>(camera.get()), camera.get()), 0u) << "table pointer first";
}

TEST(TempCameraObject, Defaults) {
    auto camera = std::make_unique<TempCamera>();
    EXPECT_EQ(camera->cameraRole, -1);
    EXPECT_EQ(camera->trackA, nullptr);
    EXPECT_EQ(camera->trackBCount, 0u);
    EXPECT_EQ(camera->cameraFile[0], 0);
    const CameraRecord& r = camera->camera;
    EXPECT_EQ(wordAt(r, 0), 0x7FFFFFFFu);
    struct FloatAt {
        size_t offset;
        float value;
    };
    const FloatAt floats[] = {{4, 1.0f},   {8, 1.0f},       {152, 1.0f}, {416, 1.0f},
                              {556, 1.0f}, {588, -6500.0f}, {592, 1.0f}, {596, 1.0f},
                              {600, 1.0f}, {616, 1.0f},     {140, 0.0f}, {604, 0.0f}};
    for (const FloatAt& f : floats)
        EXPECT_EQ(floatAt(r, f.offset), f.value) << f.offset;
    EXPECT_EQ(wordAt(r, 420), 0xFFFFFFFFu);
    EXPECT_EQ(wordAt(r, 584), 0xFFFFFFFFu);
    // Constant splines: the first segment spans everything, the rest are off.
    struct SplineAt {
        size_t offset;
        int segments;
        float value;
    };
    const SplineAt splines[] = {{12, 4, 0.0f}, {156, 8, 1.0f}, {428, 4, -1.0f}, {632, 4, 0.0f}};
    for (const SplineAt& s : splines) {
        EXPECT_EQ(wordAt(r, s.offset), 0xF149F2CAu) << s.offset;
        EXPECT_EQ(wordAt(r, s.offset + 4), 0xF2FC6F7Cu) << s.offset;
        EXPECT_EQ(wordAt(r, s.offset + 8), 0x7149F2CAu) << s.offset;
        EXPECT_EQ(wordAt(r, s.offset + 12), 0x7149F2CAu) << s.offset;
        for (int v = 0; v < 4; ++v)
            EXPECT_EQ(floatAt(r, s.offset + 16 + 4 * v), s.value) << s.offset;
        for (int seg = 1; seg < s.segments; ++seg) {
            EXPECT_EQ(floatAt(r, s.offset + 32 * seg), 1.0f) << s.offset;
            for (int w = 1; w < 8; ++w)
                EXPECT_EQ(wordAt(r, s.offset + 32 * seg + 4 * w), 0u) << s.offset;
        }
    }
}

TEST(TrackKeys, MadeKeysAndTheFileMapping) {
    TrackKey made;
    constructTrackKey(made);
    EXPECT_EQ(made.words[2], 0x7FFFFFFFu);
    EXPECT_EQ(made.words[9], floatBits(1.0f));
    EXPECT_EQ(made.words[14], floatBits(1.0f));

    Bytes file;
    for (uint32_t i = 0; i < 9; ++i)
        put32(file, 4 + 4 * i, 100 + i); // four bytes of lead-in
    TrackKey* track = allocateTrack(1);
    ASSERT_NE(track, nullptr);
    EXPECT_EQ(trackLength(track), 1u);
    decodeTrackKeys(track, ByteSpan{file.data(), file.size()}, 4, 1);
    expectKey(track[0], 100); // the made defaults are cleared before the copy
    freeTrack(track);
}

TEST(TrackKeys, AbsurdCountsFailTheAllocation) {
    EXPECT_EQ(allocateTrack(uint64_t(1) << 60), nullptr);
    EXPECT_EQ(allocateTrack(UINT64_MAX), nullptr);
}

Bytes cameraScene(const CameraPathPlan& path, int32_t type = 1) {
    SceneFile file;
    file.add(storedChunk(kTexMap, texMapBody(1, 0, "before")));
    file.add(zstdChunk(kCamera, cameraBody(type)));
    file.add(storedChunk(kCameraPath, cameraPathBody(path)));
    return file.build();
}

TEST(ReadCamera, PathBodyFillsTheObject) {
    CameraPathPlan path;
    path.trackA = {key(10), key(20)};
    path.trackC = {key(30)};
    path.word44 = 0x44;
    path.word48 = 0x48;
    path.word52 = 0x52;
    path.role = 0;
    path.target = {1.5f, -2.0f, 3.25f};
    path.cameraFile = "shot.xml";
    OpenScene scene(cameraScene(path));
    uint64_t before = liveBlocks();
    {
        TempCamera camera;
        uint64_t offset = 0;
        ASSERT_EQ(readCamera(scene.reader, camera, offset), SceneOk);
        EXPECT_EQ(offset, 0u);
        EXPECT_EQ(camera.camera.type, 1);
        EXPECT_EQ(camera.cameraRole, 0);
        EXPECT_EQ(camera.cameraTarget[0], 1.5f);
        EXPECT_EQ(camera.cameraTarget[1], -2.0f);
        EXPECT_EQ(camera.cameraTarget[2], 3.25f);
        EXPECT_EQ(camera.cameraTarget[3], 1.0f);
        EXPECT_EQ(camera.path4C, 0x44u);
        EXPECT_EQ(camera.path50, 0x48u);
        EXPECT_EQ(camera.path64, 0x52u);
        EXPECT_EQ(std::u16string(camera.cameraFile), u"shot.xml");
        ASSERT_EQ(camera.trackACount, 2u);
        EXPECT_EQ(trackLength(camera.trackA), 2u);
        expectKey(camera.trackA[0], 10);
        expectKey(camera.trackA[1], 20);
        EXPECT_EQ(camera.trackB, nullptr);
        EXPECT_EQ(camera.trackBCount, 0u);
        ASSERT_EQ(camera.trackCCount, 1u);
        expectKey(camera.trackC[0], 30);
        EXPECT_EQ(liveBlocks(), before + 2);
    }
    EXPECT_EQ(liveBlocks(), before) << "the camera destroys its tracks";
}

TEST(ReadCamera, ShortCameraBodyKeepsTheDefaultsBehindIt) {
    SceneFile file;
    Bytes body = cameraBody(2, 200);
    putF32(body, 4, 36.0f);
    file.add(storedChunk(kCamera, body));
    file.add(storedChunk(kCameraPath, cameraPathBody({})));
    OpenScene scene(file.build());
    TempCamera camera;
    uint64_t offset = 0;
    ASSERT_EQ(readCamera(scene.reader, camera, offset), SceneOk);
    EXPECT_EQ(camera.camera.type, 2);
    EXPECT_EQ(camera.camera.SensorSize, 36.0f);
    EXPECT_EQ(camera.camera.WhiteBalanceK, -6500.0f);
    EXPECT_EQ(camera.camera.DistortionMap, -1);
}

TEST(ReadCamera, Failures) {
    struct Case {
        const char* what;
        std::function<void(SceneFile&)> change;
        SceneStatus expected;
    };
    const Case cases[] = {
        {"type 0", [](SceneFile& f) { f[0].stored = cameraBody(0, 1160); }, SceneInvalid},
        {"type 6", [](SceneFile& f) { f[0].stored = cameraBody(6, 1160); }, SceneInvalid},
        {"camera version", [](SceneFile& f) { f[0].version = 101; }, SceneBadVersion},
        {"path version", [](SceneFile& f) { f[1].version = 99; }, SceneBadVersion},
        {"another chunk instead of the path",
         [](SceneFile& f) {
             f.chain = {0, 2, 1};
         },
         SceneInvalid},
        {"chain ends after the camera (0)", [](SceneFile& f) { f.chain = {0}; }, SceneEndOfChunks},
        {"chain ends after the camera (file size)",
         [](SceneFile& f) {
             f.chain = {0};
             f.endChainAtFileSize = true;
         },
         SceneEndOfChunks},
        {"camera file of 64 characters",
         [](SceneFile& f) {
             CameraPathPlan path;
             path.cameraFile = std::string(64, 'c');
             f[1].stored = cameraPathBody(path);
         },
         SceneInvalid},
        {"track outside the body",
         [](SceneFile& f) {
             CameraPathPlan path;
             path.trackA = {key(1)};
             path.trackAOffset = 220; // the key would end 10 bytes past the body
             f[1].stored = cameraPathBody(path);
         },
         SceneInvalid},
        {"track count beyond the body",
         [](SceneFile& f) {
             CameraPathPlan path;
             path.trackA = {key(1)};
             path.trackACount = 0xFFFFFFFF;
             f[1].stored = cameraPathBody(path);
         },
         SceneInvalid},
    };
    for (const Case& c : cases) {
        SceneFile file;
        file.add(storedChunk(kCamera, cameraBody(3)));
        file.add(storedChunk(kCameraPath, cameraPathBody({})));
        file.add(storedChunk(kLight, lightBody(5)));
        c.change(file);
        OpenScene scene(file.build());
        uint64_t before = liveBlocks();
        {
            TempCamera camera;
            uint64_t offset = 0;
            EXPECT_EQ(readCamera(scene.reader, camera, offset), c.expected) << c.what;
        }
        EXPECT_EQ(liveBlocks(), before) << c.what;
    }
}

TEST(ReadCamera, ImageLengthsByType) {
    const size_t lengths[] = {0, 1160, 1036, 1028, 1040, 1032};
    for (int32_t type = 1; type <= 5; ++type) {
        // Bytes past the type's image are not part of the record.
        Bytes body = cameraBody(type, 1160);
        for (size_t i = 764; i < body.size(); ++i)
            body[i] = i < lengths[type] ? 0x11 : 0xAB;
        SceneFile file;
        file.add(storedChunk(kCamera, body));
        file.add(storedChunk(kCameraPath, cameraPathBody({})));
        OpenScene scene(file.build());
        TempCamera camera;
        uint64_t offset = 0;
        ASSERT_EQ(readCamera(scene.reader, camera, offset), SceneOk) << type;
        const uint8_t* record = reinterpret_cast<const uint8_t*>(&camera.camera);
        EXPECT_EQ(record[lengths[type] - 1], 0x11) << type;
        if (lengths[type] < 1160) {
            EXPECT_EQ(record[lengths[type]], 0) << type;
        }
    }
}

TEST(AssignCamera, CopiesPlainFieldsAndDeepCopiesTracks) {
    CameraPathPlan path;
    path.trackA = {key(1), key(2), key(3)};
    path.trackB = {key(4)};
    path.role = 0;
    path.cameraFile = "a.xml";
    OpenScene scene(cameraScene(path, 4));
    auto source = std::make_unique<TempCamera>();
    uint64_t offset = 0;
    ASSERT_EQ(readCamera(scene.reader, *source, offset), SceneOk);
    source->value14 = 0x1414;

    uint64_t before = liveBlocks();
    {
        auto target = std::make_unique<TempCamera>();
        target->trackC = allocateTrack(5); // held before the copy, released by it
        target->trackCCount = 5;
        ASSERT_EQ(assignCamera(*target, *source), SceneOk);
        EXPECT_EQ(target->camera.type, 4);
        EXPECT_EQ(target->cameraRole, 0);
        EXPECT_EQ(target->value14, 0x1414u);
        EXPECT_EQ(std::u16string(target->cameraFile), u"a.xml");
        ASSERT_EQ(target->trackACount, 3u);
        EXPECT_NE(target->trackA, source->trackA);
        EXPECT_EQ(trackLength(target->trackA), 3u);
        expectKey(target->trackA[2], 3);
        ASSERT_EQ(target->trackBCount, 1u);
        expectKey(target->trackB[0], 4);
        EXPECT_EQ(target->trackC, nullptr);
        EXPECT_EQ(target->trackCCount, 0u);
        EXPECT_EQ(std::memcmp(&target->camera, &source->camera, sizeof(CameraRecord)), 0);
        EXPECT_EQ(liveBlocks(), before + 2);
    }
    EXPECT_EQ(liveBlocks(), before);
    EXPECT_EQ(assignCamera(*source, *source), SceneOk);
    EXPECT_EQ(source->trackACount, 3u);
}

TEST(TempCameraObject, ReleaseFreesObjectAndTracks) {
    uint64_t before = liveBlocks();
    TempCamera* camera = TempCamera::create();
    ASSERT_NE(camera, nullptr);
    camera->trackA = allocateTrack(2);
    camera->trackACount = 2;
    EXPECT_EQ(liveBlocks(), before + 2);
    bridgeCamera* asSeen = camera;
    asSeen->Release();
    EXPECT_EQ(liveBlocks(), before);
}

} // namespace

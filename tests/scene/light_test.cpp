// Lights: the object, its defaults, the versions and texts by type, and the path chunk.
#include "scene/scene_readers.h"
#include "scene/track_keys.h"
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

using namespace scene_writer;

namespace {

Bytes lightScene(int32_t type, uint32_t version, const LightPathPlan& path = {}) {
    SceneFile file;
    file.add(storedChunk(kLight, lightBody(type), version));
    file.add(storedChunk(kLightPath, lightPathBody(path)));
    return file.build();
}

TEST(TempLightObject, LayoutAndDefaults) {
    auto light = std::make_unique<TempLight>();
    const uint8_t* base = reinterpret_cast<const uint8_t*>(light.get());
    EXPECT_EQ(reinterpret_cast<const uint8_t*>(&light->track) - base, 0x10);
    EXPECT_EQ(reinterpret_cast<const uint8_t*>(&light->lightSecondName) - base, 0xA4);
    EXPECT_EQ(reinterpret_cast<const uint8_t*>(&light->light) - base, 0x130);
    EXPECT_EQ(light->path1C, -1);
    EXPECT_EQ(light->trackCount, 0u);

    const LightRecord& r = light->light;
    EXPECT_EQ(wordAt(r, 0), 0x7FFFFFFFu);
    EXPECT_EQ(wordAt(r, 4), 1u);
    EXPECT_EQ(wordAt(r, 1544), 0xFFFFFFFFu);
    EXPECT_EQ(floatAt(r, 1548), 1.0f);
    EXPECT_EQ(floatAt(r, 1552), 0.0f);
    for (size_t at = 1556; at < 1600; at += 4)
        EXPECT_EQ(floatAt(r, at), 1.0f) << at;
    const uint8_t flags[12] = {1, 1, 0, 0, 1, 1, 1, 1, 1, 0, 0, 0};
    EXPECT_EQ(std::memcmp(reinterpret_cast<const uint8_t*>(&r) + 1604, flags, 12), 0);
    struct SplineAt {
        size_t offset;
        uint32_t valueBits;
    };
    const SplineAt splines[] = {{8, floatBits(1.0f)}, {776, floatBits(6500.0f)}, {904, floatBits(1.0f)},
                                {1160, 0x40490FDB},   {1288, 0x40490FDB},        {1416, floatBits(1.0f)}};
    for (const SplineAt& s : splines) {
        EXPECT_EQ(wordAt(r, s.offset), 0xF149F2CAu) << s.offset;
        EXPECT_EQ(wordAt(r, s.offset + 28), s.valueBits) << s.offset;
        EXPECT_EQ(floatAt(r, s.offset + 32), 1.0f) << s.offset << ": second segment off";
        EXPECT_EQ(floatAt(r, s.offset + 32 + 12), 0.0f) << s.offset;
    }
    for (int seg = 0; seg < 4; ++seg) {
        EXPECT_EQ(floatAt(r, 1032 + 32 * seg), 1.0f) << "all four switched off";
        EXPECT_EQ(floatAt(r, 1032 + 32 * seg + 12), 0.0f);
    }
    for (size_t block : {136u, 456u}) {
        for (int seg = 0; seg < 4; ++seg) {
            size_t s = block + 80 * seg;
            EXPECT_EQ(floatAt(r, s + 8), -1.0f) << s; // t1 triple
            EXPECT_EQ(floatAt(r, s + 28), 1.0f) << s; // t2 triple
            EXPECT_EQ(floatAt(r, s + 32), 1.0f) << s; // colours
            EXPECT_EQ(floatAt(r, s + 76), 1.0f) << s;
        }
    }
}

TEST(ReadLight, VersionsByType) {
    struct Case {
        int32_t type;
        uint32_t version;
        SceneStatus expected;
    };
    const Case cases[] = {
        {1, 101, SceneOk},         {2, 101, SceneOk},         {6, 101, SceneOk},
        {3, 100, SceneOk},         {4, 100, SceneOk},         {5, 100, SceneOk},
        {8, 100, SceneOk},         {9, 100, SceneOk},         {1, 100, SceneBadVersion},
        {2, 100, SceneBadVersion}, {6, 100, SceneBadVersion}, {3, 101, SceneBadVersion},
        {9, 101, SceneBadVersion}, {7, 100, SceneInvalid},    {7, 0, SceneInvalid},
        {0, 100, SceneInvalid},    {10, 100, SceneInvalid},
    };
    for (const Case& c : cases) {
        OpenScene scene(lightScene(c.type, c.version));
        TempLight light;
        uint64_t offset = 0;
        EXPECT_EQ(readLight(scene.reader, light, offset), c.expected) << c.type << " v" << c.version;
        if (c.expected != SceneInvalid) {
            EXPECT_EQ(light.light.type, c.type);
        }
    }
}

TEST(ReadLight, OneTextPerTypeIsWidened) {
    struct Case {
        int32_t type;
        size_t text;       // converted in place
        size_t secondText; // left as the file has it, 0 for none
    };
    const Case cases[] = {{1, 0x6D4, 0x6D4 + 0x300},
                          {2, 0x6D8, 0x6D8 + 0x300},
                          {3, 0x760, 0x760 + 0x300},
                          {6, 0x758, 0x758 + 0x300},
                          {8, 0xC00, 0}};
    for (const Case& c : cases) {
        SceneFile file;
        Bytes body = lightBody(c.type);
        putText(body, c.text, 0x300, "ies/profile.ies");
        if (c.secondText) putText(body, c.secondText, 0x300, "narrow");
        file.add(storedChunk(kLight, body, lightVersion(c.type)));
        file.add(storedChunk(kLightPath, lightPathBody({})));
        OpenScene scene(file.build());
        TempLight light;
        uint64_t offset = 0;
        ASSERT_EQ(readLight(scene.reader, light, offset), SceneOk) << c.type;
        const uint8_t* record = reinterpret_cast<const uint8_t*>(&light.light);
        EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(record + c.text)), u"ies/profile.ies")
            << c.type;
        if (c.secondText) {
            EXPECT_EQ(std::string(reinterpret_cast<const char*>(record + c.secondText)), "narrow") << c.type;
        }
    }
}

TEST(ReadLight, ImageEndsWhereTheTypeSays) {
    for (int32_t type : {1, 2, 3, 4, 5, 6, 8, 9}) {
        size_t length = lightImageBytes(type);
        Bytes body = lightBody(type, 0xF00);
        for (size_t i = 1616; i < body.size(); ++i)
            body[i] = i < length ? 0x22 : 0xAB;
        // The converted text is left empty; the pattern stays everywhere else in the image.
        const size_t convertedText[10] = {0, 0x6D4, 0x6D8, 0x760, 0, 0, 0x758, 0, 0xC00, 0};
        if (size_t text = convertedText[type]) std::fill(body.begin() + text, body.begin() + text + 0x300, 0);
        SceneFile file;
        file.add(storedChunk(kLight, body, lightVersion(type)));
        file.add(storedChunk(kLightPath, lightPathBody({})));
        OpenScene scene(file.build());
        auto light = std::make_unique<TempLight>();
        uint64_t offset = 0;
        ASSERT_EQ(readLight(scene.reader, *light, offset), SceneOk) << type;
        const uint8_t* record = reinterpret_cast<const uint8_t*>(&light->light);
        if (length < 0xF00) {
            EXPECT_EQ(record[length], 0) << type << ": past the image";
        }
        // The last byte of the image: inside the base for type 5, inside the converted text for 8.
        if (type != 5 && type != 8) {
            EXPECT_EQ(record[length - 1], 0x22) << type;
        }
    }
}

TEST(ReadLight, PathBodyFillsTheObject) {
    LightPathPlan path;
    path.track = {FileKey{1, 2, 3, 4, 5, 6, 7, 8, 9}};
    path.word20 = 0x2020;
    path.word24 = 0x2424;
    path.name = "key light";
    path.secondName = "rim";
    OpenScene scene(lightScene(5, 100, path));
    uint64_t before = liveBlocks();
    {
        TempLight light;
        uint64_t offset = 0;
        ASSERT_EQ(readLight(scene.reader, light, offset), SceneOk);
        EXPECT_EQ(offset, 0u);
        EXPECT_EQ(light.path1C, 0x2020);
        EXPECT_EQ(light.path20, 0x2424u);
        EXPECT_EQ(std::u16string(light.lightName), u"key light");
        EXPECT_EQ(std::u16string(light.lightSecondName), u"rim");
        ASSERT_EQ(light.trackCount, 1u);
        EXPECT_EQ(trackLength(light.track), 1u);
        const uint32_t expected[16] = {1, 2, 9, 0, 3, 4, 5, 6, 7, 8, 0, 0, 0, 0, 0, 0};
        for (int w = 0; w < 16; ++w)
            EXPECT_EQ(light.track[0].words[w], expected[w]) << w;
        EXPECT_EQ(liveBlocks(), before + 1);
    }
    EXPECT_EQ(liveBlocks(), before);
}

TEST(ReadLight, PathFailures) {
    struct Case {
        const char* what;
        std::function<void(SceneFile&)> change;
        SceneStatus expected;
    };
    const Case cases[] = {
        {"no path behind the light",
         [](SceneFile& f) {
             f.chain = {0, 2};
         },
         SceneInvalid},
        {"chain ends after the light", [](SceneFile& f) { f.chain = {0}; }, SceneEndOfChunks},
        {"path version", [](SceneFile& f) { f[1].version = 101; }, SceneBadVersion},
        {"name of 64 characters",
         [](SceneFile& f) {
             LightPathPlan path;
             path.secondName = std::string(64, 's');
             f[1].stored = lightPathBody(path);
         },
         SceneInvalid},
        {"track outside the body",
         [](SceneFile& f) {
             LightPathPlan path;
             path.track = {FileKey{}};
             path.trackOffset = 1u << 20;
             f[1].stored = lightPathBody(path);
         },
         SceneInvalid},
    };
    for (const Case& c : cases) {
        SceneFile file;
        file.add(storedChunk(kLight, lightBody(3)));
        file.add(storedChunk(kLightPath, lightPathBody({})));
        file.add(storedChunk(kCamera, cameraBody(1)));
        c.change(file);
        OpenScene scene(file.build());
        TempLight light;
        uint64_t offset = 0;
        EXPECT_EQ(readLight(scene.reader, light, offset), c.expected) << c.what;
    }
}

TEST(TempLightObject, ReleaseFreesObjectAndTrack) {
    uint64_t before = liveBlocks();
    TempLight* light = TempLight::create();
    ASSERT_NE(light, nullptr);
    light->track = allocateTrack(3);
    light->trackCount = 3;
    static_cast<bridgeLight*>(light)->Release();
    EXPECT_EQ(liveBlocks(), before);
}

} // namespace

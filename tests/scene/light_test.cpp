// Lights: the versions and texts by type, and the path chunk.
#include "scene/track_keys.h"
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

#include <memory>

using namespace scene_writer;

namespace {

Bytes lightScene(const Bytes& body, uint32_t version, const LightPathPlan& path = {}) {
    SceneFile file;
    file.add(storedChunk(kLight, body, version));
    file.add(storedChunk(kLightPath, lightPathBody(path)));
    return file.build();
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
        auto light = std::make_unique<TempLight>();
        EXPECT_EQ(readFirst(readLight, lightScene(lightBody(c.type), c.version), *light), c.expected)
            << c.type << " v" << c.version;
        if (c.expected != SceneInvalid) {
            EXPECT_EQ(light->light.type, c.type);
        }
    }
}

TEST(ReadLight, ImageAndTextByType) {
    // The text each type widens in place, 0 for none; a second text behind it stays narrow.
    const size_t convertedText[10] = {0, 0x6D4, 0x6D8, 0x760, 0, 0, 0x758, 0, 0xC00, 0};
    for (int32_t type : {1, 2, 3, 4, 5, 6, 8, 9}) {
        const size_t length = lightImageBytes(type), text = convertedText[type];
        Bytes body = lightBody(type, 0xF00);
        for (size_t i = 1616; i < body.size(); ++i)
            body[i] = i < length ? 0x22 : 0xAB;
        if (text) {
            std::fill(body.begin() + text, body.begin() + text + 0x300, 0);
            putText(body, text, 0x300, "ies/profile.ies");
        }
        auto light = std::make_unique<TempLight>();
        ASSERT_EQ(readFirst(readLight, lightScene(body, lightVersion(type)), *light), SceneOk) << type;
        const uint8_t* record = bytesOf(light->light);
        if (text) {
            EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(record + text)), u"ies/profile.ies")
                << type;
        }
        if (text && type != 8) {
            EXPECT_EQ(record[text + 0x300], 0x22) << type << ": the second text as the file has it";
        }
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
    const Bytes bytes = lightScene(lightBody(5), 100, path);
    uint64_t before = liveBlocks();
    {
        TempLight light;
        uint64_t offset = 1;
        ASSERT_EQ(readFirst(readLight, bytes, light, &offset), SceneOk);
        EXPECT_EQ(offset, 0u);
        EXPECT_EQ(light.path1C, 0x2020);
        EXPECT_EQ(light.path20, 0x2424u);
        EXPECT_EQ(std::u16string(light.lightName), u"key light");
        EXPECT_EQ(std::u16string(light.lightSecondName), u"rim");
        ASSERT_EQ(light.trackCount, 1u);
        EXPECT_EQ(trackLength(light.track), 1u);
        EXPECT_EQ(std::vector<uint32_t>(light.track[0].words, light.track[0].words + 16),
                  (std::vector<uint32_t>{1, 2, 9, 0, 3, 4, 5, 6, 7, 8, 0, 0, 0, 0, 0, 0}));
        EXPECT_EQ(liveBlocks(), before + 1);
    }
    EXPECT_EQ(liveBlocks(), before);
}

} // namespace

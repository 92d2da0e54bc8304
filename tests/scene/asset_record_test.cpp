// Texture map and material records: types, versions, the copy and the text fix-ups.
#include "scene/record_images.h"
#include "scene/scene_readers.h"
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace scene_writer;

namespace {

template <class Record> Record filledWith(uint8_t byte) {
    Record record;
    std::memset(&record, byte, sizeof record);
    return record;
}

template <class Record> bool allBytesAre(const Record& record, uint8_t byte) {
    const uint8_t* bytes = reinterpret_cast<const uint8_t*>(&record);
    return std::all_of(bytes, bytes + sizeof record, [byte](uint8_t b) { return b == byte; });
}

TEST(TexMapRecord, TypesAndVersions) {
    struct Case {
        int32_t type;
        uint32_t version;
        SceneStatus expected;
    };
    const Case cases[] = {
        {1, 100, SceneOk},       {27, 100, SceneOk},     {15, 100, SceneOk},       {17, 100, SceneOk},
        {16, 100, SceneInvalid}, {0, 100, SceneInvalid}, {28, 100, SceneInvalid},  {-1, 100, SceneInvalid},
        {16, 99, SceneInvalid},  {0, 101, SceneInvalid}, {1, 99, SceneBadVersion}, {27, 101, SceneBadVersion},
    };
    for (const Case& c : cases) {
        OpenScene scene(sceneOf({storedChunk(kTexMap, texMapBody(c.type, 5, "map"), c.version)}));
        TexMapRecord record = filledWith<TexMapRecord>(0x77);
        uint64_t offset = 0;
        EXPECT_EQ(readTexMap(scene.reader, record, offset), c.expected) << c.type << " v" << c.version;
        if (c.expected == SceneInvalid) {
            EXPECT_TRUE(allBytesAre(record, 0x77)) << c.type << ": the record stays as it was";
        } else {
            // A wrong version still leaves the record filled.
            EXPECT_EQ(record.type, c.type);
            EXPECT_EQ(record.id, 5);
            EXPECT_EQ(std::u16string(record.Name), u"map");
        }
    }
}

TEST(TexMapRecord, ImageIsCopiedByteForByte) {
    for (int32_t type : {3, 5, 27}) {
        const size_t image = texMapImageLength(type);
        Bytes body = texMapBody(type, 12, "image");
        for (size_t i = 0x88; i < body.size(); ++i)
            body[i] = static_cast<uint8_t>(i * 13 + 1);
        body.resize(body.size() + 64, 0xAB);
        OpenScene scene(sceneOf({zstdChunk(kTexMap, body)}));
        TexMapRecord record = filledWith<TexMapRecord>(0x77);
        uint64_t offset = 0;
        ASSERT_EQ(readTexMap(scene.reader, record, offset), SceneOk);
        const uint8_t* bytes = reinterpret_cast<const uint8_t*>(&record);
        EXPECT_EQ(std::memcmp(bytes + 0x88, body.data() + 0x88, image - 0x88), 0) << type;
        // Bytes past the type's image are not part of the record; it was cleared first.
        EXPECT_TRUE(std::all_of(bytes + image, bytes + sizeof record, [](uint8_t b) { return b == 0; }))
            << type;
    }
}

TEST(TexMapRecord, ShortBodyIsCopiedAsFarAsItGoes) {
    ASSERT_GT(texMapImageLength(5), 0x100u);
    Bytes body = texMapBody(5, 12, "short", 0x100);
    for (size_t i = 0x88; i < body.size(); ++i)
        body[i] = 0xC3;
    OpenScene scene(sceneOf({storedChunk(kTexMap, body)}));
    TexMapRecord record = filledWith<TexMapRecord>(0x77);
    uint64_t offset = 0;
    ASSERT_EQ(readTexMap(scene.reader, record, offset), SceneOk);
    EXPECT_EQ(record.id, 12);
    EXPECT_EQ(record.typeData[0x100 - 0x88 - 1], 0xC3);
    EXPECT_EQ(record.typeData[0x100 - 0x88], 0) << "the rest of the record is cleared";
    EXPECT_EQ(record.typeData[sizeof record.typeData - 1], 0);
}

TEST(TexMapRecord, BodyTooShortForTheTypeIsInvalid) {
    OpenScene scene(sceneOf({storedChunk(kTexMap, Bytes{1, 0})}));
    TexMapRecord record;
    uint64_t offset = 0;
    EXPECT_EQ(readTexMap(scene.reader, record, offset), SceneInvalid);
}

TEST(TexMapRecord, NameOf70CharactersKeeps64WithoutTerminator) {
    OpenScene scene(sceneOf({storedChunk(kTexMap, texMapBody(2, 0, std::string(70, 'q')))}));
    TexMapRecord record;
    uint64_t offset = 0;
    ASSERT_EQ(readTexMap(scene.reader, record, offset), SceneOk);
    EXPECT_EQ(std::u16string(record.Name, kNameChars), std::u16string(64, u'q'));
}

TEST(MaterialRecord, TypesAndVersions) {
    struct Case {
        int32_t type;
        uint32_t version;
        SceneStatus expected;
    };
    const Case cases[] = {
        {1, 100, SceneOk},         {8, 100, SceneOk},       {10, 100, SceneOk},     {26, 100, SceneOk},
        {28, 100, SceneOk},        {32, 100, SceneOk},      {9, 100, SceneInvalid}, {27, 100, SceneInvalid},
        {0, 100, SceneInvalid},    {33, 100, SceneInvalid}, {9, 99, SceneInvalid},  {1, 101, SceneBadVersion},
        {25, 99, SceneBadVersion},
    };
    for (const Case& c : cases) {
        OpenScene scene(sceneOf({storedChunk(kMaterial, materialBody(c.type, 3, 6, "mat"), c.version)}));
        MaterialRecord record = filledWith<MaterialRecord>(0x77);
        uint64_t offset = 0;
        EXPECT_EQ(readMaterial(scene.reader, record, offset), c.expected) << c.type << " v" << c.version;
        if (c.expected == SceneInvalid) {
            EXPECT_TRUE(allBytesAre(record, 0x77)) << c.type;
        } else {
            EXPECT_EQ(record.type, c.type);
            EXPECT_EQ(record.id, 3);
            EXPECT_EQ(record.AovID, 6);
            EXPECT_EQ(std::u16string(record.Name), u"mat");
        }
    }
}

TEST(MaterialRecord, VolumeTextsAreFixedUpForTypes24And25Only) {
    struct Case {
        int32_t type;
        std::u16string name;
        bool textsConverted;
    };
    // Type 24 converts its name twice, which leaves the first character alone; it converts the
    // nine texts as well, whatever its image holds there.
    const Case cases[] = {
        {24, u"S", true}, {25, u"Smoke", true}, {23, u"Smoke", false}, {4, u"Smoke", false}};
    for (const Case& c : cases) {
        Bytes body = materialBody(c.type, 0, 0, "Smoke", kMaterialImage);
        for (size_t i = 0; i < 9; ++i)
            putText(body, kVolumeTexts[i], kNameField, "text" + std::to_string(i));
        OpenScene scene(sceneOf({storedChunk(kMaterial, body)}));
        MaterialRecord record;
        uint64_t offset = 0;
        ASSERT_EQ(readMaterial(scene.reader, record, offset), SceneOk) << c.type;
        EXPECT_EQ(std::u16string(record.Name), c.name) << c.type;
        const size_t image = materialImageLength(c.type);
        for (size_t i = 0; i < 9; ++i) {
            const uint8_t* field = reinterpret_cast<const uint8_t*>(&record) + kVolumeTextOffsets[i];
            std::string narrow = "text" + std::to_string(i);
            if (c.textsConverted && kVolumeTextOffsets[i] + narrow.size() < image) {
                EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(field)), wide(narrow)) << c.type;
            } else if (c.textsConverted) {
                EXPECT_EQ(reinterpret_cast<const char16_t*>(field)[0], 0) << c.type << ": past the image";
            } else if (kVolumeTextOffsets[i] + kNameFieldBytes <= image) {
                EXPECT_EQ(std::string(reinterpret_cast<const char*>(field)), narrow)
                    << c.type << ": copied as is";
            } else if (kVolumeTextOffsets[i] >= image) {
                EXPECT_EQ(field[0], 0) << c.type << ": past the image";
            }
        }
    }
}

TEST(MaterialRecord, EmptyNameOfType24StaysEmpty) {
    OpenScene scene(sceneOf({storedChunk(kMaterial, materialBody(24, 0, 0, ""))}));
    MaterialRecord record;
    uint64_t offset = 0;
    ASSERT_EQ(readMaterial(scene.reader, record, offset), SceneOk);
    EXPECT_EQ(record.Name[0], 0);
}

TEST(MaterialRecord, ShortBodyIsCopiedAsFarAsItGoes) {
    ASSERT_GT(materialImageLength(5), 200u);
    Bytes body = materialBody(5, 44, 2, "short", 200);
    body[199] = 0x5C;
    OpenScene scene(sceneOf({storedChunk(kMaterial, body)}));
    MaterialRecord record = filledWith<MaterialRecord>(0x77);
    uint64_t offset = 0;
    ASSERT_EQ(readMaterial(scene.reader, record, offset), SceneOk);
    EXPECT_EQ(record.id, 44);
    EXPECT_EQ(reinterpret_cast<const uint8_t*>(&record)[199], 0x5C);
    EXPECT_EQ(reinterpret_cast<const uint8_t*>(&record)[200], 0);
}

TEST(MaterialRecord, ImageLengthsByType) {
    for (int32_t type = -2; type < 40; ++type) {
        bool material = type >= 1 && type <= 32 && type != 9 && type != 27;
        uint32_t length = materialImageLength(type);
        EXPECT_EQ(length != 0, material) << type;
        EXPECT_LE(length, sizeof(MaterialRecord)) << type;
        if (material) {
            EXPECT_GE(length, 12 + kNameFieldBytes) << type << ": the head is part of every image";
        }
        bool texMap = type >= 1 && type <= 27 && type != 16;
        EXPECT_EQ(texMapImageLength(type) != 0, texMap) << type;
        EXPECT_LE(texMapImageLength(type), sizeof(TexMapRecord)) << type;
    }
    EXPECT_EQ(materialImageLength(25), kVolumeCacheOffset) << "the cache slot is not file data";
}

TEST(MaterialRecord, TheVolumeCacheSlotIsNotFileData) {
    Bytes body = materialBody(25, 0, 0, "vol", kMaterialImage);
    for (size_t i = 0x1960; i < body.size(); ++i)
        body[i] = 0xFF;
    OpenScene scene(sceneOf({storedChunk(kMaterial, body)}));
    MaterialRecord record;
    uint64_t offset = 0;
    ASSERT_EQ(readMaterial(scene.reader, record, offset), SceneOk);
    uint64_t slot;
    std::memcpy(&slot, reinterpret_cast<const uint8_t*>(&record) + kVolumeCacheOffset, sizeof slot);
    EXPECT_EQ(slot, 0u);
    releaseMaterial(record); // nothing to release; must not touch the empty slot
}

} // namespace

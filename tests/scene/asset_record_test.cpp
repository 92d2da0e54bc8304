// Texture map and material records: types, versions, the copy and the text fix-ups.
#include "scene/record_images.h"
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

bool allAre(const uint8_t* begin, const uint8_t* end, uint8_t byte) {
    return std::all_of(begin, end, [byte](uint8_t b) { return b == byte; });
}

struct KindCase {
    uint32_t kind; // kTexMap or kMaterial
    int32_t type;
    uint32_t version;
    SceneStatus expected;
};

template <class Record>
void expectTypeAndVersion(RecordReader<Record> read, const Bytes& body, const KindCase& c) {
    Record record = filledWith<Record>(0x77);
    EXPECT_EQ(readFirst(read, sceneOf({storedChunk(c.kind, body, c.version)}), record), c.expected)
        << c.kind << ": " << c.type << " v" << c.version;
    if (c.expected == SceneInvalid) {
        EXPECT_TRUE(allAre(bytesOf(record), bytesOf(record) + sizeof record, 0x77))
            << c.type << ": left as it was";
    } else {
        // A wrong version still leaves the record filled.
        EXPECT_EQ(record.type, c.type);
        EXPECT_EQ(record.id, 5);
        EXPECT_EQ(std::u16string(record.Name), u"rec");
    }
}

TEST(AssetRecord, TypesAndVersions) {
    const KindCase cases[] = {
        {kTexMap, 1, 100, SceneOk},           {kTexMap, 27, 100, SceneOk},
        {kTexMap, 15, 100, SceneOk},          {kTexMap, 17, 100, SceneOk},
        {kTexMap, 16, 100, SceneInvalid},     {kTexMap, 0, 100, SceneInvalid},
        {kTexMap, 28, 100, SceneInvalid},     {kTexMap, -1, 100, SceneInvalid},
        {kTexMap, 16, 99, SceneInvalid},      {kTexMap, 0, 101, SceneInvalid},
        {kTexMap, 1, 99, SceneBadVersion},    {kTexMap, 27, 101, SceneBadVersion},
        {kMaterial, 1, 100, SceneOk},         {kMaterial, 8, 100, SceneOk},
        {kMaterial, 10, 100, SceneOk},        {kMaterial, 26, 100, SceneOk},
        {kMaterial, 28, 100, SceneOk},        {kMaterial, 32, 100, SceneOk},
        {kMaterial, 9, 100, SceneInvalid},    {kMaterial, 27, 100, SceneInvalid},
        {kMaterial, 0, 100, SceneInvalid},    {kMaterial, 33, 100, SceneInvalid},
        {kMaterial, 9, 99, SceneInvalid},     {kMaterial, 1, 101, SceneBadVersion},
        {kMaterial, 25, 99, SceneBadVersion},
    };
    for (const KindCase& c : cases) {
        if (c.kind == kTexMap) {
            expectTypeAndVersion<TexMapRecord>(readTexMap, texMapBody(c.type, 5, "rec"), c);
        } else {
            expectTypeAndVersion<MaterialRecord>(readMaterial, materialBody(c.type, 5, 6, "rec"), c);
        }
    }
    TexMapRecord record;
    EXPECT_EQ(readFirst<TexMapRecord>(readTexMap, sceneOf({storedChunk(kTexMap, Bytes{1, 0})}), record),
              SceneInvalid)
        << "a body too short to hold its type";
}

// The image behind the head is copied as far as the body and the type's image go; the rest of
// the record is cleared.
template <class Record>
void expectImageCopied(RecordReader<Record> read, uint32_t kind, Bytes body, size_t head, size_t image,
                       int32_t type) {
    for (size_t i = head; i < body.size(); ++i)
        body[i] = static_cast<uint8_t>(i * 13 + 1) | 1;
    Record record = filledWith<Record>(0x77);
    ASSERT_EQ(readFirst(read, sceneOf({zstdChunk(kind, body)}), record), SceneOk) << type;
    EXPECT_EQ(record.id, 12) << type;
    const size_t copied = std::min(body.size(), image);
    EXPECT_EQ(std::memcmp(bytesOf(record) + head, body.data() + head, copied - head), 0) << type;
    EXPECT_TRUE(allAre(bytesOf(record) + copied, bytesOf(record) + sizeof record, 0)) << type;
}

TEST(AssetRecord, ImageIsCopiedAsFarAsItGoes) {
    for (int32_t type : {3, 5, 27})
        expectImageCopied<TexMapRecord>(readTexMap, kTexMap, texMapBody(type, 12, "img", kTexMapImage + 64),
                                        0x88, texMapImageLength(type), type);
    expectImageCopied<TexMapRecord>(readTexMap, kTexMap, texMapBody(5, 12, "short", 0x100), 0x88,
                                    texMapImageLength(5), 5);
    for (size_t size : {size_t(200), kMaterialImage + 64})
        expectImageCopied<MaterialRecord>(readMaterial, kMaterial, materialBody(5, 12, 2, "m", size),
                                          12 + kNameFieldBytes, materialImageLength(5), 5);
}

TEST(AssetRecord, TexMapNameOf70CharactersKeeps64WithoutTerminator) {
    TexMapRecord record;
    ASSERT_EQ(readFirst<TexMapRecord>(readTexMap,
                                      sceneOf({storedChunk(kTexMap, texMapBody(2, 0, std::string(70, 'q')))}),
                                      record),
              SceneOk);
    EXPECT_EQ(std::u16string(record.Name, kNameChars), std::u16string(64, u'q'));
}

TEST(AssetRecord, VolumeTextsAreFixedUpForTypes24And25Only) {
    struct Case {
        int32_t type;
        std::string name;
        std::u16string expected;
        bool textsConverted;
    };
    // Type 24 converts its name twice, which leaves the first character alone; it converts the
    // nine texts as well, whatever its image holds there.
    const Case cases[] = {{24, "Smoke", u"S", true},
                          {24, "", u"", true},
                          {25, "Smoke", u"Smoke", true},
                          {23, "Smoke", u"Smoke", false},
                          {4, "Smoke", u"Smoke", false}};
    for (const Case& c : cases) {
        Bytes body = materialBody(c.type, 0, 0, c.name, kMaterialImage);
        for (size_t i = 0; i < 9; ++i)
            putText(body, kVolumeTexts[i], kNameField, "text" + std::to_string(i));
        MaterialRecord record;
        ASSERT_EQ(readFirst<MaterialRecord>(readMaterial, sceneOf({storedChunk(kMaterial, body)}), record),
                  SceneOk);
        EXPECT_EQ(std::u16string(record.Name), c.expected) << c.type;
        // Each text's first unit: wide, narrow as the file has it, or cleared past the image.
        const size_t image = materialImageLength(c.type);
        for (size_t at : kVolumeTextOffsets) {
            const char16_t first = reinterpret_cast<const char16_t*>(bytesOf(record) + at)[0];
            EXPECT_EQ(first, at >= image        ? 0
                             : c.textsConverted ? u't'
                                                : char16_t('t' | 'e' << 8))
                << c.type << " at " << at;
        }
    }
}

TEST(AssetRecord, TheVolumeCacheSlotIsNotFileData) {
    ASSERT_EQ(materialImageLength(25), kVolumeCacheOffset);
    Bytes body = materialBody(25, 0, 0, "vol", kMaterialImage);
    std::fill(body.begin() + 0x1960, body.end(), 0xFF);
    MaterialRecord record;
    ASSERT_EQ(readFirst<MaterialRecord>(readMaterial, sceneOf({storedChunk(kMaterial, body)}), record),
              SceneOk);
    EXPECT_TRUE(allAre(bytesOf(record) + kVolumeCacheOffset, bytesOf(record) + kVolumeCacheOffset + 8, 0));
    releaseMaterial(record); // nothing to release; must not touch the empty slot
}

} // namespace

// The tables themselves: registration, words, image lengths and the shape of every row.
#include "documents/material_document.h"
#include "documents/materials/families.h"
#include "documents/materials/material_types.h"
#include "scene/record_images.h"
#include "tests/material_families_b/families_b_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <string>

using namespace families_b_test;

namespace {

TEST(Registry, EachFamilyTypeIsFoundByItsNumberAndListedOnce) {
    for (const TypeDescriptor* table : familyTypes()) {
        EXPECT_EQ(findMaterialType(table->type), table) << table->word;
        size_t listed = 0;
        for (const TypeDescriptor* const* entry = allMaterialTypes(); *entry; ++entry)
            listed += *entry == table;
        EXPECT_EQ(listed, 1u) << table->word;
    }
    std::set<int32_t> numbers;
    for (const TypeDescriptor* const* entry = allMaterialTypes(); *entry; ++entry)
        EXPECT_TRUE(numbers.insert((*entry)->type).second) << "number " << (*entry)->type << " twice";
}

TEST(Registry, NumbersAndWordsAreThoseOfTheTypeTable) {
    const struct {
        int32_t type;
        const char* word;
    } cases[] = {{1, "PHYSICAL"}, {4, "UBER"}, {24, "HAIR"}, {25, "VOLUMETRIC"}, {31, "MIE"}};
    for (const auto& c : cases) {
        const TypeDescriptor* table = findMaterialType(c.type);
        ASSERT_NE(table, nullptr) << c.word;
        EXPECT_STREQ(table->word, c.word);
        EXPECT_STREQ(kMaterialTypeWords[c.type], c.word);
        EXPECT_FALSE(table->mapped);
        EXPECT_EQ(table->resultTextureOffset, 0u);
    }
}

// The image of each type ends with its last field; the volumetric image stops where the slot of
// its cache object begins, a byte past its last flag.
TEST(ImageLength, EndsWithTheLastFieldAndTheSceneReaderAgrees) {
    const struct {
        int32_t type;
        uint32_t image;
        uint32_t lastFieldEnd;
        size_t rows;
    } cases[] = {
        {1, 6201, 6201, 73},     {4, 13130, 13130, 308}, {24, 4353, 4353, 152},
        {25, 0x1960, 6495, 109}, {31, 1138, 1138, 28},
    };
    for (const auto& c : cases) {
        const TypeDescriptor* table = findMaterialType(c.type);
        ASSERT_NE(table, nullptr) << c.type;
        EXPECT_EQ(table->imageLength, c.image) << c.type;
        EXPECT_EQ(materialImageLength(c.type), c.image) << c.type;
        EXPECT_EQ(table->fieldCount, c.rows) << c.type;
        uint32_t end = 0;
        for (size_t i = 0; i < table->fieldCount; ++i)
            end = std::max(end, table->fields[i].offset + table->fields[i].width);
        EXPECT_EQ(end, c.lastFieldEnd) << c.type;
    }
}

std::string parentOf(const std::string& key) {
    const size_t slash = key.rfind('/');
    return slash == std::string::npos ? "" : key.substr(0, slash);
}

bool sameWordIgnoringCase(const char* a, const char* b) {
    for (; *a && *b; ++a, ++b) {
        if (std::tolower(static_cast<unsigned char>(*a)) != std::tolower(static_cast<unsigned char>(*b)))
            return false;
    }
    return *a == *b;
}

// Keys that stand twice in a table: a reader finds the first element of such a name for both.
const std::map<int32_t, std::set<std::string>> kTwinKeys = {
    {4,
     {"Emission", "Emission/EmissionColor", "Emission/EmissionMap", "Emission/KelvinValue",
      "Emission/KelvinMap"}},
    {24, {"Material"}},
};

TEST(SelfCheck, EveryRowIsWellFormedPlacedAndReachable) {
    for (const TypeDescriptor* table : familyTypes()) {
        SCOPED_TRACE(table->word);
        EXPECT_TRUE(typeFits(*table, sizeof(MaterialRecord)));
        std::set<std::string> sections;
        std::map<std::string, int> seen;
        for (size_t i = 0; i < table->fieldCount; ++i) {
            const FieldDescriptor& field = table->fields[i];
            const std::string key = field.key;
            SCOPED_TRACE(key);
            EXPECT_TRUE(fieldFits(field, table->imageLength));
            EXPECT_EQ(field.flags, 0) << "reader and writer share every row";
            EXPECT_EQ(field.custom, nullptr);
            EXPECT_FALSE(key.empty() || key.front() == '/' || key.back() == '/' ||
                         key.find("//") != std::string::npos);
            const std::string parent = parentOf(key);
            EXPECT_TRUE(parent.empty() || sections.count(parent)) << "a key comes after its section";
            ++seen[key];
            if (field.kind == FieldKind::Section) {
                sections.insert(key);
                continue;
            }
            EXPECT_GE(field.offset, kMaterialFieldsOffset) << "no key reaches into the head";
            for (size_t j = 0; j < i; ++j) {
                const FieldDescriptor& other = table->fields[j];
                const bool apart =
                    other.offset + other.width <= field.offset || field.offset + field.width <= other.offset;
                EXPECT_TRUE(apart) << "overlaps " << other.key;
            }
            if (field.kind == FieldKind::Enum) {
                const size_t count = XmlWordCount(field.words);
                EXPECT_GE(count, 2u);
                for (size_t a = 0; a < count; ++a) {
                    EXPECT_STRNE(field.words[a], "") << "no table of these families has an empty word";
                    for (size_t b = 0; b < a; ++b)
                        EXPECT_FALSE(sameWordIgnoringCase(field.words[a], field.words[b])) << field.words[a];
                }
            }
        }
        std::set<std::string> twins;
        for (const auto& [key, count] : seen) {
            if (count > 1) twins.insert(key);
        }
        const auto known = kTwinKeys.find(table->type);
        EXPECT_EQ(twins, known == kTwinKeys.end() ? std::set<std::string>{} : known->second);
    }
}

TEST(SelfCheck, WordTablesAreSpelledAsTheDocumentsSpellThem) {
    const struct {
        int32_t type;
        const char* key;
        std::vector<std::string> words;
    } cases[] = {
        {4, "Coating/Roughness/RoughnessType", {"Beckmann", "GGX"}},
        {4, "Coating/ReflectionRetro/RoughnessType", {"Beckmann", "GGX"}},
        {4, "Diffuse/Roughness/RoughnessType", {"LAMBERT", "OREN_NAYAR", "DISNEY", "HAMMON"}},
        {4, "RTC/Roughness/RoughnessType", {"Beckmann", "GGX"}},
        {4, "ReflectionRetro/RoughnessType", {"Beckmann", "GGX"}},
        {25, "PhaseFunction/PhaseFunctionType", {"HG", "MIE"}},
        {25, "VDBFile/FileType", {"OPENVDB", "AUR"}},
    };
    size_t enums = 0;
    for (const TypeDescriptor* table : familyTypes()) {
        for (size_t i = 0; i < table->fieldCount; ++i)
            enums += table->fields[i].kind == FieldKind::Enum;
    }
    EXPECT_EQ(enums, std::size(cases)) << "every enum row of the families is listed here";
    for (const auto& c : cases) {
        const TypeDescriptor* table = findMaterialType(c.type);
        ASSERT_NE(table, nullptr);
        const FieldDescriptor* row = nullptr;
        for (size_t i = 0; i < table->fieldCount; ++i) {
            if (table->fields[i].kind == FieldKind::Enum && std::string(table->fields[i].key) == c.key)
                row = &table->fields[i];
        }
        ASSERT_NE(row, nullptr) << c.key;
        std::vector<std::string> words;
        for (size_t i = 0; row->words[i]; ++i)
            words.push_back(row->words[i]);
        EXPECT_EQ(words, c.words) << c.key;
    }
}

// The volumetric record keeps the cache flag and the cache slot outside every key, and its texts
// where the scene reader converts them.
TEST(SelfCheck, VolumetricTextsSitWhereTheSceneReaderConvertsThemAndNoKeyTouchesTheCache) {
    std::set<size_t> texts;
    for (size_t i = 0; i < kVolumetricMaterial.fieldCount; ++i) {
        const FieldDescriptor& field = kVolumetricMaterial.fields[i];
        if (field.kind == FieldKind::String) texts.insert(field.offset);
        const bool clear =
            field.offset + field.width <= kVolumeCacheFlagOffset || field.offset > kVolumeCacheFlagOffset;
        EXPECT_TRUE(clear) << field.key;
        EXPECT_LE(field.offset + field.width, kVolumeCacheOffset) << field.key;
    }
    EXPECT_EQ(texts, std::set<size_t>(std::begin(kVolumeTextOffsets), std::end(kVolumeTextOffsets)));
}

} // namespace

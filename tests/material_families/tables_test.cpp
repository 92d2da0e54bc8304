// The registered tables against the rows the tests hold, the self-check that every table passes,
// and the image lengths that the scene reader copies.
#include "documents/material_document.h"
#include "documents/materials/material_types.h"
#include "scene/record_images.h"
#include "tests/material_families/family_cases.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace families_test {
namespace {

std::vector<std::string> wordsOf(const char* const* words) {
    std::vector<std::string> out;
    for (size_t i = 0; words && words[i]; ++i)
        out.push_back(words[i]);
    return out;
}

TEST(Tables, EveryTypeIsRegisteredOnceUnderItsNumberAndWord) {
    const std::vector<TypeCase> cases = allCases();
    ASSERT_EQ(cases.size(), 25u);
    for (const TypeCase& type : cases) {
        SCOPED_TRACE("type " + std::to_string(type.type));
        const TypeDescriptor* table = findMaterialType(type.type);
        ASSERT_NE(table, nullptr);
        EXPECT_EQ(table->type, type.type);
        size_t entries = 0;
        for (const TypeDescriptor* const* entry = allMaterialTypes(); *entry; ++entry)
            entries += (*entry)->type == type.type ? 1 : 0;
        EXPECT_EQ(entries, 1u);
        if (type.word) {
            ASSERT_NE(table->word, nullptr);
            EXPECT_STREQ(table->word, type.word);
            EXPECT_STREQ(kMaterialTypeWords[type.type], type.word) << "the frame's word table agrees";
        } else {
            EXPECT_EQ(table->word, nullptr);
        }
    }
}

TEST(Tables, RowsMatchKeyKindByteWidthSegmentsAndWords) {
    for (const TypeCase& type : allCases()) {
        SCOPED_TRACE("type " + std::to_string(type.type));
        const TypeDescriptor* table = findMaterialType(type.type);
        ASSERT_NE(table, nullptr);
        ASSERT_EQ(table->fieldCount, type.rows.size());
        for (size_t i = 0; i < type.rows.size(); ++i) {
            const Row& row = type.rows[i];
            const FieldDescriptor& field = table->fields[i];
            SCOPED_TRACE(row.key);
            EXPECT_STREQ(field.key, row.key);
            EXPECT_EQ(field.kind, row.kind);
            EXPECT_EQ(field.offset, row.byte);
            EXPECT_EQ(field.width, rowWidth(row));
            EXPECT_EQ(field.flags, 0) << "reader and writer use the same keys";
            if (row.kind == K::Spline) {
                EXPECT_EQ(field.segments, row.size);
            }
            if (row.kind == K::Enum) {
                EXPECT_EQ(wordsOf(field.words), wordsOf(row.words));
            }
            if (row.kind == K::Custom) {
                EXPECT_NE(field.custom, nullptr);
            }
        }
    }
}

TEST(Tables, PassTheSelfCheck) {
    for (const TypeCase& type : allCases()) {
        SCOPED_TRACE("type " + std::to_string(type.type));
        const TypeDescriptor* table = findMaterialType(type.type);
        ASSERT_NE(table, nullptr);
        EXPECT_TRUE(typeFits(*table, sizeof(MaterialRecord)));
        std::set<std::string> keys;
        std::set<std::string> sections;
        uint32_t end = 0;
        for (size_t i = 0; i < table->fieldCount; ++i) {
            const FieldDescriptor& field = table->fields[i];
            const std::string key = field.key;
            SCOPED_TRACE(key);
            EXPECT_TRUE(keys.insert(key).second) << "a key stands once";
            const size_t slash = key.rfind('/');
            if (slash != std::string::npos) {
                EXPECT_TRUE(sections.count(key.substr(0, slash))) << "its section comes first";
            }
            if (field.kind == K::Section) sections.insert(key);
            if (field.kind != K::Section) {
                EXPECT_GE(field.offset, kMaterialFieldsOffset) << "a type's fields begin after the head";
            }
            end = std::max(end, field.offset + field.width);
            for (size_t j = 0; j < i; ++j) {
                const FieldDescriptor& other = table->fields[j];
                const bool apart =
                    field.offset + field.width <= other.offset || other.offset + other.width <= field.offset;
                if (field.width == 0 || other.width == 0 ||
                    (sharesBytes(type.type, key) && sharesBytes(type.type, other.key)))
                    continue;
                EXPECT_TRUE(apart) << "shares bytes with " << other.key;
            }
        }
        EXPECT_EQ(table->imageLength, end) << "the image ends with the last field";
        EXPECT_EQ(table->imageLength, type.image);
    }
}

TEST(Tables, SceneReaderCopiesExactlyTheImage) {
    for (const TypeCase& type : allCases()) {
        EXPECT_EQ(materialImageLength(type.type), type.image) << "type " << type.type;
    }
}

} // namespace
} // namespace families_test

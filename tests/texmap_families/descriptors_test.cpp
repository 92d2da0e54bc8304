// Every texmap descriptor checked once against the tests' own copy of its table: number, word,
// shape, image length, keys in order, kinds, offsets and word tables; and the registry as a
// whole.
#include "documents/field_table.h"
#include "documents/texmap_document.h"
#include "documents/texmaps/texmap_types.h"
#include "scene/record_images.h"
#include "tests/texmap_families/texmap_rows.h"

#include <gtest/gtest.h>

#include <set>

namespace texmap_test {
namespace {

FieldKind fieldKindOf(Kind kind) {
    switch (kind) {
    case Kind::Int:
        return FieldKind::Int;
    case Kind::Float:
        return FieldKind::Float;
    case Kind::Bool:
        return FieldKind::Bool;
    case Kind::Enum:
        return FieldKind::Enum;
    case Kind::Map:
        return FieldKind::TexMapRef;
    case Kind::Texture:
        return FieldKind::TextureRef;
    case Kind::Color:
        return FieldKind::Color;
    case Kind::ColorEx:
        return FieldKind::ColorEx;
    case Kind::Matrix:
        return FieldKind::Matrix;
    case Kind::Spline:
        return FieldKind::Spline;
    case Kind::String:
        return FieldKind::String;
    case Kind::Output:
        return FieldKind::ColorOutput;
    case Kind::Custom:
        return FieldKind::Custom;
    }
    return FieldKind::Section;
}

std::vector<std::string> wordsOf(WordTable words) {
    std::vector<std::string> list;
    for (size_t i = 0; words && words[i]; ++i)
        list.push_back(words[i]);
    return list;
}

std::vector<const FieldDescriptor*> valueFields(const TypeDescriptor& table) {
    std::vector<const FieldDescriptor*> fields;
    for (size_t i = 0; i < table.fieldCount; ++i) {
        if (table.fields[i].kind != FieldKind::Section) fields.push_back(&table.fields[i]);
    }
    return fields;
}

TEST(Descriptors, EachTypeMatchesItsTable) {
    for (const Layout& layout : allLayouts()) {
        SCOPED_TRACE(layout.word);
        const TypeDescriptor* table = findTexMapType(layout.type);
        ASSERT_NE(table, nullptr);
        EXPECT_EQ(table->type, layout.type);
        EXPECT_STREQ(table->word, layout.word.c_str());
        EXPECT_STREQ(kTexMapTypeWords[layout.type], layout.word.c_str());
        EXPECT_EQ(table->mapped, layout.mapped);
        EXPECT_EQ(table->resultTextureOffset, layout.type == 1 ? 0x5B8u : layout.type == 2 ? 0x108u : 0u);
        EXPECT_TRUE(typeFits(*table, sizeof(TexMapRecord)));

        const std::vector<const FieldDescriptor*> fields = valueFields(*table);
        ASSERT_EQ(fields.size(), layout.rows.size());
        for (size_t i = 0; i < fields.size(); ++i) {
            const FieldDescriptor& field = *fields[i];
            const Row& row = layout.rows[i];
            SCOPED_TRACE(row.key);
            EXPECT_EQ(field.key, row.key) << "row " << i;
            EXPECT_EQ(field.kind, fieldKindOf(row.kind));
            EXPECT_EQ((field.flags & kFieldReadOnly) == 0, row.written);
            EXPECT_EQ(field.flags & kFieldWriteOnly, 0);
            if (row.kind == Kind::Enum) {
                EXPECT_EQ(wordsOf(field.words), row.words);
            }
            if (row.kind == Kind::Spline) {
                EXPECT_EQ(field.segments, row.size);
            }
            if (row.kind == Kind::String) {
                EXPECT_EQ(field.width, row.size * 2);
            }
            // A repeated element's row may reach out to a count of its own; the others lie
            // exactly where the table puts them.
            if (row.kind != Kind::Custom) {
                EXPECT_EQ(field.offset, row.offset);
            } else {
                EXPECT_LE(field.offset, row.offset);
                EXPECT_GE(field.offset + field.width, row.offset + row.size);
            }
        }
    }
}

TEST(Descriptors, ImageLengthIsTheEndOfTheLastFieldEverywhere) {
    const uint32_t expected[28] = {0,     0x5BC, 0x114, 0x139, 0x137, 0x16A4, 0x150, 0x70C, 0x636, 0x52C,
                                   0x12C, 0x13C, 0x1BC, 0x5FF, 0x75D, 0x622,  0,     0x661, 0x6EE, 0x10D,
                                   0x16C, 0x14A, 0x98F, 0x140, 0x6D3, 0x114,  0x125, 0x17C};
    for (int32_t type = -1; type <= 28; ++type) {
        SCOPED_TRACE(type);
        const uint32_t length = type >= 0 && type < 28 ? expected[type] : 0;
        EXPECT_EQ(texMapImageLength(type), length);
        const TypeDescriptor* table = findTexMapType(type);
        if (length == 0) {
            EXPECT_EQ(table, nullptr);
            continue;
        }
        ASSERT_NE(table, nullptr);
        EXPECT_EQ(table->imageLength, length);
        EXPECT_EQ(layoutOf(type).imageLength, length);
        uint32_t end = table->mapped ? static_cast<uint32_t>(kTexMapMappedFieldsOffset) : 0;
        for (size_t i = 0; i < table->fieldCount; ++i)
            end = std::max(end, table->fields[i].offset + table->fields[i].width);
        EXPECT_EQ(end, length);
    }
    EXPECT_EQ(texMapImageLength(5), 0x16A4u) << "the longest of all";
}

// Keys are unique within a table, own fields start behind the head or behind the shared
// blocks, and no two plain fields share a byte. A repeated element's row may span fields of
// others (the interleaved point curves), so rows of that kind are left out of the overlap.
TEST(Descriptors, FieldsAreDisjointAndInsideTheirShape) {
    for (const TypeDescriptor* const* entry = allTexMapTypes(); *entry; ++entry) {
        const TypeDescriptor& table = **entry;
        SCOPED_TRACE(table.word);
        std::set<std::string> keys;
        std::vector<int> owner(sizeof(TexMapRecord), -1);
        const uint32_t start = table.mapped ? kTexMapMappedFieldsOffset : kTexMapPlainFieldsOffset;
        for (size_t i = 0; i < table.fieldCount; ++i) {
            const FieldDescriptor& field = table.fields[i];
            EXPECT_TRUE(keys.insert(field.key).second) << "duplicate key " << field.key;
            if (field.kind == FieldKind::Section) continue;
            EXPECT_GE(field.offset, start) << field.key;
            EXPECT_LE(field.offset + field.width, table.imageLength) << field.key;
            if (field.kind == FieldKind::Custom) continue;
            for (uint32_t b = field.offset; b < field.offset + field.width && b < owner.size(); ++b) {
                EXPECT_EQ(owner[b], -1) << field.key << " shares byte 0x" << std::hex << b << " with "
                                        << table.fields[owner[b] < 0 ? 0 : owner[b]].key;
                owner[b] = static_cast<int>(i);
            }
        }
    }
}

TEST(Descriptors, TheRegistryHoldsEveryTypeOnceAndNothingElse) {
    std::set<int32_t> registered;
    for (const TypeDescriptor* const* entry = allTexMapTypes(); *entry; ++entry) {
        EXPECT_TRUE(registered.insert((*entry)->type).second) << (*entry)->type;
        EXPECT_EQ(findTexMapType((*entry)->type), *entry);
    }
    std::set<int32_t> expected;
    for (int32_t type = 1; type <= 27; ++type) {
        if (type != 16) expected.insert(type);
    }
    EXPECT_EQ(registered, expected);
    for (int32_t type : {-1, 0, 16, 28, 1000})
        EXPECT_EQ(findTexMapType(type), nullptr) << type;
    EXPECT_EQ(allLayouts().size(), expected.size());
}

} // namespace
} // namespace texmap_test

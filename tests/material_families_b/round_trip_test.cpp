// Every field of every type through the writer and back through the reader, and what a reader
// does with the keys that a document leaves out.
#include "documents/material_document.h"
#include "documents/materials/families.h"
#include "documents/materials/material_types.h"
#include "tests/material_families_b/families_b_test_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace families_b_test;

namespace {

constexpr uint32_t kBecomesNone = UINT32_MAX;

// Fields whose key a table holds twice: the reader finds the element of the first for both, so
// the second takes the first one's value back (or none, where the first is an empty section).
struct TwinField {
    int32_t type;
    uint32_t offset;
    uint32_t width;
    uint32_t source;
};
const TwinField kTwinFields[] = {
    {4, 11332, 12, 10024},       // Emission/EmissionColor
    {4, 11344, 4, 10036},        // Emission/EmissionMap
    {4, 11616, 4, 10048},        // Emission/KelvinValue
    {4, 11620, 4, 10044},        // Emission/KelvinMap
    {24, 4332, 4, kBecomesNone}, // Material, behind the empty Material section
};

TEST(RoundTrip, EveryFieldComesBackFromTheWrittenDocument) {
    for (const TypeDescriptor* table : familyTypes()) {
        SCOPED_TRACE(table->word);
        RecordingNames names;
        auto original = recordOf(table->type, 0);
        fillDistinct(*table, original.get(), &names);
        const std::string text = writtenDocument(*table, original.get(), &names);
        auto back = recordOf(table->type, 0);
        ASSERT_TRUE(readDocumentText(text, back.get(), &names));
        auto expected = recordOf(table->type, 0);
        *expected = *original;
        for (const TwinField& twin : kTwinFields) {
            if (twin.type != table->type) continue;
            if (twin.source == kBecomesNone)
                putAt<int32_t>(expected.get(), twin.offset, -1);
            else
                std::memcpy(bytesOf(expected.get()) + twin.offset, bytesOf(original.get()) + twin.source,
                            twin.width);
        }
        EXPECT_EQ(describeFirstDifference(*table, back.get(), expected.get()), "");
        // Writing the record read back gives the same document, twins and all.
        auto again = recordOf(table->type, 0);
        ASSERT_TRUE(readDocumentText(writtenDocument(*table, back.get(), &names), again.get(), &names));
        EXPECT_EQ(describeFirstDifference(*table, again.get(), back.get()), "");
    }
}

TEST(RoundTrip, WritersReportNoSuccessAndReadersDo) {
    for (const TypeDescriptor* table : familyTypes()) {
        RecordingNames names;
        auto record = recordOf(table->type, 0);
        fillDistinct(*table, record.get(), &names);
        EXPECT_FALSE(WriteMaterialDocument(record.get(), u"unused.xml", &names)) << table->word;
        EXPECT_TRUE(
            readDocumentText(std::string("<TaviMaterial type='") + table->word + "'/>", record.get(), &names))
            << table->word;
    }
}

// What a read leaves of a record whose document has none of the type's keys.
std::unique_ptr<MaterialRecord> afterMissingKeys(const TypeDescriptor& table, const MaterialRecord& before) {
    auto expected = recordOf(table.type, 0);
    *expected = before;
    expected->AovID = 5;
    expected->Name[0] = 0;
    expected->Name[kNameChars - 1] = 0;
    for (size_t i = 0; i < table.fieldCount; ++i) {
        const FieldDescriptor& field = table.fields[i];
        switch (field.kind) {
        case FieldKind::TexMapRef:
        case FieldKind::MaterialRef:
            putAt<int32_t>(expected.get(), field.offset, -1);
            break;
        case FieldKind::String:
            putAt<char16_t>(expected.get(), field.offset, 0);
            putAt<char16_t>(expected.get(), field.offset + field.width - 2, 0);
            break;
        case FieldKind::Spline:
            for (uint32_t s = 0; s < field.segments; ++s) {
                putAt<float>(expected.get(), field.offset + s * sizeof(SplineSegment), 1.0f);
                putAt<float>(expected.get(), field.offset + s * sizeof(SplineSegment) + 12, 0.0f);
            }
            break;
        case FieldKind::ColorSpline:
            for (uint32_t s = 0; s < kColorSplineSegments; ++s) {
                putAt<float>(expected.get(), field.offset + s * sizeof(ColorSplineSegment), 1.0f);
                putAt<float>(expected.get(), field.offset + s * sizeof(ColorSplineSegment) + 4, 0.0f);
            }
            break;
        default: // numbers, bools, colours and enums without an empty word keep their values
            break;
        }
    }
    return expected;
}

TEST(MissingKeys, ReferencesBecomeNoneStringsEmptySplinesUnusedAndNumbersStay) {
    const char* bodies[] = {
        "<SpecificParameters/>",
        "",
        "<SpecificParameters><Unknown value='1'/><coating/><BASE/></SpecificParameters>",
        "<Specificparameters><Base><BaseWeightMap name='x'/></Base></Specificparameters>",
    };
    for (const TypeDescriptor* table : familyTypes()) {
        for (const char* body : bodies) {
            SCOPED_TRACE(std::string(table->word) + " with " + body);
            RecordingNames names;
            auto record = recordOf(table->type, 0xA5);
            fillDistinct(*table, record.get(), &names);
            const auto expected = afterMissingKeys(*table, *record);
            names.calls.clear();
            const std::string text = std::string("<TaviMaterial type='") + table->word +
                                     "'><Common><AovID value='5'/></Common>" + body + "</TaviMaterial>";
            ASSERT_TRUE(readDocumentText(text, record.get(), &names));
            EXPECT_EQ(describeFirstDifference(*table, record.get(), expected.get()), "");
            size_t references = 0;
            for (size_t i = 0; i < table->fieldCount; ++i) {
                const FieldKind kind = table->fields[i].kind;
                references += kind == FieldKind::TexMapRef || kind == FieldKind::MaterialRef;
            }
            EXPECT_EQ(names.calls.size(), references) << "every reference is asked for, by the empty name";
            for (const std::string& call : names.calls)
                EXPECT_TRUE(call == "TexMapId " || call == "MaterialId ") << call;
        }
    }
}

TEST(MissingKeys, AnUnreadableDocumentChangesNothing) {
    const std::string texts[] = {"", "<TaviMaterial type='UBER'><SpecificParameters>", "not a document"};
    for (const TypeDescriptor* table : familyTypes()) {
        for (const std::string& text : texts) {
            RecordingNames names;
            auto record = recordOf(table->type, 0x3C);
            const auto before = recordOf(table->type, 0x3C);
            EXPECT_FALSE(readDocumentText(text, record.get(), &names)) << table->word << ": " << text;
            EXPECT_EQ(describeFirstDifference(*table, record.get(), before.get()), "") << table->word;
            EXPECT_TRUE(names.calls.empty());
        }
    }
}

TEST(VolumeCache, ReadingAVolumetricDocumentLeavesTheCacheFlagAndSlotAlone) {
    RecordingNames names;
    auto original = recordOf(kVolumeMaterialType, 0);
    fillDistinct(kVolumetricMaterial, original.get(), &names);
    const std::string text = writtenDocument(kVolumetricMaterial, original.get(), &names);
    auto record = recordOf(kVolumeMaterialType, 0xEE);
    ASSERT_TRUE(readDocumentText(text, record.get(), &names));
    EXPECT_EQ(bytesOf(record.get())[kVolumeCacheFlagOffset], 0xEE);
    for (size_t byte = kVolumetricMaterial.imageLength; byte < sizeof(MaterialRecord); ++byte)
        ASSERT_EQ(bytesOf(record.get())[byte], 0xEE) << byte;
}

} // namespace

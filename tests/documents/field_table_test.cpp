// The table interpreter over a test-only table: malformed rows, walking, writing, reading back
// and missing keys. Custom hooks are the repeated elements' tests.
#include "documents/field_table.h"
#include "tests/documents/document_test_support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

using documents_test::parse;
using documents_test::RecordingNames;
using documents_test::serialise;

namespace {

const char* const kModes[] = {"", "FIRST", "SECOND", nullptr};

// A record of 0x280 bytes with one field of every kind, sections and one read-only field.
constexpr uint32_t kTestRecordBytes = 0x280;
// clang-format off
constexpr FieldDescriptor kTestFields[] = {
    texMapField("Map1", 0x10), colorField("Color1", 0x14), floatField("Weight", 0x20), intField("Count", 0x24),
    uintField("Mask", 0x28), int16Field("Levels", 0x2C), boolField("Invert", 0x2E), enumField("Mode", 0x30, kModes),
    sectionField("Layer"), materialField("Layer/Material", 0x34), texMapField("Layer/Mask", 0x38),
    sectionField("Layer/Inner"), floatField("Layer/Inner/Depth", 0x3C), readOnly(texMapField("Hidden", 0x40)),
    textureField("Texture", 0x44), colorExField("Outside", 0x48), matrixField("Matrix", 0x68),
    splineField("Curve", 0x98, 4), stringField("Label", 0x118, 16), colorSplineField("Tint", 0x138),
    materialField("Fallback", 0x08)};
// clang-format on
static_assert(fieldsFit(kTestFields, kTestRecordBytes));
static_assert(!fieldsFit(kTestFields, 0x270), "the colour spline ends at 0x278");

constexpr CustomField kNoHooks{nullptr, nullptr};
constexpr FieldDescriptor kBadRows[] = {
    floatField("Edge", kTestRecordBytes - 2),            // runs over the end
    {"Width", FieldKind::Float, 0, 2},                   // a float has 4 bytes
    {"Spline", FieldKind::Spline, 0, 0x100, nullptr, 4}, // 4 segments are 0x80 bytes
    splineField("Many", 0, 33),                          // more than the interpreter carries
    {"Words", FieldKind::Enum, 0, 4},                    // an enum without its table
    stringField("Odd", 0, 0),                            // no room for the terminator
    {"", FieldKind::Int, 0, 4},                          // no key
    {"Section", FieldKind::Section, 4, 0},               // sections have no bytes
    customField("Custom", 0, 4, &kNoHooks),              // hooks missing
};
static_assert(fieldFits(floatField("Edge", kTestRecordBytes - 4), kTestRecordBytes));
static_assert(!fieldFits(kBadRows[0], kTestRecordBytes) && !fieldFits(kBadRows[1], kTestRecordBytes) &&
              !fieldFits(kBadRows[2], kTestRecordBytes) && !fieldFits(kBadRows[3], 0x10000) &&
              !fieldFits(kBadRows[5], kTestRecordBytes) && !fieldFits(kBadRows[6], kTestRecordBytes));

TEST(FieldTable, MalformedRowsAreRefusedAndSkippedAtRunTime) {
    for (const FieldDescriptor& row : kBadRows) {
        EXPECT_FALSE(fieldFits(row, kTestRecordBytes) && fieldHasExtras(row)) << row.key;
        pugi::xml_document doc;
        parse(doc, "<S><Edge value='1'/><Width value='1'/><Spline/><Many/><Words value='x'/><Odd value='x'/>"
                   "<Section/><Custom/></S>");
        std::vector<uint8_t> record(kTestRecordBytes, 0xEE);
        RecordingNames names;
        readField(row, doc.child("S"), record.data(), record.size(), &names);
        writeField(row, doc.child("S"), record.data(), record.size(), &names);
        EXPECT_EQ(record, std::vector<uint8_t>(kTestRecordBytes, 0xEE)) << row.key;
    }
    // A good row outside the record it is given is passed by as well, in both directions.
    std::vector<uint8_t> small(0x22, 0xEE);
    pugi::xml_document doc;
    parse(doc, "<S><Weight value='1'/><Map name='m'/></S>");
    RecordingNames names;
    for (const FieldDescriptor& row : {floatField("Weight", 0x20), texMapField("Map", 0x1F)}) {
        readField(row, doc.child("S"), small.data(), small.size(), &names);
        writeField(row, doc.child("S"), small.data(), small.size(), &names);
    }
    EXPECT_EQ(small, std::vector<uint8_t>(0x22, 0xEE));
    EXPECT_TRUE(names.calls.empty());
}

template <class T> T at(const std::vector<uint8_t>& record, size_t offset) {
    T value;
    std::memcpy(&value, record.data() + offset, sizeof value);
    return value;
}

template <class T> void put(std::vector<uint8_t>& record, size_t offset, const T& value) {
    std::memcpy(record.data() + offset, &value, sizeof value);
}

std::vector<uint8_t> sampleRecord() {
    std::vector<uint8_t> record(kTestRecordBytes, 0);
    // clang-format off
    const std::pair<size_t, int32_t> ints[] = {{0x10, 11}, {0x24, -9}, {0x28, 0x7000000F}, {0x30, 2}, {0x34, 21},
                                               {0x38, 12}, {0x40, 13}, {0x44, 31}, {0x08, 22}};
    // clang-format on
    for (auto [offset, value] : ints)
        put(record, offset, value);
    put(record, 0x14, ColorRGB{0.1f, 0.2f, 0.3f});
    put(record, 0x20, 2.5f);
    put<int16_t>(record, 0x2C, -300);
    put<uint8_t>(record, 0x2E, 1);
    put(record, 0x3C, 0.75f);
    put(record, 0x48, ColorEx{1, 2, 3, 4, 5, 6, 7, 8});
    Matrix3x4 m{};
    for (int i = 0; i < 12; ++i)
        m.m[i / 4][i % 4] = static_cast<float>(i) * 1.5f;
    put(record, 0x68, m);
    const SplineSegment unused{1, 0, 0, 0, 0, 0, 0, 0};
    const SplineSegment curve[4] = {
        {0, 0.25f, 0.5f, 1, 1, 2, 3, 4}, unused, {1, 1.5f, 1.75f, 2, 5, 6, 7, 8}, unused};
    put(record, 0x98, curve);
    const char16_t label[16] = u"Lack \u00FC";
    put(record, 0x118, label);
    ColorSplineSegment tint[4] = {};
    for (auto& segment : tint)
        segment.ts = 1; // unused but the first
    tint[0] = {0, 1, {1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}, {13, 14, 15}, {16, 17, 18}};
    put(record, 0x138, tint);
    return record;
}

void defineNames(RecordingNames& names) {
    // clang-format off
    const std::pair<int32_t, const char16_t*> known[] = {{11, u"MapOne"}, {12, u"LayerMask"}, {13, u"HiddenMap"},
        {21, u"LayerMaterial"}, {22, u"FallbackMaterial"}, {31, u"Texture31"}};
    // clang-format on
    for (auto [id, name] : known)
        names.define(id, name);
}

TEST(FieldTable, WalkWriteAndReadBack) {
    const std::vector<uint8_t> original = sampleRecord();
    const std::vector<std::string> expectedCalls = {"TexMapName 11", "MaterialName 21", "TexMapName 12",
                                                    "TextureName 31", "MaterialName 22"};
    RecordingNames walk;
    defineNames(walk);
    writeFields(kTestFields, std::size(kTestFields), pugi::xml_node(), original.data(), original.size(),
                &walk);
    EXPECT_EQ(walk.calls, expectedCalls) << "the read-only Hidden map is left out of the walk";

    // The same calls, in the same order, when the document is really built.
    RecordingNames names;
    defineNames(names);
    pugi::xml_document doc;
    pugi::xml_node section = doc.append_child("S");
    writeFields(kTestFields, std::size(kTestFields), section, original.data(), original.size(), &names);
    EXPECT_EQ(names.calls, expectedCalls);
    EXPECT_EQ(serialise(section.child("Layer")), "<Layer><Material name=\"LayerMaterial\"/>"
                                                 "<Mask name=\"LayerMask\"/><Inner><Depth value=\"0.75\"/>"
                                                 "</Inner></Layer>");
    std::vector<std::string> order;
    for (const pugi::xml_node& child : section.children())
        order.push_back(child.name());
    EXPECT_EQ(order, (std::vector<std::string>{"Map1", "Color1", "Weight", "Count", "Mask", "Levels",
                                               "Invert", "Mode", "Layer", "Texture", "Outside", "Matrix",
                                               "Curve", "Label", "Tint", "Fallback"}));
    EXPECT_STREQ(section.child("Mode").attribute("value").value(), "SECOND");

    std::vector<uint8_t> back(kTestRecordBytes, 0);
    readFields(kTestFields, std::size(kTestFields), section, back.data(), back.size(), &names);
    std::vector<uint8_t> expected = original;
    put<int32_t>(expected, 0x40, -1); // the read-only map is read, but the walk wrote no Hidden
    EXPECT_EQ(back, expected);
}

TEST(FieldTable, MissingKeysFollowTheirKind) {
    std::vector<uint8_t> record = sampleRecord();
    const std::vector<uint8_t> before = record;
    RecordingNames names;
    pugi::xml_document doc;
    parse(doc, "<S><Layer><Inner><Depth value='4'/></Inner></Layer></S>");
    readFields(kTestFields, std::size(kTestFields), doc.child("S"), record.data(), record.size(), &names);
    EXPECT_EQ(at<float>(record, 0x3C), 4.0f) << "keys below nested sections are found";
    for (size_t offset : {0x10u, 0x34u, 0x44u})
        EXPECT_EQ(at<int32_t>(record, offset), -1) << "references become -1 at " << offset;
    EXPECT_EQ(at<int32_t>(record, 0x30), 0) << "the enum finds its empty word";
    EXPECT_EQ(at<uint16_t>(record, 0x118), 0) << "strings are cleared";
    EXPECT_EQ(at<float>(record, 0x98 + 32 + 12), 0.0f) << "spline segments are marked unused";
    EXPECT_EQ(at<float>(record, 0x98 + 32 * 2), 1.0f);
    EXPECT_EQ(at<float>(record, 0x98 + 32 * 2 + 16), 5.0f) << "but keep their values";
    for (size_t offset : {0x14u, 0x20u, 0x24u, 0x28u, 0x2Cu, 0x48u, 0x68u})
        EXPECT_EQ(at<uint32_t>(record, offset), at<uint32_t>(before, offset)) << "numbers keep at " << offset;
    EXPECT_EQ(record[0x2E], 1);
    EXPECT_EQ(names.calls, (std::vector<std::string>{"TexMapId ", "MaterialId ", "TexMapId ", "TexMapId ",
                                                     "TextureId ", "MaterialId "}))
        << "a read asks for every reference, read-only ones included";
}

// Keys are read from the first element of their name, whatever the order of the elements, and a
// key that stands twice in the table reads that same first element both times.
TEST(FieldTable, KeysReadTheFirstElementOfTheirNameInAnyOrder) {
    constexpr FieldDescriptor kRows[] = {intField("A", 0),    intField("B", 4),    intField("C", 8),
                                         intField("S/X", 12), intField("S/Y", 16), intField("A", 20),
                                         intField("T/X", 24)};
    const struct Case {
        const char* body;
        std::vector<int32_t> values; // -1: the key is missing and the field keeps its value
    } cases[] = {
        {"<A value='1'/><B value='2'/><C value='3'/><S><X value='4'/><Y value='5'/></S><T><X value='7'/></T>",
         {1, 2, 3, 4, 5, 1, 7}},
        {"<T><X value='7'/></T><C value='3'/><A value='1'/><B value='2'/><A value='9'/>"
         "<S><Y value='5'/><X value='4'/><X value='8'/></S><S><X value='6'/></S>",
         {1, 2, 3, 4, 5, 1, 7}},
        {"<A value='1'/><A value='9'/><B value='2'/><S><Y value='5'/></S>", {1, 2, -1, -1, 5, 1, -1}},
        {"<B value='2'/><A value='1'/><A value='9'/><C value='3'/><T/><T><X value='8'/></T>",
         {1, 2, 3, -1, -1, 1, -1}},
        {"<C value='3'/><C value='4'/><B value='2'/><B value='5'/>", {-1, 2, 3, -1, -1, -1, -1}},
        // Names that begin with a key's name, or end before it, are other names.
        {"<AB value='5'/><A value='1'/><Bx value='6'/><B value='2'/><C value='3'/><S><XY value='8'/></S>",
         {1, 2, 3, -1, -1, 1, -1}},
    };
    for (const Case& c : cases) {
        pugi::xml_document doc;
        parse(doc, (std::string("<P>") + c.body + "</P>").c_str());
        std::vector<uint8_t> record(28, 0xFF);
        readFields(kRows, std::size(kRows), doc.child("P"), record.data(), record.size(), nullptr);
        std::vector<int32_t> values;
        for (size_t offset = 0; offset < record.size(); offset += 4)
            values.push_back(at<int32_t>(record, offset));
        EXPECT_EQ(values, c.values) << c.body;
    }
}

} // namespace

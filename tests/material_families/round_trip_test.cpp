// Every type of the four families through the real dispatch: the written document read back,
// the reference walk, the shape of the written document, keys missing, and each key on its own.
#include "documents/material_document.h"
#include "documents/materials/material_types.h"
#include "documents/texmap_blocks.h"
#include "documents/xml_value_codec.h"
#include "tests/material_families/family_cases.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>
#include <string>

using documents_test::RecordingNames;
using documents_test::TempFolder;

namespace families_test {
namespace {

std::string documentText(const pugi::xml_document& doc) {
    std::ostringstream out;
    doc.save(out);
    return out.str();
}

// The head and the table read from a document at hand, as the reader does after parsing.
RecordPtr readFromDom(const pugi::xml_document& doc, int32_t type, RecordingNames& names) {
    RecordPtr back = emptyRecord(type);
    const pugi::xml_node root = doc.child(kMaterialRootWord);
    ReadMaterialCommon(root, back.get());
    const TypeDescriptor* table = findMaterialType(type);
    if (table) {
        readFields(table->fields, table->fieldCount, root.child("SpecificParameters"), bytesOf(back.get()),
                   table->imageLength, &names);
    }
    return back;
}

TEST(RoundTrip, ReadingTheWrittenDocumentRestoresEveryField) {
    for (const TypeCase& type : allCases()) {
        for (int seed = 0; seed < 2; ++seed) {
            SCOPED_TRACE("type " + std::to_string(type.type) + " seed " + std::to_string(seed));
            const RecordPtr original = sampleRecord(type, seed);
            RecordPtr expected = emptyRecord(type.type);
            std::memcpy(expected.get(), original.get(), sizeof(MaterialRecord));
            if (type.lists) type.lists->afterRoundTrip(bytesOf(original.get()), bytesOf(expected.get()));
            RecordingNames names;
            defineSampleNames(names);
            pugi::xml_document doc;
            ASSERT_TRUE(BuildMaterialDocument(original.get(), &names, &doc));
            EXPECT_EQ(firstDifference(*readFromDom(doc, type.type, names), *expected), -1) << "from the DOM";
            TempFolder folder;
            const std::u16string path = folder.write("material.xml", documentText(doc));
            RecordPtr back = emptyRecord(type.type);
            ASSERT_TRUE(ReadMaterialDocument(back.get(), path.c_str(), &names));
            EXPECT_EQ(firstDifference(*back, *expected), -1) << "from the saved file";
        }
    }
}

TEST(RoundTrip, WriterReportsNoSuccessForTypesWithFields) {
    for (const TypeCase& type : allCases()) {
        const RecordPtr record = sampleRecord(type, 0);
        RecordingNames names;
        EXPECT_FALSE(WriteMaterialDocument(record.get(), u"unused.xml", &names)) << type.type;
    }
}

TEST(Walk, NameCallsFollowTheRowsInOrder) {
    for (const TypeCase& type : allCases()) {
        for (int seed = 0; seed < 2; ++seed) {
            SCOPED_TRACE("type " + std::to_string(type.type) + " seed " + std::to_string(seed));
            const RecordPtr record = sampleRecord(type, seed);
            const uint8_t* bytes = bytesOf(record.get());
            std::vector<std::string> expected;
            for (const Row& row : type.rows) {
                if (row.kind == K::TexMapRef)
                    expected.push_back("TexMapName " + std::to_string(load<int32_t>(bytes, row.byte)));
                if (row.kind == K::MaterialRef)
                    expected.push_back("MaterialName " + std::to_string(load<int32_t>(bytes, row.byte)));
                if (row.kind == K::Custom) type.lists->walk(bytes, expected);
            }
            RecordingNames names;
            defineSampleNames(names);
            WalkMaterialReferences(record.get(), &names);
            EXPECT_EQ(names.calls, expected);
        }
    }
}

// Element paths below SpecificParameters in document order; sections are entered, values not.
void collectPaths(const pugi::xml_node& element, const std::string& prefix,
                  const std::set<std::string>& sections, std::vector<std::string>& out) {
    for (const pugi::xml_node& child : element.children()) {
        const std::string path = prefix + child.name();
        out.push_back(path);
        if (sections.count(path)) collectPaths(child, path + "/", sections, out);
    }
}

TEST(Shape, WrittenElementsStandInRowOrderAndSections) {
    for (const TypeCase& type : allCases()) {
        SCOPED_TRACE("type " + std::to_string(type.type));
        const RecordPtr record = sampleRecord(type, 1);
        std::set<std::string> sections;
        std::vector<std::string> expected;
        for (const Row& row : type.rows) {
            if (row.kind == K::Section) sections.insert(row.key);
            const size_t copies = row.kind == K::Custom ? type.lists->elements(bytesOf(record.get())) : 1;
            expected.insert(expected.end(), copies, row.key);
        }
        RecordingNames names;
        defineSampleNames(names);
        pugi::xml_document doc;
        ASSERT_TRUE(BuildMaterialDocument(record.get(), &names, &doc));
        const pugi::xml_node root = doc.child("TaviMaterial");
        EXPECT_STREQ(root.attribute("type").value(), type.word ? type.word : "");
        std::vector<std::string> top;
        for (const pugi::xml_node& child : root.children())
            top.push_back(child.name());
        EXPECT_EQ(top, (std::vector<std::string>{"Common", "SpecificParameters"}));
        std::vector<std::string> paths;
        collectPaths(root.child("SpecificParameters"), "", sections, paths);
        EXPECT_EQ(paths, expected);
    }
}

bool hasEmptyWord(const char* const* words) {
    for (size_t i = 0; words[i]; ++i) {
        if (!words[i][0]) return true;
    }
    return false;
}

TEST(MissingKeys, ReferencesAndSplinesClearNumbersStay) {
    for (const TypeCase& type : allCases()) {
        SCOPED_TRACE("type " + std::to_string(type.type));
        RecordPtr record = sampleRecord(type, 0);
        RecordPtr expected = sampleRecord(type, 0);
        uint8_t* bytes = bytesOf(expected.get());
        for (const Row& row : type.rows) {
            if (row.kind == K::TexMapRef || row.kind == K::MaterialRef) store<int32_t>(bytes, row.byte, -1);
            if (row.kind == K::Enum && hasEmptyWord(row.words)) store<int32_t>(bytes, row.byte, 0);
            for (uint32_t segment = 0; row.kind == K::Spline && segment < row.size; ++segment) {
                store<float>(bytes, row.byte + 32 * segment, 1.0f);
                store<float>(bytes, row.byte + 32 * segment + 12, 0.0f);
            }
        }
        if (type.lists) type.lists->afterMissing(bytes);
        expected->Name[0] = 0; // a missing name clears its first and its last character
        expected->Name[kNameChars - 1] = 0;
        if (!type.word) expected->type = 0; // no word: the empty type reads as 0

        TempFolder folder;
        const std::string word = type.word ? type.word : "";
        const std::u16string path = folder.write(
            "material.xml", "<TaviMaterial type='" + word + "'><SpecificParameters/></TaviMaterial>");
        RecordingNames names;
        ASSERT_TRUE(ReadMaterialDocument(record.get(), path.c_str(), &names));
        EXPECT_EQ(firstDifference(*record, *expected), -1);
    }
}

// ---- Each key on its own -----------------------------------------------------------------------

constexpr uint8_t kFill = 0xA5;

RecordPtr filledRecord(int32_t type) {
    RecordPtr record = emptyRecord(type);
    std::memset(bytesOf(record.get()) + kMaterialFieldsOffset, kFill,
                sizeof(MaterialRecord) - kMaterialFieldsOffset);
    return record;
}

size_t wordCount(const char* const* words) {
    size_t count = 0;
    while (words[count])
        ++count;
    return count;
}

// What a read must leave in a field: its bytes, of which [from, to) are checked.
struct Placed {
    std::vector<uint8_t> bytes;
    size_t from = 0;
    size_t to = 0;
};

// Appends the row's element below `section` with a value of its own. `without` is the record
// as a read without the key leaves it. Of a CoordGen only its Blur, at byte 0x50 of the block,
// is checked; the block's own tests cover the rest.
Placed placeValue(const Row& row, pugi::xml_node section, const uint8_t* without) {
    std::string key = row.key;
    for (size_t slash = key.find('/'); slash != std::string::npos; slash = key.find('/')) {
        const std::string name = key.substr(0, slash);
        pugi::xml_node next = section.child(name.c_str());
        section = next ? next : section.append_child(name.c_str());
        key = key.substr(slash + 1);
    }
    const char* leaf = key.c_str();
    Placed placed{std::vector<uint8_t>(without + row.byte, without + row.byte + rowWidth(row)), 0,
                  rowWidth(row)};
    auto put = [&](size_t at, const auto& v) { std::memcpy(placed.bytes.data() + at, &v, sizeof v); };
    switch (row.kind) {
    case K::Int: {
        const int32_t v = -77;
        XmlWriteInt(section, leaf, &v);
        put(0, v);
        break;
    }
    case K::Float: {
        const float v = 1234.5f;
        XmlWriteFloat(section, leaf, &v);
        put(0, v);
        break;
    }
    case K::Bool: {
        const uint8_t v = 1;
        XmlWriteBool(section, leaf, &v);
        put(0, v);
        break;
    }
    case K::Enum: {
        const int32_t v = static_cast<int32_t>(wordCount(row.words) - 1);
        XmlWriteEnum(section, leaf, &v, row.words);
        put(0, v);
        break;
    }
    case K::Color: {
        const ColorRGB v{1.5f, 2.5f, 3.5f};
        XmlWriteColor(section, leaf, &v);
        put(0, v);
        break;
    }
    case K::Matrix: {
        Matrix3x4 v{};
        for (int i = 0; i < 12; ++i)
            v.m[i / 4][i % 4] = static_cast<float>(i) + 0.5f;
        XmlWriteMatrix(section, leaf, &v);
        put(0, v);
        break;
    }
    case K::Spline: {
        // Two segments in use; the others stay as a read without the key marked them.
        std::vector<SplineSegment> v(row.size, SplineSegment{1, 0, 0, 0, 0, 0, 0, 0});
        v[0] = {0, 0.1f, 0.2f, 1, 5, 6, 7, 8};
        v[1] = {1, 1.5f, 1.75f, 2, 9, 10, 11, 12};
        XmlWriteSpline(section, leaf, v.data(), v.size());
        put(0, v[0]);
        put(sizeof(SplineSegment), v[1]);
        break;
    }
    case K::TexMapRef: {
        section.append_child(leaf).append_attribute("name").set_value("Map2424");
        put(0, int32_t{2424});
        break;
    }
    case K::MaterialRef: {
        section.append_child(leaf).append_attribute("name").set_value("Material3434");
        put(0, int32_t{3434});
        break;
    }
    case K::CoordGen: {
        CoordGen block{};
        block.Blur = 9.5f;
        WriteCoordGen(section.append_child(leaf), &block);
        put(0x50, block.Blur);
        placed.from = 0x50;
        placed.to = 0x54;
        break;
    }
    default:
        break;
    }
    return placed;
}

pugi::xml_node frame(pugi::xml_document& doc, const TypeCase& type) {
    pugi::xml_node root = doc.append_child("TaviMaterial");
    root.append_attribute("type").set_value(type.word ? type.word : "");
    return root.append_child("SpecificParameters");
}

TEST(SingleKey, LandsOnItsOwnBytesAndNowhereElse) {
    for (const TypeCase& type : allCases()) {
        RecordingNames names;
        defineSampleNames(names);
        TempFolder folder;
        pugi::xml_document empty;
        frame(empty, type);
        RecordPtr without = filledRecord(type.type);
        const std::u16string emptyPath = folder.write("empty.xml", documentText(empty));
        ASSERT_TRUE(ReadMaterialDocument(without.get(), emptyPath.c_str(), &names));
        for (const Row& row : type.rows) {
            if (row.kind == K::Section || row.kind == K::Custom || sharesBytes(type.type, row.key)) continue;
            SCOPED_TRACE("type " + std::to_string(type.type) + " " + row.key);
            pugi::xml_document doc;
            const Placed placed = placeValue(row, frame(doc, type), bytesOf(without.get()));
            RecordPtr with = filledRecord(type.type);
            const std::u16string path = folder.write("key.xml", documentText(doc));
            ASSERT_TRUE(ReadMaterialDocument(with.get(), path.c_str(), &names));
            const uint8_t* got = bytesOf(with.get());
            const uint8_t* base = bytesOf(without.get());
            for (size_t i = 0; i < sizeof(MaterialRecord); ++i) {
                if (i < row.byte || i >= row.byte + rowWidth(row)) {
                    ASSERT_EQ(got[i], base[i]) << "byte " << i << " changed";
                } else if (i - row.byte >= placed.from && i - row.byte < placed.to) {
                    ASSERT_EQ(got[i], placed.bytes[i - row.byte]) << "byte " << i;
                }
            }
        }
    }
}

} // namespace
} // namespace families_test

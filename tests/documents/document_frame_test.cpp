// Opening documents, detecting their type, and the heads and dispatches of materials and
// texture maps.
#include "documents/material_document.h"
#include "documents/materials/material_types.h"
#include "documents/texmap_document.h"
#include "documents/texmaps/texmap_types.h"
#include "documents/xml_value_codec.h"
#include "tests/documents/document_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

using documents_test::parse;
using documents_test::RecordingNames;
using documents_test::serialise;
using documents_test::TempFolder;
using documents_test::utf16LeWithBom;

namespace {

TEST(OpenDocument, LoadsFindsTheRootExactlyOrFails) {
    TempFolder folder;
    const struct {
        const char* name;
        std::string bytes;
        bool loads, hasRoot;
    } cases[] = {{"declared.xml", "<?xml version='1.0' encoding='utf-8'?>\n<TaviMaterial/>", true, true},
                 {"utf16.xml", utf16LeWithBom("<TaviMaterial type='MIX'/>"), true, true},
                 {"lowercase.xml", "<tavimaterial/>", true, false},
                 {"malformed.xml", "<TaviMaterial><Common></TaviMaterial>", false, false},
                 {"empty.xml", "", false, false}};
    for (const auto& c : cases) {
        pugi::xml_document doc;
        pugi::xml_node root = doc.append_child("Stale");
        EXPECT_EQ(XmlOpenDocument(doc, folder.write(c.name, c.bytes).c_str(), "TaviMaterial", &root), c.loads)
            << c.name;
        EXPECT_EQ(static_cast<bool>(root), c.hasRoot) << c.name;
        EXPECT_EQ(static_cast<bool>(doc.first_child()), c.loads) << c.name << ": a failed load leaves no DOM";
    }
    pugi::xml_document doc;
    pugi::xml_node root;
    EXPECT_FALSE(XmlOpenDocument(doc, folder.pathOf("absent.xml").c_str(), "TaviMaterial", &root));
    EXPECT_FALSE(XmlOpenDocument(doc, folder.pathOf(".").c_str(), "TaviMaterial", &root)) << "a folder";
    EXPECT_FALSE(XmlOpenDocument(doc, nullptr, "TaviMaterial", &root));
    const std::u16string wide = folder.write("Stahl-\xC3\xBC-\xE6\x9D\x90.xml", "<TaviTexMap type='SUN'/>");
    EXPECT_EQ(DetectTexMapType(wide.c_str()), 27) << "paths beyond ASCII";
}

// The documents' writer puts out keys such as "3D" as element names; they must read back in
// every encoding, while the same text inside comments, sections and attribute values is kept.
TEST(OpenDocument, ElementNamesBeginningWithADigitReadBack) {
    TempFolder folder;
    const std::string body = "<TaviTexMap a='<3x>' b=\"'>\"><!-- <4D> --><3D value='1'/><![CDATA[<5D>]]>"
                             "<Deep><7Up>text</7Up></Deep></TaviTexMap>";
    std::string utf16Be = utf16LeWithBom(body);
    for (size_t i = 0; i + 1 < utf16Be.size(); i += 2)
        std::swap(utf16Be[i], utf16Be[i + 1]);
    const std::pair<const char*, std::string> cases[] = {
        {"utf8.xml", body},
        {"utf16le.xml", utf16LeWithBom(body)},
        {"utf16be.xml", utf16Be},
        {"utf16le-nobom.xml", utf16LeWithBom(body).substr(2)}};
    for (const auto& [name, bytes] : cases) {
        pugi::xml_document doc;
        pugi::xml_node root;
        ASSERT_TRUE(XmlOpenDocument(doc, folder.write(name, bytes).c_str(), "TaviTexMap", &root)) << name;
        EXPECT_STREQ(root.first_child().name(), "3D") << name;
        EXPECT_STREQ(root.child("3D").attribute("value").value(), "1") << name;
        EXPECT_STREQ(root.child("Deep").child("7Up").text().get(), "text") << name;
        EXPECT_STREQ(root.attribute("a").value(), "<3x>") << name;
        EXPECT_STREQ(root.attribute("b").value(), "'>") << name;
        EXPECT_STREQ(root.child("Deep").previous_sibling().value(), "<5D>") << name;
    }
}

TEST(DetectType, WordsInAnyCaseUnknownAndMissingGiveZero) {
    TempFolder folder;
    const struct {
        bool material;
        std::string bytes;
        int32_t type;
    } cases[] = {
        {true, "<TaviMaterial type='Physical'><Common/></TaviMaterial>", 1},
        {true, "<TaviMaterial type='MIE'/>", 31},
        {true, "<TaviMaterial type='DISPLACEMENTMAP'/>", 0}, // the table spells it DISPACEMENTMAP
        {true, "<TaviMaterial type='DISPACEMENTMAP'/>", 22},
        {true, "<TaviMaterial Type='MIX'/>", 0},
        {true, "<TaviTexMap type='MIX'/>", 0},
        {true, utf16LeWithBom("<?xml version='1.0' encoding='utf-16'?><TaviMaterial type='Bump'/>"), 10},
        {true, "<TaviMaterial type='MIX'>", 0},
        {false, "<TaviTexMap type='ColorCorrection'/>", 5},
        {false, "<TaviTexMap type='UNKNOWN'/>", 0},
        {false, "<TaviMaterial type='IMAGE'/>", 0},
        {false, utf16LeWithBom("<TaviTexMap type='Noise'/>"), 8}};
    for (const auto& c : cases) {
        const std::u16string path = folder.write("doc.xml", c.bytes);
        EXPECT_EQ(c.material ? DetectMaterialType(path.c_str()) : DetectTexMapType(path.c_str()), c.type)
            << c.bytes;
    }
    EXPECT_EQ(DetectMaterialType(folder.pathOf("absent.xml").c_str()), 0);
    EXPECT_EQ(XmlWordCount(kMaterialTypeWords), 32u);
    EXPECT_STREQ(kMaterialTypeWords[9], "");
    EXPECT_EQ(XmlWordCount(kTexMapTypeWords), 28u);
    EXPECT_STREQ(kTexMapTypeWords[16], "");
}

template <class Record> std::unique_ptr<Record> recordOf(int32_t type, uint8_t fill) {
    auto record = std::make_unique<Record>();
    std::memset(record.get(), fill, sizeof(Record));
    record->type = type;
    return record;
}

// Types that no table describes leave the record alone and ask for no names; material types 9
// and 27 have no fields, so their documents need none.
TEST(Dispatch, TypesWithoutTablesFailUntouched) {
    TempFolder folder;
    const std::u16string path = folder.write(
        "doc.xml", "<TaviMaterial type='MIX'><Common><Name value='Other'/></Common></TaviMaterial>");
    for (int32_t type = -2; type <= 34; ++type) {
        const bool noFields = type == 9 || type == 27;
        if (type >= 1 && type <= 32 && !noFields && findMaterialType(type)) continue; // a family's own
        auto record = recordOf<MaterialRecord>(type, 0x5A);
        const auto before = *record;
        RecordingNames names;
        pugi::xml_document doc;
        EXPECT_EQ(ReadMaterialDocument(record.get(), path.c_str(), &names), noFields) << type;
        EXPECT_EQ(WriteMaterialDocument(record.get(), path.c_str(), &names), noFields) << type;
        WalkMaterialReferences(record.get(), &names);
        EXPECT_FALSE(BuildMaterialDocument(record.get(), &names, &doc)) << type;
        EXPECT_TRUE(std::memcmp(record.get(), &before, sizeof before) == 0 && names.calls.empty()) << type;
    }
    const std::u16string texMapPath = folder.write("map.xml", "<TaviTexMap type='SUN'/>");
    for (int32_t type = -2; type <= 30; ++type) {
        if (type >= 1 && type <= 27 && type != 16 && findTexMapType(type)) continue;
        auto record = recordOf<TexMapRecord>(type, 0x5A);
        const auto before = *record;
        RecordingNames names;
        EXPECT_FALSE(ReadTexMapDocument(record.get(), texMapPath.c_str(), &names)) << type;
        WalkTexMapReferences(record.get(), &names);
        EXPECT_TRUE(std::memcmp(record.get(), &before, sizeof before) == 0 && names.calls.empty()) << type;
    }
}

TEST(MaterialCommon, ReadsTypeNameAndAovIdAndMissingCommonEmptiesTheName) {
    pugi::xml_document doc;
    parse(doc, "<TaviMaterial type='rougHCoating'><Common><AovID value='12'/><Name value='Lack'/></Common>"
               "</TaviMaterial>");
    auto record = recordOf<MaterialRecord>(7, 0x5A);
    ReadMaterialCommon(doc.child("TaviMaterial"), record.get());
    EXPECT_EQ(record->type, 21);
    EXPECT_EQ(record->AovID, 12);
    EXPECT_EQ(std::u16string(record->Name), u"Lack");
    parse(doc, "<TaviMaterial type='NOSUCHTYPE'><common><Name value='x'/></common></TaviMaterial>");
    ReadMaterialCommon(doc.child("TaviMaterial"), record.get());
    EXPECT_EQ(record->type, 21) << "an unknown word leaves the type";
    EXPECT_EQ(record->AovID, 12);
    EXPECT_EQ(record->Name[0], u'\0');
}

TEST(MaterialCommon, WritesTheHeadAndNoWordForNumbersOutsideTheTable) {
    const std::pair<int32_t, const char*> cases[] = {
        {5, "LAMBERTIANEMISSION"}, {9, ""}, {31, "MIE"}, {32, ""}, {33, ""}, {-1, ""}};
    for (const auto& [type, word] : cases) {
        auto record = recordOf<MaterialRecord>(type, 0x5A);
        record->AovID = -4;
        std::memcpy(record->Name, u"Gold", 5 * sizeof(char16_t));
        pugi::xml_document doc;
        WriteMaterialCommon(doc.append_child(kMaterialRootWord), record.get());
        EXPECT_EQ(serialise(doc), std::string("<TaviMaterial type=\"") + word +
                                      "\"><Common><Name value=\"Gold\"/><AovID value=\"-4\"/></Common>"
                                      "</TaviMaterial>");
    }
}

TEST(TexMapCommon, NameIsCutToSixtyThreeClearedWithoutCommonAndWrittenBack) {
    pugi::xml_document doc;
    const std::string text =
        "<TaviTexMap type='blend'><Common><Name value='" + std::string(70, 'w') + "'/></Common>";
    parse(doc, (text + "</TaviTexMap>").c_str());
    auto record = recordOf<TexMapRecord>(0, 0x33);
    ReadTexMapCommon(doc.child("TaviTexMap"), record.get());
    EXPECT_EQ(record->type, 3);
    EXPECT_EQ(std::u16string(record->Name), std::u16string(63, u'w'));
    parse(doc, "<TaviTexMap type='nothing'/>");
    ReadTexMapCommon(doc.child("TaviTexMap"), record.get());
    EXPECT_EQ(record->type, 3);
    EXPECT_EQ(record->Name[0], u'\0');
    EXPECT_EQ(record->typeData[0], 0x33) << "the bytes after the name are not a document's business";

    const std::pair<int32_t, const char*> cases[] = {{16, ""}, {24, "FALLOFF"}};
    for (const auto& [type, word] : cases) {
        record = recordOf<TexMapRecord>(type, 0);
        std::memcpy(record->Name, u"Sky", 4 * sizeof(char16_t));
        pugi::xml_document out;
        WriteTexMapCommon(out.append_child(kTexMapRootWord), record.get());
        EXPECT_EQ(serialise(out), std::string("<TaviTexMap type=\"") + word +
                                      "\"><Common><Name value=\"Sky\"/></Common></TaviTexMap>");
    }
}

} // namespace

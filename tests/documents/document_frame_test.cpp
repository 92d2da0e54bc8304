// Opening documents, detecting their type, and the frames and dispatches of materials and
// texture maps.
#include "documents/material_document.h"
#include "documents/materials/material_types.h"
#include "documents/texmap_document.h"
#include "documents/texmaps/texmap_types.h"
#include "documents/xml_value_codec.h"
#include "tests/documents/document_test_support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

using documents_test::parse;
using documents_test::RecordingNames;
using documents_test::serialise;
using documents_test::TempFolder;
using documents_test::utf16LeWithBom;

namespace {

// ---- Opening -----------------------------------------------------------------------------------

TEST(OpenDocument, LoadsFindsTheRootExactlyOrFails) {
    TempFolder folder;
    struct Case {
        const char* name;
        std::string bytes;
        bool loads;
        bool hasRoot;
    } cases[] = {
        {"plain.xml", "<TaviMaterial type='MIX'/>", true, true},
        {"declared.xml", "<?xml version='1.0' encoding='utf-8'?>\n<TaviMaterial/>", true, true},
        {"utf16.xml", utf16LeWithBom("<TaviMaterial type='MIX'/>"), true, true},
        {"misspelled.xml", "<TaviMaterjal/>", true, false},
        {"lowercase.xml", "<tavimaterial/>", true, false},
        {"malformed.xml", "<TaviMaterial><Common></TaviMaterial>", false, false},
        {"empty.xml", "", false, false},
    };
    for (const Case& c : cases) {
        const std::u16string path = folder.write(c.name, c.bytes);
        pugi::xml_document doc;
        pugi::xml_node root = doc.append_child("Stale");
        EXPECT_EQ(XmlOpenDocument(doc, path.c_str(), "TaviMaterial", &root), c.loads) << c.name;
        EXPECT_EQ(static_cast<bool>(root), c.hasRoot) << c.name;
        if (!c.loads) {
            EXPECT_FALSE(doc.first_child()) << c.name << ": a failed load leaves no DOM";
        }
    }
    pugi::xml_document doc;
    pugi::xml_node root;
    EXPECT_FALSE(XmlOpenDocument(doc, folder.pathOf("absent.xml").c_str(), "TaviMaterial", &root));
    EXPECT_FALSE(XmlOpenDocument(doc, nullptr, "TaviMaterial", &root));
}

// The documents' writer puts out keys such as "3D" as element names; they must read back in
// every encoding, while the same text inside comments, sections and attribute values is kept.
TEST(OpenDocument, ElementNamesBeginningWithADigitReadBack) {
    TempFolder folder;
    const std::string body = "<TaviTexMap a='<3x>' b=\"'>\"><!-- <4D> --><3D value='1'/><![CDATA[<5D>]]>"
                             "<Deep><7Up>text</7Up></Deep></TaviTexMap>";
    std::string utf16Be;
    for (char c : utf16LeWithBom(body)) utf16Be.push_back(c);
    for (size_t i = 0; i + 1 < utf16Be.size(); i += 2) std::swap(utf16Be[i], utf16Be[i + 1]);
    struct Case {
        const char* name;
        std::string bytes;
    } cases[] = {
        {"utf8.xml", body},
        {"utf16le.xml", utf16LeWithBom(body)},
        {"utf16be.xml", utf16Be},
        {"utf16le-nobom.xml", utf16LeWithBom(body).substr(2)},
    };
    for (const Case& c : cases) {
        pugi::xml_document doc;
        pugi::xml_node root;
        ASSERT_TRUE(XmlOpenDocument(doc, folder.write(c.name, c.bytes).c_str(), "TaviTexMap", &root)) << c.name;
        EXPECT_STREQ(root.child("3D").attribute("value").value(), "1") << c.name;
        EXPECT_STREQ(root.child("Deep").child("7Up").text().get(), "text") << c.name;
        EXPECT_STREQ(root.attribute("a").value(), "<3x>") << c.name;
        EXPECT_STREQ(root.attribute("b").value(), "'>") << c.name;
        EXPECT_STREQ(root.first_child().name(), "3D") << c.name;
        EXPECT_STREQ(root.child("Deep").previous_sibling().value(), "<5D>") << c.name;
    }
}

TEST(OpenDocument, TakesPathsBeyondAscii) {
    TempFolder folder;
    const std::u16string path = folder.write("Stahl-\xC3\xBC-\xE6\x9D\x90.xml", "<TaviTexMap type='SUN'/>");
    EXPECT_EQ(DetectTexMapType(path.c_str()), 27);
}

// ---- Type detection ----------------------------------------------------------------------------

TEST(DetectType, MaterialWordsAnyCaseUnknownAndMissingGiveZero) {
    TempFolder folder;
    struct Case {
        const char* name;
        std::string bytes;
        int32_t type;
    } cases[] = {
        {"upper.xml", "<TaviMaterial type='DIFFUSE'/>", 7},
        {"lower.xml", "<TaviMaterial type='diffuse'/>", 7},
        {"mixed.xml", "<TaviMaterial type='Physical'><Common/></TaviMaterial>", 1},
        {"last.xml", "<TaviMaterial type='MIE'/>", 31},
        {"null.xml", "<TaviMaterial type='NULL'/>", 27},
        {"typo.xml", "<TaviMaterial type='DISPLACEMENTMAP'/>", 0}, // the table spells it DISPACEMENTMAP
        {"spelled.xml", "<TaviMaterial type='DISPACEMENTMAP'/>", 22},
        {"unknown.xml", "<TaviMaterial type='VELVET'/>", 0},
        {"empty.xml", "<TaviMaterial type=''/>", 0},
        {"missing.xml", "<TaviMaterial/>", 0},
        {"attrcase.xml", "<TaviMaterial Type='MIX'/>", 0},
        {"root.xml", "<TaviTexMap type='MIX'/>", 0},
        {"utf16.xml", utf16LeWithBom("<?xml version='1.0' encoding='utf-16'?><TaviMaterial type='Bump'/>"),
         10},
        {"broken.xml", "<TaviMaterial type='MIX'>", 0},
    };
    for (const Case& c : cases) {
        const std::u16string path = folder.write(c.name, c.bytes);
        EXPECT_EQ(DetectMaterialType(path.c_str()), c.type) << c.name;
    }
    EXPECT_EQ(DetectMaterialType(folder.pathOf("absent.xml").c_str()), 0);
}

TEST(DetectType, TexMapWordsAnyCaseUnknownAndMissingGiveZero) {
    TempFolder folder;
    struct Case {
        const char* name;
        std::string bytes;
        int32_t type;
    } cases[] = {
        {"upper.xml", "<TaviTexMap type='IMAGE'/>", 1},
        {"lower.xml", "<TaviTexMap type='image'/>", 1},
        {"mixed.xml", "<TaviTexMap type='ColorCorrection'/>", 5},
        {"sun.xml", "<TaviTexMap type='sun'/>", 27},
        {"rgb.xml", "<TaviTexMap type='rgb_tint'/>", 11},
        {"unknown.xml", "<TaviTexMap type='UNKNOWN'/>", 0},
        {"missing.xml", "<TaviTexMap/>", 0},
        {"root.xml", "<TaviMaterial type='IMAGE'/>", 0},
        {"utf16.xml", utf16LeWithBom("<TaviTexMap type='Noise'/>"), 8},
        {"broken.xml", "<TaviTexMap", 0},
    };
    for (const Case& c : cases) {
        const std::u16string path = folder.write(c.name, c.bytes);
        EXPECT_EQ(DetectTexMapType(path.c_str()), c.type) << c.name;
    }
    EXPECT_EQ(DetectTexMapType(folder.pathOf("absent.xml").c_str()), 0);
}

TEST(TypeWords, TablesHaveTheirEmptyWordsAndNullEnds) {
    EXPECT_EQ(XmlWordCount(kMaterialTypeWords), 32u);
    EXPECT_STREQ(kMaterialTypeWords[0], "");
    EXPECT_STREQ(kMaterialTypeWords[9], "");
    EXPECT_EQ(kMaterialTypeWords[32], nullptr);
    EXPECT_EQ(XmlWordCount(kTexMapTypeWords), 28u);
    EXPECT_STREQ(kTexMapTypeWords[16], "");
    EXPECT_EQ(kTexMapTypeWords[28], nullptr);
}

// ---- Dispatch ----------------------------------------------------------------------------------

std::unique_ptr<MaterialRecord> materialOf(int32_t type) {
    auto record = std::make_unique<MaterialRecord>();
    std::memset(record.get(), 0x5A, sizeof(MaterialRecord));
    record->type = type;
    return record;
}

TEST(MaterialDispatch, TypesWithoutFieldsSucceedAndUnknownTypesFailUntouched) {
    TempFolder folder;
    const std::u16string path = folder.write(
        "doc.xml", "<TaviMaterial type='MIX'><Common><Name value='Other'/></Common></TaviMaterial>");
    for (int32_t type = -2; type <= 34; ++type) {
        const bool noFields = type == 9 || type == 27;
        const bool known = type >= 1 && type <= 32;
        if (known && !noFields && findMaterialType(type)) continue; // a family's own tests cover it
        auto record = materialOf(type);
        const auto before = *record;
        RecordingNames names;
        EXPECT_EQ(ReadMaterialDocument(record.get(), path.c_str(), &names), noFields) << type;
        EXPECT_EQ(WriteMaterialDocument(record.get(), path.c_str(), &names), noFields) << type;
        WalkMaterialReferences(record.get(), &names);
        EXPECT_EQ(std::memcmp(record.get(), &before, sizeof before), 0) << type;
        EXPECT_TRUE(names.calls.empty()) << type;
        pugi::xml_document doc;
        EXPECT_FALSE(BuildMaterialDocument(record.get(), &names, &doc)) << type;
    }
}

TEST(TexMapDispatch, TypesWithoutTablesFailUntouched) {
    TempFolder folder;
    const std::u16string path = folder.write("doc.xml", "<TaviTexMap type='SUN'/>");
    for (int32_t type = -2; type <= 30; ++type) {
        if (type >= 1 && type <= 27 && type != 16 && findTexMapType(type)) continue;
        auto record = std::make_unique<TexMapRecord>();
        std::memset(record.get(), 0x5A, sizeof(TexMapRecord));
        record->type = type;
        const auto before = *record;
        RecordingNames names;
        EXPECT_FALSE(ReadTexMapDocument(record.get(), path.c_str(), &names)) << type;
        WalkTexMapReferences(record.get(), &names);
        EXPECT_EQ(std::memcmp(record.get(), &before, sizeof before), 0) << type;
        EXPECT_TRUE(names.calls.empty()) << type;
    }
}

// ---- Heads -------------------------------------------------------------------------------------

TEST(MaterialCommon, ReadsTypeNameAndAovId) {
    pugi::xml_document doc;
    parse(doc, "<TaviMaterial type='rougHCoating'><Common><AovID value='12'/><Name value='Lack'/></Common>"
               "</TaviMaterial>");
    auto record = materialOf(7);
    ReadMaterialCommon(doc.child("TaviMaterial"), record.get());
    EXPECT_EQ(record->type, 21);
    EXPECT_EQ(record->AovID, 12);
    EXPECT_EQ(std::u16string(record->Name), u"Lack");
}

TEST(MaterialCommon, MissingCommonEmptiesTheNameAndKeepsTheAovId) {
    pugi::xml_document doc;
    parse(doc, "<TaviMaterial type='NOSUCHTYPE'><common><Name value='x'/></common></TaviMaterial>");
    auto record = materialOf(7);
    record->AovID = 3;
    ReadMaterialCommon(doc.child("TaviMaterial"), record.get());
    EXPECT_EQ(record->type, 7) << "an unknown word leaves the type";
    EXPECT_EQ(record->AovID, 3);
    EXPECT_EQ(record->Name[0], u'\0');
    EXPECT_EQ(record->Name[kNameChars - 1], u'\0');
}

TEST(MaterialCommon, WritesTheHeadAndNoWordForNumbersOutsideTheTable) {
    struct Case {
        int32_t type;
        const char* word;
    } cases[] = {{5, "LAMBERTIANEMISSION"}, {9, ""}, {31, "MIE"}, {32, ""}, {33, ""}, {-1, ""}};
    for (const Case& c : cases) {
        auto record = materialOf(c.type);
        record->AovID = -4;
        std::memcpy(record->Name, u"Gold", 5 * sizeof(char16_t));
        pugi::xml_document doc;
        pugi::xml_node root = doc.append_child(kMaterialRootWord);
        WriteMaterialCommon(root, record.get());
        EXPECT_EQ(serialise(root), std::string("<TaviMaterial type=\"") + c.word +
                                       "\"><Common><Name value=\"Gold\"/><AovID value=\"-4\"/></Common>"
                                       "</TaviMaterial>");
    }
}

TEST(MaterialCommon, UnterminatedNameIsWrittenWithinTheField) {
    auto record = materialOf(5);
    for (char16_t& c : record->Name)
        c = u'n';
    pugi::xml_document doc;
    WriteMaterialCommon(doc.append_child(kMaterialRootWord), record.get());
    EXPECT_EQ(std::string(doc.first_child().child("Common").child("Name").attribute("value").value()),
              std::string(kNameChars, 'n'));
}

TEST(TexMapCommon, NameIsCutToSixtyThreeAndClearedWithoutCommon) {
    const std::string longName(70, 'w');
    pugi::xml_document doc;
    parse(
        doc,
        ("<TaviTexMap type='blend'><Common><Name value='" + longName + "'/></Common></TaviTexMap>").c_str());
    auto record = std::make_unique<TexMapRecord>();
    std::memset(record.get(), 0x33, sizeof(TexMapRecord));
    ReadTexMapCommon(doc.child("TaviTexMap"), record.get());
    EXPECT_EQ(record->type, 3);
    EXPECT_EQ(std::u16string(record->Name), std::u16string(63, u'w'));
    pugi::xml_document bare;
    parse(bare, "<TaviTexMap type='nothing'/>");
    ReadTexMapCommon(bare.child("TaviTexMap"), record.get());
    EXPECT_EQ(record->type, 3);
    EXPECT_EQ(record->Name[0], u'\0');
    EXPECT_EQ(record->typeData[0], 0x33) << "the bytes after the name are not a document's business";
}

TEST(TexMapCommon, WritesTypeWordAndName) {
    auto record = std::make_unique<TexMapRecord>();
    std::memset(record.get(), 0, sizeof(TexMapRecord));
    record->type = 16;
    std::memcpy(record->Name, u"Sky", 4 * sizeof(char16_t));
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child(kTexMapRootWord);
    WriteTexMapCommon(root, record.get());
    EXPECT_EQ(serialise(root), "<TaviTexMap type=\"\"><Common><Name value=\"Sky\"/></Common></TaviTexMap>");
    record->type = 24;
    pugi::xml_document second;
    WriteTexMapCommon(second.append_child(kTexMapRootWord), record.get());
    EXPECT_STREQ(second.first_child().attribute("type").value(), "FALLOFF");
}

} // namespace

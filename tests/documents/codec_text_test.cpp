// Strings, enums and references: the kinds whose missing keys do change the field.
#include "documents/xml_value_codec.h"
#include "tests/documents/document_test_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using documents_test::parse;
using documents_test::RecordingNames;
using documents_test::serialise;

namespace {

// ---- Strings -----------------------------------------------------------------------------------

constexpr size_t kCapacity = 8;

std::u16string filled() {
    return std::u16string(kCapacity, u'#');
}

std::u16string readInto(const pugi::xml_node& root, const char* key) {
    std::u16string buffer = filled();
    XmlReadString(root, key, buffer.data(), kCapacity);
    return buffer;
}

TEST(StringCodec, ClearsCopiesAndCutsToCapacity) {
    pugi::xml_document doc;
    parse(doc, "<R><Long value='abcdefghij'/><Short value='ab'/><Exact value='abcdefg'/><Empty value=''/>"
               "<NoValue v='x'/><Wide value='Gr\xC3\xBC\xC3\x9F\x65 \xF0\x9F\x98\x80'/></R>");
    const pugi::xml_node root = doc.child("R");
    struct Case {
        const char* key;
        std::u16string expected;
    } cases[] = {
        // capacity - 1 characters at most, then the terminator at capacity - 1
        {"Long", std::u16string(u"abcdefg") + u'\0'},
        // a shorter text and its terminator; what lies after it stays, but the last character
        {"Short", std::u16string(u"ab") + u'\0' + u"####" + u'\0'},
        {"Exact", std::u16string(u"abcdefg") + u'\0'},
        {"Empty", std::u16string(1, u'\0') + u"######" + u'\0'},
        // a missing key or value copies the cleared buffer onto itself: the field ends up empty
        {"NoValue", std::u16string(1, u'\0') + u"######" + u'\0'},
        {"Missing", std::u16string(1, u'\0') + u"######" + u'\0'},
        {"name", std::u16string(1, u'\0') + u"######" + u'\0'},
        // UTF-8 arrives as UTF-16; the emoji takes two units
        {"Wide", std::u16string(u"Grüße \xD83D") + u'\0'},
    };
    for (const Case& c : cases)
        EXPECT_EQ(readInto(root, c.key), c.expected) << c.key;
    EXPECT_EQ(readInto(pugi::xml_node(), "Short"), std::u16string(1, u'\0') + u"######" + u'\0');
}

TEST(StringCodec, RoundTripsUnicodeText) {
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("R");
    const char16_t text[] = u"Stahl \u00FC \U0001F600 <&>\"";
    XmlWriteString(root, "Name", text);
    char16_t back[64];
    XmlReadString(root, "Name", back, 64);
    EXPECT_EQ(std::u16string(back), std::u16string(text));
    XmlWriteString(root, "Null", nullptr);
    EXPECT_STREQ(root.child("Null").attribute("value").value(), "");
}

// ---- Enums -------------------------------------------------------------------------------------

const char* const kStereo[] = {"", "PARALLEL", "EYE_ROTATE", "AXIS_SHIFT", nullptr};
const char* const kPhase[] = {"HG", "MIE", nullptr};
const char* const kInnerEmpty[] = {"A", "", "B", nullptr};

int32_t readEnum(const char* documentText, WordTable words, int32_t start) {
    pugi::xml_document doc;
    parse(doc, documentText);
    int32_t field = start;
    XmlReadEnum(doc.child("R"), "Mode", &field, words);
    return field;
}

TEST(EnumCodec, MatchesWordsIgnoringAsciiCase) {
    struct Case {
        const char* document;
        WordTable words;
        int32_t expected;
    } cases[] = {
        {"<R><Mode value='PARALLEL'/></R>", kStereo, 1},
        {"<R><Mode value='eye_rotate'/></R>", kStereo, 2},
        {"<R><Mode value='Axis_Shift'/></R>", kStereo, 3},
        {"<R><Mode value='mie'/></R>", kPhase, 1},
        // no match leaves the field alone
        {"<R><Mode value='SIDEWAYS'/></R>", kStereo, 9},
        {"<R><Mode value='PARALLEL '/></R>", kStereo, 9},
        {"<R><Mode value='\xC3\xA9'/></R>", kStereo, 9},
        // the empty word rule: a missing key, attribute or empty value looks up the empty word
        {"<R/>", kStereo, 0},
        {"<R><Mode/></R>", kStereo, 0},
        {"<R><Mode value=''/></R>", kStereo, 0},
        {"<R><mode value='PARALLEL'/></R>", kStereo, 0},
        {"<R/>", kInnerEmpty, 1},
        // without an empty word a missing key keeps the field
        {"<R/>", kPhase, 9},
        {"<R><Mode value=''/></R>", kPhase, 9},
    };
    for (const Case& c : cases)
        EXPECT_EQ(readEnum(c.document, c.words, 9), c.expected) << c.document;
}

TEST(EnumCodec, WritesTheTableWordAndNothingOutsideTheTable) {
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("R");
    const int32_t indices[] = {2, 0, 4, -1, 1000};
    const char* const expected[] = {"EYE_ROTATE", "", "", "", ""};
    for (size_t i = 0; i < std::size(indices); ++i) {
        const std::string key = "K" + std::to_string(i);
        XmlWriteEnum(root, key.c_str(), &indices[i], kStereo);
        EXPECT_STREQ(root.child(key.c_str()).attribute("value").value(), expected[i]) << indices[i];
    }
    const uint32_t unsignedIndex = 1;
    XmlWriteEnum(root, "U", &unsignedIndex, kPhase);
    EXPECT_STREQ(root.child("U").attribute("value").value(), "MIE");
}

TEST(EnumCodec, WordInOtherCaseIsWrittenBackAsTheTableHasIt) {
    int32_t field = readEnum("<R><Mode value='axis_shift'/></R>", kStereo, 0);
    pugi::xml_document doc;
    XmlWriteEnum(doc.append_child("R"), "Mode", &field, kStereo);
    EXPECT_EQ(serialise(doc.child("R")), "<R><Mode value=\"AXIS_SHIFT\"/></R>");
}

TEST(EnumCodec, AttributeFormAndUnsignedFields) {
    pugi::xml_document doc;
    parse(doc, "<R type='Mie'><Mode value='hg'/></R>");
    int32_t type = 7;
    XmlReadEnumAttribute(doc.child("R"), "type", &type, kPhase);
    EXPECT_EQ(type, 1);
    XmlReadEnumAttribute(doc.child("R"), "Type", &type, kStereo);
    EXPECT_EQ(type, 0) << "attribute names are exact; the missing one finds the empty word";
    uint32_t mode = 5;
    XmlReadEnum(doc.child("R"), "Mode", &mode, kPhase);
    EXPECT_EQ(mode, 0u);
    EXPECT_EQ(XmlWordCount(kStereo), 4u);
    EXPECT_EQ(XmlFindWord(kStereo, "parallel"), 1);
    EXPECT_EQ(XmlFindWord(kPhase, "nothing"), -1);
}

// ---- References --------------------------------------------------------------------------------

TEST(ReferenceCodec, WriteAsksTheNameAndStoresIt) {
    RecordingNames names;
    names.define(5, u"Wood");
    names.define(6, u"Stahl\u00FC");
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("R");
    const int32_t map = 5, material = 6, none = -1;
    XmlWriteTexMapRef(root, "Map", &map, &names);
    XmlWriteMaterialRef(root, "Material", &material, &names);
    XmlWriteTexMapRef(root, "NoMap", &none, &names);
    XmlWriteTextureRef(root, "Texture", &map, &names);
    EXPECT_EQ(serialise(root), "<R><Map name=\"Wood\"/><Material name=\"Stahl\xC3\xBC\"/><NoMap name=\"\"/>"
                               "<Texture value=\"Wood\"/></R>");
    EXPECT_EQ(names.calls,
              (std::vector<std::string>{"TexMapName 5", "MaterialName 6", "TexMapName -1", "TextureName 5"}));
}

TEST(ReferenceCodec, WriteCallsTheNameInterfaceEvenWithoutAParent) {
    RecordingNames names;
    const int32_t id = 3;
    XmlWriteTexMapRef(pugi::xml_node(), "Map", &id, &names);
    XmlWriteMaterialRef(pugi::xml_node(), "Material", &id, &names);
    XmlWriteTextureRef(pugi::xml_node(), "Texture", &id, &names);
    EXPECT_EQ(names.calls, (std::vector<std::string>{"TexMapName 3", "MaterialName 3", "TextureName 3"}));
}

TEST(ReferenceCodec, ReadAlwaysOverwritesAndMissingBecomesMinusOne) {
    RecordingNames names;
    names.define(5, u"Wood");
    names.define(8, u"Glas\u00E4");
    pugi::xml_document doc;
    parse(doc, "<R><Map name='Wood'/><Material name='Glas\xC3\xA4'/><Empty name=''/><Other value='Wood'/>"
               "<Texture value='Wood'/></R>");
    const pugi::xml_node root = doc.child("R");
    int32_t map = 0, material = 0, empty = 0, other = 0, missing = 0, texture = 0;
    XmlReadTexMapRef(root, "Map", &map, &names);
    XmlReadMaterialRef(root, "Material", &material, &names);
    XmlReadTexMapRef(root, "Empty", &empty, &names);
    XmlReadTexMapRef(root, "Other", &other, &names);
    XmlReadMaterialRef(root, "Missing", &missing, &names);
    XmlReadTextureRef(root, "Texture", &texture, &names);
    EXPECT_EQ(map, 5);
    EXPECT_EQ(material, 8);
    EXPECT_EQ(empty, -1);
    EXPECT_EQ(other, -1) << "a map reference is in attribute name, not value";
    EXPECT_EQ(missing, -1);
    EXPECT_EQ(texture, 5);
    EXPECT_EQ(names.calls, (std::vector<std::string>{"TexMapId Wood", "MaterialId Glas\xC3\xA4", "TexMapId ",
                                                     "TexMapId ", "MaterialId ", "TextureId Wood"}));
    int32_t withoutNames = 4;
    XmlReadTexMapRef(root, "Map", &withoutNames, nullptr);
    EXPECT_EQ(withoutNames, -1);
}

TEST(ReferenceCodec, TextureNamesAreCutToSixtyThreeCharacters) {
    RecordingNames names;
    const std::string longName(70, 'x');
    pugi::xml_document doc;
    doc.append_child("R").append_child("Texture").append_attribute("value").set_value(longName.c_str());
    int32_t texture = 0;
    XmlReadTextureRef(doc.child("R"), "Texture", &texture, &names);
    ASSERT_EQ(names.calls.size(), 1u);
    EXPECT_EQ(names.calls[0], "TextureId " + std::string(63, 'x'));
    EXPECT_EQ(texture, 100);
}

} // namespace

// Strings, enums and references: the kinds whose missing keys do change the field.
#include "documents/xml_value_codec.h"
#include "tests/documents/document_test_support.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using documents_test::parse;
using documents_test::RecordingNames;
using documents_test::serialise;

namespace {

using Calls = std::vector<std::string>;

TEST(StringCodec, ClearsCopiesAndCutsToCapacity) {
    constexpr size_t kCapacity = 8;
    pugi::xml_document doc;
    parse(doc, "<R><Long value='abcdefghij'/><Short value='ab'/><Exact value='abcdefg'/><Empty value=''/>"
               "<NoValue v='x'/><Wide value='Gr\xC3\xBC\xC3\x9F\x65 \xF0\x9F\x98\x80'/></R>");
    const std::u16string cleared = std::u16string(1, u'\0') + u"######" + u'\0';
    const std::pair<const char*, std::u16string> cases[] = {
        // capacity - 1 characters at most, then the terminator at capacity - 1
        {"Long", std::u16string(u"abcdefg") + u'\0'},
        // a shorter text and its terminator; what lies after it stays, but the last character
        {"Short", std::u16string(u"ab") + u'\0' + u"####" + u'\0'},
        {"Exact", std::u16string(u"abcdefg") + u'\0'},
        {"Empty", cleared},
        // a missing key or value copies the cleared buffer onto itself: the field ends up empty
        {"NoValue", cleared},
        {"Missing", cleared},
        {"name", cleared},
        // UTF-8 arrives as UTF-16; the emoji takes two units
        {"Wide", std::u16string(u"Grüße \xD83D") + u'\0'}};
    for (const auto& [key, expected] : cases) {
        std::u16string buffer(kCapacity, u'#');
        XmlReadString(doc.child("R"), key, buffer.data(), kCapacity);
        EXPECT_EQ(buffer, expected) << key;
    }
    std::u16string buffer(kCapacity, u'#');
    XmlReadString(pugi::xml_node(), "Short", buffer.data(), kCapacity);
    EXPECT_EQ(buffer, cleared);
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

const char* const kStereo[] = {"", "PARALLEL", "EYE_ROTATE", "AXIS_SHIFT", nullptr};
const char* const kPhase[] = {"HG", "MIE", nullptr};
const char* const kInnerEmpty[] = {"A", "", "B", nullptr};

TEST(EnumCodec, MatchesWordsIgnoringAsciiCaseAndLooksUpTheEmptyWord) {
    // clang-format off
    struct Case {
        const char* document;
        WordTable words;
        int32_t expected;
    } cases[] = {
        {"<R><Mode value='PARALLEL'/></R>", kStereo, 1}, {"<R><Mode value='eye_rotate'/></R>", kStereo, 2},
        {"<R><Mode value='mie'/></R>", kPhase, 1},
        // no match leaves the field alone
        {"<R><Mode value='SIDEWAYS'/></R>", kStereo, 9}, {"<R><Mode value='PARALLEL '/></R>", kStereo, 9},
        {"<R><Mode value='\xC3\xA9'/></R>", kStereo, 9},
        // a missing key, attribute or empty value looks up the empty word
        {"<R/>", kStereo, 0}, {"<R><Mode/></R>", kStereo, 0}, {"<R><Mode value=''/></R>", kStereo, 0},
        {"<R><mode value='PARALLEL'/></R>", kStereo, 0}, {"<R/>", kInnerEmpty, 1},
        // without an empty word a missing key keeps the field
        {"<R/>", kPhase, 9}, {"<R><Mode value=''/></R>", kPhase, 9}};
    // clang-format on
    for (const Case& c : cases) {
        pugi::xml_document doc;
        parse(doc, c.document);
        int32_t field = 9;
        XmlReadEnum(doc.child("R"), "Mode", &field, c.words);
        EXPECT_EQ(field, c.expected) << c.document;
    }
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
}

TEST(EnumCodec, WritesTheTableWordAndNothingOutsideTheTable) {
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("R");
    const std::pair<int32_t, const char*> cases[] = {
        {3, "AXIS_SHIFT"}, {0, ""}, {4, ""}, {-1, ""}, {1000, ""}};
    for (const auto& [index, word] : cases) {
        const std::string key = "K" + std::to_string(index + 1);
        XmlWriteEnum(root, key.c_str(), &index, kStereo);
        EXPECT_STREQ(root.child(key.c_str()).attribute("value").value(), word) << index;
    }
    const uint32_t unsignedIndex = 1;
    XmlWriteEnum(root, "U", &unsignedIndex, kPhase);
    EXPECT_STREQ(root.child("U").attribute("value").value(), "MIE");
}

TEST(ElementNames, SegmentAndChannelMatchInAnyAsciiCase) {
    pugi::xml_document doc;
    parse(doc, "<R><Other/><cHANNEL id='1'/><SEGMENT id='2'/></R>");
    EXPECT_STREQ(XmlChildNoCase(doc.child("R"), "Channel").attribute("id").value(), "1");
    EXPECT_STREQ(XmlChildNoCase(doc.child("R"), "Segment").attribute("id").value(), "2");
    EXPECT_FALSE(XmlChildNoCase(doc.child("R"), "Segments"));
    EXPECT_FALSE(XmlNameEqualsNoCase("Channel", "Channe"));
    EXPECT_FALSE(XmlNameEqualsNoCase("\xC3\xA9", "\xC3\x89")) << "only ASCII letters fold";
}

TEST(ReferenceCodec, WriteAsksTheNameEvenWithoutAParent) {
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
    XmlWriteTexMapRef(pugi::xml_node(), "Map", &none, &names);
    XmlWriteMaterialRef(pugi::xml_node(), "Material", &none, &names);
    XmlWriteTextureRef(pugi::xml_node(), "Texture", &none, &names);
    EXPECT_EQ(names.calls, (Calls{"TexMapName 5", "MaterialName 6", "TexMapName -1", "TextureName 5",
                                  "TexMapName -1", "MaterialName -1", "TextureName -1"}));
}

TEST(ReferenceCodec, ReadAlwaysOverwritesAndMissingBecomesMinusOne) {
    RecordingNames names;
    names.define(5, u"Wood");
    names.define(8, u"Glas\u00E4");
    pugi::xml_document doc;
    parse(doc, ("<R><Map name='Wood'/><Material name='Glas\xC3\xA4'/><Empty name=''/><Other value='Wood'/>"
                "<Texture value='Wood'/><Long value='" +
                std::string(70, 'x') + "'/></R>")
                   .c_str());
    const pugi::xml_node root = doc.child("R");
    using Read = void (*)(pugi::xml_node, const char*, int32_t*, ITaviNameInterface*);
    const std::pair<Read, const char*> reads[] = {
        {XmlReadTexMapRef, "Map"},   {XmlReadMaterialRef, "Material"}, {XmlReadTexMapRef, "Empty"},
        {XmlReadTexMapRef, "Other"}, {XmlReadMaterialRef, "Missing"},  {XmlReadTextureRef, "Texture"},
        {XmlReadTextureRef, "Long"}};
    std::vector<int32_t> ids;
    for (const auto& [read, key] : reads) {
        int32_t id = 0;
        read(root, key, &id, &names);
        ids.push_back(id);
    }
    // a map reference is in attribute name, not value; texture names are cut to 63 characters
    EXPECT_EQ(ids, (std::vector<int32_t>{5, 8, -1, -1, -1, 5, 100}));
    EXPECT_EQ(names.calls, (Calls{"TexMapId Wood", "MaterialId Glas\xC3\xA4", "TexMapId ", "TexMapId ",
                                  "MaterialId ", "TextureId Wood", "TextureId " + std::string(63, 'x')}));
    int32_t withoutNames = 4;
    XmlReadTexMapRef(root, "Map", &withoutNames, nullptr);
    EXPECT_EQ(withoutNames, -1);
}

} // namespace

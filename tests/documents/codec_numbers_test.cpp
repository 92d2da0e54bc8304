// Ints, floats and bools: the value-attribute kinds, whose missing keys keep the field.
#include "documents/xml_value_codec.h"
#include "tests/documents/document_test_support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

using documents_test::parse;
using documents_test::serialise;

namespace {

std::string floatText(float value) {
    char text[128];
    XmlFormatFloat(value, text);
    return text;
}

uint32_t bitsOf(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

// ---- Floats ------------------------------------------------------------------------------------

TEST(FloatCodec, FormatsWithNineSignificantDigits) {
    struct Case {
        float value;
        const char* text;
    } cases[] = {
        {0.1f, "0.100000001"},
        {1.0f, "1"},
        {-2.5f, "-2.5"},
        {1e10f, "1e+10"},
        {0.0f, "0"},
        {-0.0f, "-0"},
        {1.0f / 3.0f, "0.333333343"},
        {std::numeric_limits<float>::max(), "3.40282347e+38"},
        {1e-5f, "9.99999975e-06"},
        {123456789.0f, "123456792"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(floatText(c.value), c.text) << c.text;
}

TEST(FloatCodec, ParsesLikeWcstod) {
    const double inf = std::numeric_limits<double>::infinity();
    struct Case {
        const char* text;
        double value;
    } cases[] = {
        {"1.5", 1.5},
        {"  2.5xyz", 2.5}, // leading blanks, trailing text ignored
        {"\t\n-3e2", -300.0},
        {"+4", 4.0},
        {"abc", 0.0}, // no number at all
        {"", 0.0},
        {"   ", 0.0},
        {"-", 0.0},
        {"+-1", 0.0}, // one sign only
        {".5", 0.5},
        {"5.", 5.0},
        {"1e", 1.0}, // an exponent without digits is not part of the number
        {"1e+", 1.0},
        {"2E3", 2000.0},
        {"1,5", 1.0},    // the decimal point is '.', whatever the locale
        {"0x1p4", 16.0}, // hexadecimal floats
        {"0X1P-1", 0.5},
        {"0x.8", 0.5},
        {"0x1.8p1", 3.0},
        {"-0x10", -16.0},
        {"0x", 0.0}, // "0" followed by text
        {"0xg", 0.0},
        {"0x1p", 1.0},
        {"inf", inf},
        {"-Infinity", -inf},
        {"INFx", inf},
        {"1e400", inf}, // out of range: infinity or zero of the sign
        {"-1e400", -inf},
        {"0x1p99999", inf},
        {"0.000000000000000000000000000000001e-400", 0.0},
        {"1e-400", 0.0},
    };
    for (const Case& c : cases)
        EXPECT_EQ(XmlParseDouble(c.text), c.value) << '"' << c.text << '"';
    EXPECT_TRUE(std::isnan(XmlParseDouble("nan")));
    EXPECT_TRUE(std::isnan(XmlParseDouble("  NAN(123)")));
    EXPECT_EQ(XmlParseDouble(nullptr), 0.0);
    EXPECT_FALSE(std::signbit(XmlParseDouble("-x"))) << "no number must not read as -0";
    EXPECT_TRUE(std::signbit(XmlParseDouble("-0")));
}

TEST(FloatCodec, RoundTripRestoresEveryBit) {
    const float values[] = {0.1f,
                            -0.0f,
                            1.17549435e-38f, // smallest normal
                            1.4e-45f,        // smallest denormal
                            std::numeric_limits<float>::max(),
                            -123.456f,
                            6.02214076e23f,
                            std::numeric_limits<float>::infinity(),
                            -std::numeric_limits<float>::infinity()};
    for (float value : values) {
        pugi::xml_document doc;
        pugi::xml_node root = doc.append_child("Root");
        XmlWriteFloat(root, "Key", &value);
        float back = 42.0f;
        XmlReadFloat(root, "Key", &back);
        EXPECT_EQ(bitsOf(back), bitsOf(value)) << serialise(root);
    }
}

TEST(FloatCodec, NarrowsOutOfRangeToInfinityOrTheLargestFloat) {
    pugi::xml_document doc;
    parse(doc,
          "<R><Big value='1e39'/><Edge value='3.4028235e38'/><Tiny value='1e-50'/><Neg value='-1e300'/></R>");
    float big = 0, edge = 0, tiny = 1, negative = 0;
    XmlReadFloat(doc.child("R"), "Big", &big);
    XmlReadFloat(doc.child("R"), "Edge", &edge);
    XmlReadFloat(doc.child("R"), "Tiny", &tiny);
    XmlReadFloat(doc.child("R"), "Neg", &negative);
    EXPECT_EQ(big, std::numeric_limits<float>::infinity());
    EXPECT_EQ(edge, std::numeric_limits<float>::max());
    EXPECT_EQ(tiny, 0.0f);
    EXPECT_EQ(negative, -std::numeric_limits<float>::infinity());
}

TEST(FloatCodec, MissingKeepsEmptyReadsZeroAndNamesAreExact) {
    pugi::xml_document doc;
    parse(doc, "<R><Empty value=''/><NoValue other='3'/><Partial value='7.25 m'/><Key VALUE='9'/></R>");
    const pugi::xml_node root = doc.child("R");
    struct Case {
        const char* key;
        float expected;
    } cases[] = {
        {"Missing", 5.0f},  {"Empty", 0.0f}, {"NoValue", 5.0f},
        {"Partial", 7.25f}, {"key", 5.0f}, // element names compare exactly
        {"Key", 5.0f},                     // so do attribute names
    };
    for (const Case& c : cases) {
        float field = 5.0f;
        XmlReadFloat(root, c.key, &field);
        EXPECT_EQ(field, c.expected) << c.key;
    }
    float field = 5.0f;
    XmlReadFloat(pugi::xml_node(), "Empty", &field);
    EXPECT_EQ(field, 5.0f) << "a null parent reads as missing";
}

TEST(FloatCodec, FirstMatchWins) {
    pugi::xml_document doc;
    parse(doc, "<R><K value='1'/><K value='2'/></R>");
    float field = 0;
    XmlReadFloat(doc.child("R"), "K", &field);
    EXPECT_EQ(field, 1.0f);
}

// ---- Integers ----------------------------------------------------------------------------------

TEST(IntCodec, ReadsWithTheIntegerRule) {
    struct Case {
        const char* text;
        int32_t value;
    } cases[] = {
        {"42", 42},
        {"-7", -7},
        {"+8", 8},
        {"0x1F", 31},
        {"  12", 12},
        {"12abc", 12},
        {"abc", 0},
        {"", 0},
        {"3000000000", 2147483647},
        {"-3000000000", INT32_MIN},
        {"2147483647", 2147483647},
    };
    for (const Case& c : cases) {
        pugi::xml_document doc;
        pugi::xml_node key = doc.append_child("R").append_child("K");
        key.append_attribute("value").set_value(c.text);
        int32_t field = 99;
        XmlReadInt(doc.child("R"), "K", &field);
        EXPECT_EQ(field, c.value) << '"' << c.text << '"';
    }
}

TEST(IntCodec, MissingKeepsTheField) {
    pugi::xml_document doc;
    parse(doc, "<R><NoValue v='1'/></R>");
    int32_t i = 11;
    uint32_t u = 12;
    int16_t s = 13;
    XmlReadInt(doc.child("R"), "Missing", &i);
    XmlReadInt(doc.child("R"), "NoValue", &u);
    XmlReadInt(pugi::xml_node(), "NoValue", &s);
    EXPECT_EQ(i, 11);
    EXPECT_EQ(u, 12u);
    EXPECT_EQ(s, 13);
}

TEST(IntCodec, WritesDecimalAndRoundTrips) {
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("R");
    const int32_t negative = -2147483647 - 1;
    const uint32_t big = 4000000000u;
    const int16_t levels = -5;
    XmlWriteInt(root, "I", &negative);
    XmlWriteUInt(root, "U", &big);
    XmlWriteInt(root, "S", &levels);
    EXPECT_EQ(serialise(root), "<R><I value=\"-2147483648\"/><U value=\"4000000000\"/><S value=\"-5\"/></R>");
    int32_t i = 0;
    int16_t s = 0;
    XmlReadInt(root, "I", &i);
    XmlReadInt(root, "S", &s);
    EXPECT_EQ(i, negative);
    EXPECT_EQ(s, levels);
}

TEST(IntCodec, UnsignedAndShortFieldsTakeTheBitsOfTheClampedInt) {
    pugi::xml_document doc;
    parse(doc, "<R><Big value='4000000000'/><Minus value='-1'/><Wide value='70000'/></R>");
    uint32_t big = 0, minus = 0;
    int16_t wide = 0;
    XmlReadInt(doc.child("R"), "Big", &big);
    XmlReadInt(doc.child("R"), "Minus", &minus);
    XmlReadInt(doc.child("R"), "Wide", &wide);
    EXPECT_EQ(big, 2147483647u) << "the integer rule clamps to the i32 range";
    EXPECT_EQ(minus, 0xFFFFFFFFu);
    EXPECT_EQ(wide, 70000 - 65536) << "16-bit fields keep the low 16 bits";
}

// ---- Bools -------------------------------------------------------------------------------------

TEST(BoolCodec, ReadsTheFirstCharacterOnly) {
    struct Case {
        const char* text;
        uint8_t value;
    } cases[] = {
        {"true", 1},  {"True", 1}, {"T", 1}, {"yes", 1}, {"Y", 1},     {"1", 1},  {"10", 1},
        {"false", 0}, {"no", 0},   {"0", 0}, {"", 0},    {" true", 0}, {"on", 0}, {"2", 0},
    };
    for (const Case& c : cases) {
        pugi::xml_document doc;
        doc.append_child("R").append_child("K").append_attribute("value").set_value(c.text);
        uint8_t field = 7;
        XmlReadBool(doc.child("R"), "K", &field);
        EXPECT_EQ(field, c.value) << '"' << c.text << '"';
    }
}

TEST(BoolCodec, MissingKeepsAndWritesTrueOrFalse) {
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("R");
    const uint8_t on = 1, off = 0;
    XmlWriteBool(root, "On", &on);
    XmlWriteBool(root, "Off", &off);
    EXPECT_EQ(serialise(root), "<R><On value=\"true\"/><Off value=\"false\"/></R>");
    uint8_t a = 0, b = 1, kept = 1;
    XmlReadBool(root, "On", &a);
    XmlReadBool(root, "Off", &b);
    XmlReadBool(root, "Missing", &kept);
    EXPECT_EQ(a, 1);
    EXPECT_EQ(b, 0);
    EXPECT_EQ(kept, 1);
}

TEST(Writers, DoNothingWithoutAnElementToAppendTo) {
    pugi::xml_document doc;
    const float f = 1;
    const int32_t i = 1;
    const uint8_t b = 1;
    XmlWriteFloat(pugi::xml_node(), "F", &f);
    XmlWriteInt(doc, "I", &i); // the document itself is no element
    XmlWriteBool(doc, "B", &b);
    EXPECT_FALSE(doc.first_child());
}

} // namespace

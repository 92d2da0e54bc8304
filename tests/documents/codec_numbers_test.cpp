// Ints, floats and bools: the value-attribute kinds, whose missing keys keep the field.
#include "documents/xml_value_codec.h"
#include "tests/documents/document_test_support.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using documents_test::parse;
using documents_test::serialise;

namespace {

constexpr float kMax = std::numeric_limits<float>::max();
constexpr float kInf = std::numeric_limits<float>::infinity();

// One element per case, read into a field that starts at `start`.
template <class T> T readOne(const char* document, const char* key, T start) {
    pugi::xml_document doc;
    parse(doc, document);
    T field = start;
    if constexpr (std::is_same_v<T, float>)
        XmlReadFloat(doc.child("R"), key, &field);
    else if constexpr (std::is_same_v<T, uint8_t>)
        XmlReadBool(doc.child("R"), key, &field);
    else
        XmlReadInt(doc.child("R"), key, &field);
    return field;
}

std::string valueDoc(const char* text) {
    pugi::xml_document doc;
    doc.append_child("R").append_child("K").append_attribute("value").set_value(text);
    return serialise(doc);
}

TEST(FloatCodec, FormatsWithNineSignificantDigits) {
    // clang-format off
    const std::pair<float, const char*> cases[] = {
        {0.1f, "0.100000001"}, {1.0f, "1"}, {-2.5f, "-2.5"}, {1e10f, "1e+10"}, {0.0f, "0"}, {-0.0f, "-0"},
        {1.0f / 3, "0.333333343"}, {kMax, "3.40282347e+38"}, {1e-5f, "9.99999975e-06"},
        {123456789.0f, "123456792"}};
    // clang-format on
    for (const auto& [value, text] : cases) {
        char out[128];
        XmlFormatFloat(value, out);
        EXPECT_STREQ(out, text);
    }
}

TEST(FloatCodec, ParsesLikeWcstod) {
    const double inf = std::numeric_limits<double>::infinity();
    const std::pair<const char*, double> cases[] = {
        {"1.5", 1.5},    {"  2.5xyz", 2.5}, {"\t\n-3e2", -300}, {"+4", 4},           {"abc", 0},
        {"", 0},         {"-", 0},          {"+-1", 0},         {".5", 0.5},         {"5.", 5},
        {"1e", 1},       {"1e+", 1},        {"2E3", 2000},      {"1,5", 1},          {"0x1p4", 16},
        {"0X1P-1", 0.5}, {"0x.8", 0.5},     {"0x1.8p1", 3},     {"-0x10", -16},      {"0x", 0},
        {"0xg", 0},      {"0x1p", 1},       {"inf", inf},       {"-Infinity", -inf}, {"INFx", inf},
        {"1e400", inf},  {"-1e400", -inf},  {"0x1p99999", inf}, {"1e-400", 0},       {"1.e2", 100},
        {"00.500", 0.5}, {"5.5.5", 5.5},    {"0.1", 0.1},       {"-.25x", -0.25},    {"1.5E-1", 0.15}};
    for (const auto& [text, value] : cases)
        EXPECT_EQ(XmlParseDouble(text), value) << '"' << text << '"';
    EXPECT_TRUE(std::isnan(XmlParseDouble("  NAN(123)")));
    EXPECT_EQ(XmlParseDouble(nullptr), 0.0);
    EXPECT_FALSE(std::signbit(XmlParseDouble("-x"))) << "no number must not read as -0";
    EXPECT_TRUE(std::signbit(XmlParseDouble("-0")));
}

// Every text the writers put out, and decimals of any length and place of the point, read to the
// very double that the full conversion gives, short texts and long ones alike.
TEST(FloatCodec, DecimalsReadToTheNearestDouble) {
    std::mt19937_64 random(20261124);
    std::vector<std::string> texts;
    for (int i = 0; i < 20000; ++i) {
        const uint32_t bits = static_cast<uint32_t>(random());
        float value;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value)) continue;
        char text[128];
        XmlFormatFloat(value, text);
        texts.push_back(text);
    }
    for (int i = 0; i < 20000; ++i) {
        std::string digits;
        const size_t length = 1 + random() % 26;
        for (size_t k = 0; k < length; ++k)
            digits += char('0' + random() % 10);
        const size_t point = random() % (length + 2); // past the end: no point at all
        if (point <= length) digits.insert(point, ".");
        texts.push_back(digits);
        texts.push_back("-" + digits);
    }
    texts.insert(texts.end(), {"9007199254740992", "9007199254740993", "0.9007199254740993",
                               "1.0000000000000000000001", "0.0000000000000000000001", "123.e", "7."});
    for (const std::string& text : texts) {
        const bool negative = text[0] == '-';
        const char* begin = text.c_str() + negative;
        double expected = 0.0;
        const auto result = std::from_chars(begin, text.c_str() + text.size(), expected);
        ASSERT_EQ(result.ec, std::errc()) << text;
        if (negative) expected = -expected;
        const double read = XmlParseDouble(text.c_str());
        EXPECT_EQ(std::memcmp(&read, &expected, sizeof read), 0) << '"' << text << '"';
    }
}

TEST(FloatCodec, RoundTripRestoresEveryBit) {
    for (float value :
         {0.1f, -0.0f, 1.17549435e-38f, 1.4e-45f, kMax, -123.456f, 6.02214076e23f, kInf, -kInf}) {
        pugi::xml_document doc;
        pugi::xml_node root = doc.append_child("R");
        XmlWriteFloat(root, "Key", &value);
        float back = 42.0f;
        XmlReadFloat(root, "Key", &back);
        EXPECT_EQ(std::memcmp(&back, &value, sizeof value), 0) << serialise(root);
    }
}

TEST(FloatCodec, ReadCases) {
    const char* document =
        "<R><Big value='1e39'/><Edge value='3.4028235e38'/><Tiny value='1e-50'/>"
        "<Neg value='-1e300'/><Empty value=''/><NoValue other='3'/><Partial value='7.25 m'/>"
        "<Key VALUE='9'/><Twice value='1'/><Twice value='2'/></R>";
    const std::pair<const char*, float> cases[] = {
        {"Big", kInf},  {"Edge", kMax}, {"Tiny", 0},    {"Neg", -kInf}, // narrowing to f32
        {"Missing", 5}, {"Empty", 0},   {"NoValue", 5}, {"Partial", 7.25f},
        {"key", 5},     {"Key", 5}, // element and attribute names compare exactly
        {"Twice", 1},               // the first match wins
    };
    for (const auto& [key, expected] : cases)
        EXPECT_EQ(readOne<float>(document, key, 5.0f), expected) << key;
    float field = 5.0f;
    XmlReadFloat(pugi::xml_node(), "Empty", &field);
    EXPECT_EQ(field, 5.0f) << "a null parent reads as missing";
}

TEST(IntCodec, ReadsWithTheIntegerRuleAndKeepsWhenMissing) {
    // clang-format off
    const std::pair<const char*, int32_t> cases[] = {
        {"42", 42}, {"-7", -7}, {"+8", 8}, {"0x1F", 31}, {"  12", 12}, {"12abc", 12}, {"abc", 0}, {"", 0},
        {"3000000000", INT32_MAX}, {"-3000000000", INT32_MIN}};
    // clang-format on
    for (const auto& [text, value] : cases)
        EXPECT_EQ(readOne<int32_t>(valueDoc(text).c_str(), "K", 99), value) << '"' << text << '"';
    const char* document =
        "<R><NoValue v='1'/><Big value='4000000000'/><Minus value='-1'/><Wide value='70000'/></R>";
    EXPECT_EQ(readOne<int32_t>(document, "Missing", 11), 11);
    EXPECT_EQ(readOne<uint32_t>(document, "NoValue", 12), 12u);
    EXPECT_EQ(readOne<int16_t>(document, "NoValue", 13), 13);
    EXPECT_EQ(readOne<uint32_t>(document, "Big", 0), 2147483647u)
        << "the integer rule clamps to the i32 range";
    EXPECT_EQ(readOne<uint32_t>(document, "Minus", 0), 0xFFFFFFFFu);
    EXPECT_EQ(readOne<int16_t>(document, "Wide", 0), 70000 - 65536) << "16-bit fields keep the low 16 bits";
}

TEST(IntCodec, WritesDecimalAndRoundTrips) {
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("R");
    const int32_t negative = INT32_MIN;
    const uint32_t big = 4000000000u;
    const int16_t levels = -5;
    XmlWriteInt(root, "I", &negative);
    XmlWriteUInt(root, "U", &big);
    XmlWriteInt(root, "S", &levels);
    EXPECT_EQ(serialise(root), "<R><I value=\"-2147483648\"/><U value=\"4000000000\"/><S value=\"-5\"/></R>");
    EXPECT_EQ(readOne<int32_t>(serialise(doc).c_str(), "I", 0), negative);
    EXPECT_EQ(readOne<int16_t>(serialise(doc).c_str(), "S", 0), levels);
}

TEST(BoolCodec, ReadsTheFirstCharacterOnly) {
    const std::pair<const char*, uint8_t> cases[] = {
        {"true", 1},  {"True", 1}, {"T", 1}, {"yes", 1}, {"Y", 1},     {"1", 1},  {"10", 1},
        {"false", 0}, {"no", 0},   {"0", 0}, {"", 0},    {" true", 0}, {"on", 0}, {"2", 0}};
    for (const auto& [text, value] : cases)
        EXPECT_EQ(readOne<uint8_t>(valueDoc(text).c_str(), "K", 7), value) << '"' << text << '"';
    EXPECT_EQ(readOne<uint8_t>("<R/>", "K", 1), 1) << "missing keeps";
    EXPECT_EQ(readOne<uint8_t>("<R><K/></R>", "K", 1), 1) << "a missing attribute keeps";
}

TEST(BoolCodec, WritesTrueOrFalseAndWritersNeedAnElement) {
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("R");
    const uint8_t on = 1, off = 0;
    XmlWriteBool(root, "On", &on);
    XmlWriteBool(root, "Off", &off);
    EXPECT_EQ(serialise(root), "<R><On value=\"true\"/><Off value=\"false\"/></R>");
    EXPECT_EQ(readOne<uint8_t>(serialise(doc).c_str(), "On", 0), 1);
    EXPECT_EQ(readOne<uint8_t>(serialise(doc).c_str(), "Off", 1), 0);
    pugi::xml_document empty;
    const float f = 1;
    const int32_t i = 1;
    XmlWriteFloat(pugi::xml_node(), "F", &f);
    XmlWriteInt(empty, "I", &i); // the document itself is no element
    XmlWriteBool(empty, "B", &on);
    EXPECT_FALSE(empty.first_child());
}

} // namespace

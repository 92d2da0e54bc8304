#include "common/unicode.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string hexBytes(const std::string &text) {
    std::string out;
    static const char digits[] = "0123456789ABCDEF";
    for (unsigned char c : text) {
        if (!out.empty()) out += ' ';
        out += digits[c >> 4];
        out += digits[c & 15];
    }
    return out;
}

std::string hexUnits(const std::u16string &text) {
    std::string out;
    static const char digits[] = "0123456789ABCDEF";
    for (char16_t u : text) {
        if (!out.empty()) out += ' ';
        for (int shift = 12; shift >= 0; shift -= 4)
            out += digits[(u >> shift) & 15];
    }
    return out;
}

TEST(Utf8ToUtf16, DecodesWellFormedText) {
    struct Case {
        std::string utf8;
        std::u16string utf16;
    };
    const Case cases[] = {
        {"", u""},
        {"abc", u"abc"},
        {std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
        {"\x7F", u"\u007F"},
        {"\xC2\x80", u"\u0080"},
        {"\xC3\xA9", u"\u00E9"},
        {"\xDF\xBF", u"\u07FF"},
        {"\xE0\xA0\x80", u"\u0800"},
        {"\xE6\x9C\xA8\xE6\x9D\x90", u"\u6728\u6750"},
        {"\xED\x9F\xBF", u"\uD7FF"},
        {"\xEE\x80\x80", u"\uE000"},
        {"\xEF\xBF\xBF", u"\uFFFF"},
        {"\xF0\x90\x80\x80", u"\U00010000"},
        {"\xF0\x9F\x98\x80", u"\U0001F600"},
        {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        {"C\xC3\xA9"
         "dre \xF0\x9F\x98\x80!",
         u"C\u00E9dre \U0001F600!"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(hexBytes(c.utf8));
        EXPECT_EQ(hexUnits(utf8ToUtf16(c.utf8)), hexUnits(c.utf16));
    }
}

// Each malformed sequence, that is a lead byte with the continuation bytes behind it up to the
// count that the lead announces, becomes one U+FFFD; a byte that cannot start a sequence becomes
// one U+FFFD of its own. What follows is decoded normally.
TEST(Utf8ToUtf16, ReplacesMalformedSequences) {
    struct Case {
        const char *what;
        std::string utf8;
        std::u16string utf16;
    };
    const Case cases[] = {
        {"lone continuation", "\x80", u"\uFFFD"},
        {"continuations",
         "a\x80\xBF"
         "b",
         u"a\uFFFD\uFFFDb"},
        {"overlong 2-byte C0", "\xC0\x80", u"\uFFFD\uFFFD"},
        {"overlong 2-byte C1", "\xC1\xBF", u"\uFFFD\uFFFD"},
        {"overlong 3-byte NUL",
         "\xE0\x80\x80"
         "a",
         u"\uFFFDa"},
        {"overlong 3-byte U+07FF", "\xE0\x9F\xBF", u"\uFFFD"},
        {"overlong 4-byte NUL", "\xF0\x80\x80\x80", u"\uFFFD"},
        {"overlong 4-byte U+FFFF", "\xF0\x8F\xBF\xBF", u"\uFFFD"},
        {"high surrogate", "\xED\xA0\x80", u"\uFFFD"},
        {"low surrogate", "\xED\xBF\xBF", u"\uFFFD"},
        {"encoded pair", "\xED\xA0\xBD\xED\xB8\x80", u"\uFFFD\uFFFD"},
        {"above U+10FFFF", "\xF4\x90\x80\x80", u"\uFFFD"},
        {"lead F5", "\xF5\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"lead F8",
         "\xF8"
         "a",
         u"\uFFFDa"},
        {"lead FF", "\xFF", u"\uFFFD"},
        {"2-byte cut at end", "a\xC3", u"a\uFFFD"},
        {"3-byte cut at end after 1", "a\xE6", u"a\uFFFD"},
        {"3-byte cut at end after 2", "a\xE6\x9C", u"a\uFFFD"},
        {"4-byte cut at end after 3", "a\xF0\x9F\x98", u"a\uFFFD"},
        {"3-byte cut by ASCII",
         "\xE6\x9C"
         "A",
         u"\uFFFDA"},
        {"4-byte cut by ASCII",
         "\xF0\x9F"
         "AB",
         u"\uFFFDAB"},
        {"cut by a new lead", "\xC3\xC3\xA9", u"\uFFFD\u00E9"},
        {"4-byte cut by a 4-byte", "\xF0\x9F\x98\xF0\x9F\x98\x80", u"\uFFFD\U0001F600"},
        {"cut by NUL", std::string("\xE6\0x", 3), std::u16string(u"\uFFFD\0x", 3)},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.what) + ": " + hexBytes(c.utf8));
        EXPECT_EQ(hexUnits(utf8ToUtf16(c.utf8)), hexUnits(c.utf16));
    }
}

TEST(Utf16ToUtf8, EncodesAndReplacesLoneSurrogates) {
    struct Case {
        const char *what;
        std::u16string utf16;
        std::string utf8;
    };
    const Case cases[] = {
        {"empty", u"", ""},
        {"ASCII", u"abc", "abc"},
        {"NUL inside", std::u16string(u"a\0b", 3), std::string("a\0b", 3)},
        {"U+007F", u"\u007F", "\x7F"},
        {"U+0080", u"\u0080", "\xC2\x80"},
        {"U+07FF", u"\u07FF", "\xDF\xBF"},
        {"U+0800", u"\u0800", "\xE0\xA0\x80"},
        {"CJK", u"\u6728\u6750", "\xE6\x9C\xA8\xE6\x9D\x90"},
        {"U+FFFF", u"\uFFFF", "\xEF\xBF\xBF"},
        {"U+10000", u"\U00010000", "\xF0\x90\x80\x80"},
        {"pair", u"\U0001F600", "\xF0\x9F\x98\x80"},
        {"U+10FFFF", u"\U0010FFFF", "\xF4\x8F\xBF\xBF"},
        {"high at end", std::u16string{u'a', 0xD800}, "a\xEF\xBF\xBD"},
        {"lone low", std::u16string{0xDC00, u'a'},
         "\xEF\xBF\xBD"
         "a"},
        {"high then ASCII", std::u16string{0xD83D, u'a'},
         "\xEF\xBF\xBD"
         "a"},
        {"reversed pair", std::u16string{0xDE00, 0xD83D}, "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"high, then pair", std::u16string{0xD800, 0xD83D, 0xDE00}, "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
        {"two highs", std::u16string{0xDBFF, 0xDBFF}, "\xEF\xBF\xBD\xEF\xBF\xBD"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.what) + ": " + hexUnits(c.utf16));
        EXPECT_EQ(hexBytes(utf16ToUtf8(c.utf16)), hexBytes(c.utf8));
    }
}

TEST(Utf16ToUtf8, PointerFormStopsAtTerminator) {
    const char16_t text[] = u"\u00E9t\u00E9\0hidden";
    EXPECT_EQ(utf16ToUtf8(text), "\xC3\xA9t\xC3\xA9");
    EXPECT_EQ(utf16ToUtf8(u""), "");
    EXPECT_EQ(utf16ToUtf8(u"\U0001F600"), "\xF0\x9F\x98\x80");
}

// Every scalar value survives UTF-16 -> UTF-8 -> UTF-16 and takes the number of bytes its range
// calls for.
TEST(Unicode, EveryScalarValueRoundTrips) {
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF) continue;
        std::u16string wide;
        if (c < 0x10000) {
            wide += static_cast<char16_t>(c);
        } else {
            wide += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            wide += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
        std::string narrow = utf16ToUtf8(wide);
        size_t expectedBytes = c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
        ASSERT_EQ(narrow.size(), expectedBytes) << "U+" << std::hex << static_cast<uint32_t>(c);
        ASSERT_EQ(utf8ToUtf16(narrow), wide) << "U+" << std::hex << static_cast<uint32_t>(c);
    }
}

TEST(WideLength, CountsCodeUnitsUpToTerminator) {
    struct Case {
        const char16_t *text;
        size_t length;
    };
    const Case cases[] = {
        {u"", 0}, {u"a", 1}, {u"abc", 3}, {u"a\0bc", 1}, {u"\U0001F600", 2}, {u"\u6728\u6750x", 3},
    };
    for (const Case &c : cases)
        EXPECT_EQ(wideLength(c.text), c.length) << utf16ToUtf8(c.text);
}

} // namespace

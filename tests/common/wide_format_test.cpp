#include "common/unicode.h"
#include "common/wide_format.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace {

struct Case {
    const char16_t *format;
    std::vector<FormatArg> args;
    std::u16string expected;
};

void runCases(const std::vector<Case> &cases) {
    for (const Case &c : cases) {
        std::u16string got = formatWideArgs(c.format, c.args.data(), c.args.size());
        EXPECT_EQ(got, c.expected) << "format \"" << utf16ToUtf8(c.format) << "\" gave \"" << utf16ToUtf8(got)
                                   << "\", expected \"" << utf16ToUtf8(c.expected) << "\"";
    }
}

TEST(FormatWide, PercentSignsAndLiteralText) {
    runCases({
        {u"", {}, u""},
        {u"plain text", {}, u"plain text"},
        {u"\u6728\U0001F600", {}, u"\u6728\U0001F600"},
        {u"%%", {}, u"%"},
        {u"100%%", {}, u"100%"},
        {u"%%%%", {}, u"%%"},
        {u"%%s", {u"unused"}, u"%s"},
        {u"%%%s", {u"x"}, u"%x"},
        // A lone '%' at the end, with or without the start of a conversion, stays as written.
        {u"abc%", {}, u"abc%"},
        {u"%", {}, u"%"},
        {u"abc%-5", {}, u"abc%-5"},
        {u"abc%l", {u"x"}, u"abc%l"},
        // Unknown conversions are printed as they stand and take no argument.
        {u"%y", {}, u"%y"},
        {u"[%5y]", {}, u"[%5y]"},
        {u"%n%i", {7}, u"%n7"},
    });
}

TEST(FormatWide, Text) {
    const char16_t *null = nullptr;
    std::u16string owned = u"owned";
    runCases({
        {u"%s", {u"wide"}, u"wide"},
        {u"%S", {u"wide"}, u"wide"},
        {u"%ls", {u"wide"}, u"wide"},
        {u"%hs", {u"wide"}, u"wide"},
        {u"%s", {owned}, u"owned"},
        {u"%s and %ls", {u"one", u"two"}, u"one and two"},
        {u"%s", {u"\u6728\U0001F600"}, u"\u6728\U0001F600"},
        {u"%s", {null}, u"(null)"},
        {u"[%5s]", {u"ab"}, u"[   ab]"},
        {u"[%-5s]", {u"ab"}, u"[ab   ]"},
        {u"[%1s]", {u"abc"}, u"[abc]"},
        {u"[%4s]", {u"\u6728\u6750"}, u"[  \u6728\u6750]"},
        {u"[%.2s]", {u"abcdef"}, u"[ab]"},
        {u"[%.0s]", {u"abcdef"}, u"[]"},
        {u"[%.s]", {u"abcdef"}, u"[]"},
        {u"[%.10s]", {u"abc"}, u"[abc]"},
        {u"[%5.2s]", {u"abcdef"}, u"[   ab]"},
        {u"[%-5.2s]", {u"abcdef"}, u"[ab   ]"},
        {u"[%*s]", {4, u"ab"}, u"[  ab]"},
        {u"[%*s]", {-4, u"ab"}, u"[ab  ]"},
        {u"[%-*s]", {-4, u"ab"}, u"[ab  ]"},
        {u"[%.*s]", {3, u"abcdef"}, u"[abc]"},
        {u"[%.*s]", {-1, u"abcdef"}, u"[abcdef]"},
        {u"[%*.*s]", {5, 2, u"abcdef"}, u"[   ab]"},
    });
}

TEST(FormatWide, Characters) {
    runCases({
        {u"%c", {u'A'}, u"A"},
        {u"%c", {65}, u"A"},
        {u"%C", {u'\u6728'}, u"\u6728"},
        {u"%lc", {u'z'}, u"z"},
        {u"[%3c]", {u'A'}, u"[  A]"},
        {u"[%-3c]", {u'A'}, u"[A  ]"},
        {u"[%.0c]", {u'A'}, u"[A]"},
        {u"%c%c%c", {u'a', u'b', u'c'}, u"abc"},
    });
}

TEST(FormatWide, Integers) {
    runCases({
        {u"%i", {42}, u"42"},
        {u"%d", {-7}, u"-7"},
        {u"%i", {0}, u"0"},
        {u"%u", {3000000000u}, u"3000000000"},
        {u"%x", {255}, u"ff"},
        {u"%X", {255}, u"FF"},
        {u"%#x", {255}, u"0xff"},
        {u"%o", {8}, u"10"},
        {u"%02i", {5}, u"05"},
        {u"%02i", {123}, u"123"},
        {u"%02i:%02i:%02i", {1, 2, 3}, u"01:02:03"},
        {u"[%5i]", {42}, u"[   42]"},
        {u"[%-5i]", {42}, u"[42   ]"},
        {u"[%05i]", {-42}, u"[-0042]"},
        {u"%+i", {5}, u"+5"},
        {u"% i", {5}, u" 5"},
        {u"%.3i", {5}, u"005"},
        {u"[%*i]", {4, 7}, u"[   7]"},
        {u"[%*i]", {-4, 7}, u"[7   ]"},
        {u"%li %lli %I64d %I32d %zu %hd", {1, 2, 3, 4, 5, 6}, u"1 2 3 4 5 6"},
        {u"%lli", {std::numeric_limits<int64_t>::min()}, u"-9223372036854775808"},
        {u"%llu", {std::numeric_limits<uint64_t>::max()}, u"18446744073709551615"},
        {u"%i", {true}, u"1"},
        // Unsigned conversions see the argument at the width it was passed with, as a C call
        // would: 32 bits for int and smaller types, 64 for 64-bit types.
        {u"%u", {-1}, u"4294967295"},
        {u"%x", {int32_t(-1)}, u"ffffffff"},
        {u"%08X", {int32_t(0x80000001)}, u"80000001"},
        {u"%x", {int8_t(-1)}, u"ffffffff"},
        {u"%x", {int64_t(-1)}, u"ffffffffffffffff"},
        {u"%llu", {int64_t(-1)}, u"18446744073709551615"},
        // A real passed to an integer conversion is truncated toward zero.
        {u"%i", {3.9}, u"3"},
        {u"%i", {-3.9}, u"-3"},
        // Out of range it saturates rather than invoking an undefined conversion.
        {u"%i", {1e300}, u"9223372036854775807"},
        {u"%i", {-1e300}, u"-9223372036854775808"},
        {u"%i", {std::numeric_limits<double>::quiet_NaN()}, u"0"},
    });
}

TEST(FormatWide, Reals) {
    runCases({
        {u"%.1f", {3.14159}, u"3.1"},
        {u"%.1f%%", {99.96}, u"100.0%"},
        {u"%f", {0.5}, u"0.500000"},
        {u"%f", {3}, u"3.000000"},
        {u"[%8.3f]", {3.14159}, u"[   3.142]"},
        {u"[%-8.2f]", {2.5}, u"[2.50    ]"},
        {u"%e", {12345.0}, u"1.234500e+04"},
        {u"%g", {1e20}, u"1e+20"},
        {u"%G", {1e-20}, u"1E-20"},
        {u"%.*g", {9, static_cast<double>(0.1f)}, u"0.100000001"},
        {u"%.*g", {9, 1.5}, u"1.5"},
        {u"%+.2f", {1.0}, u"+1.00"},
        {u"%lf", {0.25}, u"0.250000"},
    });
}

// A format with more conversions than arguments (a message used as a format) prints the missing
// ones as empty fields; an argument of the wrong kind prints the same way.
TEST(FormatWide, MissingAndMismatchedArgumentsPrintEmpty) {
    runCases({
        {u"%s", {}, u""},
        {u"%i", {}, u""},
        {u"%f", {}, u""},
        {u"%c", {}, u""},
        {u"%x", {}, u""},
        {u"a%ib%sc%.1fd", {}, u"abcd"},
        {u"%i and %i", {1}, u"1 and "},
        {u"[%3s]", {}, u"[   ]"},
        {u"[%3i]", {}, u"[   ]"},
        {u"[%*i]", {}, u"[]"},
        {u"%s", {5}, u""},
        {u"%i", {u"text"}, u""},
        {u"%.1f", {u"text"}, u""},
        {u"%c", {u"text"}, u""},
        {u"%i %s", {u"text", u"after"}, u" after"},
    });
}

// Fields wider than any fixed scratch buffer are printed in full.
TEST(FormatWide, WideFieldsAreNotCut) {
    EXPECT_EQ(formatWide(u"%600i", 1), std::u16string(599, u' ') + u"1");
    EXPECT_EQ(formatWide(u"%-600i|", 1), u"1" + std::u16string(599, u' ') + u"|");
    EXPECT_EQ(formatWide(u"%.600f", 1.0), u"1." + std::u16string(600, u'0'));
    EXPECT_EQ(formatWide(u"%*s", 700, u"x"), std::u16string(699, u' ') + u"x");
    EXPECT_EQ(formatWide(u"%f", 1e300).size(), 308u);
}

// A width or precision taken from an argument is bounded, so that a wild value can neither
// overflow on negation nor ask for gigabytes.
TEST(FormatWide, StarArgumentsAreBounded) {
    const int64_t wild[] = {std::numeric_limits<int32_t>::min(), std::numeric_limits<int64_t>::min(),
                            std::numeric_limits<int64_t>::max(), int64_t(1) << 40};
    for (int64_t value : wild) {
        SCOPED_TRACE(value);
        std::u16string text = formatWide(u"%*s", value, u"x");
        EXPECT_GE(text.size(), 1u);
        EXPECT_LE(text.size(), 1000000u);
        std::u16string number = formatWide(u"%*i", value, 1);
        EXPECT_GE(number.size(), 1u);
        EXPECT_LE(number.size(), 1000000u);
        EXPECT_LE(formatWide(u"%.*s", value, u"abc").size(), 3u);
    }
    // A negative width left-justifies, however large.
    std::u16string left = formatWide(u"%*s|", std::numeric_limits<int32_t>::min(), u"x");
    EXPECT_EQ(left.front(), u'x');
    EXPECT_EQ(left.back(), u'|');
}

TEST(FormatWide, VariadicFrontEnd) {
    std::u16string path = u"d:/scenes/room.tavi";
    EXPECT_EQ(formatWide(u"no arguments %%"), u"no arguments %");
    EXPECT_EQ(formatWide(u"%ls.dll", u"Tracer"), u"Tracer.dll");
    EXPECT_EQ(formatWide(u"%s", path), path);
    EXPECT_EQ(formatWide(u"%.1f%% done [%i passes, %i:%02i:%02i elapsed]: %s", 45.67f, 12, 1, 2, 3, path),
              u"45.7% done [12 passes, 1:02:03 elapsed]: d:/scenes/room.tavi");
    EXPECT_EQ(formatWide(u"%ls%i", u"id", 32), u"id32");
}

// copyBounded at lengths around the capacity: what fits is copied, the terminator is always
// written inside the capacity, nothing past it is touched, and only an uncut copy reports true.
TEST(CopyBounded, LengthsAroundCapacity) {
    struct BoundCase {
        size_t capacity;
        const char16_t *text;
        const char16_t *stored;
        bool complete;
    };
    const BoundCase cases[] = {
        {4, u"", u"", true},
        {4, u"ab", u"ab", true},
        {4, u"abc", u"abc", true},    // capacity - 1: fits with its terminator
        {4, u"abcd", u"abc", false},  // capacity: the terminator takes the last place
        {4, u"abcde", u"abc", false}, // capacity + 1
        {1, u"", u"", true},
        {1, u"a", u"", false},
        {2, u"a", u"a", true},
        {2, u"ab", u"a", false},
        {3, u"\u6728\u6750", u"\u6728\u6750", true},
    };
    constexpr char16_t kGuard = 0xA5A5;
    for (const BoundCase &c : cases) {
        SCOPED_TRACE("capacity " + std::to_string(c.capacity) + ", \"" + utf16ToUtf8(c.text) + "\"");
        std::u16string buffer(c.capacity + 4, kGuard);
        EXPECT_EQ(copyBounded(buffer.data(), c.capacity, c.text), c.complete);
        EXPECT_EQ(std::u16string(buffer.data()).substr(0, c.capacity), c.stored);
        EXPECT_EQ(buffer[wideLength(c.stored)], u'\0');
        for (size_t i = c.capacity; i < buffer.size(); ++i)
            EXPECT_EQ(buffer[i], kGuard) << "index " << i;
    }
}

TEST(CopyBounded, ZeroCapacityWritesNothing) {
    char16_t guard = 0xA5A5;
    EXPECT_FALSE(copyBounded(&guard, 0, u"abc"));
    EXPECT_FALSE(copyBounded(&guard, 0, u""));
    EXPECT_EQ(guard, 0xA5A5);
}

} // namespace

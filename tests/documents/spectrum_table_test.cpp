// The spectrum table file: records of wavelength, x, y and z in a number format of its own, into a
// table of 511 entries that any failure leaves zeroed.
#include "documents/spectrum_table.h"

#include "memory/pool_internals.h"
#include "tests/documents/settings_test_support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <memory>
#include <string>

using namespace settings_test;

namespace {

// ---- The number format -------------------------------------------------------------------------

TEST(ParseFastFloat, Numbers) {
    struct Case {
        const char* text;
        float expected;
        size_t consumed;
        float tolerance = 0; // the digits are summed in f32, close to but not always the nearest
    };
    const Case cases[] = {
        {"0", 0.0f, 1},
        {"42", 42.0f, 2},
        {"  \t\r\n42", 42.0f, 7},
        {"+7", 7.0f, 2},
        {"-2.5", -2.5f, 4},
        {".5", 0.5f, 2},
        {"5.", 5.0f, 2},
        {"380.25,", 380.25f, 6},
        {"1e-3", 1.0f / 1000.0f, 4},
        {"1E+3", 1000.0f, 4},
        {"-2e+2", -200.0f, 5},
        {"3.25e+2", 325.0f, 7},
        {"5e-0", 5.0f, 4},
        {"1e+9", 1e9f, 4},
        {"7x", 7.0f, 1},
        {"0.123456789", 0.123456789f, 11, 1e-6f},
        {"123456789012", 123456789012.0f, 12, 123456789012.0f * 1e-6f},
        // Huge exponents saturate without hanging.
        {"1e+40", INFINITY, 5},
        {"-1e+40", -INFINITY, 6},
        {"1e-50", 0.0f, 5},
        {"1e+99999999999999999999", INFINITY, 23},
        {"1e-99999999999999999999", 0.0f, 23},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        const char* cursor = c.text;
        float value = -123.0f;
        ASSERT_TRUE(ParseFastFloat(&cursor, &value));
        if (c.tolerance == 0) {
            EXPECT_EQ(value, c.expected);
        } else {
            EXPECT_NEAR(value, c.expected, c.tolerance);
        }
        EXPECT_EQ(static_cast<size_t>(cursor - c.text), c.consumed);
    }
}

TEST(ParseFastFloat, Rejects) {
    // An exponent must carry its sign and a digit, and a number needs at least one digit.
    for (const char* text :
         {"1e3", "1E3", "2.5e", "1e+", "1e-x", "", "   ", "-", "+", ".", "abc", "-.e+1", ",1"}) {
        SCOPED_TRACE(text);
        const char* cursor = text;
        float value = 0;
        EXPECT_FALSE(ParseFastFloat(&cursor, &value));
    }
}

// ---- The table file ----------------------------------------------------------------------------

class SpectrumTable : public ::testing::Test {
  protected:
    TempFolder folder;
    std::unique_ptr<float[][4]> storage{new float[kSpectrumEntries][4]};
    float (&entries)[kSpectrumEntries][4] = *reinterpret_cast<float (*)[kSpectrumEntries][4]>(storage.get());

    bool readPath(const char16_t* path) {
        std::fill(&entries[0][0], &entries[0][0] + kSpectrumEntries * 4, -7.0f);
        return ReadSpectrumTable(entries, path);
    }
    bool read(const std::string& text) { return readPath(folder.write("table.csv", text).c_str()); }
    // The first entry from `from` on that is not zero, or kSpectrumEntries.
    size_t firstNonZero(size_t from = 0) const {
        for (size_t i = from; i < kSpectrumEntries; ++i) {
            if (entries[i][0] != 0 || entries[i][1] != 0 || entries[i][2] != 0 || entries[i][3] != 0)
                return i;
        }
        return kSpectrumEntries;
    }
};

TEST_F(SpectrumTable, EntriesHoldXyzThenTheWavelengthAndTheRestIsZeroed) {
    ASSERT_TRUE(read("380,0.0014,0.0000390,0.0065\n385, 0.0022 , 1e-3,2.5E+1\n"));
    const float expected[2][4] = {{0.0014f, 0.000039f, 0.0065f, 380.0f},
                                  {0.0022f, 1.0f / 1000.0f, 25.0f, 385.0f}};
    for (int i = 0; i < 2; ++i) {
        for (int j = 0; j < 4; ++j)
            EXPECT_NEAR(entries[i][j], expected[i][j], 1e-6f) << i << " " << j;
    }
    EXPECT_EQ(entries[1][1], 1.0f / 1000.0f) << "a signed exponent parses";
    EXPECT_EQ(firstNonZero(2), kSpectrumEntries);
}

TEST_F(SpectrumTable, SixHundredLinesKeepTheFirst511) {
    std::string text;
    for (int line = 0; line < 600; ++line) {
        text += std::to_string(300 + line) + "," + std::to_string(line) + ".5," + std::to_string(line) +
                ".25,-" + std::to_string(line) + "\r\n";
    }
    ASSERT_TRUE(read(text));
    for (size_t i = 0; i < kSpectrumEntries; ++i) {
        const float line = static_cast<float>(i);
        ASSERT_EQ(entries[i][0], line + 0.5f) << i;
        ASSERT_EQ(entries[i][1], line + 0.25f) << i;
        ASSERT_EQ(entries[i][2], -line) << i;
        ASSERT_EQ(entries[i][3], 300.0f + line) << i;
    }
}

TEST_F(SpectrumTable, RecordsNeedNotFollowLines) {
    ASSERT_TRUE(read("  1,2,3,4 5,6,7,8\t9\n,\n10\r\n,11,\n12\n\n"));
    const float expected[3][4] = {{2, 3, 4, 1}, {6, 7, 8, 5}, {10, 11, 12, 9}};
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 4; ++j)
            EXPECT_EQ(entries[i][j], expected[i][j]) << i << " " << j;
    }
}

// Whatever fails, the table is zeroed and the pool's buffer given back.
TEST_F(SpectrumTable, FailuresZeroTheWholeTable) {
    const uint64_t before = poolLiveBlocks(poolInstance());
    const char* const cases[] = {
        "",                           // empty file
        "380,1e3,0,0\n",              // exponent without its sign
        "380,0.1,0.2\n",              // three numbers
        "380,0.1,0.2,0.3,\n",         // a fourth comma
        "380;0.1;0.2;0.3\n",          // another separator
        "380,0.1,0.2,0.3\nend\n",     // trailing text
        "380,0.1,,0.3\n",             // an empty number
        "380,0.1,0.2,0.3x\n",         // text stuck to a number
        "380,0.1,0.2,0.3\n390,0.1\n", // a record cut short
    };
    for (const char* text : cases) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(read(text));
        EXPECT_EQ(firstNonZero(), kSpectrumEntries);
    }
    std::filesystem::create_directory(utf16ToUtf8(folder.pathOf("folder.csv")));
    for (const std::u16string& path : {folder.pathOf("missing.csv"), folder.pathOf("folder.csv")}) {
        EXPECT_FALSE(readPath(path.c_str()));
        EXPECT_EQ(firstNonZero(), kSpectrumEntries);
    }
    EXPECT_FALSE(readPath(nullptr));
    EXPECT_EQ(firstNonZero(), kSpectrumEntries);
    EXPECT_TRUE(read("380,0.1,0.2,0.3\n"));
    EXPECT_EQ(poolLiveBlocks(poolInstance()), before);
}

TEST_F(SpectrumTable, FilesOfTwoGigabytesAreRefusedBeforeReading) {
    // A sparse file: its size is what counts, and nothing of it may be allocated or read.
    folder.write("huge.csv", "380,0.1,0.2,0.3\n");
    std::error_code error;
    std::filesystem::resize_file(utf16ToUtf8(folder.pathOf("huge.csv")), 0x7FFFFFFF, error);
    if (error) GTEST_SKIP() << "no sparse file here: " << error.message();
    const uint64_t before = poolLiveBlocks(poolInstance());
    EXPECT_FALSE(readPath(folder.pathOf("huge.csv").c_str()));
    EXPECT_EQ(firstNonZero(), kSpectrumEntries);
    EXPECT_EQ(poolLiveBlocks(poolInstance()), before);
}

} // namespace

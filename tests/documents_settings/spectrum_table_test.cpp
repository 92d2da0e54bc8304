#include "documents/spectrum_table.h"

#include "memory/pool_internals.h"
#include "tests/documents_settings/settings_test_support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
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
    };
    const Case cases[] = {
        {"0", 0.0f, 1},       {"42", 42.0f, 2},        {"  \t\r\n42", 42.0f, 7},
        {"+7", 7.0f, 2},      {"-2.5", -2.5f, 4},      {".5", 0.5f, 2},
        {"5.", 5.0f, 2},      {"380.25,", 380.25f, 6}, {"1e-3", 1.0f / 1000.0f, 4},
        {"1E+3", 1000.0f, 4}, {"-2e+2", -200.0f, 5},   {"3.25e+2", 325.0f, 7},
        {"5e-0", 5.0f, 4},    {"1e+9", 1e9f, 4},       {"7x", 7.0f, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        const char* cursor = c.text;
        float value = -123.0f;
        ASSERT_TRUE(ParseFastFloat(&cursor, &value));
        EXPECT_EQ(value, c.expected);
        EXPECT_EQ(static_cast<size_t>(cursor - c.text), c.consumed);
    }
}

TEST(ParseFastFloat, DigitsAreSummedInSinglePrecision) {
    // The fraction's place factor is a float that shrinks by 0.1 each digit; the sum is close to,
    // but need not be, the correctly rounded value.
    const char* text = "0.123456789";
    float value = 0;
    ASSERT_TRUE(ParseFastFloat(&text, &value));
    EXPECT_NEAR(value, 0.123456789f, 1e-6f);
    // Integer digits beyond what a float holds are rounded on the way, not rejected.
    const char* big = "123456789012";
    ASSERT_TRUE(ParseFastFloat(&big, &value));
    EXPECT_NEAR(value, 123456789012.0f, 123456789012.0f * 1e-6f);
}

TEST(ParseFastFloat, HugeExponentsSaturateWithoutHanging) {
    struct Case {
        const char* text;
        float expected;
    };
    const Case cases[] = {
        {"1e+40", INFINITY},
        {"-1e+40", -INFINITY},
        {"1e-50", 0.0f},
        {"1e+99999999999999999999", INFINITY},
        {"1e-99999999999999999999", 0.0f},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        const char* cursor = c.text;
        float value = 0;
        ASSERT_TRUE(ParseFastFloat(&cursor, &value));
        EXPECT_EQ(value, c.expected);
        EXPECT_EQ(*cursor, '\0');
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
    std::unique_ptr<float[][4]> table{new float[kSpectrumEntries][4]};
    float (&entries)[kSpectrumEntries][4] = *reinterpret_cast<float (*)[kSpectrumEntries][4]>(table.get());

    void fill() {
        for (auto& entry : entries) {
            for (float& value : entry)
                value = -7.0f;
        }
    }
    bool read(const std::string& text) {
        fill();
        return ReadSpectrumTable(entries, folder.write("table.csv", text).c_str());
    }
    void expectZeroed() {
        for (size_t i = 0; i < kSpectrumEntries; ++i) {
            for (int j = 0; j < 4; ++j)
                ASSERT_EQ(entries[i][j], 0.0f) << i << " " << j;
        }
    }
};

TEST_F(SpectrumTable, EntriesHoldXyzThenTheWavelength) {
    ASSERT_TRUE(read("380,0.0014,0.0000390,0.0065\n385, 0.0022 , 0.000064,0.0105\n"));
    const float expected[2][4] = {{0.0014f, 0.000039f, 0.0065f, 380.0f},
                                  {0.0022f, 0.000064f, 0.0105f, 385.0f}};
    for (int i = 0; i < 2; ++i) {
        for (int j = 0; j < 4; ++j)
            EXPECT_NEAR(entries[i][j], expected[i][j], 1e-6f) << i << " " << j;
    }
    for (size_t i = 2; i < kSpectrumEntries; ++i)
        ASSERT_EQ(entries[i][3], 0.0f) << "the rest is zeroed";
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

TEST_F(SpectrumTable, FailuresZeroTheWholeTable) {
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
        expectZeroed();
    }
}

TEST_F(SpectrumTable, SignedExponentsParse) {
    ASSERT_TRUE(read("380,1e-3,2.5E+1,-4e-1\n"));
    EXPECT_EQ(entries[0][0], 1.0f / 1000.0f);
    EXPECT_EQ(entries[0][1], 25.0f);
    EXPECT_EQ(entries[0][2], -4.0f / 10.0f);
    EXPECT_EQ(entries[0][3], 380.0f);
}

TEST_F(SpectrumTable, FilesThatCantBeReadFail) {
    fill();
    EXPECT_FALSE(ReadSpectrumTable(entries, folder.pathOf("missing.csv").c_str()));
    expectZeroed();
    fill();
    std::filesystem::create_directory(folder.narrowPathOf("folder.csv"));
    EXPECT_FALSE(ReadSpectrumTable(entries, folder.pathOf("folder.csv").c_str()));
    expectZeroed();
    fill();
    EXPECT_FALSE(ReadSpectrumTable(entries, nullptr));
    expectZeroed();
}

TEST_F(SpectrumTable, FilesOfTwoGigabytesAreRefusedBeforeReading) {
    // A sparse file: its size is what counts, and nothing of it may be allocated or read.
    folder.write("huge.csv", "380,0.1,0.2,0.3\n");
    std::error_code error;
    std::filesystem::resize_file(folder.narrowPathOf("huge.csv"), 0x7FFFFFFF, error);
    if (error) GTEST_SKIP() << "no sparse file here: " << error.message();
    const uint64_t before = poolLiveBlocks(poolInstance());
    fill();
    EXPECT_FALSE(ReadSpectrumTable(entries, folder.pathOf("huge.csv").c_str()));
    expectZeroed();
    EXPECT_EQ(poolLiveBlocks(poolInstance()), before);
}

TEST_F(SpectrumTable, TheBufferIsGivenBackEitherWay) {
    const uint64_t before = poolLiveBlocks(poolInstance());
    EXPECT_TRUE(read("380,0.1,0.2,0.3\n"));
    EXPECT_FALSE(read("380,0.1,0.2\n"));
    EXPECT_EQ(poolLiveBlocks(poolInstance()), before);
}

} // namespace

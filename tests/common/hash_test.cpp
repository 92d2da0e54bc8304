#include "common/hash.h"
#include "common/unicode.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

std::string littleEndianBytes(const std::u16string &text) {
    std::string bytes;
    for (char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

std::vector<std::string> splitTabs(const std::string &line) {
    std::vector<std::string> fields;
    size_t start = 0;
    for (;;) {
        size_t tab = line.find('\t', start);
        fields.push_back(line.substr(start, tab == std::string::npos ? std::string::npos : tab - start));
        if (tab == std::string::npos) return fields;
        start = tab + 1;
    }
}

// The reference table: a name, CityHash64 of its UTF-16LE bytes, and MurmurHash3 (seed 0) of its
// UTF-8 bytes, or "-" where that value is not given.
TEST(HashVectors, EveryRowMatches) {
    std::ifstream in(TAVI_HASH_VECTORS, std::ios::binary);
    ASSERT_TRUE(in) << "cannot open " << TAVI_HASH_VECTORS;

    // Byte lengths (of the UTF-16 text) at which each CityHash64 path starts; the table must reach
    // every one of them, or a path would go unchecked.
    const size_t pathStarts[] = {0, 1, 4, 8, 17, 33, 65, 129};
    std::vector<int> rowsPerPath(std::size(pathStarts), 0);

    std::string line;
    int lineNumber = 0;
    int cityRows = 0;
    int murmurRows = 0;
    while (std::getline(in, line)) {
        ++lineNumber;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || line[0] == '#') continue;
        SCOPED_TRACE("line " + std::to_string(lineNumber) + ": \"" + line + "\"");
        std::vector<std::string> fields = splitTabs(line);
        ASSERT_EQ(fields.size(), 3u);
        const std::string &name = fields[0];
        std::u16string wide = utf8ToUtf16(name);
        std::string bytes = littleEndianBytes(wide);

        uint64_t expectedCity = std::stoull(fields[1], nullptr, 16);
        EXPECT_EQ(cityHash64(bytes.data(), bytes.size()), expectedCity);
        EXPECT_EQ(nameKey(wide.c_str()), expectedCity);
        ++cityRows;
        for (size_t i = std::size(pathStarts); i-- > 0;) {
            if (bytes.size() >= pathStarts[i]) {
                ++rowsPerPath[i];
                break;
            }
        }

        if (fields[2] != "-") {
            uint32_t expectedMurmur = static_cast<uint32_t>(std::stoul(fields[2], nullptr, 16));
            EXPECT_EQ(murmurHash3x86_32(name.data(), name.size(), 0), expectedMurmur);
            ++murmurRows;
        }
    }
    for (size_t i = 0; i < rowsPerPath.size(); ++i)
        EXPECT_GT(rowsPerPath[i], 0) << "no row of at least " << pathStarts[i] << " bytes";
    std::printf("checked %d CityHash64 rows and %d MurmurHash3 rows\n", cityRows, murmurRows);
}

// Published check values of the 32-bit x86 variant, including non-zero seeds, which the table
// does not exercise.
TEST(MurmurHash3, PublishedValues) {
    struct Case {
        std::string data;
        uint32_t seed;
        uint32_t expected;
    };
    const Case cases[] = {
        {"", 0, 0},
        {"", 1, 0x514E28B7},
        {"", 0xFFFFFFFF, 0x81F16F39},
        {std::string("\0\0\0\0", 4), 0, 0x2362F9DE},
        {"\xFF\xFF\xFF\xFF", 0, 0x76293B50},
        {"\x21\x43\x65\x87", 0, 0xF55B516B},
        {"\x21\x43\x65\x87", 0x5082EDEE, 0x2362F9DE},
        {"a", 0x9747B28C, 0x7FA09EA6},
        {"aa", 0x9747B28C, 0x5D211726},
        {"aaa", 0x9747B28C, 0x283E0130},
        {"aaaa", 0x9747B28C, 0x5A97808A},
        {"ab", 0x9747B28C, 0x74875592},
        {"abc", 0x9747B28C, 0xC84A62DD},
        {"abcd", 0x9747B28C, 0xF0478627},
        {"Hello, world!", 0x9747B28C, 0x24884CBA},
        {"The quick brown fox jumps over the lazy dog", 0x9747B28C, 0x2FA826CD},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE("\"" + c.data + "\" seed " + std::to_string(c.seed));
        EXPECT_EQ(murmurHash3x86_32(c.data.data(), c.data.size(), c.seed), c.expected);
    }
}

// A hash must see exactly the bytes it is given: the same bytes at any alignment, with anything
// at all around them, give the same value. Catches reads before or past the range.
TEST(Hash, DependsOnlyOnTheBytesInRange) {
    std::vector<unsigned char> source(300);
    for (size_t i = 0; i < source.size(); ++i)
        source[i] = static_cast<unsigned char>(i * 131 + 7);

    for (size_t length = 0; length <= source.size(); ++length) {
        SCOPED_TRACE("length " + std::to_string(length));
        // An exact-size copy, so that a sanitizer build flags any read beyond it.
        std::vector<unsigned char> exact(source.begin(), source.begin() + length);
        uint64_t city = cityHash64(exact.data(), length);
        uint32_t murmur = murmurHash3x86_32(exact.data(), length, 0x1234);
        for (size_t offset = 1; offset < 8; ++offset) {
            for (unsigned char fill : {0x00, 0xFF}) {
                std::vector<unsigned char> padded(offset + length + 16, fill);
                std::copy(exact.begin(), exact.end(), padded.begin() + offset);
                ASSERT_EQ(cityHash64(padded.data() + offset, length), city) << "offset " << offset;
                ASSERT_EQ(murmurHash3x86_32(padded.data() + offset, length, 0x1234), murmur)
                    << "offset " << offset;
            }
        }
    }
}

// Every byte takes part: flipping any single bit of any input length changes the value. Catches a
// path that skips part of its input (a middle block of the long loop, a tail byte).
TEST(Hash, EveryBitTakesPart) {
    for (size_t length = 1; length <= 200; ++length) {
        std::vector<unsigned char> data(length);
        for (size_t i = 0; i < length; ++i)
            data[i] = static_cast<unsigned char>(i * 37 + length);
        uint64_t city = cityHash64(data.data(), length);
        uint32_t murmur = murmurHash3x86_32(data.data(), length, 0);
        for (size_t i = 0; i < length; ++i) {
            for (int bit = 0; bit < 8; ++bit) {
                data[i] ^= static_cast<unsigned char>(1 << bit);
                ASSERT_NE(cityHash64(data.data(), length), city) << "length " << length << " byte " << i;
                ASSERT_NE(murmurHash3x86_32(data.data(), length, 0), murmur)
                    << "length " << length << " byte " << i;
                data[i] ^= static_cast<unsigned char>(1 << bit);
            }
        }
    }
}

TEST(NameKey, HashesCodeUnitsLittleEndianWithoutTerminator) {
    const std::u16string names[] = {u"", u"Wood", u"wood", u"\u6728\u6750", u"x\U0001F600y", u"\u00E9\u0100"};
    for (const std::u16string &name : names) {
        std::string bytes = littleEndianBytes(name);
        SCOPED_TRACE(utf16ToUtf8(name));
        EXPECT_EQ(nameKey(name.c_str()), cityHash64(bytes.data(), bytes.size()));
    }
    // Letters are not folded.
    EXPECT_NE(nameKey(u"Wood"), nameKey(u"wood"));
    // The key stops at the terminator.
    const char16_t embedded[] = u"ab\0cd";
    EXPECT_EQ(nameKey(embedded), nameKey(u"ab"));
}

} // namespace

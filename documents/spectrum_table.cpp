#include "documents/spectrum_table.h"

#include "memory/pool.h"
#include "platform/files.h"

#include <cstdint>
#include <cstring>

namespace {

// Files this long or longer are refused before anything is allocated.
constexpr uint64_t kSizeLimit = 0x7FFFFFFF;
// Exponents beyond this give the same f32 result (an infinite scale), so the digits past it
// need not be counted; the cap keeps the count and the scaling loop bounded.
constexpr int32_t kExponentCap = 10000;

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

const char* skipBlanks(const char* p) {
    while (isBlank(*p))
        ++p;
    return p;
}

// Records of four numbers up to the terminator. Anything that is not such a record fails.
bool parseRecords(const char* text, float (&table)[kSpectrumEntries][4]) {
    const char* p = text;
    size_t stored = 0;
    for (;;) {
        p = skipBlanks(p);
        if (*p == '\0') return true;
        float numbers[4];
        for (int i = 0; i < 4; ++i) {
            if (i > 0) {
                p = skipBlanks(p);
                if (*p != ',') return false;
                ++p;
            }
            if (!ParseFastFloat(&p, &numbers[i])) return false;
        }
        if (stored < kSpectrumEntries) {
            float* entry = table[stored++];
            entry[0] = numbers[1];
            entry[1] = numbers[2];
            entry[2] = numbers[3];
            entry[3] = numbers[0];
        }
    }
}

// The whole file, terminated, in one pool block; null when it can't be had.
char* readWholeFile(platform::FileHandle file) {
    uint64_t size = 0;
    if (!platform::fileSize(file, &size) || size == 0 || size >= kSizeLimit) return nullptr;
    char* buffer = static_cast<char*>(poolAlloc(poolInstance(), static_cast<size_t>(size) + 1));
    if (!buffer) return nullptr;
    size_t got = 0;
    if (!platform::readFile(file, buffer, static_cast<size_t>(size), &got) || got != size) {
        poolFree(poolInstance(), buffer);
        return nullptr;
    }
    buffer[size] = '\0';
    return buffer;
}

} // namespace

bool ParseFastFloat(const char** cursor, float* value) {
    const char* p = skipBlanks(*cursor);
    bool negative = false;
    if (*p == '+' || *p == '-') {
        negative = *p == '-';
        ++p;
    }
    bool anyDigit = false;
    float number = 0.0f;
    for (; isDigit(*p); ++p) {
        number = number * 10.0f + static_cast<float>(*p - '0');
        anyDigit = true;
    }
    if (*p == '.') {
        ++p;
        float fraction = 0.0f;
        float place = 0.1f;
        for (; isDigit(*p); ++p) {
            fraction += static_cast<float>(*p - '0') * place;
            place *= 0.1f;
            anyDigit = true;
        }
        number += fraction;
    }
    if (!anyDigit) return false;
    if (negative) number = -number;
    if (*p == 'e' || *p == 'E') {
        ++p;
        if (*p != '+' && *p != '-') return false;
        const bool divide = *p == '-';
        ++p;
        if (!isDigit(*p)) return false;
        int32_t exponent = 0;
        for (; isDigit(*p); ++p) {
            if (exponent < kExponentCap) exponent = exponent * 10 + (*p - '0');
        }
        float scale = 1.0f;
        for (; exponent >= 8; exponent -= 8)
            scale *= 1e8f;
        for (; exponent > 0; --exponent)
            scale *= 10.0f;
        number = divide ? number / scale : number * scale;
    }
    *value = number;
    *cursor = p;
    return true;
}

bool ReadSpectrumTable(float (&table)[kSpectrumEntries][4], const char16_t* path) {
    std::memset(table, 0, sizeof table);
    if (!path) return false;
    const platform::FileHandle file = platform::openForReading(path);
    if (file == platform::kNoFile) return false;
    char* text = readWholeFile(file);
    const bool parsed = text && parseRecords(text, table);
    if (!parsed) std::memset(table, 0, sizeof table);
    poolFree(poolInstance(), text);
    platform::closeFile(file);
    return parsed;
}

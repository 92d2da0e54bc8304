// Helpers of the settings and camera document tests: the document tests' folders and recording
// name interface, and access to record bytes by offset, which is how the documents address their
// fields. Records start filled with kFill, so that whatever a reader leaves alone shows.
#pragma once
#include "common/unicode.h"
#include "tests/documents/document_test_support.h"

#include <cstdint>
#include <cstring>
#include <string>

namespace settings_test {

using documents_test::RecordingNames;
using documents_test::TempFolder;

constexpr uint8_t kFill = 0xA5;
constexpr uint32_t kFillWord = 0xA5A5A5A5;

template <class T> uint32_t wordAt(const T& record, size_t offset) {
    uint32_t word;
    std::memcpy(&word, reinterpret_cast<const uint8_t*>(&record) + offset, sizeof word);
    return word;
}
template <class T> int32_t intAt(const T& record, size_t offset) {
    return static_cast<int32_t>(wordAt(record, offset));
}
template <class T> float floatAt(const T& record, size_t offset) {
    float value;
    std::memcpy(&value, reinterpret_cast<const uint8_t*>(&record) + offset, sizeof value);
    return value;
}
template <class T> uint8_t byteAt(const T& record, size_t offset) {
    return reinterpret_cast<const uint8_t*>(&record)[offset];
}
template <class T> void setWord(T& record, size_t offset, uint32_t word) {
    std::memcpy(reinterpret_cast<uint8_t*>(&record) + offset, &word, sizeof word);
}
inline uint32_t bitsOf(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

// The wide text at `offset`, up to its terminator or `capacity` characters, in UTF-8.
template <class T> std::string textAt(const T& record, size_t offset, size_t capacity) {
    std::u16string text;
    char16_t unit;
    while (text.size() < capacity) {
        std::memcpy(&unit, reinterpret_cast<const uint8_t*>(&record) + offset + 2 * text.size(), sizeof unit);
        if (unit == 0) break;
        text.push_back(unit);
    }
    return utf16ToUtf8(text);
}
template <class T> void setText(T& record, size_t offset, const std::u16string& text) {
    std::memcpy(reinterpret_cast<uint8_t*>(&record) + offset, text.c_str(),
                (text.size() + 1) * sizeof(char16_t));
}

} // namespace settings_test

#include "scene/scene_text.h"

#include "scene/records.h"

#include <cstring>

namespace {

// The conversion of the text in a record reads at most this many source bytes and accepts
// a result shorter than kRecordTextMax characters, terminator included.
constexpr size_t kRecordTextSourceLimit = 0xEFF;
constexpr size_t kRecordTextMax = 0x181;
constexpr size_t kRecordTextBuffer = 0x300;

// The scene text conversion looks at up to ten source bytes per destination character.
constexpr size_t kSourceBytesPerCharacter = 10;

size_t boundedLength(const char* text, size_t limit) {
    const void* end = std::memchr(text, 0, limit);
    return end ? static_cast<size_t>(static_cast<const char*>(end) - text) : limit;
}

} // namespace

bool convertSceneString(char16_t* dest, size_t capacity, const char* source, size_t sourceBytes) {
    if (!dest || capacity == 0) return false;
    dest[0] = 0;
    if (!source) return true;
    size_t limit = kSourceBytesPerCharacter * capacity - 1;
    size_t length = boundedLength(source, sourceBytes < limit ? sourceBytes : limit);
    if (length + 1 > capacity) return false;
    for (size_t i = 0; i < length; ++i)
        dest[i] = static_cast<unsigned char>(source[i]);
    dest[length] = 0;
    return true;
}

bool convertTextField(char16_t* dest, size_t capacity, ByteSpan body, uint64_t offset, uint64_t fieldBytes) {
    ByteSpan field = body.tail(offset, fieldBytes);
    return convertSceneString(dest, capacity, reinterpret_cast<const char*>(field.data), field.size);
}

bool convertNameField(char16_t* dest, ByteSpan body, uint64_t offset) {
    return convertTextField(dest, kNameChars, body, offset, kNameFieldBytes);
}

void fixRecordText(void* field, size_t fieldBytes) {
    char16_t wide[kRecordTextBuffer / sizeof(char16_t)] = {};
    const char* text = static_cast<const char*>(field);
    size_t limit = fieldBytes < kRecordTextSourceLimit ? fieldBytes : kRecordTextSourceLimit;
    size_t length = boundedLength(text, limit);
    bool converted = length + 1 < kRecordTextMax;
    if (converted) {
        for (size_t i = 0; i < length; ++i)
            wide[i] = static_cast<unsigned char>(text[i]);
    }
    std::memset(field, 0, fieldBytes);
    if (converted) std::memcpy(field, wide, fieldBytes < sizeof wide ? fieldBytes : sizeof wide);
}

// Conversions between the client's UTF-16 text, UTF-8 and the scene file's narrow text.
#pragma once
#include <string>

// Lone surrogates become U+FFFD.
std::string utf16ToUtf8(const std::u16string &text);
std::string utf16ToUtf8(const char16_t *text);
// Malformed sequences become U+FFFD.
std::u16string utf8ToUtf16(const std::string &text);

// Length of a zero-terminated wide text.
size_t wideLength(const char16_t *text);

// Conversions between the client's UTF-16 text, UTF-8 and the scene file's narrow text.
#pragma once
#include <string>

// Lone surrogates become U+FFFD.
std::string utf16ToUtf8(const std::u16string &text);
std::string utf16ToUtf8(const char16_t *text);
// Malformed sequences become U+FFFD: one for a lead byte together with the continuation bytes
// behind it (at most as many as it announces), one for each byte that cannot start a sequence.
// Overlong forms, surrogates and values above U+10FFFF count as malformed.
std::u16string utf8ToUtf16(const std::string &text);

// Length of a zero-terminated wide text.
size_t wideLength(const char16_t *text);

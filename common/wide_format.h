// printf-style formatting of wide text, the way the client's console messages are written.
//
// Arguments are typed, so a format with more conversions than arguments (a message text
// used as a format) prints the missing ones as empty instead of reading garbage; an argument
// of the wrong kind for its conversion (text for %i, a number for %s) prints as empty too.
// %s, %S and %ls all take wide text.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

struct FormatArg {
    enum class Kind { Integer, Real, Text } kind;
    int64_t integer = 0;
    // Width of the integer as a C variadic call would pass it (small types promote to int), so
    // that %u and %x of a negative int print 32 bits, not 64.
    int integerBits = 64;
    double real = 0;
    const char16_t *text = nullptr;

    template <class T, std::enable_if_t<std::is_integral_v<T>, int> = 0>
    FormatArg(T value)
        : kind(Kind::Integer), integer(static_cast<int64_t>(value)), integerBits(sizeof(T) > 4 ? 64 : 32) {}
    FormatArg(double value) : kind(Kind::Real), real(value) {}
    FormatArg(const char16_t *value) : kind(Kind::Text), text(value) {}
    FormatArg(const std::u16string &value) : kind(Kind::Text), text(value.c_str()) {}
};

std::u16string formatWideArgs(const char16_t *format, const FormatArg *args, size_t count);

template <class... Args> std::u16string formatWide(const char16_t *format, const Args &...args) {
    if constexpr (sizeof...(Args) == 0) {
        return formatWideArgs(format, nullptr, 0);
    } else {
        const FormatArg list[] = {FormatArg(args)...};
        return formatWideArgs(format, list, sizeof...(Args));
    }
}

// Copies as much of `text` as fits into `dest` and always terminates it.
// True when nothing was cut.
bool copyBounded(char16_t *dest, size_t capacity, const char16_t *text);

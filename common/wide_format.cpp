#include "common/wide_format.h"

#include <cstdio>
#include <limits>

namespace {

struct Conversion {
    std::string flags;
    int width = -1;
    int precision = -1;
    char conversion = 0;
};

bool isFlag(char16_t c) {
    return c == u'-' || c == u'+' || c == u' ' || c == u'#' || c == u'0';
}

const FormatArg *take(const FormatArg *args, size_t count, size_t &next) {
    return next < count ? &args[next++] : nullptr;
}

// Largest width or precision taken from a '*' argument: no larger than a written number can give,
// and small enough that the negation of a negative width cannot overflow.
constexpr int64_t kMaxStarValue = 999999;

int starValue(const FormatArg *arg) {
    if (!arg || arg->kind != FormatArg::Kind::Integer) return 0;
    int64_t value = arg->integer;
    if (value > kMaxStarValue) value = kMaxStarValue;
    if (value < -kMaxStarValue) value = -kMaxStarValue;
    return static_cast<int>(value);
}

int readNumber(const char16_t *&p) {
    int value = 0;
    while (*p >= u'0' && *p <= u'9') {
        if (value < 100000) value = value * 10 + (*p - u'0');
        ++p;
    }
    return value;
}

void appendAscii(std::u16string &out, const char *text) {
    for (; *text; ++text)
        out += static_cast<char16_t>(static_cast<unsigned char>(*text));
}

std::string numberFormat(const Conversion &conversion, const char *length) {
    std::string f = "%" + conversion.flags;
    if (conversion.width >= 0) f += std::to_string(conversion.width);
    if (conversion.precision >= 0) f += "." + std::to_string(conversion.precision);
    f += length;
    f += conversion.conversion;
    return f;
}

void appendText(std::u16string &out, const Conversion &conversion, const char16_t *text, size_t length) {
    if (conversion.precision >= 0 && length > static_cast<size_t>(conversion.precision)) length = conversion.precision;
    size_t pad = conversion.width > 0 && static_cast<size_t>(conversion.width) > length ? conversion.width - length : 0;
    bool left = conversion.flags.find('-') != std::string::npos;
    if (!left) out.append(pad, u' ');
    out.append(text, length);
    if (left) out.append(pad, u' ');
}

// Formats one number through the C library, sized to the result so that no width is cut.
template <class T> void appendPrintf(std::u16string &out, const std::string &format, T value) {
    int length = std::snprintf(nullptr, 0, format.c_str(), value);
    if (length <= 0) return;
    std::string buffer(static_cast<size_t>(length) + 1, '\0');
    std::snprintf(buffer.data(), buffer.size(), format.c_str(), value);
    buffer.resize(static_cast<size_t>(length));
    appendAscii(out, buffer.c_str());
}

// A real given to an integer conversion is truncated toward zero; outside the range of the
// conversion (or NaN) a plain cast would be undefined, so it saturates instead.
long long realToInteger(double value) {
    if (value != value) return 0;
    if (value >= 9223372036854775808.0) return std::numeric_limits<long long>::max();
    if (value <= -9223372036854775808.0) return std::numeric_limits<long long>::min();
    return static_cast<long long>(value);
}

void appendNumber(std::u16string &out, const Conversion &conversion, const FormatArg *arg) {
    if (!arg || arg->kind == FormatArg::Kind::Text) {
        Conversion empty = conversion;
        empty.precision = -1;
        appendText(out, empty, u"", 0);
        return;
    }
    bool real = conversion.conversion == 'f' || conversion.conversion == 'F' || conversion.conversion == 'e' ||
                conversion.conversion == 'E' || conversion.conversion == 'g' || conversion.conversion == 'G' ||
                conversion.conversion == 'a' || conversion.conversion == 'A';
    if (real) {
        double value = arg->kind == FormatArg::Kind::Real ? arg->real : static_cast<double>(arg->integer);
        appendPrintf(out, numberFormat(conversion, ""), value);
    } else {
        long long value = arg->kind == FormatArg::Kind::Integer ? arg->integer : realToInteger(arg->real);
        if (conversion.conversion == 'd' || conversion.conversion == 'i') {
            appendPrintf(out, numberFormat(conversion, "ll"), value);
        } else {
            // An unsigned conversion sees the bits of the argument as it was passed.
            unsigned long long bits = static_cast<unsigned long long>(value);
            if (arg->kind == FormatArg::Kind::Integer && arg->integerBits == 32) bits &= 0xFFFFFFFFull;
            appendPrintf(out, numberFormat(conversion, "ll"), bits);
        }
    }
}

} // namespace

std::u16string formatWideArgs(const char16_t *format, const FormatArg *args, size_t count) {
    std::u16string out;
    size_t next = 0;
    for (const char16_t *p = format; *p;) {
        if (*p != u'%') {
            out += *p++;
            continue;
        }
        const char16_t *start = p++;
        Conversion conversion;
        while (isFlag(*p))
            conversion.flags += static_cast<char>(*p++);
        if (*p == u'*') {
            conversion.width = starValue(take(args, count, next));
            if (conversion.width < 0) {
                conversion.flags += '-';
                conversion.width = -conversion.width;
            }
            ++p;
        } else if (*p >= u'0' && *p <= u'9') {
            conversion.width = readNumber(p);
        }
        if (*p == u'.') {
            ++p;
            if (*p == u'*') {
                conversion.precision = starValue(take(args, count, next));
                ++p;
            } else {
                conversion.precision = readNumber(p);
            }
        }
        while (*p == u'l' || *p == u'h' || *p == u'L' || *p == u'z' || *p == u'j' || *p == u't' ||
               *p == u'w' || *p == u'q')
            ++p;
        if (*p == u'I') {
            ++p;
            if ((p[0] == u'6' && p[1] == u'4') || (p[0] == u'3' && p[1] == u'2')) p += 2;
        }
        char16_t c = *p;
        if (c == 0) {
            out.append(start, p);
            break;
        }
        ++p;
        conversion.conversion = static_cast<char>(c);
        switch (c) {
        case u'%':
            out += u'%';
            break;
        case u's':
        case u'S': {
            const FormatArg *a = take(args, count, next);
            const char16_t *text = u"";
            if (a && a->kind == FormatArg::Kind::Text) text = a->text ? a->text : u"(null)";
            appendText(out, conversion, text, std::char_traits<char16_t>::length(text));
            break;
        }
        case u'c':
        case u'C': {
            const FormatArg *a = take(args, count, next);
            char16_t ch = a && a->kind == FormatArg::Kind::Integer ? static_cast<char16_t>(a->integer) : 0;
            Conversion plain = conversion;
            plain.precision = -1;
            appendText(out, plain, &ch, ch ? 1 : 0);
            break;
        }
        case u'd':
        case u'i':
        case u'u':
        case u'x':
        case u'X':
        case u'o':
        case u'f':
        case u'F':
        case u'e':
        case u'E':
        case u'g':
        case u'G':
        case u'a':
        case u'A':
            appendNumber(out, conversion, take(args, count, next));
            break;
        default:
            // An unknown conversion is printed as it stands.
            out.append(start, p);
            break;
        }
    }
    return out;
}

bool copyBounded(char16_t *dest, size_t capacity, const char16_t *text) {
    if (capacity == 0) return false;
    size_t i = 0;
    for (; text[i]; ++i) {
        if (i + 1 == capacity) {
            dest[i] = 0;
            return false;
        }
        dest[i] = text[i];
    }
    dest[i] = 0;
    return true;
}

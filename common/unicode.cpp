#include "common/unicode.h"

namespace {

void appendUtf8(std::string &out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

void appendUtf16(std::u16string &out, char32_t c) {
    if (c < 0x10000) {
        out += static_cast<char16_t>(c);
    } else {
        c -= 0x10000;
        out += static_cast<char16_t>(0xD800 | (c >> 10));
        out += static_cast<char16_t>(0xDC00 | (c & 0x3FF));
    }
}

constexpr char32_t kReplacement = 0xFFFD;

} // namespace

size_t wideLength(const char16_t *text) {
    size_t n = 0;
    while (text[n])
        ++n;
    return n;
}

std::string utf16ToUtf8(const char16_t *text) {
    return utf16ToUtf8(std::u16string(text, wideLength(text)));
}

std::string utf16ToUtf8(const std::u16string &text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF) {
            c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        } else if (c >= 0xD800 && c <= 0xDFFF) {
            c = kReplacement;
        }
        appendUtf8(out, c);
    }
    return out;
}

std::u16string utf8ToUtf16(const std::string &text) {
    std::u16string out;
    out.reserve(text.size());
    size_t i = 0;
    while (i < text.size()) {
        unsigned char lead = static_cast<unsigned char>(text[i]);
        int extra = lead < 0x80                   ? 0
                    : lead >= 0xF0 && lead < 0xF5 ? 3
                    : lead >= 0xE0                ? 2
                    : lead >= 0xC2                ? 1
                                                  : -1;
        if (extra < 0 || (extra == 2 && lead >= 0xF0)) {
            appendUtf16(out, kReplacement);
            ++i;
            continue;
        }
        char32_t c = extra == 0 ? lead : lead & (0x3F >> extra);
        size_t j = 1;
        for (; j <= static_cast<size_t>(extra); ++j) {
            if (i + j >= text.size()) break;
            unsigned char next = static_cast<unsigned char>(text[i + j]);
            if ((next & 0xC0) != 0x80) break;
            c = (c << 6) | (next & 0x3F);
        }
        bool complete = j == static_cast<size_t>(extra) + 1;
        bool overlong = (extra == 2 && c < 0x800) || (extra == 3 && c < 0x10000);
        bool invalid = c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF);
        appendUtf16(out, complete && !overlong && !invalid ? c : kReplacement);
        i += complete ? j : (j > 1 ? j : 1);
    }
    return out;
}

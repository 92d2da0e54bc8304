#include "tools/inspector/json_writer.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace inspector {

std::string jsonString(const std::string& text) {
    std::string out = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default:
            if (byte < 0x20) {
                char escaped[8];
                std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
                out += escaped;
            } else {
                out += c;
            }
        }
    }
    return out + "\"";
}

void JsonWriter::separate() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (!filled_.empty()) {
        if (filled_.back()) out_ += ',';
        filled_.back() = true;
    }
}

JsonWriter& JsonWriter::open(char bracket) {
    separate();
    out_ += bracket;
    filled_.push_back(false);
    return *this;
}

JsonWriter& JsonWriter::close(char bracket) {
    out_ += bracket;
    if (!filled_.empty()) filled_.pop_back();
    return *this;
}

JsonWriter& JsonWriter::key(const std::string& name) {
    separate();
    out_ += jsonString(name);
    out_ += ':';
    afterKey_ = true;
    return *this;
}

JsonWriter& JsonWriter::value(const std::string& text) {
    separate();
    out_ += jsonString(text);
    return *this;
}

JsonWriter& JsonWriter::value(int64_t number) {
    separate();
    out_ += std::to_string(number);
    return *this;
}

JsonWriter& JsonWriter::value(uint64_t number) {
    separate();
    out_ += std::to_string(number);
    return *this;
}

JsonWriter& JsonWriter::value(double number) {
    if (!std::isfinite(number)) return null();
    separate();
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", number);
    out_ += text;
    return *this;
}

JsonWriter& JsonWriter::value(float number) {
    if (!std::isfinite(number)) return null();
    separate();
    char text[32];
    for (int digits = 6; digits <= 9; ++digits) {
        std::snprintf(text, sizeof text, "%.*g", digits, double(number));
        if (std::strtof(text, nullptr) == number) break;
    }
    out_ += text;
    return *this;
}

JsonWriter& JsonWriter::value(bool flag) {
    separate();
    out_ += flag ? "true" : "false";
    return *this;
}

JsonWriter& JsonWriter::null() {
    separate();
    out_ += "null";
    return *this;
}

} // namespace inspector

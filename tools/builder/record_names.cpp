#include "tools/builder/record_names.h"

#include <cctype>

namespace builder {

namespace {

// Room for " 999" behind the longest kept text, inside the 63 characters before the terminator.
constexpr size_t kKeptChars = 56;

bool safe(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == ' ' || c == '_' || c == '-' || c == '.';
}

std::string folded(const std::string& text) {
    std::string lower = text;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower;
}

std::string cleaned(const std::string& raw) {
    std::string name;
    for (char c : raw) {
        if (name.size() == kKeptChars) break;
        name += safe(c) ? c : '_';
    }
    // A leading dot would hide the document; edge spaces would be lost by editors and shells.
    while (!name.empty() && (name.front() == '.' || name.front() == ' ')) name.erase(0, 1);
    while (!name.empty() && name.back() == ' ') name.pop_back();
    return name;
}

} // namespace

std::string RecordNames::take(const std::string& raw, const std::string& fallback) {
    std::string base = cleaned(raw);
    if (base.empty()) base = cleaned(fallback);
    std::string name = base;
    for (int suffix = 2; taken_.count(folded(name)); ++suffix) name = base + " " + std::to_string(suffix);
    taken_.insert(folded(name));
    return name;
}

} // namespace builder

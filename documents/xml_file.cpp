#include "documents/xml_file.h"

#include "platform/files.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

// Documents name keys such as "3D", which begin with a digit. The documents' own writer puts
// them out as they are, so they must read back; pugixml refuses such a name. Before parsing,
// every tag name that begins with a digit gets this character in front (a character pugixml
// takes at the start of a name and that no key holds), and after parsing it is taken off again.
constexpr char32_t kNameGuard = ':';

// The text as code units of one width and byte order, found the way pugixml finds them: from a
// byte-order mark, or from how the first '<' is spelled.
struct Units {
    std::vector<uint8_t>& bytes;
    size_t width = 1;
    bool bigEndian = false;

    size_t count() const { return bytes.size() / width; }
    char32_t at(size_t i) const {
        char32_t unit = 0;
        for (size_t b = 0; b < width; ++b) {
            const size_t shift = bigEndian ? (width - 1 - b) * 8 : b * 8;
            unit |= char32_t(bytes[i * width + b]) << shift;
        }
        return unit;
    }
    void append(char32_t unit, std::vector<uint8_t>& out) const {
        for (size_t b = 0; b < width; ++b) {
            const size_t shift = bigEndian ? (width - 1 - b) * 8 : b * 8;
            out.push_back(uint8_t(unit >> shift));
        }
    }
};

bool startsWith(const std::vector<uint8_t>& bytes, std::initializer_list<uint8_t> prefix) {
    return bytes.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), bytes.begin());
}

void detectUnits(Units* units) {
    const std::vector<uint8_t>& b = units->bytes;
    if (startsWith(b, {0x00, 0x00, 0xFE, 0xFF}) || startsWith(b, {0x00, 0x00, 0x00, 0x3C})) {
        units->width = 4, units->bigEndian = true;
    } else if (startsWith(b, {0xFF, 0xFE, 0x00, 0x00}) || startsWith(b, {0x3C, 0x00, 0x00, 0x00})) {
        units->width = 4;
    } else if (startsWith(b, {0xFE, 0xFF}) || startsWith(b, {0x00, 0x3C})) {
        units->width = 2, units->bigEndian = true;
    } else if (startsWith(b, {0xFF, 0xFE}) || startsWith(b, {0x3C, 0x00})) {
        units->width = 2;
    }
}

bool isDigit(char32_t unit) { return unit >= '0' && unit <= '9'; }

// Index just past `terminator` from `from`, or the end.
size_t skipPast(const Units& units, size_t from, const char* terminator) {
    const size_t length = std::strlen(terminator);
    for (size_t i = from; i + length <= units.count(); ++i) {
        size_t k = 0;
        while (k < length && units.at(i + k) == char32_t(terminator[k])) ++k;
        if (k == length) return i + length;
    }
    return units.count();
}

bool matchesAt(const Units& units, size_t i, const char* text) {
    for (size_t k = 0; text[k]; ++k) {
        if (i + k >= units.count() || units.at(i + k) != char32_t(text[k])) return false;
    }
    return true;
}

// The positions (in units) where a guard goes: the first character of each start or end tag
// name that is a digit. Comments, processing instructions, declarations and quoted attribute
// values are passed over whole.
std::vector<size_t> guardPositions(const Units& units) {
    std::vector<size_t> positions;
    const size_t n = units.count();
    size_t i = 0;
    while (i < n) {
        if (units.at(i) != '<') {
            ++i;
            continue;
        }
        if (matchesAt(units, i, "<!--")) {
            i = skipPast(units, i + 4, "-->");
        } else if (matchesAt(units, i, "<![CDATA[")) {
            i = skipPast(units, i + 9, "]]>");
        } else if (matchesAt(units, i, "<?")) {
            i = skipPast(units, i + 2, "?>");
        } else if (matchesAt(units, i, "<!")) {
            i = skipPast(units, i + 2, ">");
        } else {
            size_t name = i + 1;
            if (name < n && units.at(name) == '/') ++name;
            if (name < n && isDigit(units.at(name))) positions.push_back(name);
            // The rest of the tag, with '>' inside quotes taken as text.
            char32_t quote = 0;
            for (i = name; i < n; ++i) {
                const char32_t unit = units.at(i);
                if (quote) {
                    if (unit == quote) quote = 0;
                } else if (unit == '"' || unit == '\'') {
                    quote = unit;
                } else if (unit == '>') {
                    ++i;
                    break;
                }
            }
        }
    }
    return positions;
}

// A walker rather than recursion: a document may nest deeper than the stack would allow.
struct GuardRemover : pugi::xml_tree_walker {
    bool for_each(pugi::xml_node& node) override {
        const char* name = node.name();
        if (node.type() == pugi::node_element && name[0] == char(kNameGuard) && isDigit(char32_t(name[1]))) {
            const std::string bare(name + 1);
            node.set_name(bare.c_str());
        }
        return true;
    }
};

bool readWholeFile(const char16_t* path, std::vector<uint8_t>* bytes) {
    const platform::FileHandle file = platform::openForReading(path);
    if (file == platform::kNoFile) return false;
    uint64_t size = 0;
    bool ok = platform::fileSize(file, &size) && size <= SIZE_MAX;
    if (ok) {
        bytes->resize(size_t(size));
        size_t got = 0;
        while (ok && got < bytes->size()) {
            size_t read = 0;
            ok = platform::readFile(file, bytes->data() + got, bytes->size() - got, &read) && read > 0;
            got += read;
        }
    }
    platform::closeFile(file);
    return ok;
}

} // namespace

bool loadXmlFile(pugi::xml_document& doc, const char16_t* path) {
    std::vector<uint8_t> bytes;
    if (!readWholeFile(path, &bytes)) return false;
    Units units{bytes};
    detectUnits(&units);
    const std::vector<size_t> guards = guardPositions(units);

    std::vector<uint8_t> text;
    text.reserve(bytes.size() + guards.size() * units.width);
    size_t next = 0;
    for (size_t i = 0; i < units.count(); ++i) {
        if (next < guards.size() && guards[next] == i) {
            units.append(kNameGuard, text);
            ++next;
        }
        text.insert(text.end(), bytes.begin() + i * units.width, bytes.begin() + (i + 1) * units.width);
    }
    text.insert(text.end(), bytes.begin() + units.count() * units.width, bytes.end());

    if (!doc.load_buffer(text.data(), text.size())) return false;
    GuardRemover remover;
    doc.traverse(remover);
    return true;
}

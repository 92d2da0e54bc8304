#include "documents/xml_file.h"

#include "platform/files.h"

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace {

// Documents name keys such as "3D", which begin with a digit. The documents' own writer puts
// them out as they are, so they must read back; pugixml refuses such a name. Before parsing,
// every tag name that begins with a digit gets this character in front (a character pugixml
// takes at the start of a name and that no key holds), and after parsing it is taken off again.
// A document without such a name goes to the parser as it was read.
constexpr char32_t kNameGuard = ':';

// ---- The file, in a block that the document takes over ----------------------------------------

// Bytes in memory of pugixml's own, so that the parser can work in them and free them.
class ParserBlock {
  public:
    ParserBlock() = default;
    explicit ParserBlock(size_t size)
        : data_(static_cast<uint8_t*>(pugi::get_memory_allocation_function()(size ? size : 1))),
          size_(data_ ? size : 0) {}
    ParserBlock(ParserBlock&& other) noexcept : data_(other.data_), size_(other.size_) {
        other.data_ = nullptr;
    }
    ParserBlock& operator=(ParserBlock&& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        return *this;
    }
    ParserBlock(const ParserBlock&) = delete;
    ParserBlock& operator=(const ParserBlock&) = delete;
    ~ParserBlock() {
        if (data_) pugi::get_memory_deallocation_function()(data_);
    }

    uint8_t* data() const { return data_; }
    size_t size() const { return size_; }
    // Hands the block to the parser, which frees it with the document.
    bool parseInto(pugi::xml_document& doc) {
        uint8_t* taken = data_;
        data_ = nullptr;
        return doc.load_buffer_inplace_own(taken, size_);
    }

  private:
    uint8_t* data_ = nullptr;
    size_t size_ = 0;
};

bool readWholeFile(const char16_t* path, ParserBlock* block) {
    uint64_t size = 0;
    const platform::FileHandle file = platform::openForReading(path, &size);
    if (file == platform::kNoFile) return false;
    bool ok = size <= SIZE_MAX;
    if (ok) {
        *block = ParserBlock(size_t(size));
        ok = block->data() && block->size() == size;
        size_t got = 0;
        while (ok && got < block->size()) {
            size_t read = 0;
            ok = platform::readFile(file, block->data() + got, block->size() - got, &read) && read > 0;
            got += read;
        }
    }
    platform::closeFile(file);
    return ok;
}

// ---- The text as code units --------------------------------------------------------------------

// The text as code units of one width and byte order, found the way pugixml finds them: from a
// byte-order mark, or from how the first '<' is spelled.
struct Units {
    const uint8_t* bytes;
    size_t size;
    size_t width = 1;
    bool bigEndian = false;

    size_t count() const { return size / width; }
    char32_t at(size_t i) const {
        if (width == 1) return bytes[i];
        char32_t unit = 0;
        for (size_t b = 0; b < width; ++b) {
            const size_t shift = bigEndian ? (width - 1 - b) * 8 : b * 8;
            unit |= char32_t(bytes[i * width + b]) << shift;
        }
        return unit;
    }
    // The index of the next unit `c` from `from` on, or count().
    size_t find(char c, size_t from) const {
        if (width == 1) {
            const void* found = from < size ? std::memchr(bytes + from, c, size - from) : nullptr;
            return found ? size_t(static_cast<const uint8_t*>(found) - bytes) : size;
        }
        while (from < count() && at(from) != char32_t(c))
            ++from;
        return from;
    }
    void put(char32_t unit, uint8_t* out) const {
        for (size_t b = 0; b < width; ++b) {
            const size_t shift = bigEndian ? (width - 1 - b) * 8 : b * 8;
            out[b] = uint8_t(unit >> shift);
        }
    }
};

bool startsWith(const Units& text, std::initializer_list<uint8_t> prefix) {
    return text.size >= prefix.size() && std::memcmp(text.bytes, prefix.begin(), prefix.size()) == 0;
}

void detectUnits(Units* units) {
    const Units& b = *units;
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

bool isDigit(char32_t unit) {
    return unit >= '0' && unit <= '9';
}

// Index just past `terminator` from `from`, or the end.
size_t skipPast(const Units& units, size_t from, const char* terminator) {
    const size_t length = std::strlen(terminator);
    for (size_t i = units.find(terminator[0], from); i + length <= units.count();
         i = units.find(terminator[0], i + 1)) {
        size_t k = 1;
        while (k < length && units.at(i + k) == char32_t(terminator[k]))
            ++k;
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

// ---- Where the guards go -----------------------------------------------------------------------

// The positions (in units) where a guard goes: the first character of each start or end tag
// name that is a digit. Comments, processing instructions, declarations and quoted attribute
// values are passed over whole.
std::vector<size_t> guardPositions(const Units& units) {
    std::vector<size_t> positions;
    const size_t n = units.count();
    for (size_t i = units.find('<', 0); i < n; i = units.find('<', i)) {
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

// Whether a '<' or "</" stands right before a digit somewhere: the only places where a guard
// can go, so that the full scan is needed for nothing else.
bool mayNeedGuards(const Units& units) {
    const size_t n = units.count();
    for (size_t i = units.find('<', 0); i + 1 < n; i = units.find('<', i + 1)) {
        size_t name = i + 1;
        if (units.at(name) == '/') ++name;
        if (name < n && isDigit(units.at(name))) return true;
    }
    return false;
}

// Whether a guard character followed by a digit stands anywhere: only then can a parsed
// element name look guarded.
bool mayHoldGuardedName(const Units& units) {
    for (size_t i = units.find(char(kNameGuard), 0); i + 1 < units.count();
         i = units.find(char(kNameGuard), i + 1))
        if (isDigit(units.at(i + 1))) return true;
    return false;
}

// The text with a guard unit before each position.
ParserBlock withGuards(const Units& units, const std::vector<size_t>& positions) {
    ParserBlock guarded(units.size + positions.size() * units.width);
    if (guarded.size() != units.size + positions.size() * units.width) return guarded;
    uint8_t* out = guarded.data();
    size_t from = 0;
    for (size_t position : positions) {
        const size_t at = position * units.width;
        std::memcpy(out, units.bytes + from, at - from);
        out += at - from;
        units.put(kNameGuard, out);
        out += units.width;
        from = at;
    }
    std::memcpy(out, units.bytes + from, units.size - from);
    return guarded;
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

} // namespace

bool loadXmlFile(pugi::xml_document& doc, const char16_t* path) {
    ParserBlock block;
    if (!readWholeFile(path, &block)) return false;
    if (block.size() == 0) return false; // pugixml finds no document element in nothing
    Units units{block.data(), block.size()};
    detectUnits(&units);
    const std::vector<size_t> guards = mayNeedGuards(units) ? guardPositions(units) : std::vector<size_t>();
    const bool removeGuards = !guards.empty() || mayHoldGuardedName(units);
    if (!guards.empty()) {
        block = withGuards(units, guards);
        if (!block.data()) return false;
    }
    if (!block.parseInto(doc)) return false;
    if (removeGuards) {
        GuardRemover remover;
        doc.traverse(remover);
    }
    return true;
}

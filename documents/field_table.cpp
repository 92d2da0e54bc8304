#include "documents/field_table.h"

#include "documents/texmap_blocks.h"

#include <cstring>

namespace {

// ---- Key paths ---------------------------------------------------------------------------------

// Element names of a path are short; a component that doesn't fit can't name an element of
// ours, so it is looked up as a name that matches nothing.
constexpr size_t kMaxComponent = 128;

// Copies the path component that starts at `begin` and ends before the next '/' or the end.
// Returns where the next component starts, or null after the last one.
const char* takeComponent(const char* begin, char (&out)[kMaxComponent]) {
    const char* end = begin;
    while (*end && *end != '/')
        ++end;
    const size_t length = static_cast<size_t>(end - begin);
    if (length < kMaxComponent) {
        std::memcpy(out, begin, length);
        out[length] = '\0';
    } else {
        std::memcpy(out, "/", 2); // no element is named "/"
    }
    return *end == '/' ? end + 1 : nullptr;
}

// The element that holds the last component of `key` when reading, and that component.
pugi::xml_node findHolder(pugi::xml_node section, const char* key, const char** leaf) {
    if (!std::strchr(key, '/')) {
        *leaf = key;
        return section;
    }
    char component[kMaxComponent];
    const char* rest = key;
    for (const char* next = takeComponent(rest, component); next; next = takeComponent(rest, component)) {
        section = section.child(component);
        rest = next;
    }
    *leaf = rest;
    return section;
}

// The same for writing: sections along the path are found, or appended when not there yet, so
// that all keys below one section land in one element.
pugi::xml_node makeHolder(pugi::xml_node section, const char* key, const char** leaf) {
    char component[kMaxComponent];
    const char* rest = key;
    for (const char* next = takeComponent(rest, component); next; next = takeComponent(rest, component)) {
        if (section.type() != pugi::node_element) {
            section = pugi::xml_node();
        } else {
            pugi::xml_node child = section.child(component);
            section = child ? child : section.append_child(component);
        }
        rest = next;
    }
    *leaf = rest;
    return section;
}

// ---- Copying values in and out -----------------------------------------------------------------

template <class T> T load(const uint8_t* at) {
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

template <class T> void store(uint8_t* at, const T& value) {
    std::memcpy(at, &value, sizeof value);
}

// Reads one value through a typed reader, on a copy, so record offsets need no alignment.
template <class T, class Reader> void readValue(uint8_t* at, Reader reader) {
    T value = load<T>(at);
    reader(&value);
    store(at, value);
}

// The same checks as at compile time, for tables that were not checked there: a field that
// is malformed or lies outside the record is passed by.
bool fieldInside(const FieldDescriptor& field, size_t recordSize) {
    const uint32_t limit = recordSize > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(recordSize);
    return fieldFits(field, limit) && fieldHasExtras(field);
}

} // namespace

// ---- Reading -----------------------------------------------------------------------------------

namespace {

// ---- Finding keys

// Finds children by name as pugi::xml_node::child finds them, the first child of the name, and
// quickly when the names are asked in the order of the children, as the documents' writer puts
// them out: the child after the last one found is tried first. It is taken only if no child ahead
// of it can bear the name: the children passed so far were each taken as the first of their
// name, and their names are kept as bits of a hash. Any other lookup goes through child().
class ChildCursor {
  public:
    pugi::xml_node find(pugi::xml_node parent, const char* name) {
        if (parent != parent_) {
            parent_ = parent;
            next_ = parent.first_child();
            std::memset(taken_, 0, sizeof taken_);
        }
        while (next_ && *next_.name() == '\0')
            next_ = next_.next_sibling();
        if (next_ && XmlNameEquals(next_.name(), name)) {
            const uint8_t bit = hashOf(name);
            uint64_t& word = taken_[bit / 64];
            const uint64_t mask = uint64_t(1) << (bit % 64);
            if (!(word & mask)) {
                word |= mask;
                const pugi::xml_node found = next_;
                next_ = next_.next_sibling();
                return found;
            }
        }
        return parent.child(name);
    }

  private:
    static uint8_t hashOf(const char* name) {
        uint32_t hash = 2166136261u;
        for (; *name; ++name)
            hash = (hash ^ uint8_t(*name)) * 16777619u;
        return uint8_t(hash ^ hash >> 8 ^ hash >> 16 ^ hash >> 24);
    }

    pugi::xml_node parent_;
    pugi::xml_node next_;
    uint64_t taken_[4] = {};
};

// The elements of a table's keys below one section, found as findHolder and child() find them.
// Keys in sections ("Base/BaseColor") mostly follow each other, so the holder of the last one
// is kept.
class KeyFinder {
  public:
    explicit KeyFinder(pugi::xml_node section) : section_(section) {}

    pugi::xml_node find(const char* key, pugi::xml_node* holder, const char** leaf) {
        const char* slash = std::strrchr(key, '/');
        if (!slash) {
            *holder = section_;
            *leaf = key;
            return top_.find(section_, key);
        }
        const size_t pathLength = static_cast<size_t>(slash - key);
        if (!lastPath_ || pathLength != lastPathLength_ || std::strncmp(key, lastPath_, pathLength) != 0) {
            lastHolder_ = findHolder(section_, key, leaf);
            lastPath_ = key;
            lastPathLength_ = pathLength;
        }
        *holder = lastHolder_;
        *leaf = slash + 1;
        return lastHolder_ == section_ ? top_.find(section_, *leaf) : inner_.find(lastHolder_, *leaf);
    }

  private:
    pugi::xml_node section_;
    ChildCursor top_, inner_;
    const char* lastPath_ = nullptr;
    size_t lastPathLength_ = 0;
    pugi::xml_node lastHolder_;
};

// Reads one row whose key's element (null when missing) has been found below `parent`; `key` is
// the last component of the row's key.
void readRow(const FieldDescriptor& field, pugi::xml_node parent, const char* key, pugi::xml_node element,
             uint8_t* record, size_t recordSize, ITaviNameInterface* names) {
    uint8_t* at = record + field.offset;
    // The codec reads the element itself when given no key.
    constexpr const char* kFound = nullptr;
    switch (field.kind) {
    case FieldKind::Section:
        break;
    case FieldKind::Int:
        readValue<int32_t>(at, [&](int32_t* v) { XmlReadInt(element, kFound, v); });
        break;
    case FieldKind::UInt:
        readValue<uint32_t>(at, [&](uint32_t* v) { XmlReadInt(element, kFound, v); });
        break;
    case FieldKind::Int16:
        readValue<int16_t>(at, [&](int16_t* v) { XmlReadInt(element, kFound, v); });
        break;
    case FieldKind::Float:
        readValue<float>(at, [&](float* v) { XmlReadFloat(element, kFound, v); });
        break;
    case FieldKind::Bool:
        readValue<uint8_t>(at, [&](uint8_t* v) { XmlReadBool(element, kFound, v); });
        break;
    case FieldKind::String: {
        char16_t text[kMaxStringChars];
        const size_t capacity = field.width / 2;
        std::memcpy(text, at, capacity * sizeof(char16_t));
        XmlReadString(element, kFound, text, capacity);
        std::memcpy(at, text, capacity * sizeof(char16_t));
        break;
    }
    case FieldKind::Enum:
        readValue<int32_t>(at, [&](int32_t* v) { XmlReadEnum(element, kFound, v, field.words); });
        break;
    case FieldKind::Color:
        readValue<ColorRGB>(at, [&](ColorRGB* v) { XmlReadColor(element, kFound, v); });
        break;
    case FieldKind::ColorEx:
        readValue<ColorEx>(at, [&](ColorEx* v) { XmlReadColorEx(element, kFound, v); });
        break;
    case FieldKind::Matrix:
        readValue<Matrix3x4>(at, [&](Matrix3x4* v) { XmlReadMatrix(element, kFound, v); });
        break;
    case FieldKind::Spline: {
        SplineSegment segments[kMaxSplineSegments];
        const size_t count = field.width / sizeof(SplineSegment);
        std::memcpy(segments, at, count * sizeof(SplineSegment));
        XmlReadSplineElement(element, segments, count);
        std::memcpy(at, segments, count * sizeof(SplineSegment));
        break;
    }
    case FieldKind::ColorSpline: {
        ColorSplineSegment segments[kColorSplineSegments];
        std::memcpy(segments, at, sizeof segments);
        XmlReadColorSplineElement(element, segments);
        std::memcpy(at, segments, sizeof segments);
        break;
    }
    case FieldKind::TexMapRef:
        readValue<int32_t>(at, [&](int32_t* v) { XmlReadTexMapRef(element, kFound, v, names); });
        break;
    case FieldKind::MaterialRef:
        readValue<int32_t>(at, [&](int32_t* v) { XmlReadMaterialRef(element, kFound, v, names); });
        break;
    case FieldKind::TextureRef:
        readValue<int32_t>(at, [&](int32_t* v) { XmlReadTextureRef(element, kFound, v, names); });
        break;
    case FieldKind::CoordGen:
        readValue<CoordGen>(at, [&](CoordGen* v) { ReadCoordGen(element, v); });
        break;
    case FieldKind::ColorOutput:
        readValue<ColorOutput>(at, [&](ColorOutput* v) { ReadColorOutput(element, v); });
        break;
    case FieldKind::Custom:
        // Repeated elements go by their siblings of the same name, so the hooks look for themselves.
        if (field.custom && field.custom->read)
            field.custom->read(parent, key, field, record, recordSize, names);
        break;
    }
}

} // namespace

void readField(const FieldDescriptor& field, pugi::xml_node section, uint8_t* record, size_t recordSize,
               ITaviNameInterface* names) {
    if ((field.flags & kFieldWriteOnly) || !fieldInside(field, recordSize)) return;
    const char* key = nullptr;
    const pugi::xml_node parent = findHolder(section, field.key, &key);
    readRow(field, parent, key, parent.child(key), record, recordSize, names);
}

void readFields(const FieldDescriptor* fields, size_t count, pugi::xml_node section, uint8_t* record,
                size_t recordSize, ITaviNameInterface* names) {
    KeyFinder finder(section);
    for (size_t i = 0; i < count; ++i) {
        const FieldDescriptor& field = fields[i];
        if ((field.flags & kFieldWriteOnly) || !fieldInside(field, recordSize)) continue;
        pugi::xml_node parent;
        const char* key = nullptr;
        const pugi::xml_node element = finder.find(field.key, &parent, &key);
        readRow(field, parent, key, element, record, recordSize, names);
    }
}

// ---- Writing and walking -----------------------------------------------------------------------

void writeField(const FieldDescriptor& field, pugi::xml_node section, const uint8_t* record,
                size_t recordSize, ITaviNameInterface* names) {
    if ((field.flags & kFieldReadOnly) || !fieldInside(field, recordSize)) return;
    const char* key = nullptr;
    pugi::xml_node parent = makeHolder(section, field.key, &key);
    const uint8_t* at = record + field.offset;
    switch (field.kind) {
    case FieldKind::Section:
        if (parent.type() == pugi::node_element && !parent.child(key)) parent.append_child(key);
        break;
    case FieldKind::Int: {
        const auto value = load<int32_t>(at);
        XmlWriteInt(parent, key, &value);
        break;
    }
    case FieldKind::UInt: {
        const auto value = load<uint32_t>(at);
        XmlWriteUInt(parent, key, &value);
        break;
    }
    case FieldKind::Int16: {
        const auto value = load<int16_t>(at);
        XmlWriteInt(parent, key, &value);
        break;
    }
    case FieldKind::Float: {
        const auto value = load<float>(at);
        XmlWriteFloat(parent, key, &value);
        break;
    }
    case FieldKind::Bool: {
        const auto value = load<uint8_t>(at);
        XmlWriteBool(parent, key, &value);
        break;
    }
    case FieldKind::String: {
        // The record's text need not be terminated; the copy is.
        char16_t text[kMaxStringChars + 1] = {};
        std::memcpy(text, at, field.width);
        XmlWriteString(parent, key, text);
        break;
    }
    case FieldKind::Enum: {
        const auto value = load<int32_t>(at);
        XmlWriteEnum(parent, key, &value, field.words);
        break;
    }
    case FieldKind::Color: {
        const auto value = load<ColorRGB>(at);
        XmlWriteColor(parent, key, &value);
        break;
    }
    case FieldKind::ColorEx: {
        const auto value = load<ColorEx>(at);
        XmlWriteColorEx(parent, key, &value);
        break;
    }
    case FieldKind::Matrix: {
        const auto value = load<Matrix3x4>(at);
        XmlWriteMatrix(parent, key, &value);
        break;
    }
    case FieldKind::Spline: {
        SplineSegment segments[kMaxSplineSegments];
        const size_t count = field.width / sizeof(SplineSegment);
        std::memcpy(segments, at, count * sizeof(SplineSegment));
        XmlWriteSpline(parent, key, segments, count);
        break;
    }
    case FieldKind::ColorSpline: {
        ColorSplineSegment segments[kColorSplineSegments];
        std::memcpy(segments, at, sizeof segments);
        XmlWriteColorSpline(parent, key, segments);
        break;
    }
    case FieldKind::TexMapRef: {
        const auto value = load<int32_t>(at);
        XmlWriteTexMapRef(parent, key, &value, names);
        break;
    }
    case FieldKind::MaterialRef: {
        const auto value = load<int32_t>(at);
        XmlWriteMaterialRef(parent, key, &value, names);
        break;
    }
    case FieldKind::TextureRef: {
        const auto value = load<int32_t>(at);
        XmlWriteTextureRef(parent, key, &value, names);
        break;
    }
    case FieldKind::CoordGen: {
        const auto value = load<CoordGen>(at);
        WriteCoordGen(parent.type() == pugi::node_element ? parent.append_child(key) : pugi::xml_node(),
                      &value);
        break;
    }
    case FieldKind::ColorOutput: {
        const auto value = load<ColorOutput>(at);
        WriteColorOutput(parent.type() == pugi::node_element ? parent.append_child(key) : pugi::xml_node(),
                         &value);
        break;
    }
    case FieldKind::Custom:
        if (field.custom && field.custom->write)
            field.custom->write(parent, key, field, record, recordSize, names);
        break;
    }
}

void writeFields(const FieldDescriptor* fields, size_t count, pugi::xml_node section, const uint8_t* record,
                 size_t recordSize, ITaviNameInterface* names) {
    for (size_t i = 0; i < count; ++i)
        writeField(fields[i], section, record, recordSize, names);
}

// ---- References --------------------------------------------------------------------------------

void forEachReference(const FieldDescriptor* fields, size_t count, const uint8_t* record, size_t recordSize,
                      const ReferenceVisitor& visit) {
    for (size_t i = 0; i < count; ++i) {
        const FieldDescriptor& field = fields[i];
        if ((field.flags & kFieldReadOnly) || !fieldInside(field, recordSize)) continue;
        switch (field.kind) {
        case FieldKind::TexMapRef:
            visit(ReferenceKind::TexMap, load<int32_t>(record + field.offset));
            break;
        case FieldKind::MaterialRef:
            visit(ReferenceKind::Material, load<int32_t>(record + field.offset));
            break;
        case FieldKind::TextureRef:
            visit(ReferenceKind::Texture, load<int32_t>(record + field.offset));
            break;
        case FieldKind::Custom:
            if (field.custom->references) field.custom->references(field, record, recordSize, visit);
            break;
        default:
            break;
        }
    }
}

void forEachReference(const TypeDescriptor& table, const uint8_t* record, size_t recordSize,
                      const ReferenceVisitor& visit) {
    const size_t length = table.imageLength < recordSize ? table.imageLength : recordSize;
    forEachReference(table.fields, table.fieldCount, record, length, visit);
}

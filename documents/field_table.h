// Field tables: a material or texmap type is data, not code.
//
// A type is a TypeDescriptor: its number, its word, the length of its record image and its
// fields in document order. One interpreter reads any table from a document into a record, and
// one writes any table from a record into a document; the write is also the reference walk,
// since it asks the name interface for every reference in table order. Both work on the raw
// record bytes (base + offset), copy each value out and back with memcpy, and skip a field
// that would not lie inside the record they are given.
//
// Keys are paths below the type's section, with '/' between element names
// ("Absorption/AbsorptionColor"). A Section row names an element that only holds further keys:
// the writer appends it (a later key under the same path goes into it), the reader passes it by.
//
// Family files only add tables, e.g.
//   constexpr FieldDescriptor kEmissionFields[] = {
//       colorField("EmissionColor", 268), texMapField("EmissionMap", 280),
//       splineField("SplineIntensity", 304, 8), sectionField("TwoSided")};
//   static_assert(fieldsFit(kEmissionFields, kMaterialImageLength));
#pragma once
#include "documents/xml_value_codec.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>

class ITaviNameInterface;

enum class FieldKind : uint8_t {
    Section,     // element holding further keys; no value
    Int,         // i32, attribute value
    UInt,        // u32, attribute value
    Int16,       // int kept in 16 bits
    Float,       // f32
    Bool,        // one byte, 0 or 1
    String,      // char16_t[width / 2], terminator included
    Enum,        // i32 index into `words`
    Color,       // ColorRGB
    ColorEx,     // ColorEx
    Matrix,      // Matrix3x4, transposed in the document
    Spline,      // `segments` SplineSegment
    ColorSpline, // 4 ColorSplineSegment
    TexMapRef,   // i32 texmap id, attribute name
    MaterialRef, // i32 material id, attribute name
    TextureRef,  // i32 texture id, attribute value
    CoordGen,    // the shared coordinate block of texture maps
    ColorOutput, // the shared output block of texture maps
    Custom,      // a repeated element or other shape with code of its own, see CustomField
};

// Field flags: the few fields that only one direction knows.
constexpr uint8_t kFieldReadOnly = 1;  // the writer and the walk leave it out
constexpr uint8_t kFieldWriteOnly = 2; // the reader leaves it out

struct FieldDescriptor;

// What a reference names. A model list holds handles, and models have no names to ask for, so a
// model reference carries no id.
enum class ReferenceKind : uint8_t { Texture, TexMap, Material, Model };
using ReferenceVisitor = std::function<void(ReferenceKind kind, int32_t id)>;

// Hooks of a Custom field. `parent` is the element that holds the field's key, `key` the last
// component of the field's key path (the name of the field's own element), `record` the whole
// record of `recordSize` bytes; the hook finds its bytes at field.offset and must stay within
// field.width. `references` visits what the writer names, in the writer's order; a field that
// names nothing has none.
struct CustomField {
    void (*read)(pugi::xml_node parent, const char* key, const FieldDescriptor& field, uint8_t* record,
                 size_t recordSize, ITaviNameInterface* names);
    void (*write)(pugi::xml_node parent, const char* key, const FieldDescriptor& field, const uint8_t* record,
                  size_t recordSize, ITaviNameInterface* names);
    void (*references)(const FieldDescriptor& field, const uint8_t* record, size_t recordSize,
                       const ReferenceVisitor& visit) = nullptr;
};

struct FieldDescriptor {
    const char* key;
    FieldKind kind;
    uint32_t offset;
    uint32_t width; // bytes in the record
    WordTable words = nullptr;
    uint32_t segments = 0; // scalar spline segments
    uint8_t flags = 0;
    const CustomField* custom = nullptr;
};

struct TypeDescriptor {
    int32_t type;
    const char* word;     // the type's word in its kind's word table, null for none
    uint32_t imageLength; // bytes of the record that the type occupies
    const FieldDescriptor* fields;
    size_t fieldCount;
    // Texture maps of the mapped shape carry CoordGen and ColorOutput under the document root,
    // at fixed places of the record, ahead of their own fields.
    bool mapped = false;
    // For the image maps: the read's result is whether the texture id at this offset is set
    // (not -1). 0 means the read succeeds once the document has parsed.
    uint32_t resultTextureOffset = 0;
};

// ---- Widths of the kinds -----------------------------------------------------------------------

constexpr uint32_t kSplineSegmentBytes = sizeof(SplineSegment);
constexpr uint32_t kMaxSplineSegments = 32;
constexpr uint32_t kMaxStringChars = 512;
constexpr uint32_t kCoordGenBytes = 0x90;
constexpr uint32_t kColorOutputBytes = 0x420;

// The width a field of this kind must have; 0 where the kind doesn't fix it.
constexpr uint32_t fixedWidth(FieldKind kind) {
    switch (kind) {
    case FieldKind::Int:
    case FieldKind::UInt:
    case FieldKind::Float:
    case FieldKind::Enum:
    case FieldKind::TexMapRef:
    case FieldKind::MaterialRef:
    case FieldKind::TextureRef:
        return 4;
    case FieldKind::Int16:
        return 2;
    case FieldKind::Bool:
        return 1;
    case FieldKind::Color:
        return sizeof(ColorRGB);
    case FieldKind::ColorEx:
        return sizeof(ColorEx);
    case FieldKind::Matrix:
        return sizeof(Matrix3x4);
    case FieldKind::ColorSpline:
        return kColorSplineSegments * sizeof(ColorSplineSegment);
    case FieldKind::CoordGen:
        return kCoordGenBytes;
    case FieldKind::ColorOutput:
        return kColorOutputBytes;
    case FieldKind::Section:
    case FieldKind::String:
    case FieldKind::Spline:
    case FieldKind::Custom:
        return 0;
    }
    return 0;
}

// ---- Compile-time checks -----------------------------------------------------------------------

// A field is well formed when it has a key, its width suits its kind, and it lies within `limit`
// bytes of the record.
constexpr bool fieldFits(const FieldDescriptor& field, uint32_t limit) {
    if (!field.key || field.key[0] == '\0') return false;
    switch (field.kind) {
    case FieldKind::Section:
        return field.offset == 0 && field.width == 0;
    case FieldKind::String:
        if (field.width < 2 || field.width % 2 != 0 || field.width / 2 > kMaxStringChars) return false;
        break;
    case FieldKind::Spline:
        if (field.segments == 0 || field.segments > kMaxSplineSegments) return false;
        if (field.width != field.segments * kSplineSegmentBytes) return false;
        break;
    default:
        break;
    }
    if (fixedWidth(field.kind) != 0 && field.width != fixedWidth(field.kind)) return false;
    return field.offset <= limit && field.width <= limit - field.offset;
}

// Whether the extras that a kind needs are there: an enum's word table, a custom field's hooks.
// Not a compile-time check, since under the sanitizers a pointer compared with null is no
// constant expression; the interpreter asks it before each field.
inline bool fieldHasExtras(const FieldDescriptor& field) {
    if (field.kind == FieldKind::Enum) return field.words != nullptr;
    if (field.kind == FieldKind::Custom) return field.custom && field.custom->read && field.custom->write;
    return true;
}

template <size_t N> constexpr bool fieldsFit(const FieldDescriptor (&fields)[N], uint32_t limit) {
    for (size_t i = 0; i < N; ++i) {
        if (!fieldFits(fields[i], limit)) return false;
    }
    return true;
}

// A type is well formed when its fields fit its image, and the image fits the record.
constexpr bool typeFits(const TypeDescriptor& type, uint32_t recordBytes) {
    if (type.imageLength > recordBytes) return false;
    for (size_t i = 0; i < type.fieldCount; ++i) {
        if (!fieldFits(type.fields[i], type.imageLength)) return false;
    }
    return true;
}

// ---- Building rows -----------------------------------------------------------------------------

constexpr FieldDescriptor sectionField(const char* key) {
    return {key, FieldKind::Section, 0, 0};
}
constexpr FieldDescriptor intField(const char* key, uint32_t offset) {
    return {key, FieldKind::Int, offset, 4};
}
constexpr FieldDescriptor uintField(const char* key, uint32_t offset) {
    return {key, FieldKind::UInt, offset, 4};
}
constexpr FieldDescriptor int16Field(const char* key, uint32_t offset) {
    return {key, FieldKind::Int16, offset, 2};
}
constexpr FieldDescriptor floatField(const char* key, uint32_t offset) {
    return {key, FieldKind::Float, offset, 4};
}
constexpr FieldDescriptor boolField(const char* key, uint32_t offset) {
    return {key, FieldKind::Bool, offset, 1};
}
constexpr FieldDescriptor stringField(const char* key, uint32_t offset, uint32_t capacity) {
    return {key, FieldKind::String, offset, capacity * 2};
}
constexpr FieldDescriptor enumField(const char* key, uint32_t offset, WordTable words) {
    return {key, FieldKind::Enum, offset, 4, words};
}
constexpr FieldDescriptor colorField(const char* key, uint32_t offset) {
    return {key, FieldKind::Color, offset, sizeof(ColorRGB)};
}
constexpr FieldDescriptor colorExField(const char* key, uint32_t offset) {
    return {key, FieldKind::ColorEx, offset, sizeof(ColorEx)};
}
constexpr FieldDescriptor matrixField(const char* key, uint32_t offset) {
    return {key, FieldKind::Matrix, offset, sizeof(Matrix3x4)};
}
constexpr FieldDescriptor splineField(const char* key, uint32_t offset, uint32_t segments) {
    return {key, FieldKind::Spline, offset, segments * kSplineSegmentBytes, nullptr, segments};
}
constexpr FieldDescriptor colorSplineField(const char* key, uint32_t offset) {
    return {key, FieldKind::ColorSpline, offset, fixedWidth(FieldKind::ColorSpline)};
}
constexpr FieldDescriptor texMapField(const char* key, uint32_t offset) {
    return {key, FieldKind::TexMapRef, offset, 4};
}
constexpr FieldDescriptor materialField(const char* key, uint32_t offset) {
    return {key, FieldKind::MaterialRef, offset, 4};
}
constexpr FieldDescriptor textureField(const char* key, uint32_t offset) {
    return {key, FieldKind::TextureRef, offset, 4};
}
constexpr FieldDescriptor coordGenField(const char* key, uint32_t offset) {
    return {key, FieldKind::CoordGen, offset, kCoordGenBytes};
}
constexpr FieldDescriptor colorOutputField(const char* key, uint32_t offset) {
    return {key, FieldKind::ColorOutput, offset, kColorOutputBytes};
}
constexpr FieldDescriptor customField(const char* key, uint32_t offset, uint32_t width,
                                      const CustomField* custom) {
    return {key, FieldKind::Custom, offset, width, nullptr, 0, 0, custom};
}
constexpr FieldDescriptor readOnly(FieldDescriptor field) {
    field.flags |= kFieldReadOnly;
    return field;
}
constexpr FieldDescriptor writeOnly(FieldDescriptor field) {
    field.flags |= kFieldWriteOnly;
    return field;
}

template <size_t N>
constexpr TypeDescriptor describeType(int32_t type, const char* word, uint32_t imageLength,
                                      const FieldDescriptor (&fields)[N]) {
    return {type, word, imageLength, fields, N};
}
template <size_t N>
constexpr TypeDescriptor describeType(int32_t type, const char* word, uint32_t imageLength,
                                      const std::array<FieldDescriptor, N>& fields) {
    return {type, word, imageLength, fields.data(), N};
}

// Tables made of pieces, for types that insert a section among the keys of another.
template <class Rows> struct RowCount;
template <size_t N> struct RowCount<FieldDescriptor[N]> {
    static constexpr size_t value = N;
};
template <size_t N> struct RowCount<std::array<FieldDescriptor, N>> {
    static constexpr size_t value = N;
};

template <class... Pieces>
constexpr std::array<FieldDescriptor, (RowCount<Pieces>::value + ...)> joinFields(const Pieces&... pieces) {
    std::array<FieldDescriptor, (RowCount<Pieces>::value + ...)> joined{};
    size_t at = 0;
    auto append = [&](const auto& piece) {
        for (const FieldDescriptor& row : piece)
            joined[at++] = row;
    };
    (append(pieces), ...);
    return joined;
}

// ---- The interpreter ---------------------------------------------------------------------------

// Reads every field of the table from below `section` (null allowed: every key is missing) into
// the record of `recordSize` bytes.
void readFields(const FieldDescriptor* fields, size_t count, pugi::xml_node section, uint8_t* record,
                size_t recordSize, ITaviNameInterface* names);
// Appends every field of the table below `section` (null allowed: only the name calls happen),
// in table order.
void writeFields(const FieldDescriptor* fields, size_t count, pugi::xml_node section, const uint8_t* record,
                 size_t recordSize, ITaviNameInterface* names);

// Visits every reference that the writer would name, in its order: each reference row, set or
// not, and what the repeated elements name. Rows the writer leaves out are left out here as well.
// The table form takes at most the type's image of the record.
void forEachReference(const TypeDescriptor& table, const uint8_t* record, size_t recordSize,
                      const ReferenceVisitor& visit);
void forEachReference(const FieldDescriptor* fields, size_t count, const uint8_t* record, size_t recordSize,
                      const ReferenceVisitor& visit);

// One field; the table forms call these in order.
void readField(const FieldDescriptor& field, pugi::xml_node section, uint8_t* record, size_t recordSize,
               ITaviNameInterface* names);
void writeField(const FieldDescriptor& field, pugi::xml_node section, const uint8_t* record,
                size_t recordSize, ITaviNameInterface* names);

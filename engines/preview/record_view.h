// Reads a material or texmap record by the keys of its type's field table, so that the engine
// knows no offset of its own: the table that reads a document into a record also tells the
// engine where each value lies. Used while a record is compiled (during add...), never per ray.
#pragma once
#include "documents/field_table.h"
#include "engines/preview/vec3.h"
#include "scene/records.h"

#include <cstddef>
#include <cstdint>

namespace preview {

class RecordView {
  public:
    // `type` may be null (a type without a table): every key is then absent.
    RecordView(const void* record, size_t recordBytes, const TypeDescriptor* type)
        : record_(static_cast<const uint8_t*>(record)), bytes_(recordBytes), type_(type) {}
    static RecordView material(const MaterialRecord& record);
    static RecordView texMap(const TexMapRecord& record);

    const TypeDescriptor* type() const { return type_; }
    // The row of `key` ("Absorption/AbsorptionColor"), or null when the table has none or the
    // field does not lie inside the record.
    const FieldDescriptor* field(const char* key) const;
    bool has(const char* key) const { return field(key) != nullptr; }

    float real(const char* key, float fallback = 0) const;
    int32_t integer(const char* key, int32_t fallback = 0) const; // Int, UInt, Int16, Enum
    bool flag(const char* key, bool fallback = false) const;
    Color color(const char* key, Color fallback = Color(0)) const; // Color and ColorEx (RGB part)
    // Ids of references; -1 when absent.
    int32_t texMap(const char* key) const;
    int32_t material(const char* key) const;
    int32_t texture(const char* key) const;
    // A spline's segments; `count` receives how many (0 when absent).
    const SplineSegment* spline(const char* key, uint32_t* count) const;
    // The raw bytes of a block field (CoordGen, ColorOutput, Matrix, Custom), or null.
    const uint8_t* bytes(const char* key, uint32_t expectedWidth) const;

  private:
    const uint8_t* record_;
    size_t bytes_;
    const TypeDescriptor* type_;
};

// The value of a scalar spline at `t`: the first segment that is switched on and covers `t`
// (cubic Bezier in value over the segment's parameter span), else `fallback`.
float evaluateSpline(const SplineSegment* segments, uint32_t count, float t, float fallback);

} // namespace preview

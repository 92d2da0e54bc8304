#include "engines/preview/record_view.h"

#include "documents/materials/material_types.h"
#include "documents/texmaps/texmap_types.h"

#include <cstring>

namespace preview {

namespace {

template <class T> T load(const uint8_t* at) {
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

} // namespace

RecordView RecordView::material(const MaterialRecord& record) {
    return RecordView(&record, sizeof record, findMaterialType(record.type));
}

RecordView RecordView::texMap(const TexMapRecord& record) {
    return RecordView(&record, sizeof record, findTexMapType(record.type));
}

const FieldDescriptor* RecordView::field(const char* key) const {
    if (!type_) return nullptr;
    for (size_t i = 0; i < type_->fieldCount; ++i) {
        const FieldDescriptor& row = type_->fields[i];
        if (row.kind == FieldKind::Section || std::strcmp(row.key, key) != 0) continue;
        if (row.offset > bytes_ || row.width > bytes_ - row.offset) return nullptr;
        return &row;
    }
    return nullptr;
}

float RecordView::real(const char* key, float fallback) const {
    const FieldDescriptor* row = field(key);
    if (!row) return fallback;
    switch (row->kind) {
    case FieldKind::Float: return load<float>(record_ + row->offset);
    case FieldKind::Int:
    case FieldKind::Enum: return static_cast<float>(load<int32_t>(record_ + row->offset));
    case FieldKind::UInt: return static_cast<float>(load<uint32_t>(record_ + row->offset));
    case FieldKind::Int16: return static_cast<float>(load<int16_t>(record_ + row->offset));
    case FieldKind::Bool: return record_[row->offset] ? 1.0f : 0.0f;
    default: return fallback;
    }
}

int32_t RecordView::integer(const char* key, int32_t fallback) const {
    const FieldDescriptor* row = field(key);
    if (!row) return fallback;
    switch (row->kind) {
    case FieldKind::Int:
    case FieldKind::UInt:
    case FieldKind::Enum: return load<int32_t>(record_ + row->offset);
    case FieldKind::Int16: return load<int16_t>(record_ + row->offset);
    case FieldKind::Bool: return record_[row->offset] ? 1 : 0;
    case FieldKind::Float: return static_cast<int32_t>(load<float>(record_ + row->offset));
    default: return fallback;
    }
}

bool RecordView::flag(const char* key, bool fallback) const {
    const FieldDescriptor* row = field(key);
    if (!row) return fallback;
    if (row->kind == FieldKind::Bool) return record_[row->offset] != 0;
    return integer(key, fallback ? 1 : 0) != 0;
}

Color RecordView::color(const char* key, Color fallback) const {
    const FieldDescriptor* row = field(key);
    if (!row || (row->kind != FieldKind::Color && row->kind != FieldKind::ColorEx)) return fallback;
    const ColorRGB rgb = load<ColorRGB>(record_ + row->offset);
    return {rgb.R, rgb.G, rgb.B};
}

namespace {

int32_t reference(const RecordView& view, const char* key, FieldKind kind, const uint8_t* record) {
    const FieldDescriptor* row = view.field(key);
    if (!row || row->kind != kind) return -1;
    return load<int32_t>(record + row->offset);
}

} // namespace

int32_t RecordView::texMap(const char* key) const { return reference(*this, key, FieldKind::TexMapRef, record_); }
int32_t RecordView::material(const char* key) const {
    return reference(*this, key, FieldKind::MaterialRef, record_);
}
int32_t RecordView::texture(const char* key) const {
    return reference(*this, key, FieldKind::TextureRef, record_);
}

const SplineSegment* RecordView::spline(const char* key, uint32_t* count) const {
    const FieldDescriptor* row = field(key);
    *count = 0;
    if (!row || row->kind != FieldKind::Spline) return nullptr;
    *count = row->segments;
    // Records are 8-byte aligned and segments are four-byte floats at four-byte offsets.
    return reinterpret_cast<const SplineSegment*>(record_ + row->offset);
}

const uint8_t* RecordView::bytes(const char* key, uint32_t expectedWidth) const {
    const FieldDescriptor* row = field(key);
    if (!row || row->width != expectedWidth) return nullptr;
    return record_ + row->offset;
}

float evaluateSpline(const SplineSegment* segments, uint32_t count, float t, float fallback) {
    for (uint32_t i = 0; i < count; ++i) {
        const SplineSegment& s = segments[i];
        if (!(s.ts <= s.te) || t < s.ts || t > s.te) continue;
        const float span = s.te - s.ts;
        const float u = span > 0 && std::isfinite(span) ? (t - s.ts) / span : 0.0f;
        const float v = 1 - u;
        const float value = v * v * v * s.vs + 3 * v * v * u * s.v1 + 3 * v * u * u * s.v2 + u * u * u * s.ve;
        return std::isfinite(value) ? value : fallback;
    }
    return fallback;
}

} // namespace preview

#include "engines/preview/materials/field_reader.h"

#include <cstring>

namespace preview {

float FieldReader::finite(float value, float fallback) {
    if (std::isfinite(value)) return value;
    sawNonFinite_ = true;
    return fallback;
}

float FieldReader::real(const char* key, float fallback) { return finite(view_.real(key, fallback), fallback); }

Color FieldReader::color(const char* key, Color fallback) {
    const Color raw = view_.color(key, fallback);
    return vmax(Color(finite(raw.x, fallback.x), finite(raw.y, fallback.y), finite(raw.z, fallback.z)), Color(0));
}

float FieldReader::splineStart(const char* key, float fallback) {
    uint32_t count = 0;
    const SplineSegment* segments = view_.spline(key, &count);
    for (uint32_t i = 0; i < count; ++i) {
        SplineSegment segment;
        std::memcpy(&segment, segments + i, sizeof segment);
        if (segment.ts <= segment.te) return finite(segment.vs, fallback);
    }
    return fallback;
}

Color FieldReader::colorSplineStart(const char* key, Color fallback) {
    const uint32_t width = fixedWidth(FieldKind::ColorSpline);
    const uint8_t* bytes = view_.bytes(key, width);
    if (!bytes || view_.field(key)->kind != FieldKind::ColorSpline) return fallback;
    for (uint32_t at = 0; at + sizeof(ColorSplineSegment) <= width; at += sizeof(ColorSplineSegment)) {
        ColorSplineSegment segment;
        std::memcpy(&segment, bytes + at, sizeof segment);
        if (!(segment.ts <= segment.te)) continue;
        return vmax(Color(finite(segment.vs[0], fallback.x), finite(segment.vs[1], fallback.y),
                          finite(segment.vs[2], fallback.z)),
                    Color(0));
    }
    return fallback;
}

TexturedColor FieldReader::texturedColor(const char* colorKey, const char* mapKey, Color fallback) {
    TexturedColor out;
    out.value = color(colorKey, fallback);
    out.map = mapKey ? view_.texMap(mapKey) : -1;
    return out;
}

TexturedScalar FieldReader::texturedScalar(const char* valueKey, const char* mapKey, float fallback) {
    return {real(valueKey, fallback), mapKey ? view_.texMap(mapKey) : -1};
}

} // namespace preview

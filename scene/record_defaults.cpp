#include "scene/record_defaults.h"

#include <cstdint>
#include <cstring>

namespace {

float fromBits(uint32_t bits) {
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// The abscissas of a segment that covers everything: -1e30, -1e31, 1e30, 1e30, exactly.
const float kSpanStart = fromBits(0xF149F2CA);
const float kSpanInner = fromBits(0xF2FC6F7C);
const float kSpanEnd = fromBits(0x7149F2CA);
const float kPi = fromBits(0x40490FDB);

void setColorSpline(ColorSplineSegment* segments, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        ColorSplineSegment& s = segments[i];
        s = ColorSplineSegment{};
        for (int c = 0; c < 3; ++c) {
            s.t1[c] = -1.0f;
            s.t2[c] = 1.0f;
            s.vs[c] = s.v1[c] = s.v2[c] = s.ve[c] = 1.0f;
        }
    }
}

} // namespace

void setConstantSpline(SplineSegment* segments, size_t count, float value) {
    if (count == 0) return;
    switchOffSpline(segments + 1, count - 1);
    segments[0] = SplineSegment{kSpanStart, kSpanInner, kSpanEnd, kSpanEnd, value, value, value, value};
}

void switchOffSpline(SplineSegment* segments, size_t count) {
    for (size_t i = 0; i < count; ++i)
        segments[i] = SplineSegment{1.0f, 0, 0, 0, 0, 0, 0, 0};
}

void initCameraRecord(CameraRecord& r) {
    std::memset(&r, 0, sizeof r);
    r.type = 0x7FFFFFFF;
    r.SensorSize = 1.0f;
    r.Aspect = 1.0f;
    setConstantSpline(r.FocusDistance, 4, 0.0f);
    r.TimeE = 1.0f;
    setConstantSpline(r.Shape, 8, 1.0f);
    r.ShutterTailE = 1.0f;
    r.ApertureMap = -1;
    setConstantSpline(r.Fnumber, 4, -1.0f);
    r.BladeCurvature = 1.0f;
    r.DistortionMap = -1;
    r.WhiteBalanceK = -6500.0f; // negative as the engine expects it
    r.WhiteBalanceRGB = ColorRGB{1.0f, 1.0f, 1.0f};
    r.Exposure = 1.0f;
    setConstantSpline(r.reserved632, 4, 0.0f);
}

void initLightRecord(LightRecord& r) {
    std::memset(&r, 0, sizeof r);
    r.type = 0x7FFFFFFF;
    r.value4 = 1;
    setConstantSpline(r.spline8, 4, 1.0f);
    setColorSpline(r.colorSpline136, 4);
    setColorSpline(r.colorSpline456, 4);
    setConstantSpline(r.spline776, 4, 6500.0f);
    setConstantSpline(r.spline904, 4, 1.0f);
    switchOffSpline(r.spline1032, 4);
    setConstantSpline(r.spline1160, 4, kPi);
    setConstantSpline(r.spline1288, 4, kPi);
    setConstantSpline(r.spline1416, 4, 1.0f);
    r.texMap = -1;
    r.value1548 = 1.0f;
    for (float& value : r.values1556)
        value = 1.0f;
    const uint8_t flags[12] = {1, 1, 0, 0, 1, 1, 1, 1, 1, 0, 0, 0};
    std::memcpy(r.flags1604, flags, sizeof flags);
}

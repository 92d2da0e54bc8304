#include "engines/preview/render/light_params.h"

#include "common/unicode.h"
#include "engines/preview/record_view.h"
#include "engines/preview/render/tracks.h"
#include "scene/temp_objects.h"

#include <cmath>
#include <cstring>

namespace preview {

namespace {

constexpr size_t kEnvironmentPathOffset = 0xC00; // type 8's image file, wide text
constexpr float kDegrees = kPi / 180.0f;

float spline(const SplineSegment (&segments)[4], double seconds, float fallback) {
    return evaluateSpline(segments, 4, static_cast<float>(seconds), fallback);
}

Color colorSpline(const ColorSplineSegment (&segments)[4], double seconds, Color fallback) {
    const float t = static_cast<float>(seconds);
    for (const ColorSplineSegment& s : segments) {
        if (!(s.ts <= s.te) || t < s.ts || t > s.te) continue;
        const float span = s.te - s.ts;
        const float u = span > 0 && std::isfinite(span) ? (t - s.ts) / span : 0.0f;
        const float v = 1 - u;
        float c[3];
        for (int i = 0; i < 3; ++i)
            c[i] = v * v * v * s.vs[i] + 3 * v * v * u * s.v1[i] + 3 * v * u * u * s.v2[i] + u * u * u * s.ve[i];
        const Color color{c[0], c[1], c[2]};
        return isFinite(color) ? vmax(color, Color(0)) : fallback;
    }
    return fallback;
}

Vec3 vectorOr(const float* values, const Vec3& fallback) {
    const Vec3 v{values[0], values[1], values[2]};
    return isFinite(v) && dot(v, v) > 0 ? normalize(v) : fallback;
}

float positiveOr(float value, float fallback) { return std::isfinite(value) && value > 0 ? value : fallback; }

// The CIE 1931 observer by the multi-lobe fit of Wyman, Sloan and Shirley.
float lobe(float lambda, float mean, float below, float above) {
    const float t = (lambda - mean) / (lambda < mean ? below : above);
    return std::exp(-0.5f * t * t);
}

Color blackBodyRgb(float kelvin) {
    double X = 0, Y = 0, Z = 0;
    for (float lambda = 380; lambda <= 780; lambda += 5) {
        const double metres = lambda * 1e-9;
        const double radiance = 1.0 / (std::pow(metres, 5) * (std::exp(1.4388e-2 / (metres * kelvin)) - 1));
        X += radiance * (1.056f * lobe(lambda, 599.8f, 37.9f, 31.0f) + 0.362f * lobe(lambda, 442.0f, 16.0f, 26.7f) -
                         0.065f * lobe(lambda, 501.1f, 20.4f, 26.2f));
        Y += radiance * (0.821f * lobe(lambda, 568.8f, 46.9f, 40.5f) + 0.286f * lobe(lambda, 530.9f, 16.3f, 31.1f));
        Z += radiance * (1.217f * lobe(lambda, 437.0f, 11.8f, 36.0f) + 0.681f * lobe(lambda, 459.0f, 26.0f, 13.8f));
    }
    return {static_cast<float>(3.2406 * X - 1.5372 * Y - 0.4986 * Z),
            static_cast<float>(-0.9689 * X + 1.8758 * Y + 0.0415 * Z),
            static_cast<float>(0.0557 * X - 0.2040 * Y + 1.0570 * Z)};
}

LightKind kindOf(int32_t type) {
    switch (type) {
    case 2: return LightKind::Spot;
    case 3: return LightKind::Rectangle;
    case 4: return LightKind::Sky;
    case 5: return LightKind::Directional;
    case 6: return LightKind::Disc;
    case 8: return LightKind::Environment;
    case 9: return LightKind::Sun;
    default: return LightKind::Point;
    }
}

} // namespace

Color temperatureColor(float kelvin) {
    static const Color reference = blackBodyRgb(6500);
    if (!std::isfinite(kelvin) || kelvin < 500 || std::abs(kelvin - 6500) < 1e-3f) return Color(1);
    const Color relative = vmax(blackBodyRgb(std::min(kelvin, 40000.0f)) / reference, Color(0));
    const float y = luminance(relative);
    return y > 0 ? relative / y : Color(1);
}

bool readLight(const TempLight& object, double seconds, WarningLog& warnings, LightParams* out) {
    const LightRecord& record = object.light;
    if (record.value4 == 0) return false;
    out->kind = kindOf(record.type);
    if (record.type == 1 || record.type == 2) {
        const size_t textOffset = record.type == 1 ? 0x6D4 : 0x6D8;
        char16_t first;
        std::memcpy(&first, reinterpret_cast<const uint8_t*>(&record) + textOffset, sizeof first);
        if (first) warnings.note("light profiles (IES) are not rendered; the lights shine evenly");
    }
    const float intensity = spline(record.spline8, seconds, 1) * spline(record.spline904, seconds, 1);
    const Color color = colorSpline(record.colorSpline136, seconds, Color(1));
    out->emitted = color * (std::isfinite(intensity) ? std::max(intensity, 0.0f) : 0.0f) *
                   temperatureColor(spline(record.spline776, seconds, 6500));
    if (isBlack(out->emitted)) return false;

    int dropped = 0;
    const Track track(object.track, object.trackCount, &dropped);
    warnings.note("light keys with non-finite values, dropped", dropped);
    out->position = track.at(seconds, TrackSample{}).value;
    out->direction = vectorOr(&record.values1556[0], Vec3(0, -1, 0));
    const Vec3 up = vectorOr(&record.values1556[3], Vec3(0));
    const Vec3 across = cross(out->direction, up);
    out->up = dot(across, across) > 1e-12f ? normalize(cross(across, out->direction))
                                           : Frame::around(out->direction).t;
    out->width = positiveOr(record.values1556[6], 1);
    out->height = positiveOr(record.values1556[7], 1);
    const float outer = std::min(positiveOr(spline(record.spline1160, seconds, kPi), kPi), 2 * kPi);
    const float inner = std::min(positiveOr(spline(record.spline1288, seconds, kPi), kPi), outer);
    out->cosOuter = std::cos(0.5f * outer);
    out->cosInner = std::cos(0.5f * inner);
    out->cosSun = std::cos(0.5f * positiveOr(record.values1556[8], 0.53f) * kDegrees);
    out->texMap = record.texMap;
    if (out->kind == LightKind::Environment) {
        const auto* text = reinterpret_cast<const uint8_t*>(&record) + kEnvironmentPathOffset;
        std::u16string path;
        for (size_t i = 0; i < kPathChars && kEnvironmentPathOffset + 2 * i + 2 <= sizeof record; ++i) {
            char16_t c;
            std::memcpy(&c, text + 2 * i, sizeof c);
            if (!c) break;
            path += c;
        }
        out->imagePath = utf16ToUtf8(path);
    }
    return true;
}

} // namespace preview

#include "engines/preview/output/tone_map.h"
#include "engines/preview/output/image_output.h"

#include <algorithm>
#include <cmath>

namespace preview {

namespace {

enum OperatorType : uint32_t { kReinhard = 1, kAces = 2, kFilmic = 3 };

float saturate(float v) {
    return std::clamp(v, 0.0f, 1.0f);
}

// Extended Reinhard per channel: invWhite2 = 1 / white², so that `white` maps to exactly 1;
// 0 gives the plain x / (1 + x).
float reinhard(float x, float invWhite2) {
    return x * (1.0f + x * invWhite2) / (1.0f + x);
}

// Narkowicz's fit of the ACES reference rendering and output transforms, with his 0.6 input
// scale so that mid grey lands where the full transform puts it.
float aces(float x) {
    x *= 0.6f;
    return saturate(x * (2.51f * x + 0.03f) / (x * (2.43f * x + 0.59f) + 0.14f));
}

float srgbEncode(float v) {
    return v <= 0.0031308f ? 12.92f * v : 1.055f * std::pow(v, 1.0f / 2.4f) - 0.055f;
}

// The power segment through (x0, y0) with slope m there: y = exp(lnA) * x^b.
void solvePower(double x0, double y0, double m, double& lnA, double& b) {
    b = m * x0 / y0;
    lnA = std::log(y0) - b * std::log(x0);
}

FilmicCurve::Shape shapeOf(const ToneOperatorRecord& tone) {
    FilmicCurve::Shape shape{tone.Filmic_toeStrength,      tone.Filmic_toeLength,
                             tone.Filmic_shoulderStrength, tone.Filmic_shoulderLength,
                             tone.Filmic_shoulderAngle,    tone.Filmic_gamma};
    bool unset = shape.toeStrength == 0 && shape.toeLength == 0 && shape.shoulderStrength == 0 &&
                 shape.shoulderLength == 0 && shape.shoulderAngle == 0;
    if (unset) shape = FilmicCurve::kDefaultShape;
    if (!(shape.gamma > 0)) shape.gamma = 1;
    return shape;
}

} // namespace

// ---- Filmic curve --------------------------------------------------------------------------
// Hable's piecewise power curves: the user's shape gives the ends of the linear middle (x0, y0)
// and (x1, y1) and the white point; toe and shoulder are power curves matching the middle's
// value and slope where they meet.

double FilmicCurve::Segment::operator()(double x) const {
    double local = (x - offsetX) * scaleX;
    double y = local > 0 ? std::exp(lnA + b * std::log(local)) : 0.0;
    return y * scaleY + offsetY;
}

FilmicCurve::FilmicCurve(const Shape& shape) {
    // The lengths are entered in a perceptual space so that small toes need no tiny numbers.
    const double toeLength = std::pow(saturate(shape.toeLength), 2.2);
    const double toeStrength = saturate(shape.toeStrength);
    const double shoulderAngle = saturate(shape.shoulderAngle);
    const double shoulderLength = std::max(1e-5f, saturate(shape.shoulderLength));
    const double shoulderStops = std::clamp(shape.shoulderStrength, 0.0f, 16.0f);
    const double gamma = std::clamp(shape.gamma, 0.2f, 5.0f);

    // Both ends of the toe stay positive: the power segments are fitted through their logs.
    double x0 = std::max(1e-5, toeLength * 0.5);
    double y0 = std::max(1e-5, (1 - toeStrength) * x0);
    double remainingY = 1 - y0;
    double x1 = x0 + (1 - shoulderLength) * remainingY;
    double y1 = y0 + (1 - shoulderLength) * remainingY;
    double white = x0 + remainingY + std::exp2(shoulderStops) - 1;
    double overshootX = 2 * shoulderAngle * shoulderStops; // in units of the white point
    double overshootY = std::pow(1 + 0.5 * shoulderAngle * shoulderStops, gamma) - 1;

    invWhite_ = 1 / white;
    x0_ = x0 /= white;
    x1_ = x1 /= white;

    // The middle is (m x + c)^gamma.
    double m = x1 > x0 ? (y1 - y0) / (x1 - x0) : 1.0;
    double c = y0 - m * x0;
    middle_.offsetX = -c / m;
    middle_.lnA = gamma * std::log(m);
    middle_.b = gamma;
    auto middleSlope = [&](double x) { return gamma * m * std::pow(m * x + c, gamma - 1); };
    double toeSlope = middleSlope(x0), shoulderSlope = middleSlope(x1);
    y0 = std::pow(y0, gamma);
    y1 = std::pow(y1, gamma);

    solvePower(x0, y0, toeSlope, toe_.lnA, toe_.b);

    // The shoulder is the toe's shape mirrored about the (overshot) white point.
    shoulder_.offsetX = 1 + overshootX;
    shoulder_.offsetY = 1 + overshootY;
    shoulder_.scaleX = shoulder_.scaleY = -1;
    solvePower(shoulder_.offsetX - x1, shoulder_.offsetY - y1, shoulderSlope, shoulder_.lnA, shoulder_.b);

    // With an overshoot the shoulder ends below 1 at the white point: rescale so it reaches 1.
    double invEnd = 1 / shoulder_(1.0);
    for (Segment* s : {&toe_, &middle_, &shoulder_}) {
        s->offsetY *= invEnd;
        s->scaleY *= invEnd;
    }
}

float FilmicCurve::operator()(float x) const {
    double n = std::max(x, 0.0f) * invWhite_;
    if (n < x0_) return float(toe_(n));
    if (n < x1_) return float(middle_(n));
    return n < 1 ? float(shoulder_(n)) : 1.0f;
}

// ---- Display transform ---------------------------------------------------------------------

ToneMapper::ToneMapper(const ToneOperatorRecord& tone)
    : operator_(tone.OperatorType), filmic_(shapeOf(tone)), applySaturation_(tone.ApplySaturation != 0),
      saturation_(tone.Saturation) {
    if (tone.ApplyExposure && std::isfinite(tone.ExposureValue))
        exposureScale_ = std::exp2(std::clamp(tone.ExposureValue, -64.0f, 64.0f));
    if (tone.ReinhardFactor > 0) reinhardInvWhite2_ = 1.0f / (tone.ReinhardFactor * tone.ReinhardFactor);
    if (tone.ApplyGamma && tone.Gamma > 0) invGamma_ = 1.0f / tone.Gamma;
}

Color ToneMapper::operator()(Color c) const {
    if (!isFinite(c)) return {};
    // Beyond 1e18 every curve is flat at white; the bound keeps the curves' arithmetic finite.
    c = vmin(vmax(c * exposureScale_, Color(0.0f)), Color(1e18f));
    auto perChannel = [&c](auto&& curve) { c = {curve(c.x), curve(c.y), curve(c.z)}; };
    switch (operator_) {
    case kReinhard:
        perChannel([this](float v) { return reinhard(v, reinhardInvWhite2_); });
        break;
    case kAces:
        perChannel(aces);
        break;
    case kFilmic:
        perChannel(filmic_);
        break;
    default: // 0 and 4: no curve; the final clamp clips
        break;
    }
    if (applySaturation_) {
        float grey = luminance(c);
        c = vmax(Color(grey) + (c - Color(grey)) * saturation_, Color(0.0f));
    }
    if (invGamma_ > 0)
        perChannel([this](float v) { return std::pow(v, invGamma_); });
    else
        perChannel(srgbEncode);
    perChannel(saturate);
    return c;
}

Color toneMap(const ToneOperatorRecord& tone, Color linear) {
    return ToneMapper(tone)(linear);
}

} // namespace preview

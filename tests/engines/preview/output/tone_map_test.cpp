#include "engines/preview/output/image_output.h"
#include "engines/preview/output/tone_map.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace preview {
namespace {

enum : uint32_t { kEditor = 0, kReinhard = 1, kAces = 2, kFilmic = 3, kDisabled = 4 };

ToneOperatorRecord linearTone(uint32_t operatorType) {
    ToneOperatorRecord tone{};
    tone.OperatorType = operatorType;
    tone.ApplyGamma = 1;
    tone.Gamma = 1;
    return tone;
}

TEST(ToneMap, KnownValues) {
    struct Case {
        const char* name;
        ToneOperatorRecord tone;
        Color in, expected;
    };
    auto with = [](ToneOperatorRecord t, auto change) {
        change(t);
        return t;
    };
    auto saturation = [&with](float s) {
        return with(linearTone(kEditor), [s](auto& t) { t.ApplySaturation = 1, t.Saturation = s; });
    };
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Color colour(0.8f, 0.2f, 0.1f);
    const float grey = 0.2126f * 0.8f + 0.7152f * 0.2f + 0.0722f * 0.1f;
    const Case cases[] = {
        {"none keeps a mid value", linearTone(kEditor), Color(0.25f), Color(0.25f)},
        {"disabled keeps a mid value", linearTone(kDisabled), Color(0.75f), Color(0.75f)},
        {"none clips above 1", linearTone(kDisabled), Color(3.0f), Color(1.0f)},
        {"negative is black", linearTone(kEditor), Color(-2.0f), Color(0.0f)},
        {"NaN is black", linearTone(kEditor), Color(nan), Color(0.0f)},
        {"Reinhard midpoint", linearTone(kReinhard), Color(1.0f), Color(0.5f)},
        {"Reinhard white point maps to 1", with(linearTone(kReinhard), [](auto& t) { t.ReinhardFactor = 4; }),
         Color(4.0f), Color(1.0f)},
        {"Reinhard with white point at 1", with(linearTone(kReinhard), [](auto& t) { t.ReinhardFactor = 4; }),
         Color(1.0f), Color(0.53125f)},
        {"ACES keeps black", linearTone(kAces), Color(0.0f), Color(0.0f)},
        {"ACES saturates", linearTone(kAces), Color(1000.0f), Color(1.0f)},
        {"filmic keeps black", linearTone(kFilmic), Color(0.0f), Color(0.0f)},
        {"exposure +1 doubles before the curve",
         with(linearTone(kReinhard), [](auto& t) { t.ApplyExposure = 1, t.ExposureValue = 1; }), Color(0.5f),
         Color(0.5f)},
        {"exposure not applied", with(linearTone(kEditor), [](auto& t) { t.ExposureValue = 1; }),
         Color(0.25f), Color(0.25f)},
        {"exposure -2 quarters",
         with(linearTone(kEditor), [](auto& t) { t.ApplyExposure = 1, t.ExposureValue = -2; }), Color(0.8f),
         Color(0.2f)},
        {"gamma 2.2", with(linearTone(kEditor), [](auto& t) { t.Gamma = 2.2f; }), Color(0.5f),
         Color(0.72974005f)},
        {"sRGB when gamma is off", with(linearTone(kEditor), [](auto& t) { t.ApplyGamma = 0; }), Color(0.5f),
         Color(0.7353570f)},
        {"sRGB linear foot", with(linearTone(kEditor), [](auto& t) { t.ApplyGamma = 0; }), Color(0.001f),
         Color(0.01292f)},
        {"sRGB when gamma is 0", with(linearTone(kEditor), [](auto& t) { t.Gamma = 0; }), Color(0.5f),
         Color(0.7353570f)},
        {"saturation 0 gives the luminance grey", saturation(0), colour, Color(grey)},
        {"saturation 1 keeps the colour", saturation(1), colour, colour},
        {"saturation 2 pushes away from grey, clipped", saturation(2), colour, Color(1, 2 * 0.2f - grey, 0)},
    };
    for (const Case& c : cases) {
        Color out = toneMap(c.tone, c.in);
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(out[i], c.expected[i], 1e-5f) << c.name << " channel " << i;
    }
}

// Every curve must keep black, rise monotonically without jumps and end at white; a jump would
// show as a band in gradients, a dip as inverted contrast.
TEST(ToneMap, CurvesAreMonotoneAndContinuous) {
    struct Case {
        const char* name;
        ToneOperatorRecord tone;
    };
    auto filmic = [](FilmicCurve::Shape s) {
        ToneOperatorRecord t = linearTone(kFilmic);
        t.Filmic_toeStrength = s.toeStrength, t.Filmic_toeLength = s.toeLength;
        t.Filmic_shoulderStrength = s.shoulderStrength, t.Filmic_shoulderLength = s.shoulderLength;
        t.Filmic_shoulderAngle = s.shoulderAngle, t.Filmic_gamma = s.gamma;
        return t;
    };
    ToneOperatorRecord reinhardWhite = linearTone(kReinhard);
    reinhardWhite.ReinhardFactor = 2;
    const Case cases[] = {
        {"Reinhard", linearTone(kReinhard)},
        {"Reinhard with a white point", reinhardWhite},
        {"ACES", linearTone(kAces)},
        {"filmic defaults", filmic({0, 0, 0, 0, 0, 0})},
        {"filmic strong toe", filmic({1, 1, 2, 0.5f, 0, 1})},
        {"filmic no toe, long shoulder", filmic({0, 0.01f, 4, 1, 0, 1})},
        {"filmic with shoulder angle", filmic({0.5f, 0.5f, 3, 0.5f, 1, 1})},
        {"filmic with its own gamma", filmic({0.3f, 0.4f, 2, 0.7f, 0.5f, 2.2f})},
        {"filmic all extremes", filmic({1, 1, 16, 1, 1, 1})},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(toneMap(c.tone, Color(0)).x, 0.0f) << c.name;
        float previous = 0;
        float worstStep = 0;
        for (float x = 1e-4f; x < 64.0f; x *= 1.001f) {
            float y = toneMap(c.tone, Color(x)).x;
            ASSERT_TRUE(std::isfinite(y)) << c.name << " at " << x;
            ASSERT_GE(y, previous - 1e-6f) << c.name << " falls at " << x;
            worstStep = std::max(worstStep, y - previous);
            previous = y;
        }
        EXPECT_LT(worstStep, 0.004f) << c.name << " jumps";
        EXPECT_GT(toneMap(c.tone, Color(1e6f)).x, 0.99f) << c.name << " never reaches white";
    }
}

TEST(ToneMap, FilmicZeroShapeIsTheDefault) {
    ToneOperatorRecord unset = linearTone(kFilmic);
    ToneOperatorRecord defaults = unset;
    const FilmicCurve::Shape& d = FilmicCurve::kDefaultShape;
    defaults.Filmic_toeStrength = d.toeStrength, defaults.Filmic_toeLength = d.toeLength;
    defaults.Filmic_shoulderStrength = d.shoulderStrength, defaults.Filmic_shoulderLength = d.shoulderLength;
    defaults.Filmic_shoulderAngle = d.shoulderAngle, defaults.Filmic_gamma = d.gamma;
    for (float x : {0.05f, 0.3f, 1.0f, 2.5f})
        EXPECT_EQ(toneMap(unset, Color(x)).x, toneMap(defaults, Color(x)).x) << x;
    // The default toe darkens shadows against no curve at all.
    EXPECT_LT(toneMap(unset, Color(0.05f)).x, 0.05f);
}

} // namespace
} // namespace preview

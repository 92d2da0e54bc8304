// The per-colour operations that the combining maps name by number: the blend operations
// (MATHBLEND, GRADIENT's word table) and the math operations (MATH), in the order of their words.
#pragma once
#include "engines/preview/vec3.h"

#include <cstdint>

namespace preview {

enum class BlendOp : int32_t {
    A, B, Mul, Add, Sub, Blend, Difference, Average, BW, Screen, Overlay, ColorDodge, LinearDodge,
    Exclusion, ColorBurn, LinearBurn, LinearLight, SoftLight, HardLight, VividLight, PinLight, HardMix,
    Subtract, Divide, Darken, Lighten, DarkenColor, LighterColor, SpotLight, SpotLightBlend, Hue,
    Saturation, Color, Value, Count
};

enum class MathOp : int32_t {
    Add, Sub, Mul, Div, Mod, Sqr, Sqrt, Exp, Pow, Logn, Sin, Cos, Tan, ASin, ACos, ATan, Min, Max, A, B,
    Abs, Neg, Cross, Dot, Length, Normalize, Diagonal, Floor, Ceil, Frac, Srgb2Lin, Lin2Srgb, Threshold, Count
};

// `base` blended with `layer`; an unknown number gives `layer`.
Color blendColors(int32_t operation, const Color& base, const Color& layer);
// The result of operation on a and b; an unknown number gives a. Results that are not finite
// (a division by zero) become zero.
Color mathColors(int32_t operation, const Color& a, const Color& b);

Color srgbToLinear(const Color& c);
Color linearToSrgb(const Color& c);
inline float average(const Color& c) { return (c.x + c.y + c.z) / 3; }
inline Color clamp01(const Color& c) {
    return {std::clamp(c.x, 0.0f, 1.0f), std::clamp(c.y, 0.0f, 1.0f), std::clamp(c.z, 0.0f, 1.0f)};
}

} // namespace preview

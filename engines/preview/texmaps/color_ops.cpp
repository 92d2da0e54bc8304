#include "engines/preview/texmaps/color_ops.h"

#include <OpenImageIO/color.h>

#include <cmath>

namespace preview {

namespace {

template <class F> Color perChannel(const Color& a, const Color& b, F f) {
    return {f(a.x, b.x), f(a.y, b.y), f(a.z, b.z)};
}
template <class F> Color perChannel(const Color& a, F f) { return {f(a.x), f(a.y), f(a.z)}; }

float safeDivide(float a, float b) { return b != 0 ? a / b : 0; }
float colorDodge(float a, float b) { return b >= 1 ? 1 : std::min(1.0f, a / (1 - b)); }
float colorBurn(float a, float b) { return b <= 0 ? 0 : std::max(0.0f, 1 - (1 - a) / b); }
float overlay(float a, float b) { return a < 0.5f ? 2 * a * b : 1 - 2 * (1 - a) * (1 - b); }

// Hue, saturation and value, each in 0..1.
Vec3 toHsv(const Color& c) {
    const float high = maxComponent(c);
    const float low = std::min({c.x, c.y, c.z});
    const float range = high - low;
    float hue = 0;
    if (range > 0) {
        if (high == c.x) hue = std::fmod((c.y - c.z) / range + 6, 6.0f);
        else if (high == c.y) hue = (c.z - c.x) / range + 2;
        else hue = (c.x - c.y) / range + 4;
    }
    return {hue / 6, high > 0 ? range / high : 0, high};
}

Color fromHsv(const Vec3& hsv) {
    const float h = (hsv.x - std::floor(hsv.x)) * 6;
    const float v = hsv.z, s = hsv.y;
    auto channel = [&](float n) {
        const float k = std::fmod(n + h, 6.0f);
        return v - v * s * std::max(0.0f, std::min({k, 4 - k, 1.0f}));
    };
    return {channel(5), channel(3), channel(1)};
}

Color finiteOrZero(const Color& c) { return isFinite(c) ? c : Color(0); }

} // namespace

Color blendColors(int32_t operation, const Color& a, const Color& b) {
    switch (static_cast<BlendOp>(operation)) {
    case BlendOp::A: return a;
    case BlendOp::B:
    case BlendOp::Blend: return b;
    case BlendOp::Mul: return a * b;
    case BlendOp::Add:
    case BlendOp::LinearDodge: return a + b;
    case BlendOp::Sub:
    case BlendOp::Subtract: return a - b;
    case BlendOp::Difference: return perChannel(a, b, [](float x, float y) { return std::abs(x - y); });
    case BlendOp::Average: return (a + b) * 0.5f;
    case BlendOp::BW: return Color(luminance(b));
    case BlendOp::Screen: return perChannel(a, b, [](float x, float y) { return 1 - (1 - x) * (1 - y); });
    case BlendOp::Overlay: return perChannel(a, b, overlay);
    case BlendOp::ColorDodge: return perChannel(a, b, colorDodge);
    case BlendOp::Exclusion: return perChannel(a, b, [](float x, float y) { return x + y - 2 * x * y; });
    case BlendOp::ColorBurn: return perChannel(a, b, colorBurn);
    case BlendOp::LinearBurn: return a + b - Color(1);
    case BlendOp::LinearLight: return a + 2 * b - Color(1);
    case BlendOp::SoftLight:
        return perChannel(a, b, [](float x, float y) { return (1 - 2 * y) * x * x + 2 * y * x; });
    case BlendOp::HardLight: return perChannel(b, a, overlay);
    case BlendOp::VividLight:
        return perChannel(a, b, [](float x, float y) {
            return y < 0.5f ? colorBurn(x, 2 * y) : colorDodge(x, 2 * (y - 0.5f));
        });
    case BlendOp::PinLight:
        return perChannel(a, b, [](float x, float y) {
            return y < 0.5f ? std::min(x, 2 * y) : std::max(x, 2 * (y - 0.5f));
        });
    case BlendOp::HardMix: return perChannel(a, b, [](float x, float y) { return x + y >= 1 ? 1.0f : 0.0f; });
    case BlendOp::Divide: return perChannel(a, b, safeDivide);
    case BlendOp::Darken: return vmin(a, b);
    case BlendOp::Lighten: return vmax(a, b);
    case BlendOp::DarkenColor: return luminance(a) <= luminance(b) ? a : b;
    case BlendOp::LighterColor: return luminance(a) >= luminance(b) ? a : b;
    case BlendOp::SpotLight: return 2 * a * b;
    case BlendOp::SpotLightBlend: return a * b + a;
    case BlendOp::Hue: {
        const Vec3 base = toHsv(a);
        return fromHsv({toHsv(b).x, base.y, base.z});
    }
    case BlendOp::Saturation: {
        const Vec3 base = toHsv(a);
        return fromHsv({base.x, toHsv(b).y, base.z});
    }
    case BlendOp::Color: {
        const Vec3 layer = toHsv(b);
        return fromHsv({layer.x, layer.y, toHsv(a).z});
    }
    case BlendOp::Value: {
        const Vec3 base = toHsv(a);
        return fromHsv({base.x, base.y, toHsv(b).z});
    }
    case BlendOp::Count: break;
    }
    return b;
}

Color mathColors(int32_t operation, const Color& a, const Color& b) {
    Color r = a;
    switch (static_cast<MathOp>(operation)) {
    case MathOp::Add: r = a + b; break;
    case MathOp::Sub: r = a - b; break;
    case MathOp::Mul: r = a * b; break;
    case MathOp::Div: r = perChannel(a, b, safeDivide); break;
    case MathOp::Mod: r = perChannel(a, b, [](float x, float y) { return y != 0 ? std::fmod(x, y) : 0; }); break;
    case MathOp::Sqr: r = a * a; break;
    case MathOp::Sqrt: r = perChannel(a, [](float x) { return std::sqrt(std::max(x, 0.0f)); }); break;
    case MathOp::Exp: r = perChannel(a, [](float x) { return std::exp(x); }); break;
    case MathOp::Pow: r = perChannel(a, b, [](float x, float y) { return std::pow(x, y); }); break;
    case MathOp::Logn: r = perChannel(a, [](float x) { return x > 0 ? std::log(x) : 0; }); break;
    case MathOp::Sin: r = perChannel(a, [](float x) { return std::sin(x); }); break;
    case MathOp::Cos: r = perChannel(a, [](float x) { return std::cos(x); }); break;
    case MathOp::Tan: r = perChannel(a, [](float x) { return std::tan(x); }); break;
    case MathOp::ASin: r = perChannel(a, [](float x) { return std::asin(std::clamp(x, -1.0f, 1.0f)); }); break;
    case MathOp::ACos: r = perChannel(a, [](float x) { return std::acos(std::clamp(x, -1.0f, 1.0f)); }); break;
    case MathOp::ATan: r = perChannel(a, [](float x) { return std::atan(x); }); break;
    case MathOp::Min: r = vmin(a, b); break;
    case MathOp::Max: r = vmax(a, b); break;
    case MathOp::A: r = a; break;
    case MathOp::B: r = b; break;
    case MathOp::Abs: r = perChannel(a, [](float x) { return std::abs(x); }); break;
    case MathOp::Neg: r = -a; break;
    case MathOp::Cross: r = cross(a, b); break;
    case MathOp::Dot: r = Color(dot(a, b)); break;
    case MathOp::Length: r = Color(length(a)); break;
    case MathOp::Normalize: r = length(a) > 0 ? a / length(a) : Color(0); break;
    // The diagonal of the outer product of the two: their product per component.
    case MathOp::Diagonal: r = a * b; break;
    case MathOp::Floor: r = perChannel(a, [](float x) { return std::floor(x); }); break;
    case MathOp::Ceil: r = perChannel(a, [](float x) { return std::ceil(x); }); break;
    case MathOp::Frac: r = perChannel(a, [](float x) { return x - std::floor(x); }); break;
    case MathOp::Srgb2Lin: r = srgbToLinear(a); break;
    case MathOp::Lin2Srgb: r = linearToSrgb(a); break;
    case MathOp::Threshold: r = perChannel(a, b, [](float x, float y) { return x >= y ? 1.0f : 0.0f; }); break;
    case MathOp::Count: break;
    }
    return finiteOrZero(r);
}

Color srgbToLinear(const Color& c) {
    return perChannel(c, [](float x) { return OIIO::sRGB_to_linear(x); });
}

Color linearToSrgb(const Color& c) {
    return perChannel(c, [](float x) { return OIIO::linear_to_sRGB(x); });
}

} // namespace preview

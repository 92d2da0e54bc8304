// Small vector arithmetic for the preview engine: points, directions and linear RGB colours
// share one three-float type, since the renderer treats colour as three independent channels.
#pragma once
#include <algorithm>
#include <cmath>

namespace preview {

struct Vec3 {
    float x = 0, y = 0, z = 0;

    constexpr Vec3() = default;
    constexpr Vec3(float x_, float y_, float z_) : x(x_), y(y_), z(z_) {}
    constexpr explicit Vec3(float v) : x(v), y(v), z(v) {}

    constexpr float operator[](int i) const { return i == 0 ? x : i == 1 ? y : z; }
    constexpr Vec3 operator-() const { return {-x, -y, -z}; }
    Vec3& operator+=(const Vec3& o) { x += o.x; y += o.y; z += o.z; return *this; }
    Vec3& operator-=(const Vec3& o) { x -= o.x; y -= o.y; z -= o.z; return *this; }
    Vec3& operator*=(const Vec3& o) { x *= o.x; y *= o.y; z *= o.z; return *this; }
    Vec3& operator*=(float s) { x *= s; y *= s; z *= s; return *this; }
    Vec3& operator/=(float s) { return *this *= 1 / s; }
};
using Color = Vec3;

constexpr Vec3 operator+(Vec3 a, const Vec3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
constexpr Vec3 operator-(Vec3 a, const Vec3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
constexpr Vec3 operator*(Vec3 a, const Vec3& b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
constexpr Vec3 operator*(Vec3 a, float s) { return {a.x * s, a.y * s, a.z * s}; }
constexpr Vec3 operator*(float s, Vec3 a) { return a * s; }
// One division and three products: three divisions would wait on each other.
constexpr Vec3 operator/(Vec3 a, float s) { return a * (1 / s); }
constexpr Vec3 operator/(Vec3 a, const Vec3& b) { return {a.x / b.x, a.y / b.y, a.z / b.z}; }

constexpr float dot(const Vec3& a, const Vec3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
constexpr Vec3 cross(const Vec3& a, const Vec3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float length(const Vec3& a) { return std::sqrt(dot(a, a)); }
inline Vec3 normalize(const Vec3& a) {
    const float l = length(a);
    return l > 0 ? a / l : Vec3(0, 0, 1);
}
constexpr Vec3 lerp(const Vec3& a, const Vec3& b, float t) { return a + (b - a) * t; }
inline Vec3 vmin(const Vec3& a, const Vec3& b) { return {std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z)}; }
inline Vec3 vmax(const Vec3& a, const Vec3& b) { return {std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z)}; }
constexpr float maxComponent(const Vec3& a) { return a.x > a.y ? (a.x > a.z ? a.x : a.z) : (a.y > a.z ? a.y : a.z); }
// Rec. 709 luminance of a linear colour.
constexpr float luminance(const Color& c) { return 0.2126f * c.x + 0.7152f * c.y + 0.0722f * c.z; }
inline bool isFinite(const Vec3& a) { return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z); }
constexpr bool isBlack(const Color& c) { return c.x <= 0 && c.y <= 0 && c.z <= 0; }

// An orthonormal frame around a unit normal (the branchless construction of Duff et al.).
struct Frame {
    Vec3 s, t, n;

    static Frame around(const Vec3& n) {
        float sign = std::copysign(1.0f, n.z);
        float a = -1.0f / (sign + n.z);
        float b = n.x * n.y * a;
        return {Vec3(1 + sign * n.x * n.x * a, sign * b, -sign * n.x), Vec3(b, sign + n.y * n.y * a, -n.y), n};
    }
    Vec3 toLocal(const Vec3& v) const { return {dot(v, s), dot(v, t), dot(v, n)}; }
    Vec3 toWorld(const Vec3& v) const { return s * v.x + t * v.y + n * v.z; }
};

struct Ray {
    Vec3 origin;
    Vec3 direction; // unit
};

constexpr float kPi = 3.14159265358979323846f;
constexpr float kInvPi = 1.0f / kPi;

} // namespace preview

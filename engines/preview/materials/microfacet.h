// Fresnel terms and the GGX distribution in a local frame whose +z is the normal. Shared by the
// lobes and by the materials, which weigh a base layer by what a coating lets through.
#pragma once
#include "engines/preview/turns.h"
#include "engines/preview/vec3.h"

namespace preview {

// Reflectance of a smooth dielectric boundary for a ray arriving at cosine `cosI` to the normal
// of the side it comes from; `eta` is the index beyond the boundary over the index before it.
// Total internal reflection gives 1.
inline float fresnelDielectric(float cosI, float eta) {
    cosI = std::clamp(cosI, -1.0f, 1.0f);
    if (cosI < 0) {
        eta = 1 / eta;
        cosI = -cosI;
    }
    const float sin2T = (1 - cosI * cosI) / (eta * eta);
    if (sin2T >= 1) return 1;
    const float cosT = std::sqrt(1 - sin2T);
    const float parallel = (eta * cosI - cosT) / (eta * cosI + cosT);
    const float perpendicular = (cosI - eta * cosT) / (cosI + eta * cosT);
    return 0.5f * (parallel * parallel + perpendicular * perpendicular);
}

// A conductor's reflectance from its colour at normal incidence and at grazing incidence, with
// Schlick's curve between them.
inline Color fresnelTinted(float cosI, const Color& f0, const Color& edge) {
    const float m = std::clamp(1 - std::abs(cosI), 0.0f, 1.0f);
    const float m2 = m * m;
    return lerp(f0, edge, m2 * m2 * m);
}

// The anisotropic GGX distribution of normals.
struct Ggx {
    float ax, ay;

    float D(const Vec3& h) const {
        if (h.z <= 0) return 0;
        const float x = h.x / ax, y = h.y / ay;
        const float e = x * x + y * y + h.z * h.z;
        return 1 / (kPi * ax * ay * e * e);
    }
    // Smith's auxiliary function: the shadowed share of the projected area seen from `w`.
    float lambda(const Vec3& w) const {
        const float z2 = w.z * w.z;
        if (z2 <= 0) return 0;
        const float t2 = (ax * ax * w.x * w.x + ay * ay * w.y * w.y) / z2;
        return 0.5f * (std::sqrt(1 + t2) - 1);
    }
    float G1(const Vec3& w) const { return 1 / (1 + lambda(w)); }
    // Height-correlated masking and shadowing.
    float G2(const Vec3& wo, const Vec3& wi) const { return 1 / (1 + lambda(wo) + lambda(wi)); }
    // Density of the normals visible from `wo` (wo.z > 0), per solid angle of h.
    float visibleD(const Vec3& wo, const Vec3& h) const {
        const float cosOH = dot(wo, h);
        if (cosOH <= 0 || wo.z <= 0) return 0;
        return G1(wo) * cosOH * D(h) / wo.z;
    }
    // A normal drawn from the visible normals (Heitz 2018): stretch, sample the projected
    // hemisphere, unstretch.
    Vec3 sampleVisible(const Vec3& wo, float u1, float u2) const {
        const Vec3 v = normalize(Vec3(ax * wo.x, ay * wo.y, wo.z));
        const float lengthSq = v.x * v.x + v.y * v.y;
        const Vec3 t1 = lengthSq > 0 ? Vec3(-v.y, v.x, 0) / std::sqrt(lengthSq) : Vec3(1, 0, 0);
        const Vec3 t2 = cross(v, t1);
        const float r = std::sqrt(u1);
        const SinCos phi = sinCosOfTurns(u2);
        const float p1 = r * phi.cos;
        const float s = 0.5f * (1 + v.z);
        const float p2 = (1 - s) * std::sqrt(std::max(0.0f, 1 - p1 * p1)) + s * r * phi.sin;
        const Vec3 n = t1 * p1 + t2 * p2 + v * std::sqrt(std::max(0.0f, 1 - p1 * p1 - p2 * p2));
        return normalize(Vec3(ax * n.x, ay * n.y, std::max(1e-6f, n.z)));
    }
};

} // namespace preview

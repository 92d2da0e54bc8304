#include "engines/preview/materials/shading_normal.h"

#include "engines/preview/materials/surface_lobes.h"

namespace preview {

namespace {

float heightAt(const CompiledMaterial& m, const ShadingContext& at, const TexMapLookup& maps) {
    return maps.scalar(m.bumpMap, at, 0) * evaluate(m.bumpScale, at, maps);
}

// The context moved by `du`, `dv` in UV space, on every channel alike.
ShadingContext shifted(const ShadingContext& at, float du, float dv) {
    ShadingContext moved = at;
    moved.position += at.dpdu * du + at.dpdv * dv;
    for (auto& uv : moved.uv) {
        uv[0] += du;
        uv[1] += dv;
    }
    return moved;
}

// A step in UV about as wide as the ray's footprint, so that the difference sees the detail the
// pixel sees.
float uvStep(const Vec3& dpd, float footprint) {
    const float metresPerUnit = length(dpd);
    if (footprint > 0 && metresPerUnit > 0) return std::clamp(0.5f * footprint / metresPerUnit, 1e-5f, 1e-2f);
    return 5e-4f;
}

Vec3 bumped(const CompiledMaterial& m, const ShadingContext& at, const TexMapLookup& maps, const Vec3& n) {
    const float du = uvStep(at.dpdu, at.footprint), dv = uvStep(at.dpdv, at.footprint);
    const float h = heightAt(m, at, maps);
    const float dhdu = (heightAt(m, shifted(at, du, 0), maps) - h) / du;
    const float dhdv = (heightAt(m, shifted(at, 0, dv), maps) - h) / dv;
    // The surface displaced by h along n, differentiated; the change of n itself is left out.
    const Vec3 dpdu = at.dpdu + n * dhdu, dpdv = at.dpdv + n * dhdv;
    Vec3 result = normalize(cross(dpdu, dpdv));
    if (dot(result, n) < 0) result = -result;
    return result;
}

Vec3 normalMapped(const CompiledMaterial& m, const ShadingContext& at, const TexMapLookup& maps, const Vec3& n) {
    const Vec3 tangent = at.dpdu - n * dot(n, at.dpdu);
    if (!(dot(tangent, tangent) > 1e-20f)) return n;
    const Vec3 t = normalize(tangent);
    Vec3 b = cross(n, t);
    if (dot(b, at.dpdv) < 0) b = -b;
    const Vec3 local = maps.normal(m.normalMap, at);
    return normalize(t * (local.x * m.normalStrength) + b * (local.y * m.normalStrength) + n * local.z);
}

} // namespace

Vec3 modifiedNormal(const CompiledMaterial& m, const ShadingContext& at, const TexMapLookup& maps) {
    const bool hasTangents = dot(at.dpdu, at.dpdu) > 0 && dot(at.dpdv, at.dpdv) > 0;
    if (!hasTangents || (m.bumpMap < 0 && m.normalMap < 0)) return at.shadingNormal;
    Vec3 n = at.shadingNormal;
    if (m.normalMap >= 0) n = normalMapped(m, at, maps, n);
    if (m.bumpMap >= 0) n = bumped(m, at, maps, n);
    // A normal turned past the surface would send light through it.
    if (!isFinite(n) || dot(n, at.geometricNormal) <= 1e-3f) return at.shadingNormal;
    return n;
}

} // namespace preview

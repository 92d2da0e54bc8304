#include "engines/preview/materials/bsdf.h"

#include "engines/preview/materials/microfacet.h"
#include "engines/preview/turns.h"

namespace preview {

namespace {

// Every lobe works in the shading frame turned so that wo.z > 0; `eta` is then the index
// beyond the surface over the index on wo's side.

bool isDeltaKind(LobeKind kind) {
    return kind == LobeKind::Mirror || kind == LobeKind::Dielectric || kind == LobeKind::Transparent;
}

Vec3 reflectAbout(const Vec3& w, const Vec3& h) { return h * (2 * dot(w, h)) - w; }

// Refraction of `wo` through a surface of normal `h` (on wo's side); false on total internal
// reflection.
bool refractThrough(const Vec3& wo, const Vec3& h, float eta, Vec3* wi) {
    const float cosO = dot(wo, h);
    const float sin2T = (1 - cosO * cosO) / (eta * eta);
    if (sin2T >= 1) return false;
    const float cosT = std::sqrt(1 - sin2T);
    *wi = -wo / eta + h * (cosO / eta - cosT);
    return true;
}

// The reflectance of a reflection-only lobe at `cosI`. Such a lobe tops an opaque layer, which
// has no inside: its dielectric term is the same from both sides.
Color reflectance(const Lobe& lobe, float cosI) {
    if (lobe.fresnel == FresnelModel::Dielectric) return Color(fresnelDielectric(cosI, lobe.eta));
    return fresnelTinted(cosI, lobe.f0, lobe.edgeTint);
}

// A dielectric's reflectance for a ray at `cosI`; a thin sheet adds the light that bounces
// between its two faces.
float dielectricReflectance(const Lobe& lobe, float cosI, float eta) {
    if (!lobe.thinWalled) return fresnelDielectric(cosI, eta);
    const float f = fresnelDielectric(cosI, lobe.eta);
    return 2 * f / (1 + f);
}

// How often a dielectric lobe reflects rather than refracts, given its reflectance `f`: in
// proportion to what each part carries.
float reflectChoice(const Lobe& lobe, float f) {
    const float r = f * luminance(lobe.weight);
    const float t = (1 - f) * luminance(lobe.transmission);
    return r + t > 0 ? r / (r + t) : f;
}

Ggx distribution(const Lobe& lobe) { return {std::max(lobe.alphaX, 1e-4f), std::max(lobe.alphaY, 1e-4f)}; }

struct LobeValue {
    Color value{0}; // value * |cos wi|
    float pdf = 0;
};

LobeValue evaluateRoughDielectric(const Lobe& lobe, const Vec3& wo, const Vec3& wi, float eta) {
    const Ggx ggx = distribution(lobe);
    if (wi.z > 0) {
        const Vec3 h = normalize(wo + wi);
        const float cosOH = dot(wo, h);
        if (cosOH <= 0) return {};
        const float f = fresnelDielectric(cosOH, eta);
        const float d = ggx.D(h);
        return {lobe.weight * (f * d * ggx.G2(wo, wi) / (4 * wo.z)),
                reflectChoice(lobe, f) * ggx.visibleD(wo, h) / (4 * cosOH)};
    }
    Vec3 h = normalize(wo + wi * eta);
    if (h.z < 0) h = -h;
    const float cosOH = dot(wo, h), cosIH = dot(wi, h);
    if (cosOH <= 0 || cosIH >= 0) return {};
    const float f = fresnelDielectric(cosOH, eta);
    const float denom = (cosIH + cosOH / eta) * (cosIH + cosOH / eta);
    if (!(denom > 0)) return {};
    const float jacobian = -cosIH / denom;
    const float value = (1 - f) * ggx.D(h) * ggx.G2(wo, wi) * cosOH * jacobian / wo.z;
    return {lobe.transmission * value, (1 - reflectChoice(lobe, f)) * ggx.visibleD(wo, h) * jacobian};
}

LobeValue evaluateLobe(const Lobe& lobe, const Vec3& wo, const Vec3& wi, float eta) {
    switch (lobe.kind) {
    case LobeKind::Lambert:
        if (wi.z <= 0) return {};
        return {lobe.weight * (wi.z * kInvPi), wi.z * kInvPi};
    case LobeKind::LambertTransmit:
        if (wi.z >= 0) return {};
        return {lobe.weight * (-wi.z * kInvPi), -wi.z * kInvPi};
    case LobeKind::GgxConductor: {
        if (wi.z <= 0) return {};
        const Ggx ggx = distribution(lobe);
        const Vec3 h = normalize(wo + wi);
        const float cosOH = dot(wo, h);
        if (cosOH <= 0) return {};
        const float d = ggx.D(h);
        return {lobe.weight * reflectance(lobe, cosOH) * (d * ggx.G2(wo, wi) / (4 * wo.z)),
                ggx.visibleD(wo, h) / (4 * cosOH)};
    }
    case LobeKind::GgxDielectric: return evaluateRoughDielectric(lobe, wo, wi, eta);
    case LobeKind::Mirror:
    case LobeKind::Dielectric:
    case LobeKind::Transparent: return {};
    }
    return {};
}

struct LobeDirection {
    Vec3 wi;
    Color weight{0}; // delta lobes: value * |cos| over `pdf`
    float pdf = 1;   // delta lobes: the probability of this branch within the lobe
};

Vec3 cosineHemisphere(float u1, float u2) {
    const float r = std::sqrt(u1);
    const SinCos phi = sinCosOfTurns(u2);
    return {r * phi.cos, r * phi.sin, std::sqrt(std::max(0.0f, 1 - u1))};
}

bool sampleLobe(const Lobe& lobe, const Vec3& wo, float eta, float uc, float u1, float u2, LobeDirection* out) {
    switch (lobe.kind) {
    case LobeKind::Lambert: out->wi = cosineHemisphere(u1, u2); return out->wi.z > 0;
    case LobeKind::LambertTransmit:
        out->wi = cosineHemisphere(u1, u2);
        out->wi.z = -out->wi.z;
        return out->wi.z < 0;
    case LobeKind::Transparent:
        out->wi = -wo;
        out->weight = lobe.weight;
        return true;
    case LobeKind::Mirror:
        out->wi = Vec3(-wo.x, -wo.y, wo.z);
        out->weight = lobe.weight * reflectance(lobe, wo.z);
        return true;
    case LobeKind::Dielectric: {
        const float f = dielectricReflectance(lobe, wo.z, eta);
        const float choice = reflectChoice(lobe, f);
        if (uc < choice) {
            out->wi = Vec3(-wo.x, -wo.y, wo.z);
            out->weight = lobe.weight * (f / choice);
            out->pdf = choice;
            return true;
        }
        if (lobe.thinWalled) {
            out->wi = -wo;
        } else if (!refractThrough(wo, Vec3(0, 0, 1), eta, &out->wi)) {
            return false;
        }
        out->weight = lobe.transmission * ((1 - f) / (1 - choice));
        out->pdf = 1 - choice;
        return true;
    }
    case LobeKind::GgxConductor:
        out->wi = reflectAbout(wo, distribution(lobe).sampleVisible(wo, u1, u2));
        return out->wi.z > 0;
    case LobeKind::GgxDielectric: {
        const Vec3 h = distribution(lobe).sampleVisible(wo, u1, u2);
        if (uc < reflectChoice(lobe, fresnelDielectric(dot(wo, h), eta))) {
            out->wi = reflectAbout(wo, h);
            return out->wi.z > 0;
        }
        return refractThrough(wo, h, eta, &out->wi) && out->wi.z < 0;
    }
    }
    return false;
}

// A lobe's share of the samples for a ray from `wo`: its weight times what its Fresnel term
// lets it reflect at that angle.
float selectionWeight(const Lobe& lobe, const Vec3& wo, float eta) {
    switch (lobe.kind) {
    case LobeKind::Mirror:
    case LobeKind::GgxConductor: return luminance(lobe.weight * reflectance(lobe, wo.z));
    case LobeKind::Dielectric:
    case LobeKind::GgxDielectric: {
        const float f = lobe.kind == LobeKind::Dielectric ? dielectricReflectance(lobe, wo.z, eta)
                                                          : fresnelDielectric(wo.z, eta);
        return f * luminance(lobe.weight) + (1 - f) * luminance(lobe.transmission);
    }
    case LobeKind::Lambert:
    case LobeKind::LambertTransmit:
    case LobeKind::Transparent: return luminance(lobe.weight);
    }
    return 0;
}

constexpr float kMinCos = 1e-7f;

} // namespace

Bsdf::Bsdf(const Vec3& shadingNormal, const Vec3& geometricNormal) { reset(shadingNormal, geometricNormal); }

void Bsdf::reset(const Vec3& shadingNormal, const Vec3& geometricNormal) {
    frame_ = Frame::around(dot(shadingNormal, geometricNormal) < 0 ? -shadingNormal : shadingNormal);
    geometricNormal_ = geometricNormal;
    count_ = 0;
}

bool Bsdf::add(const Lobe& lobe) {
    if (count_ == kMaxLobes) return false;
    if (!isFinite(lobe.weight) || !isFinite(lobe.transmission) || !isFinite(lobe.f0) ||
        !isFinite(lobe.edgeTint) || !std::isfinite(lobe.eta) || !(lobe.eta > 0) ||
        !std::isfinite(lobe.alphaX) || !std::isfinite(lobe.alphaY))
        return false;
    lobes_[count_++].lobe = lobe;
    return true;
}

void Bsdf::addAccepted(const std::vector<Lobe>& lobes) {
    for (const Lobe& lobe : lobes) {
        if (count_ == kMaxLobes) return;
        lobes_[count_++].lobe = lobe;
    }
}

void Bsdf::scaleAll(const Color& factor) {
    for (int i = 0; i < count_; ++i) {
        lobes_[i].lobe.weight *= factor;
        lobes_[i].lobe.transmission *= factor;
    }
}

BsdfView::BsdfView(const Bsdf& bsdf, const Vec3& wo) : bsdf_(bsdf) {
    const Vec3 woShading = bsdf.frame_.toLocal(wo);
    grazing_ = std::abs(woShading.z) < kMinCos;
    flipped_ = woShading.z < 0;
    woLobe_ = toLobe(woShading);
    woGeometric_ = dot(wo, bsdf.geometricNormal_);
    float total = 0;
    for (int i = 0; i < bsdf.count_; ++i) {
        const Lobe& lobe = bsdf.lobes_[i].lobe;
        probabilities_[i] = std::max(0.0f, selectionWeight(lobe, woLobe_, eta(lobe)));
        total += probabilities_[i];
    }
    scatters_ = total > 0;
    const float inverse = scatters_ ? 1 / total : 0.0f;
    for (int i = 0; i < bsdf.count_; ++i) probabilities_[i] *= inverse;
}

Color BsdfView::evaluateLobes(const Vec3& wiLobe, float* pdf) const {
    *pdf = 0;
    Color value(0);
    for (int i = 0; i < bsdf_.count_; ++i) {
        const Lobe& lobe = bsdf_.lobes_[i].lobe;
        if (isDeltaKind(lobe.kind)) continue;
        const LobeValue part = evaluateLobe(lobe, woLobe_, wiLobe, eta(lobe));
        value += part.value;
        *pdf += probabilities_[i] * part.pdf;
    }
    return value;
}

Color BsdfView::evaluate(const Vec3& wi, float* pdf) const {
    *pdf = 0;
    const Vec3 wiShading = bsdf_.frame_.toLocal(wi);
    if (grazing_ || std::abs(wiShading.z) < kMinCos) return Color(0);
    // A direction that the shading normal puts on one side and the geometric normal on the
    // other would leak light through the surface.
    const bool sameSide = woLobe_.z * toLobe(wiShading).z > 0;
    if (sameSide != (woGeometric_ * dot(wi, bsdf_.geometricNormal_) > 0)) return Color(0);
    return evaluateLobes(toLobe(wiShading), pdf);
}

bool BsdfView::sample(float u0, float u1, float u2, BsdfSample* out) const {
    if (grazing_ || !scatters_) return false;
    const int count = bsdf_.count_;
    int chosen = -1;
    float below = 0;
    for (int i = 0; i < count && chosen < 0; ++i) {
        if (probabilities_[i] <= 0) continue;
        if (u0 < below + probabilities_[i] || i == count - 1) chosen = i;
        else below += probabilities_[i];
    }
    if (chosen < 0) return false;
    const float probability = probabilities_[chosen];
    // The part of u0 that fell inside the chosen lobe's share, reused within the lobe.
    const float uc = std::clamp((u0 - below) / probability, 0.0f, 0.99999994f);

    const Lobe& lobe = bsdf_.lobes_[chosen].lobe;
    LobeDirection direction;
    if (!sampleLobe(lobe, woLobe_, eta(lobe), uc, u1, u2, &direction)) return false;
    const Vec3 wiShading = toLobe(direction.wi);
    if (std::abs(wiShading.z) < kMinCos && lobe.kind != LobeKind::Transparent) return false;
    // Unit already: the frame is orthonormal and the lobes give unit directions.
    out->wi = bsdf_.frame_.toWorld(wiShading);
    out->transmitted = direction.wi.z < 0;
    const bool geometricSameSide = woGeometric_ * dot(out->wi, bsdf_.geometricNormal_) > 0;
    if (isDeltaKind(lobe.kind)) {
        if (lobe.kind != LobeKind::Transparent && out->transmitted == geometricSameSide) return false;
        out->delta = true;
        out->pdf = probability * direction.pdf;
        out->weight = direction.weight / probability;
        return true;
    }
    out->delta = false;
    if (out->transmitted == geometricSameSide) return false;
    const Color value = evaluateLobes(direction.wi, &out->pdf);
    if (!(out->pdf > 0)) return false;
    out->weight = value / out->pdf;
    return true;
}

bool Bsdf::isDelta() const {
    for (int i = 0; i < count_; ++i) {
        if (!isDeltaKind(lobes_[i].lobe.kind)) return false;
    }
    return count_ > 0;
}

Color Bsdf::albedo() const {
    Color sum(0);
    for (int i = 0; i < count_; ++i) {
        const Lobe& lobe = lobes_[i].lobe;
        switch (lobe.kind) {
        case LobeKind::Lambert:
        case LobeKind::LambertTransmit: sum += lobe.weight; break;
        case LobeKind::Mirror:
        case LobeKind::GgxConductor: sum += lobe.weight * reflectance(lobe, 1); break;
        case LobeKind::Dielectric:
        case LobeKind::GgxDielectric: {
            const float f = fresnelDielectric(1, lobe.eta);
            sum += lobe.weight * f + lobe.transmission * (1 - f);
            break;
        }
        case LobeKind::Transparent: break;
        }
    }
    return vmin(vmax(sum, Color(0)), Color(1));
}

} // namespace preview

#include "engines/preview/materials/surface_lobes.h"

#include "engines/preview/materials/microfacet.h"

namespace preview {

namespace {

// Below this alpha a GGX lobe is a mirror to within float precision; its delta form is cheaper
// and free of the distribution's numerical spikes.
constexpr float kSmoothAlpha = 1e-3f;

float clamp01(float v) { return std::clamp(v, 0.0f, 1.0f); }

Color clamp01(const Color& c) { return vmin(vmax(c, Color(0)), Color(1)); }

struct Roughness {
    float alphaX = 0, alphaY = 0;
    bool smooth() const { return std::max(alphaX, alphaY) < kSmoothAlpha; }
};

Roughness roughnessAt(float roughness, float anisotropy) {
    const float alpha = clamp01(roughness) * clamp01(roughness);
    // Stretched along the tangent, kept along the bitangent, the area of the highlight growing
    // with the anisotropy.
    const float aspect = std::sqrt(1 - 0.9f * clamp01(anisotropy));
    return {std::min(1.0f, alpha / aspect), alpha * aspect};
}

// A reflection-only lobe: a mirror when smooth, a GGX lobe otherwise.
Lobe reflectionLobe(const Roughness& roughness, const Color& weight) {
    Lobe lobe;
    lobe.kind = roughness.smooth() ? LobeKind::Mirror : LobeKind::GgxConductor;
    lobe.weight = weight;
    lobe.alphaX = roughness.alphaX;
    lobe.alphaY = roughness.alphaY;
    return lobe;
}

Lobe dielectricReflection(const Roughness& roughness, const Color& weight, float eta) {
    Lobe lobe = reflectionLobe(roughness, weight);
    lobe.fresnel = FresnelModel::Dielectric;
    lobe.eta = eta;
    return lobe;
}

// The refracting layer. A rough thin sheet scatters its reflection and passes the rest straight
// on, its two faces' blurs being left out.
void addRefraction(const Roughness& roughness, const Color& reflected, const Color& refracted, float eta, bool thin,
                   float cosO, Bsdf* bsdf) {
    if (thin && !roughness.smooth()) {
        bsdf->add(dielectricReflection(roughness, reflected, eta));
        const float f = fresnelDielectric(cosO, eta);
        Lobe through;
        through.kind = LobeKind::Transparent;
        through.weight = refracted * (1 - 2 * f / (1 + f));
        if (!isBlack(through.weight)) bsdf->add(through);
        return;
    }
    Lobe lobe;
    lobe.kind = roughness.smooth() ? LobeKind::Dielectric : LobeKind::GgxDielectric;
    lobe.weight = reflected;
    lobe.transmission = refracted;
    lobe.eta = eta;
    lobe.thinWalled = thin;
    lobe.alphaX = roughness.alphaX;
    lobe.alphaY = roughness.alphaY;
    bsdf->add(lobe);
}

void addIfLit(const Lobe& lobe, Bsdf* bsdf) {
    if (!isBlack(lobe.weight)) bsdf->add(lobe);
}

bool mapped(const TexturedColor& color) { return color.map >= 0 || color.scaleMap >= 0; }
bool mapped(const TexturedScalar& scalar) { return scalar.map >= 0; }

// What addSurfaceLobes reads of the hit besides its side: the maps, and the angle of the ray for
// the coat's, the specular layer's and a rough thin sheet's Fresnel terms.
bool dependsOnHit(const SurfaceLayers& s) {
    const bool anyMap = mapped(s.coatWeight) || mapped(s.coatColor) || mapped(s.coatTint) ||
                        mapped(s.coatRoughness) || mapped(s.metalness) || mapped(s.conductor) || mapped(s.edge) ||
                        mapped(s.specular) || mapped(s.transmissionWeight) || mapped(s.transmission) ||
                        mapped(s.diffuse) || mapped(s.backDiffuse) || mapped(s.translucence) || mapped(s.roughness);
    const bool coated = s.coatWeight.value > 0;
    const bool specular = !isBlack(s.specular.value);
    const bool thinSheet = s.thin && s.transmissionWeight.value > 0;
    return anyMap || coated || specular || thinSheet;
}

// Stands for the maps where the layers name none.
class NoMaps final : public TexMapLookup {
  public:
    Color color(int32_t, const ShadingContext&, Color fallback) const override { return fallback; }
    float scalar(int32_t, const ShadingContext&, float fallback) const override { return fallback; }
    Vec3 normal(int32_t, const ShadingContext&) const override { return {0, 0, 1}; }
};

} // namespace

Color evaluate(const TexturedColor& color, const ShadingContext& at, const TexMapLookup& maps) {
    Color value = color.value;
    if (isBlack(value)) return Color(0);
    if (color.map >= 0) value *= maps.color(color.map, at, Color(1));
    if (color.scaleMap >= 0) value *= maps.scalar(color.scaleMap, at, 1);
    return isFinite(value) ? vmax(value, Color(0)) : Color(0);
}

float evaluate(const TexturedScalar& scalar, const ShadingContext& at, const TexMapLookup& maps) {
    float value = scalar.value;
    if (scalar.map >= 0 && value != 0) value *= maps.scalar(scalar.map, at, 1);
    return std::isfinite(value) ? value : 0;
}

CoatAtHit coatAt(const SurfaceLayers& layers, const ShadingContext& at, const TexMapLookup& maps) {
    CoatAtHit coat;
    const float weight = clamp01(evaluate(layers.coatWeight, at, maps));
    if (weight <= 0) return coat;
    const float cosO = std::abs(dot(at.wo, at.shadingNormal));
    const Color color = evaluate(layers.coatColor, at, maps) * weight;
    const Roughness roughness = roughnessAt(evaluate(layers.coatRoughness, at, maps), 0);
    coat.present = !isBlack(color);
    coat.lobe = dielectricReflection(roughness, color, layers.coatEta);
    const float f = fresnelDielectric(cosO, layers.coatEta);
    const Color tint = lerp(Color(1), clamp01(evaluate(layers.coatTint, at, maps)), weight);
    coat.beneath = clamp01(Color(1) - color * f) * tint;
    return coat;
}

void addSurfaceLobes(const SurfaceLayers& s, const ShadingContext& at, const TexMapLookup& maps, Bsdf* bsdf) {
    const CoatAtHit coat = coatAt(s, at, maps);
    if (coat.present) bsdf->add(coat.lobe);
    const float cosO = std::abs(dot(at.wo, at.shadingNormal));
    float roughnessValue = evaluate(s.roughness, at, maps);
    if (s.roughnessIsGlossiness) roughnessValue = 1 - roughnessValue;
    const Roughness roughness = roughnessAt(roughnessValue, s.anisotropy);

    const float metal = clamp01(evaluate(s.metalness, at, maps));
    if (metal > 0) {
        Lobe conductor = reflectionLobe(roughness, coat.beneath * metal);
        conductor.f0 = clamp01(evaluate(s.conductor, at, maps));
        conductor.edgeTint = clamp01(evaluate(s.edge, at, maps));
        if (!isBlack(conductor.f0) || !isBlack(conductor.edgeTint)) addIfLit(conductor, bsdf);
    }
    const Color dielectric = coat.beneath * (1 - metal);
    if (isBlack(dielectric)) return;
    const Color specular = clamp01(evaluate(s.specular, at, maps));
    const float transmitted = clamp01(evaluate(s.transmissionWeight, at, maps));
    if (transmitted > 0) {
        addRefraction(roughness, dielectric * transmitted * specular,
                      dielectric * transmitted * clamp01(evaluate(s.transmission, at, maps)), s.eta, s.thin, cosO,
                      bsdf);
    }
    const Color opaque = dielectric * (1 - transmitted);
    if (isBlack(opaque)) return;
    Color beneath = opaque;
    if (!isBlack(specular)) {
        addIfLit(dielectricReflection(roughness, opaque * specular, s.eta), bsdf);
        const float f = fresnelDielectric(cosO, s.eta);
        beneath = opaque * clamp01(Color(1) - specular * f);
    }
    Color diffuse = clamp01(evaluate(s.hasBack && !at.frontFacing ? s.backDiffuse : s.diffuse, at, maps));
    Color translucence = clamp01(evaluate(s.translucence, at, maps));
    // What the base reflects and lets through together can't exceed what reaches it.
    const Color total = diffuse + translucence;
    const float excess = std::max(1.0f, maxComponent(total));
    diffuse /= excess;
    translucence /= excess;
    Lobe lambert;
    lambert.weight = beneath * diffuse;
    addIfLit(lambert, bsdf);
    Lobe through;
    through.kind = LobeKind::LambertTransmit;
    through.weight = beneath * translucence;
    addIfLit(through, bsdf);
}

std::optional<SidedLobes> fixedSurfaceLobes(const SurfaceLayers& layers) {
    if (dependsOnHit(layers)) return std::nullopt;
    SidedLobes sided;
    for (const bool front : {true, false}) {
        ShadingContext at;
        at.geometricNormal = at.shadingNormal = Vec3(0, 0, 1);
        at.wo = Vec3(0, 0, front ? 1 : -1);
        at.frontFacing = front;
        Bsdf bsdf(at.shadingNormal, at.geometricNormal);
        addSurfaceLobes(layers, at, NoMaps(), &bsdf);
        std::vector<Lobe>& lobes = front ? sided.front : sided.back;
        for (int i = 0; i < bsdf.lobeCount(); ++i) lobes.push_back(bsdf.lobe(i));
    }
    return sided;
}

} // namespace preview

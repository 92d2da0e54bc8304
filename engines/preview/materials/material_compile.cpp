#include "engines/preview/materials/material_compile.h"

#include "documents/materials/families.h"
#include "engines/preview/materials/field_reader.h"
#include "engines/preview/materials/surface_lobes.h"

#include <cstring>

namespace preview {

namespace {

// Material type numbers, as the field tables give them.
enum MaterialType : int32_t {
    kPhysical = 1,
    kBlendSided = 2,
    kUber = 4,
    kLambertianEmission = 5,
    kIdealDiffuse = 6,
    kDiffuse = 7,
    kIdealSpecular = 8,
    kBump = 10,
    kMix = 11,
    kIdealMirror = 12,
    kIdealDielectric = 13,
    kCutout = 14,
    kNormalMap = 15,
    kTwoSided = 16,
    kIdealConductor = 17,
    kIdealCoating = 18,
    kRoughDielectric = 19,
    kRoughConductor = 20,
    kRoughCoating = 21,
    kDisplacementMap = 22,
    kVolumetric = 25,
    kNullMaterial = 27, // accepted by documents, without a table
    kMtlProxy = 28,
    kMie = 31,
    kStateSwitch = 32,
};

Color kelvinColor(TemperatureColor temperature, float kelvin) {
    if (!temperature || !(kelvin > 0)) return Color(1);
    return temperature(kelvin);
}

float positiveOr(float value, float fallback) { return value > 0 ? value : fallback; }

// ---- Surfaces ----------------------------------------------------------------------------------

void compileDiffuse(FieldReader& r, CompiledMaterial* m) {
    m->shape = MaterialShape::Surface;
    SurfaceLayers& s = m->surface;
    s.diffuse = r.texturedColor("FrontColor", "FrontMap");
    s.backDiffuse = r.texturedColor("BackColor", "BackMap");
    s.hasBack = true;
    s.translucence = r.texturedColor("TranslucenceColor", "TranslucenceMap");
}

void compileEmitter(FieldReader& r, TemperatureColor temperature, CompiledMaterial* m) {
    m->shape = MaterialShape::Emitter;
    EmissionLayer& e = m->emission;
    e.present = true;
    e.color = r.texturedColor("EmissionColor", "EmissionMap");
    e.intensity = r.texturedScalar("IntensityValue", "IntensityMap");
    e.temperature = kelvinColor(temperature, r.real("KelvinValue", 6500));
    e.visible = r.view().flag("Visible", true);
}

// The Roughness section of the rough types: the first value of its vector is the roughness,
// the second the anisotropy.
void readRoughness(FieldReader& r, TexturedScalar* roughness, float* anisotropy) {
    const Color vector = r.color("Roughness/RoughnessVector", Color(0));
    *roughness = {std::min(vector.x, 1.0f), r.view().texMap("Roughness/RoughnessMap")};
    *anisotropy = std::clamp(vector.y, 0.0f, 1.0f);
}

TexturedColor weighted(FieldReader& r, const char* colorKey, const char* mapKey, const char* weightKey,
                       const char* weightMapKey) {
    TexturedColor out = r.texturedColor(colorKey, mapKey);
    out.value *= std::max(0.0f, r.real(weightKey, 1));
    out.scaleMap = r.view().texMap(weightMapKey);
    return out;
}

void compileConductor(FieldReader& r, bool rough, CompiledMaterial* m) {
    m->shape = MaterialShape::Surface;
    SurfaceLayers& s = m->surface;
    s.metalness = {1};
    // The rough form keeps its reflection keys inside their section, the ideal form beside it.
    if (rough) {
        s.conductor = weighted(r, "Reflection/ReflectionColor", "Reflection/ReflectionMap",
                               "Reflection/ReflectionWeight", "Reflection/ReflectionWeightMap");
    } else {
        s.conductor = weighted(r, "ReflectionColor", "ReflectionMap", "Reflection/ReflectionWeight",
                               "ReflectionWeightMap");
    }
    // The edge colour bends Schlick's white edge towards itself by its weight.
    const float edgeWeight = std::clamp(r.real("ReflectionEdge/EdgeWeight", 0), 0.0f, 1.0f);
    const TexturedColor edge = r.texturedColor("ReflectionEdge/EdgeColor", "ReflectionEdge/EdgeMap");
    s.edge = {lerp(Color(1), edge.value, edgeWeight), edgeWeight > 0 ? edge.map : -1};
    if (rough) readRoughness(r, &s.roughness, &s.anisotropy);
}

void compileMirror(FieldReader& r, CompiledMaterial* m) {
    m->shape = MaterialShape::Surface;
    m->surface.metalness = {1};
    m->surface.conductor = r.texturedColor("ReflectionColor", "ReflectionMap");
    m->surface.edge = m->surface.conductor;
}

// A Phong-like exponent turned into the GGX roughness of a similar highlight.
void compileIdealSpecular(FieldReader& r, CompiledMaterial* m) {
    m->shape = MaterialShape::Surface;
    m->surface.metalness = {1};
    m->surface.conductor = r.texturedColor("SpecularColor", "SpecularMap");
    m->surface.edge = m->surface.conductor;
    const float power = std::max(0.0f, r.real("PowerValue", 0));
    m->surface.roughness = {std::sqrt(std::min(1.0f, std::sqrt(2 / (power + 2))))};
}

void compileDielectric(FieldReader& r, bool rough, CompiledMaterial* m) {
    m->shape = MaterialShape::Surface;
    SurfaceLayers& s = m->surface;
    s.transmissionWeight = {1};
    s.specular = weighted(r, "Reflection/ReflectionColor", "Reflection/ReflectionMap",
                          "Reflection/ReflectionWeight", "Reflection/ReflectionWeightMap");
    s.transmission = weighted(r, "Transmission/TransmissionColor", "Transmission/TransmissionMap",
                              "Transmission/TransmissionValue", "Transmission/TransmissionWeightMap");
    s.eta = positiveOr(r.real("IOR/IOR_Value", 1.5f), 1.5f);
    s.thin = r.view().flag("Thin");
    if (rough) readRoughness(r, &s.roughness, &s.anisotropy);
}

void compileCoating(FieldReader& r, bool rough, CompiledMaterial* m) {
    m->shape = MaterialShape::Coating;
    SurfaceLayers& s = m->surface;
    s.coatWeight = {1};
    s.coatColor = r.texturedColor("Reflection/ReflectionColor", "Reflection/ReflectionMap");
    s.coatColor.value *= std::max(0.0f, r.real("Reflection/ReflectionValue", 1));
    s.coatTint = r.texturedColor("Transmission/TransmissionColor", "Transmission/TransmissionMap");
    s.coatTint.value *= std::max(0.0f, r.real("Transmission/TransmissionValue", 1));
    s.coatEta = positiveOr(r.real("IOR/IOR_Value", 1.5f), 1.5f);
    if (rough) {
        float anisotropy = 0;
        readRoughness(r, &s.coatRoughness, &anisotropy);
    }
    m->children.push_back({r.view().material("Material"), {1}, 1});
}

// ---- The layered types -------------------------------------------------------------------------

// Every parameter of PHYSICAL is a curve with a map beside it.
TexturedScalar curve(FieldReader& r, const char* key, const char* mapKey, float fallback) {
    return {r.splineStart(key, fallback), mapKey ? r.view().texMap(mapKey) : -1};
}
TexturedColor colorCurve(FieldReader& r, const char* key, const char* mapKey, Color fallback) {
    return {r.colorSplineStart(key, fallback), r.view().texMap(mapKey)};
}

void compilePhysical(FieldReader& r, TemperatureColor temperature, CompiledMaterial* m) {
    m->shape = MaterialShape::Surface;
    SurfaceLayers& s = m->surface;
    const TexturedScalar baseWeight = curve(r, "Base/BaseWeight", "Base/BaseWeightMap", 1);
    const TexturedColor baseColor = colorCurve(r, "Base/BaseColor", "Base/BaseColorMap", Color(0.8f));
    s.diffuse = {baseColor.value * baseWeight.value, baseColor.map, baseWeight.map};

    const TexturedScalar reflectionWeight =
        curve(r, "Reflection/ReflectionWeight", "Reflection/ReflectionWeight_Map", 1);
    const TexturedColor reflectionColor =
        colorCurve(r, "Reflection/ReflectionColor", "Reflection/ReflectionColor_Map", Color(1));
    s.specular = {reflectionColor.value * reflectionWeight.value, reflectionColor.map, reflectionWeight.map};
    // Metals take their colour from the base, as the usual metalness workflow does.
    s.conductor = {baseColor.value * reflectionColor.value * reflectionWeight.value, baseColor.map,
                   reflectionWeight.map};
    s.metalness = curve(r, "Reflection/ReflectionMetalness", "Reflection/ReflectionMetalness_Map", 0);
    s.roughness = curve(r, "Reflection/ReflectionRoughness", "Reflection/ReflectionRoughness_Map", 0.2f);
    s.roughnessIsGlossiness = r.view().flag("Reflection/ReflectionRoughnessInvert");
    s.anisotropy = std::clamp(r.splineStart("Special/AnisotropyValue", 0), 0.0f, 1.0f);
    s.eta = positiveOr(r.splineStart("Reflection/IOR", 1.5f), 1.5f);

    s.transmissionWeight = curve(r, "Transmission/TransmissionWeight", "Transmission/TransmissionWeightMap", 0);
    s.transmission =
        colorCurve(r, "Transmission/TransmissionColor", "Transmission/TransmissionColorMap", Color(1));

    s.coatWeight = curve(r, "Coating/CoatWeight", "Coating/CoatWeightMap", 0);
    s.coatTint = colorCurve(r, "Coating/CoatColor", "Coating/CoatColorMap", Color(1));
    s.coatRoughness = curve(r, "Coating/CoatRoughness", "Coating/CoatRoughnessMap", 0);
    if (r.view().flag("Coating/CoatRoughnessInvert")) s.coatRoughness.value = 1 - s.coatRoughness.value;
    s.coatEta = positiveOr(r.splineStart("Coating/CoatIOR", 1.5f), 1.5f);

    const TexturedScalar emissionWeight = curve(r, "Emission/EmissionWeight", "Emission/EmissionWeight_Map", 0);
    if (emissionWeight.value > 0) {
        EmissionLayer& e = m->emission;
        e.present = true;
        const TexturedColor color =
            colorCurve(r, "Emission/EmissionColor", "Emission/EmissionColor_Map", Color(1));
        e.color = {color.value * emissionWeight.value, color.map, emissionWeight.map};
        e.intensity = {std::max(0.0f, r.splineStart("Emission/EmissionLuminance", 1))};
        e.temperature = kelvinColor(temperature, r.splineStart("Emission/EmissionKelvin", 6500));
    }

    const int32_t cutout = r.view().texMap("Base/CutoutMap");
    if (cutout >= 0) {
        m->hasOpacity = true;
        m->opacity = {1, cutout};
    }
    m->bumpMap = r.view().texMap("Base/BumpMap");
    m->bumpScale = {r.splineStart("Base/BumpHeight", 1)};
}

// UBER: its diffuse, reflection and transmission layers with the coat on top; its media,
// retro-reflection and thin film are not rendered.
void compileUber(FieldReader& r, CompiledMaterial* m) {
    m->shape = MaterialShape::Surface;
    SurfaceLayers& s = m->surface;
    const float diffuseWeight = std::max(0.0f, r.real("Weights/DiffuseWeightValue", 1));
    const int32_t diffuseWeightMap = r.view().texMap("Weights/DiffuseWeightMap");
    s.diffuse = r.texturedColor("Diffuse/Front/FrontColor", "Diffuse/Front/FrontMap");
    s.diffuse.value *= diffuseWeight * std::max(0.0f, r.real("Diffuse/Front/FrontValue", 1));
    s.diffuse.scaleMap = diffuseWeightMap;
    s.translucence = r.texturedColor("Diffuse/Translucence/TranslucenceColor", "Diffuse/Translucence/TranslucenceMap");
    s.translucence.value *= diffuseWeight * std::max(0.0f, r.real("Diffuse/Translucence/TranslucenceValue", 1));
    s.translucence.scaleMap = diffuseWeightMap;
    s.backDiffuse = r.texturedColor("Diffuse/Back/BackColor", "Diffuse/Back/BackMap");
    s.backDiffuse.value *= diffuseWeight * std::max(0.0f, r.real("Diffuse/Back/BackValue", 1));
    s.backDiffuse.scaleMap = diffuseWeightMap;
    s.hasBack = true;

    const float specularWeight = std::max(0.0f, r.real("Weights/RTCWeightValue", 1)) *
                                 std::max(0.0f, r.real("Weights/ReflectionWeightValue", 1));
    s.specular = r.texturedColor("RTC/Reflection/ReflectionColor", "RTC/Reflection/ReflectionMap");
    s.specular.value *= specularWeight;
    s.specular.scaleMap = r.view().texMap("Weights/ReflectionWeightMap");
    s.conductor = s.specular;
    const float edgeWeight = std::clamp(r.real("ReflectionEdge/EdgeValue", 0), 0.0f, 1.0f);
    s.edge = {lerp(Color(1), r.color("ReflectionEdge/EdgeColor", Color(1)), edgeWeight)};
    s.metalness = r.texturedScalar("RTC/MetalnessValue", "RTC/MetalnessMap");
    s.roughness = r.texturedScalar("RTC/Roughness/RoughnessValue", "RTC/Roughness/RoughnessMap");
    s.roughnessIsGlossiness = r.view().flag("RTC/Roughness/TreatAsGlossiness");
    s.anisotropy = std::clamp(r.real("RTC/Roughness/RoughnessAnisotropyValue", 0), 0.0f, 1.0f);
    s.eta = positiveOr(r.real("IOR/IOR_Value", 1.5f), 1.5f);
    s.transmissionWeight = r.texturedScalar("Weights/TransmissionWeightValue", "Weights/TransmissionWeightMap");
    s.transmission = r.texturedColor("Transmission/TransmissionLinColor", "Transmission/TransmissionLinMap");
    s.thin = r.view().flag("Transmission/Thin");

    s.coatWeight = r.texturedScalar("Weights/CoatWeightValue", "Weights/CoatWeightMap");
    s.coatColor = r.texturedColor("Coating/Reflection/ReflectionColor", "Coating/Reflection/ReflectionMap");
    s.coatColor.value *= std::max(0.0f, r.real("Coating/Reflection/ReflectionValue", 1));
    s.coatRoughness = r.texturedScalar("Coating/Roughness/RoughnessValue", "Coating/Roughness/RoughnessMap");
    if (r.view().flag("Coating/Roughness/TreatAsGlossiness")) s.coatRoughness.value = 1 - s.coatRoughness.value;
    s.coatEta = positiveOr(r.real("Coating/IOR/IOR_Value", 1.5f), 1.5f);

    m->bumpMap = r.view().texMap("Bump/BumpMap");
    m->bumpScale = {r.real("Bump/BumpHeightValue", 1)};
}

// ---- Materials made of materials ---------------------------------------------------------------

void compileMix(FieldReader& r, CompiledMaterial* m) {
    m->shape = MaterialShape::Mix;
    // NormalizationType NONE lets the weights sum below 1; every other kind scales them to 1.
    m->normalizeMix = r.view().integer("NormalizationType", 1) != 0;
    const FieldDescriptor* list = r.view().field("Child");
    if (!list) return;
    // The children list is one custom field of entries, each read by the entry's own table.
    const uint32_t entryBytes = kMixChildEntry.imageLength;
    const int32_t inUse = std::clamp(r.view().integer("NumChildren", 0), 0, int32_t(list->width / entryBytes));
    const uint8_t* entries = r.view().bytes("Child", list->width);
    for (int32_t i = 0; i < inUse; ++i) {
        const RecordView entry(entries + i * entryBytes, entryBytes, &kMixChildEntry);
        const int32_t material = entry.material("Material");
        if (material == -1) continue;
        const float weight = entry.real("Weight", 0);
        const float mapMixValue = entry.real("MapMix", 1);
        const float clampedWeight = std::isfinite(weight) ? std::max(0.0f, weight) : 0.0f;
        const float mapMix = std::isfinite(mapMixValue) ? std::clamp(mapMixValue, 0.0f, 1.0f) : 1.0f;
        m->children.push_back({material, {clampedWeight, entry.texMap("WeightMap")}, mapMix});
    }
}

void compileReferences(FieldReader& r, MaterialShape shape, std::initializer_list<const char*> keys,
                       CompiledMaterial* m) {
    m->shape = shape;
    for (const char* key : keys)
        m->children.push_back({r.view().material(key), {1}, 1});
}

void compileCutout(FieldReader& r, CompiledMaterial* m) {
    compileReferences(r, MaterialShape::Wrapper, {"Material"}, m);
    m->hasOpacity = true;
    // The mask is the opacity; without a map, MaskValue is.
    const int32_t mask = r.view().texMap("MaskMap");
    m->opacity = {mask >= 0 ? 1.0f : std::clamp(r.real("MaskValue", 1), 0.0f, 1.0f), mask};
}

void compileBump(FieldReader& r, CompiledMaterial* m) {
    compileReferences(r, MaterialShape::Wrapper, {"Material"}, m);
    m->bumpMap = r.view().texMap("BumpMap");
    m->bumpScale = r.texturedScalar("BumpHeightValue", "BumpHeightMap", 1);
}

void compileNormalMap(FieldReader& r, CompiledMaterial* m) {
    compileReferences(r, MaterialShape::Wrapper, {"Material"}, m);
    m->normalMap = r.view().texMap("NormalMap");
    m->normalStrength = r.real("ScaleValue", 1);
}

void compileBlendSided(FieldReader& r, CompiledMaterial* m) {
    compileReferences(r, MaterialShape::BlendSided, {"FrontMaterial", "BackMaterial"}, m);
    m->amount = {std::clamp(r.splineStart("TranslucencySpline", 0), 0.0f, 1.0f), r.view().texMap("TranslucencyMap")};
}

} // namespace

CompileResult compileMaterial(const MaterialRecord& record, TemperatureColor temperature) {
    const RecordView view = RecordView::material(record);
    FieldReader r(view);
    CompileResult result;
    CompiledMaterial* m = &result.material;
    m->type = record.type;
    switch (record.type) {
    case kPhysical: compilePhysical(r, temperature, m); break;
    case kBlendSided: compileBlendSided(r, m); break;
    case kUber: compileUber(r, m); break;
    case kLambertianEmission: compileEmitter(r, temperature, m); break;
    case kIdealDiffuse:
    case kDiffuse: compileDiffuse(r, m); break;
    case kIdealSpecular: compileIdealSpecular(r, m); break;
    case kBump: compileBump(r, m); break;
    case kMix: compileMix(r, m); break;
    case kIdealMirror: compileMirror(r, m); break;
    case kIdealDielectric: compileDielectric(r, false, m); break;
    case kRoughDielectric: compileDielectric(r, true, m); break;
    case kCutout: compileCutout(r, m); break;
    case kNormalMap: compileNormalMap(r, m); break;
    case kTwoSided: compileReferences(r, MaterialShape::Sided, {"FrontMaterial", "BackMaterial"}, m); break;
    case kIdealConductor: compileConductor(r, false, m); break;
    case kRoughConductor: compileConductor(r, true, m); break;
    case kIdealCoating: compileCoating(r, false, m); break;
    case kRoughCoating: compileCoating(r, true, m); break;
    case kMtlProxy: compileReferences(r, MaterialShape::Wrapper, {"Material"}, m); break;
    case kStateSwitch: compileReferences(r, MaterialShape::Wrapper, {"DefaultMaterial"}, m); break;
    case kNullMaterial: m->shape = MaterialShape::Null; break;
    // Media have no surface: their boundaries let rays through until volumes are rendered.
    case kVolumetric:
    case kMie:
        m->shape = MaterialShape::Null;
        result.supported = false;
        break;
    // The base material renders without its displacement.
    case kDisplacementMap:
        compileReferences(r, MaterialShape::Wrapper, {"Material"}, m);
        result.supported = false;
        break;
    default: result.supported = false; break;
    }
    if (m->shape == MaterialShape::Surface) m->fixedLobes = fixedSurfaceLobes(m->surface);
    result.nonFinite = r.sawNonFinite();
    return result;
}

} // namespace preview

#include "tools/builder/material_records.h"

#include "tools/scene_writer/preview_builders.h"

#include <stdexcept>

namespace builder {

using scene_writer::Bytes;

namespace {

ColorRGB rgb(const Vec3& c) {
    return {c[0], c[1], c[2]};
}

// PHYSICAL keeps its colours as colour curves, which the general builder has no setter for.
class PhysicalBuilder : public scene_writer::MaterialBuilder {
  public:
    PhysicalBuilder(int32_t id, const std::string& name) : MaterialBuilder("PHYSICAL", id, name) {}
    PhysicalBuilder& colourCurve(const char* key, const Vec3& colour) {
        const FieldDescriptor* row = scene_writer::findRow(type(), key);
        if (!row || row->kind != FieldKind::ColorSpline)
            throw std::invalid_argument(std::string("PHYSICAL key ") + key + " is no colour curve");
        scene_writer::putConstantColorSpline(image_, row->offset, rgb(colour));
        return *this;
    }
};

Bytes physical(const Surface& s, int32_t id) {
    const bool emits = s.emission[0] > 0 || s.emission[1] > 0 || s.emission[2] > 0;
    PhysicalBuilder material(id, s.name);
    // The base setters return the general builder, so the colour curves come first.
    material.colourCurve("Base/BaseColor", s.colour)
        .colourCurve("Reflection/ReflectionColor", {1, 1, 1})
        .colourCurve("Transmission/TransmissionColor", {1, 1, 1})
        .colourCurve("Coating/CoatColor", {1, 1, 1})
        .colourCurve("Emission/EmissionColor", emits ? s.emission : Vec3{1, 1, 1});
    material.real("Base/BaseWeight", 1)
        .texMap("Base/BaseColorMap", s.colourTexture)
        .real("Reflection/ReflectionWeight", 1)
        .real("Reflection/ReflectionRoughness", s.roughness)
        .real("Reflection/ReflectionMetalness", s.metallic)
        .real("Reflection/IOR", s.ior)
        .real("Transmission/TransmissionWeight", s.transmission)
        .real("Coating/CoatWeight", s.coat)
        .real("Coating/CoatRoughness", s.coatRoughness)
        .real("Coating/CoatIOR", 1.5f)
        .real("Emission/EmissionWeight", emits ? 1.0f : 0.0f)
        .texMap("Emission/EmissionColor_Map", emits ? s.emissionTexture : -1)
        .real("Emission/EmissionLuminance", s.emissionStrength)
        .real("Emission/EmissionKelvin", 6500);
    return material.body();
}

Bytes diffuse(const Surface& s, int32_t id) {
    // Both sides alike: models often show the inside of thin or open shapes.
    return scene_writer::MaterialBuilder("DIFFUSE", id, s.name)
        .color("FrontColor", rgb(s.colour))
        .texMap("FrontMap", s.colourTexture)
        .color("BackColor", rgb(s.colour))
        .texMap("BackMap", s.colourTexture)
        .color("TranslucenceColor", {0, 0, 0})
        .body();
}

Bytes conductor(const Surface& s, int32_t id) {
    return scene_writer::MaterialBuilder("ROUGHCONDUCTOR", id, s.name)
        .color("Reflection/ReflectionColor", rgb(s.colour))
        .real("Reflection/ReflectionWeight", 1)
        .color("ReflectionEdge/EdgeColor", {1, 1, 1})
        .real("ReflectionEdge/EdgeWeight", 1)
        .word("Roughness/RoughnessType", "GGX")
        .color("Roughness/RoughnessVector", {s.roughness, 0, 0})
        .body();
}

Bytes dielectric(const Surface& s, int32_t id) {
    return scene_writer::MaterialBuilder("ROUGHDIELECTRIC", id, s.name)
        .color("Reflection/ReflectionColor", {1, 1, 1})
        .real("Reflection/ReflectionWeight", 1)
        .color("Transmission/TransmissionColor", rgb(s.colour))
        .real("Transmission/TransmissionValue", 1)
        .real("IOR/IOR_Value", s.ior)
        .word("Roughness/RoughnessType", "GGX")
        .color("Roughness/RoughnessVector", {s.roughness, 0, 0})
        .body();
}

Bytes emitter(const Surface& s, int32_t id) {
    return scene_writer::MaterialBuilder("LAMBERTIANEMISSION", id, s.name)
        .color("EmissionColor", rgb(s.emission))
        .texMap("EmissionMap", s.emissionTexture)
        .real("IntensityValue", s.emissionStrength)
        .real("KelvinValue", 6500)
        .flag("Visible", true)
        .body();
}

} // namespace

Bytes materialRecord(const Surface& surface, int32_t id) {
    switch (surface.kind) {
    case SurfaceKind::Physical: return physical(surface, id);
    case SurfaceKind::Diffuse: return diffuse(surface, id);
    case SurfaceKind::RoughConductor: return conductor(surface, id);
    case SurfaceKind::RoughDielectric: return dielectric(surface, id);
    case SurfaceKind::Emitter: return emitter(surface, id);
    }
    throw std::logic_error("materialRecord: unknown surface kind");
}

Bytes textureMapRecord(const TextureSource& texture, int32_t id) {
    return scene_writer::TexMapBuilder("IMAGE", id, texture.name).texture("Texture", id).body();
}

Bytes textureFileRecord(const TextureSource& texture, int32_t id) {
    scene_writer::TextureFilePlan plan;
    plan.id = id;
    plan.name = texture.name;
    plan.path = texture.sceneRelPath;
    return scene_writer::textureFileBody(plan);
}

} // namespace builder

// PHYSICAL: a layered surface of coating, base, reflection, transmission, subsurface, emission
// and special sections. Nearly every parameter is a curve of four segments with a map beside it;
// the tracer evaluates the curves, the client only carries them. The inversion flags and the
// custom IOR switch sit together at the end of the record, after all the curves.
#include "documents/materials/families.h"

namespace {

constexpr FieldDescriptor kPhysicalFields[] = {
    sectionField("Coating"),
    splineField("Coating/CoatWeight", 268, 4),
    texMapField("Coating/CoatWeightMap", 396),
    colorSplineField("Coating/CoatColor", 400),
    texMapField("Coating/CoatColorMap", 720),
    splineField("Coating/CoatRoughness", 724, 4),
    texMapField("Coating/CoatRoughnessMap", 852),
    boolField("Coating/CoatRoughnessInvert", 6196),
    splineField("Coating/CoatIOR", 856, 4),
    splineField("Coating/CoatUnderlyingColor", 984, 4),
    splineField("Coating/CoatUnderlyingRoughness", 1112, 4),
    splineField("Coating/CoatBumpHeight", 1240, 4),
    texMapField("Coating/CoatBumpMap", 1368),

    sectionField("Base"),
    splineField("Base/BaseWeight", 1372, 4),
    texMapField("Base/BaseWeightMap", 1500),
    colorSplineField("Base/BaseColor", 1504),
    texMapField("Base/BaseColorMap", 1824),
    splineField("Base/BaseRoughness", 1828, 4),
    texMapField("Base/BaseRoughnessMap", 1956),
    boolField("Base/BaseRoughnessInvert", 6197),
    splineField("Base/BumpHeight", 1960, 4),
    texMapField("Base/BumpMap", 2088),
    splineField("Base/DisplacementHeight", 2092, 4),
    texMapField("Base/DisplacementMap", 2220),
    texMapField("Base/CutoutMap", 2224),

    sectionField("Reflection"),
    splineField("Reflection/ReflectionWeight", 2228, 4),
    texMapField("Reflection/ReflectionWeight_Map", 2356),
    colorSplineField("Reflection/ReflectionColor", 2360),
    texMapField("Reflection/ReflectionColor_Map", 2680),
    splineField("Reflection/ReflectionRoughness", 2684, 4),
    texMapField("Reflection/ReflectionRoughness_Map", 2812),
    boolField("Reflection/ReflectionRoughnessInvert", 6198),
    splineField("Reflection/ReflectionMetalness", 2816, 4),
    texMapField("Reflection/ReflectionMetalness_Map", 2944),
    splineField("Reflection/IOR", 2948, 4),
    texMapField("Reflection/IORMap", 3076),

    sectionField("Transmission"),
    splineField("Transmission/TransmissionWeight", 3080, 4),
    texMapField("Transmission/TransmissionWeightMap", 3208),
    colorSplineField("Transmission/TransmissionColor", 3212),
    texMapField("Transmission/TransmissionColorMap", 3532),
    splineField("Transmission/TransmissionRoughness", 3536, 4),
    texMapField("Transmission/TransmissionRoughnessMap", 3664),
    boolField("Transmission/TransmissionRoughnessInvert", 6199),
    splineField("Transmission/TransmissionDepth", 3668, 4),

    sectionField("SSS"),
    splineField("SSS/SSS_Weight", 3796, 4),
    texMapField("SSS/SSS_WeightMap", 3924),
    colorSplineField("SSS/SSS_Color", 3928),
    texMapField("SSS/SSS_ColorMap", 4248),
    colorSplineField("SSS/SSS_ScatterColor", 4252),
    splineField("SSS/SSS_Depth", 4572, 4),
    splineField("SSS/SSS_Scale", 4700, 4),
    texMapField("SSS/SSS_ScaleMap", 4828),

    sectionField("Emission"),
    splineField("Emission/EmissionWeight", 4832, 4),
    texMapField("Emission/EmissionWeight_Map", 4960),
    colorSplineField("Emission/EmissionColor", 4964),
    texMapField("Emission/EmissionColor_Map", 5284),
    splineField("Emission/EmissionLuminance", 5288, 4),
    splineField("Emission/EmissionKelvin", 5416, 4),

    sectionField("Special"),
    boolField("Special/IOR_UseCustom", 6200),
    splineField("Special/IOR_CustomFacing", 5544, 4),
    splineField("Special/IOR_CustomEdge", 5672, 4),
    splineField("Special/IOR_CustomSlope", 5800, 4),
    splineField("Special/AnisotropyValue", 5928, 4),
    texMapField("Special/AnisotropyValueMap", 6056),
    splineField("Special/AnisotropyAngle", 6060, 4),
    texMapField("Special/AnisotropyAngleMap", 6188),
    intField("Special/AnisotropyChannel", 6192),
};

} // namespace

// The image ends with the last flag; nothing of the type lies past it.
constexpr TypeDescriptor kPhysicalMaterial =
    describeType(1, "PHYSICAL", fieldsEnd(kPhysicalFields), kPhysicalFields);
static_assert(materialTableFits(kPhysicalMaterial));

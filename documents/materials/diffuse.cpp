// The matte surfaces, the Lambertian emitter and the simple subsurface type. Each is a set of
// colours with a map and a spline apiece; the tables alone describe them.
#include "documents/materials/families.h"

namespace {

constexpr const char* const kDiffuseRoughnessWords[] = {"LAMBERT", "OREN_NAYAR", "DISNEY", "HAMMON", nullptr};

// TwoSided is an empty element that documents carry; byte 302 belongs to no key.
constexpr FieldDescriptor kLambertianEmissionFields[] = {
    colorField("EmissionColor", 268),       texMapField("EmissionMap", 280),
    floatField("IntensityValue", 284),      texMapField("IntensityMap", 288),
    splineField("SplineIntensity", 304, 8), floatField("KelvinValue", 292),
    texMapField("KelvinMap", 296),          boolField("Visible", 300),
    boolField("Lambertian", 301),           sectionField("TwoSided"),
    boolField("OptimizeMaps", 303),
};

constexpr FieldDescriptor kIdealDiffuseFields[] = {
    colorField("FrontColor", 268),
    texMapField("FrontMap", 292),
    splineField("FrontSpline", 316, 8),
    colorField("BackColor", 280),
    texMapField("BackMap", 296),
    splineField("BackSpline", 572, 8),
    colorField("TranslucenceColor", 300),
    texMapField("TranslucenceMap", 312),
    splineField("TranslucenceSpline", 828, 8),
};

// The ideal form plus the roughness model.
constexpr FieldDescriptor kDiffuseFields[] = {
    colorField("FrontColor", 268),
    texMapField("FrontMap", 292),
    splineField("FrontSpline", 316, 8),
    colorField("BackColor", 280),
    texMapField("BackMap", 296),
    splineField("BackSpline", 572, 8),
    colorField("TranslucenceColor", 300),
    texMapField("TranslucenceMap", 312),
    splineField("TranslucenceSpline", 828, 8),
    enumField("RoughnessType", 1084, kDiffuseRoughnessWords),
    floatField("RoughnessValue", 1088),
    texMapField("RoughnessMap", 1092),
    splineField("RoughnessSpline", 1096, 8),
};

// AbsorptionSpline stands beside its section, unlike the splines of the other sections.
constexpr FieldDescriptor kSubsurfaceFields[] = {
    sectionField("Absorption"),
    floatField("Absorption/AbsorptionValue", 284),
    colorField("Absorption/AbsorptionColor", 268),
    texMapField("Absorption/AbsorptionMap", 280),
    splineField("AbsorptionSpline", 380, 8),
    sectionField("Scattering"),
    floatField("Scattering/ScatteringValue", 304),
    colorField("Scattering/ScatteringColor", 288),
    texMapField("Scattering/ScatteringMap", 300),
    splineField("Scattering/ScatteringSpline", 636, 8),
    sectionField("Depth"),
    floatField("Depth/DepthValue", 324),
    colorField("Depth/DepthColor", 308),
    texMapField("Depth/DepthMap", 320),
    splineField("Depth/DepthSpline", 892, 8),
    sectionField("PhaseFunction"),
    floatField("PhaseFunction/PhaseValue", 344),
    colorField("PhaseFunction/PhaseColor", 328),
    texMapField("PhaseFunction/PhaseMap", 340),
    splineField("PhaseFunction/PhaseSpline", 1148, 8),
    sectionField("Emission"),
    floatField("Emission/EmissionValue", 364),
    colorField("Emission/EmissionColor", 348),
    texMapField("Emission/EmissionMap", 360),
    splineField("Emission/EmissionSpline", 1404, 8),
    floatField("Emission/KelvinValue", 372),
    texMapField("Emission/KelvinMap", 368),
    intField("Expert", 1660),
    boolField("UseAdvancedSSS", 1664),
    boolField("Exclusive", 1666),
    materialField("Material", 376),
};

} // namespace

constexpr TypeDescriptor kLambertianEmissionMaterial =
    describeType(5, "LAMBERTIANEMISSION", 560, kLambertianEmissionFields);
constexpr TypeDescriptor kIdealDiffuseMaterial = describeType(6, "IDEALDIFFUSE", 1084, kIdealDiffuseFields);
constexpr TypeDescriptor kDiffuseMaterial = describeType(7, "DIFFUSE", 1352, kDiffuseFields);
constexpr TypeDescriptor kSubsurfaceMaterial = describeType(23, "SSS", 1667, kSubsurfaceFields);

// Each table fits the record, and its image is the one the scene reader copies.
static_assert(materialTableFits(kLambertianEmissionMaterial));
static_assert(materialTableFits(kIdealDiffuseMaterial));
static_assert(materialTableFits(kDiffuseMaterial));
static_assert(materialTableFits(kSubsurfaceMaterial));

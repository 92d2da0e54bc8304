// Diffuse, emission and subsurface materials: the rows of their tables.
#include "tests/material_families/family_cases.h"

namespace families_test {
namespace {

const char* const kDiffuseRoughness[] = {"LAMBERT", "OREN_NAYAR", "DISNEY", "HAMMON", nullptr};

} // namespace

std::vector<TypeCase> diffuseCases() {
    return {
        {5,
         "LAMBERTIANEMISSION",
         560,
         {
             {"EmissionColor", K::Color, 268},
             {"EmissionMap", K::TexMapRef, 280},
             {"IntensityValue", K::Float, 284},
             {"IntensityMap", K::TexMapRef, 288},
             {"SplineIntensity", K::Spline, 304, 8},
             {"KelvinValue", K::Float, 292},
             {"KelvinMap", K::TexMapRef, 296},
             {"Visible", K::Bool, 300},
             {"Lambertian", K::Bool, 301},
             {"TwoSided", K::Section},
             {"OptimizeMaps", K::Bool, 303},
         }},
        {6,
         "IDEALDIFFUSE",
         1084,
         {
             {"FrontColor", K::Color, 268},
             {"FrontMap", K::TexMapRef, 292},
             {"FrontSpline", K::Spline, 316, 8},
             {"BackColor", K::Color, 280},
             {"BackMap", K::TexMapRef, 296},
             {"BackSpline", K::Spline, 572, 8},
             {"TranslucenceColor", K::Color, 300},
             {"TranslucenceMap", K::TexMapRef, 312},
             {"TranslucenceSpline", K::Spline, 828, 8},
         }},
        {7,
         "DIFFUSE",
         1352,
         {
             {"FrontColor", K::Color, 268},
             {"FrontMap", K::TexMapRef, 292},
             {"FrontSpline", K::Spline, 316, 8},
             {"BackColor", K::Color, 280},
             {"BackMap", K::TexMapRef, 296},
             {"BackSpline", K::Spline, 572, 8},
             {"TranslucenceColor", K::Color, 300},
             {"TranslucenceMap", K::TexMapRef, 312},
             {"TranslucenceSpline", K::Spline, 828, 8},
             {"RoughnessType", K::Enum, 1084, 0, kDiffuseRoughness},
             {"RoughnessValue", K::Float, 1088},
             {"RoughnessMap", K::TexMapRef, 1092},
             {"RoughnessSpline", K::Spline, 1096, 8},
         }},
        {23,
         "SSS",
         1667,
         {
             {"Absorption", K::Section},
             {"Absorption/AbsorptionValue", K::Float, 284},
             {"Absorption/AbsorptionColor", K::Color, 268},
             {"Absorption/AbsorptionMap", K::TexMapRef, 280},
             {"AbsorptionSpline", K::Spline, 380, 8},
             {"Scattering", K::Section},
             {"Scattering/ScatteringValue", K::Float, 304},
             {"Scattering/ScatteringColor", K::Color, 288},
             {"Scattering/ScatteringMap", K::TexMapRef, 300},
             {"Scattering/ScatteringSpline", K::Spline, 636, 8},
             {"Depth", K::Section},
             {"Depth/DepthValue", K::Float, 324},
             {"Depth/DepthColor", K::Color, 308},
             {"Depth/DepthMap", K::TexMapRef, 320},
             {"Depth/DepthSpline", K::Spline, 892, 8},
             {"PhaseFunction", K::Section},
             {"PhaseFunction/PhaseValue", K::Float, 344},
             {"PhaseFunction/PhaseColor", K::Color, 328},
             {"PhaseFunction/PhaseMap", K::TexMapRef, 340},
             {"PhaseFunction/PhaseSpline", K::Spline, 1148, 8},
             {"Emission", K::Section},
             {"Emission/EmissionValue", K::Float, 364},
             {"Emission/EmissionColor", K::Color, 348},
             {"Emission/EmissionMap", K::TexMapRef, 360},
             {"Emission/EmissionSpline", K::Spline, 1404, 8},
             {"Emission/KelvinValue", K::Float, 372},
             {"Emission/KelvinMap", K::TexMapRef, 368},
             {"Expert", K::Int, 1660},
             {"UseAdvancedSSS", K::Bool, 1664},
             {"Exclusive", K::Bool, 1666},
             {"Material", K::MaterialRef, 376},
         }},
    };
}

} // namespace families_test

// Surface modifier materials: the rows of their tables.
#include "tests/material_families/family_cases.h"

namespace families_test {

std::vector<TypeCase> modifierCases() {
    return {
        {10,
         "BUMP",
         284,
         {
             {"BumpMap", K::TexMapRef, 268},
             {"BumpHeightMap", K::TexMapRef, 272},
             {"BumpHeightValue", K::Float, 276},
             {"Material", K::MaterialRef, 280},
         }},
        {15,
         "NORMALMAP",
         280,
         {
             {"NormalMap", K::TexMapRef, 268},
             {"ScaleValue", K::Float, 272},
             {"Material", K::MaterialRef, 276},
         }},
        {22,
         "DISPACEMENTMAP",
         302,
         {
             {"Map", K::TexMapRef, 268},
             {"HeightValue", K::Float, 276},
             {"WaterLevel", K::Float, 284},
             {"3D", K::Bool, 300},
             {"Map2", K::TexMapRef, 272},
             {"HeightValue2", K::Float, 280},
             {"WaterLevel2", K::Float, 288},
             {"3D_2", K::Bool, 301},
             {"iterations", K::Int, 292},
             {"Material", K::MaterialRef, 296},
         }},
        {26,
         "TRIPLANAR",
         492,
         {
             {"SmoothMap", K::TexMapRef, 268},
             {"SmoothValue", K::Float, 272},
             {"ScaleX", K::Float, 276},
             {"ScaleY", K::Float, 280},
             {"ScaleZ", K::Float, 284},
             {"MaterialX", K::MaterialRef, 288},
             {"MaterialY", K::MaterialRef, 292},
             {"MaterialZ", K::MaterialRef, 296},
             {"UseReferenceMatrix", K::Section},
             {"ReferenceMatrix", K::Matrix, 300},
             {"CoordGen", K::CoordGen, 348},
         }},
    };
}

} // namespace families_test

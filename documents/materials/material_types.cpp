#include "documents/materials/material_types.h"

#include "documents/materials/families.h"

namespace {

// One line per type table, added by the family files. The null entry ends the list.
const TypeDescriptor* const kMaterialTypes[] = {
    &kPhysicalMaterial,           // 1
    &kBlendSidedMaterial,         // 2
    &kTopBottomMaterial,          // 3
    &kUberMaterial,               // 4
    &kLambertianEmissionMaterial, // 5
    &kIdealDiffuseMaterial,       // 6
    &kDiffuseMaterial,            // 7
    &kIdealSpecularMaterial,      // 8
    &kBumpMaterial,               // 10
    &kMixMaterial,                // 11
    &kIdealMirrorMaterial,        // 12
    &kIdealDielectricMaterial,    // 13
    &kCutoutMaterial,             // 14
    &kNormalMapMaterial,          // 15
    &kTwoSidedMaterial,           // 16
    &kIdealConductorMaterial,     // 17
    &kIdealCoatingMaterial,       // 18
    &kRoughDielectricMaterial,    // 19
    &kRoughConductorMaterial,     // 20
    &kRoughCoatingMaterial,       // 21
    &kDisplacementMapMaterial,    // 22
    &kSubsurfaceMaterial,         // 23
    &kHairMaterial,               // 24
    &kVolumetricMaterial,         // 25
    &kTriplanarMaterial,          // 26
    &kMtlProxyMaterial,           // 28
    &kRaySwitchMaterial,          // 29
    &kThinFilmMaterial,           // 30
    &kMieMaterial,                // 31
    &kStateSwitchMaterial,        // 32
    nullptr,
};

} // namespace

const TypeDescriptor* findMaterialType(int32_t type) {
    for (const TypeDescriptor* const* entry = kMaterialTypes; *entry; ++entry) {
        if ((*entry)->type == type) return *entry;
    }
    return nullptr;
}

const TypeDescriptor* const* allMaterialTypes() {
    return kMaterialTypes;
}

// The material types that combine other materials, the matte, emitting and subsurface types,
// the specular types and the surface modifiers: one TypeDescriptor each, with its rows in the
// order in which a document carries them and the reference walk reaches them. They are
// registered in material_types.cpp; their image lengths stand in scene/record_images.h, and each
// family file checks at compile time that both agree.
#pragma once
#include "documents/field_table.h"
#include "scene/record_images.h"
#include "scene/records.h"

// A table fits the record, and its image is the one that the scene reader copies for its number.
constexpr bool materialTableFits(const TypeDescriptor& table) {
    return typeFits(table, sizeof(MaterialRecord)) &&
           table.imageLength == record_images::lookUp(record_images::kMaterialImage, table.type);
}

// Where the last byte that a table's fields occupy ends: the end of the type's image, unless the
// record keeps something of its own past its fields (the volume cache).
template <size_t N> constexpr uint32_t fieldsEnd(const FieldDescriptor (&fields)[N]) {
    uint32_t end = 0;
    for (size_t i = 0; i < N; ++i) {
        const uint32_t fieldEnd = fields[i].offset + fields[i].width;
        if (fieldEnd > end) end = fieldEnd;
    }
    return end;
}

// ---- Mixing and switching (mixing.cpp) ---------------------------------------------------------

extern const TypeDescriptor kBlendSidedMaterial;  // 2
extern const TypeDescriptor kTopBottomMaterial;   // 3
extern const TypeDescriptor kMixMaterial;         // 11
// One entry of MIX's Child list (16 bytes; NumChildren say how many are in use), for readers
// that walk the list's bytes.
extern const TypeDescriptor kMixChildEntry;
extern const TypeDescriptor kCutoutMaterial;      // 14
extern const TypeDescriptor kTwoSidedMaterial;    // 16
extern const TypeDescriptor kMtlProxyMaterial;    // 28
extern const TypeDescriptor kRaySwitchMaterial;   // 29
extern const TypeDescriptor kStateSwitchMaterial; // 32, no word: only scene files carry it

// ---- Diffuse, emission and subsurface (diffuse.cpp) --------------------------------------------

extern const TypeDescriptor kLambertianEmissionMaterial; // 5
extern const TypeDescriptor kIdealDiffuseMaterial;       // 6
extern const TypeDescriptor kDiffuseMaterial;            // 7
extern const TypeDescriptor kSubsurfaceMaterial;         // 23

// ---- Specular (specular.cpp) -------------------------------------------------------------------

extern const TypeDescriptor kIdealSpecularMaterial;   // 8
extern const TypeDescriptor kIdealMirrorMaterial;     // 12
extern const TypeDescriptor kIdealDielectricMaterial; // 13
extern const TypeDescriptor kIdealConductorMaterial;  // 17
extern const TypeDescriptor kIdealCoatingMaterial;    // 18
extern const TypeDescriptor kRoughDielectricMaterial; // 19
extern const TypeDescriptor kRoughConductorMaterial;  // 20
extern const TypeDescriptor kRoughCoatingMaterial;    // 21
extern const TypeDescriptor kThinFilmMaterial;        // 30

// ---- Surface modifiers (modifiers.cpp) ---------------------------------------------------------

extern const TypeDescriptor kBumpMaterial;            // 10
extern const TypeDescriptor kNormalMapMaterial;       // 15
extern const TypeDescriptor kDisplacementMapMaterial; // 22
extern const TypeDescriptor kTriplanarMaterial;       // 26

// ---- Physical (physical.cpp), uber (uber.cpp), media (volumetric.cpp) and hair (hair.cpp) -----

extern const TypeDescriptor kPhysicalMaterial;   // 1
extern const TypeDescriptor kUberMaterial;       // 4
extern const TypeDescriptor kHairMaterial;       // 24
extern const TypeDescriptor kVolumetricMaterial; // 25
extern const TypeDescriptor kMieMaterial;        // 31

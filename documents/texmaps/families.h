// The texmap types, family by family: each type is a TypeDescriptor whose rows stand in the
// order in which a document is read and walked. texmap_types.cpp lists them all.
//
// Image lengths are the end of each type's last field: the scene file carries that many bytes
// of the record, and the same numbers stand in scene/record_images.h.
#pragma once
#include "documents/field_table.h"
#include "scene/record_images.h"

#include <cstddef>
#include <cstdint>

// ---- Word tables that more than one family uses ------------------------------------------------

extern const char* const kBlendOperationWords[]; // BlendOperation: MATHBLEND, COMPOSITE, GRADIENT
extern const char* const kNoiseTypeWords[];      // NoiseType: NOISE, GRADIENT

// ---- Image maps (image.cpp) --------------------------------------------------------------------

extern const TypeDescriptor kImageTexMap;       // 1 IMAGE
extern const TypeDescriptor kSimpleImageTexMap; // 2 SIMPLEIMAGE

// ---- Blend and math maps (blend_math.cpp) ------------------------------------------------------

extern const TypeDescriptor kBlendTexMap;       // 3 BLEND
extern const TypeDescriptor kMathTexMap;        // 4 MATH
extern const TypeDescriptor kMathBlendTexMap;   // 6 MATHBLEND
extern const TypeDescriptor kCompositeTexMap;   // 7 COMPOSITE
extern const TypeDescriptor kRgbMultiplyTexMap; // 10 RGB_MULTIPLY
extern const TypeDescriptor kRgbTintTexMap;     // 11 RGB_TINT

// ---- Colour correction and shuffle (color_correction.cpp) --------------------------------------

extern const TypeDescriptor kColorCorrectionTexMap; // 5 COLORCORRECTION
extern const TypeDescriptor kShuffleTexMap;         // 12 SHUFFLE

// ---- Noise and ocean (noise_ocean.cpp) ---------------------------------------------------------

extern const TypeDescriptor kNoiseTexMap;        // 8 NOISE
extern const TypeDescriptor kOceanSurfaceTexMap; // 18 OCEANSURFACE

// ---- Gradients, falloff, occlusion, wireframe, colour and sun (gradients.cpp) ------------------

extern const TypeDescriptor kColorTexMap;     // 13 COLOR
extern const TypeDescriptor kGradientTexMap;  // 14 GRADIENT
extern const TypeDescriptor kWireframeTexMap; // 21 WIREFRAME
extern const TypeDescriptor kAoTexMap;        // 22 AO
extern const TypeDescriptor kFalloffTexMap;   // 24 FALLOFF
extern const TypeDescriptor kSunTexMap;       // 27 SUN

// ---- Selectors and wrappers (selectors.cpp) ----------------------------------------------------

extern const TypeDescriptor kOutputTexMap;    // 9 OUTPUT
extern const TypeDescriptor kTriplanarTexMap; // 15 TRIPLANAR
extern const TypeDescriptor kSelectMapTexMap; // 17 SELECTMAP
extern const TypeDescriptor kCacheTexMap;     // 19 CACHE
extern const TypeDescriptor kRaySwitchTexMap; // 20 RAYSWITCH
extern const TypeDescriptor kNormalMapTexMap; // 23 NORMALMAP
extern const TypeDescriptor kUvwSetTexMap;    // 25 UVWSET
extern const TypeDescriptor kRetileTexMap;    // 26 RETILE

// ---- Building the descriptors ------------------------------------------------------------------

// Where the last field of a table ends.
template <size_t N> constexpr uint32_t fieldsEnd(const FieldDescriptor (&fields)[N]) {
    uint32_t end = 0;
    for (size_t i = 0; i < N; ++i) {
        if (fields[i].offset + fields[i].width > end) end = fields[i].offset + fields[i].width;
    }
    return end;
}

// Whether every field of a table lies at or after `start`: own fields begin behind the head, or
// behind the shared blocks in the mapped shape.
template <size_t N> constexpr bool fieldsFrom(const FieldDescriptor (&fields)[N], uint32_t start) {
    for (size_t i = 0; i < N; ++i) {
        if (fields[i].kind != FieldKind::Section && fields[i].offset < start) return false;
    }
    return true;
}

// A type of the mapped shape: CoordGen and ColorOutput stand ahead of its own fields.
constexpr TypeDescriptor mappedType(TypeDescriptor type) {
    type.mapped = true;
    return type;
}

// A type whose read reports whether the texture id at `offset` was found.
constexpr TypeDescriptor textureResult(TypeDescriptor type, uint32_t offset) {
    type.resultTextureOffset = offset;
    return type;
}

// The scene file copies as many bytes of a record as scene/record_images.h says; that number and
// the end of the type's fields are one and the same.
constexpr bool imageAgrees(const TypeDescriptor& type) {
    return type.type > 0 && static_cast<uint32_t>(type.type) < record_images::kTexMapTypes &&
           record_images::kTexMapImage[static_cast<uint32_t>(type.type)] == type.imageLength;
}

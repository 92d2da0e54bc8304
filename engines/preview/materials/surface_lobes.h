// The lobes of a compiled surface at one hit, with its texture maps looked up there.
#pragma once
#include "engines/preview/materials/bsdf.h"
#include "engines/preview/materials/compiled_material.h"
#include "engines/preview/shading.h"

#include <optional>
#include <vector>

namespace preview {

Color evaluate(const TexturedColor& color, const ShadingContext& at, const TexMapLookup& maps);
float evaluate(const TexturedScalar& scalar, const ShadingContext& at, const TexMapLookup& maps);

// A clear coat at a hit: its lobe, and the share of light it leaves to the layers beneath for
// the ray's direction.
struct CoatAtHit {
    bool present = false;
    Lobe lobe;
    Color beneath{1};
};
CoatAtHit coatAt(const SurfaceLayers& layers, const ShadingContext& at, const TexMapLookup& maps);

// Adds the coat and the layers beneath it.
void addSurfaceLobes(const SurfaceLayers& layers, const ShadingContext& at, const TexMapLookup& maps, Bsdf* bsdf);

// The lobes of layers that give the same ones at every hit on a side, worked out once: no texture
// map and no layer whose share depends on the ray's angle (a coat, a specular layer over the
// base, a thin sheet). None when the layers depend on the hit.
std::optional<SidedLobes> fixedSurfaceLobes(const SurfaceLayers& layers);

} // namespace preview

// Shading contexts of the primitives the engine traces: what a material needs of a hit.
#pragma once
#include "engines/preview/render/scene_geometry.h"
#include "engines/preview/shading.h"

namespace preview {

// A point of triangle `prim` at barycentrics (b1, b2) (the weights of its second and third
// corners), seen from direction `wo`.
ShadingContext triangleContext(const TriangleMeshData& mesh, uint32_t prim, float b1, float b2, const Vec3& wo);
float triangleArea(const TriangleMeshData& mesh, uint32_t prim);

} // namespace preview

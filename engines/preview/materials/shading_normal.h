// Shading normals changed by a material's bump map or normal map.
#pragma once
#include "engines/preview/materials/compiled_material.h"
#include "engines/preview/shading.h"

namespace preview {

// The shading normal with the material's bump and normal map applied, or at's own when it has
// neither or the surface has no tangents. Stays on the geometric normal's side.
Vec3 modifiedNormal(const CompiledMaterial& material, const ShadingContext& at, const TexMapLookup& maps);

} // namespace preview

// Shading normals for a model whose file has none: smooth across gentle bends, sharp across
// edges, as a modeller's "smoothing angle" makes them. Corners then need normals of their own,
// so the model's vertices are split a corner each.
#pragma once
#include "tools/builder/imported_model.h"

namespace builder {

// Faces meet smoothly at a vertex when their normals are closer than this.
constexpr float kSmoothingDegrees = 60.0f;

// `model` without normals becomes one vertex per triangle corner, each with the area-weighted
// mean of the normals of the faces at that vertex that bend less than the smoothing angle away
// from the corner's own face.
void giveCreaseNormals(ModelGeometry& model);

} // namespace builder

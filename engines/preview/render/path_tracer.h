// The light arriving along one camera ray: unidirectional path tracing with next-event
// estimation, multiple importance sampling by the power heuristic, and Russian roulette.
#pragma once
#include "engines/preview/materials/material_set.h"
#include "engines/preview/render/accelerator.h"
#include "engines/preview/render/camera.h"
#include "engines/preview/render/lights.h"
#include "engines/preview/render/sampler.h"
#include "engines/preview/texmaps/texmap_set.h"

namespace preview {

struct SceneView {
    const Accelerator& accelerator;
    const SceneGeometry& geometry;
    const MaterialSet& materials;
    const TexMapSet& maps;
    const LightSet& lights;
    int32_t maxDepth = 10;           // surface interactions after the first
    int32_t rouletteStartDepth = 3;  // bounces before Russian roulette may end a path
    bool anyPassable = false;        // whether shadow rays must look at what they meet
    bool emissionMet = true;         // whether a ray can meet light (an emitter, a sky), not only sample it
    float clampIndirect = 0;         // the largest channel an indirect contribution may have; 0: none
    bool layers = true;              // whether the albedo, normal and depth of the first hit are wanted
};

struct PathSample {
    Color radiance;
    // Of the first surface met, when the scene's view asks for layers: zero otherwise.
    Color albedo;  // its albedo
    Vec3 normal;   // its shading normal, facing the camera
    float depth = 0; // the distance to it, 0 for none
    uint32_t rays = 0; // queries made: paths' segments and shadow rays
};

// `cameraHit` is what the camera ray meets, found beforehand with its neighbours; null when it
// meets nothing.
PathSample tracePath(const SceneView& scene, Ray ray, const Hit* cameraHit, Sampler& sampler);

} // namespace preview

// Everything that emits: the scene's lights, the surfaces of emitting materials and the shapes
// of area lights; chosen for next-event estimation in proportion to their power.
#pragma once
#include "engines/preview/materials/material_set.h"
#include "engines/preview/render/distribution.h"
#include "engines/preview/render/light_params.h"
#include "engines/preview/render/scene_geometry.h"
#include "engines/preview/texmaps/texmap_set.h"

#include <vector>

namespace preview {

struct LightSample {
    Vec3 wi;              // from the shading point towards the light, unit
    float distance = 0;   // to the sampled point; infinite for lights at infinity
    Color radiance;       // arriving along -wi (for delta lights: the irradiance term)
    float pdf = 0;        // solid angle, choice of the light included; for delta lights the choice alone
    bool delta = false;
};

class LightSet {
  public:
    void add(const LightParams& light) { lights_.push_back(light); }

    // Adds the shapes of rectangle and disc lights to the geometry; call before it is built.
    void addShapes(SceneGeometry& geometry);
    // Collects emitting triangles, tabulates environments and makes the choice by power.
    void prepare(const SceneGeometry& geometry, const MaterialSet& materials, const TexMapSet& maps,
                 WarningLog& warnings);

    bool empty() const { return choice_.empty(); }
    bool sample(const Vec3& point, float uChoice, float u0, float u1, LightSample* out) const;

    // A ray that hit triangle `prim` of mesh `mesh` (or disc `prim` of disc set `discs`) from
    // `origin`: the light it sees there and the density with which sample() would have chosen
    // that point, for weighting by multiple importance.
    Color emittedByMesh(size_t mesh, uint32_t prim, const ShadingContext& at, const Vec3& origin, float* pdf) const;
    Color emittedByDisc(size_t discs, uint32_t prim, const ShadingContext& at, const Vec3& origin, float* pdf) const;
    bool isLightMesh(size_t mesh) const { return mesh < meshLight_.size() && meshLight_[mesh] >= 0; }
    bool isLightDiscs(size_t discs) const { return discs < discLight_.size() && discLight_[discs] >= 0; }
    // What a ray that leaves the scene along `direction` sees, and the density of sampling it.
    Color environment(const Vec3& direction, float* pdf) const;
    bool hasEnvironment() const { return !infinite_.empty(); }
    // Whether every light is a point, spot or directional one: a ray then never meets light.
    bool onlyDeltaLights() const;

  private:
    struct Emitter {
        enum class Shape { Triangle, Rectangle, Disc, Infinite, Delta } shape;
        size_t set;     // mesh or disc set, or index into lights_
        uint32_t prim;  // triangle
        int32_t light;  // index into lights_, -1 for an emitting material's triangle
        float area;
    };
    struct Tabulated {
        int32_t light;
        size_t width = 0, height = 0;
        std::vector<Color> texels; // latitude-longitude, the first row looks straight up
        Distribution2D distribution;
    };

    Color environmentOf(const LightParams& light, const Vec3& direction) const;
    float environmentPdf(size_t emitter, const Vec3& direction) const;
    bool sampleEmitter(size_t index, const Vec3& point, float u0, float u1, LightSample* out) const;
    Color shapeRadiance(const LightParams& light, const Vec3& surfaceNormal, const Vec3& toward) const;

    std::vector<LightParams> lights_;
    std::vector<int32_t> meshLight_, discLight_; // light of each mesh or disc set, -1 for none
    std::vector<Emitter> emitters_;
    std::vector<std::vector<int32_t>> triangleEmitter_; // per mesh: emitter of each triangle, or -1
    std::vector<size_t> infinite_;                      // emitters at infinity
    std::vector<Tabulated> tables_;
    Distribution1D choice_;
    const SceneGeometry* geometry_ = nullptr;
    const MaterialSet* materials_ = nullptr;
    const TexMapSet* maps_ = nullptr;
    float sceneRadius_ = 1;
};

} // namespace preview

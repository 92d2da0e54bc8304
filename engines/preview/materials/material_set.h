// Materials as the engine keeps them: compiled from each record during addMaterial, read by the
// keys of the type's field table, and turned into a Bsdf at each hit.
#pragma once
#include "engines/preview/materials/bsdf.h"
#include "engines/preview/shading.h"
#include "scene/records.h"

#include <cstdint>
#include <memory>

namespace preview {

// The colour of a black body at a temperature in kelvin relative to one at 6500 K.
using TemperatureColor = Color (*)(float kelvin);

class MaterialSet {
  public:
    // `temperature` colours emission by its kelvin keys; null leaves emission colours as they are.
    explicit MaterialSet(TemperatureColor temperature = nullptr);
    ~MaterialSet();
    MaterialSet(const MaterialSet&) = delete;
    MaterialSet& operator=(const MaterialSet&) = delete;

    // Compiles and keeps the material under record.id; a type the engine cannot render becomes
    // a neutral diffuse and is reported once per type through `warn`.
    void add(const MaterialRecord& record, const WarningSink& warn);
    // After every material is in: checks references between materials (mix, two-sided, ...);
    // a reference to an unknown id or a cycle is replaced by the neutral diffuse, reported once.
    void finish(const WarningSink& warn);

    // The scattering at a hit of material `id` (unknown ids: neutral diffuse). `u` is a
    // uniform number used to choose among stochastic layers (mix, cut-out), so that the choice
    // is part of the path's random sequence.
    Bsdf bsdfAt(int32_t id, const ShadingContext& at, const TexMapLookup& maps, float u) const;
    // Emitted radiance towards at.wo (LAMBERTIANEMISSION and emissive layers); black otherwise.
    Color emission(int32_t id, const ShadingContext& at, const TexMapLookup& maps) const;
    // Whether any hit of this material can emit; area lights are built from such triangles.
    bool isEmissive(int32_t id) const;
    // False for an emitter whose Visible key is off: camera rays pass it by, while it still
    // lights the scene.
    bool isCameraVisible(int32_t id) const;
    // Whether the material can let rays pass (cut-out, null): shadow rays then look at it.
    bool mayPassRays(int32_t id) const;
    // Probability that a ray passes straight through at this hit (1 for NULL, 1 - opacity for
    // CUTOUT); shadow rays multiply their throughput by this. bsdfAt already holds the same
    // share as a Transparent lobe, so paths need not ask.
    float passThrough(int32_t id, const ShadingContext& at, const TexMapLookup& maps) const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace preview

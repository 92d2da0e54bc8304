// What a surface hit offers to texture maps and materials.
#pragma once
#include "engines/preview/vec3.h"

#include <cstdint>
#include <functional>
#include <string>

namespace preview {

// Where the parts report what they could not use. `kind` names the problem ("unsupported
// material type SSS"); the module counts reports by kind and forwards one warning per kind.
using WarningSink = std::function<void(const std::string& kind)>;

constexpr int kUvChannels = 4;

struct ShadingContext {
    Vec3 position;        // world space
    Vec3 geometricNormal; // unit, facing the incoming ray's origin side as stored (not flipped)
    Vec3 shadingNormal;   // unit, interpolated; on the same side as geometricNormal
    Vec3 dpdu, dpdv;      // tangents along UV channel 0; zero when the mesh has no UVs
    float uv[kUvChannels][2] = {};
    Vec3 wo;              // unit, towards where the ray came from
    bool frontFacing = true; // the ray hit the side geometricNormal points to
    float footprint = 0;  // the ray's width at the hit, in world units, for texture filtering
};

// Texture maps as materials see them. Ids are the records' ids; -1 or an unknown id gives the
// neutral value (`fallback`). Thread-safe: called from every render thread.
class TexMapLookup {
  public:
    virtual Color color(int32_t texMapId, const ShadingContext& at, Color fallback) const = 0;
    virtual float scalar(int32_t texMapId, const ShadingContext& at, float fallback) const = 0;
    // A tangent-space normal (x, y in -1..1, z up), for normal-map texmaps and materials.
    virtual Vec3 normal(int32_t texMapId, const ShadingContext& at) const = 0;

  protected:
    ~TexMapLookup() = default;
};

} // namespace preview

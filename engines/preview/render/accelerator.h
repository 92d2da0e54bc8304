// Ray queries over the scene's geometry, through Embree.
#pragma once
#include "engines/preview/render/scene_geometry.h"

#include <embree3/rtcore.h>

#include <cstdint>
#include <vector>

namespace preview {

enum class PrimitiveKind : uint8_t { Triangle, Curve, Disc };

struct Hit {
    float distance = 0;
    PrimitiveKind kind = PrimitiveKind::Triangle;
    uint32_t set = 0;  // index of the mesh, curve set or disc set
    uint32_t prim = 0; // triangle, curve or disc within the set
    float u = 0, v = 0; // Embree's hit coordinates (barycentrics of corners 1 and 2 for triangles)
    Vec3 geometricNormal; // as Embree reports it, not of unit length: triangles work out their own
};

class Accelerator {
  public:
    // Reports of Embree itself go to `warnings`.
    explicit Accelerator(WarningLog& warnings);
    ~Accelerator();
    Accelerator(const Accelerator&) = delete;
    Accelerator& operator=(const Accelerator&) = delete;

    // Builds over everything the geometry holds now; false when Embree refuses.
    bool build(const SceneGeometry& geometry);
    bool intersect(const Vec3& origin, const Vec3& direction, float farthest, Hit* hit) const;
    // The nearest hits of kPacket rays that travel together, such as neighbouring camera rays,
    // traced side by side; lanes whose `active` is false are left alone. found[i] tells whether
    // ray i met anything.
    static constexpr int kPacket = 8;
    void intersectPacket(const Ray (&rays)[kPacket], const bool (&active)[kPacket], Hit (&hits)[kPacket],
                         bool (&found)[kPacket]) const;
    bool occluded(const Vec3& origin, const Vec3& direction, float farthest) const;

  private:
    void fill(unsigned geomID, unsigned primID, float distance, float u, float v, const Vec3& normal, Hit* hit) const;

    struct Entry {
        PrimitiveKind kind;
        uint32_t set;
    };
    WarningLog& warnings_;
    RTCDevice device_ = nullptr;
    RTCScene scene_ = nullptr;
    std::vector<Entry> entries_; // by Embree geometry id
};

} // namespace preview

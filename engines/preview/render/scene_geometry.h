// The engine's own copy of the scene's geometry, taken from the client's objects during the
// add... calls at the render time: triangle meshes, fur curves and sprite discs in world space,
// each primitive with its material id. Bad data is dropped here, counted by kind.
#pragma once
#include "engines/preview/render/warnings.h"
#include "engines/preview/vec3.h"

#include <cstdint>
#include <vector>

namespace TRDF_Load {
class TriangleMesh;
class FurMesh;
class SprMesh;
} // namespace TRDF_Load

namespace preview {

struct TriangleMeshData {
    std::vector<Vec3> positions;      // per vertex, world space
    std::vector<uint32_t> indices;    // three per triangle, all within positions
    std::vector<int32_t> materials;   // per triangle
    std::vector<Vec3> cornerNormals;  // three per triangle, unit; empty for a flat mesh
    std::vector<float> uvs;           // two per vertex; empty without UVs
    std::vector<Vec3> faceNormals;    // per triangle, unit; filled when the mesh joins the geometry

    size_t triangleCount() const { return materials.size(); }
};

struct CurveSetData {
    std::vector<float> controlPoints; // four points of x, y, z, radius per curve
    std::vector<int32_t> materials;   // per curve
};

struct DiscSetData {
    std::vector<float> centers;     // x, y, z, radius per disc
    std::vector<Vec3> normals;      // unit, per disc
    std::vector<int32_t> materials; // per disc
};

class SceneGeometry {
  public:
    explicit SceneGeometry(double seconds) : seconds_(seconds) {}

    // Each part of the chain becomes one mesh (or curve or disc set).
    void addTriangleMeshes(const TRDF_Load::TriangleMesh* head, WarningLog& warnings);
    void addFur(const TRDF_Load::FurMesh* head, WarningLog& warnings);
    void addSprites(const TRDF_Load::SprMesh* head, WarningLog& warnings);

    const std::vector<TriangleMeshData>& meshes() const { return meshes_; }
    const std::vector<CurveSetData>& curves() const { return curves_; }
    const std::vector<DiscSetData>& discs() const { return discs_; }
    // Appends geometry the engine makes itself (the shapes of area lights).
    size_t addMesh(TriangleMeshData mesh);
    size_t addDiscs(DiscSetData discs);
    // Whether any model moves: a track of two keys or more, or two time slices or more.
    bool animated() const { return animated_; }
    void markAnimated() { animated_ = true; }

  private:
    double seconds_;
    bool animated_ = false;
    std::vector<TriangleMeshData> meshes_;
    std::vector<CurveSetData> curves_;
    std::vector<DiscSetData> discs_;
};

} // namespace preview

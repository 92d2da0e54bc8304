// What tavi-build takes from a model file, in world space and in the engine's terms, before
// any of it becomes records. Import fills it; the assembly turns it into chunks.
#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace builder {

using Vec3 = std::array<float, 3>;

// One instance of one mesh of the file: its node's transform applied.
struct ModelGeometry {
    std::string name;
    std::vector<float> positions, normals, uvs; // x, y, z / x, y, z / u, v per vertex
    std::vector<uint32_t> indices;              // three a triangle
    uint32_t materialId = 0;                    // the same for every triangle of an instance
    size_t triangleCount() const { return indices.size() / 3; }
};

// An image a material uses: a file beside the model, or one the model carries inside.
struct TextureSource {
    std::string name;         // the texture record's name, unique
    std::string sceneRelPath; // as the scene file names it
    std::vector<uint8_t> embeddedBytes; // non-empty: to be written out at sceneRelPath
};

enum class SurfaceKind { Physical, Diffuse, RoughConductor, RoughDielectric, Emitter };

// A material as the mapping decided it; texture fields index ImportedModel::textures (-1 none).
struct Surface {
    std::string name;
    SurfaceKind kind = SurfaceKind::Diffuse;
    Vec3 colour{0.8f, 0.8f, 0.8f}; // base, diffuse, metal or glass tint
    int32_t colourTexture = -1;
    float metallic = 0, roughness = 0.5f, ior = 1.5f;
    float transmission = 0, coat = 0, coatRoughness = 0;
    Vec3 emission{0, 0, 0};
    float emissionStrength = 1;
    int32_t emissionTexture = -1;
};

struct CameraView {
    Vec3 eye{0, 0, 0}, target{0, 0, -1}, up{0, 1, 0};
    float fovXDegrees = 45;
    float orthographicWidth = 0; // > 0: orthographic, this wide
};

// A punctual light; type as the engine numbers it (1 point, 2 spot, 5 directional).
struct PointLight {
    std::string name;
    int32_t type = 1;
    Vec3 position{0, 0, 0}, direction{0, -1, 0};
    Vec3 colour{1, 1, 1};
    float intensity = 1;
    float outerCone = 3.14159265f, innerCone = 3.14159265f; // full angles, radians
};

struct Bounds {
    Vec3 lower{0, 0, 0}, upper{0, 0, 0};
    bool empty = true;
    void extend(const float* p);
};

struct ImportedModel {
    std::vector<ModelGeometry> models;
    std::vector<Surface> surfaces;
    std::vector<TextureSource> textures;
    std::optional<CameraView> camera;
    std::vector<PointLight> lights;
    std::vector<std::string> notes; // what was left out, told on stderr
    Bounds bounds;
    size_t triangleCount = 0;
};

} // namespace builder

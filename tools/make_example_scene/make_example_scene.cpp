// Writes a small, valid example scene: settings, a render camera, a light, two textures,
// texture maps, materials and two triangle meshes, with stored and zstd bodies, in chain order.
#include "scene/records.h"
#include "tools/scene_writer/geometry_builders.h"
#include "tools/scene_writer/record_builders.h"

#include <cstddef>
#include <cstdio>

using namespace scene_writer;

namespace {

constexpr uint32_t kNoTexMap = static_cast<uint32_t>(-1);

Bytes gradientPixels(int width, int height) {
    Bytes pixels;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            pixels.push_back(static_cast<uint8_t>(255 * x / (width - 1)));
            pixels.push_back(static_cast<uint8_t>(255 * y / (height - 1)));
            pixels.push_back(128);
            pixels.push_back(255);
        }
    }
    return pixels;
}

SceneFile exampleScene() {
    SceneFile scene;

    TextureFilePlan wood;
    wood.id = 0;
    wood.name = "wood";
    wood.path = "textures/wood.png";
    scene.add(storedChunk(kTextureFile, textureFileBody(wood)));

    TextureDataPlan ramp;
    ramp.id = 1;
    ramp.name = "ramp";
    ramp.width = 8;
    ramp.height = 8;
    ramp.pixelType = 0;
    ramp.pixels = gradientPixels(8, 8);
    scene.add(zstdChunk(kTextureData, textureDataBody(ramp)));

    scene.add(zstdChunk(kTexMap, texMapBody(1, 0, "woodMap")));
    scene.add(zstdChunk(kTexMap, texMapBody(2, 1, "rampMap")));

    scene.add(zstdChunk(kMaterial, materialBody(1, 0, 0, "floor")));
    scene.add(zstdChunk(kMaterial, materialBody(3, 1, 1, "chrome")));

    SettingsPlan settings;
    settings.imageSizeX = 320;
    settings.imageSizeY = 240;
    settings.maxIterations = 16;
    settings.outputName = "example";
    settings.aovNames = {"albedo", "normals"};
    settings.startingVolumetricMaterial = -1; // the camera starts in air
    settings.toneOperator = 2;                // ACES
    scene.add(zstdChunk(kSettings, settingsBody(settings)));

    CameraPathPlan cameraPath;
    cameraPath.role = 0;
    cameraPath.target = {0.0f, 1.0f, 0.0f};
    cameraPath.trackA = {FileKey{0, 0, 0x3F800000, 0, 0, 0x40A00000, 0, 0, 0}};
    // A zero texmap reference would name the first texmap; the camera has neither map.
    Bytes camera = cameraBody(1);
    put32(camera, offsetof(CameraRecord, DistortionMap), kNoTexMap);
    put32(camera, offsetof(CameraRecord, ApertureMap), kNoTexMap);
    scene.add(zstdChunk(kCamera, camera));
    scene.add(storedChunk(kCameraPath, cameraPathBody(cameraPath)));

    LightPathPlan lightPath;
    lightPath.name = "sun";
    Bytes light = lightBody(5); // a type without a second texmap reference
    put32(light, offsetof(LightRecord, texMap), kNoTexMap);
    scene.add(zstdChunk(kLight, light, lightVersion(5)));
    scene.add(storedChunk(kLightPath, lightPathBody(lightPath)));

    // A floor of two materials in rows, and a box in one piece.
    scene.add(zstdChunk(kTriangleMesh, meshBody(gridMesh("ground", 16, 16, 2))));
    scene.add(zstdChunk(kTriangleMesh, meshBody(gridMesh("box", 4, 4))));
    return scene;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_example_scene <output file>\n");
        return 2;
    }
    if (!exampleScene().write(argv[1])) {
        std::fprintf(stderr, "make_example_scene: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}

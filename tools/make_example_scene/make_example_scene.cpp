// Writes the bundled example scene: a checkered floor with a rough gold sphere, a glass sphere
// and a red box on it, lit by a warm emissive panel, the sun and a blue sky, seen by a
// perspective camera. Everything is made by the preview builders, in the format the preview
// engine reads.
#include "tools/scene_writer/preview_builders.h"

#include <cstdio>
#include <exception>

using namespace scene_writer;

namespace {

enum TextureId : int32_t { kCheckerTexture };
enum TexMapId : int32_t { kCheckerMap };
enum MaterialId : uint32_t { kFloor, kGold, kGlass, kRedPaint, kPanel };

// Light and dark squares, 8 a side, as RGBA bytes (pixel type 0).
TextureDataPlan checkerTexture() {
    constexpr int kSize = 64, kSquare = 8;
    TextureDataPlan plan;
    plan.id = kCheckerTexture;
    plan.name = "checker";
    plan.width = plan.height = kSize;
    plan.pixelType = 0;
    for (int y = 0; y < kSize; ++y) {
        for (int x = 0; x < kSize; ++x) {
            const bool light = (x / kSquare + y / kSquare) % 2 == 0;
            const uint8_t grey = light ? 200 : 60;
            plan.pixels.insert(plan.pixels.end(), {grey, grey, grey, 255});
        }
    }
    return plan;
}

void addMaterials(SceneFile& scene) {
    const RecordBuilder materials[] = {
        MaterialBuilder("DIFFUSE", kFloor, "floor").color("FrontColor", {1, 1, 1}).texMap("FrontMap", kCheckerMap),
        MaterialBuilder("ROUGHCONDUCTOR", kGold, "gold")
            .color("Reflection/ReflectionColor", {1.0f, 0.78f, 0.34f})
            .real("Reflection/ReflectionWeight", 1)
            .color("ReflectionEdge/EdgeColor", {1.0f, 0.95f, 0.8f})
            .real("ReflectionEdge/EdgeWeight", 1)
            .word("Roughness/RoughnessType", "GGX")
            .color("Roughness/RoughnessVector", {0.25f, 0.25f, 0.25f}),
        MaterialBuilder("IDEALDIELECTRIC", kGlass, "glass")
            .color("Reflection/ReflectionColor", {1, 1, 1})
            .real("Reflection/ReflectionWeight", 1)
            .color("Transmission/TransmissionColor", {0.95f, 0.98f, 1.0f})
            .real("Transmission/TransmissionValue", 1)
            .real("IOR/IOR_Value", 1.5f),
        MaterialBuilder("DIFFUSE", kRedPaint, "red paint").color("FrontColor", {0.7f, 0.12f, 0.08f}),
        MaterialBuilder("LAMBERTIANEMISSION", kPanel, "panel")
            .color("EmissionColor", {1.0f, 0.85f, 0.65f})
            .real("IntensityValue", 6)
            .real("KelvinValue", 6500)
            .flag("Visible", true),
    };
    for (const RecordBuilder& material : materials)
        scene.add(zstdChunk(kMaterial, material.body()));
}

void addModels(SceneFile& scene) {
    const MeshPlan models[] = {
        quadMesh("floor", {-4, 0, 4}, {8, 0, 0}, {0, 0, -8}, kFloor),
        sphereMesh("gold sphere", {-1.1f, 0.6f, -0.2f}, 0.6f, 32, 64, kGold),
        sphereMesh("glass sphere", {0.35f, 0.45f, 0.9f}, 0.45f, 32, 64, kGlass),
        boxMesh("box", {0.9f, 0, -1.2f}, {1.9f, 1.0f, -0.2f}, kRedPaint),
        // Facing down, above and behind the objects.
        quadMesh("panel", {-1.5f, 2.6f, -2.0f}, {3, 0, 0}, {0, 0, 0.8f}, kPanel),
    };
    for (const MeshPlan& model : models)
        scene.add(zstdChunk(kTriangleMesh, meshBody(model)));
}

void addLights(SceneFile& scene) {
    LightPlan sun;
    sun.type = 9;
    sun.name = "sun";
    sun.intensity = 2.5f;
    sun.temperature = 5800;
    sun.direction = {-0.45f, -0.8f, -0.4f};
    sun.sunDiameterDegrees = 0.53f;

    LightPlan sky;
    sky.type = 4;
    sky.name = "sky";
    sky.intensity = 0.35f;
    sky.colour = {0.55f, 0.7f, 1.0f};

    for (const LightPlan& light : {sun, sky}) {
        scene.add(zstdChunk(kLight, lightImage(light), lightVersion(light.type)));
        scene.add(storedChunk(kLightPath, lightPathBody(lightPath(light))));
    }
}

SceneFile exampleScene() {
    SceneFile scene;

    SettingsPlan settings;
    settings.readerDefaults = true;
    settings.imageSizeX = 480;
    settings.imageSizeY = 270;
    settings.maxIterations = 64;
    settings.saveJpeg = true;
    settings.saveExr = true;
    settings.outputName = "example";
    settings.aovNames = {"albedo", "normals"};
    settings.startingVolumetricMaterial = -1; // the camera starts in air
    settings.toneOperator = 2;                // ACES
    scene.add(zstdChunk(kSettings, settingsBody(settings)));

    scene.add(zstdChunk(kCamera, perspectiveCamera(50)));
    scene.add(storedChunk(kCameraPath, cameraPathBody(lookAt({0.4f, 1.7f, 5.2f}, {0, 0.5f, -0.2f}))));

    scene.add(zstdChunk(kTextureData, textureDataBody(checkerTexture())));
    scene.add(zstdChunk(kTexMap,
                        TexMapBuilder("IMAGE", kCheckerMap, "checker map").tiling(4, 4).texture("Texture", kCheckerTexture).body()));
    addMaterials(scene);
    addModels(scene);
    addLights(scene);
    return scene;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_example_scene <output file>\n");
        return 2;
    }
    try {
        if (!exampleScene().write(argv[1])) {
            std::fprintf(stderr, "make_example_scene: cannot write %s\n", argv[1]);
            return 1;
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_example_scene: %s\n", error.what());
        return 1;
    }
    return 0;
}

#include "tools/builder/scene_assembly.h"

#include "tools/builder/camera_lights.h"
#include "tools/builder/material_records.h"
#include "tools/scene_writer/preview_builders.h"

#include <algorithm>
#include <stdexcept>
#include <unordered_map>

namespace builder {

using namespace scene_writer;

namespace {

Bytes settingsRecord(const BuildOptions& options, const std::string& outputName) {
    SettingsPlan plan;
    plan.readerDefaults = true;
    plan.imageSizeX = options.width;
    plan.imageSizeY = options.height;
    plan.maxIterations = options.passes;
    plan.saveJpeg = options.saveJpeg;
    plan.saveTiff = options.saveTiff;
    plan.saveExr = options.saveExr;
    plan.outputPath = options.outputPath;
    plan.outputName = outputName;
    plan.framesPerSecond = options.framesPerSecond;
    plan.startingVolumetricMaterial = -1; // the camera starts in air
    plan.toneOperator = 2;                // ACES: the client would switch to it from none, warning
    return settingsBody(plan);
}

void addCamera(SceneFile& scene, const ImportedModel& model, const BuildOptions& options) {
    const float aspect = static_cast<float>(options.width) / static_cast<float>(options.height);
    CameraView view;
    Vec3 towardsEye;
    if (options.view) {
        if (!parseViewSide(*options.view, towardsEye)) throw std::invalid_argument("unknown view: " + *options.view);
        view = framedView(model.bounds, towardsEye, aspect);
    } else if (model.camera) {
        view = *model.camera;
    } else {
        parseViewSide("iso", towardsEye);
        view = framedView(model.bounds, towardsEye, aspect);
    }
    const Bytes camera = view.orthographicWidth > 0 ? orthographicCamera(view.orthographicWidth)
                                                    : perspectiveCamera(view.fovXDegrees);
    scene.add(zstdChunk(kCamera, camera));
    scene.add(storedChunk(kCameraPath, cameraPathBody(lookAt(view.eye, view.target, view.up))));
}

void addLight(SceneFile& scene, const LightPlan& light, AssemblyCounts& counts) {
    scene.add(zstdChunk(kLight, lightImage(light), lightVersion(light.type)));
    scene.add(storedChunk(kLightPath, lightPathBody(lightPath(light))));
    ++counts.lights;
}

void addLights(SceneFile& scene, const ImportedModel& model, const BuildOptions& options, AssemblyCounts& counts) {
    for (const PointLight& light : model.lights) addLight(scene, lightPlan(light), counts);
    const bool defaults = options.defaultLights && model.lights.empty();
    if (options.sun || defaults) addLight(scene, defaultSun(), counts);
    if (options.sky || defaults) addLight(scene, defaultSky(), counts);
}

} // namespace

MeshPlan meshPart(const ModelGeometry& model, size_t first, size_t count) {
    std::unordered_map<uint32_t, uint32_t> local;
    std::vector<float> positions, normals, uvs;
    std::vector<uint32_t> indices;
    indices.reserve(3 * count);
    for (size_t i = 3 * first; i < 3 * (first + count); ++i) {
        const uint32_t source = model.indices[i];
        auto [slot, fresh] = local.try_emplace(source, static_cast<uint32_t>(local.size()));
        if (fresh) {
            positions.insert(positions.end(), &model.positions[3 * source], &model.positions[3 * source] + 3);
            if (!model.normals.empty())
                normals.insert(normals.end(), &model.normals[3 * source], &model.normals[3 * source] + 3);
            if (!model.uvs.empty()) uvs.insert(uvs.end(), &model.uvs[2 * source], &model.uvs[2 * source] + 2);
        }
        indices.push_back(slot->second);
    }
    const std::vector<uint32_t> materialIds(count, model.materialId);
    return triangleMesh(model.name, positions, indices, materialIds, normals, uvs);
}

SceneFile assembleScene(const ImportedModel& model, const BuildOptions& options, const std::string& outputName,
                        ProgressMeter& progress, AssemblyCounts& counts) {
    SceneFile scene;
    scene.add(zstdChunk(kSettings, settingsRecord(options, outputName)));
    addCamera(scene, model, options);
    for (size_t t = 0; t < model.textures.size(); ++t) {
        const auto id = static_cast<int32_t>(t);
        scene.add(zstdChunk(kTextureFile, textureFileRecord(model.textures[t], id)));
        scene.add(zstdChunk(kTexMap, textureMapRecord(model.textures[t], id)));
    }
    for (size_t m = 0; m < model.surfaces.size(); ++m)
        scene.add(zstdChunk(kMaterial, materialRecord(model.surfaces[m], static_cast<int32_t>(m))));
    addLights(scene, model, options, counts);

    const size_t partSize = std::max<uint32_t>(options.maxPartTriangles, 1);
    size_t done = 0;
    for (const ModelGeometry& geometry : model.models) {
        const size_t triangles = geometry.triangleCount();
        for (size_t first = 0; first < triangles; first += partSize) {
            const size_t count = std::min(partSize, triangles - first);
            MeshPlan part = meshPart(geometry, first, count);
            // The parts of one model follow each other; all but the last say that more come.
            part.morePartsFollow = first + count < triangles;
            scene.add(zstdChunk(kTriangleMesh, meshBody(part)));
            ++counts.parts;
            done += count;
            progress.advance(done, counts.models + 1, model.models.size());
        }
        ++counts.models;
    }
    counts.triangles = done;
    return scene;
}

} // namespace builder

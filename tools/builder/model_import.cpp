#include "tools/builder/model_import.h"

#include "tools/builder/camera_lights.h"
#include "tools/builder/crease_normals.h"
#include "tools/builder/material_mapping.h"
#include "tools/builder/record_names.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace builder {

namespace {

// Points and lines are dropped by the sort; every mesh left holds triangles only.
// Missing normals are made here (crease_normals.h), not by the importer, whose smoothing sees
// the vertices a file shares between faces and can't keep a box's edges.
constexpr unsigned kImportSteps = aiProcess_Triangulate | aiProcess_JoinIdenticalVertices | aiProcess_SortByPType |
                                  aiProcess_ValidateDataStructure;

bool hasGltfExtension(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".gltf" || extension == ".glb";
}

void appendVector(std::vector<float>& to, const aiVector3D& v) {
    to.insert(to.end(), {v.x, v.y, v.z});
}

ModelGeometry instanceOf(const aiMesh& mesh, const aiMatrix4x4& world, const std::string& name) {
    ModelGeometry model;
    model.name = name;
    model.materialId = mesh.mMaterialIndex;
    // Normals go with the inverse transpose; a mirroring transform turns the triangles round.
    aiMatrix3x3 normalMatrix = aiMatrix3x3(world);
    const bool mirrored = normalMatrix.Determinant() < 0;
    normalMatrix.Inverse().Transpose();
    model.positions.reserve(3 * mesh.mNumVertices);
    for (unsigned v = 0; v < mesh.mNumVertices; ++v) appendVector(model.positions, world * mesh.mVertices[v]);
    if (mesh.mNormals) {
        model.normals.reserve(3 * mesh.mNumVertices);
        for (unsigned v = 0; v < mesh.mNumVertices; ++v)
            appendVector(model.normals, (normalMatrix * mesh.mNormals[v]).NormalizeSafe());
    }
    if (mesh.HasTextureCoords(0)) {
        model.uvs.reserve(2 * mesh.mNumVertices);
        for (unsigned v = 0; v < mesh.mNumVertices; ++v)
            model.uvs.insert(model.uvs.end(), {mesh.mTextureCoords[0][v].x, mesh.mTextureCoords[0][v].y});
    }
    model.indices.reserve(3 * mesh.mNumFaces);
    for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
        const aiFace& face = mesh.mFaces[f];
        if (face.mNumIndices != 3) continue;
        const unsigned b = mirrored ? 2 : 1, c = mirrored ? 1 : 2;
        model.indices.insert(model.indices.end(), {face.mIndices[0], face.mIndices[b], face.mIndices[c]});
    }
    if (model.normals.empty()) giveCreaseNormals(model);
    return model;
}

// Depth first in the file's order of children, so that the same file always gives the same
// order of models.
void collectInstances(const aiScene& scene, const aiNode& node, const aiMatrix4x4& parent, RecordNames& names,
                      ImportedModel& model) {
    const aiMatrix4x4 world = parent * node.mTransformation;
    for (unsigned i = 0; i < node.mNumMeshes; ++i) {
        const aiMesh& mesh = *scene.mMeshes[node.mMeshes[i]];
        if (!(mesh.mPrimitiveTypes & aiPrimitiveType_TRIANGLE) || mesh.mNumFaces == 0) continue;
        const std::string raw = node.mName.length ? node.mName.C_Str() : mesh.mName.C_Str();
        ModelGeometry instance = instanceOf(mesh, world, names.take(raw, "model " + std::to_string(model.models.size())));
        if (instance.indices.empty()) continue;
        for (size_t p = 0; p < instance.positions.size(); p += 3) model.bounds.extend(&instance.positions[p]);
        model.triangleCount += instance.triangleCount();
        model.models.push_back(std::move(instance));
    }
    for (unsigned c = 0; c < node.mNumChildren; ++c) collectInstances(scene, *node.mChildren[c], world, names, model);
}

void collectSurfaces(const aiScene& scene, const ImportRequest& request, ImportedModel& model) {
    const std::string modelFolder = std::filesystem::path(request.input).parent_path().string();
    TextureTable textures(scene, modelFolder, request.sceneFolder, request.sceneStem);
    RecordNames names;
    for (unsigned m = 0; m < scene.mNumMaterials; ++m)
        model.surfaces.push_back(mapSurface(*scene.mMaterials[m], m, textures, names, model.notes));
    model.textures = textures.take();
}

} // namespace

void Bounds::extend(const float* p) {
    if (!std::isfinite(p[0]) || !std::isfinite(p[1]) || !std::isfinite(p[2])) return;
    for (int a = 0; a < 3; ++a) {
        lower[a] = empty ? p[a] : std::min(lower[a], p[a]);
        upper[a] = empty ? p[a] : std::max(upper[a], p[a]);
    }
    empty = false;
}

bool importModel(const ImportRequest& request, ImportedModel& model, std::string& error) {
    Assimp::Importer importer;
    importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE, aiPrimitiveType_POINT | aiPrimitiveType_LINE);
    const aiScene* scene = importer.ReadFile(request.input, kImportSteps);
    if (!scene || !scene->mRootNode || (scene->mFlags & AI_SCENE_FLAGS_INCOMPLETE)) {
        error = importer.GetErrorString();
        if (error.empty()) error = scene ? "the file holds no meshes" : "the importer gave no scene";
        return false;
    }
    const bool halfAngles = hasGltfExtension(request.input);
    RecordNames modelNames;
    collectInstances(*scene, *scene->mRootNode, aiMatrix4x4(), modelNames, model);
    collectSurfaces(*scene, request, model);
    // A file without materials still gets the default one that every mesh index 0 names.
    if (model.surfaces.empty()) model.surfaces.push_back(Surface{"default", SurfaceKind::Diffuse});
    model.camera = fileCamera(*scene);
    model.lights = fileLights(*scene, halfAngles, model.notes);
    RecordNames lightNames;
    for (size_t i = 0; i < model.lights.size(); ++i)
        model.lights[i].name = lightNames.take(model.lights[i].name, "light " + std::to_string(i));
    return true;
}

} // namespace builder

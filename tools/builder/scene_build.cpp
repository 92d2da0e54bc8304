#include "tools/builder/scene_build.h"

#include "tools/builder/material_documents.h"
#include "tools/builder/model_import.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace builder {

namespace fs = std::filesystem;

namespace {

// Below this many triangles a model builds in a blink and shows no progress.
constexpr size_t kProgressTriangles = 200000;

bool writeWhole(const fs::path& path, const std::vector<uint8_t>& bytes, std::string& error) {
    const fs::path temporary = path.string() + ".partial";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        out.close();
        if (!out) {
            std::error_code ignored;
            fs::remove(temporary, ignored);
            error = "cannot write " + path.string();
            return false;
        }
    }
    std::error_code renamed;
    fs::rename(temporary, path, renamed);
    if (renamed) {
        fs::remove(temporary, renamed);
        error = "cannot write " + path.string();
        return false;
    }
    return true;
}

} // namespace

bool buildScene(const BuildOptions& options, BuildReport& report, std::string& error) {
    const fs::path output = fs::absolute(options.output);
    const fs::path folder = output.parent_path();
    std::error_code status;
    if (!fs::is_directory(folder, status)) {
        error = "the output folder " + folder.string() + " does not exist";
        return false;
    }
    ImportedModel model;
    const ImportRequest request{options.input, folder.string(), output.stem().string()};
    std::string importError;
    if (!importModel(request, model, importError)) {
        error = "cannot read " + options.input + ": " + importError;
        return false;
    }
    if (model.models.empty()) {
        error = options.input + " holds no triangles";
        return false;
    }
    report.notes = model.notes;
    report.materials = model.surfaces.size();
    report.textures = model.textures.size();

    const std::string outputName = options.outputName.empty() ? output.stem().string() : options.outputName;
    scene_writer::Bytes bytes;
    try {
        ProgressMeter progress(options.progress, model.triangleCount, kProgressTriangles);
        scene_writer::SceneFile scene = assembleScene(model, options, outputName, progress, report.counts);
        bytes = scene.build();
    } catch (const std::exception& problem) {
        error = std::string("cannot build the scene of ") + options.input + ": " + problem.what();
        return false;
    }
    for (const TextureSource& texture : model.textures) {
        if (!texture.embeddedBytes.empty() && !writeWhole(folder / texture.sceneRelPath, texture.embeddedBytes, error))
            return false;
    }
    if (!writeWhole(output, bytes, error)) return false;
    return options.documentsFolder.empty() || writeDocuments(model, options.documentsFolder, error);
}

} // namespace builder

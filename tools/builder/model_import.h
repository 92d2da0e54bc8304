// Reads a model file through assimp into an ImportedModel: every instance of every mesh
// (one model per node and mesh) in world space, the materials mapped, cameras and lights.
#pragma once
#include "tools/builder/imported_model.h"

#include <string>

namespace builder {

struct ImportRequest {
    std::string input;
    std::string sceneFolder; // where the scene goes: texture paths are made relative to it
    std::string sceneStem;   // names the images the model carries inside
};

// False with `error` set (assimp's own words) when the file cannot be read.
bool importModel(const ImportRequest& request, ImportedModel& model, std::string& error);

} // namespace builder

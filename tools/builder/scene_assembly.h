// The scene file of an imported model: settings, the camera, textures, texmaps, materials,
// lights and the models, in that order and in no other, so that one input gives one file.
#pragma once
#include "tools/builder/build_options.h"
#include "tools/builder/imported_model.h"
#include "tools/builder/progress_meter.h"
#include "tools/scene_writer/geometry_builders.h"

#include <cstdint>

namespace builder {

struct AssemblyCounts {
    size_t models = 0, parts = 0, triangles = 0, lights = 0;
};

// `outputName` names the rendered images. Throws std::invalid_argument for a bad --view.
scene_writer::SceneFile assembleScene(const ImportedModel& model, const BuildOptions& options,
                                      const std::string& outputName, ProgressMeter& progress,
                                      AssemblyCounts& counts);

// The triangles [first, first + count) of `model` as one part with only the vertices they use.
scene_writer::MeshPlan meshPart(const ModelGeometry& model, size_t first, size_t count);

} // namespace builder

// Surfaces and textures as the records of the scene file, by the keys of the client's field
// tables. Texture i is shown by the IMAGE texmap of id i; surface i is material id i.
#pragma once
#include "tools/builder/imported_model.h"
#include "tools/scene_writer/record_builders.h"

namespace builder {

scene_writer::Bytes materialRecord(const Surface& surface, int32_t id);
scene_writer::Bytes textureMapRecord(const TextureSource& texture, int32_t id);
scene_writer::Bytes textureFileRecord(const TextureSource& texture, int32_t id);

} // namespace builder

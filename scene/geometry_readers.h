// Readers of the geometry chunks. Each call reads one model: a run of consecutive chunks of
// its type, linked into a chain of parts through `next`, whose first part lands in `head`.
//
// `offset` is the scan's in-out offset, 0 for the first chunk of a pass; on return it names
// the link after the last chunk looked at. A caller loops while the result is SceneOk and
// `offset` isn't 0; SceneEndOfChunks ends the scan. On any other status `head` may hold a
// partial chain, which the caller releases like a whole one: head->Release().
//
// A chunk of the type with another version than 100 is passed over without a status. Every
// offset and count in a body is checked against the body: what would lead outside it, or
// describe far more array memory than the body could fill, is SceneInvalid.
//
// With ModelArrays::CheckedOnly the parts carry their headers, names, keys and slices, and
// every array is checked as a full read checks it, but none is built: a sweep that only
// wants the names fails on the same bodies without paying for the copies.
#pragma once
#include "scene/fur_sprite_objects.h"
#include "scene/geometry_objects.h"
#include "scene/scene_file_reader.h"

enum class ModelArrays { Copied, CheckedOnly };

SceneStatus readTriangleMesh(SceneFileReader& reader, TRDF_Load::TriangleMesh*& head, uint64_t& offset,
                             ModelArrays arrays = ModelArrays::Copied);
SceneStatus readFur(SceneFileReader& reader, TRDF_Load::FurMesh*& head, uint64_t& offset,
                    ModelArrays arrays = ModelArrays::Copied);
SceneStatus readSprites(SceneFileReader& reader, TRDF_Load::SprMesh*& head, uint64_t& offset,
                        ModelArrays arrays = ModelArrays::Copied);

// The same three readers by the kind of model, for sweeps written once over all kinds.
inline SceneStatus readModel(SceneFileReader& reader, TRDF_Load::TriangleMesh*& head, uint64_t& offset,
                             ModelArrays arrays) {
    return readTriangleMesh(reader, head, offset, arrays);
}
inline SceneStatus readModel(SceneFileReader& reader, TRDF_Load::FurMesh*& head, uint64_t& offset,
                             ModelArrays arrays) {
    return readFur(reader, head, offset, arrays);
}
inline SceneStatus readModel(SceneFileReader& reader, TRDF_Load::SprMesh*& head, uint64_t& offset,
                             ModelArrays arrays) {
    return readSprites(reader, head, offset, arrays);
}

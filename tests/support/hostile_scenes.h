// Scenes made to cost far more than their size, and the first error the client reports for
// each. Shared by the tests of the client's load and of the inspector, so that both meet the
// same files.
#pragma once
#include "tools/scene_writer/geometry_builders.h"

#include <cstdint>
#include <unistd.h>

namespace hostile_scenes {

namespace sw = scene_writer;

// A texture-file chunk whose frame declares 256 bytes and holds 32 MiB: each retry with a
// little more room would decode it from the start again.
inline sw::Bytes lyingFrameScene(const sw::Bytes& settings) {
    sw::SceneFile file;
    sw::Chunk texture = sw::storedChunk(sw::kTextureFile, sw::runLengthFrame(256, 256), 100, 1);
    file.add(texture);
    file.add(sw::storedChunk(sw::kSettings, settings));
    return file.build();
}

// A well-formed frame of a few hundred kilobytes that decodes to more than the machine's memory.
inline sw::Bytes beyondMemoryScene(const sw::Bytes& settings) {
    const uint64_t physical = uint64_t(sysconf(_SC_PHYS_PAGES)) * uint64_t(sysconf(_SC_PAGESIZE));
    const uint32_t blocks = uint32_t(physical / sw::kRunBlockBytes) + 1024;
    sw::SceneFile file;
    file.add(
        sw::storedChunk(sw::kTextureFile, sw::runLengthFrame(blocks * sw::kRunBlockBytes, blocks), 100, 1));
    file.add(sw::storedChunk(sw::kSettings, settings));
    return file.build();
}

// A texture linked to itself, whose body decodes to 128 MiB: the first sweep wants it, and
// each visit would decode it again.
inline sw::Bytes selfLinkedScene(const sw::Bytes& settings) {
    sw::Bytes body = sw::textureFileBody({});
    body.resize(128u << 20);
    sw::SceneFile file;
    file.add(sw::storedChunk(sw::kSettings, settings));
    file.add(sw::zstdChunk(sw::kTextureFile, body));
    file.build();
    file[1].next = file.offsetOf(1);
    return file.build();
}

// Forty parts of one model, each a few hundred bytes that decode to 8 MiB of mostly zeros
// and declare 900,000 points (124 MiB of elements) with no point data behind them. A part
// alone looks affordable beside its decoded size; held together until the engine has them,
// they would take 5 GB.
inline sw::Bytes unbackedPointsScene(const sw::Bytes& settings) {
    sw::SceneFile file;
    file.add(sw::storedChunk(sw::kSettings, settings));
    for (int part = 0; part < 40; ++part) {
        sw::MeshPlan plan;
        plan.name = "model";
        plan.morePartsFollow = part + 1 < 40;
        plan.pointCount = 900000;
        plan.timeSlices.resize(1);
        sw::Bytes body = sw::meshBody(plan);
        body.resize(8u << 20);
        file.add(sw::zstdChunk(sw::kTriangleMesh, body));
    }
    return file.build();
}

struct HostileScene {
    const char* what;
    sw::Bytes (*scene)(const sw::Bytes& settings);
    const char* message; // the first error the client reports; empty: none
};

inline const HostileScene kHostileScenes[] = {
    {"a frame that lies about its size", lyingFrameScene, ""},
    {"a chunk linked to itself", selfLinkedScene, "Error: invalid scene file."},
    {"counts that no data backs", unbackedPointsScene, "Error: invalid scene file."},
    {"a body beyond the machine's memory", beyondMemoryScene, ""},
};

} // namespace hostile_scenes

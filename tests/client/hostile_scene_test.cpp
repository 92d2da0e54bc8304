// Scenes made to cost far more than their size: each ends promptly and in little memory, with
// the message its damage deserves.
#include "tests/client/test_scene.h"
#include "tools/scene_writer/geometry_builders.h"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <unistd.h>

namespace {

// What a run may hold resident: the plain client stays far below it; the sanitizers' shadow
// memory and quarantine need room of their own.
#if defined(__SANITIZE_ADDRESS__)
constexpr uint64_t kResidentLimitKiB = 768u << 10;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr uint64_t kResidentLimitKiB = 768u << 10;
#else
constexpr uint64_t kResidentLimitKiB = 256u << 10;
#endif
#else
constexpr uint64_t kResidentLimitKiB = 256u << 10;
#endif

sw::Chunk settingsChunk() {
    return sw::storedChunk(sw::kSettings, TestScene::quietSettings());
}

// A texture-file chunk whose frame declares 256 bytes and holds 32 MiB: each retry with a
// little more room would decode it from the start again.
sw::Bytes lyingFrameScene() {
    sw::SceneFile file;
    sw::Chunk texture = sw::storedChunk(sw::kTextureFile, sw::runLengthFrame(256, 256), 100, 1);
    file.add(texture);
    file.add(settingsChunk());
    return file.build();
}

// A well-formed frame of a few hundred kilobytes that decodes to more than the machine's memory.
sw::Bytes beyondMemoryScene() {
    const uint64_t physical = uint64_t(sysconf(_SC_PHYS_PAGES)) * uint64_t(sysconf(_SC_PAGESIZE));
    const uint32_t blocks = uint32_t(physical / sw::kRunBlockBytes) + 1024;
    sw::SceneFile file;
    file.add(
        sw::storedChunk(sw::kTextureFile, sw::runLengthFrame(blocks * sw::kRunBlockBytes, blocks), 100, 1));
    file.add(settingsChunk());
    return file.build();
}

// A texture linked to itself, whose body decodes to 128 MiB: the first sweep wants it, and
// each visit would decode it again.
sw::Bytes selfLinkedScene() {
    sw::Bytes body = sw::textureFileBody({});
    body.resize(128u << 20);
    sw::SceneFile file;
    file.add(settingsChunk());
    file.add(sw::zstdChunk(sw::kTextureFile, body));
    file.build();
    file[1].next = file.offsetOf(1);
    return file.build();
}

// Forty parts of one model, each a few hundred bytes that decode to 8 MiB of mostly zeros
// and declare 900,000 points (124 MiB of elements) with no point data behind them. A part
// alone looks affordable beside its decoded size; held together until the engine has them,
// they would take 5 GB.
sw::Bytes unbackedPointsScene() {
    sw::SceneFile file;
    file.add(settingsChunk());
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

TEST(HostileScene, EndsPromptlyInLittleMemoryWithItsMessage) {
    const struct Case {
        const char* what;
        std::function<sw::Bytes()> scene;
        std::string message; // the first error the client reports; empty: none
    } cases[] = {
        {"a frame that lies about its size", lyingFrameScene, ""},
        {"a chunk linked to itself", selfLinkedScene, "Error: invalid scene file.\n"},
        {"counts that no data backs", unbackedPointsScene, "Error: invalid scene file.\n"},
        {"a body beyond the machine's memory", beyondMemoryScene, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ClientSandbox sandbox(recordingEnginePath());
        const sw::Bytes bytes = c.scene();
        ASSERT_LT(bytes.size(), 4u << 20);
        ASSERT_TRUE(sw::writeBytes(sandbox.path("scene.tavi"), bytes));
        ClientRun run = sandbox.run({"-scene", sandbox.path("scene.tavi")});
        std::cout << c.what << ": " << bytes.size() << " bytes, " << run.wallSeconds << " s, "
                  << run.peakResidentKiB / 1024 << " MiB resident\n";
        EXPECT_EQ(run.exitStatus, 255) << run.output;
        EXPECT_LT(run.peakResidentKiB, kResidentLimitKiB);
        if (!c.message.empty()) {
            EXPECT_TRUE(contains(run.output, c.message)) << run.output;
        }
        EXPECT_TRUE(contains(run.output, "Rendering failed!")) << run.output;
    }
}

} // namespace

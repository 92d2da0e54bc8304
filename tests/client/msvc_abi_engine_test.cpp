// A scene with geometry through an engine that a compiler of the Microsoft C++ ABI made
// (engines/msvc_abi), loaded by the Windows client under wine. The engine tells which of its
// slots were called and how the client's callbacks answered it.
#include "tests/client/test_scene.h"
#include "tools/scene_writer/geometry_builders.h"

#include <gtest/gtest.h>

namespace {

const std::string kFrame = "[" + std::string(100, ' ') + "]\n ";
const std::string kClosingRow = std::string(100, '#') + "\n";

std::string afterBanner(const std::string& output) {
    size_t end = output.find("\n\n");
    return end == std::string::npos ? output : output.substr(end + 2);
}

sw::CloudPlan cloud(const std::string& name, const sw::Bytes& element) {
    sw::CloudPlan plan;
    plan.name = name;
    plan.elementCount = 1;
    plan.timeSlices.emplace_back();
    plan.timeSlices.back().elements = element;
    return plan;
}

// Texture folders, maps, materials, a camera, a light, models, fur and sprites: every call that
// the client makes of itself (texture images reach an engine only when it asks for them by name).
std::string writeScene(const ClientSandbox& sandbox) {
    TestScene scene;
    scene.add(sw::kTexMap, sw::texMapBody(5, 7, "distortion"));
    scene.add(sw::kTexMap, sw::texMapBody(5, 9, "light map"));
    for (int32_t id : {1, 2}) scene.add(sw::kMaterial, sw::materialBody(7, id, 0, "m" + std::to_string(id)));
    for (uint32_t material : {1u, 2u}) {
        sw::MeshPlan mesh = sw::gridMesh("part " + std::to_string(material), 1, 1);
        for (size_t triangle = 0; triangle < 2; ++triangle) sw::put32(mesh.triangleQuads, 16 * triangle + 12, material);
        scene.add(sw::kTriangleMesh, sw::meshBody(mesh));
    }
    scene.add(sw::kFur, sw::furBody(cloud("grass", sw::furElement(1, 1))));
    scene.add(sw::kSprites, sw::spriteBody(cloud("sparks", sw::spriteElement(1, 2))));
    scene.addCamera(0, 7);
    scene.addLight(9);
    return scene.write(sandbox);
}

TEST(WindowsMsvcEngine, TakesEverySlotOfASceneAndFindsTheCallbacksAsSpecified) {
    if (msvcAbiEnginePath().empty()) GTEST_SKIP() << "no engine for the Microsoft C++ ABI in this build";
    const std::vector<std::string> arguments = {"-textures", "t1"};

    // The recording engine, MinGW's like the client, shows which calls the scene makes.
    ClientSandbox recording(recordingEnginePath());
    std::vector<std::string> recorded = arguments;
    recorded.insert(recorded.end(), {"-scene", writeScene(recording)});
    ASSERT_EQ(recording.run(recorded).exitStatus, 0);
    std::string calls = "MSVC ABI engine: calls";
    for (const std::string& operation : operations(recording.engineLog())) calls += " " + operation;
    for (const char* geometry : {" addCamera ", " addLight ", " addTriangleMeshes ", " addFur ", " addSprites "})
        ASSERT_TRUE(contains(calls, geometry)) << calls;

    ClientSandbox sandbox(msvcAbiEnginePath());
    std::vector<std::string> run = arguments;
    run.insert(run.end(), {"-scene", writeScene(sandbox)});
    ClientRun result = sandbox.run(run);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(afterBanner(result.output),
              "\nCalculate statistics ...\n" + kFrame + std::string(50, '*') + "\nRendering ...\n" + kFrame +
                  std::string(100, '*') + "\nMSVC ABI engine: module " + sandbox.clientPath(engineModuleName()) +
                  "\nMSVC ABI engine: no image rendered\n\nClosing renderer ...\n" + calls + "\n" + kClosingRow +
                  "Rendering finished without errors.\n");
}

} // namespace

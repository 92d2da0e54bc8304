// Fur, sprites and broken meshes through the real client and the preview engine.
#include "tests/engines/preview/render/render_scene.h"

#include <gtest/gtest.h>

#include <cmath>

namespace preview_test {
namespace {

using namespace scene_writer;

MaterialBuilder glowing(int32_t id) {
    MaterialBuilder material("LAMBERTIANEMISSION", id, "glow");
    material.color("EmissionColor", {1, 1, 1}).real("IntensityValue", 1).real("KelvinValue", 6500).flag("Visible",
                                                                                                          true);
    return material;
}

// A straight hair across the upper half of the frame and a disc facing the camera in the lower
// half, both glowing, in front of nothing: the picture is lit where they are and black elsewhere.
TEST(PreviewModels, FurIsACurveAndASpriteIsADisc) {
    RenderScene scene(64, 64, 4);
    scene.camera(orthographicCamera(4), lookAt({0, 0, 5}, {0, 0, 0}));
    scene.material(glowing(0));
    const float y = 1;
    scene.fur(cloudModel("hair", {furCurve({Vec4f{-1.5f, y, 0, 0.15f}, Vec4f{-0.5f, y, 0, 0.15f},
                                            Vec4f{0.5f, y, 0, 0.15f}, Vec4f{1.5f, y, 0, 0.15f}},
                                           0)}));
    scene.sprites(cloudModel("dots", {spriteDisc({0, -1, 0}, {0, 0, 1}, 0.5f, 0)}));
    ClientSandbox sandbox(previewEnginePath());
    Image image;
    const ClientRun run = scene.render(sandbox, &image);
    ASSERT_LE(run.exitStatus, 1) << run.output;
    ASSERT_FALSE(image.empty()) << run.output;
    // One world unit is 16 pixels; the frame's centre is (32, 32).
    EXPECT_NEAR(image.at(32, 16).g, 1, 0.01f) << "on the hair";
    EXPECT_NEAR(image.at(12, 16).g, 1, 0.01f) << "on the hair, towards its end";
    EXPECT_EQ(image.at(32, 22).g, 0) << "beside the hair";
    EXPECT_EQ(image.at(2, 16).g, 0) << "past the hair's end";
    EXPECT_NEAR(image.at(32, 48).g, 1, 0.01f) << "on the disc";
    EXPECT_NEAR(image.at(38, 48).g, 1, 0.01f) << "on the disc, off its centre";
    EXPECT_EQ(image.at(44, 48).g, 0) << "beside the disc";
}

// Triangles with a vertex that is not a number, or an index past the vertices, are left out,
// each kind told once with its count; a material the engine can't render becomes grey, told
// once. The rest renders, and the run ends with the status of warnings.
TEST(PreviewModels, BadRecordsAreSkippedAndToldOncePerKind) {
    RenderScene scene(16, 16, 2);
    scene.camera(orthographicCamera(2), lookAt({0, 0, 3}, {0, 0, 0}));
    scene.material(glowing(0));
    scene.material(MaterialBuilder("SSS", 1, "skin"));
    const float nan = std::nanf("");
    scene.mesh(triangleMesh("broken", {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0, nan, 0, 0},
                            {0, 1, 2, 0, 2, 3, 0, 1, 4, 1, 2, 4, 0, 1, 99}, {0, 0, 0, 0, 0}));
    scene.mesh(quadMesh("grey", {-5, -5, -1}, {10, 0, 0}, {0, 10, 0}, 1));
    ClientSandbox sandbox(previewEnginePath());
    Image image;
    const ClientRun run = scene.render(sandbox, &image);
    EXPECT_EQ(run.exitStatus, 1) << "warnings: " << run.output;
    ASSERT_FALSE(image.empty()) << run.output;
    EXPECT_NEAR(image.at(8, 8).g, 1, 0.01f) << "the good triangles still render";
    auto told = [&](const std::string& line) {
        size_t count = 0;
        for (size_t at = run.output.find(line); at != std::string::npos; at = run.output.find(line, at + 1)) ++count;
        return count;
    };
    // Each warning shows twice: when it happens and in the final report.
    EXPECT_EQ(told("Preview engine: triangles with a non-finite vertex, skipped (2 times)\n"), 2u) << run.output;
    EXPECT_EQ(told("Preview engine: triangles with a vertex index out of range, skipped\n"), 2u) << run.output;
    EXPECT_EQ(told("Preview engine: unsupported material type SSS\n"), 2u) << run.output;
}

} // namespace
} // namespace preview_test

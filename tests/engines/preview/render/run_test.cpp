// What a render run leaves: the same bytes whatever the threads, only the region's pixels, the
// files the settings ask for, a progress bar fed by real passes, and no ray spent on a path that
// can add no light.
#include "tests/engines/preview/render/render_scene.h"

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

namespace preview_test {
namespace {

using namespace scene_writer;

// A diffuse sphere under the sky and the sun: every path kind at once, small enough to be quick.
RenderScene smallScene(int width, int height, int passes) {
    RenderScene scene(width, height, passes);
    scene.camera(perspectiveCamera(45), lookAt({0, 1, 4}, {0, 0, 0}));
    LightPlan sky;
    sky.type = 4;
    sky.intensity = 0.5f;
    scene.light(sky);
    LightPlan sun;
    sun.type = 9;
    sun.intensity = 3;
    sun.direction = {-0.3f, -1, -0.2f};
    scene.light(sun);
    MaterialBuilder material("DIFFUSE", 0, "clay");
    material.color("FrontColor", {0.7f, 0.5f, 0.3f});
    scene.material(material);
    scene.mesh(sphereMesh("ball", {0, 0, 0}, 1, 16, 32, 0));
    scene.mesh(quadMesh("floor", {-3, -1, 3}, {6, 0, 0}, {0, 0, -6}, 0));
    return scene;
}

TEST(PreviewRun, TheSameBytesForAnyThreadCountAndEveryRun) {
    std::string first;
    for (int threads : {1, 2, 2, 0}) {
        RenderScene scene = smallScene(40, 30, 3);
        scene.settings.maxThreads = threads;
        ClientSandbox sandbox(previewEnginePath());
        const ClientRun run = scene.render(sandbox, nullptr);
        ASSERT_EQ(run.exitStatus, 0) << run.output;
        const std::string bytes = sandbox.readFile("out/frame.exr");
        ASSERT_GT(bytes.size(), 1000u);
        if (first.empty()) first = bytes;
        EXPECT_TRUE(bytes == first) << threads << " threads";
    }
}

TEST(PreviewRun, ARegionRendersOnlyItsPixels) {
    RenderScene scene = smallScene(32, 24, 2);
    scene.settings.regionX = 8;
    scene.settings.regionY = 4;
    scene.settings.regionSizeX = 16;
    scene.settings.regionSizeY = 10;
    ClientSandbox sandbox(previewEnginePath());
    Image image;
    const ClientRun run = scene.render(sandbox, &image);
    ASSERT_EQ(run.exitStatus, 0) << run.output;
    ASSERT_EQ(image.width, 32);
    ASSERT_EQ(image.height, 24);
    int lit = 0;
    for (int y = 0; y < 24; ++y)
        for (int x = 0; x < 32; ++x) {
            const Rgb c = image.at(x, y);
            const bool inside = x >= 8 && x < 24 && y >= 4 && y < 14;
            if (!inside) {
                EXPECT_EQ(c.r + c.g + c.b, 0) << x << "," << y;
            }
            lit += inside && c.r + c.g + c.b > 0;
        }
    EXPECT_EQ(lit, 16 * 10);
}

TEST(PreviewRun, WritesTheFormatsAskedForUnderTheirNames) {
    struct Case {
        const char* what;
        bool jpeg, tiff, exr;
        int frame;
        bool animated;
        std::vector<std::string> files;
    };
    const Case cases[] = {
        {"all three", true, true, true, 0, false, {"frame.jpg", "frame.tif", "frame.exr"}},
        {"none asked: the client asks for all three", false, false, false, 0, false,
         {"frame.jpg", "frame.tif", "frame.exr"}},
        {"TIFF alone", false, true, false, 0, false, {"frame.tif"}},
        {"an animated scene names its frame", false, false, true, 7, true, {"frame.0007.exr"}},
    };
    for (const Case& c : cases) {
        RenderScene scene(24, 16, 1);
        scene.settings.saveJpeg = c.jpeg;
        scene.settings.saveTiff = c.tiff;
        scene.settings.saveExr = c.exr;
        scene.settings.frameNumber = c.frame;
        scene.settings.framesPerSecond = 25;
        const CameraPathPlan still = lookAt({0, 0, 3}, {0, 0, 0});
        CameraPathPlan moving = still;
        if (c.animated) moving.trackA = {trackKey(0, 0, 3, 0), trackKey(0, 0, 4, 1000)};
        scene.camera(perspectiveCamera(40), moving);
        LightPlan sky;
        sky.type = 4;
        scene.light(sky);
        ClientSandbox sandbox(previewEnginePath());
        const ClientRun run = scene.render(sandbox, nullptr);
        ASSERT_EQ(run.exitStatus, 0) << c.what << "\n" << run.output;
        size_t found = 0;
        for (const auto& entry : std::filesystem::directory_iterator(sandbox.path("out"))) {
            ++found;
            (void)entry;
        }
        EXPECT_EQ(found, c.files.size()) << c.what;
        for (const std::string& name : c.files) {
            auto input = OIIO::ImageInput::open(sandbox.path("out/" + name));
            ASSERT_TRUE(input) << c.what << ": " << name;
            EXPECT_EQ(input->spec_dimensions(0).width, 24) << name;
            EXPECT_EQ(input->spec_dimensions(0).height, 16) << name;
            EXPECT_NE(run.output.find(name), std::string::npos) << "the run names " << name;
        }
    }
}

// The bar of the rendering stage fills as passes complete: its stars come from the engine's
// progress, stage 1, with the fraction of passes done.
TEST(PreviewRun, TheProgressBarFillsFromRealPasses) {
    RenderScene scene = smallScene(16, 16, 8);
    ClientSandbox sandbox(previewEnginePath());
    const ClientRun run = scene.render(sandbox, nullptr);
    ASSERT_EQ(run.exitStatus, 0) << run.output;
    const size_t rendering = run.output.find("Rendering ...");
    ASSERT_NE(rendering, std::string::npos) << run.output;
    const std::string after = run.output.substr(rendering);
    EXPECT_NE(after.find(std::string(100, '*')), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("Rendering finished without errors."), std::string::npos) << run.output;
}

// Red light off a green wall is no light. Inside a green box, the camera sees only a red wall
// lit by a point light: a path queries its camera ray, the shadow ray from the red wall and the
// ray on to a green wall, and ends there, where it carries nothing. Roulette is off, so a path
// that went on would take up to twenty.
TEST(PreviewRun, APathThatCarriesNoLightEnds) {
    RenderScene scene(8, 8, 2);
    scene.camera(perspectiveCamera(30), lookAt({0, 0, -0.5f}, {0, 0, 1}));
    LightPlan bulb;
    bulb.type = 1;
    bulb.intensity = 1;
    scene.light(bulb);
    MaterialBuilder green("DIFFUSE", 0, "green"), red("DIFFUSE", 1, "red");
    // The box is seen from inside, its back.
    green.color("FrontColor", {0, 1, 0}).color("BackColor", {0, 1, 0});
    red.color("FrontColor", {1, 0, 0});
    scene.material(green);
    scene.material(red);
    scene.mesh(boxMesh("box", {-1, -1, -1}, {1, 1, 1}, 0));
    scene.mesh(quadMesh("wall", {-1, 1, 0.9f}, {2, 0, 0}, {0, -2, 0}, 1));
    ClientSandbox sandbox(previewEnginePath());
    const ClientRun run = scene.render(sandbox, nullptr);
    ASSERT_EQ(run.exitStatus, 0) << run.output;
    const size_t at = run.output.find("Mrays/s, ");
    ASSERT_NE(at, std::string::npos) << run.output;
    double raysPerSample = 0;
    ASSERT_EQ(std::sscanf(run.output.c_str() + at, "Mrays/s, %lf rays a sample", &raysPerSample), 1) << run.output;
    EXPECT_DOUBLE_EQ(raysPerSample, 3.0) << run.output;
}

} // namespace
} // namespace preview_test

// The preview engine through the real client: scenes whose images physics predicts.
#include "tests/engines/preview/render/render_scene.h"

#include <gtest/gtest.h>

#include <cmath>

namespace preview_test {
namespace {

using namespace scene_writer;

constexpr float kPi = 3.14159265f;

LightPlan sky(float radiance, ColorRGB colour = {1, 1, 1}) {
    LightPlan plan;
    plan.type = 4;
    plan.name = "sky";
    plan.intensity = radiance;
    plan.colour = colour;
    return plan;
}

MaterialBuilder diffuse(int32_t id, float albedo) {
    MaterialBuilder material("DIFFUSE", id, "diffuse");
    material.color("FrontColor", {albedo, albedo, albedo});
    return material;
}

MaterialBuilder emitter(int32_t id, float radiance) {
    MaterialBuilder material("LAMBERTIANEMISSION", id, "emitter");
    material.color("EmissionColor", {1, 1, 1}).real("IntensityValue", radiance).real("KelvinValue", 6500).flag(
        "Visible", true);
    return material;
}

void expectNear(const Rgb& got, const Rgb& expected, float relative, const std::string& what) {
    EXPECT_NEAR(got.r, expected.r, relative * expected.r + 1e-3f) << what;
    EXPECT_NEAR(got.g, expected.g, relative * expected.g + 1e-3f) << what;
    EXPECT_NEAR(got.b, expected.b, relative * expected.b + 1e-3f) << what;
}

// A sphere of albedo a in a uniform environment of radiance 1 shows a: at 1 it vanishes.
// 32 samples a pixel; the mean over the sphere's middle within 1.5 %, over each block of 4 x 4
// pixels (the rim included, where shading normals and grazing angles meet) within 5 %.
TEST(PreviewPhysics, WhiteFurnace) {
    for (float albedo : {1.0f, 0.5f}) {
        RenderScene scene(48, 48, 32);
        scene.camera(perspectiveCamera(40), lookAt({0, 0, 4}, {0, 0, 0}));
        scene.light(sky(1));
        scene.material(diffuse(0, albedo));
        scene.mesh(sphereMesh("ball", {0, 0, 0}, 1, 64, 128, 0));
        ClientSandbox sandbox(previewEnginePath());
        Image image;
        const ClientRun run = scene.render(sandbox, &image);
        ASSERT_EQ(run.exitStatus, 0) << run.output;
        ASSERT_FALSE(image.empty());
        const std::string what = "albedo " + std::to_string(albedo);
        expectNear(image.mean(18, 18, 30, 30), {albedo, albedo, albedo}, 0.015f, what);
        // Blocks wholly on the sphere, whose outline has a radius of 17 pixels.
        auto onSphere = [](int x, int y) { return (x - 24) * (x - 24) + (y - 24) * (y - 24) <= 16 * 16; };
        for (int y = 8; y < 40; y += 4)
            for (int x = 8; x < 40; x += 4)
                if (onSphere(x, y) && onSphere(x + 4, y) && onSphere(x, y + 4) && onSphere(x + 4, y + 4)) {
                    EXPECT_NEAR(image.mean(x, y, x + 4, y + 4).g, albedo, 0.05f * albedo)
                        << what << " at " << x << "," << y;
                }
        expectNear(image.at(1, 1), {1, 1, 1}, 0.01f, what + ", the background");
    }
}

// A Lambertian plane of albedo 0.5 under a directional light of irradiance 3 at angle θ shows
// ρ·E·cos θ / π. The light is a delta light and the camera orthographic: every sample is the
// same, so the tolerance is half float's 0.2 %.
TEST(PreviewPhysics, LambertianPlaneUnderDirectionalLight) {
    for (float degrees : {0.0f, 60.0f}) {
        const float theta = degrees * kPi / 180;
        RenderScene scene(16, 16, 2);
        scene.maxDepth = 1;
        scene.camera(orthographicCamera(1), lookAt({0, 2, 0}, {0, 0, 0}, {0, 0, -1}));
        LightPlan light;
        light.type = 5;
        light.intensity = 3;
        light.direction = {std::sin(theta), -std::cos(theta), 0};
        scene.light(light);
        scene.material(diffuse(0, 0.5f));
        scene.mesh(quadMesh("plane", {-2, 0, 2}, {4, 0, 0}, {0, 0, -4}, 0));
        ClientSandbox sandbox(previewEnginePath());
        Image image;
        const ClientRun run = scene.render(sandbox, &image);
        ASSERT_EQ(run.exitStatus, 0) << run.output;
        ASSERT_FALSE(image.empty());
        const float expected = 0.5f * 3 * std::cos(theta) / kPi;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x)
                ASSERT_NEAR(image.at(x, y).r, expected, 0.002f * expected) << degrees << " degrees, " << x << "," << y;
    }
}

// An emitting surface of radiance L seen directly shows L, within half float's precision.
TEST(PreviewPhysics, EmitterSeenDirectlyShowsItsRadiance) {
    RenderScene scene(16, 16, 4);
    scene.camera(perspectiveCamera(30), lookAt({0, 0, 3}, {0, 0, 0}));
    scene.material(emitter(0, 2.5f));
    scene.mesh(quadMesh("panel", {-2, -2, 0}, {4, 0, 0}, {0, 4, 0}, 0));
    ClientSandbox sandbox(previewEnginePath());
    Image image;
    const ClientRun run = scene.render(sandbox, &image);
    ASSERT_EQ(run.exitStatus, 0) << run.output;
    ASSERT_FALSE(image.empty());
    expectNear(image.mean(0, 0, 16, 16), {2.5f, 2.5f, 2.5f}, 0.002f, "panel");
}

// A slab of glass of index 1.5 at normal incidence in front of an emitter of radiance 1 passes
// (1 - R) / (1 + R) of it, R = 0.04, counting every reflection inside. Each sample either
// passes or not: 64 samples over 32 x 32 pixels give the mean within 0.6 %.
TEST(PreviewPhysics, GlassSlabTransmitsWhatFresnelLeaves) {
    RenderScene scene(32, 32, 64);
    scene.maxDepth = 64;
    scene.rouletteStartDepth = 64;
    scene.camera(orthographicCamera(1), lookAt({0, 0, 3}, {0, 0, 0}));
    scene.material(emitter(0, 1));
    scene.material(MaterialBuilder("IDEALDIELECTRIC", 1, "glass")
                       .color("Reflection/ReflectionColor", {1, 1, 1})
                       .real("Reflection/ReflectionWeight", 1)
                       .color("Transmission/TransmissionColor", {1, 1, 1})
                       .real("Transmission/TransmissionValue", 1)
                       .real("IOR/IOR_Value", 1.5f));
    scene.mesh(quadMesh("background", {-5, -5, -1}, {10, 0, 0}, {0, 10, 0}, 0));
    scene.mesh(boxMesh("slab", {-2, -2, -0.05f}, {2, 2, 0.05f}, 1));
    ClientSandbox sandbox(previewEnginePath());
    Image image;
    const ClientRun run = scene.render(sandbox, &image);
    ASSERT_EQ(run.exitStatus, 0) << run.output;
    ASSERT_FALSE(image.empty());
    const float R = 0.04f, expected = (1 - R) / (1 + R);
    expectNear(image.mean(0, 0, 32, 32), {expected, expected, expected}, 0.006f, "slab");
}

// A mirror shows the environment as it is.
TEST(PreviewPhysics, MirrorShowsTheEnvironmentUnchanged) {
    RenderScene scene(16, 16, 4);
    scene.camera(orthographicCamera(0.5f), lookAt({0, 0, 3}, {0, 0, 0}));
    scene.light(sky(1, {0.2f, 0.5f, 0.8f}));
    scene.material(MaterialBuilder("IDEALMIRROR", 0, "mirror").color("ReflectionColor", {1, 1, 1}));
    // Turned 45 degrees about the vertical, so that it shows the sky beside the camera.
    scene.mesh(quadMesh("mirror", {-1, -1, 1}, {2, 0, -2}, {0, 2, 0}, 0));
    ClientSandbox sandbox(previewEnginePath());
    Image image;
    const ClientRun run = scene.render(sandbox, &image);
    ASSERT_EQ(run.exitStatus, 0) << run.output;
    ASSERT_FALSE(image.empty());
    expectNear(image.mean(0, 0, 16, 16), {0.2f, 0.5f, 0.8f}, 0.003f, "mirror");
}

// A triangle at a known place covers the pixels that the projection predicts: pixels whose four
// corners all fall inside show it, pixels that it does not reach do not. Camera rays go
// to Embree eight at a time along a row; the odd width ends each row with a part-filled group.
TEST(PreviewPhysics, TriangleCoversThePredictedPixels) {
    const float corners[3][2] = {{-1, -1}, {1.5f, -0.5f}, {0, 1.2f}};
    const int width = 61, height = 48;
    const float aspect = float(width) / height;
    struct Projection {
        const char* what;
        Bytes camera;
        float halfWidthAtTriangle; // world units from the centre to the frame's right edge at z = 0
    };
    const Projection projections[] = {
        {"perspective", perspectiveCamera(60), 5 * std::tan(30 * kPi / 180)},
        {"orthographic", orthographicCamera(4), 2},
    };
    for (const Projection& projection : projections) {
        RenderScene scene(width, height, 4);
        scene.camera(projection.camera, lookAt({0, 0, 5}, {0, 0, 0}));
        scene.material(emitter(0, 1));
        scene.mesh(triangleMesh("triangle", {-1, -1, 0, 1.5f, -0.5f, 0, 0, 1.2f, 0}, {0, 1, 2}, {0}));
        ClientSandbox sandbox(previewEnginePath());
        Image image;
        const ClientRun run = scene.render(sandbox, &image);
        ASSERT_EQ(run.exitStatus, 0) << run.output;
        ASSERT_FALSE(image.empty());
        // The triangle in pixels: x right from the left edge, y down from the top.
        float pixel[3][2];
        for (int i = 0; i < 3; ++i) {
            pixel[i][0] = (corners[i][0] / projection.halfWidthAtTriangle + 1) * 0.5f * width;
            pixel[i][1] = (1 - corners[i][1] * aspect / projection.halfWidthAtTriangle) * 0.5f * height;
        }
        auto inside = [&](float x, float y) {
            auto side = [&](int a, int b) {
                return (pixel[b][0] - pixel[a][0]) * (y - pixel[a][1]) - (pixel[b][1] - pixel[a][1]) * (x - pixel[a][0]);
            };
            const float s0 = side(0, 1), s1 = side(1, 2), s2 = side(2, 0);
            return (s0 >= 0 && s1 >= 0 && s2 >= 0) || (s0 <= 0 && s1 <= 0 && s2 <= 0);
        };
        int covered = 0, empty = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const int in = inside(x, y) + inside(x + 1, y) + inside(x, y + 1) + inside(x + 1, y + 1);
                // A pixel can hold a corner of the triangle with its own four corners outside.
                bool holdsCorner = false;
                for (const auto& p : pixel) holdsCorner = holdsCorner || (int(p[0]) == x && int(p[1]) == y);
                if (in == 4) {
                    ++covered;
                    EXPECT_NEAR(image.at(x, y).g, 1, 0.01f) << projection.what << " pixel " << x << "," << y;
                } else if (in == 0 && !holdsCorner) {
                    ++empty;
                    EXPECT_EQ(image.at(x, y).g, 0) << projection.what << " pixel " << x << "," << y;
                }
            }
        EXPECT_GT(covered, 50) << projection.what;
        EXPECT_GT(empty, 50) << projection.what;
    }
}

// An image on a plane facing the camera shows its first row at the top and its first column at
// the left: red, green over blue, white.
TEST(PreviewPhysics, TexturedPlaneShowsTheImageTheRightWayRound) {
    RenderScene scene(32, 32, 4);
    scene.camera(orthographicCamera(2), lookAt({0, 0, 3}, {0, 0, 0}));
    TextureDataPlan texture;
    texture.id = 0;
    texture.name = "quadrants";
    // Quadrants of 2 x 2 texels, so that filtering at a quadrant's middle meets one colour only.
    texture.width = texture.height = 4;
    texture.pixelType = 0;
    const uint8_t quadrant[2][2][4] = {{{255, 0, 0, 255}, {0, 255, 0, 255}}, {{0, 0, 255, 255}, {255, 255, 255, 255}}};
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) texture.pixels.insert(texture.pixels.end(), quadrant[y / 2][x / 2], quadrant[y / 2][x / 2] + 4);
    scene.texture(texture);
    scene.texMap(TexMapBuilder("IMAGE", 0, "quadrants").texture("Texture", 0));
    MaterialBuilder shown = emitter(0, 1);
    shown.texMap("EmissionMap", 0);
    scene.material(shown);
    scene.mesh(quadMesh("picture", {-1, -1, 0}, {2, 0, 0}, {0, 2, 0}, 0));
    ClientSandbox sandbox(previewEnginePath());
    Image image;
    const ClientRun run = scene.render(sandbox, &image);
    ASSERT_EQ(run.exitStatus, 0) << run.output;
    ASSERT_FALSE(image.empty());
    expectNear(image.at(8, 8), {1, 0, 0}, 0.02f, "top left");
    expectNear(image.at(24, 8), {0, 1, 0}, 0.02f, "top right");
    expectNear(image.at(8, 24), {0, 0, 1}, 0.02f, "bottom left");
    expectNear(image.at(24, 24), {1, 1, 1}, 0.02f, "bottom right");
}

} // namespace
} // namespace preview_test

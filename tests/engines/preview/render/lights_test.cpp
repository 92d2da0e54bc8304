#include "engines/preview/render/lights.h"

#include <gtest/gtest.h>

#include <cmath>

namespace preview {
namespace {

// Irradiance at `point` on a surface facing `normal`, by sampling the lights alone.
float irradiance(const LightSet& lights, const Vec3& point, const Vec3& normal, int samples = 1 << 16) {
    double sum = 0;
    for (int i = 0; i < samples; ++i) {
        // A stratified grid keeps the estimate's noise far below the tolerances.
        const int side = 256;
        const float u0 = ((i % side) + 0.5f) / side, u1 = (((i / side) % side) + 0.5f) / side;
        LightSample sample;
        if (!lights.sample(point, (i * 0.618034f) - std::floor(i * 0.618034f), u0, u1, &sample)) continue;
        const float cosine = std::max(0.0f, dot(sample.wi, normal));
        sum += luminance(sample.radiance) * cosine / sample.pdf;
    }
    return static_cast<float>(sum / samples);
}

struct Fixture {
    SceneGeometry geometry{0};
    MaterialSet materials;
    TexMapSet maps;
    WarningLog warnings;
    LightSet lights;

    void prepare() {
        lights.addShapes(geometry);
        lights.prepare(geometry, materials, maps, warnings);
    }
};

LightParams light(LightKind kind, float value) {
    LightParams params;
    params.kind = kind;
    params.emitted = Color(value);
    return params;
}

TEST(LightSet, SamplingGivesTheIrradianceOfEachKind) {
    struct Case {
        const char* what;
        LightParams light;
        Vec3 point, normal;
        float expected;
        bool onlyDelta; // no ray can meet it
    };
    LightParams disc = light(LightKind::Disc, 2);
    disc.position = {0, 2, 0};
    disc.width = 1.5f; // the radius
    LightParams rectangle = light(LightKind::Rectangle, 3);
    rectangle.position = {0, 1, 0};
    rectangle.width = 2;
    rectangle.height = 2;
    LightParams point = light(LightKind::Point, 8);
    point.position = {0, 2, 0};
    LightParams tilted = light(LightKind::Directional, 5);
    tilted.direction = normalize(Vec3(1, -1, 0));
    LightParams sun = light(LightKind::Sun, 4);
    sun.cosSun = std::cos(0.5f * 0.53f * kPi / 180);
    // A rectangle of half sides a, b at distance d, seen from below its centre: four corners'
    // worth of the corner formula.
    auto rectangleIrradiance = [](float radiance, float a, float b, float d) {
        const float x = a / d, y = b / d;
        const float corner = x / std::sqrt(1 + x * x) * std::atan(y / std::sqrt(1 + x * x)) +
                             y / std::sqrt(1 + y * y) * std::atan(x / std::sqrt(1 + y * y));
        return 4 * radiance * 0.5f * corner;
    };
    const Case cases[] = {
        {"disc above", disc, {0, 0, 0}, {0, 1, 0}, kPi * 2 * 1.5f * 1.5f / (4 + 1.5f * 1.5f), false},
        {"rectangle above", rectangle, {0, 0, 0}, {0, 1, 0}, rectangleIrradiance(3, 1, 1, 1), false},
        {"point light, inverse square", point, {0, 0, 0}, {0, 1, 0}, 8.0f / 4, true},
        {"directional at 45 degrees", tilted, {0, 0, 0}, {0, 1, 0}, 5 * std::cos(kPi / 4), true},
        {"sun straight above", sun, {0, 0, 0}, {0, 1, 0}, 4, false},
        {"disc seen from behind gives nothing", disc, {0, 3, 0}, {0, -1, 0}, 0, false},
    };
    for (const Case& c : cases) {
        Fixture scene;
        scene.lights.add(c.light);
        scene.prepare();
        EXPECT_NEAR(irradiance(scene.lights, c.point, c.normal), c.expected, 0.01f * c.expected + 1e-4f) << c.what;
        EXPECT_EQ(scene.lights.onlyDeltaLights(), c.onlyDelta) << c.what;
    }
}

TEST(LightSet, TheDensityOfAHitMatchesTheDensityOfTheSample) {
    Fixture scene;
    LightParams rectangle = light(LightKind::Rectangle, 1);
    rectangle.position = {0, 1, 0};
    scene.lights.add(rectangle);
    scene.lights.add(light(LightKind::Sky, 0.5f));
    scene.prepare();
    ASSERT_TRUE(scene.lights.isLightMesh(0));
    for (int i = 0; i < 64; ++i) {
        LightSample sample;
        if (!scene.lights.sample({0.1f, 0, 0.2f}, (i + 0.5f) / 64, 0.3f, (i * 0.7f) - std::floor(i * 0.7f), &sample))
            continue;
        float pdf = 0;
        if (std::isinf(sample.distance)) {
            scene.lights.environment(sample.wi, &pdf);
        } else {
            ShadingContext at;
            at.position = Vec3(0.1f, 0, 0.2f) + sample.wi * sample.distance;
            at.geometricNormal = {0, -1, 0};
            at.wo = -sample.wi;
            scene.lights.emittedByMesh(0, 0, at, {0.1f, 0, 0.2f}, &pdf);
        }
        EXPECT_NEAR(pdf, sample.pdf, 1e-3f * sample.pdf) << "sample " << i;
    }
}

TEST(Temperature, SixtyFiveHundredKelvinIsWhiteAndWarmLightIsRed) {
    const Color white = temperatureColor(6500);
    EXPECT_FLOAT_EQ(white.x, 1);
    EXPECT_FLOAT_EQ(white.z, 1);
    const Color warm = temperatureColor(3000), cold = temperatureColor(12000);
    EXPECT_GT(warm.x, warm.z);
    EXPECT_LT(cold.x, cold.z);
    EXPECT_NEAR(luminance(warm), 1, 1e-4);
}

} // namespace
} // namespace preview

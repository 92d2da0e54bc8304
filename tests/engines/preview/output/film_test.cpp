#include "engines/preview/output/film.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace preview {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

TEST(ClipRegion, SizesAndBounds) {
    struct Case {
        const char* name;
        PixelRect requested, expected;
    };
    const Case cases[] = {
        {"zero sizes span the image", {5, 7, 0, 0}, {0, 0, 64, 32}},
        {"one zero axis", {5, 7, 10, 0}, {5, 0, 10, 32}},
        {"inside stays", {5, 7, 10, 4}, {5, 7, 10, 4}},
        {"clipped at the far edges", {60, 30, 10, 10}, {60, 30, 4, 2}},
        {"clipped at the near edges", {-3, -2, 10, 10}, {0, 0, 7, 8}},
        {"wholly outside is empty", {100, 0, 10, 10}, {64, 0, 0, 10}},
        {"negative size spans the image", {5, 7, -4, 3}, {0, 7, 64, 3}},
    };
    for (const Case& c : cases) {
        PixelRect r = clipRegion(64, 32, c.requested);
        EXPECT_EQ(r.x, c.expected.x) << c.name;
        EXPECT_EQ(r.y, c.expected.y) << c.name;
        EXPECT_EQ(r.width, c.expected.width) << c.name;
        EXPECT_EQ(r.height, c.expected.height) << c.name;
    }
}

struct Sample {
    Color radiance, albedo;
    Vec3 normal;
    float depth;
};

TEST(Film, MeansOfTheSamples) {
    struct Case {
        const char* name;
        std::vector<Sample> samples;
        Sample expected;
    };
    const Case cases[] = {
        {"no samples", {}, {Color(0), Color(0), Vec3(0), 0}},
        {"one sample",
         {{Color(1, 2, 3), Color(0.5f), Vec3(0, 1, 0), 4}},
         {Color(1, 2, 3), Color(0.5f), Vec3(0, 1, 0), 4}},
        {"mean of two",
         {{Color(1, 0, 0), Color(1), Vec3(0, 0, 1), 2}, {Color(3, 2, 0), Color(0), Vec3(1, 0, 0), 0}},
         {Color(2, 1, 0), Color(0.5f), Vec3(0.5f, 0, 0.5f), 1}},
        {"NaN radiance is a black sample",
         {{Color(kNaN, 1, 1), Color(1), Vec3(0, 1, 0), 2}, {Color(4, 4, 4), Color(1), Vec3(0, 1, 0), 2}},
         {Color(2), Color(1), Vec3(0, 1, 0), 2}},
        {"infinite radiance is a black sample",
         {{Color(kInf, 0, 0), Color(1), Vec3(0, 1, 0), 1}, {Color(2), Color(1), Vec3(0, 1, 0), 1}},
         {Color(1), Color(1), Vec3(0, 1, 0), 1}},
        {"each bad layer is zero on its own",
         {{Color(2), Color(kNaN), Vec3(kInf, 0, 0), kNaN}, {Color(2), Color(1), Vec3(0, 1, 0), 3}},
         {Color(2), Color(0.5f), Vec3(0, 0.5f, 0), 1.5f}},
    };
    // A film without layers keeps the same radiance and reads zero for the rest.
    for (const bool layers : {true, false})
        for (const Case& c : cases) {
            Film film(8, 8, {2, 3, 4, 2}, layers);
            for (const Sample& s : c.samples)
                film.add(3, 4, s.radiance, s.albedo, s.normal, s.depth);
            const Sample& e = c.expected;
            const std::string what = std::string(c.name) + (layers ? "" : ", without layers");
            const float kept = layers ? 1.0f : 0.0f;
            for (int i = 0; i < 3; ++i) {
                EXPECT_FLOAT_EQ(film.radiance(3, 4)[i], e.radiance[i]) << what << " radiance " << i;
                EXPECT_FLOAT_EQ(film.albedo(3, 4)[i], kept * e.albedo[i]) << what << " albedo " << i;
                EXPECT_FLOAT_EQ(film.normal(3, 4)[i], kept * e.normal[i]) << what << " normal " << i;
            }
            EXPECT_FLOAT_EQ(film.depth(3, 4), kept * e.depth) << what;
        }
}

TEST(Film, OnlyTheRegionHoldsPixels) {
    Film film(1000, 1000, {10, 20, 3, 2}, true);
    EXPECT_EQ(film.region().width * film.region().height, 6);
    // Every region pixel is its own; samples outside the region are dropped.
    for (int y = 0; y < 1000; y += 1)
        for (int x = 0; x < 1000; x += 1)
            film.add(x, y, Color(float(x), float(y), 1), Color(1), Vec3(0, 0, 1), 1);
    for (int y = 0; y < 1000; ++y)
        for (int x = 0; x < 1000; ++x) {
            bool inside = x >= 10 && x < 13 && y >= 20 && y < 22;
            Color c = film.radiance(x, y);
            if (inside) {
                EXPECT_EQ(c.x, float(x));
                EXPECT_EQ(c.y, float(y));
            } else {
                ASSERT_TRUE(isBlack(c)) << x << "," << y;
                ASSERT_EQ(film.depth(x, y), 0.0f);
            }
        }
}

} // namespace
} // namespace preview

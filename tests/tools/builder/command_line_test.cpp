// The command line of tavi-build: what each option sets, and lines that are refused.
#include "tools/builder/camera_lights.h"
#include "tools/builder/command_line.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(CommandLine, OptionsSetTheirValues) {
    builder::BuildOptions o;
    std::string error;
    ASSERT_EQ(builder::parseCommandLine({"--size", "320", "200", "--passes", "16", "--fps", "25", "--output-name",
                                         "shot", "--formats", "tif,exr", "--view", "1,2,3", "--sun",
                                         "--no-default-lights", "--max-part-triangles", "5000", "--documents",
                                         "docs", "--quiet", "in.glb", "out.tavi"},
                                        o, error),
              builder::CommandLine::Build)
        << error;
    EXPECT_EQ(o.width, 320);
    EXPECT_EQ(o.height, 200);
    EXPECT_EQ(o.passes, 16);
    EXPECT_EQ(o.framesPerSecond, 25);
    EXPECT_EQ(o.outputName, "shot");
    EXPECT_FALSE(o.saveJpeg);
    EXPECT_TRUE(o.saveTiff);
    EXPECT_TRUE(o.saveExr);
    EXPECT_EQ(o.view.value_or(""), "1,2,3");
    EXPECT_TRUE(o.sun);
    EXPECT_FALSE(o.sky);
    EXPECT_FALSE(o.defaultLights);
    EXPECT_EQ(o.maxPartTriangles, 5000u);
    EXPECT_EQ(o.documentsFolder, "docs");
    EXPECT_FALSE(o.progress);
    EXPECT_EQ(o.input, "in.glb");
    EXPECT_EQ(o.output, "out.tavi");
}

TEST(CommandLine, WrongLinesAreRefused) {
    const std::vector<std::vector<std::string>> lines = {
        {"in.obj"},
        {"in.obj", "out.tavi", "extra"},
        {"--size", "320", "in.obj", "out.tavi"},
        {"--size", "0", "200", "in.obj", "out.tavi"},
        {"--passes", "-3", "in.obj", "out.tavi"},
        {"--passes", "12x", "in.obj", "out.tavi"},
        {"--formats", "jpg,png", "in.obj", "out.tavi"},
        {"--view", "sideways", "in.obj", "out.tavi"},
        {"--view", "0,0,0", "in.obj", "out.tavi"},
        {"--bogus", "in.obj", "out.tavi"},
        {"in.obj", "out.tavi", "--documents"},
    };
    for (const auto& line : lines) {
        builder::BuildOptions o;
        std::string error;
        EXPECT_EQ(builder::parseCommandLine(line, o, error), builder::CommandLine::Wrong) << line[0];
        EXPECT_FALSE(error.empty());
    }
    builder::BuildOptions o;
    std::string error;
    EXPECT_EQ(builder::parseCommandLine({"in.obj", "--help"}, o, error), builder::CommandLine::Help);
}

// Every corner of the box must fall inside the frame from any side.
TEST(CommandLine, FramedViewsHoldTheWholeModel) {
    builder::Bounds bounds;
    const float corners[2][3] = {{-1, 0, -3}, {2, 0.5f, 1}};
    bounds.extend(corners[0]);
    bounds.extend(corners[1]);
    const float aspect = 16.0f / 9.0f;
    for (const char* side : {"front", "back", "left", "right", "top", "bottom", "iso", "-1,0.2,0.5"}) {
        SCOPED_TRACE(side);
        builder::Vec3 towardsEye;
        ASSERT_TRUE(builder::parseViewSide(side, towardsEye));
        const builder::CameraView view = builder::framedView(bounds, towardsEye, aspect);
        builder::Vec3 forward, right, up;
        for (int a = 0; a < 3; ++a) forward[a] = view.target[a] - view.eye[a];
        auto normalise = [](builder::Vec3& v) {
            const float l = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
            for (float& x : v) x /= l;
        };
        auto cross = [](const builder::Vec3& a, const builder::Vec3& b) {
            return builder::Vec3{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
        };
        normalise(forward);
        right = cross(forward, view.up);
        normalise(right);
        up = cross(right, forward);
        const float tanX = std::tan(0.5f * view.fovXDegrees * 3.14159265f / 180), tanY = tanX / aspect;
        for (int i = 0; i < 8; ++i) {
            const builder::Vec3 p{corners[i & 1][0], corners[(i >> 1) & 1][1], corners[(i >> 2) & 1][2]};
            builder::Vec3 d;
            for (int a = 0; a < 3; ++a) d[a] = p[a] - view.eye[a];
            const float z = d[0] * forward[0] + d[1] * forward[1] + d[2] * forward[2];
            ASSERT_GT(z, 0);
            EXPECT_LE(std::fabs(d[0] * right[0] + d[1] * right[1] + d[2] * right[2]) / z, tanX);
            EXPECT_LE(std::fabs(d[0] * up[0] + d[1] * up[1] + d[2] * up[2]) / z, tanY);
        }
    }
}

} // namespace

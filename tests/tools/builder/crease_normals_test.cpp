#include "tools/builder/crease_normals.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using builder::ModelGeometry;

// The unit normal of the triangle whose corners are `t`'s.
std::array<float, 3> faceOf(const ModelGeometry& model, size_t t) {
    const float* a = &model.positions[3 * model.indices[3 * t]];
    const float* b = &model.positions[3 * model.indices[3 * t + 1]];
    const float* c = &model.positions[3 * model.indices[3 * t + 2]];
    const float u[3] = {b[0] - a[0], b[1] - a[1], b[2] - a[2]}, v[3] = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
    std::array<float, 3> n = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
    const float length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
    for (float& x : n) x /= length;
    return n;
}

// A cube of eight shared corners, as PLY files hold one: every corner of every face must come
// out with the face's own normal, not the mean of three faces.
TEST(CreaseNormals, ABoxKeepsItsEdges) {
    ModelGeometry cube;
    cube.positions = {0, 0, 0, 0, 0, 1, 0, 1, 1, 0, 1, 0, 1, 0, 0, 1, 0, 1, 1, 1, 1, 1, 1, 0};
    cube.indices = {0, 1, 2, 0, 2, 3, 7, 6, 5, 7, 5, 4, 0, 4, 5, 0, 5, 1,
                    1, 5, 6, 1, 6, 2, 2, 6, 7, 2, 7, 3, 3, 7, 4, 3, 4, 0};
    cube.uvs.assign(16, 0.5f);
    builder::giveCreaseNormals(cube);
    ASSERT_EQ(cube.positions.size(), 36u * 3);
    ASSERT_EQ(cube.normals.size(), 36u * 3);
    EXPECT_EQ(cube.uvs.size(), 36u * 2);
    for (size_t t = 0; t < 12; ++t) {
        const std::array<float, 3> face = faceOf(cube, t);
        for (int k = 0; k < 3; ++k)
            for (int a = 0; a < 3; ++a)
                EXPECT_NEAR(cube.normals[3 * cube.indices[3 * t + k] + a], face[a], 1e-6) << "triangle " << t;
    }
}

// Two triangles folded by 20 degrees along a shared edge share one normal on that edge, halfway
// between their own; at 90 degrees each keeps its own.
TEST(CreaseNormals, GentleFoldsAreSmoothAndSharpOnesAreNot) {
    struct Case {
        float degrees;
        bool smooth;
    } cases[] = {{20, true}, {90, false}};
    for (const Case& c : cases) {
        const float r = c.degrees * 3.14159265f / 180;
        ModelGeometry fold;
        // Edge along x at the origin; one wing in the z = 0 plane, the other raised by the angle.
        fold.positions = {0, 0, 0, 1, 0, 0, 0.5f, -1, 0, 0.5f, std::cos(r), std::sin(r)};
        fold.indices = {0, 2, 1, 0, 1, 3};
        builder::giveCreaseNormals(fold);
        const std::array<float, 3> first = faceOf(fold, 0), second = faceOf(fold, 1);
        // Corner 0 of each triangle stands on the shared edge.
        const float* onFirst = &fold.normals[0];
        const float* onSecond = &fold.normals[9];
        for (int a = 0; a < 3; ++a) {
            if (c.smooth) {
                EXPECT_NEAR(onFirst[a], onSecond[a], 1e-6) << c.degrees;
            } else {
                EXPECT_NEAR(onFirst[a], first[a], 1e-6) << c.degrees;
                EXPECT_NEAR(onSecond[a], second[a], 1e-6) << c.degrees;
            }
        }
    }
}

} // namespace

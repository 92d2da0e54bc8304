// Meshes of the preview builders: the arrays of triangleMesh come back through the mesh reader
// as the README lays them out, and the shapes face outwards with normals and UVs that agree.
#include "tests/scene/geometry/geometry_test_support.h"
#include "tools/scene_writer/preview_builders.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <vector>

using namespace scene_writer;
using TRDF_Load::TriangleMesh;

namespace {

template <class T> std::vector<T> valuesOf(const Bytes& bytes) {
    std::vector<T> values(bytes.size() / sizeof(T));
    if (!values.empty()) std::memcpy(values.data(), bytes.data(), bytes.size());
    return values;
}

Vec3f at(const std::vector<float>& xyz, uint32_t index) {
    return {xyz[3 * index], xyz[3 * index + 1], xyz[3 * index + 2]};
}

Vec3f minus(const Vec3f& a, const Vec3f& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

float dot(const Vec3f& a, const Vec3f& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Vec3f cross(const Vec3f& a, const Vec3f& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

TEST(PreviewMeshes, TriangleMeshArraysComeBackThroughTheReader) {
    const std::vector<float> positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    const std::vector<uint32_t> indices = {0, 1, 2, 0, 2, 3};
    const std::vector<uint32_t> materials = {5, 9};
    const std::vector<float> normals = {0, 0, 1, 0, 0, 1, 0, 0.6f, 0.8f, 0, 0, 1};
    const std::vector<float> uvs = {0, 0, 1, 0, 1, 1, 0, 1};
    for (bool smooth : {true, false}) {
        SCOPED_TRACE(smooth);
        const MeshPlan plan =
            triangleMesh("tile", positions, indices, materials, smooth ? normals : std::vector<float>{}, uvs);
        GeometryScene scene(sceneOf({zstdChunk(kTriangleMesh, meshBody(plan))}));
        Chain<TriangleMesh> chain;
        uint64_t offset = 0;
        ASSERT_EQ(readTriangleMesh(scene.reader, chain.head, offset), SceneOk);
        const TRDF_Load::StaticSliceT* slice = chain.head->staticSlice;
        ASSERT_NE(slice, nullptr);
        EXPECT_EQ(slice->vertexCount, 4);
        EXPECT_EQ(slice->triangleCount, 2);
        EXPECT_EQ(slice->pairCount, 4);
        EXPECT_EQ(slice->vectorCount, smooth ? 4 : 0);
        EXPECT_EQ(std::memcmp(slice->triangleTriples, indices.data(), 6 * 4), 0);
        for (size_t t = 0; t < 2; ++t) {
            for (size_t corner = 0; corner < 3; ++corner)
                EXPECT_EQ(slice->triangleQuads[t].words[corner], smooth ? indices[3 * t + corner] : 0xFFFFFFFFu);
            EXPECT_EQ(slice->triangleQuads[t].materialId, materials[t]);
        }
        if (smooth) {
            ASSERT_NE(slice->vectorTable, nullptr);
            EXPECT_EQ(std::memcmp(slice->vectorTable, normals.data(), normals.size() * 4), 0);
        }
        ASSERT_NE(slice->pairTable, nullptr);
        EXPECT_EQ(std::memcmp(slice->pairTable, uvs.data(), uvs.size() * 4), 0);
        const TRDF_Load::TimeSliceT* time = chain.head->timeSlices;
        ASSERT_NE(time, nullptr);
        EXPECT_EQ(time->next, nullptr);
        EXPECT_EQ(time->sliceParamA, 0);
        for (uint32_t v = 0; v < 4; ++v) {
            for (uint32_t axis = 0; axis < 3; ++axis)
                EXPECT_EQ(time->positions[4 * v + axis], positions[3 * v + axis]) << v;
        }
        // The header's transform is the identity.
        EXPECT_EQ(chain.head->floats50[0], 1.0f);
        EXPECT_EQ(chain.head->floats50[3], 0.0f);
    }
}

TEST(PreviewMeshes, ArraysThatDisagreeAreRefused) {
    const std::vector<float> triangle = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    EXPECT_THROW(triangleMesh("m", {0, 0}, {0, 0, 0}, {0}), std::invalid_argument);
    EXPECT_THROW(triangleMesh("m", triangle, {0, 1}, {0}), std::invalid_argument);
    EXPECT_THROW(triangleMesh("m", triangle, {0, 1, 2}, {}), std::invalid_argument);
    EXPECT_THROW(triangleMesh("m", triangle, {0, 1, 2}, {0}, {0, 0, 1}), std::invalid_argument);
    EXPECT_THROW(triangleMesh("m", triangle, {0, 1, 2}, {0}, {}, {0, 0}), std::invalid_argument);
    EXPECT_THROW(sphereMesh("s", {0, 0, 0}, 1, 1, 8, 0), std::invalid_argument);
}

// Every triangle winds so that its face normal agrees with its shading normals, each normal is
// of unit length and points away from `inside`, and every UV lies in the unit square.
TEST(PreviewMeshes, ShapesFaceOutwards) {
    struct Case {
        const char* name;
        MeshPlan plan;
        Vec3f inside;
        size_t triangles;
    };
    const Case cases[] = {
        {"quad", quadMesh("q", {-1, 0, 1}, {2, 0, 0}, {0, 0, -2}, 3), {0, -1, 0}, 2},
        {"box", boxMesh("b", {-1, 0, -2}, {1, 1, 2}, 3), {0, 0.5f, 0}, 12},
        {"sphere", sphereMesh("s", {1, 2, 3}, 0.5f, 6, 8, 3), {1, 2, 3}, 2 * 8 * 6 - 2 * 8},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const auto positions = c.plan.timeSlices.at(0).positions;
        const auto normals = valuesOf<float>(c.plan.vectorTable);
        const auto uvs = valuesOf<float>(c.plan.pairTable);
        const auto indices = valuesOf<uint32_t>(c.plan.triangleTriples);
        const auto quads = valuesOf<uint32_t>(c.plan.triangleQuads);
        ASSERT_EQ(indices.size(), 3 * c.triangles);
        ASSERT_EQ(normals.size(), positions.size());
        ASSERT_EQ(uvs.size() / 2, positions.size() / 3);
        for (size_t t = 0; t < c.triangles; ++t) {
            const uint32_t* v = &indices[3 * t];
            const Vec3f face = cross(minus(at(positions, v[1]), at(positions, v[0])),
                                     minus(at(positions, v[2]), at(positions, v[0])));
            EXPECT_GT(std::sqrt(dot(face, face)), 1e-6f) << t;
            EXPECT_EQ(quads[4 * t + 3], 3u);
            for (size_t corner = 0; corner < 3; ++corner) {
                const Vec3f n = at(normals, quads[4 * t + corner]);
                EXPECT_NEAR(dot(n, n), 1.0f, 1e-5f);
                EXPECT_GT(dot(face, n), 0) << t;
                EXPECT_GT(dot(minus(at(positions, v[corner]), c.inside), n), 0) << t;
            }
        }
        for (float uv : uvs) {
            EXPECT_GE(uv, 0);
            EXPECT_LE(uv, 1);
        }
    }
}

TEST(PreviewMeshes, QuadUvsFollowItsEdges) {
    const Vec3f corner{-1, 0, 1}, edgeU{2, 0, 0}, edgeV{0, 0, -2};
    const MeshPlan plan = quadMesh("q", corner, edgeU, edgeV, 0);
    const auto positions = plan.timeSlices.at(0).positions;
    const auto uvs = valuesOf<float>(plan.pairTable);
    for (uint32_t v = 0; v < positions.size() / 3; ++v) {
        const Vec3f offset = minus(at(positions, v), corner);
        EXPECT_FLOAT_EQ(uvs[2 * v], dot(offset, edgeU) / dot(edgeU, edgeU)) << v;
        EXPECT_FLOAT_EQ(uvs[2 * v + 1], dot(offset, edgeV) / dot(edgeV, edgeV)) << v;
    }
}

TEST(PreviewMeshes, SphereVerticesLieOnTheSphere) {
    const Vec3f centre{1, 2, 3};
    const MeshPlan plan = sphereMesh("s", centre, 0.5f, 5, 7, 0);
    const auto positions = plan.timeSlices.at(0).positions;
    const auto uvs = valuesOf<float>(plan.pairTable);
    for (uint32_t v = 0; v < positions.size() / 3; ++v) {
        const Vec3f offset = minus(at(positions, v), centre);
        EXPECT_NEAR(std::sqrt(dot(offset, offset)), 0.5f, 1e-5f) << v;
        // v runs from the south pole (0) to the north (1).
        EXPECT_NEAR(offset[1], -0.5f * std::cos(3.14159265f * uvs[2 * v + 1]), 1e-5f) << v;
    }
}

} // namespace

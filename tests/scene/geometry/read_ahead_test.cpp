// Bodies of later parts are read and decoded on a second thread while a part is built. What a
// scan sees must not depend on it: the same models, the same statuses in the same order, and
// no memory left behind when a scan stops with a body still waiting.
#include "tests/scene/geometry/geometry_test_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace scene_writer;

namespace {

using Models = std::vector<std::vector<std::string>>;

MeshPlan grid(const std::string& name, bool more) {
    MeshPlan plan = gridMesh(name, 40, 30, 3);
    plan.morePartsFollow = more;
    return plan;
}

Bytes halves(const Bytes& body) {
    Bytes first(body.begin(), body.begin() + static_cast<ptrdiff_t>(body.size() / 2));
    Bytes second(body.begin() + static_cast<ptrdiff_t>(body.size() / 2), body.end());
    Bytes stored = zstdFrame(first);
    append(stored, zstdFrame(second));
    return stored;
}

struct Scan {
    Models models;
    SceneStatus end = SceneOk;
    uint64_t bodiesReadAhead = 0, decodeAttempts = 0;
};

// Reads models as the load driver does and checks each part's triangles and first position
// against the grid it was written from.
Scan scanMeshes(const Bytes& file) {
    Scan scan;
    GeometryScene scene(file);
    EXPECT_EQ(scene.openStatus, SceneOk);
    uint64_t offset = 0;
    for (int calls = 0; calls < 8; ++calls) {
        Chain<TRDF_Load::TriangleMesh> chain;
        scan.end = readTriangleMesh(scene.reader, chain.head, offset);
        if (scan.end != SceneOk) break;
        std::vector<std::string> names;
        for (const TRDF_Load::TriangleMesh* part = chain.head; part; part = part->next) {
            std::string name;
            for (char16_t c : wideText(part->name, kNameChars))
                name.push_back(static_cast<char>(c));
            MeshPlan plan = grid(name, false);
            EXPECT_EQ(part->staticSlice->triangleCount, plan.triangleCount) << name;
            const float* position = part->timeSlices->positions;
            EXPECT_EQ(std::vector<float>(position, position + 3),
                      std::vector<float>(plan.timeSlices[0].positions.begin(),
                                         plan.timeSlices[0].positions.begin() + 3))
                << name;
            names.push_back(name);
        }
        scan.models.push_back(names);
        if (offset == 0) break;
    }
    scan.bodiesReadAhead = scene.reader.bodiesReadAhead;
    scan.decodeAttempts = scene.reader.decodeAttempts;
    return scan;
}

TEST(ReadAhead, SecondPartStoredInManyWays) {
    struct Case {
        const char* what;
        Chunk second;
        SceneStatus end;
        Models models;
        uint64_t bodiesReadAhead;
    };
    const Bytes b = meshBody(grid("b", false));
    const Case cases[] = {
        {"as it is", storedChunk(kTriangleMesh, b), SceneOk, {{"a", "b"}, {"c"}}, 2},
        {"one frame", zstdChunk(kTriangleMesh, b), SceneOk, {{"a", "b"}, {"c"}}, 2},
        // The first frame declares only its half, so one attempt cannot decode the body.
        {"two frames", storedChunk(kTriangleMesh, halves(b), 100, 1), SceneOk, {{"a", "b"}, {"c"}}, 1},
        {"a corrupt frame", storedChunk(kTriangleMesh, corruptFrame(b), 100, 1), SceneOutOfMemory, {}, 0},
        {"a frame without its size", storedChunk(kTriangleMesh, zstdFrame(b, false), 100, 1), SceneInvalid, {}, 0},
    };
    for (const Case& c : cases) {
        LiveMemory before = liveMemory();
        Scan scan = scanMeshes(sceneOf({zstdChunk(kTriangleMesh, meshBody(grid("a", true))), c.second, otherChunk(),
                                        zstdChunk(kTriangleMesh, meshBody(grid("c", false)))}));
        EXPECT_EQ(scan.end, c.end) << c.what;
        EXPECT_EQ(scan.models, c.models) << c.what;
        EXPECT_EQ(scan.bodiesReadAhead, c.bodiesReadAhead) << c.what;
        EXPECT_TRUE(liveMemory() == before) << c.what << ": a scan left blocks behind";
    }
}

TEST(ReadAhead, DecodingAttemptsOfTakenBodiesCount) {
    Scan scan = scanMeshes(sceneOf({zstdChunk(kTriangleMesh, meshBody(grid("a", false))),
                                    zstdChunk(kTriangleMesh, meshBody(grid("b", false)))}));
    EXPECT_EQ(scan.models, (Models{{"a"}, {"b"}}));
    EXPECT_EQ(scan.bodiesReadAhead, 1u);
    EXPECT_EQ(scan.decodeAttempts, 2u);
}

// The first model's read starts on the second model's body; closing the reader must wait for
// it and free it.
TEST(ReadAhead, BodyNeverTakenIsFreedWithTheReader) {
    LiveMemory before = liveMemory();
    {
        GeometryScene scene(sceneOf({zstdChunk(kTriangleMesh, meshBody(grid("a", false))),
                                     zstdChunk(kTriangleMesh, meshBody(grid("b", false)))}));
        uint64_t offset = 0;
        Chain<TRDF_Load::TriangleMesh> chain;
        EXPECT_EQ(readTriangleMesh(scene.reader, chain.head, offset), SceneOk);
        chain.release();
        EXPECT_GT(liveMemory().poolBlocks, before.poolBlocks) << "the second body should be under way";
        scene.reader.close();
        EXPECT_TRUE(liveMemory() == before);
    }
    EXPECT_TRUE(liveMemory() == before);
}

} // namespace

// A scene of over a million triangles in zstd bodies, through the real client: every model
// must reach the engine whole, with its parts, their triangle counts and their names.
#include "tests/client/test_scene.h"
#include "tools/scene_writer/geometry_builders.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace {

// Every part is the first rows of one grid, so that the grid, the costly part of writing the
// scene, is made only once.
constexpr uint32_t kColumns = 512, kRows = 512, kMaterials = 4;

struct Part {
    std::string name;
    uint32_t rows;
    uint64_t triangles() const { return uint64_t(2) * kColumns * rows; }
};

struct Model {
    std::vector<Part> parts;
    std::string expectedMaterials; // distinct ids in the order the engine first meets them
};

// Materials change every 128 rows, so a part shows the material of its last rows only if the
// end of its triangle array came through.
const std::vector<Model> kModels = {
    {{{"terrain", 512}}, "0,1,2,3"},
    {{{"cliffs", 320}, {"cliffs ledge", 100}}, "0,1,2"},
    {{{"sea", 200}}, "0,1"},
};

// The grid cut down to its first `rows` rows of cells: the triangle arrays end there, and the
// vertices stay whole, those of the rows left out unused.
sw::MeshPlan firstRows(const sw::MeshPlan& grid, const Part& part) {
    sw::MeshPlan plan = grid;
    const size_t triangles = part.triangles();
    plan.name = part.name;
    plan.triangleCount = static_cast<int32_t>(triangles);
    plan.triangleTriples.resize(triangles * 12);
    plan.triangleQuads.resize(triangles * 16);
    plan.triangleWords.resize(triangles * 4);
    plan.triangleBits.resize(((triangles + 31) >> 5) * 4);
    plan.cornerBits.resize(((triangles * 3 + 31) >> 5) * 4);
    return plan;
}

std::vector<std::string> linesOf(const std::vector<std::string>& log, const std::string& operation) {
    std::vector<std::string> lines;
    for (const std::string& line : log)
        if (line.rfind(operation + " ", 0) == 0) lines.push_back(line);
    return lines;
}

std::string expectedLine(const Model& model) {
    std::string names, counts;
    for (const Part& part : model.parts) {
        names += (names.empty() ? "\"" : ",\"") + part.name + "\"";
        counts += (counts.empty() ? "" : ",") + std::to_string(part.triangles());
    }
    return "addTriangleMeshes parts=" + std::to_string(model.parts.size()) + " names=" + names +
           " triangles=" + counts + " materials=" + model.expectedMaterials + " firstPosition=0,0,0,1";
}

TEST(LargeScene, AMillionTrianglesInZstdBodiesReachTheEngineModelByModel) {
    ClientSandbox sandbox(recordingEnginePath());
    TestScene scene;
    for (int32_t id : {0, 1, 2, 3}) scene.add(sw::kMaterial, sw::materialBody(7, id, 0, "m" + std::to_string(id)));
    const sw::MeshPlan grid = sw::gridMesh("grid", kColumns, kRows, kMaterials);
    uint64_t triangles = 0, decodedBytes = 0;
    for (const Model& model : kModels) {
        for (size_t i = 0; i < model.parts.size(); ++i) {
            const Part& part = model.parts[i];
            sw::MeshPlan plan = firstRows(grid, part);
            plan.morePartsFollow = i + 1 < model.parts.size();
            sw::Bytes body = sw::meshBody(plan);
            decodedBytes += body.size();
            triangles += part.triangles();
            scene.file.add(sw::zstdChunk(sw::kTriangleMesh, body));
        }
    }
    ASSERT_GE(triangles, 1000000u);
    std::string path = scene.write(sandbox);
    // The bodies really are frames: the file is a fraction of what they decode to.
    ASSERT_LT(std::filesystem::file_size(path), decodedBytes / 2);

    ClientRun run = sandbox.run({"-scene", path});
    EXPECT_EQ(run.exitStatus, 0) << run.output;
    std::vector<std::string> log = sandbox.engineLog();
    EXPECT_EQ(operations(log),
              (std::vector<std::string>{"initialise", "beginScene", "endLights", "addMaterial", "addMaterial",
                                        "addMaterial", "addMaterial", "addTriangleMeshes", "addTriangleMeshes",
                                        "addTriangleMeshes", "endGeometry", "endScene", "render", "shutdown"}));
    std::vector<std::string> models = linesOf(log, "addTriangleMeshes");
    ASSERT_EQ(models.size(), kModels.size());
    for (size_t m = 0; m < kModels.size(); ++m) EXPECT_EQ(models[m], expectedLine(kModels[m])) << "model " << m;
}

} // namespace

// Geometry through the load: models named first, then handed over one by one, each pulling
// in the materials its elements use.
#include "tests/client/test_scene.h"
#include "tools/scene_writer/geometry_builders.h"

#include <gtest/gtest.h>

namespace {

sw::Bytes joined(sw::Bytes a, const sw::Bytes& b) {
    sw::append(a, b);
    return a;
}

sw::CloudSlicePlan sliceOf(sw::Bytes elements) {
    sw::CloudSlicePlan slice;
    slice.elements = std::move(elements);
    return slice;
}

std::vector<std::string> linesOf(const std::vector<std::string>& log, const std::string& operation) {
    std::vector<std::string> lines;
    for (const std::string& line : log)
        if (line.rfind(operation + " ", 0) == 0) lines.push_back(line);
    return lines;
}

// Sets the material id of each triangle of a grid mesh.
void setTriangleMaterials(sw::MeshPlan& mesh, const std::vector<uint32_t>& ids) {
    ASSERT_EQ(mesh.triangleQuads.size(), ids.size() * 16);
    for (size_t i = 0; i < ids.size(); ++i) sw::put32(mesh.triangleQuads, 16 * i + 12, ids[i]);
}

TEST(GeometryLoad, ModelsAreRunsOfPartsAndPullTheirMaterialsFirst) {
    ClientSandbox sandbox(recordingEnginePath());
    TestScene scene;
    for (int32_t id : {1, 2, 3, 4}) scene.add(sw::kMaterial, sw::materialBody(7, id, 0, "m" + std::to_string(id)));
    sw::MeshPlan first = sw::gridMesh("hull", 2, 1);
    setTriangleMaterials(first, {2, 2, 1, 1});
    first.morePartsFollow = true;
    sw::MeshPlan second = sw::gridMesh("hull part", 1, 1);
    setTriangleMaterials(second, {1, 1});
    sw::MeshPlan third = sw::gridMesh("mast", 1, 1);
    setTriangleMaterials(third, {3, 2});
    scene.add(sw::kTriangleMesh, sw::meshBody(first));
    scene.add(sw::kTriangleMesh, sw::meshBody(second));
    scene.add(sw::kTriangleMesh, sw::meshBody(third));
    ClientRun run = sandbox.run({"-scene", scene.write(sandbox)});
    EXPECT_EQ(run.exitStatus, 0) << run.output;
    std::vector<std::string> log = sandbox.engineLog();
    EXPECT_EQ(operations(log),
              (std::vector<std::string>{"initialise", "beginScene", "endLights", "addMaterial", "addMaterial",
                                        "addTriangleMeshes", "addMaterial", "addTriangleMeshes", "endGeometry",
                                        "endScene", "render", "shutdown"}));
    std::vector<std::string> materials = linesOf(log, "addMaterial");
    ASSERT_EQ(materials.size(), 3u);
    EXPECT_EQ(field(log, "addMaterial", "id"), "2");
    EXPECT_TRUE(contains(materials[1], " id=1 "));
    EXPECT_TRUE(contains(materials[2], " id=3 "));
    std::vector<std::string> models = linesOf(log, "addTriangleMeshes");
    ASSERT_EQ(models.size(), 2u);
    EXPECT_EQ(models[0], "addTriangleMeshes parts=2 names=\"hull\",\"hull part\" triangles=4,2 materials=2,1 "
                         "firstPosition=0,0,0,1");
    EXPECT_EQ(models[1], "addTriangleMeshes parts=1 names=\"mast\" triangles=2 materials=3,2 firstPosition=0,0,0,1");
}

TEST(GeometryLoad, FurAsksForTheLowBitsAndSpritesForTheWholeWord) {
    ClientSandbox sandbox(recordingEnginePath());
    TestScene scene;
    for (int32_t id : {5, 6, 7}) scene.add(sw::kMaterial, sw::materialBody(7, id, 0, "m" + std::to_string(id)));
    sw::CloudPlan fur;
    fur.name = "grass";
    fur.elementCount = 2;
    // Each slice starts afresh: the second slice asks for 5 again only because it changed from -1.
    fur.timeSlices.push_back(sliceOf(joined(sw::furElement(1, 0xAB000005u), sw::furElement(2, 0x00000005u))));
    fur.timeSlices.push_back(sliceOf(joined(sw::furElement(3, 0x01000006u), sw::furElement(4, 0x7F000005u))));
    scene.add(sw::kFur, sw::furBody(fur));
    sw::CloudPlan sprites;
    sprites.name = "sparks";
    sprites.elementCount = 2;
    sprites.timeSlices.push_back(sliceOf(joined(sw::spriteElement(1, 7), sw::spriteElement(2, 7))));
    scene.add(sw::kSprites, sw::spriteBody(sprites));
    ClientRun run = sandbox.run({"-scene", scene.write(sandbox)});
    EXPECT_EQ(run.exitStatus, 0) << run.output;
    std::vector<std::string> log = sandbox.engineLog();
    std::vector<std::string> materials = linesOf(log, "addMaterial");
    ASSERT_EQ(materials.size(), 3u);
    EXPECT_TRUE(contains(materials[0], " id=5 "));
    EXPECT_TRUE(contains(materials[1], " id=6 "));
    EXPECT_TRUE(contains(materials[2], " id=7 "));
    EXPECT_EQ(linesOf(log, "addFur"),
              std::vector<std::string>{"addFur parts=1 names=\"grass\" elements=2 materials=2868903941,5,16777222,"
                                       "2130706437"});
    EXPECT_EQ(linesOf(log, "addSprites"),
              std::vector<std::string>{"addSprites parts=1 names=\"sparks\" elements=2 materials=7"});
}

TEST(GeometryLoad, AVolumeMaterialCarriesItsCacheToTheEngine) {
    ClientSandbox sandbox(recordingEnginePath());
    TestScene scene;
    sw::Bytes volume = sw::materialBody(25, 9, 0, "smoke");
    volume[sw::kVolumeFlag] = 1;
    scene.add(sw::kMaterial, volume);
    sw::PhxDataPlan cache;
    cache.gridX = 8;
    cache.gridY = 4;
    cache.gridZ = 2;
    cache.channelOffsets[0] = 0;
    cache.channelOffsets[3] = 64;
    cache.channelData = sw::Bytes(128, 0);
    scene.add(sw::kPhxData, sw::phxDataBody(cache));
    sw::MeshPlan box = sw::gridMesh("box", 1, 1);
    setTriangleMaterials(box, {9, 9});
    scene.add(sw::kTriangleMesh, sw::meshBody(box));
    ClientRun run = sandbox.run({"-scene", scene.write(sandbox)});
    EXPECT_EQ(run.exitStatus, 0) << run.output;
    EXPECT_EQ(linesOf(sandbox.engineLog(), "addMaterial"),
              std::vector<std::string>{"addMaterial type=25 id=9 name=\"smoke\" cache=8x4x2 channels=0,3"});
}

} // namespace

// Items reach the engine when something asks for their name: dependents first, each once,
// with documents from the folders replacing what the scene says.
#include "tests/client/test_scene.h"
#include "tools/scene_writer/geometry_builders.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

constexpr size_t kFirstField = 268; // where a material type's own fields begin

std::vector<std::string> assetCalls(const std::vector<std::string>& log) {
    std::vector<std::string> calls;
    for (const std::string& line : log)
        if (line.rfind("addMaterial ", 0) == 0 || line.rfind("addTexMap ", 0) == 0) calls.push_back(line);
    return calls;
}

sw::Bytes twoSided(int32_t id, const std::string& name, int32_t front, int32_t back) {
    sw::Bytes body = sw::materialBody(16, id, 0, name);
    sw::put32(body, kFirstField, static_cast<uint32_t>(front));
    sw::put32(body, kFirstField + 4, static_cast<uint32_t>(back));
    return body;
}

// A mesh of two triangles, the first using `material`, the second `second`.
void addMesh(TestScene& scene, uint32_t material, uint32_t second) {
    sw::MeshPlan mesh = sw::gridMesh("mesh", 1, 1);
    sw::put32(mesh.triangleQuads, 12, material);
    sw::put32(mesh.triangleQuads, 16 + 12, second);
    scene.add(sw::kTriangleMesh, sw::meshBody(mesh));
}

void addMesh(TestScene& scene, uint32_t material) {
    addMesh(scene, material, material);
}

TEST(RegistryLoad, MaterialsNamingEachOtherAreReportedAndStillAdded) {
    ClientSandbox sandbox(recordingEnginePath());
    TestScene scene;
    scene.add(sw::kMaterial, twoSided(1, "outer", 2, -1));
    scene.add(sw::kMaterial, twoSided(2, "inner", 1, -1));
    addMesh(scene, 1);
    ClientRun run = sandbox.run({"-scene", scene.write(sandbox)});
    EXPECT_EQ(run.exitStatus, 255);
    EXPECT_TRUE(contains(run.output, "Error: material outer recurrently referenced by itself.\n"
                                     "Rendering not started because of errors or warnings.\n"))
        << run.output;
    EXPECT_TRUE(contains(run.output, "The errors and problems:\n\nError: material outer recurrently referenced by "
                                     "itself.\n"));
    EXPECT_EQ(assetCalls(sandbox.engineLog()),
              (std::vector<std::string>{"addMaterial type=16 id=2 name=\"inner\"",
                                        "addMaterial type=16 id=1 name=\"outer\""}));
}

TEST(RegistryLoad, AFolderDocumentReplacesTheSceneMaterialButKeepsItsId) {
    ClientSandbox sandbox(recordingEnginePath());
    std::filesystem::create_directories(sandbox.path("materials"));
    sandbox.writeFile("materials/steel.xml",
                      "<TaviMaterial type=\"DIFFUSE\"><Common><Name value=\"steel\"/><AovID value=\"3\"/></Common>"
                      "<SpecificParameters><FrontMap name=\"rust\"/></SpecificParameters></TaviMaterial>");
    TestScene scene;
    scene.add(sw::kMaterial, twoSided(4, "steel", -1, -1));
    scene.add(sw::kMaterial, twoSided(5, "unused", -1, -1));
    addMesh(scene, 4);
    ClientRun run = sandbox.run({"-scene", scene.write(sandbox), "-materials", sandbox.path("materials")});
    EXPECT_EQ(run.exitStatus, 0) << run.output;
    // The texture map named by the document did not exist: it was made with the next free id,
    // as a record without a type, and goes to the engine before the material.
    EXPECT_EQ(assetCalls(sandbox.engineLog()),
              (std::vector<std::string>{"addTexMap type=0 id=0 name=\"rust\"",
                                        "addMaterial type=7 id=4 name=\"steel\""}));
}

TEST(RegistryLoad, AMadeItemOnceHandedOverIsFoundAgainByItsName) {
    // The texture map that the first material's document makes has reached the engine by the
    // time the second document names it: it is found under its id, not made again.
    ClientSandbox sandbox(recordingEnginePath());
    std::filesystem::create_directories(sandbox.path("materials"));
    std::filesystem::create_directories(sandbox.path("texmaps"));
    for (const std::string material : {"steel", "iron"}) {
        sandbox.writeFile("materials/" + material + ".xml",
                          "<TaviMaterial type=\"DIFFUSE\"><Common><Name value=\"" + material +
                              "\"/></Common><SpecificParameters><FrontMap name=\"rust\"/>"
                              "</SpecificParameters></TaviMaterial>");
    }
    sandbox.writeFile("texmaps/rust.xml",
                      "<TaviTexMap type=\"COLOR\"><Common><Name value=\"rust\"/></Common></TaviTexMap>");
    TestScene scene;
    scene.add(sw::kMaterial, twoSided(4, "steel", -1, -1));
    scene.add(sw::kMaterial, twoSided(5, "iron", -1, -1));
    addMesh(scene, 4, 5);
    ClientRun run = sandbox.run({"-scene", scene.write(sandbox), "-materials", sandbox.path("materials"),
                                 "-texmaps", sandbox.path("texmaps")});
    EXPECT_EQ(run.exitStatus, 0) << run.output;
    EXPECT_EQ(assetCalls(sandbox.engineLog()),
              (std::vector<std::string>{"addTexMap type=13 id=0 name=\"rust\"",
                                        "addMaterial type=7 id=4 name=\"steel\"",
                                        "addMaterial type=7 id=5 name=\"iron\""}));
}

TEST(RegistryLoad, MadeItemsTakeTheIdAfterTheHighestInTheScene) {
    // Ids are 32-bit and wrap past the largest, as the counter of a two's-complement machine does.
    const struct Case {
        int32_t sceneId;
        std::string madeId;
    } cases[] = {{41, "42"}, {-5, "0"}, {2147483646, "2147483647"}, {2147483647, "-2147483648"}};
    for (const Case& c : cases) {
        ClientSandbox sandbox(recordingEnginePath());
        std::filesystem::create_directories(sandbox.path("materials"));
        sandbox.writeFile("materials/steel.xml",
                          "<TaviMaterial type=\"DIFFUSE\"><Common><Name value=\"steel\"/>"
                          "</Common><SpecificParameters><FrontMap name=\"rust\"/>"
                          "<BackMap name=\"top\"/></SpecificParameters></TaviMaterial>");
        TestScene scene;
        scene.add(sw::kTexMap, sw::texMapBody(5, c.sceneId, "top"));
        scene.add(sw::kMaterial, twoSided(4, "steel", -1, -1));
        addMesh(scene, 4);
        ClientRun run =
            sandbox.run({"-scene", scene.write(sandbox), "-materials", sandbox.path("materials")});
        EXPECT_EQ(run.exitStatus, 0) << run.output;
        EXPECT_EQ(
            assetCalls(sandbox.engineLog()),
            (std::vector<std::string>{"addTexMap type=0 id=" + c.madeId + " name=\"rust\"",
                                      "addTexMap type=5 id=" + std::to_string(c.sceneId) + " name=\"top\"",
                                      "addMaterial type=7 id=4 name=\"steel\""}))
            << c.sceneId;
    }
}

TEST(RegistryLoad, DocumentsThatNameThemselvesAreReportedNotReadWithoutEnd) {
    const struct Case {
        const char* what;
        std::vector<std::pair<std::string, std::string>> texmaps; // name, the map it names
        std::string message;
    } cases[] = {
        {"a document naming itself",
         {{"rust", "rust"}},
         "Error: texmap rust recurrently referenced by itself.\n"},
        {"a ring of three",
         {{"rust", "a"}, {"a", "b"}, {"b", "rust"}},
         "Error: texmap rust recurrently referenced by itself.\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ClientSandbox sandbox(recordingEnginePath());
        std::filesystem::create_directories(sandbox.path("materials"));
        std::filesystem::create_directories(sandbox.path("texmaps"));
        sandbox.writeFile("materials/steel.xml",
                          "<TaviMaterial type=\"DIFFUSE\"><Common><Name value=\"steel\"/>"
                          "</Common><SpecificParameters><FrontMap name=\"rust\"/>"
                          "</SpecificParameters></TaviMaterial>");
        for (const auto& [name, named] : c.texmaps) {
            sandbox.writeFile("texmaps/" + name + ".xml",
                              "<TaviTexMap type=\"BLEND\"><SpecificParameters><Map1 name=\"" + named +
                                  "\"/></SpecificParameters></TaviTexMap>");
        }
        TestScene scene;
        scene.add(sw::kMaterial, twoSided(4, "steel", -1, -1));
        addMesh(scene, 4);
        ClientRun run = sandbox.run({"-scene", scene.write(sandbox), "-materials", sandbox.path("materials"),
                                     "-texmaps", sandbox.path("texmaps")});
        EXPECT_EQ(run.exitStatus, 255) << run.output;
        EXPECT_TRUE(
            contains(run.output, c.message + "Rendering not started because of errors or warnings.\n"))
            << run.output;
    }
}

TEST(RegistryLoad, ALongNameIsStoredCutAndMakesARecordPerLookUp) {
    ClientSandbox sandbox(recordingEnginePath());
    const std::string longName(70, 'x');
    std::filesystem::create_directories(sandbox.path("materials"));
    sandbox.writeFile("materials/paint.xml", "<TaviMaterial type=\"DIFFUSE\"><Common><Name value=\"paint\"/></Common>"
                                             "<SpecificParameters><FrontMap name=\"" + longName +
                                                 "\"/><BackMap name=\"" + longName +
                                                 "\"/></SpecificParameters></TaviMaterial>");
    TestScene scene;
    scene.add(sw::kMaterial, twoSided(1, "paint", -1, -1));
    addMesh(scene, 1);
    ClientRun run = sandbox.run({"-scene", scene.write(sandbox), "-materials", sandbox.path("materials")});
    EXPECT_EQ(run.exitStatus, 0) << run.output;
    const std::string cut = "\"" + std::string(63, 'x') + "\"";
    EXPECT_EQ(assetCalls(sandbox.engineLog()),
              (std::vector<std::string>{"addTexMap type=0 id=0 name=" + cut, "addTexMap type=0 id=1 name=" + cut,
                                        "addMaterial type=7 id=1 name=\"paint\""}));
}

} // namespace

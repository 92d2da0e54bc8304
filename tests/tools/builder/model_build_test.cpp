// Real models of the assimp test set built into scenes: what the scene holds agrees with the
// source, the client loads it, the output is the same for the same input, and failures write
// nothing.
#include "tests/tools/builder/builder_test_support.h"

#include "bridge/name_interface.h"
#include "documents/field_table.h"
#include "documents/material_document.h"
#include "documents/materials/material_types.h"
#include "scene/scene_readers.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <map>

namespace {

// Counts from the files themselves: the OBJ spider has 1368 "f" lines of three corners in 19
// groups, the boxes six quads.
struct ModelCase {
    const char* file;
    size_t models, triangles, materials, textures;
};

const ModelCase kModels[] = {
    {"glTF2/BoxTextured-glTF/BoxTextured.gltf", 1, 12, 2, 1},
    {"glTF2/BoxTextured-glTF-Binary/BoxTextured.glb", 1, 12, 2, 1},
    {"OBJ/spider.obj", 19, 1368, 6, 5},
    {"OBJ/box.obj", 1, 12, 2, 0},
    {"PLY/cube.ply", 1, 12, 1, 0},
    {"Collada/duck.dae", 1, 4212, 1, 1},
    {"FBX/spider.fbx", 19, 1368, 4, 4},
};

int runTool(const std::string& arguments) {
    const int status = std::system((std::string(TAVI_BUILD_EXECUTABLE) + " " + arguments + " 2>/dev/null").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(ModelBuild, RecordsAndModelsMatchTheSourceAndLoadThroughTheClient) {
    for (const ModelCase& c : kModels) {
        SCOPED_TRACE(c.file);
        const std::string input = testModel(c.file);
        if (input.empty()) GTEST_SKIP() << "assimp-testmodels not installed";
        TempFolder folder;
        builder::BuildReport report;
        std::string error;
        ASSERT_TRUE(builder::buildScene(quietOptions(input, folder.file("scene.tavi")), report, error)) << error;

        const SceneRecords records = readRecords(folder.file("scene.tavi"));
        ASSERT_TRUE(records.readable);
        EXPECT_EQ(records.materialTypes.size(), c.materials);
        EXPECT_EQ(records.texMaps, c.textures);
        EXPECT_EQ(records.textureFiles, c.textures);

        const ClientLoad load = loadThroughClient(folder.file("scene.tavi"));
        EXPECT_EQ(load.exitStatus, 0) << load.output;
        EXPECT_EQ(load.models, c.models);
        EXPECT_EQ(load.parts, c.models);
        EXPECT_EQ(load.triangles, c.triangles);
        EXPECT_EQ(load.cameras, 1u);
    }
}

TEST(ModelBuild, BigMeshesAreSplitIntoChainedParts) {
    const std::string input = testModel("Collada/duck.dae");
    if (input.empty()) GTEST_SKIP() << "assimp-testmodels not installed";
    struct Case {
        uint32_t maxPart;
        size_t parts;
    };
    // 4212 triangles: 1000 a part gives four full parts and one of 212.
    for (const Case& c : {Case{1000, 5}, Case{4212, 1}, Case{4211, 2}, Case{1, 4212}}) {
        SCOPED_TRACE(c.maxPart);
        TempFolder folder;
        builder::BuildOptions options = quietOptions(input, folder.file("duck.tavi"));
        options.maxPartTriangles = c.maxPart;
        builder::BuildReport report;
        std::string error;
        ASSERT_TRUE(builder::buildScene(options, report, error)) << error;
        const ClientLoad load = loadThroughClient(folder.file("duck.tavi"));
        EXPECT_EQ(load.exitStatus, 0) << load.output;
        EXPECT_EQ(load.models, 1u); // one run of parts, not several models
        EXPECT_EQ(load.parts, c.parts);
        EXPECT_EQ(load.triangles, 4212u);
    }
}

TEST(ModelBuild, SameInputGivesTheSameBytes) {
    for (const char* file : {"glTF2/BoxTextured-glTF-Binary/BoxTextured.glb", "OBJ/spider.obj", "FBX/spider.fbx"}) {
        SCOPED_TRACE(file);
        const std::string input = testModel(file);
        if (input.empty()) GTEST_SKIP() << "assimp-testmodels not installed";
        TempFolder first, second;
        ASSERT_EQ(runTool("--quiet " + input + " " + first.file("a.tavi")), 0);
        ASSERT_EQ(runTool("--quiet " + input + " " + second.file("a.tavi")), 0);
        const std::vector<uint8_t> bytes = readBytes(first.file("a.tavi"));
        EXPECT_GT(bytes.size(), 1000u);
        EXPECT_EQ(bytes, readBytes(second.file("a.tavi")));
        EXPECT_EQ(first.entries(), second.entries());
    }
}

TEST(ModelBuild, UnreadableInputFailsAndWritesNothing) {
    TempFolder folder;
    writeText(folder.file("broken.obj"), "v 0 0 0\nf 1 2 3\nthis is not a model\x01\x02\n");
    writeText(folder.file("empty.gltf"), "{ \"asset\": { \"version\": \"2.0\" }");
    writeText(folder.file("plain.txt"), "no model in here\n");
    struct Case {
        std::string input;
    };
    for (const Case& c : {Case{folder.file("missing.obj")}, Case{folder.file("broken.obj")},
                          Case{folder.file("empty.gltf")}, Case{folder.file("plain.txt")}}) {
        SCOPED_TRACE(c.input);
        const std::vector<std::string> before = folder.entries();
        EXPECT_EQ(runTool(c.input + " " + folder.file("out.tavi") + " --documents " + folder.file("docs")), 1);
        EXPECT_EQ(folder.entries(), before);
        builder::BuildReport report;
        std::string error;
        EXPECT_FALSE(builder::buildScene(quietOptions(c.input, folder.file("out.tavi")), report, error));
        EXPECT_NE(error.find(c.input), std::string::npos) << error;
    }
}

// Reads references by the names the build gave; texmap i is named after texture i.
class NamesOfScene final : public ITaviNameInterface {
  public:
    explicit NamesOfScene(std::map<std::u16string, int32_t> texMaps) : texMaps_(std::move(texMaps)) {}
    int32_t* GetTextureId(int32_t* result, const char16_t* name) override { return find(result, name); }
    const char16_t* GetTextureName(int32_t) override { return u""; }
    int32_t* GetTexMapId(int32_t* result, const char16_t* name) override { return find(result, name); }
    const char16_t* GetTexMapName(int32_t) override { return u""; }
    int32_t* GetMaterialId(int32_t* result, const char16_t*) override { return &(*result = -1); }
    const char16_t* GetMaterialName(int32_t) override { return u""; }
    uint64_t GetModelId(const char16_t*) override { return 0; }
    const char16_t* GetModelName() override { return u""; }
    void* destroy(uint32_t) override { return nullptr; }

  private:
    int32_t* find(int32_t* result, const char16_t* name) {
        auto found = texMaps_.find(name);
        *result = found == texMaps_.end() ? -1 : found->second;
        return result;
    }
    std::map<std::u16string, int32_t> texMaps_;
};

TEST(ModelBuild, DocumentsReadBackAsTheRecordsOfTheScene) {
    for (const char* file : {"glTF2/BoxTextured-glTF/BoxTextured.gltf", "OBJ/spider.obj"}) {
        SCOPED_TRACE(file);
        const std::string input = testModel(file);
        if (input.empty()) GTEST_SKIP() << "assimp-testmodels not installed";
        TempFolder folder;
        builder::BuildOptions options = quietOptions(input, folder.file("scene.tavi"));
        options.documentsFolder = folder.file("docs");
        builder::BuildReport report;
        std::string error;
        ASSERT_TRUE(builder::buildScene(options, report, error)) << error;

        SceneFileReader reader;
        const std::string scenePath = folder.file("scene.tavi");
        ASSERT_EQ(reader.open(std::u16string(scenePath.begin(), scenePath.end()).c_str()), SceneOk);
        std::map<std::u16string, int32_t> texMapIds;
        uint64_t offset = 0;
        for (TexMapRecord texMap{}; readTexMap(reader, texMap, offset) == SceneOk;) {
            texMapIds[texMap.Name] = texMap.id;
            if (offset == 0) break;
        }
        NamesOfScene names(texMapIds);

        offset = 0;
        size_t documents = 0;
        for (MaterialRecord scene{}; readMaterial(reader, scene, offset) == SceneOk; scene = {}) {
            const std::u16string name = scene.Name;
            const std::string path = folder.file("docs/materials/") + std::string(name.begin(), name.end()) + ".xml";
            MaterialRecord read{};
            read.type = scene.type;
            ASSERT_TRUE(ReadMaterialDocument(&read, std::u16string(path.begin(), path.end()).c_str(), &names)) << path;
            ++documents;
            const TypeDescriptor& table = *findMaterialType(scene.type);
            for (size_t f = 0; f < table.fieldCount; ++f) {
                const FieldDescriptor& field = table.fields[f];
                const auto* a = reinterpret_cast<const uint8_t*>(&scene) + field.offset;
                const auto* b = reinterpret_cast<const uint8_t*>(&read) + field.offset;
                EXPECT_EQ(std::memcmp(a, b, field.width), 0) << path << " key " << field.key;
            }
            releaseMaterial(scene);
            if (offset == 0) break;
        }
        EXPECT_EQ(documents, report.materials);
        EXPECT_EQ(folder.entries("docs/materials").size(), report.materials);
        EXPECT_EQ(folder.entries("docs/texmaps").size(), report.textures);
    }
}

} // namespace

// Materials of OBJ/MTL and glTF files mapped to the types the preview engine renders, and the
// images they use turned into texture records the scene can find.
#include "tests/tools/builder/builder_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace {

enum MaterialType : int32_t { kPhysical = 1, kEmission = 5, kDiffuse = 7, kRoughDielectric = 19, kRoughConductor = 20 };

// A quad using material "m", described by `mtl`.
void writeQuadWithMaterial(const TempFolder& folder, const std::string& mtl) {
    writeText(folder.file("quad.mtl"), "newmtl m\n" + mtl);
    writeText(folder.file("quad.obj"), "mtllib quad.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                                       "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nusemtl m\nf 1/1 2/2 3/3 4/4\n");
}

TEST(MaterialMapping, MtlParametersChooseTheType) {
    struct Case {
        const char* mtl;
        int32_t type;
    };
    const Case cases[] = {
        {"Kd 0.7 0.2 0.1\n", kDiffuse},
        {"Kd 0.7 0.2 0.1\nKs 0.1 0.1 0.1\nNs 50\n", kDiffuse},
        {"Kd 0.05 0.05 0.05\nKs 0.9 0.8 0.5\nNs 200\n", kRoughConductor},
        {"Kd 0.8 0.8 0.8\nd 0.3\nNi 1.45\n", kRoughDielectric},
        {"Kd 0.8 0.8 0.8\nTr 0.6\n", kRoughDielectric},
        {"Kd 0 0 0\nKe 4 4 3\n", kEmission},
        {"Kd 0.2 0.2 0.2\nKe 0.001 0 0\n", kDiffuse},
        {"Kd 0.5 0.5 0.5\nPm 1\nPr 0.3\n", kPhysical},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.mtl);
        TempFolder folder;
        writeQuadWithMaterial(folder, c.mtl);
        builder::BuildReport report;
        std::string error;
        ASSERT_TRUE(builder::buildScene(quietOptions(folder.file("quad.obj"), folder.file("quad.tavi")), report, error))
            << error;
        const SceneRecords records = readRecords(folder.file("quad.tavi"));
        bool found = false;
        for (size_t m = 0; m < records.materialNames.size(); ++m) {
            if (records.materialNames[m] != "m") continue;
            found = true;
            EXPECT_EQ(records.materialTypes[m], c.type);
        }
        EXPECT_TRUE(found);
        const ClientLoad load = loadThroughClient(folder.file("quad.tavi"));
        EXPECT_EQ(load.exitStatus, 0) << load.output;
        EXPECT_EQ(load.triangles, 2u);
    }
}

TEST(MaterialMapping, TexturesArePathsTheSceneFolderResolves) {
    struct Case {
        const char* file;
        int32_t type;       // of the textured material
        bool embedded;      // written out beside the scene
    };
    const Case cases[] = {
        {"glTF2/BoxTextured-glTF/BoxTextured.gltf", kPhysical, false},
        {"glTF2/BoxTextured-glTF-Binary/BoxTextured.glb", kPhysical, true},
        {"OBJ/spider.obj", kDiffuse, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string input = testModel(c.file);
        if (input.empty()) GTEST_SKIP() << "assimp-testmodels not installed";
        TempFolder folder;
        builder::BuildReport report;
        std::string error;
        ASSERT_TRUE(builder::buildScene(quietOptions(input, folder.file("model.tavi")), report, error)) << error;
        const SceneRecords records = readRecords(folder.file("model.tavi"));
        ASSERT_FALSE(records.texturePaths.empty());
        for (const std::string& path : records.texturePaths) {
            SCOPED_TRACE(path);
            EXPECT_TRUE(std::filesystem::path(path).is_relative());
            EXPECT_TRUE(std::filesystem::exists(folder.file(path)));
            EXPECT_EQ(path.rfind("model_texture", 0) == 0, c.embedded);
        }
        EXPECT_NE(std::find(records.materialTypes.begin(), records.materialTypes.end(), c.type),
                  records.materialTypes.end());
    }
}

} // namespace

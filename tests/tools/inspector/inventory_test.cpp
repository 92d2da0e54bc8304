// A scene with one of everything, written by the scene writer, and what the inspector finds
// in it: counts, names, references by name, settings, placement and geometry.
#include "tests/tools/inspector/scene_files.h"
#include "tools/scene_writer/preview_builders.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace inspector;

enum : int32_t { kWood = 5, kNoise = 6 };                      // textures
enum : int32_t { kWoodMap = 1, kBlendMap = 2, kNoMap = 9 };     // texmaps
enum : int32_t { kTable = 10, kMixed = 11, kBumped = 12, kNoMaterial = 99 };

sw::Bytes mixOf(int32_t first, int32_t second) {
    sw::MaterialBuilder mix("MIX", kMixed, "mixed");
    mix.integer("NumChildren", 2);
    sw::Bytes body = mix.body();
    // The children are a list of their own: material, weight, weight map, map mix.
    const size_t list = sw::findRow(mix.type(), "Child")->offset;
    for (int32_t child : {0, 1}) {
        sw::put32(body, list + 16 * child, uint32_t(child == 0 ? first : second));
        sw::put32(body, list + 16 * child + 8, uint32_t(-1));
    }
    return body;
}

sw::Bytes richScene() {
    sw::SceneFile file;
    sw::SettingsPlan settings;
    settings.imageSizeX = 320;
    settings.imageSizeY = 200;
    settings.maxIterations = 16;
    settings.regionX = 10, settings.regionY = 20, settings.regionSizeX = 100, settings.regionSizeY = 50;
    settings.maxThreads = 3;
    settings.saveJpeg = false, settings.saveTiff = true, settings.saveExr = true;
    settings.outputPath = "renders";
    settings.outputName = "shot";
    settings.toneOperator = 3;
    settings.startingVolumetricMaterial = kNoMaterial;
    file.add(sw::zstdChunk(sw::kSettings, sw::settingsBody(settings)));

    file.add(sw::storedChunk(sw::kTextureFile, sw::textureFileBody({0, 0, kWood, "wood", "tex/wood.png"})));
    sw::TextureDataPlan noise;
    noise.id = kNoise, noise.name = "noise", noise.width = 4, noise.height = 2, noise.pixelType = 4;
    noise.pixels.assign(8, 128);
    file.add(sw::zstdChunk(sw::kTextureData, sw::textureDataBody(noise)));

    file.add(sw::zstdChunk(sw::kTexMap, sw::TexMapBuilder("IMAGE", kWoodMap, "wood map").texture("Texture", kWood).body()));
    file.add(sw::zstdChunk(
        sw::kTexMap,
        sw::TexMapBuilder("BLEND", kBlendMap, "blend map").texMap("Map1", kWoodMap).texMap("Map2", kNoMap).body()));

    file.add(sw::zstdChunk(sw::kMaterial,
                           sw::MaterialBuilder("DIFFUSE", kTable, "table").texMap("FrontMap", kBlendMap).body()));
    file.add(sw::zstdChunk(sw::kMaterial, mixOf(kTable, kNoMaterial)));
    file.add(sw::zstdChunk(sw::kMaterial, sw::MaterialBuilder("BUMP", kBumped, "bumped")
                                              .texMap("BumpMap", kWoodMap)
                                              .material("Material", kTable)
                                              .body()));

    file.add(sw::zstdChunk(sw::kCamera, sw::perspectiveCamera(40)));
    file.add(sw::storedChunk(sw::kCameraPath, sw::cameraPathBody(sw::lookAt({1, 2, 3}, {0, 0.5f, 0}))));

    sw::LightPlan bulb;
    bulb.type = 1, bulb.name = "bulb", bulb.intensity = 4, bulb.multiplier = 2, bulb.position = {1, 2, 3};
    bulb.texMap = kBlendMap;
    sw::LightPlan spot;
    spot.type = 2, spot.name = "spot", spot.enabled = false;
    for (const sw::LightPlan& light : {bulb, spot}) {
        file.add(sw::zstdChunk(sw::kLight, sw::lightImage(light), sw::lightVersion(light.type)));
        file.add(sw::storedChunk(sw::kLightPath, sw::lightPathBody(sw::lightPath(light))));
    }

    file.add(sw::zstdChunk(sw::kTriangleMesh, sw::meshBody(sw::quadMesh("floor", {0, 0, 0}, {1, 0, 0}, {0, 0, -1}, kTable))));
    sw::MeshPlan crate = sw::boxMesh("crate", {0, 0, 0}, {1, 1, 1}, kNoMaterial);
    file.add(sw::zstdChunk(sw::kTriangleMesh, sw::meshBody(crate)));
    const sw::CloudPlan hair = sw::cloudModel("hair", {sw::furCurve({}, kMixed), sw::furCurve({}, kMixed),
                                                       sw::furCurve({}, kBumped)});
    file.add(sw::zstdChunk(sw::kFur, sw::furBody(hair)));
    const sw::CloudPlan dots = sw::cloudModel("dots", {sw::spriteDisc({0, 0, 0}, {0, 1, 0}, 1, kTable),
                                                       sw::spriteDisc({1, 0, 0}, {0, 1, 0}, 1, kTable)});
    file.add(sw::zstdChunk(sw::kSprites, sw::spriteBody(dots)));
    return file.build();
}

class RichScene : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { inspection_ = new Inspection(inspectBytes(richScene(), "rich")); }
    static void TearDownTestSuite() { delete inspection_; }
    const Inventory& found() const { return inspection_->inventory; }
    static Inspection* inspection_;
};
Inspection* RichScene::inspection_ = nullptr;

const RecordInfo* recordNamed(const std::vector<RecordInfo>& records, const std::string& name) {
    auto at = std::find_if(records.begin(), records.end(), [&](const RecordInfo& r) { return r.name == name; });
    return at == records.end() ? nullptr : &*at;
}

TEST_F(RichScene, IsAcceptedWithEveryKindCounted) {
    ASSERT_TRUE(inspection_->verdict.accepted()) << inspection_->verdict.messages.front();
    const struct {
        const char* what;
        size_t found, expected;
    } cases[] = {
        {"chunks", found().chunks.size(), 18},
        {"textures", found().textures.size(), 2},
        {"texmaps", found().texMaps.size(), 2},
        {"materials", found().materials.size(), 3},
        {"cameras", found().cameras.size(), 1},
        {"lights", found().lights.size(), 2},
        {"models", found().models.size(), 4},
        {"triangles", size_t(elementCount(found(), ModelKind::Mesh)), 2 + 12},
        {"curves", size_t(elementCount(found(), ModelKind::Fur)), 3},
        {"discs", size_t(elementCount(found(), ModelKind::Sprites)), 2},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.found, c.expected) << c.what;

    std::vector<std::string> kinds;
    for (const KindCount& count : chunkCounts(found()))
        kinds.push_back(std::string(count.kind) + "=" + std::to_string(count.count));
    EXPECT_EQ(kinds, (std::vector<std::string>{"settings=1", "camera=1", "camera path=1", "texmap=2", "material=3",
                                               "triangle mesh=2", "sprites=1", "fur=1", "light=2", "light path=2",
                                               "texture file=1", "texture data=1"}));
}

TEST_F(RichScene, ChainListsEveryChunkWithItsSizes) {
    ASSERT_FALSE(found().chunks.empty());
    EXPECT_EQ(found().chunks.front().type, uint32_t(sw::kSettings));
    EXPECT_EQ(found().chunks.front().compression, 1u);
    EXPECT_EQ(found().chunks.front().decodedSize, sw::kSettingsImage);
    EXPECT_EQ(found().chunks.back().next, 0u);
    for (const ChunkEntry& chunk : found().chunks) {
        ASSERT_TRUE(chunk.decodedSize) << chunk.offset;
        if (chunk.compression == 0) {
            EXPECT_EQ(*chunk.decodedSize, chunk.storedSize);
        }
    }
}

TEST_F(RichScene, TexturesByKind) {
    ASSERT_EQ(found().textures.size(), 2u);
    const TextureInfo& file = found().textures[0];
    EXPECT_EQ(file.id, kWood);
    EXPECT_EQ(file.name, "wood");
    EXPECT_FALSE(file.embedded);
    EXPECT_EQ(file.path, "tex/wood.png");
    const TextureInfo& data = found().textures[1];
    EXPECT_EQ(data.name, "noise");
    EXPECT_TRUE(data.embedded);
    EXPECT_EQ(data.width, 4);
    EXPECT_EQ(data.height, 2);
    EXPECT_EQ(data.pixelType, 4);
}

// Every reference, found through the type's table (and the MIX list's own code), named by the
// record it points to, or missing.
TEST_F(RichScene, ReferencesAreNamedOrMissing) {
    const struct {
        bool material;
        const char* record;
        const char* typeWord;
        std::vector<std::string> references; // key kind id name
    } cases[] = {
        {false, "wood map", "IMAGE", {"Texture texture 5 wood"}},
        {false, "blend map", "BLEND", {"Map1 texmap 1 wood map", "Map2 texmap 9 <missing>"}},
        {true, "table", "DIFFUSE", {"FrontMap texmap 2 blend map"}},
        {true, "mixed", "MIX", {"Child material 10 table", "Child material 99 <missing>"}},
        {true, "bumped", "BUMP", {"BumpMap texmap 1 wood map", "Material material 10 table"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.record);
        const RecordInfo* record = recordNamed(c.material ? found().materials : found().texMaps, c.record);
        ASSERT_NE(record, nullptr);
        EXPECT_EQ(record->typeWord, c.typeWord);
        std::vector<std::string> references;
        for (const Reference& r : record->references)
            references.push_back(r.key + " " + r.kind + " " + std::to_string(r.id) + " " +
                                 r.name.value_or("<missing>"));
        EXPECT_EQ(references, c.references);
    }
}

TEST_F(RichScene, SettingsThatMatterToAUser) {
    ASSERT_TRUE(found().settings);
    const SettingsInfo& s = *found().settings;
    EXPECT_EQ(s.imageWidth, 320);
    EXPECT_EQ(s.imageHeight, 200);
    EXPECT_EQ((std::array<int32_t, 4>{s.regionX, s.regionY, s.regionWidth, s.regionHeight}),
              (std::array<int32_t, 4>{10, 20, 100, 50}));
    EXPECT_EQ(s.passes, 16);
    EXPECT_EQ(s.threads, 3);
    EXPECT_EQ(s.outputPath, "renders");
    EXPECT_EQ(s.outputName, "shot");
    EXPECT_FALSE(s.jpeg);
    EXPECT_TRUE(s.tiff);
    EXPECT_TRUE(s.exr);
    EXPECT_EQ(s.toneOperatorWord, "FILMIC");
    ASSERT_TRUE(s.startingMedium);
    EXPECT_EQ(s.startingMedium->id, kNoMaterial);
    EXPECT_FALSE(s.startingMedium->name);
}

TEST_F(RichScene, CameraAndLightsArePlaced) {
    ASSERT_EQ(found().cameras.size(), 1u);
    const CameraInfo& camera = found().cameras[0];
    EXPECT_EQ(camera.role, 0);
    EXPECT_EQ(camera.typeWord, "PERSPECTIVE");
    EXPECT_EQ(camera.position, (Vec3{1, 2, 3}));
    EXPECT_EQ(camera.target, (Vec3{0, 0.5f, 0}));

    ASSERT_EQ(found().lights.size(), 2u);
    const LightInfo& bulb = found().lights[0];
    EXPECT_EQ(bulb.name, "bulb");
    EXPECT_EQ(bulb.kind, "point");
    EXPECT_TRUE(bulb.enabled);
    EXPECT_EQ(bulb.position, (Vec3{1, 2, 3}));
    EXPECT_FLOAT_EQ(bulb.intensity, 4);
    EXPECT_FLOAT_EQ(bulb.multiplier, 2);
    ASSERT_EQ(bulb.references.size(), 1u);
    EXPECT_EQ(bulb.references[0].name, "blend map");
    const LightInfo& spot = found().lights[1];
    EXPECT_EQ(spot.kind, "spot");
    EXPECT_FALSE(spot.enabled);
}

TEST_F(RichScene, ModelsWithTheirMaterialsByName) {
    const struct {
        const char* name;
        ModelKind kind;
        uint64_t elements;
        std::vector<std::string> materials;
    } cases[] = {
        {"floor", ModelKind::Mesh, 2, {"table"}},
        {"crate", ModelKind::Mesh, 12, {"<missing 99>"}},
        {"hair", ModelKind::Fur, 3, {"mixed", "bumped"}},
        {"dots", ModelKind::Sprites, 2, {"table"}},
    };
    ASSERT_EQ(found().models.size(), std::size(cases));
    for (size_t i = 0; i < std::size(cases); ++i) {
        const ModelInfo& model = found().models[i];
        SCOPED_TRACE(cases[i].name);
        EXPECT_EQ(model.name, cases[i].name);
        EXPECT_EQ(model.kind, cases[i].kind);
        EXPECT_EQ(model.parts, 1u);
        EXPECT_EQ(model.elements, cases[i].elements);
        std::vector<std::string> materials;
        for (const Reference& m : model.materials)
            materials.push_back(m.name.value_or("<missing " + std::to_string(m.id) + ">"));
        EXPECT_EQ(materials, cases[i].materials);
    }
}

} // namespace

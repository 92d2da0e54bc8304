// Textures behind image maps: orientation, colour encoding, mapping, file search, scene pixels,
// failures, and the environment lookup.
#include "texmap_test_support.h"

#include <OpenImageIO/color.h>

#include <fstream>

namespace preview_test {
namespace {

namespace fs = std::filesystem;

// 2 x 2 images, rows from the top: red, green / blue, grey (8-bit) and the same in float with
// values past 1 that an 8-bit image cannot hold.
const std::vector<uint8_t> kPng = {255, 0, 0, 0, 255, 0, 0, 0, 255, 128, 128, 128};
const std::vector<float> kExr = {4, 0, 0, 0, 2, 0, 0, 0, 3, 0.5f, 0.5f, 0.5f};
const float kGrey = OIIO::sRGB_to_linear(128 / 255.0f);

const float kIdentity[3][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}};

struct Lookup {
    float u, v;
    Color expected;
};

TEST(TextureLookup, FirstRowIsTopAndEightBitIsLinearised) {
    TempFolder folder;
    writeImage(folder.path() / "quad.png", 2, 2, 3, OIIO::TypeDesc::UINT8, kPng);
    writeImage(folder.path() / "quad.exr", 2, 2, 3, OIIO::TypeDesc::FLOAT, kExr);
    struct Case {
        const char* file;
        int32_t mapType; // SIMPLEIMAGE and IMAGE without a coordinate block
        std::vector<Lookup> lookups;
    };
    const Case cases[] = {
        {"quad.png", 2, {{0.25f, 0.75f, {1, 0, 0}}, {0.75f, 0.75f, {0, 1, 0}}, {0.25f, 0.25f, {0, 0, 1}},
                         {0.75f, 0.25f, Color(kGrey)}}},
        {"quad.exr", 1, {{0.25f, 0.75f, {4, 0, 0}}, {0.75f, 0.75f, {0, 2, 0}}, {0.25f, 0.25f, {0, 0, 3}},
                         {0.75f, 0.25f, Color(0.5f)}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        Warnings warnings;
        preview::TexMapSet set;
        set.addTextureFile(textureFile(7, (folder.path() / c.file).string()), warnings.sink());
        TexMapRecord map = texMap(c.mapType, 1);
        setField(map, "Texture", int32_t(7));
        set.add(map, warnings.sink());
        set.finish(warnings.sink());
        EXPECT_TRUE(warnings.counts.empty()) << warnings.text();
        for (const Lookup& l : c.lookups)
            EXPECT_COLOR_NEAR(set.color(1, at(l.u, l.v), Color(-1)), l.expected, 1e-3f) << l.u << "," << l.v;
        // Data lookups (normal maps) keep the encoded value.
        const preview::Vec3 n = set.normal(1, at(0.75f, 0.25f));
        if (c.mapType == 2) {
            EXPECT_NEAR(n.z, std::sqrt(1.0f / 3), 2e-2f); // (128, 128, 128) as is
        }
    }
}

TEST(TextureLookup, CoordinateBlockTilesOffsetsMirrorsAndClips) {
    TempFolder folder;
    writeImage(folder.path() / "quad.png", 2, 2, 3, OIIO::TypeDesc::UINT8, kPng);
    const float twice[3][4] = {{2, 0, 0, 0}, {0, 2, 0, 0}, {0, 0, 1, 0}};
    const float shifted[3][4] = {{1, 0, 0, 0.5f}, {0, 1, 0, 0}, {0, 0, 1, 0}};
    const Color outside(0.1f, 0.2f, 0.3f);
    struct Case {
        const char* name;
        const float (*matrix)[4];
        bool tile, mirror;
        Lookup lookup;
    };
    const Case cases[] = {
        {"tiled twice: the second copy's top left", twice, true, false, {0.625f, 0.875f, {1, 0, 0}}},
        {"tiled twice: the first copy's bottom right", twice, true, false, {0.375f, 0.125f, Color(kGrey)}},
        {"mirrored twice: the second copy runs backwards", twice, true, true, {0.625f, 0.875f, Color(kGrey)}},
        {"offset half a width: left column shows the right", shifted, true, false, {0.25f, 0.75f, {0, 1, 0}}},
        {"offset and wrapped round", shifted, true, false, {0.75f, 0.75f, {1, 0, 0}}},
        {"offset without tiling: outside colour", shifted, false, false, {0.75f, 0.75f, outside}},
        {"inside without tiling", kIdentity, false, false, {0.25f, 0.25f, {0, 0, 1}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Warnings warnings;
        preview::TexMapSet set;
        set.addTextureFile(textureFile(0, (folder.path() / "quad.png").string()), warnings.sink());
        TexMapRecord map = texMap(1, 3);
        float matrix[3][4];
        std::memcpy(matrix, c.matrix, sizeof matrix);
        setCoordGen(map, matrix, c.tile, c.mirror, outside);
        setField(map, "Texture", int32_t(0));
        set.add(map, warnings.sink());
        set.finish(warnings.sink());
        EXPECT_COLOR_NEAR(set.color(3, at(c.lookup.u, c.lookup.v), Color(-1)), c.lookup.expected, 1e-3f);
    }
}

TEST(TextureFiles, FoundAsGivenOrInTheFoldersInOrder) {
    TempFolder folder;
    writeImage(folder.path() / "first" / "maps" / "a.png", 1, 1, 3, OIIO::TypeDesc::UINT8,
               std::vector<uint8_t>{255, 0, 0});
    writeImage(folder.path() / "second" / "maps" / "a.png", 1, 1, 3, OIIO::TypeDesc::UINT8,
               std::vector<uint8_t>{0, 255, 0});
    writeImage(folder.path() / "second" / "b.png", 1, 1, 3, OIIO::TypeDesc::UINT8, std::vector<uint8_t>{0, 0, 255});
    struct Case {
        std::string path;
        Color expected;
    };
    const Case cases[] = {
        {(folder.path() / "second" / "b.png").string(), {0, 0, 1}}, // absolute, as given
        {"maps/a.png", {1, 0, 0}},                                  // relative: the first folder that has it
        {"maps\\a.png", {1, 0, 0}},                                 // written with backslashes
        {"/no/such/place/b.png", {0, 0, 1}},                        // not found: by its file name
        {"C:\\textures\\b.png", {0, 0, 1}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        Warnings warnings;
        preview::TexMapSet set;
        set.addFolder((folder.path() / "first").string());
        set.addFolder((folder.path() / "second").string());
        set.addTextureFile(textureFile(1, c.path), warnings.sink());
        TexMapRecord map = texMap(2, 1);
        setField(map, "Texture", int32_t(1));
        set.add(map, warnings.sink());
        set.finish(warnings.sink());
        EXPECT_TRUE(warnings.counts.empty()) << warnings.text();
        EXPECT_COLOR_NEAR(set.color(1, at(0.5f, 0.5f), Color(-1)), c.expected, 1e-3f);
    }
}

TEST(TextureFiles, UnreadableFileWarnsOnceWithItsPathAndGivesTheNeutralValue) {
    TempFolder folder;
    std::ofstream(folder.path() / "broken.png") << "not an image";
    for (const std::string& path : {std::string("missing/none.png"), (folder.path() / "broken.png").string()}) {
        SCOPED_TRACE(path);
        Warnings warnings;
        preview::TexMapSet set;
        set.addFolder(folder.path().string());
        set.addTextureFile(textureFile(2, path), warnings.sink());
        TexMapRecord map = texMap(2, 5);
        setField(map, "Texture", int32_t(2));
        set.add(map, warnings.sink());
        set.finish(warnings.sink());
        EXPECT_EQ(warnings.counts, (std::map<std::string, int>{{"texture file cannot be read: " + path, 1}}));
        for (float u : {0.1f, 0.6f})
            EXPECT_COLOR_NEAR(set.color(5, at(u, 0.5f), Color(0.25f, 0.5f, 0.75f)), Color(0.25f, 0.5f, 0.75f), 0);
    }
}

TEST(TextureData, ScenePixelsComeBackByPixelType) {
    const std::vector<uint8_t> rgba8 = {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 128, 128, 128, 255};
    std::vector<float> rgbaFloat = {4, 0, 0, 1, 0, 2, 0, 1, 0, 0, 3, 1, 0.5f, 0.5f, 0.5f, 1};
    std::vector<uint8_t> floatBytes(rgbaFloat.size() * sizeof(float));
    std::memcpy(floatBytes.data(), rgbaFloat.data(), floatBytes.size());
    const std::vector<float> grey = {0.25f, 0.5f, 0.75f, 1};
    std::vector<uint8_t> greyBytes(grey.size() * sizeof(float));
    std::memcpy(greyBytes.data(), grey.data(), greyBytes.size());
    struct Case {
        int32_t pixelType;
        std::vector<uint8_t> pixels;
        std::vector<Lookup> lookups;
    };
    const Case cases[] = {
        {0, rgba8, {{0.25f, 0.75f, {1, 0, 0}}, {0.75f, 0.75f, {0, 1, 0}}, {0.75f, 0.25f, Color(kGrey)}}},
        {3, floatBytes, {{0.25f, 0.75f, {4, 0, 0}}, {0.25f, 0.25f, {0, 0, 3}}, {0.75f, 0.25f, Color(0.5f)}}},
        {7, greyBytes, {{0.25f, 0.75f, Color(0.25f)}, {0.75f, 0.75f, Color(0.5f)}, {0.75f, 0.25f, Color(1)}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.pixelType);
        Warnings warnings;
        preview::TexMapSet set;
        std::vector<uint8_t> pixels = c.pixels; // the record owns its block; the set copies it
        TextureDataRecord data{};
        data.id = 4;
        data.width = data.height = 2;
        data.pixelType = c.pixelType;
        data.pixels = pixels.data();
        set.addTextureData(data, warnings.sink());
        std::fill(pixels.begin(), pixels.end(), uint8_t(0));
        TexMapRecord map = texMap(2, 1);
        setField(map, "Texture", int32_t(4));
        set.add(map, warnings.sink());
        set.finish(warnings.sink());
        EXPECT_TRUE(warnings.counts.empty()) << warnings.text();
        for (const Lookup& l : c.lookups)
            EXPECT_COLOR_NEAR(set.color(1, at(l.u, l.v), Color(-1)), l.expected, 1e-3f) << l.u << "," << l.v;
    }
}

TEST(TextureData, UnknownPixelTypeWarnsAndGivesTheNeutralValue) {
    Warnings warnings;
    preview::TexMapSet set;
    std::vector<uint8_t> pixels(4 * 16);
    TextureDataRecord data{};
    data.id = 4;
    data.width = data.height = 2;
    data.pixelType = 9;
    data.pixels = pixels.data();
    set.addTextureData(data, warnings.sink());
    TexMapRecord map = texMap(2, 1);
    setField(map, "Texture", int32_t(4));
    set.add(map, warnings.sink());
    set.finish(warnings.sink());
    EXPECT_EQ(warnings.counts, (std::map<std::string, int>{{"unsupported texture pixel type 9", 1}}));
    EXPECT_COLOR_NEAR(set.color(1, at(0.5f, 0.5f), Color(0.3f)), Color(0.3f), 0);
}

TEST(Environment, LatitudeLongitudeWithYUp) {
    TempFolder folder;
    writeImage(folder.path() / "sky.exr", 2, 2, 3, OIIO::TypeDesc::FLOAT, kExr);
    Warnings warnings;
    preview::TexMapSet set;
    set.addTextureFile(textureFile(0, (folder.path() / "sky.exr").string()), warnings.sink());
    TexMapRecord map = texMap(2, 9);
    setField(map, "Texture", int32_t(0));
    set.add(map, warnings.sink());
    set.finish(warnings.sink());
    // Column centres lie at u = 0.25 (towards -X) and 0.75 (towards +X); row centres 45 degrees
    // above and below the horizon.
    const float s = std::sqrt(0.5f);
    const struct {
        preview::Vec3 direction;
        Color expected;
    } cases[] = {
        {{-s, s, 0}, {4, 0, 0}},
        {{s, s, 0}, {0, 2, 0}},
        {{-s, -s, 0}, {0, 0, 3}},
        {{s, -s, 0}, Color(0.5f)},
    };
    for (const auto& c : cases)
        EXPECT_COLOR_NEAR(set.environment(9, c.direction, Color(-1)), c.expected, 1e-3f);
    EXPECT_COLOR_NEAR(set.environment(-1, {0, 1, 0}, Color(0.5f)), Color(0.5f), 0);
}

} // namespace
} // namespace preview_test

// Texture file and texture data chunks.
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

#include <optional>

using namespace scene_writer;

namespace {

TextureFilePlan textureFile(const std::string& name, const std::string& path) {
    TextureFilePlan plan;
    plan.paramA = 0xA1A2A3A4;
    plan.paramB = 0xB1B2B3B4;
    plan.id = 17;
    plan.name = name;
    plan.path = path;
    return plan;
}

TEST(TextureFile, Bodies) {
    struct Case {
        const char* what;
        TextureFilePlan plan;
        uint32_t version;
        size_t cutTo; // 0: whole body
        SceneStatus expected;
    };
    const Case cases[] = {
        {"fields", textureFile("brick", "maps/brick_\xE4.tif"), 100, 0, SceneOk},
        {"name of 63", textureFile(std::string(63, 'n'), "p"), 100, 0, SceneOk},
        {"name of 64", textureFile(std::string(64, 'n'), "p"), 100, 0, SceneInvalid},
        {"name with no terminator", textureFile(std::string(128, 'n'), "p"), 100, 0, SceneInvalid},
        {"path of 383", textureFile("n", std::string(383, 'p')), 100, 0, SceneOk},
        {"path of 384", textureFile("n", std::string(384, 'p')), 100, 0, SceneInvalid},
        {"version 101", textureFile("n", "p"), 101, 0, SceneBadVersion},
        {"body of 6 bytes", textureFile("n", "p"), 100, 6, SceneOk},
    };
    for (const Case& c : cases) {
        Bytes body = textureFileBody(c.plan);
        if (c.cutTo) body.resize(c.cutTo);
        OpenScene scene(sceneOf({zstdChunk(kTextureFile, body, c.version)}));
        TextureFileRecord record;
        record.id = 1234;
        uint64_t offset = 0;
        ASSERT_EQ(readTextureFile(scene.reader, record, offset), c.expected) << c.what;
        if (c.expected == SceneBadVersion) {
            EXPECT_EQ(record.id, 1234) << c.what;
            EXPECT_EQ(scene.reader.bodyReadCount, 0u) << c.what;
        } else if (c.expected == SceneOk) {
            // What the body does not hold stays cleared.
            EXPECT_EQ(record.id, c.cutTo ? -1 : 17) << c.what;
            if (!c.cutTo) {
                EXPECT_EQ(record.textureParamA, 0xA1A2A3A4u) << c.what;
            }
            if (!c.cutTo) {
                EXPECT_EQ(record.textureParamB, 0xB1B2B3B4u) << c.what;
            }
            EXPECT_EQ(wideField(record.name, kNameChars), c.cutTo ? u"" : wide(c.plan.name)) << c.what;
            EXPECT_EQ(wideField(record.path, kPathChars), c.cutTo ? u"" : wide(c.plan.path)) << c.what;
        }
    }
}

TEST(TextureData, PixelSizesByType) {
    const std::pair<int32_t, uint32_t> cases[] = {{0, 4},  {7, 4},   {1, 8},   {2, 8},  {8, 8},
                                                  {3, 16}, {9, 16},  {10, 16}, {4, 1},  {5, 2},
                                                  {6, 2},  {11, 32}, {12, 0},  {-1, 0}, {1000, 0}};
    for (const auto& [pixelType, bytesPerPixel] : cases) {
        TextureDataPlan plan;
        plan.width = 3;
        plan.height = 2;
        plan.pixelType = pixelType;
        plan.paramA = 0xAAAA0001;
        plan.paramB = 0xBBBB0002;
        plan.paramC = 0xCCCC0003;
        plan.id = 77;
        plan.name = "lut";
        if (pixelType % 2) plan.pixelOffset = 400; // anywhere in the body
        for (uint32_t i = 0; i < 6 * bytesPerPixel; ++i)
            plan.pixels.push_back(static_cast<uint8_t>(i + 1));
        plan.pixels.push_back(0xEE); // a byte past the pixels, which must not be taken
        uint64_t before = liveBlocks();
        TextureDataRecord record;
        ASSERT_EQ(
            readFirst(readTextureData, sceneOf({zstdChunk(kTextureData, textureDataBody(plan))}), record),
            SceneOk)
            << pixelType;
        ASSERT_NE(record.pixels, nullptr) << "a block, even of 0 bytes";
        EXPECT_EQ(liveBlocks(), before + 1) << "the body is freed, the pixels kept";
        plan.pixels.pop_back();
        EXPECT_EQ(Bytes(record.pixels, record.pixels + plan.pixels.size()), plan.pixels) << pixelType;
        EXPECT_EQ(std::vector<uint32_t>({record.textureParamA, record.textureParamB, record.textureParamC,
                                         uint32_t(record.id), uint32_t(record.width), uint32_t(record.height),
                                         uint32_t(record.pixelType)}),
                  (std::vector<uint32_t>{0xAAAA0001, 0xBBBB0002, 0xCCCC0003, 77, 3, 2, uint32_t(pixelType)}));
        EXPECT_EQ(std::u16string(record.name), u"lut");
        releaseTextureData(record);
        EXPECT_EQ(liveBlocks(), before);
    }
}

TEST(TextureData, BodiesThatDoNotHoldTheirPixels) {
    struct Case {
        const char* what;
        int32_t width, height, pixelType;
        std::optional<uint64_t> pixelOffset;
        size_t pixelBytes;
        SceneStatus expected;
        bool pixelsTaken;
        uint32_t version = 100;
        std::string name = "pixels";
    };
    const Case cases[] = {
        {"offset past the end", 2, 2, 0, 1000, 0, SceneInvalid, false},
        {"pixels run past the end", 2, 2, 0, {}, 15, SceneInvalid, false},
        {"offset near 2^64", 1, 1, 4, UINT64_MAX - 1, 0, SceneInvalid, false},
        // 0x8000 x 0x10000 x 1 wraps to a negative count, which widens to a huge size.
        {"negative product", 0x8000, 0x10000, 4, {}, 16, SceneInvalid, false},
        // 0x10000 x 0x10000 x 4 wraps to 0 bytes.
        {"product wraps to 0", 0x10000, 0x10000, 0, {}, 0, SceneOk, true},
        {"negative width", -1, 1, 0, {}, 16, SceneInvalid, false},
        {"version 99", 2, 2, 0, {}, 16, SceneBadVersion, false, 99},
        {"name of 64 still takes the pixels", 2, 2, 0, {}, 16, SceneInvalid, true, 100, std::string(64, 'x')},
    };
    for (const Case& c : cases) {
        TextureDataPlan plan;
        plan.width = c.width;
        plan.height = c.height;
        plan.pixelType = c.pixelType;
        plan.pixelOffset = c.pixelOffset;
        plan.name = c.name;
        Bytes body = textureDataBody(plan);
        body.resize(kTextureDataHeaderBytes + c.pixelBytes, 0x11);
        OpenScene scene(sceneOf({storedChunk(kTextureData, body, c.version)}));
        TextureDataRecord record;
        uint64_t offset = 0;
        uint64_t before = liveBlocks();
        EXPECT_EQ(readTextureData(scene.reader, record, offset), c.expected) << c.what;
        EXPECT_EQ(liveBlocks(), before + (c.pixelsTaken ? 1 : 0)) << c.what;
        if (c.pixelsTaken && c.pixelBytes) {
            EXPECT_EQ(record.pixels[c.pixelBytes - 1], 0x11) << c.what;
        }
        if (c.expected == SceneBadVersion) {
            EXPECT_EQ(scene.reader.bodyReadCount, 0u);
        }
        if (c.pixelsTaken) releaseTextureData(record);
    }
}

} // namespace

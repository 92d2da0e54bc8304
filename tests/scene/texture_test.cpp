// Texture file and texture data chunks.
#include "scene/scene_readers.h"
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

using namespace scene_writer;

namespace {

TEST(TextureFile, FieldsComeFromTheirOffsets) {
    TextureFilePlan plan;
    plan.paramA = 0xA1A2A3A4;
    plan.paramB = 0xB1B2B3B4;
    plan.id = 17;
    plan.name = "brick";
    plan.path = "maps/brick_\xE4.tif";
    OpenScene scene(sceneOf({zstdChunk(kTextureFile, textureFileBody(plan))}));
    TextureFileRecord record;
    uint64_t offset = 0;
    ASSERT_EQ(readTextureFile(scene.reader, record, offset), SceneOk);
    EXPECT_EQ(offset, 0u);
    EXPECT_EQ(record.textureParamA, 0xA1A2A3A4u);
    EXPECT_EQ(record.textureParamB, 0xB1B2B3B4u);
    EXPECT_EQ(record.id, 17);
    EXPECT_EQ(std::u16string(record.name), u"brick");
    EXPECT_EQ(std::u16string(record.path), u"maps/brick_\u00E4.tif");
}

TEST(TextureFile, WrongVersionReadsNothing) {
    OpenScene scene(sceneOf({storedChunk(kTextureFile, textureFileBody({}), 101)}));
    TextureFileRecord record;
    record.id = 1234;
    uint64_t offset = 0;
    EXPECT_EQ(readTextureFile(scene.reader, record, offset), SceneBadVersion);
    EXPECT_EQ(record.id, 1234);
    EXPECT_EQ(scene.reader.bodyReadCount, 0u);
}

TEST(TextureFile, ShortBodyKeepsTheClearedFields) {
    Bytes body = textureFileBody({});
    body.resize(6);
    OpenScene scene(sceneOf({storedChunk(kTextureFile, body)}));
    TextureFileRecord record;
    uint64_t offset = 0;
    ASSERT_EQ(readTextureFile(scene.reader, record, offset), SceneOk);
    EXPECT_EQ(record.id, -1);
    EXPECT_EQ(record.name[0], 0);
    EXPECT_EQ(record.path[0], 0);
}

struct PixelCase {
    int32_t pixelType;
    uint32_t bytesPerPixel;
};

TEST(TextureData, PixelSizesByType) {
    const PixelCase cases[] = {{0, 4}, {7, 4}, {1, 8}, {2, 8},   {8, 8},  {3, 16}, {9, 16},  {10, 16},
                               {4, 1}, {5, 2}, {6, 2}, {11, 32}, {12, 0}, {-1, 0}, {1000, 0}};
    for (const PixelCase& c : cases) {
        TextureDataPlan plan;
        plan.width = 3;
        plan.height = 2;
        plan.pixelType = c.pixelType;
        plan.id = 9;
        for (uint32_t i = 0; i < 6 * c.bytesPerPixel; ++i)
            plan.pixels.push_back(static_cast<uint8_t>(i + 1));
        plan.pixels.push_back(0xEE); // a byte past the pixels, which must not be taken
        OpenScene scene(sceneOf({zstdChunk(kTextureData, textureDataBody(plan))}));
        TextureDataRecord record;
        uint64_t offset = 0;
        uint64_t before = liveBlocks();
        ASSERT_EQ(readTextureData(scene.reader, record, offset), SceneOk) << c.pixelType;
        ASSERT_NE(record.pixels, nullptr) << "a block, even of 0 bytes";
        EXPECT_EQ(liveBlocks(), before + 1) << "the body is freed, the pixels kept";
        EXPECT_EQ(Bytes(record.pixels, record.pixels + 6 * c.bytesPerPixel),
                  Bytes(plan.pixels.begin(), plan.pixels.end() - 1))
            << c.pixelType;
        EXPECT_EQ(record.pixelType, c.pixelType);
        releaseTextureData(record);
        EXPECT_EQ(liveBlocks(), before);
    }
}

TEST(TextureData, FieldsComeFromTheirOffsets) {
    TextureDataPlan plan;
    plan.width = 1;
    plan.height = 1;
    plan.paramA = 0xAAAA0001;
    plan.paramB = 0xBBBB0002;
    plan.paramC = 0xCCCC0003;
    plan.id = 77;
    plan.pixelType = 4;
    plan.name = "lut";
    plan.pixels = {0x42};
    plan.pixelOffset = 400; // anywhere in the body
    OpenScene scene(sceneOf({storedChunk(kTextureData, textureDataBody(plan))}));
    TextureDataRecord record;
    uint64_t offset = 0;
    ASSERT_EQ(readTextureData(scene.reader, record, offset), SceneOk);
    EXPECT_EQ(record.textureParamA, 0xAAAA0001u);
    EXPECT_EQ(record.textureParamB, 0xBBBB0002u);
    EXPECT_EQ(record.textureParamC, 0xCCCC0003u);
    EXPECT_EQ(record.id, 77);
    EXPECT_EQ(record.width, 1);
    EXPECT_EQ(record.height, 1);
    EXPECT_EQ(std::u16string(record.name), u"lut");
    EXPECT_EQ(record.pixels[0], 0x42);
    releaseTextureData(record);
}

TEST(TextureData, PixelRangeOutsideTheBody) {
    struct Case {
        const char* what;
        int32_t width, height, pixelType;
        uint64_t pixelOffset;
        size_t pixelBytes;
        SceneStatus expected;
    };
    const Case cases[] = {
        {"offset past the end", 2, 2, 0, 1000, 0, SceneInvalid},
        {"pixels run past the end", 2, 2, 0, kTextureDataHeaderBytes, 15, SceneInvalid},
        {"offset near 2^64", 1, 1, 4, UINT64_MAX - 1, 0, SceneInvalid},
        // 0x8000 x 0x10000 x 1 wraps to a negative count, which widens to a huge size.
        {"negative product", 0x8000, 0x10000, 4, kTextureDataHeaderBytes, 16, SceneInvalid},
        // 0x10000 x 0x10000 x 4 wraps to 0 bytes.
        {"product wraps to 0", 0x10000, 0x10000, 0, kTextureDataHeaderBytes, 0, SceneOk},
        {"negative width", -1, 1, 0, kTextureDataHeaderBytes, 16, SceneInvalid},
    };
    for (const Case& c : cases) {
        TextureDataPlan plan;
        plan.width = c.width;
        plan.height = c.height;
        plan.pixelType = c.pixelType;
        plan.pixelOffset = c.pixelOffset;
        Bytes body = textureDataBody(plan);
        body.resize(kTextureDataHeaderBytes + c.pixelBytes, 0x11);
        OpenScene scene(sceneOf({storedChunk(kTextureData, body)}));
        TextureDataRecord record;
        uint64_t offset = 0;
        uint64_t before = liveBlocks();
        EXPECT_EQ(readTextureData(scene.reader, record, offset), c.expected) << c.what;
        if (c.expected == SceneOk) releaseTextureData(record);
        EXPECT_EQ(liveBlocks(), before) << c.what;
    }
}

TEST(TextureData, BadNameStillTakesThePixels) {
    TextureDataPlan plan;
    plan.name = std::string(64, 'x');
    plan.pixels = Bytes(16, 3);
    OpenScene scene(sceneOf({storedChunk(kTextureData, textureDataBody(plan))}));
    TextureDataRecord record;
    uint64_t offset = 0;
    EXPECT_EQ(readTextureData(scene.reader, record, offset), SceneInvalid);
    ASSERT_NE(record.pixels, nullptr);
    EXPECT_EQ(record.pixels[15], 3);
    releaseTextureData(record);
}

TEST(TextureData, WrongVersionReadsNothing) {
    OpenScene scene(sceneOf({storedChunk(kTextureData, textureDataBody({}), 99)}));
    TextureDataRecord record;
    uint64_t offset = 0;
    EXPECT_EQ(readTextureData(scene.reader, record, offset), SceneBadVersion);
    EXPECT_EQ(scene.reader.bodyReadCount, 0u);
}

} // namespace

// Render settings: every default, and the first settings chunk read over them.
#include "scene/scene_readers.h"
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

using namespace scene_writer;

namespace {

struct Default {
    uint32_t offset;
    bool isFloat;
    double value;
};

// The defaults by offset into the record, as the format defines them.
const Default kRecordDefaults[] = {
    {0x0, true, 20},       {0x4, true, 40},        {0x8, false, 256},     {0x10, false, 1},
    {0x14, false, 1},      {0x18, false, 1},       {0x28, false, 1},      {0x2C, false, 1},
    {0x30, false, 1},      {0x38, false, 2},       {0x3C, false, 4},      {0x48, false, 1},
    {0x4C, false, 1},      {0x5C, false, 1},       {0x60, false, 1},      {0x64, false, 1},
    {0x74, false, 8},      {0x78, false, 5},       {0x7C, false, 5},      {0x80, true, 1},
    {0x84, true, 1},       {0x8C, true, 2.5},      {0x94, false, 1},      {0x9C, true, -0.177},
    {0xAC, true, -2},      {0xB0, true, 0.5},      {0xB4, true, -10},     {0xB8, true, 10},
    {0xBC, true, 1},       {0xC0, true, 360},      {0xC4, true, 830},     {0xC8, false, 3},
    {0xCC, false, 3},      {0x28C8, false, 10},    {0x28CC, false, 10},   {0x28D0, false, 2},
    {0x28D4, false, 1},    {0x28E0, false, 1},     {0x28E4, false, 10},   {0x28E8, false, 10},
    {0x28EC, false, 10},   {0x28F0, false, 1},     {0x28FC, false, 1},    {0x2900, false, 1},
    {0x2904, true, 1},     {0x2908, true, 1},      {0x290C, true, 1},     {0x2910, false, 1},
    {0x2920, true, 0.001}, {0x292C, false, 3},     {0x2934, false, 1},    {0x2938, true, 1},
    {0x2948, false, -5},   {0x294C, false, -5},    {0x2950, false, -10},  {0x2958, true, 0.02},
    {0x295C, true, 1},     {0x2960, true, 25},     {0x2964, true, 5},     {0x2968, true, 1},
    {0x2970, false, 1},    {0x2974, false, 1},     {0x297C, false, 1},    {0x2984, false, 7},
    {0x2988, true, 2.2},   {0x298C, false, 1},     {0x2990, false, 2},    {0x29B4, false, 1},
    {0x29C8, false, 1},    {0x29CC, false, 1},     {0x8B48, false, 1},    {0x8B5C, true, 0.25},
    {0x8B60, false, 1},    {0x8B7C, false, 16384}, {0x8B80, false, 8192}, {0x8B88, false, 1},
    {0x8BA4, false, 1},    {0x9844, false, -1},
};

// Relative to the tone operator block at 0x7050.
const Default kToneDefaults[] = {
    {0xC, true, 6500}, {0x1C, true, 1},    {0x20, true, 1},   {0x24, true, 1},   {0x34, true, 0.5},
    {0x3C, true, 1},   {0x44, true, 1},    {0x4C, true, 1},   {0x50, true, 0.1}, {0x54, true, 1},
    {0x60, true, 1},   {0x64, true, 0.05}, {0x68, true, 1},   {0x74, false, 1},  {0x78, false, 6},
    {0x84, true, 5},   {0x8C, true, 0.5},  {0x94, true, 0.5}, {0x9C, true, 1},   {0xA4, true, 1},
    {0xAC, true, 2.2}, {0xE54, true, 0.5}, {0xE58, true, 2},
};

void putDefault(Bytes& image, uint32_t base, const Default& d) {
    if (d.isFloat) {
        putF32(image, base + d.offset, static_cast<float>(d.value));
    } else {
        put32(image, base + d.offset, static_cast<uint32_t>(static_cast<int32_t>(d.value)));
    }
}

// The whole default record, built from the tables alone.
Bytes expectedDefaults() {
    Bytes image(0x9848, 0);
    for (const Default& d : kRecordDefaults)
        putDefault(image, 0, d);
    for (const Default& d : kToneDefaults)
        putDefault(image, 0x7050, d);
    for (uint32_t block : {0xC0u, 0x544u, 0x9C8u}) {
        for (uint32_t at : {8u, 12u, 24u, 28u})
            putF32(image, 0x7050 + block + at, 1.0f);
    }
    for (uint32_t channel = 0; channel < 8; ++channel) {
        uint32_t base = 0xD0 + channel * 8 * 32;
        put32(image, base + 0, 0xF149F2CA);
        put32(image, base + 4, 0xF2FC6F7C);
        put32(image, base + 8, 0x7149F2CA);
        put32(image, base + 12, 0x7149F2CA);
        for (uint32_t segment = 1; segment < 8; ++segment)
            putF32(image, base + segment * 32, 1.0f);
    }
    for (uint32_t entry = 0; entry < 32; ++entry) {
        uint32_t base = 0x29D0 + 0x234 * entry;
        put32(image, base + 0x18, 6);
        for (uint32_t at = 0x21E; at <= 0x227; ++at)
            image[base + at] = 1;
        image[base + 0x22F] = image[base + 0x230] = 1;
    }
    return image;
}

TEST(Settings, InitSetsEveryDefaultAndNothingElse) {
    auto record = std::make_unique<SettingsRecord>();
    std::memset(record.get(), 0xCD, sizeof *record);
    initSettings(*record);
    Bytes expected = expectedDefaults();
    const uint8_t* actual = reinterpret_cast<const uint8_t*>(record.get());
    for (size_t i = 0; i < expected.size(); i += 4) {
        ASSERT_EQ(wordAt(*record, i), uint32_t(expected[i] | expected[i + 1] << 8 | expected[i + 2] << 16 |
                                               uint32_t(expected[i + 3]) << 24))
            << "at offset 0x" << std::hex << i;
    }
    EXPECT_EQ(std::memcmp(actual, expected.data(), expected.size()), 0);
}

TEST(Settings, SpotChecksByName) {
    auto record = std::make_unique<SettingsRecord>();
    initSettings(*record);
    EXPECT_EQ(record->MaxIterations, 256);
    EXPECT_EQ(record->StartingVolumetricMaterial, -1);
    EXPECT_FLOAT_EQ(record->AddChaos, -0.177f);
    EXPECT_EQ(record->ToneOperator.GlareNrays, 6);
    EXPECT_FLOAT_EQ(record->ToneOperator.Gamma, 2.2f);
    EXPECT_EQ(record->Channels[31].MaxCryptomatteSamples, 6);
    EXPECT_EQ(record->Channels[31].Other, 1);
    EXPECT_EQ(record->Channels[31].OtherDeny, 0);
    EXPECT_EQ(floatBits(record->TextureChannels[7][0].ts), 0xF149F2CAu);
    EXPECT_GT(record->TextureChannels[7][1].ts, record->TextureChannels[7][1].te) << "switched off";
}

SettingsPlan settingsWithIterations(int32_t iterations) {
    SettingsPlan plan;
    plan.maxIterations = iterations;
    return plan;
}

TEST(Settings, OnlyTheFirstChunkCounts) {
    SceneFile file;
    file.add(storedChunk(kTexMap, texMapBody(1, 0, "m")));
    size_t first = file.add(zstdChunk(kSettings, settingsBody(settingsWithIterations(111))));
    file.add(zstdChunk(kSettings, settingsBody(settingsWithIterations(222))));
    OpenScene scene(file.build());
    auto record = std::make_unique<SettingsRecord>();
    uint64_t offset = 0;
    ASSERT_EQ(readSettings(scene.reader, *record, offset), SceneOk);
    EXPECT_EQ(record->MaxIterations, 111);
    EXPECT_EQ(offset, file.offsetOf(first + 1));
    EXPECT_EQ(record->ImageSizeX, 640);
    EXPECT_EQ(std::u16string(record->OutputName), u"frame");
}

TEST(Settings, MissingChunkAndWrongVersion) {
    auto record = std::make_unique<SettingsRecord>();
    uint64_t offset = 0;
    {
        OpenScene scene(sceneOf({storedChunk(kTexMap, texMapBody(1, 0, "m"))}));
        EXPECT_EQ(readSettings(scene.reader, *record, offset), SceneEndOfChunks);
    }
    {
        offset = 0;
        OpenScene scene(sceneOf({storedChunk(kSettings, settingsBody({}), 101)}));
        EXPECT_EQ(readSettings(scene.reader, *record, offset), SceneBadVersion);
        EXPECT_EQ(scene.reader.bodyReadCount, 0u);
    }
}

TEST(Settings, ShortBodyLeavesTheDefaultsBehindIt) {
    Bytes body = settingsBody(settingsWithIterations(5));
    body.resize(0x40);
    OpenScene scene(sceneOf({storedChunk(kSettings, body)}));
    auto record = std::make_unique<SettingsRecord>();
    std::memset(record.get(), 0, sizeof *record);
    uint64_t offset = 0;
    ASSERT_EQ(readSettings(scene.reader, *record, offset), SceneOk);
    EXPECT_EQ(record->MaxIterations, 5);
    EXPECT_EQ(record->MinNoise, 0.0f) << "from the body";
    EXPECT_EQ(record->MaxDepth, 10) << "a default behind the body";
    EXPECT_EQ(record->StartingVolumetricMaterial, -1);
}

TEST(Settings, AovNamesOnlyForTheChannelsInUse) {
    struct Case {
        int32_t numChannels;
        size_t converted; // channels whose names are converted; the rest are cleared
    };
    const Case cases[] = {{2, 2}, {0, 0}, {-3, 0}, {32, 32}, {40, 32}};
    for (const Case& c : cases) {
        Bytes body = settingsBody({});
        put32(body, 0x29BC, static_cast<uint32_t>(c.numChannels));
        for (uint32_t i = 0; i < 32; ++i) {
            putText(body, 0x29D0 + 0x234 * i + 0x1C, 128, "aov" + std::to_string(i));
            putText(body, 0x29D0 + 0x234 * i + 0x11C, 128, "alt" + std::to_string(i));
        }
        OpenScene scene(sceneOf({storedChunk(kSettings, body)}));
        auto record = std::make_unique<SettingsRecord>();
        uint64_t offset = 0;
        ASSERT_EQ(readSettings(scene.reader, *record, offset), SceneOk);
        for (size_t i = 0; i < 32; ++i) {
            const AovChannel& channel = record->Channels[i];
            if (i < c.converted) {
                EXPECT_EQ(std::u16string(channel.name), wide("aov" + std::to_string(i))) << i;
                EXPECT_EQ(std::u16string(channel.secondText), wide("alt" + std::to_string(i))) << i;
            } else {
                EXPECT_TRUE(std::all_of(std::begin(channel.name), std::end(channel.name),
                                        [](char16_t u) { return u == 0; }))
                    << c.numChannels << " " << i;
                EXPECT_EQ(std::string(reinterpret_cast<const char*>(channel.secondText)),
                          "alt" + std::to_string(i))
                    << "left as the file has it";
            }
        }
    }
}

TEST(Settings, TextFieldsAreWidened) {
    struct Field {
        uint32_t offset;
        uint32_t bytes;
    };
    const Field fields[] = {{0x7EB0, 0x300}, {0x84C8, 0x300}, {0x87C8, 128},
                            {0x8848, 0x300}, {0x8BB4, 0x300}, {0x8EB4, 128},
                            {0x8F34, 0x300}, {0x9234, 0x300}, {0x9534, 0x300}};
    Bytes body = settingsBody({});
    for (const Field& f : fields)
        putText(body, f.offset, f.bytes, "t" + std::to_string(f.offset));
    OpenScene scene(sceneOf({zstdChunk(kSettings, body)}));
    auto record = std::make_unique<SettingsRecord>();
    uint64_t offset = 0;
    ASSERT_EQ(readSettings(scene.reader, *record, offset), SceneOk);
    for (const Field& f : fields) {
        const char16_t* text =
            reinterpret_cast<const char16_t*>(reinterpret_cast<const uint8_t*>(record.get()) + f.offset);
        EXPECT_EQ(wideField(text, f.bytes / 2), wide("t" + std::to_string(f.offset))) << std::hex << f.offset;
    }
    EXPECT_EQ(std::u16string(record->CachePath), wide("t" + std::to_string(0x9234)));
}

} // namespace

// Render settings: the defaults, and the first settings chunk read over them.
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

using namespace scene_writer;

namespace {

std::unique_ptr<SettingsRecord> filledWith(uint8_t byte) {
    auto record = std::make_unique<SettingsRecord>();
    std::memset(record.get(), byte, sizeof *record);
    return record;
}

SceneStatus readSettingsFrom(const Bytes& bytes, SettingsRecord& record, uint64_t* offset = nullptr) {
    return readFirst<SettingsRecord>(readSettings, bytes, record, offset);
}

SettingsPlan settingsWithIterations(int32_t iterations) {
    SettingsPlan plan;
    plan.maxIterations = iterations;
    return plan;
}

TEST(Settings, InitLeavesNothingOfWhatWasThere) {
    auto fromZero = filledWith(0), fromGarbage = filledWith(0xCD);
    initSettings(*fromZero);
    initSettings(*fromGarbage);
    EXPECT_EQ(std::memcmp(fromZero.get(), fromGarbage.get(), sizeof(SettingsRecord)), 0);
    EXPECT_EQ(fromZero->MaxIterations, 256);
    EXPECT_EQ(fromZero->StartingVolumetricMaterial, -1);
    EXPECT_EQ(fromZero->Channels[31].MaxCryptomatteSamples, 6);
    EXPECT_GT(fromZero->TextureChannels[7][1].ts, fromZero->TextureChannels[7][1].te) << "switched off";
}

TEST(Settings, OnlyTheFirstChunkCounts) {
    SceneFile file;
    file.add(storedChunk(kTexMap, texMapBody(1, 0, "m")));
    size_t first = file.add(zstdChunk(kSettings, settingsBody(settingsWithIterations(111))));
    file.add(zstdChunk(kSettings, settingsBody(settingsWithIterations(222))));
    auto record = filledWith(0);
    uint64_t offset = 0;
    ASSERT_EQ(readSettingsFrom(file.build(), *record, &offset), SceneOk);
    EXPECT_EQ(record->MaxIterations, 111);
    EXPECT_EQ(offset, file.offsetOf(first + 1));
    EXPECT_EQ(record->ImageSizeX, 640);
    EXPECT_EQ(std::u16string(record->OutputName), u"frame");
}

TEST(Settings, MissingChunkAndWrongVersion) {
    auto record = filledWith(0);
    EXPECT_EQ(readSettingsFrom(sceneOf({storedChunk(kTexMap, texMapBody(1, 0, "m"))}), *record),
              SceneEndOfChunks);
    OpenScene scene(sceneOf({storedChunk(kSettings, settingsBody({}), 101)}));
    uint64_t offset = 0;
    EXPECT_EQ(readSettings(scene.reader, *record, offset), SceneBadVersion);
    EXPECT_EQ(scene.reader.bodyReadCount, 0u);
}

TEST(Settings, ShortBodyLeavesTheDefaultsBehindIt) {
    Bytes body = settingsBody(settingsWithIterations(5));
    body.resize(0x40);
    auto record = filledWith(0);
    ASSERT_EQ(readSettingsFrom(sceneOf({storedChunk(kSettings, body)}), *record), SceneOk);
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
        auto record = filledWith(0);
        ASSERT_EQ(readSettingsFrom(sceneOf({storedChunk(kSettings, body)}), *record), SceneOk);
        for (size_t i = 0; i < 32; ++i) {
            const AovChannel& channel = record->Channels[i];
            const std::string alt = "alt" + std::to_string(i);
            if (i < c.converted) {
                EXPECT_EQ(std::u16string(channel.name), wide("aov" + std::to_string(i))) << i;
                EXPECT_EQ(std::u16string(channel.secondText), wide(alt)) << i;
            } else {
                EXPECT_TRUE(std::all_of(std::begin(channel.name), std::end(channel.name),
                                        [](char16_t u) { return !u; }))
                    << c.numChannels << " " << i;
                EXPECT_EQ(std::string(reinterpret_cast<const char*>(channel.secondText)), alt)
                    << "as the file has it";
            }
        }
    }
}

TEST(Settings, TextFieldsAreWidened) {
    const std::pair<uint32_t, uint32_t> fields[] = {{0x7EB0, 0x300}, {0x84C8, 0x300}, {0x87C8, 128},
                                                    {0x8848, 0x300}, {0x8BB4, 0x300}, {0x8EB4, 128},
                                                    {0x8F34, 0x300}, {0x9234, 0x300}, {0x9534, 0x300}};
    Bytes body = settingsBody({});
    for (const auto& [at, bytes] : fields)
        putText(body, at, bytes, "t" + std::to_string(at));
    auto record = filledWith(0);
    ASSERT_EQ(readSettingsFrom(sceneOf({zstdChunk(kSettings, body)}), *record), SceneOk);
    for (const auto& [at, bytes] : fields) {
        const char16_t* text = reinterpret_cast<const char16_t*>(bytesOf(*record) + at);
        EXPECT_EQ(wideField(text, bytes / 2), wide("t" + std::to_string(at))) << std::hex << at;
    }
    EXPECT_EQ(std::u16string(record->CachePath), wide("t" + std::to_string(0x9234)));
}

} // namespace

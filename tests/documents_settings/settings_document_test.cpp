#include "documents/settings_document.h"

#include "tests/documents_settings/settings_test_support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace settings_test;

namespace {

constexpr uint8_t kFill = 0xA5;
constexpr uint32_t kFillWord = 0xA5A5A5A5;

std::unique_ptr<SettingsRecord> filledSettings() {
    auto record = std::make_unique<SettingsRecord>();
    std::memset(record.get(), kFill, sizeof *record);
    return record;
}

class SettingsDocument : public ::testing::Test {
  protected:
    TempFolder folder;
    TableNames names;

    bool apply(SettingsRecord& record, const std::string& body) {
        const std::u16string path = folder.write("settings.xml", "<TaviSettings>" + body + "</TaviSettings>");
        return ApplySettingsDocument(&record, path.c_str(), &names);
    }
};

// ---- The scratch byte --------------------------------------------------------------------------

struct ScratchCase {
    const char* name;
    std::string body;
    std::vector<std::pair<uint32_t, uint32_t>> expected; // offset, value
};

TEST_F(SettingsDocument, AbsentBoolsRepeatTheBoolReadBeforeThem) {
    const std::vector<ScratchCase> cases = {
        {"a bool left out repeats the last one",
         "<Output><SaveJPEG value=\"true\"/><SaveEXR value=\"false\"/></Output>",
         {{0x8B48, 1}, {0x8B4C, 1}, {0x8B50, 0}, {0x8B54, 0}}},
        {"an empty value counts as absent",
         "<Output><SaveJPEG value=\"false\"/><SaveTIFF value=\"Y\"/><SaveEXR value=\"\"/></Output>",
         {{0x8B48, 0}, {0x8B4C, 1}, {0x8B50, 1}, {0x8B54, 1}}},
        {"the pass starts from false",
         "<Output><SaveEXR value=\"t\"/></Output>",
         {{0x8B48, 0}, {0x8B4C, 0}, {0x8B50, 1}, {0x8B54, 1}}},
        {"the byte crosses whole sections",
         "<Output><SaveHTXtextures value=\"1\"/></Output>",
         {{0x1C, 1},
          {0x34, 1},
          {0x40, 1},
          {0x44, 1},
          {0x4C, 1},
          {0x50, 1},
          {0x58, 1},
          {0x5C, 1},
          {0x90, 1},
          {0x98, 1},
          {0xA0, 1},
          {0xA4, 1}}},
        {"it starts again from false after the texture channels",
         "<Output><SaveJPEG value=\"true\"/></Output>",
         {{0x34, 1}, {0x2910, 0}, {0x2944, 0}, {0x2974, 0}, {0x8B84, 0}, {0x8B90, 0}, {0x8B70, 0}}},
        {"a quiet bool that is present leaves the byte alone",
         "<Tracing><ForceStartingMedium value=\"true\"/><StartingMediumDependsOnPixel "
         "value=\"false\"/></Tracing>",
         {{0x2940, 1}, {0x2944, 0}, {0x2974, 1}, {0x8B78, 1}, {0x297C, 1}, {0x298C, 1}, {0x8B84, 1}}},
        {"a quiet true does not set it either",
         "<Tracing><ForceStartingMedium value=\"no\"/><StartingMediumDependsOnPixel value=\"yes\"/></Tracing>"
         "<Textures><LinearizeTextures value=\"true\"/></Textures>",
         {{0x2940, 0}, {0x2944, 1}, {0x2974, 1}, {0x8B78, 0}, {0x297C, 0}, {0x8B84, 0}}},
        {"a quiet bool that is absent copies the byte",
         "<Tracing><UseFakedShadows value=\"true\"/></Tracing>",
         {{0x2934, 1}, {0x293C, 1}, {0x2940, 1}, {0x2944, 1}}},
        {"later sections and AOV follow the byte too",
         "<System><NoAffinityMask value=\"true\"/></System>",
         {{0x8B6C, 0}, {0x8B70, 1}, {0x29B8, 0}, {0x29C4, 1}, {0x29C8, 1}, {0x29CC, 1}}},
    };
    for (const ScratchCase& c : cases) {
        SCOPED_TRACE(c.name);
        auto record = filledSettings();
        ASSERT_TRUE(apply(*record, c.body));
        for (const auto& [offset, value] : c.expected)
            EXPECT_EQ(wordAt(*record, offset), value) << std::hex << offset;
    }
}

// ---- Strings and numbers -----------------------------------------------------------------------

TEST_F(SettingsDocument, StringsAreClearedWhenAbsentAndCutWhenLong) {
    auto record = filledSettings();
    setText(*record, 0x84C8, u"scene/output");
    setText(*record, 0x87C8, u"frame");
    setText(*record, 0x8848, u"scene/htx");
    setText(*record, 0x9234, u"scene/cache");
    const std::string longName(100, 'n');
    ASSERT_TRUE(apply(*record, "<System><CachePath value=\"caf\xC3\xA9/\xE6\x9C\xA8\"/></System>"
                               "<Textures><TexturePath value=\"" +
                                   longName + "\"/></Textures>"));
    EXPECT_EQ(textAt(*record, 0x84C8, 384), "");
    EXPECT_EQ(textAt(*record, 0x87C8, 64), "");
    EXPECT_EQ(textAt(*record, 0x8848, 384), "");
    EXPECT_EQ(textAt(*record, 0x9234, 384), "caf\xC3\xA9/\xE6\x9C\xA8");
    EXPECT_EQ(textAt(*record, 0x8F34, 384), longName) << "fits in 384";

    setText(*record, 0x8848, u"scene/htx");
    ASSERT_TRUE(apply(*record, "<Output><OutputName value=\"" + longName + "\"/></Output>"));
    EXPECT_EQ(textAt(*record, 0x87C8, 64), std::string(63, 'n'));
    // The next field was cleared by its first character only: the cut did not run into it.
    EXPECT_EQ(textAt(*record, 0x8848, 384), "");
    EXPECT_EQ(textAt(*record, 0x8848 + 2, 383), "cene/htx");
}

TEST_F(SettingsDocument, NumbersAndEnumsKeepTheirValueWhenAbsentOrUnknown) {
    auto record = filledSettings();
    struct Case {
        const char* body;
        uint32_t offset;
        uint32_t expected;
    };
    const Case cases[] = {
        {"", 0x8, kFillWord},                                            // int absent
        {"<Quality><MaxIterations/></Quality>", 0x8, kFillWord},         // no value attribute
        {"<Quality><MaxIterations value=\"0x20\"/></Quality>", 0x8, 32}, // integer rule
        {"<Quality><MaxIterations value=\"99999999999\"/></Quality>", 0x8, 0x7FFFFFFF},
        {"", 0x0, kFillWord}, // float absent
        {"<Quality><MinNoise value=\"0.1\"/></Quality>", 0x0, bitsOf(0.1f)},
        {"<Sampling><ReconstructionFilter value=\"NOPE\"/></Sampling>", 0x88, kFillWord},
        {"<Sampling><ReconstructionFilter value=\"softbell\"/></Sampling>", 0x88, 15},
        {"<Tracing><Integrator value=\"vcm\"/></Tracing>", 0x28C4, 2},
        {"<Tracing><Integrator value=\"\"/></Tracing>", 0x28C4, kFillWord}, // no empty word in the table
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.body);
        std::memset(record.get(), kFill, sizeof *record);
        ASSERT_TRUE(apply(*record, c.body));
        EXPECT_EQ(wordAt(*record, c.offset), c.expected);
    }
}

TEST_F(SettingsDocument, StartingVolumetricMaterialGoesThroughTheNameInterface) {
    auto record = filledSettings();
    names.materials[u"Smoke"] = 17;
    ASSERT_TRUE(apply(*record, "<Tracing><StartingVolumetricMaterial name=\"Smoke\"/></Tracing>"));
    EXPECT_EQ(intAt(*record, 0x9844), 17);
    ASSERT_TRUE(apply(*record, "<Tracing/>"));
    EXPECT_EQ(intAt(*record, 0x9844), -1);
    const std::vector<std::string> expected = {"MaterialId Smoke", "MaterialId "};
    EXPECT_EQ(names.calls, expected);
}

// ---- The whole pass ----------------------------------------------------------------------------

TEST_F(SettingsDocument, UnreadableDocumentsFailAndLeaveTheRecord) {
    const std::u16string broken = folder.write("broken.xml", "<TaviSettings><Quality>");
    const std::u16string missing = folder.pathOf("missing.xml");
    const std::u16string empty = folder.write("empty.xml", "");
    for (const std::u16string& path : {broken, missing, empty}) {
        auto record = filledSettings();
        auto before = filledSettings();
        EXPECT_FALSE(ApplySettingsDocument(record.get(), path.c_str(), &names)) << narrow(path);
        EXPECT_EQ(std::memcmp(record.get(), before.get(), sizeof *record), 0);
    }
    EXPECT_TRUE(names.calls.empty());
}

TEST_F(SettingsDocument, OtherRootStillRunsThePass) {
    auto record = filledSettings();
    setText(*record, 0x84C8, u"kept?");
    const std::u16string path = folder.write(
        "settings.xml", "<RenderSettings><Quality><MaxIterations value=\"5\"/></Quality></RenderSettings>");
    ASSERT_TRUE(ApplySettingsDocument(record.get(), path.c_str(), &names));
    EXPECT_EQ(wordAt(*record, 0x8), kFillWord) << "numbers stay";
    EXPECT_EQ(wordAt(*record, 0x8B48), 0u) << "bools take the scratch byte";
    EXPECT_EQ(wordAt(*record, 0x2944), 0u);
    EXPECT_EQ(textAt(*record, 0x84C8, 384), "") << "strings are cleared";
    EXPECT_EQ(wordAt(*record, 0x29B8), 0u) << "AOV is switched off";
    EXPECT_EQ(wordAt(*record, 0x29BC), 0u);
    EXPECT_EQ(intAt(*record, 0x9844), -1);
    EXPECT_EQ(wordAt(*record, 0x7050 + 0x80), kFillWord) << "the tone operator stays";
}

// ---- The spectrum table file -------------------------------------------------------------------

TEST_F(SettingsDocument, SpectrumFileIsReadOnlyWhenTheDocumentAsksForIt) {
    const std::u16string table = folder.write("cie.csv", "380, 0.1, 0.2, 0.3\n390,0.4,0.5,0.6\n");
    const std::string tablePath = folder.narrowPathOf("cie.csv");
    const std::string missingPath = folder.narrowPathOf("none.csv");
    struct Case {
        const char* name;
        std::string colors;
        uint32_t expectedMode;
        bool tableRead;   // entries 0 and 1 hold the file's records
        bool tableZeroed; // the whole table is zero
    };
    const std::vector<Case> cases = {
        {"FILE in capitals", "<XYZtoRGB value=\"FILE\"/><XYZtoRGB_filename value=\"" + tablePath + "\"/>", 2,
         true, false},
        {"a file that isn't there falls back",
         "<XYZtoRGB value=\"file\"/><XYZtoRGB_filename value=\"" + missingPath + "\"/>", 0, false, true},
        {"no word: the scene's mode and table stay", "<XYZtoRGB_filename value=\"" + tablePath + "\"/>", 2,
         false, false},
        {"an empty path does nothing", "<XYZtoRGB value=\"file\"/><XYZtoRGB_filename value=\"\"/>", 2, false,
         false},
        {"no path does nothing", "<XYZtoRGB value=\"file\"/>", 2, false, false},
        {"another word ignores the path",
         "<XYZtoRGB value=\"cie2006\"/><XYZtoRGB_filename value=\"" + tablePath + "\"/>", 1, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        auto record = filledSettings();
        setWord(*record, 0x8D0, 2);
        ASSERT_TRUE(apply(*record, "<Colors>" + c.colors + "</Colors>"));
        EXPECT_EQ(wordAt(*record, 0x8D0), c.expectedMode);
        const float* entries = &record->SpectrumTable[0][0];
        if (c.tableRead) {
            const float expected[8] = {0.1f, 0.2f, 0.3f, 380.0f, 0.4f, 0.5f, 0.6f, 390.0f};
            for (int i = 0; i < 8; ++i)
                EXPECT_EQ(entries[i], expected[i]) << i;
            EXPECT_EQ(entries[8], 0.0f) << "the rest is zeroed";
        } else if (c.tableZeroed) {
            for (size_t i = 0; i < kSpectrumEntries * 4; ++i)
                ASSERT_EQ(entries[i], 0.0f) << i;
        } else {
            EXPECT_EQ(wordAt(*record, 0x8D4), kFillWord);
            EXPECT_EQ(wordAt(*record, 0x8D4 + 511 * 16 - 4), kFillWord);
        }
    }
}

// ---- Texture channels --------------------------------------------------------------------------

TEST_F(SettingsDocument, MaxTextureChannelsIsClamped) {
    struct Case {
        const char* element;
        int32_t before;
        int32_t after;
    };
    const Case cases[] = {
        {"<TextureChannels><MaxTextureChannels value=\"12\"/></TextureChannels>", 2, 8},
        {"<TextureChannels><MaxTextureChannels value=\"-1\"/></TextureChannels>", 2, 0},
        {"<TextureChannels><MaxTextureChannels value=\"5\"/></TextureChannels>", 2, 5},
        {"<TextureChannels><MaxTextureChannels value=\"8\"/></TextureChannels>", 2, 8},
        {"<TextureChannels/>", 11, 8}, // the scene's count, clamped
        {"<TextureChannels/>", 3, 3},
        {"", 11, 11}, // without the element nothing happens
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.element);
        auto record = filledSettings();
        record->MaxTextureChannels = c.before;
        ASSERT_TRUE(apply(*record, std::string("<Colors>") + c.element + "</Colors>"));
        EXPECT_EQ(intAt(*record, 0xCC), c.after);
    }
}

// Offset of segment `segment` of texture channel `channel`.
uint32_t channelSegment(uint32_t channel, uint32_t segment) {
    return 0xD0 + channel * 8 * 32 + segment * 32;
}

TEST_F(SettingsDocument, TextureChannelsReadTheirSegmentsWithDefaults) {
    auto record = filledSettings();
    const std::string element =
        "<TextureChannels><MaxTextureChannels value=\"3\"/>"
        "<CHANNEL id=\"1\">"
        "<Segment id=\"0\" ts=\"0.5\" t1=\"0.6\" t2=\"0.7\" te=\"0.8\" vs=\"1\" v1=\"2\" v2=\"3\" ve=\"4\"/>"
        "<segment id=\"5\" ts=\"\" v2=\"9\"/>"
        "<Segment id=\"8\" ts=\"7\"/><Segment ts=\"7\"/><Segment id=\"-1\" ts=\"7\"/>"
        "</CHANNEL>"
        "<Channel id=\"3\"><Segment id=\"0\" ts=\"7\"/></Channel>"
        "<Channel id=\"\"><Segment id=\"0\" ts=\"7\"/></Channel>"
        "<Channel><Segment id=\"0\" ts=\"7\"/></Channel>"
        "<Other id=\"0\"><Segment id=\"0\" ts=\"7\"/></Other>"
        "</TextureChannels>";
    ASSERT_TRUE(apply(*record, "<Colors>" + element + "</Colors>"));
    EXPECT_EQ(intAt(*record, 0xCC), 3);
    // Channel 1: every segment marked unused first, then 0 and 5 read.
    const float first[8] = {0.5f, 0.6f, 0.7f, 0.8f, 1, 2, 3, 4};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(floatAt(*record, channelSegment(1, 0) + 4 * i), first[i]) << i;
    const float defaults[8] = {0, 0, 1, 1, 0, 0, 9, 0};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(floatAt(*record, channelSegment(1, 5) + 4 * i), defaults[i]) << i;
    for (uint32_t segment : {1u, 2u, 3u, 4u, 6u, 7u}) {
        EXPECT_EQ(floatAt(*record, channelSegment(1, segment)), 1.0f) << segment;
        EXPECT_EQ(floatAt(*record, channelSegment(1, segment) + 12), 0.0f) << segment;
        EXPECT_EQ(wordAt(*record, channelSegment(1, segment) + 16), kFillWord) << segment;
    }
    // Channel 3 lies beyond the count, and the others have no valid id: nothing else changed.
    for (uint32_t channel : {0u, 2u, 3u, 7u}) {
        for (uint32_t offset = 0; offset < 8 * 32; offset += 4) {
            ASSERT_EQ(wordAt(*record, channelSegment(channel, 0) + offset), kFillWord)
                << channel << " " << offset;
        }
    }
}

TEST_F(SettingsDocument, ChannelEightIsSkippedAtTheFullCount) {
    auto record = filledSettings();
    const std::string element =
        "<TextureChannels><MaxTextureChannels value=\"8\"/>"
        "<Channel id=\"8\"><Segment id=\"0\" ts=\"7\"/></Channel>"
        "<Channel id=\"7\"><Segment id=\"7\" ts=\"0.25\"/></Channel></TextureChannels>";
    ASSERT_TRUE(apply(*record, "<Colors>" + element + "</Colors>"));
    EXPECT_EQ(floatAt(*record, channelSegment(7, 7)), 0.25f);
    EXPECT_EQ(floatAt(*record, channelSegment(7, 0)), 1.0f);
    // Past channel 7 lies the spectrum mode, which a channel 8 would overwrite.
    EXPECT_EQ(wordAt(*record, 0x8D0), kFillWord);
}

} // namespace

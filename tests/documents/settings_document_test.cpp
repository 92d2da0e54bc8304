// The settings document: ten render sections read over the scene's record in a fixed order, one
// scratch byte carrying the last bool read through all of them, and the spectrum file and
// texture channels behind Colors. ToneOperator and AOV have tests of their own.
#include "documents/settings_document.h"

#include "tests/documents/settings_test_support.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

using namespace settings_test;

namespace {

constexpr uint32_t kTone = 0x7050;

class SettingsDocument : public ::testing::Test {
  protected:
    TempFolder folder;
    RecordingNames names;
    std::unique_ptr<SettingsRecord> record = std::make_unique<SettingsRecord>();

    void SetUp() override { refill(); }
    void refill() { std::memset(record.get(), kFill, sizeof *record); }
    bool apply(const std::string& body) {
        const std::u16string path = folder.write("settings.xml", "<TaviSettings>" + body + "</TaviSettings>");
        return ApplySettingsDocument(record.get(), path.c_str(), &names);
    }
};

// Keys where a slip is likely: offsets out of reading order, the format's own spellings (a usual
// spelling, or another case, is no key), enum words in any case, numbers by the integer rule.
TEST_F(SettingsDocument, KeysLandAtTheirOffsetsAsTheFormatSpellsThem) {
    // clang-format off
    const std::vector<std::tuple<std::string, uint32_t, uint32_t>> cases = {
        {"<RenderRegion><RegionSizeY value='7'/></RenderRegion>", 0x84C4, 7},
        {"<Quality><MinNoise value='0.1'/></Quality>", 0x0, bitsOf(0.1f)},
        {"<Quality><NumEmitterSamples value='3'/></Quality>", 0x18, 3},
        {"<Quality><MaxIterations value='0x20'/></Quality>", 0x8, 32},
        {"<Quality><MaxIterations value='99999999999'/></Quality>", 0x8, 0x7FFFFFFF},
        {"<Quality><MaxIterations/></Quality>", 0x8, kFillWord},
        {"<Quality><minNoise value='42'/></Quality>", 0x0, kFillWord},
        {"<quality><MinNoise value='42'/></quality>", 0x0, kFillWord},
        {"<Adaptation><UseImageNoiseAdaptation value='2'/></Adaptation>", 0x48, 2},
        {"<Adaptation><PathAdaptationGB value='5'/></Adaptation>", 0x68, 5},
        {"<Adaptation><NumberAdaptationPhases value='6'/></Adaptation>", 0x64, 6},
        {"<Sampling><ReconstructionFilter value='gaussian_blackman'/></Sampling>", 0x88, 11},
        {"<Sampling><ReconstructionFilter value='softbell'/></Sampling>", 0x88, 15},
        {"<Sampling><ReconstructionFilter value='NOPE'/></Sampling>", 0x88, kFillWord},
        {"<Sampling><AddChaos value='2'/></Sampling>", 0x9C, bitsOf(2)},
        {"<NoiseFiltration><NoiseFilterType value='NVIDIA'/></NoiseFiltration>", 0xA8, 5},
        {"<NoiseFiltration><ClampIndirectSpecular value='2'/></NoiseFiltration>", 0xBC, bitsOf(2)},
        {"<Colors><MinWavelenght value='42'/></Colors>", 0xC0, bitsOf(42)},
        {"<Colors><MinWavelength value='42'/></Colors>", 0xC0, kFillWord},
        {"<Colors><MaxWavelenght value='43'/></Colors>", 0xC4, bitsOf(43)},
        {"<Colors><RGBtoXYZ value='HTSS7'/></Colors>", 0xC8, 3},
        {"<Colors><XYZtoRGB value='Cie2006'/></Colors>", 0x8D0, 1},
        {"<Tracing><Integrator value='vcm'/></Tracing>", 0x28C4, 2},
        {"<Tracing><Integrator value=''/></Tracing>", 0x28C4, kFillWord},
        {"<Tracing><CausticMinSpecularsTotal value='4'/></Tracing>", 0x28F0, 4},
        {"<Tracing><CausticMaxSpecularsTotal value='5'/></Tracing>", 0x28E4, 5},
        {"<Tracing><MaxDepthSDS value='6'/></Tracing>", 0x28D8, 6},
        {"<Tracing><BspType value='compromise'/></Tracing>", 0x292C, 2},
        {"<Tracing><BetterBspQuality value='GOOD'/></Tracing>", 0x2930, 1},
        {"<Tracing><SubdivisonVisiblePixels value='2'/></Tracing>", 0x295C, bitsOf(2)},
        {"<Tracing><SubdivisionVisiblePixels value='2'/></Tracing>", 0x295C, kFillWord},
        {"<Tracing><MetricToSceneUnitsFactor value='3'/></Tracing>", 0x2968, bitsOf(3)},
        {"<Tracing><StartingVolumetricMaterial name='Smoke'/></Tracing>", 0x9844, 100},
        {"<Tracing/>", 0x9844, 0xFFFFFFFF},
        {"<Textures><TextureFilter value='Ellipse'/></Textures>", 0x2978, 2},
        {"<Textures><MipmapFilter value='LANCZOS12'/></Textures>", 0x2984, 9},
        {"<Textures><FastMipmapGenerationIfLargerThan value='4'/></Textures>", 0x2980, 4},
        {"<Textures><AnisotropyLevel value='5'/></Textures>", 0x2990, 5},
        {"<Textures><TextureGAMMA value='2'/></Textures>", 0x2988, kFillWord},
        {"<System><MaxThreads value='4'/></System>", 0x8B64, 4},
        {"<System><TextureCacheSize value='5'/></System>", 0x8B7C, 5},
        {"<System><AffinityShift value='6'/></System>", 0x8B74, 6},
        {"<ToneOperator><GlareNrays value='6'/></ToneOperator>", kTone + 0x78, 6},
        {"<ToneOperator><Filmic_shoulderAngle value='2'/></ToneOperator>", kTone + 0x98, bitsOf(2)},
        {"<ToneOperator><Filmic_ToeLength value='2'/></ToneOperator>", kTone + 0x8C, kFillWord},
        {"<ToneOperator><SharpenThreshold value='3'/></ToneOperator>", kTone + 0xE5C, bitsOf(3)},
        {"<AOV><ChannelShare value='separate'/><Channels/></AOV>", 0x29C0, 2},
    };
    // clang-format on
    for (const auto& [body, offset, expected] : cases) {
        SCOPED_TRACE(body);
        refill();
        ASSERT_TRUE(apply(body));
        EXPECT_EQ(wordAt(*record, offset), expected);
    }
}

// A bool that the document leaves out repeats the last bool read, across sections. Quiet bools
// take the byte when absent but don't set it when present.
TEST_F(SettingsDocument, AbsentBoolsRepeatTheBoolReadBeforeThem) {
    // clang-format off
    const std::vector<std::pair<std::string, std::vector<std::pair<uint32_t, uint32_t>>>> cases = {
        // a bool left out repeats the last one
        {"<Output><SaveJPEG value='true'/><SaveEXR value='false'/></Output>",
         {{0x8B48, 1}, {0x8B4C, 1}, {0x8B50, 0}, {0x8B54, 0}}},
        // an empty value counts as absent
        {"<Output><SaveJPEG value='false'/><SaveTIFF value='Y'/><SaveEXR value=''/></Output>",
         {{0x8B48, 0}, {0x8B4C, 1}, {0x8B50, 1}, {0x8B54, 1}}},
        // the pass starts from false
        {"<Output><SaveEXR value='t'/></Output>", {{0x8B48, 0}, {0x8B4C, 0}, {0x8B50, 1}, {0x8B54, 1}}},
        // the byte crosses whole sections
        {"<Output><SaveHTXtextures value='1'/></Output>",
         {{0x1C, 1}, {0x34, 1}, {0x40, 1}, {0x44, 1}, {0x4C, 1}, {0x50, 1}, {0x58, 1}, {0x5C, 1}, {0x90, 1},
          {0x98, 1}, {0xA0, 1}, {0xA4, 1}}},
        // it starts again from false after the texture channels
        {"<Output><SaveJPEG value='true'/></Output>",
         {{0x34, 1}, {0x2910, 0}, {0x2944, 0}, {0x2974, 0}, {0x8B84, 0}, {0x8B90, 0}, {0x8B70, 0}}},
        // a quiet bool that is present leaves the byte alone
        {"<Tracing><ForceStartingMedium value='true'/>"
         "<StartingMediumDependsOnPixel value='false'/></Tracing>",
         {{0x2940, 1}, {0x2944, 0}, {0x2974, 1}, {0x8B78, 1}, {0x297C, 1}, {0x298C, 1}, {0x8B84, 1}}},
        // a quiet true does not set it either
        {"<Tracing><ForceStartingMedium value='no'/><StartingMediumDependsOnPixel value='yes'/></Tracing>"
         "<Textures><LinearizeTextures value='true'/></Textures>",
         {{0x2940, 0}, {0x2944, 1}, {0x2974, 1}, {0x8B78, 0}, {0x297C, 0}, {0x8B84, 0}}},
        // a quiet bool that is absent copies the byte
        {"<Tracing><UseFakedShadows value='true'/></Tracing>",
         {{0x2934, 1}, {0x293C, 1}, {0x2940, 1}, {0x2944, 1}}},
        // later sections and AOV follow the byte too
        {"<System><NoAffinityMask value='true'/></System>",
         {{0x8B6C, 0}, {0x8B70, 1}, {0x29B8, 0}, {0x29C4, 1}, {0x29C8, 1}, {0x29CC, 1}}},
    };
    // clang-format on
    for (const auto& [body, expected] : cases) {
        SCOPED_TRACE(body);
        refill();
        ASSERT_TRUE(apply(body));
        for (const auto& [offset, value] : expected)
            EXPECT_EQ(wordAt(*record, offset), value) << std::hex << offset;
    }
}

TEST_F(SettingsDocument, StringsAreClearedWhenAbsentAndCutWhenLong) {
    setText(*record, 0x84C8, u"scene/output");
    setText(*record, 0x8848, u"scene/htx");
    const std::string longName(100, 'n');
    ASSERT_TRUE(
        apply("<System><CachePath value='caf\xC3\xA9/\xE6\x9C\xA8'/></System><Textures><TexturePath value='" +
              longName + "'/></Textures><AOV><Path value='p'/><Name value='n'/><Channels/></AOV>"));
    EXPECT_EQ(textAt(*record, 0x84C8, 384), "");
    EXPECT_EQ(textAt(*record, 0x9234, 384), "caf\xC3\xA9/\xE6\x9C\xA8");
    EXPECT_EQ(textAt(*record, 0x8F34, 384), longName) << "fits in 384";
    EXPECT_EQ(textAt(*record, 0x8BB4, 384), "p");
    EXPECT_EQ(textAt(*record, 0x8EB4, 64), "n");

    setText(*record, 0x8848, u"scene/htx");
    ASSERT_TRUE(apply("<Output><OutputName value='" + longName + "'/></Output>"));
    EXPECT_EQ(textAt(*record, 0x87C8, 64), std::string(63, 'n'));
    // The next field was cleared by its first character only: the cut did not run into it.
    EXPECT_EQ(textAt(*record, 0x8848, 384), "");
    EXPECT_EQ(textAt(*record, 0x8848 + 2, 383), "cene/htx");
}

TEST_F(SettingsDocument, AnotherRootStillRunsThePass) {
    setText(*record, 0x84C8, u"kept?");
    const std::u16string path = folder.write(
        "settings.xml", "<RenderSettings><Quality><MaxIterations value='5'/></Quality></RenderSettings>");
    ASSERT_TRUE(ApplySettingsDocument(record.get(), path.c_str(), &names));
    EXPECT_EQ(wordAt(*record, 0x8), kFillWord) << "numbers stay";
    EXPECT_EQ(wordAt(*record, 0x8B48), 0u) << "bools take the scratch byte";
    EXPECT_EQ(wordAt(*record, 0x2944), 0u);
    EXPECT_EQ(textAt(*record, 0x84C8, 384), "") << "strings are cleared";
    EXPECT_EQ(wordAt(*record, 0x29B8), 0u) << "AOV is switched off";
    EXPECT_EQ(wordAt(*record, 0x29BC), 0u);
    EXPECT_EQ(intAt(*record, 0x9844), -1);
    EXPECT_EQ(wordAt(*record, kTone + 0x80), kFillWord) << "the tone operator stays";
}

TEST_F(SettingsDocument, SpectrumFileIsReadOnlyWhenTheDocumentAsksForIt) {
    folder.write("cie.csv", "380, 0.1, 0.2, 0.3\n390,0.4,0.5,0.6\n");
    const std::string table = utf16ToUtf8(folder.pathOf("cie.csv"));
    const std::string missing = utf16ToUtf8(folder.pathOf("none.csv"));
    enum Table { Read, Zeroed, Kept };
    const std::tuple<std::string, uint32_t, Table> cases[] = {
        {"<XYZtoRGB value='FILE'/><XYZtoRGB_filename value='" + table + "'/>", 2, Read},
        // a file that isn't there falls back to the first observer
        {"<XYZtoRGB value='file'/><XYZtoRGB_filename value='" + missing + "'/>", 0, Zeroed},
        // without the word, or without a path, the scene's mode and table stay
        {"<XYZtoRGB_filename value='" + table + "'/>", 2, Kept},
        {"<XYZtoRGB value='file'/><XYZtoRGB_filename value=''/>", 2, Kept},
        {"<XYZtoRGB value='file'/>", 2, Kept},
        {"<XYZtoRGB value='cie2006'/><XYZtoRGB_filename value='" + table + "'/>", 1, Kept},
    };
    for (const auto& [colors, mode, expected] : cases) {
        SCOPED_TRACE(colors);
        refill();
        setWord(*record, 0x8D0, 2);
        ASSERT_TRUE(apply("<Colors>" + colors + "</Colors>"));
        EXPECT_EQ(wordAt(*record, 0x8D0), mode);
        const float* entries = &record->SpectrumTable[0][0];
        const float read[9] = {0.1f, 0.2f, 0.3f, 380.0f, 0.4f, 0.5f, 0.6f, 390.0f, 0.0f};
        for (size_t i = 0; i < kSpectrumEntries * 4; ++i) {
            const uint32_t value =
                expected == Kept ? kFillWord : bitsOf(expected == Read && i < 9 ? read[i] : 0.0f);
            ASSERT_EQ(bitsOf(entries[i]), value) << i;
        }
    }
}

TEST_F(SettingsDocument, MaxTextureChannelsIsClamped) {
    const std::tuple<const char*, int32_t, int32_t> cases[] = {
        {"<TextureChannels><MaxTextureChannels value='12'/></TextureChannels>", 2, 8},
        {"<TextureChannels><MaxTextureChannels value='-1'/></TextureChannels>", 2, 0},
        {"<TextureChannels><MaxTextureChannels value='5'/></TextureChannels>", 2, 5},
        {"<TextureChannels><MaxTextureChannels value='8'/></TextureChannels>", 2, 8},
        {"<TextureChannels/>", 11, 8}, // the scene's count, clamped
        {"<TextureChannels/>", 3, 3},
        {"", 11, 11}, // without the element nothing happens
    };
    for (const auto& [element, before, after] : cases) {
        SCOPED_TRACE(element);
        record->MaxTextureChannels = before;
        ASSERT_TRUE(apply(std::string("<Colors>") + element + "</Colors>"));
        EXPECT_EQ(intAt(*record, 0xCC), after);
    }
}

// Offset of segment `segment` of texture channel `channel`.
uint32_t channelSegment(uint32_t channel, uint32_t segment) {
    return 0xD0 + channel * 8 * 32 + segment * 32;
}

TEST_F(SettingsDocument, TextureChannelsReadTheirSegmentsWithDefaultsWithinTheCount) {
    ASSERT_TRUE(
        apply("<Colors><TextureChannels><MaxTextureChannels value='3'/><CHANNEL id='1'>"
              "<Segment id='0' ts='0.5' t1='0.6' t2='0.7' te='0.8' vs='1' v1='2' v2='3' ve='4'/>"
              "<segment id='5' ts='' v2='9'/>"
              "<Segment id='8' ts='7'/><Segment ts='7'/><Segment id='-1' ts='7'/></CHANNEL>"
              "<Channel id='3'><Segment id='0' ts='7'/></Channel>"
              "<Channel id=''><Segment id='0' ts='7'/></Channel><Channel><Segment id='0' ts='7'/></Channel>"
              "<Other id='0'><Segment id='0' ts='7'/></Other></TextureChannels></Colors>"));
    EXPECT_EQ(intAt(*record, 0xCC), 3);
    // Channel 1: every segment marked unused first, then 0 and 5 read, missing attributes from
    // their defaults.
    const float read[2][8] = {{0.5f, 0.6f, 0.7f, 0.8f, 1, 2, 3, 4}, {0, 0, 1, 1, 0, 0, 9, 0}};
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(floatAt(*record, channelSegment(1, 0) + 4 * i), read[0][i]) << i;
        EXPECT_EQ(floatAt(*record, channelSegment(1, 5) + 4 * i), read[1][i]) << i;
    }
    for (uint32_t segment : {1u, 2u, 3u, 4u, 6u, 7u}) {
        EXPECT_EQ(floatAt(*record, channelSegment(1, segment)), 1.0f) << segment;
        EXPECT_EQ(floatAt(*record, channelSegment(1, segment) + 12), 0.0f) << segment;
        EXPECT_EQ(wordAt(*record, channelSegment(1, segment) + 16), kFillWord) << segment;
    }
    // Channel 3 lies beyond the count, and the others have no valid id: nothing else changed.
    for (uint32_t channel : {0u, 2u, 3u, 7u}) {
        for (uint32_t offset = 0; offset < 8 * 32; offset += 4)
            ASSERT_EQ(wordAt(*record, channelSegment(channel, 0) + offset), kFillWord)
                << channel << " " << offset;
    }

    // At the full count channel 7 is the last; a channel 8 would overwrite the spectrum mode.
    refill();
    ASSERT_TRUE(apply("<Colors><TextureChannels><MaxTextureChannels value='8'/>"
                      "<Channel id='8'><Segment id='0' ts='7'/></Channel>"
                      "<Channel id='7'><Segment id='7' ts='0.25'/></Channel></TextureChannels></Colors>"));
    EXPECT_EQ(floatAt(*record, channelSegment(7, 7)), 0.25f);
    EXPECT_EQ(floatAt(*record, channelSegment(7, 0)), 1.0f);
    EXPECT_EQ(wordAt(*record, 0x8D0), kFillWord);
}

} // namespace

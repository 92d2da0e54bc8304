// The two sections that close a settings pass: the AOV channels, counted from what the document
// lists, and the tone operator block, which only a ToneOperator element touches.
#include "documents/aov_tone_sections.h"
#include "documents/settings_document.h"

#include "tests/documents/settings_test_support.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>

using namespace settings_test;

namespace {

constexpr uint32_t kTone = 0x7050;

class AovTone : public ::testing::Test {
  protected:
    TempFolder folder;
    RecordingNames names;
    std::unique_ptr<SettingsRecord> record = std::make_unique<SettingsRecord>();

    void SetUp() override { std::memset(record.get(), kFill, sizeof *record); }

    bool apply(const std::string& body) {
        const std::u16string path = folder.write("settings.xml", "<TaviSettings>" + body + "</TaviSettings>");
        return ApplySettingsDocument(record.get(), path.c_str(), &names);
    }
    static std::string channels(int count, const std::string& element = "Channel") {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += "<" + element + " name='c" + std::to_string(i) + "'/>";
        return text;
    }
    static uint32_t channel(int index) { return 0x29D0 + 0x234 * static_cast<uint32_t>(index); }
};

TEST_F(AovTone, ChannelCountIsWhatTheDocumentLists) {
    const std::tuple<const char*, std::string, uint32_t, int32_t> cases[] = {
        {"no AOV switches the output off", "", 0, 0},
        {"AOV without Channels too", "<AOV><SaveAOV value='true'/><NumChannels value='4'/></AOV>", 0, 0},
        {"NumChannels 3 with five channels",
         "<AOV><SaveAOV value='true'/><NumChannels value='3'/><Channels>" + channels(5) + "</Channels></AOV>",
         1, 5},
        {"33 channels give 32", "<AOV><SaveAOV value='1'/><Channels>" + channels(33) + "</Channels></AOV>", 1,
         32},
        {"an empty list", "<AOV><SaveAOV value='true'/><NumChannels value='9'/><Channels/></AOV>", 1, 0},
        {"other elements don't count",
         "<AOV><SaveAOV value='yes'/><Channels>" + channels(2) + channels(3, "Chanel") +
             "<!-- c --><CHANNEL/>text<channel/></Channels></AOV>",
         1, 4},
        {"SaveAOV follows the scratch byte",
         "<System><NoCacheClear value='true'/></System><AOV><Channels>" + channels(1) + "</Channels></AOV>",
         1, 1},
    };
    for (const auto& [name, body, saveAov, count] : cases) {
        SCOPED_TRACE(name);
        std::memset(record.get(), kFill, sizeof *record);
        record->SaveAOV = 1;
        record->NumChannels = 5;
        ASSERT_TRUE(apply(body));
        EXPECT_EQ(record->SaveAOV, saveAov);
        EXPECT_EQ(record->NumChannels, count);
    }
    // The 32nd channel is the last; a 33rd would overwrite the tone operator block behind it.
    ASSERT_TRUE(apply("<AOV><Channels>" + channels(33) + "</Channels></AOV>"));
    EXPECT_EQ(textAt(*record, channel(31) + 0x1C, 64), "c31");
    EXPECT_EQ(wordAt(*record, kTone), kFillWord);
    // Channels past the count keep what they had.
    ASSERT_TRUE(apply("<AOV><Channels>" + channels(2) + "</Channels></AOV>"));
    EXPECT_EQ(textAt(*record, channel(2) + 0x1C, 64), "c2");
}

TEST_F(AovTone, AChannelStartsFromItsDefaultsAndTakesItsNameAndType) {
    const std::string longName(80, 'x');
    ASSERT_TRUE(apply("<AOV><Channels><Channel name='first'/><Channel type='DEPTH'/><Channel/>"
                      "<Channel name='" +
                      longName +
                      "' type='crypto_material'/><Channel name='' type='NOT_A_TYPE'/>"
                      "<Channel name='\xE6\x9C\xA8' type='Tex7'/></Channels></AOV>"));
    const std::pair<std::string, uint32_t> expected[] = {
        {"first", 0}, {"default_name_1", 3}, {"default_name_2", 0}, {std::string(63, 'x'), 24},
        {"", 0},      {"\xE6\x9C\xA8", 18}};
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(textAt(*record, channel(i) + 0x1C, 64), expected[i].first) << i;
        EXPECT_EQ(wordAt(*record, channel(i) + 0x0C), expected[i].second) << i;
    }
    const uint8_t* bytes = reinterpret_cast<const uint8_t*>(&record->Channels[2]);
    for (uint32_t offset = 0; offset < 0x18; ++offset)
        EXPECT_EQ(bytes[offset], 0) << offset;
    EXPECT_EQ(wordAt(record->Channels[2], 0x18), 6u);
    for (uint32_t offset = 0x1C + 2 * 15; offset < 0x21C; ++offset)
        ASSERT_EQ(bytes[offset], 0) << offset;
    const uint8_t flags[] = {0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0};
    for (uint32_t i = 0; i < sizeof flags; ++i)
        EXPECT_EQ(bytes[0x21C + i], flags[i]) << std::hex << 0x21C + i;
}

// Each flag flipped from its default alone, so that every key shows at its own byte.
TEST_F(AovTone, ChannelElementsReadEachToItsByte) {
    // clang-format off
    const std::pair<const char*, uint32_t> flags[] = {
        {"SeparateFile", 0x21C}, {"HalfFloat", 0x21D}, {"Denoise", 0x21E}, {"ToneOperator", 0x220},
        {"Diffuse", 0x221}, {"Reflection", 0x222}, {"Transmission", 0x223}, {"Coat", 0x224}, {"SSS", 0x225},
        {"Volumetric", 0x226}, {"Other", 0x227}, {"DiffuseDeny", 0x228}, {"ReflectionDeny", 0x229},
        {"TransmissionDeny", 0x22A}, {"CoatDeny", 0x22B}, {"SSSDeny", 0x22C}, {"VolumetricDeny", 0x22D},
        {"OtherDeny", 0x22E}, {"PrimaryPass", 0x22F}, {"CausticPass", 0x230}};
    // clang-format on
    ASSERT_TRUE(apply("<AOV><Channels><Channel/></Channels></AOV>"));
    const AovChannel defaults = record->Channels[0];
    for (const auto& [key, offset] : flags) {
        SCOPED_TRACE(key);
        const uint8_t flipped = byteAt(defaults, offset) ? 0 : 1;
        ASSERT_TRUE(apply(std::string("<AOV><Channels><Channel><") + key + " value='" +
                          (flipped ? "true" : "false") +
                          "'/><MaxCryptomatteSamples value='11'/></Channel></Channels></AOV>"));
        for (uint32_t b = 0x21C; b < sizeof(AovChannel); ++b)
            EXPECT_EQ(byteAt(record->Channels[0], b), b == offset ? flipped : byteAt(defaults, b))
                << std::hex << b;
        EXPECT_EQ(wordAt(record->Channels[0], 0x18), 11u);
    }
}

TEST_F(AovTone, IdMasks) {
    const std::pair<const char*, uint32_t> cases[] = {
        {"<IncludeID value='1' id3='true' sun='true'/>", 0x80000005u},
        {"<IncludeID value='4294967295'/>", 0xFFFFFFFFu},
        {"<IncludeID value='0x10' id1='false' id2='0'/>", 0x10u},
        {"<IncludeID id32='y' id1='T'/>", 0x80000001u},
        {"<IncludeID id30='true' sky='true'/>", 1u << 29},
        {"<IncludeID glow='1'/>", 1u << 30},
        {"<IncludeID id33='true' id0='true' ID5='true' id5=''/>", 0u},
        {"<IncludeID/>", 0u},
        {"", 0u},
    };
    for (const auto& [element, expected] : cases) {
        SCOPED_TRACE(element);
        ASSERT_TRUE(apply(std::string("<AOV><Channels><Channel>") + element + "</Channel></Channels></AOV>"));
        EXPECT_EQ(record->Channels[0].IncludeID, expected);
        EXPECT_EQ(record->Channels[0].ExcludeID, 0u);
    }
    std::string all = "<ExcludeID";
    for (int id = 1; id <= 32; ++id)
        all += " id" + std::to_string(id) + "='" + (id % 2 ? "true" : "false") + "'";
    ASSERT_TRUE(apply("<AOV><Channels><Channel>" + all + "/></Channel></Channels></AOV>"));
    EXPECT_EQ(record->Channels[0].ExcludeID, 0x55555555u);
    EXPECT_EQ(record->Channels[0].IncludeID, 0u);
}

TEST_F(AovTone, ToneOperatorWithoutItsElementChangesNothing) {
    setText(*record, kTone + 0xE60, u"scene.cube");
    const ToneOperatorRecord before = record->ToneOperator;
    ASSERT_TRUE(apply("<Quality/>"));
    EXPECT_EQ(std::memcmp(&record->ToneOperator, &before, sizeof before), 0);
    ReadToneOperator(pugi::xml_node(), &record->ToneOperator);
    EXPECT_EQ(std::memcmp(&record->ToneOperator, &before, sizeof before), 0);
}

// With the element, an absent Apply switch is 0, an absent LUTPath is cleared, and an absent
// number, word or colour channel stays.
TEST_F(AovTone, ToneOperatorWordsAndAbsentKeys) {
    const std::pair<const char*, uint32_t> cases[] = {
        {"<OperatorType value='editor'/>", 0},
        {"<OperatorType value='Reinhard'/>", 1},
        {"<OperatorType value='ACES'/>", 2},
        {"<OperatorType value='filmic'/>", 3},
        {"<OperatorType value='DISABLED'/>", 4},
        {"<OperatorType value='LINEAR'/>", 77},
        {"", 77},
    };
    for (const auto& [element, operatorType] : cases) {
        SCOPED_TRACE(element);
        std::memset(record.get(), kFill, sizeof *record);
        setText(*record, kTone + 0xE60, u"scene.cube");
        setWord(*record, kTone + 0x80, 77);
        ASSERT_TRUE(apply(std::string("<ToneOperator><ApplyGamma value='true'/><TintRGB G='0.5'/>") +
                          element + "</ToneOperator>"));
        EXPECT_EQ(wordAt(*record, kTone + 0x80), operatorType);
        EXPECT_EQ(textAt(*record, kTone + 0xE60, 384), "");
        EXPECT_EQ(wordAt(*record, kTone + 0xA8), 1u);
        for (uint32_t applySwitch : {0x00u, 0x08u, 0x18u, 0x5Cu, 0xBCu, 0xE4Cu, 0xE50u})
            EXPECT_EQ(wordAt(*record, kTone + applySwitch), 0u) << std::hex << applySwitch;
        EXPECT_EQ(wordAt(*record, kTone + 0x04), kFillWord);
        EXPECT_EQ(wordAt(*record, kTone + 0x1C), kFillWord);
        EXPECT_EQ(floatAt(*record, kTone + 0x20), 0.5f);
        EXPECT_EQ(wordAt(*record, kTone + 0x24), kFillWord);
    }
}

TEST_F(AovTone, CurvesReadTheirSegmentsAndDropTheDerivedData) {
    ASSERT_TRUE(apply("<ToneOperator><CurveSplineG><Segment id='31' ts='0.1' te='0.9' ve='2'/>"
                      "<Segment id='32' ts='5'/></CurveSplineG><CurveSplineB/></ToneOperator>"));
    const uint32_t red = kTone + 0xC0, green = kTone + 0x544, blue = kTone + 0x9C8;
    // Red is absent: segments and derived data stay.
    for (uint32_t offset = 0; offset < 0x484; offset += 4)
        ASSERT_EQ(wordAt(*record, red + offset), kFillWord);
    // Green: all 32 marked unused, segment 31 read, the derived bytes zeroed.
    for (uint32_t segment = 0; segment < 31; ++segment) {
        EXPECT_EQ(floatAt(*record, green + 32 * segment), 1.0f);
        EXPECT_EQ(floatAt(*record, green + 32 * segment + 12), 0.0f);
        EXPECT_EQ(wordAt(*record, green + 32 * segment + 16), kFillWord);
    }
    EXPECT_EQ(floatAt(*record, green + 32 * 31), 0.1f);
    EXPECT_EQ(floatAt(*record, green + 32 * 31 + 12), 0.9f);
    EXPECT_EQ(floatAt(*record, green + 32 * 31 + 28), 2.0f);
    EXPECT_EQ(wordAt(*record, green + 32 * 31 + 4), kFillWord);
    for (uint32_t offset = 0x400; offset < 0x484; ++offset)
        ASSERT_EQ(byteAt(*record, green + offset), 0) << offset;
    // Blue is there but empty: all unused, derived data zeroed.
    EXPECT_EQ(floatAt(*record, blue), 1.0f);
    EXPECT_EQ(floatAt(*record, blue + 32 * 31 + 12), 0.0f);
    EXPECT_EQ(byteAt(*record, blue + 0x483), 0);
    EXPECT_EQ(wordAt(*record, kTone + 0xE4C), 0u) << "what follows the curves is the LUT switch";
}

} // namespace

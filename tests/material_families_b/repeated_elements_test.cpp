// The elements that repeat: spline segments, keys that a table holds twice, and documents that
// push at the limits (segments without end, texts beyond capacity, deep nesting).
#include "documents/material_document.h"
#include "documents/materials/families.h"
#include "tests/material_families_b/families_b_test_support.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

using namespace families_b_test;

namespace {

constexpr uint8_t kPattern = 0x11;

float patternFloat() {
    float value;
    std::memset(&value, kPattern, sizeof value);
    return value;
}

std::string materialText(const char* word, const std::string& parameters) {
    return std::string("<TaviMaterial type='") + word + "'><SpecificParameters>" + parameters +
           "</SpecificParameters></TaviMaterial>";
}

void expectPattern(const MaterialRecord* record, size_t begin, size_t end) {
    for (size_t byte = begin; byte < end; ++byte)
        ASSERT_EQ(bytesOf(record)[byte], kPattern) << "byte " << byte;
}

// ---- Spline segments ---------------------------------------------------------------------------

TEST(Segments, FourSegmentCurveTakesIdsBelowFourInAnyOrderAttributeByAttribute) {
    const std::string text =
        materialText("PHYSICAL", "<Coating><CoatWeight>"
                                 "<Segment id='3' ts='3' te='4' vs='30'/>"
                                 "<Segment id='0' ts='0' t1='0.1' t2='0.2' te='1' vs='1' "
                                 "v1='2' v2='3' ve='4'/>"
                                 "<SEGMENT id='1' ts='1' te='2' ve='12'/>"
                                 "<Segment id='0' ts='0.5'/>"
                                 "<Segment id='4' ts='9' te='9' vs='9' v1='9' v2='9'/>"
                                 "<Segment id='-1' vs='9'/>"
                                 "<Segment vs='9'/>"
                                 "<Segment ID='2' ts='0' te='9' vs='9'/>"
                                 "<Other id='2' ts='0' te='9' vs='9'/>"
                                 "</CoatWeight></Coating>");
    RecordingNames names;
    auto record = recordOf(1, kPattern);
    ASSERT_TRUE(readDocumentText(text, record.get(), &names));
    const float p = patternFloat();
    const SplineSegment expected[4] = {{0.5f, 0.1f, 0.2f, 1, 1, 2, 3, 4},
                                       {1, p, p, 2, p, p, p, 12},
                                       {1, p, p, 0, p, p, p, p},
                                       {3, p, p, 4, 30, p, p, p}};
    for (size_t s = 0; s < 4; ++s) {
        const auto segment = valueAt<SplineSegment>(record.get(), 268 + s * sizeof(SplineSegment));
        EXPECT_EQ(std::memcmp(&segment, &expected[s], sizeof segment), 0) << "segment " << s;
    }
    // Id 4 would have landed on the colour curve that follows; its inner values are untouched.
    expectPattern(record.get(), 400 + 8, 400 + sizeof(ColorSplineSegment));
}

TEST(Segments, EightSegmentCurveTakesIdSevenAndSkipsEight) {
    const std::string text = materialText("UBER", "<Coating><Roughness><RoughnessSpline>"
                                                  "<Segment id='7' ts='0' te='1' vs='77'/>"
                                                  "<Segment id='8' ts='0' te='1' vs='88'/>"
                                                  "</RoughnessSpline></Roughness></Coating>");
    RecordingNames names;
    auto record = recordOf(4, kPattern);
    ASSERT_TRUE(readDocumentText(text, record.get(), &names));
    EXPECT_EQ(valueAt<float>(record.get(), 364 + 7 * 32 + 16), 77.0f);
    EXPECT_EQ(valueAt<float>(record.get(), 364 + 7 * 32 + 12), 1.0f);
    EXPECT_EQ(valueAt<float>(record.get(), 364 + 3 * 32 + 12), 0.0f) << "segments not named are unused";
    expectPattern(record.get(), 620 + 16, 620 + 32); // where id 8 would have gone
}

TEST(Segments, ColourCurveTakesIdsBelowFourAndSegmentInAnyCase) {
    const std::string text = materialText("PHYSICAL", "<Coating><CoatColor>"
                                                      "<segment id='2' ts='0' te='1' vsx='5' vez='6'/>"
                                                      "<Segment id='2' vsx='7'/>"
                                                      "<Segment id='4' ts='0' te='1' vsx='9' vsy='9' vsz='9' "
                                                      "v1x='9' v1y='9' v1z='9'/>"
                                                      "</CoatColor></Coating>");
    RecordingNames names;
    auto record = recordOf(1, kPattern);
    ASSERT_TRUE(readDocumentText(text, record.get(), &names));
    const size_t second = 400 + 2 * sizeof(ColorSplineSegment);
    EXPECT_EQ(valueAt<float>(record.get(), second), 0.0f);
    EXPECT_EQ(valueAt<float>(record.get(), second + 4), 1.0f);
    EXPECT_EQ(valueAt<float>(record.get(), second + 32), 7.0f) << "the later Segment of an id wins";
    EXPECT_EQ(valueAt<float>(record.get(), second + 76), 6.0f) << "for the attributes it has";
    EXPECT_EQ(valueAt<float>(record.get(), 400 + 3 * sizeof(ColorSplineSegment)), 1.0f);
    EXPECT_EQ(valueAt<float>(record.get(), 400 + 3 * sizeof(ColorSplineSegment) + 4), 0.0f);
    // Id 4 would have run over the map id and into the next curve's first segment.
    expectPattern(record.get(), 724 + 16, 724 + 32);
}

std::vector<std::string> writtenSegmentIds(const pugi::xml_node& curve) {
    std::vector<std::string> ids;
    for (const pugi::xml_node& segment : curve.children("Segment"))
        ids.push_back(segment.attribute("id").value());
    return ids;
}

TEST(Segments, WriterSkipsUnusedSegmentsButNeverTheFirst) {
    const struct {
        std::vector<bool> used;
        std::vector<std::string> ids;
    } cases[] = {
        {{true, false, true, true}, {"0", "2", "3"}},
        {{false, false, false, false}, {"0"}},
        {{false, true, false, true}, {"0", "1", "3"}},
    };
    for (const auto& c : cases) {
        RecordingNames names;
        auto record = recordOf(1, 0);
        for (size_t s = 0; s < 4; ++s) {
            const SplineSegment segment{c.used[s] ? 0.0f : 1.0f, 0, 0, 0, 0, 0, 0, 0};
            putAt(record.get(), 268 + s * sizeof(SplineSegment), segment); // Coating/CoatWeight
            ColorSplineSegment color{};
            color.ts = c.used[s] ? 0.0f : 1.0f;
            putAt(record.get(), 400 + s * sizeof(ColorSplineSegment), color); // Coating/CoatColor
        }
        pugi::xml_document doc;
        ASSERT_TRUE(BuildMaterialDocument(record.get(), &names, &doc));
        const pugi::xml_node coating = doc.child("TaviMaterial").child("SpecificParameters").child("Coating");
        EXPECT_EQ(writtenSegmentIds(coating.child("CoatWeight")), c.ids);
        EXPECT_EQ(writtenSegmentIds(coating.child("CoatColor")), c.ids);
    }
}

// ---- Keys that stand twice ---------------------------------------------------------------------

TEST(TwinKeys, TheFirstElementOfANameIsReadForBothUberEmissions) {
    const std::string text =
        materialText("UBER", "<Emission><EmissionColor R='1' G='2' B='3'/>"
                             "<EmissionColor R='4' G='5' B='6'/><KelvinValue value='6500'/>"
                             "</Emission><Emission><EmissionColor R='7' G='8' B='9'/>"
                             "<KelvinValue value='3000'/></Emission>");
    RecordingNames names;
    auto record = recordOf(4, kPattern);
    ASSERT_TRUE(readDocumentText(text, record.get(), &names));
    for (uint32_t offset : {10024u, 11332u}) {
        const auto color = valueAt<ColorRGB>(record.get(), offset);
        EXPECT_EQ(color.R, 1.0f) << offset;
        EXPECT_EQ(color.B, 3.0f) << offset;
    }
    EXPECT_EQ(valueAt<float>(record.get(), 10048), 6500.0f);
    EXPECT_EQ(valueAt<float>(record.get(), 11616), 6500.0f);
}

TEST(TwinKeys, TheWriterPutsBothUberEmissionsInOneElementInTableOrder) {
    RecordingNames names;
    auto record = recordOf(4, 0);
    putAt(record.get(), 10024, ColorRGB{1, 2, 3});
    putAt(record.get(), 11332, ColorRGB{4, 5, 6});
    putAt<float>(record.get(), 11348, 2.5f);
    pugi::xml_document doc;
    ASSERT_TRUE(BuildMaterialDocument(record.get(), &names, &doc));
    const pugi::xml_node parameters = doc.child("TaviMaterial").child("SpecificParameters");
    const auto emissions = parameters.children("Emission");
    EXPECT_EQ(std::distance(emissions.begin(), emissions.end()), 1);
    std::vector<std::string> reds;
    for (const pugi::xml_node& color : parameters.child("Emission").children("EmissionColor"))
        reds.push_back(color.attribute("R").value());
    EXPECT_EQ(reds, (std::vector<std::string>{"1", "4"}));
    EXPECT_STREQ(parameters.child("Emission").child("EmissionIntensityValue").attribute("value").value(),
                 "2.5");
}

TEST(TwinKeys, TheHairMaterialFollowsAnEmptyMaterialSection) {
    RecordingNames names;
    names.define(7, u"Gold");
    auto record = recordOf(24, 0);
    putAt<int32_t>(record.get(), 4332, 7);
    putAt<float>(record.get(), 4184, 0.5f);
    pugi::xml_document doc;
    ASSERT_TRUE(BuildMaterialDocument(record.get(), &names, &doc));
    const pugi::xml_node parameters = doc.child("TaviMaterial").child("SpecificParameters");
    std::vector<std::string> materials;
    for (const pugi::xml_node& element : parameters.children("Material"))
        materials.push_back(documents_test::serialise(element));
    EXPECT_EQ(materials, (std::vector<std::string>{"<Material/>", "<Material name=\"Gold\"/>"}));
    EXPECT_STREQ(parameters.child("Material_RootValue").attribute("value").value(), "0.5");

    const struct {
        std::string parameters;
        int32_t id;
    } cases[] = {
        {"<Material/><Material name='Gold'/>", -1},
        {"<Material name='Gold'/><Material/>", 7},
        {"<Material name='Gold'/>", 7},
        {"<Material><Material name='Gold'/></Material>", -1},
    };
    for (const auto& c : cases) {
        auto back = recordOf(24, 0);
        ASSERT_TRUE(readDocumentText(materialText("HAIR", c.parameters), back.get(), &names));
        EXPECT_EQ(valueAt<int32_t>(back.get(), 4332), c.id) << c.parameters;
    }
}

// ---- Documents at the limits -------------------------------------------------------------------

TEST(Limits, TextsAreCutToTheirCapacityAndStayInTheirField) {
    const std::string path(1000, 'p');
    const std::string channel(200, 'c');
    const std::string text =
        materialText("VOLUMETRIC", "<VDBFile><Path value='" + path + "'/><Channels><Density value='" +
                                       channel + "'/></Channels></VDBFile>");
    RecordingNames names;
    auto record = recordOf(25, kPattern);
    ASSERT_TRUE(readDocumentText(text, record.get(), &names));
    const auto* pathText = reinterpret_cast<const char16_t*>(bytesOf(record.get()) + 4944);
    EXPECT_EQ(std::u16string(pathText), std::u16string(383, u'p'));
    const auto* densityText = reinterpret_cast<const char16_t*>(bytesOf(record.get()) + 2896);
    EXPECT_EQ(std::u16string(densityText), std::u16string(63, u'c'));
    expectPattern(record.get(), 4944 + 768, 6480);       // after the path, up to the flags
    expectPattern(record.get(), 2896 + 128, 2896 + 256); // between two channel names
}

TEST(Limits, ManySegmentsHugeIdsAndJunkNumbersStayWithinTheCurve) {
    std::string segments;
    for (int i = 0; i < 20000; ++i) {
        segments += "<Segment id='" + std::to_string(i % 3 == 0 ? i : -i) + "' ts='0' te='1' vs='" +
                    std::to_string(i + 100) + "' v1='junk' v2='1e999'/>";
    }
    segments += "<Segment id='99999999999' vs='5'/><Segment id='0x7fffffff' vs='5'/>";
    const std::string text = materialText("MIE", "<MieIORspline>" + segments +
                                                     "</MieIORspline><NestedPriority value='99999999999'/>"
                                                     "<Shape><MieGainValue value='abc'/></Shape>");
    RecordingNames names;
    auto record = recordOf(31, kPattern);
    ASSERT_TRUE(readDocumentText(text, record.get(), &names));
    // Of the ids below 8 only 0, 3 and 6 are named; every other Segment is passed by.
    EXPECT_EQ(valueAt<float>(record.get(), 328 + 16), 100.0f);
    EXPECT_EQ(valueAt<float>(record.get(), 328 + 3 * 32 + 16), 103.0f);
    EXPECT_EQ(valueAt<float>(record.get(), 328 + 6 * 32 + 16), 106.0f);
    EXPECT_EQ(valueAt<float>(record.get(), 328 + 6 * 32 + 20), 0.0f) << "a text that is no number reads as 0";
    EXPECT_EQ(valueAt<int32_t>(record.get(), 1132), 2147483647) << "integers are clamped";
    EXPECT_EQ(valueAt<float>(record.get(), 316), 0.0f);
    EXPECT_EQ(valueAt<float>(record.get(), 328 + 32 + 12), 0.0f) << "segment 1 was never named";
    expectPattern(record.get(), 584 + 16, 584 + 32); // the next curve's first values
}

TEST(Limits, DeepNestingAndLongNamesAreHandledWithoutHarm) {
    std::string deep;
    for (int i = 0; i < 3000; ++i)
        deep += "<Coating>";
    for (int i = 0; i < 3000; ++i)
        deep += "</Coating>";
    const std::string longName(20000, 'n');
    const std::string text =
        materialText("PHYSICAL", deep + "<Special><AnisotropyValueMap name='" + longName + "'/></Special>");
    RecordingNames names;
    auto record = recordOf(1, kPattern);
    ASSERT_TRUE(readDocumentText(text, record.get(), &names));
    EXPECT_EQ(valueAt<int32_t>(record.get(), 396), -1) << "the nested Coating holds no CoatWeightMap";
    EXPECT_GE(valueAt<int32_t>(record.get(), 6056), 0) << "the long name was handed on whole";
    bool asked = false;
    for (const std::string& call : names.calls)
        asked = asked || call == "TexMapId " + longName;
    EXPECT_TRUE(asked);
}

} // namespace

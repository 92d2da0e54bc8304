// The elements that repeat: the children of MIX, the patterns of the state switch, spline
// segments, keys that a table holds twice or that share their bytes, and documents at the limits
// (segments without end, texts beyond capacity, deep nesting, long names).
#include "documents/material_document.h"
#include "documents/materials/material_types.h"
#include "tests/documents/materials/material_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace material_test {
namespace {

// Records are read over this fill; a byte that a document doesn't reach keeps it.
constexpr uint8_t kFill = 0x11;
constexpr int32_t kKeptWord = 0x11111111;

float keptFloat() {
    float value;
    std::memset(&value, kFill, sizeof value);
    return value;
}

// The bytes that a read must leave at an offset.
struct Probe {
    uint32_t offset;
    std::vector<uint8_t> bytes;
};
using Probes = std::vector<Probe>;

Probes operator+(Probes a, const Probes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

template <class T> Probes at(uint32_t offset, std::initializer_list<T> values) {
    Probe probe{offset, std::vector<uint8_t>(values.size() * sizeof(T))};
    std::memcpy(probe.bytes.data(), values.begin(), probe.bytes.size());
    return {probe};
}

Probes kept(uint32_t offset, uint32_t width) {
    return {{offset, std::vector<uint8_t>(width, kFill)}};
}

Probes text(uint32_t offset, const std::u16string& value) {
    Probe probe{offset, std::vector<uint8_t>((value.size() + 1) * sizeof(char16_t))};
    std::memcpy(probe.bytes.data(), value.c_str(), probe.bytes.size());
    return {probe};
}

struct MixEntry {
    int32_t material;
    float weight;
    int32_t weightMap;
    float mapMix;
};

struct ReadCase {
    ReadCase(std::string what, int32_t type, std::string specific, Probes probes, int calls = -1,
             std::string asks = "")
        : what(std::move(what)), type(type), specific(std::move(specific)), probes(std::move(probes)),
          calls(calls), asks(std::move(asks)) {}
    std::string what;
    int32_t type;
    std::string specific; // the content of SpecificParameters
    Probes probes;
    int calls;        // how many name calls the read makes; -1 when that isn't the point
    std::string asks; // a call that must be among them
};

std::vector<ReadCase> readCases() {
    const float P = keptFloat();
    const int32_t W = kKeptWord;
    std::vector<ReadCase> cases = {
        {"a four-segment curve takes ids below four, in any order, attribute by attribute", 1,
         "<Coating><CoatWeight><Segment id='3' ts='3' te='4' vs='30'/>"
         "<Segment id='0' ts='0' t1='0.1' t2='0.2' te='1' vs='1' v1='2' v2='3' ve='4'/>"
         "<SEGMENT id='1' ts='1' te='2' ve='12'/><Segment id='0' ts='0.5'/>"
         "<Segment id='4' ts='9' te='9' vs='9' v1='9' v2='9'/><Segment id='-1' vs='9'/><Segment vs='9'/>"
         "<Segment ID='2' ts='0' te='9' vs='9'/><Other id='2' ts='0' te='9' vs='9'/></CoatWeight></Coating>",
         at<SplineSegment>(268, {{0.5f, 0.1f, 0.2f, 1, 1, 2, 3, 4},
                                 {1, P, P, 2, P, P, P, 12},
                                 {1, P, P, 0, P, P, P, P},
                                 {3, P, P, 4, 30, P, P, P}}) +
             kept(408, 72)}, // id 4 would have run into the colour curve that follows
        {"an eight-segment curve takes id 7 and passes 8 by", 4,
         "<Coating><Roughness><RoughnessSpline><Segment id='7' ts='0' te='1' vs='77'/>"
         "<Segment id='8' ts='0' te='1' vs='88'/></RoughnessSpline></Roughness></Coating>",
         at<float>(364 + 7 * 32 + 12, {1, 77}) + at<float>(364 + 3 * 32 + 12, {0}) + kept(636, 16)},
        {"a colour curve takes ids below four, Segment in any case, a later one over an earlier", 1,
         "<Coating><CoatColor><segment id='2' ts='0' te='1' vsx='5' vez='6'/><Segment id='2' vsx='7'/>"
         "<Segment id='4' ts='0' te='1' vsx='9' vsy='9' vsz='9' v1x='9' v1y='9' "
         "v1z='9'/></CoatColor></Coating>",
         at<float>(560, {0, 1}) + at<float>(592, {7}) + at<float>(636, {6}) + at<float>(640, {1, 0}) +
             kept(740, 16)},
        {"both UBER emissions read the first element of each name", 4,
         "<Emission><EmissionColor R='1' G='2' B='3'/><EmissionColor R='4' G='5' B='6'/>"
         "<KelvinValue value='6500'/></Emission><Emission><EmissionColor R='7' G='8' B='9'/>"
         "<KelvinValue value='3000'/></Emission>",
         at<float>(10024, {1, 2, 3}) + at<float>(11332, {1, 2, 3}) + at<float>(10048, {6500}) +
             at<float>(11616, {6500})},
        {"the hair material behind the empty Material section", 24, "<Material/><Material name='Gold'/>",
         at<int32_t>(4332, {-1})},
        {"the hair material as the first Material", 24, "<Material name='Gold'/><Material/>",
         at<int32_t>(4332, {7})},
        {"the hair material alone", 24, "<Material name='Gold'/>", at<int32_t>(4332, {7})},
        {"the hair material nested in the section", 24, "<Material><Material name='Gold'/></Material>",
         at<int32_t>(4332, {-1})},
        {"MIX children fill the list in document order, whatever their ids", 11,
         "<NumChildren value='9'/>"
         "<Child id='5'><Material name='Wood'/><Weight value='0.25'/><WeightMap name='Dirt'/>"
         "<MapMix value='0.5'/></Child>"
         "<child id='1'><Material name='Wood'/></child>" // names compare exactly
         "<Child id='0'><Material name='Stone'/><Weight value='2'/></Child><Child/>",
         at<int32_t>(268, {9}) + // read apart from the Child elements
             at<MixEntry>(284, {{3001, 0.25f, 2001, 0.5f}, {3002, 2, -1, P}, {-1, P, -1, P}}) +
             kept(332, 13 * 16)},
        {"state patterns fill in order, a missing flag keeps its word, the rest is cleared", 32,
         "<Pattern><States value='7'/><AnyState value='yes'/></Pattern>"
         "<pattern><States value='99'/></pattern>" // names compare exactly
         "<Pattern><Material name='Ignored'/></Pattern>",
         at<int32_t>(280, {7, 1, W, W, W, W, 0, 0, -1, 0, 0, -1}), 1}, // only DefaultMaterial is asked for
    };
    for (int children : {15, 16, 17, 400}) {
        std::string list;
        Probes weights;
        for (int i = 0; i < children; ++i)
            list += "<Child><Weight value='" + std::to_string(100 + i) + "'/></Child>";
        for (int i = 0; i < 16; ++i)
            weights = weights + at<float>(288 + 16 * i, {i < children ? static_cast<float>(100 + i) : P});
        cases.push_back(
            {"at most 16 of " + std::to_string(children) + " MIX children", 11,
             "<Upper value='1'/><Lower value='2'/><UseCurve value='1'/><UseMaskAsChoice value='0'/>" + list,
             weights + at<float>(540, {1, 2}) + at<uint8_t>(548, {1, 0}) +
                 kept(550, sizeof(MaterialRecord) - 550),
             1 + 2 * std::min(children, 16)});
    }
    for (int patterns : {4, 5, 300}) {
        std::string list;
        for (int i = 0; i < patterns; ++i)
            list += "<Pattern><States value='" + std::to_string(i) + "'/><AnyState value='1'/></Pattern>";
        cases.push_back({"at most 4 of " + std::to_string(patterns) + " state patterns", 32, list,
                         at<int32_t>(280, {0, 1, W, 1, 1, W, 2, 1, W, 3, 1, W}) +
                             kept(328, sizeof(MaterialRecord) - 328)});
    }
    // The thin film's anisotropy and angle splines lie on the same bytes; the angle's is read last.
    const std::string anisotropy =
        "<RoughnessAnisotropySpline><Segment id='0' ts='0' t1='1' t2='2' te='3' vs='4' v1='5' v2='6' ve='7'/>"
        "</RoughnessAnisotropySpline>";
    const std::string angle =
        "<RoughnessAngleSpline><Segment id='0' ts='0' t1='9' t2='9' te='9' vs='9' v1='9' v2='9' ve='9'/>"
        "</RoughnessAngleSpline>";
    const Probes gap = kept(5256, 256); // no key reaches bytes 5256 to 5511
    cases.push_back({"the missing angle spline marks the anisotropy's segments unused", 30,
                     "<RTC><Roughness>" + anisotropy + "</Roughness></RTC>",
                     at<SplineSegment>(5520, {{1, 1, 2, 0, 4, 5, 6, 7}}) + gap});
    for (const std::string& keys : {anisotropy + angle, angle + anisotropy}) {
        cases.push_back({"the angle spline wins, in either document order", 30,
                         "<RTC><Roughness>" + keys + "</Roughness></RTC>",
                         at<SplineSegment>(5520, {{0, 9, 9, 9, 9, 9, 9, 9}}) + gap});
    }
    // Documents at the limits.
    std::string segments;
    for (int i = 0; i < 20000; ++i) {
        segments += "<Segment id='" + std::to_string(i % 3 == 0 ? i : -i) + "' ts='0' te='1' vs='" +
                    std::to_string(i + 100) + "' v1='junk' v2='1e999'/>";
    }
    cases.push_back({"many segments, huge ids and junk numbers stay within the curve", 31,
                     "<MieIORspline>" + segments +
                         "<Segment id='99999999999' vs='5'/><Segment id='0x7fffffff' vs='5'/></MieIORspline>"
                         "<NestedPriority value='99999999999'/><Shape><MieGainValue value='abc'/></Shape>",
                     at<float>(328 + 16, {100}) + at<float>(328 + 3 * 32 + 16, {103}) +
                         at<float>(328 + 6 * 32 + 16, {106, 0}) + // a text that is no number reads as 0
                         at<float>(328 + 32 + 12, {0}) +          // segment 1 was never named
                         at<int32_t>(1132, {2147483647}) +        // integers are clamped
                         at<float>(316, {0}) + kept(600, 16)});
    cases.push_back({"texts are cut to their capacity and stay in their field", 25,
                     "<VDBFile><Path value='" + std::string(1000, 'p') + "'/><Channels><Density value='" +
                         std::string(200, 'c') + "'/></Channels></VDBFile>",
                     text(4944, std::u16string(383, u'p')) + text(2896, std::u16string(63, u'c')) +
                         kept(4944 + 768, 6480 - 4944 - 768) + kept(2896 + 128, 128)});
    std::string deep;
    for (int i = 0; i < 3000; ++i)
        deep += "<Coating>";
    for (int i = 0; i < 3000; ++i)
        deep += "</Coating>";
    const std::string longName(20000, 'n');
    cases.push_back({"deep nesting holds no key, and a long name is handed on whole", 1,
                     deep + "<Special><AnisotropyValueMap name='" + longName + "'/></Special>",
                     at<int32_t>(396, {-1}) + at<int32_t>(6056, {100}), -1, "TexMapId " + longName});
    return cases;
}

TEST(RepeatedElements, DocumentsReadOverARecordReachOnlyTheirBytes) {
    for (const ReadCase& c : readCases()) {
        SCOPED_TRACE(c.what);
        RecordingNames names;
        names.define(3001, u"Wood");
        names.define(3002, u"Stone");
        names.define(2001, u"Dirt");
        names.define(7, u"Gold");
        RecordPtr record = recordOf(c.type, kFill);
        ASSERT_TRUE(
            readText(materialText(wordOf(*findMaterialType(c.type)), c.specific), record.get(), names));
        for (const Probe& probe : c.probes) {
            const std::vector<uint8_t> got(bytesOf(record.get()) + probe.offset,
                                           bytesOf(record.get()) + probe.offset + probe.bytes.size());
            EXPECT_EQ(got, probe.bytes) << "at byte " << probe.offset;
        }
        if (c.calls >= 0) {
            EXPECT_EQ(names.calls.size(), static_cast<size_t>(c.calls));
        }
        if (!c.asks.empty()) {
            EXPECT_NE(std::find(names.calls.begin(), names.calls.end(), c.asks), names.calls.end());
        }
    }
}

pugi::xml_node specificOf(const pugi::xml_document& doc) {
    return doc.child("TaviMaterial").child("SpecificParameters");
}

TEST(RepeatedElements, MixWriterPutsOneChildPerEntryInUseWithItsIndex) {
    const struct {
        int32_t numChildren;
        int written;
    } cases[] = {{-3, 0}, {0, 0}, {1, 1}, {3, 3}, {16, 16}, {17, 16}, {0x7FFFFFFF, 16}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.numChildren);
        RecordingNames names;
        RecordPtr record = recordOf(11, 0);
        fillDistinct(*findMaterialType(11), record.get(), names);
        store<int32_t>(record.get(), 268, c.numChildren);
        pugi::xml_document doc;
        ASSERT_TRUE(BuildMaterialDocument(record.get(), &names, &doc));
        EXPECT_EQ(specificOf(doc).child("NumChildren").attribute("value").as_int(), c.numChildren);
        int index = 0;
        for (const pugi::xml_node& child : specificOf(doc).children("Child")) {
            EXPECT_EQ(child.attribute("id").as_int(-1), index);
            std::vector<std::string> keys;
            for (const pugi::xml_node& value : child.children())
                keys.push_back(value.name());
            EXPECT_EQ(keys, (std::vector<std::string>{"Material", "Weight", "WeightMap", "MapMix"}));
            const auto entry = load<MixEntry>(record.get(), 284 + 16 * index);
            EXPECT_EQ(child.child("Weight").attribute("value").as_float(), entry.weight);
            EXPECT_EQ(child.child("WeightMap").attribute("name").as_string(),
                      "R" + std::to_string(entry.weightMap));
            ++index;
        }
        ASSERT_EQ(index, c.written) << "a count beyond the list is cut to it";
        names.calls.clear();
        WalkMaterialReferences(record.get(), &names);
        EXPECT_EQ(names.calls.size(), 1u + 2u * static_cast<size_t>(c.written))
            << "the mask, then two per child";
    }
}

TEST(RepeatedElements, StatePatternWriterPutsAllFourWithStatesAndFlag) {
    RecordingNames names;
    RecordPtr record = recordOf(32, 0);
    fillDistinct(*findMaterialType(32), record.get(), names);
    store<int32_t>(record.get(), 280 + 12 * 2 + 4, 5); // any word but 0 is a set flag
    pugi::xml_document doc;
    ASSERT_TRUE(BuildMaterialDocument(record.get(), &names, &doc));
    std::vector<std::string> written;
    for (const pugi::xml_node& pattern : specificOf(doc).children("Pattern")) {
        written.push_back(std::string(pattern.child("States").attribute("value").value()) + " " +
                          pattern.child("AnyState").attribute("value").value());
        EXPECT_FALSE(pattern.child("Material")) << "a pattern's material is no key";
    }
    EXPECT_EQ(written, (std::vector<std::string>{"40 false", "41 true", "42 true", "43 true"}));
}

} // namespace
} // namespace material_test

// The repeated elements: the children of MIX and the patterns of the state switch, with
// documents that carry too many, too few or odd ones; and the two thin-film splines that share
// their bytes.
#include "documents/material_document.h"
#include "tests/material_families/family_cases.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>

using documents_test::RecordingNames;
using documents_test::TempFolder;

namespace families_test {
namespace {

const TypeCase& caseOf(int32_t number) {
    static const std::vector<TypeCase> cases = allCases();
    for (const TypeCase& type : cases) {
        if (type.type == number) return type;
    }
    throw std::logic_error("no such type");
}

// Reads `specific`, the content of SpecificParameters, over the record.
void readSpecific(MaterialRecord* record, const std::string& word, const std::string& specific,
                  RecordingNames& names) {
    TempFolder folder;
    const std::u16string path =
        folder.write("material.xml", "<TaviMaterial type='" + word + "'><SpecificParameters>" + specific +
                                         "</SpecificParameters></TaviMaterial>");
    ASSERT_TRUE(ReadMaterialDocument(record, path.c_str(), &names));
}

// ---- MIX children ------------------------------------------------------------------------------

struct MixEntry {
    int32_t material;
    float weight;
    int32_t weightMap;
    float mapMix;
};

MixEntry entryAt(const MaterialRecord& record, size_t index) {
    return load<MixEntry>(bytesOf(&record), 284 + 16 * index);
}

TEST(MixChildren, TakenInDocumentOrderWhateverTheirIds) {
    RecordPtr record = sampleRecord(caseOf(11), 0);
    const RecordPtr before = sampleRecord(caseOf(11), 0);
    RecordingNames names;
    names.define(3001, u"Wood");
    names.define(3002, u"Stone");
    names.define(2001, u"Dirt");
    readSpecific(record.get(), "MIX",
                 "<NumChildren value='9'/>"
                 "<Child id='5'><Material name='Wood'/><Weight value='0.25'/><WeightMap name='Dirt'/>"
                 "<MapMix value='0.5'/></Child>"
                 "<child id='1'><Material name='Wood'/></child>" // names compare exactly
                 "<Child id='0'><Material name='Stone'/><Weight value='2'/></Child>"
                 "<Child/>",
                 names);
    EXPECT_EQ(load<int32_t>(bytesOf(record.get()), 268), 9) << "read apart from the Child elements";
    const MixEntry first = entryAt(*record, 0);
    EXPECT_EQ(first.material, 3001);
    EXPECT_EQ(first.weight, 0.25f);
    EXPECT_EQ(first.weightMap, 2001);
    EXPECT_EQ(first.mapMix, 0.5f);
    const MixEntry second = entryAt(*record, 1);
    EXPECT_EQ(second.material, 3002);
    EXPECT_EQ(second.weight, 2.0f);
    EXPECT_EQ(second.weightMap, -1) << "a missing reference of a child becomes -1";
    EXPECT_EQ(second.mapMix, entryAt(*before, 1).mapMix) << "a missing number of a child stays";
    const MixEntry third = entryAt(*record, 2);
    EXPECT_EQ(third.material, -1);
    EXPECT_EQ(third.weight, entryAt(*before, 2).weight);
    for (size_t i = 3; i < 16; ++i) {
        EXPECT_EQ(std::memcmp(bytesOf(record.get()) + 284 + 16 * i, bytesOf(before.get()) + 284 + 16 * i, 16),
                  0)
            << "entry " << i << " beyond the last Child stays";
    }
}

TEST(MixChildren, AtMostSixteenAreReadAndNothingBeyondTheListChanges) {
    for (int children : {15, 16, 17, 400}) {
        SCOPED_TRACE(children);
        RecordPtr record = sampleRecord(caseOf(11), 1);
        const RecordPtr before = sampleRecord(caseOf(11), 1);
        RecordingNames names;
        std::string list;
        for (int i = 0; i < children; ++i)
            list += "<Child><Weight value='" + std::to_string(100 + i) + "'/></Child>";
        readSpecific(record.get(), "MIX",
                     "<Upper value='1'/><Lower value='2'/><UseCurve value='1'/><UseMaskAsChoice value='0'/>" +
                         list,
                     names);
        for (int i = 0; i < 16; ++i) {
            const float expected = i < children ? static_cast<float>(100 + i) : entryAt(*before, i).weight;
            EXPECT_EQ(entryAt(*record, static_cast<size_t>(i)).weight, expected) << i;
        }
        EXPECT_EQ(load<float>(bytesOf(record.get()), 540), 1.0f);
        EXPECT_EQ(load<float>(bytesOf(record.get()), 544), 2.0f);
        EXPECT_EQ(bytesOf(record.get())[548], 1);
        EXPECT_EQ(bytesOf(record.get())[549], 0);
        EXPECT_EQ(std::memcmp(bytesOf(record.get()) + 550, bytesOf(before.get()) + 550,
                              sizeof(MaterialRecord) - 550),
                  0);
        EXPECT_EQ(std::count(names.calls.begin(), names.calls.end(), "MaterialId "), std::min(children, 16));
    }
}

TEST(MixChildren, WriterPutsOneChildPerEntryInUseWithItsIndex) {
    struct Case {
        int32_t numChildren;
        int written;
    };
    const Case cases[] = {{-3, 0}, {0, 0}, {1, 1}, {3, 3}, {16, 16}, {17, 16}, {0x7FFFFFFF, 16}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.numChildren);
        RecordPtr record = sampleRecord(caseOf(11), 0);
        store<int32_t>(bytesOf(record.get()), 268, c.numChildren);
        RecordingNames names;
        defineSampleNames(names);
        pugi::xml_document doc;
        ASSERT_TRUE(BuildMaterialDocument(record.get(), &names, &doc));
        const pugi::xml_node specific = doc.child("TaviMaterial").child("SpecificParameters");
        EXPECT_EQ(specific.child("NumChildren").attribute("value").as_int(), c.numChildren);
        int index = 0;
        for (const pugi::xml_node& child : specific.children("Child")) {
            EXPECT_EQ(child.attribute("id").as_int(-1), index);
            std::vector<std::string> keys;
            for (const pugi::xml_node& value : child.children())
                keys.push_back(value.name());
            EXPECT_EQ(keys, (std::vector<std::string>{"Material", "Weight", "WeightMap", "MapMix"}));
            const MixEntry entry = entryAt(*record, static_cast<size_t>(index));
            EXPECT_EQ(child.child("Weight").attribute("value").as_float(), entry.weight);
            EXPECT_EQ(child.child("WeightMap").attribute("name").as_string(),
                      "Map" + std::to_string(entry.weightMap));
            ++index;
        }
        EXPECT_EQ(index, c.written);
        // The walk alone: the global mask, then material and weight map of each child.
        RecordingNames walk;
        WalkMaterialReferences(record.get(), &walk);
        EXPECT_EQ(walk.calls.size(), 1u + 2u * static_cast<size_t>(c.written));
    }
}

// ---- State switch patterns ---------------------------------------------------------------------

struct Pattern {
    int32_t states;
    int32_t anyState;
    int32_t material;
};

Pattern patternAt(const MaterialRecord& record, size_t index) {
    return load<Pattern>(bytesOf(&record), 280 + 12 * index);
}

TEST(StatePatterns, ReadInOrderAndTheRestCleared) {
    RecordPtr record = sampleRecord(caseOf(32), 0);
    const RecordPtr before = sampleRecord(caseOf(32), 0);
    store<int32_t>(bytesOf(record.get()), 280 + 12 + 4, 5); // a flag word that is neither 0 nor 1
    RecordingNames names;
    readSpecific(record.get(), "",
                 "<Pattern><States value='7'/><AnyState value='yes'/></Pattern>"
                 "<pattern><States value='99'/></pattern>" // names compare exactly
                 "<Pattern><Material name='Ignored'/></Pattern>",
                 names);
    const Pattern first = patternAt(*record, 0);
    EXPECT_EQ(first.states, 7);
    EXPECT_EQ(first.anyState, 1) << "the bool fills the whole word";
    EXPECT_EQ(first.material, patternAt(*before, 0).material) << "a pattern's material is no key";
    const Pattern second = patternAt(*record, 1);
    EXPECT_EQ(second.states, patternAt(*before, 1).states) << "missing numbers stay";
    EXPECT_EQ(second.anyState, 5) << "a missing flag leaves the word alone";
    EXPECT_EQ(second.material, patternAt(*before, 1).material);
    for (size_t i = 2; i < 4; ++i) {
        const Pattern rest = patternAt(*record, i);
        EXPECT_EQ(rest.states, 0);
        EXPECT_EQ(rest.anyState, 0);
        EXPECT_EQ(rest.material, -1);
    }
    EXPECT_EQ(names.calls, (std::vector<std::string>{"MaterialId "})) << "only DefaultMaterial is asked for";
}

TEST(StatePatterns, AtMostFourAreReadAndNothingBeyondChanges) {
    for (int patterns : {4, 5, 300}) {
        RecordPtr record = sampleRecord(caseOf(32), 1);
        std::memset(bytesOf(record.get()) + 328, 0x5A, sizeof(MaterialRecord) - 328);
        RecordingNames names;
        std::string list;
        for (int i = 0; i < patterns; ++i)
            list += "<Pattern><States value='" + std::to_string(i) + "'/><AnyState value='1'/></Pattern>";
        readSpecific(record.get(), "", list, names);
        for (size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(patternAt(*record, i).states, static_cast<int32_t>(i));
            EXPECT_EQ(patternAt(*record, i).anyState, 1);
        }
        const std::vector<uint8_t> tail(bytesOf(record.get()) + 328,
                                        bytesOf(record.get()) + sizeof(MaterialRecord));
        EXPECT_EQ(tail, std::vector<uint8_t>(sizeof(MaterialRecord) - 328, 0x5A)) << patterns;
    }
}

TEST(StatePatterns, WriterPutsAllFourWithStatesAndFlag) {
    RecordPtr record = sampleRecord(caseOf(32), 0);
    store<int32_t>(bytesOf(record.get()), 280 + 12 * 2 + 4, 5);
    RecordingNames names;
    pugi::xml_document doc;
    ASSERT_TRUE(BuildMaterialDocument(record.get(), &names, &doc));
    std::vector<std::string> written;
    for (const pugi::xml_node& pattern :
         doc.child("TaviMaterial").child("SpecificParameters").children("Pattern")) {
        written.push_back(std::string(pattern.child("States").attribute("value").value()) + " " +
                          pattern.child("AnyState").attribute("value").value());
        EXPECT_FALSE(pattern.child("Material"));
    }
    EXPECT_EQ(written, (std::vector<std::string>{"40 false", "41 true", "42 true", "43 true"}));
}

// ---- Thin film splines on shared bytes ---------------------------------------------------------

TEST(ThinFilm, AnisotropyAndAngleSplinesShareTheirBytes) {
    const std::string anisotropy =
        "<RoughnessAnisotropySpline><Segment id='0' ts='0' t1='1' t2='2' te='3' vs='4' v1='5' v2='6' ve='7'/>"
        "</RoughnessAnisotropySpline>";
    const std::string angle =
        "<RoughnessAngleSpline><Segment id='0' ts='0' t1='9' t2='9' te='9' vs='9' v1='9' v2='9' ve='9'/>"
        "</RoughnessAngleSpline>";
    struct Case {
        std::string keys;
        SplineSegment first;
    };
    const Case cases[] = {
        {anisotropy, {1, 1, 2, 0, 4, 5, 6, 7}}, // the missing angle spline, read later, marks it unused
        {anisotropy + angle, {0, 9, 9, 9, 9, 9, 9, 9}},
        {angle + anisotropy, {0, 9, 9, 9, 9, 9, 9, 9}}, // document order doesn't matter
    };
    for (const Case& c : cases) {
        RecordPtr record = emptyRecord(30);
        std::memset(bytesOf(record.get()) + 5256, 0x5A, 256);
        RecordingNames names;
        readSpecific(record.get(), "THINFILM", "<RTC><Roughness>" + c.keys + "</Roughness></RTC>", names);
        const SplineSegment got = load<SplineSegment>(bytesOf(record.get()), 5520);
        EXPECT_EQ(std::memcmp(&got, &c.first, sizeof got), 0) << c.keys;
        const std::vector<uint8_t> gap(bytesOf(record.get()) + 5256, bytesOf(record.get()) + 5512);
        EXPECT_EQ(gap, std::vector<uint8_t>(256, 0x5A)) << "no key reaches bytes 5256 to 5511";
    }
}

} // namespace
} // namespace families_test

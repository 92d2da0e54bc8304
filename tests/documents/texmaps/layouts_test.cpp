// The tests' own account of each type, written down apart from the production tables: number,
// word, image length, shape, the references in walking order and a few keys where a slip is
// likely. Then documents that probe the repeated elements, their limits and the odd corners,
// byte by byte, over a record of the background.
#include "documents/texmap_document.h"
#include "documents/texmaps/texmap_types.h"
#include "scene/record_images.h"
#include "tests/documents/texmaps/texmap_test_support.h"

#include <gtest/gtest.h>

#include <set>

namespace texmap_test {
namespace {

using K = FieldKind;

struct Spot {
    int32_t type;
    const char* word;
    uint32_t imageLength;
    bool mapped;
    const char* references; // the map and texture keys, in walking order
};

const Spot kSpots[] = {
    {1, "IMAGE", 0x5BC, true, "Texture"},
    {2, "SIMPLEIMAGE", 0x114, false, "Texture"},
    {3, "BLEND", 0x139, false, "Map1 Map2 MapBlend"},
    {4, "MATH", 0x137, false, "Map1 Map2"},
    {5, "COLORCORRECTION", 0x16A4, false,
     "ChildMap MaskMap ContrastMap PivotMap ExposureMap GammaMap HueMap SaturationMap TintMap GroundMap"},
    {6, "MATHBLEND", 0x150, false, "Map1 Map2 MapM"},
    {7, "COMPOSITE", 0x70C, false, ""},
    {8, "NOISE", 0x636, true,
     "Map0 Map1 PhaseMap ThresholdLowMap ThresholdHighMap SizeMap AmplitudeMap GainMap LacunarityMap "
     "DistortionMap"},
    {9, "OUTPUT", 0x52C, false, "Map"},
    {10, "RGB_MULTIPLY", 0x12C, false, "Map1 Map2"},
    {11, "RGB_TINT", 0x13C, false, "MapSource MapR MapG MapB"},
    {12, "SHUFFLE", 0x1BC, false, "Map1 Map2"},
    {13, "COLOR", 0x5FF, true, "MapKelvin MapIntensity MapScatter"},
    {14, "GRADIENT", 0x75D, true, "Map1 Map2 Map3 NoiseMap"},
    {15, "TRIPLANAR", 0x622, true, "Map1 Map2 Map3 MapBlur"},
    {17, "SELECTMAP", 0x661, true, "MaskMap"},
    {18, "OCEANSURFACE", 0x6EE, true, ""},
    {19, "CACHE", 0x10D, false, "Map"},
    {20, "RAYSWITCH", 0x16C, false, "MapDiffuse MapDirect MapGI MapReflection MapTransmission MapShadow"},
    {21, "WIREFRAME", 0x14A, false, "MapBackground"},
    {22, "AO", 0x98F, false, "MapOcclude MapUnocclude MapInner MapMaxTraceDistance"},
    {23, "NORMALMAP", 0x140, false, "Primary/Map Primary/MapHeight Secondary/Map Secondary/MapHeight"},
    {24, "FALLOFF", 0x6D3, false, "MapLow MapHigh MapCenter"},
    {25, "UVWSET", 0x114, false, "MapA MapB"},
    {26, "RETILE", 0x125, false, "MapA"},
    {27, "SUN", 0x17C, false, "SunMap SkyReplacementMap SpaceMap"},
};

// Keys where a slip is likely: offsets out of order, odd spellings, the last field of a type.
struct Key {
    int32_t type;
    const char* key;
    FieldKind kind;
    uint32_t offset;
};

// clang-format off
const Key kKeys[] = {
    {2, "BlurOffset", K::Float, 0x110},          {3, "BlendCurve", K::Bool, 0x138},
    {3, "CurveLow", K::Float, 0x130},            {4, "Operation", K::Enum, 0x130},
    {4, "ClampResult", K::Bool, 0x136},          {5, "ContrastAlt", K::Float, 0xA04},
    {5, "BrightnessAlt", K::Float, 0xA00},       {5, "Gamma", K::Color, 0xB20},
    {5, "LUT", K::String, 0x13A4},               {6, "Linearize", K::Bool, 0x14B},
    {6, "Operation", K::Enum, 0x14C},            {8, "Range01", K::Bool, 0x634},
    {8, "FrameInterpolation", K::Bool, 0x635},   {9, "ColorOutput", K::ColorOutput, 0x10C},
    {10, "AlphaOperation", K::Enum, 0x128},      {11, "ColorB", K::Color, 0x130},
    {12, "Map2", K::TexMapRef, 0x128},           {12, "DefaultLuminance", K::Color, 0x1B0},
    {13, "Type", K::Enum, 0x5F4},                {13, "Color", K::ColorEx, 0x5B8},
    {13, "KelvinNormalize", K::Bool, 0x5FB},     {14, "RefSpace", K::Bool, 0x75C},
    {14, "MatrixRefSpace", K::Matrix, 0x62C},    {14, "Curve", K::Spline, 0x65C},
    {15, "Color1", K::Color, 0x5C8},             {15, "ReferenceMatrix", K::Matrix, 0x5F0},
    {17, "SelectSingle", K::Bool, 0x660},        {18, "WindDirection", K::Float, 0x5BC},
    {18, "Balance", K::Float, 0x5DC},            {18, "Anisotropy", K::Float, 0x5D8},
    {18, "SpectrumCurve", K::Spline, 0x5EC},     {19, "UseCache", K::Bool, 0x10C},
    {20, "Type", K::Enum, 0x168},                {21, "ShowHiddenEdges", K::Bool, 0x149},
    {22, "traceOutside", K::Bool, 0x989},        {22, "Type", K::Enum, 0x158},
    {22, "ColorOutput", K::ColorOutput, 0x568},  {23, "Secondary/NormalMap", K::Bool, 0x139},
    {23, "Secondary/FlipX", K::Bool, 0x13D},     {24, "Dir", K::Enum, 0x140},
    {24, "ClampOutput", K::Bool, 0x6D2},         {24, "ColorOutput", K::ColorOutput, 0x2B0},
    {25, "Channel", K::Int, 0x110},              {26, "Enable", K::Bool, 0x124},
    {27, "GlowLuminanceScale", K::Float, 0x164}, {27, "MoonIllusion", K::Bool, 0x17B},
};
// clang-format on

TEST(Layouts, EachTypeHasItsNumberWordLengthShapeAndKeys) {
    std::set<int32_t> spotted;
    for (const Spot& spot : kSpots) {
        SCOPED_TRACE(spot.word);
        spotted.insert(spot.type);
        const TypeDescriptor* table = findTexMapType(spot.type);
        ASSERT_NE(table, nullptr);
        EXPECT_STREQ(table->word, spot.word);
        EXPECT_STREQ(kTexMapTypeWords[spot.type], spot.word);
        EXPECT_EQ(table->imageLength, spot.imageLength);
        EXPECT_EQ(texMapImageLength(spot.type), spot.imageLength) << "the scene file copies as many bytes";
        EXPECT_EQ(table->mapped, spot.mapped);
        std::string references;
        for (size_t i = 0; i < table->fieldCount; ++i) {
            const FieldDescriptor& field = table->fields[i];
            if (field.kind == K::TexMapRef || field.kind == K::TextureRef)
                references += (references.empty() ? "" : " ") + std::string(field.key);
            EXPECT_EQ((field.flags & kFieldReadOnly) != 0,
                      spot.type == 2 && std::string(field.key).rfind("Blur", 0) == 0)
                << field.key << ": only SIMPLEIMAGE's blur pair is left out of the walk";
        }
        EXPECT_EQ(references, spot.references);
    }
    for (const Key& key : kKeys) {
        const TypeDescriptor* table = findTexMapType(key.type);
        ASSERT_NE(table, nullptr) << key.type;
        const FieldDescriptor* field = nullptr;
        for (size_t i = 0; i < table->fieldCount; ++i) {
            if (table->fields[i].key == std::string(key.key)) field = &table->fields[i];
        }
        ASSERT_NE(field, nullptr) << table->word << " " << key.key;
        EXPECT_EQ(field->kind, key.kind) << table->word << " " << key.key;
        EXPECT_EQ(field->offset, key.offset) << table->word << " " << key.key;
    }
    std::set<int32_t> registered;
    for (const TypeDescriptor* const* entry = allTexMapTypes(); *entry; ++entry)
        EXPECT_TRUE(registered.insert((*entry)->type).second) << "twice: " << (*entry)->word;
    EXPECT_EQ(registered, spotted);
    for (int32_t type : {-1, 0, 16, 28})
        EXPECT_EQ(findTexMapType(type), nullptr) << type;
}

// ---- Documents that probe the corners ----------------------------------------------------------

std::string repeat(int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

uint32_t bits(float value) {
    uint32_t word;
    std::memcpy(&word, &value, sizeof word);
    return word;
}

struct DocumentCase {
    int32_t type;
    std::string inner;
    std::vector<std::pair<uint32_t, uint32_t>> expected; // offset, word
};

constexpr uint32_t kKept = kBackgroundWord;
constexpr uint32_t kNone = 0xFFFFFFFF;

const std::vector<DocumentCase> kDocumentCases = {
    // COMPOSITE counts the layers it reads, up to 32, whatever NumLayers says; a layer's place is
    // its order among them, whatever its id, and it starts from zero.
    {7, "<NumLayers value='2'/>" + repeat(5, "<Layer/>"), {{0x108, 5}}},
    {7, repeat(40, "<Layer><Weight value='2'/></Layer>"), {{0x108, 32}, {0x6E8, bits(2)}, {0x70C, kKept}}},
    {7,
     "<Other/><LAYER id='5'><Weight value='3'/><Operation value='mul'/></LAYER>",
     {{0x108, 1}, {0x10C, 2}, {0x110, kNone}, {0x118, bits(3)}, {0x120, 0}, {0x13C, 0}}},
    {7, "", {{0x108, 0}, {0x10C, 0}, {0x708, 0}}},
    // The channel lists keep eight, and two channels leave six zeroed ones.
    {5, repeat(9, "<Channel><Source value='7'/></Channel>"), {{0x120 + 7 * 0x11C, 7}, {0xA00, kKept}}},
    {5, repeat(2, "<channel><Source value='7'/></channel>"), {{0x23C, 7}, {0x358, 0}, {0x9FC, 0}}},
    {12, repeat(9, "<Channel><Source2 value='7'/></Channel>"), {{0x130 + 7 * 16 + 4, 7}, {0x1B0, kKept}}},
    // A point curve holds 64 points; absent curves reset to cubic and empty. The four flags share a word.
    {5,
     "<CurvesW><Cubic value='false'/>" + repeat(70, "<Point X='1' Y='2'/>") + "</CurvesW>",
     {{0xB88, 64}, {0xB98, 0x01010100}, {0xD9C, bits(1)}, {0xDA0, bits(2)}, {0xDA4, 0}, {0xB8C, 0}}},
    // AO places models by id, up to slot 63; an absent list is emptied.
    {22,
     "<Type value='by_lists'/><ExcludeList><Model id='63' value='model_9'/><Model id='64' value='model_4'/>"
     "<Model value='model_5'/></ExcludeList>",
     {{0x158, 3}, {0x168, 0}, {0x360, 0}, {0x368, 0}, {0x560, 9}, {0x564, 0}, {0x568, kKept}}},
    // SELECTMAP reads only the maps behind a Model, placed by id; colours and probabilities that
    // the document leaves out stay.
    {17,
     "<Maps><Map id='1' value='a'/><Model/><Map id='2' value='b'><Probability value='0.5'/></Map>"
     "<map id='8' value='c'/><Map value='d'/></Maps>",
     {{0x5B8, kNone}, {0x5BC, kNone}, {0x5C0, 100}, {0x5F0, kKept}, {0x640, bits(0.5f)}, {0x63C, kKept}}},
    // `3D` is an ordinary key and HalfFloat, behind it, stays; the four bytes ahead of
    // OCEANSURFACE's fields are in no document.
    {18, "<3D value='true'/>", {{0x6EC, 0xA5A5A501}, {0x5B8, kKept}}},
    // Word tables: MATH has Threshold and MATHBLEND lacks it; Add is 0 in one and 3 in the other;
    // any case matches, and FRESNELL is spelt as documents spell it.
    {4, "<Operation value='Threshold'/>", {{0x130, 32}}},
    {6, "<Operation value='Threshold'/>", {{0x14C, kKept}}},
    {6, "<Operation value='add'/>", {{0x14C, 3}}},
    {24, "<Dir value='wrldy'/><Type value='FRESNELL'/>", {{0x140, 10}, {0x13C, 2}}},
    // SIMPLEIMAGE reads the blur that it never writes, and its texture by value.
    {2, "<Texture value='t'/><Blur value='2'/>", {{0x108, 100}, {0x10C, bits(2)}, {0x110, kKept}}},
    // NORMALMAP's sections interleave.
    {23,
     "<Secondary><Gamma value='4'/><Map name='m'/></Secondary>",
     {{0x134, bits(4)}, {0x130, kKept}, {0x10C, 100}, {0x108, kNone}}},
};

TEST(Layouts, DocumentsLandWhereTheLayoutsSay) {
    for (const DocumentCase& c : kDocumentCases) {
        SCOPED_TRACE(c.inner);
        TestNames names;
        auto record = recordOf(c.type);
        readDocumentText(documentWith(kTexMapTypeWords[c.type], c.inner), record.get(), &names);
        for (const auto& [offset, word] : c.expected)
            EXPECT_EQ(valueAt<uint32_t>(*record, offset), word) << "at 0x" << std::hex << offset;
    }
}

} // namespace
} // namespace texmap_test

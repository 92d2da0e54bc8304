// Documents written by hand, one key each, read over a record: each key lands on its bytes,
// with its kind's form; keys that stand at the top level are not found in the section that
// they seem to belong to.
#include "documents/material_document.h"
#include "tests/material_families_b/families_b_test_support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using namespace families_b_test;

namespace {

enum class Expect { I32, U32, F32, Flag, Rgb, Text, MapId, MaterialId, Untouched };

struct KeyCase {
    int32_t type;
    const char* sections; // the path of sections around the element, "" at the top level
    const char* element;  // the key's element as it stands in the document
    uint32_t offset;
    Expect expect;
    double value = 0;      // I32, U32, F32, Flag; R of Rgb
    double g = 0, b = 0;   // G and B of Rgb
    const char* text = ""; // Text, and the name of MapId and MaterialId
    uint32_t width = 4;    // bytes that Untouched looks at
};

const KeyCase kCases[] = {
    // PHYSICAL: the flags and the channel sit after all the curves.
    {1, "Special", "<AnisotropyChannel value='-12'/>", 6192, Expect::I32, -12},
    {1, "Coating", "<CoatRoughnessInvert value='True'/>", 6196, Expect::Flag, 1},
    {1, "Base", "<BaseRoughnessInvert value='yes'/>", 6197, Expect::Flag, 1},
    {1, "Reflection", "<ReflectionRoughnessInvert value='1'/>", 6198, Expect::Flag, 1},
    {1, "Transmission", "<TransmissionRoughnessInvert value='t'/>", 6199, Expect::Flag, 1},
    {1, "Special", "<IOR_UseCustom value='true'/>", 6200, Expect::Flag, 1},
    {1, "Special", "<IOR_UseCustom value='false'/>", 6200, Expect::Flag, 0},
    {1, "Emission", "<EmissionKelvin><Segment id='0' ts='0' te='1' vs='6500'/></EmissionKelvin>", 5416 + 16,
     Expect::F32, 6500},
    {1, "SSS", "<SSS_ScatterColor><Segment id='2' ts='0' te='1' vsy='0.5'/></SSS_ScatterColor>",
     4252 + 2 * 80 + 36, Expect::F32, 0.5},
    {1, "Reflection", "<ReflectionMetalness_Map name='Rust'/>", 2944, Expect::MapId, 0, 0, 0, "Rust"},
    {1, "Base", "<CutoutMap name='Leaf'/>", 2224, Expect::MapId, 0, 0, 0, "Leaf"},
    // UBER
    {4, "", "<DepthMap name='Fog'/>", 13080, Expect::MapId, 0, 0, 0, "Fog"},
    {4, "", "<IORvalue value='1.5'/>", 12240, Expect::F32, 1.5},
    {4, "ThinFilm", "<IORvalue value='1.5'/>", 12240, Expect::Untouched},
    {4, "Special", "<States value='123456'/>", 13088, Expect::U32, 123456},
    {4, "Special", "<CausticsZone value='0x10'/>", 13092, Expect::U32, 16},
    {4, "SSS", "<Expert value='-3'/>", 13096, Expect::I32, -3},
    {4, "SSS", "<Exclusive value='y'/>", 13129, Expect::Flag, 1},
    {4, "Weights", "<UseThinFilm value='1'/>", 13117, Expect::Flag, 1},
    {4, "Coating/Roughness", "<RoughnessType value='ggx'/>", 348, Expect::I32, 1},
    {4, "Coating/Roughness", "<RoughnessType value='Lambert'/>", 348, Expect::Untouched},
    {4, "Diffuse/Roughness", "<RoughnessType value='Hammon'/>", 3900, Expect::I32, 3},
    {4, "ReflectionRetro", "<RoughnessType value='BECKMANN'/>", 6336, Expect::I32, 0},
    {4, "RTC", "<MetalnessValue value='0.25'/>", 8528, Expect::F32, 0.25},
    {4, "Coating/ReflectionRetro", "<RoughnessValue value='0.125'/>", 2812, Expect::F32, 0.125},
    {4, "Emission", "<EmissionIntensityValue value='3.5'/>", 11348, Expect::F32, 3.5},
    {4, "Coating/Reflection", "<ReflectionColor R='0.5' G='0.25' B='2'/>", 1136, Expect::Rgb, 0.5, 0.25, 2},
    {4, "ReflectionRetro", "<IORK_Spline><Segment id='7' ts='0' te='1' ve='9'/></IORK_Spline>",
     7432 + 7 * 32 + 28, Expect::F32, 9},
    {4, "IOR-K", "<IOR_Color_cnd R='4' G='5' B='6'/>", 9664, Expect::Rgb, 4, 5, 6},
    // VOLUMETRIC
    {25, "PhaseFunction", "<PhaseFunctionType value='mie'/>", 444, Expect::I32, 1},
    {25, "VDBFile", "<FileType value='aur'/>", 2804, Expect::I32, 1},
    {25, "VDBFile", "<FileType value='VDB'/>", 2804, Expect::Untouched},
    {25, "VDBFile", "<Path value='/caches/smoke_0001.vdb'/>", 4944, Expect::Text, 0, 0, 0,
     "/caches/smoke_0001.vdb"},
    {25, "VDBFile/Channels", "<PointUVW value='uvw'/>", 4688, Expect::Text, 0, 0, 0, "uvw"},
    {25, "VDBFile/Channels", "<Density value='density'/>", 2896, Expect::Text, 0, 0, 0, "density"},
    {25, "", "<Expert value='11'/>", 2788, Expect::I32, 11},
    {25, "VDBFile", "<PointRadiusScale value='4'/>", 2888, Expect::I32, 4},
    {25, "", "<ModelSpaceBoxMax R='1' G='2' B='3'/>", 464, Expect::Rgb, 1, 2, 3},
    {25, "Emission", "<EmitterResample value='true'/>", 6494, Expect::Flag, 1},
    {25, "PhaseFunction/MIE", "<MieIOR-Kspline><Segment id='1' ts='0' te='1' v1='7'/></MieIOR-Kspline>",
     2524 + 32 + 20, Expect::F32, 7},
    {25, "PhaseFunction/HG", "<PhaseValue value='0.3'/>", 328, Expect::F32, 0.3},
    {25, "Displacement", "<DisplacementScale R='1' G='1' B='0.5'/>", 416, Expect::Rgb, 1, 1, 0.5},
    {25, "", "<Material name='Smoke'/>", 448, Expect::MaterialId, 0, 0, 0, "Smoke"},
    {25, "VDBFile", "<PointMaterial name='Spark'/>", 2892, Expect::MaterialId, 0, 0, 0, "Spark"},
    // MIE
    {31, "", "<MieIORspline><Segment id='3' ts='0' te='1' vs='1.33'/></MieIORspline>", 328 + 3 * 32 + 16,
     Expect::F32, 1.33},
    {31, "IOR", "<MieIORspline><Segment id='3' ts='0' te='1' vs='1.33'/></MieIORspline>", 328 + 3 * 32 + 16,
     Expect::Untouched},
    {31, "", "<NestedPriority value='2'/>", 1132, Expect::I32, 2},
    {31, "", "<Resample value='T'/>", 1137, Expect::Flag, 1},
    {31, "", "<FakedShadows value='n'/>", 1136, Expect::Flag, 0},
    {31, "Special", "<Material name='Water'/>", 1120, Expect::MaterialId, 0, 0, 0, "Water"},
    {31, "IOR-K", "<MieIOR-Kcolor R='0.1' G='0.2' B='0.3'/>", 280, Expect::Rgb, 0.1, 0.2, 0.3},
    {31, "Shape", "<MieBiasValue value='-0.5'/>", 320, Expect::F32, -0.5},
    // HAIR
    {24, "", "<Material_RootValue value='0.5'/>", 4184, Expect::F32, 0.5},
    {24, "Material", "<Material_RootValue value='0.5'/>", 4184, Expect::Untouched},
    {24, "", "<Material name='Gold'/>", 4332, Expect::MaterialId, 0, 0, 0, "Gold"},
    {24, "", "<Material_UseTip value='true'/>", 4352, Expect::Flag, 1},
    {24, "Global/Pheumelanin", "<Pheumelanin_RandomizeValue value='0.75'/>", 1116, Expect::F32, 0.75},
    {24, "Global/Eumelanin", "<Eumelanin_TipColorMap name='Tips'/>", 908, Expect::MapId, 0, 0, 0, "Tips"},
    {24, "Global/Eumelanin", "<Eumelanin_RootColorMap name='Roots'/>", 912, Expect::MapId, 0, 0, 0, "Roots"},
    {24, "Global/DesiredColor", "<UseDesiredColor value='true'/>", 4336, Expect::Flag, 1},
    {24, "Transmission/TransmissionIntensity", "<TransmissionI_bTip value='true'/>", 4349, Expect::Flag, 1},
    {24, "Roughness/Roughness",
     "<Roughness_TipSpline><Segment id='7' ts='0' te='1' t2='0.5'/></Roughness_TipSpline>", 2000 + 7 * 32 + 8,
     Expect::F32, 0.5},
    {24, "Global/GlobalTint", "<GlobalT_TipColor R='0.9' G='0.8' B='0.7'/>", 428, Expect::Rgb, 0.9, 0.8, 0.7},
};

// The document: the sections of the path around the element, below SpecificParameters.
std::string documentOf(const KeyCase& c) {
    std::string open, close;
    const std::string path = c.sections;
    size_t begin = 0;
    while (begin < path.size()) {
        size_t slash = path.find('/', begin);
        if (slash == std::string::npos) slash = path.size();
        const std::string name = path.substr(begin, slash - begin);
        open += "<" + name + ">";
        close = "</" + name + ">" + close;
        begin = slash + 1;
    }
    const char* word = c.type == 1    ? "PHYSICAL"
                       : c.type == 4  ? "UBER"
                       : c.type == 24 ? "HAIR"
                       : c.type == 25 ? "VOLUMETRIC"
                                      : "MIE";
    return std::string("<TaviMaterial type='") + word + "'><SpecificParameters>" + open + c.element + close +
           "</SpecificParameters></TaviMaterial>";
}

TEST(DocumentKeys, EachKeyLandsOnItsBytes) {
    for (const KeyCase& c : kCases) {
        const std::string text = documentOf(c);
        SCOPED_TRACE(text);
        RecordingNames names;
        names.define(42, u"Fog");
        names.define(43, u"Rust");
        auto record = recordOf(c.type, 0x11);
        ASSERT_TRUE(readDocumentText(text, record.get(), &names));
        switch (c.expect) {
        case Expect::I32:
            EXPECT_EQ(valueAt<int32_t>(record.get(), c.offset), static_cast<int32_t>(c.value));
            break;
        case Expect::U32:
            EXPECT_EQ(valueAt<uint32_t>(record.get(), c.offset), static_cast<uint32_t>(c.value));
            break;
        case Expect::F32:
            EXPECT_EQ(valueAt<float>(record.get(), c.offset), static_cast<float>(c.value));
            break;
        case Expect::Flag:
            EXPECT_EQ(valueAt<uint8_t>(record.get(), c.offset), static_cast<uint8_t>(c.value));
            break;
        case Expect::Rgb: {
            const auto color = valueAt<ColorRGB>(record.get(), c.offset);
            EXPECT_EQ(color.R, static_cast<float>(c.value));
            EXPECT_EQ(color.G, static_cast<float>(c.g));
            EXPECT_EQ(color.B, static_cast<float>(c.b));
            break;
        }
        case Expect::Text: {
            const auto* at = reinterpret_cast<const char16_t*>(bytesOf(record.get()) + c.offset);
            EXPECT_EQ(RecordingNames::narrow(std::u16string(at).c_str()), c.text);
            break;
        }
        case Expect::MapId:
        case Expect::MaterialId: {
            const std::string operation = c.expect == Expect::MapId ? "TexMapId " : "MaterialId ";
            const std::vector<std::string> calls = names.calls;
            int32_t id = -1;
            names.GetTexMapId(&id, std::u16string(c.text, c.text + std::strlen(c.text)).c_str());
            EXPECT_GE(id, 0);
            EXPECT_EQ(valueAt<int32_t>(record.get(), c.offset), id);
            bool asked = false;
            for (const std::string& call : calls)
                asked = asked || call == operation + c.text;
            EXPECT_TRUE(asked) << operation << c.text;
            break;
        }
        case Expect::Untouched:
            for (uint32_t i = 0; i < c.width; ++i)
                EXPECT_EQ(bytesOf(record.get())[c.offset + i], 0x11) << "byte " << c.offset + i;
            break;
        }
    }
}

} // namespace

// The registered tables against what the tests know on their own: every type's number, word,
// image and size, a few rows of each (first and last, and the odd ones that documents carry),
// and the rules that every table keeps.
#include "documents/material_document.h"
#include "documents/materials/material_types.h"
#include "scene/record_images.h"
#include "tests/documents/materials/material_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>

namespace material_test {
namespace {

using K = FieldKind;

struct TypeRow {
    int32_t type;
    const char* word; // null: only scene files carry the type
    uint32_t image;
    size_t rows;
    size_t references; // rows that name a texture map or a material
};

const TypeRow kTypes[] = {
    {1, "PHYSICAL", 6201, 73, 25},
    {2, "BLEND_SIDED", 408, 4, 3},
    {3, "TOP_BOTTOM", 536, 5, 2},
    {4, "UBER", 13130, 308, 66},
    {5, "LAMBERTIANEMISSION", 560, 11, 3},
    {6, "IDEALDIFFUSE", 1084, 9, 3},
    {7, "DIFFUSE", 1352, 13, 4},
    {8, "IDEALSPECULAR", 804, 6, 2},
    {10, "BUMP", 284, 4, 3},
    {11, "MIX", 550, 9, 1},
    {12, "IDEALMIRROR", 540, 3, 1},
    {13, "IDEALDIELECTRIC", 1946, 36, 10},
    {14, "CUTOUT", 284, 4, 2},
    {15, "NORMALMAP", 280, 3, 2},
    {16, "TWOSIDED", 276, 2, 2},
    {17, "IDEALCONDUCTOR", 1660, 28, 8},
    {18, "IDEALCOATING", 1954, 41, 13},
    {19, "ROUGHDIELECTRIC", 2744, 43, 11},
    {20, "ROUGHCONDUCTOR", 2456, 35, 9},
    {21, "ROUGHCOATING", 2752, 48, 14},
    {22, "DISPACEMENTMAP", 302, 10, 3},
    {23, "SSS", 1667, 31, 7},
    {24, "HAIR", 4353, 152, 55},
    {25, "VOLUMETRIC", 0x1960, 109, 12}, // the image runs on past the last row, up to the cache slot
    {26, "TRIPLANAR", 492, 11, 4},
    {28, "MTLPROXY", 272, 1, 1},
    {29, "RAYSWITCH", 325, 15, 6},
    {30, "THINFILM", 5798, 109, 30},
    {31, "MIE", 1138, 28, 7},
    {32, nullptr, 328, 4, 1},
};

TEST(Registry, EveryTypeWithFieldsHasOneTableWithItsWordAndImage) {
    std::set<int32_t> registered;
    for (const TypeDescriptor* table : allTables())
        EXPECT_TRUE(registered.insert(table->type).second) << "type " << table->type << " twice";
    std::set<int32_t> known;
    for (const TypeRow& row : kTypes) {
        SCOPED_TRACE("type " + std::to_string(row.type));
        known.insert(row.type);
        const TypeDescriptor* table = findMaterialType(row.type);
        ASSERT_NE(table, nullptr);
        EXPECT_EQ(table->type, row.type);
        if (row.word) {
            EXPECT_STREQ(table->word, row.word);
            EXPECT_STREQ(kMaterialTypeWords[row.type], row.word) << "the frame's word table agrees";
        } else {
            EXPECT_EQ(table->word, nullptr);
        }
        EXPECT_EQ(table->imageLength, row.image);
        EXPECT_EQ(materialImageLength(row.type), row.image) << "the scene reader copies the image";
        EXPECT_EQ(table->fieldCount, row.rows);
        EXPECT_EQ(std::count_if(table->fields, table->fields + table->fieldCount,
                                [](const FieldDescriptor& field) {
                                    return field.kind == K::TexMapRef || field.kind == K::MaterialRef;
                                }),
                  static_cast<long>(row.references));
    }
    EXPECT_EQ(registered, known);
    for (int32_t none : {-1, 0, 9, 27, 33})
        EXPECT_EQ(findMaterialType(none), nullptr) << none;
}

constexpr const char* kMicrofacet = "Beckmann|GGX";
constexpr const char* kDiffuseModels = "LAMBERT|OREN_NAYAR|DISNEY|HAMMON";

struct SpotRow {
    int32_t type;
    size_t index;
    const char* key;
    FieldKind kind;
    uint32_t offset;
    uint32_t width = 0;          // bytes of a spline, text or list; the others have the kind's width
    const char* words = nullptr; // an enum's words, '|' between them
};

const SpotRow kSpots[] = {
    {1, 1, "Coating/CoatWeight", K::Spline, 268, 128},
    {1, 3, "Coating/CoatColor", K::ColorSpline, 400},
    {1, 64, "Special/IOR_UseCustom", K::Bool, 6200},
    {1, 72, "Special/AnisotropyChannel", K::Int, 6192},
    {2, 0, "FrontMaterial", K::MaterialRef, 268},
    {2, 3, "TranslucencyMap", K::TexMapRef, 404},
    {3, 0, "TopMaterial", K::MaterialRef, 268},
    {3, 4, "CoordType", K::Enum, 532, 0, "|WORLD|LOCAL"},
    {4, 1, "Weights/CoatWeightValue", K::Float, 268},
    {4, 20, "Coating/Roughness/RoughnessType", K::Enum, 348, 0, kMicrofacet},
    {4, 48, "Coating/ReflectionRetro/RoughnessType", K::Enum, 2824, 0, kMicrofacet},
    {4, 92, "Diffuse/Roughness/RoughnessType", K::Enum, 3900, 0, kDiffuseModels},
    {4, 120, "RTC/Roughness/RoughnessType", K::Enum, 5528, 0, kMicrofacet},
    {4, 154, "ReflectionRetro/RoughnessType", K::Enum, 6336, 0, kMicrofacet},
    {4, 236, "Emission/EmissionColor", K::Color, 10024},
    {4, 249, "Emission/EmissionColor", K::Color, 11332}, // the surface repeats keys of the medium
    {4, 240, "Emission/KelvinMap", K::TexMapRef, 10044},
    {4, 256, "Emission/KelvinMap", K::TexMapRef, 11620},
    {4, 246, "SSS/Exclusive", K::Bool, 13129},
    {4, 279, "Special/States", K::UInt, 13088},
    {4, 281, "ThinFilm", K::Section, 0},
    {4, 292, "IORvalue", K::Float, 12240}, // top level, after the empty ThinFilm
    {4, 307, "DepthMap", K::TexMapRef, 13080},
    {5, 0, "EmissionColor", K::Color, 268},
    {5, 4, "SplineIntensity", K::Spline, 304, 256},
    {5, 9, "TwoSided", K::Section, 0},
    {5, 10, "OptimizeMaps", K::Bool, 303},
    {6, 0, "FrontColor", K::Color, 268},
    {6, 8, "TranslucenceSpline", K::Spline, 828, 256},
    {7, 9, "RoughnessType", K::Enum, 1084, 0, kDiffuseModels},
    {7, 12, "RoughnessSpline", K::Spline, 1096, 256},
    {8, 0, "SpecularColor", K::Color, 268},
    {8, 5, "PowerSpline", K::Spline, 548, 256},
    {10, 0, "BumpMap", K::TexMapRef, 268},
    {10, 3, "Material", K::MaterialRef, 280},
    {11, 0, "NumChildren", K::Int, 268},
    {11, 1, "NormalizationType", K::Enum, 272, 0, "NONE|NORMALIZE|PROGRESSIVE|BACKPROGRESSIVE"},
    {11, 2, "DisplaceType", K::Enum, 280, 0, "BASE|MIX|ADD|NONE"},
    {11, 4, "UseMaskAsChoice", K::Bool, 549},
    {11, 8, "Child", K::Custom, 284, 256},
    {12, 0, "ReflectionColor", K::Color, 268},
    {12, 2, "ReflectionSpline", K::Spline, 284, 256},
    {13, 1, "Reflection/ReflectionWeight", K::Float, 284},
    {13, 35, "NestedPriority", K::Int, 404},
    {14, 0, "MaskMap", K::TexMapRef, 268},
    {14, 3, "Material", K::MaterialRef, 272},
    {15, 0, "NormalMap", K::TexMapRef, 268},
    {15, 2, "Material", K::MaterialRef, 276},
    {16, 0, "FrontMaterial", K::MaterialRef, 268},
    {16, 1, "BackMaterial", K::MaterialRef, 272},
    {17, 2, "ReflectionWeightMap", K::TexMapRef, 340}, // beside its section
    {17, 27, "IOR-K/IORK_Spline", K::Spline, 1404, 256},
    {18, 39, "Bump/NormalMap", K::Bool, 1953},
    {18, 40, "Material", K::MaterialRef, 400},
    {19, 34, "Roughness/RoughnessType", K::Enum, 1972, 0, kMicrofacet},
    {19, 39, "Roughness/RoughnessRotationSpline", K::Spline, 2488, 256},
    {19, 42, "NestedPriority", K::Int, 404},
    {20, 29, "Roughness/RoughnessType", K::Enum, 1684, 0, kMicrofacet},
    {20, 34, "Roughness/RoughnessRotationSpline", K::Spline, 2200, 256},
    {21, 36, "Roughness/RoughnessType", K::Enum, 1980, 0, kMicrofacet},
    {21, 41, "Roughness/RoughnessRotationSpline", K::Spline, 2496, 256},
    {21, 47, "Material", K::MaterialRef, 400},
    {22, 0, "Map", K::TexMapRef, 268},
    {22, 3, "3D", K::Bool, 300}, // keys that begin with a digit
    {22, 7, "3D_2", K::Bool, 301},
    {22, 9, "Material", K::MaterialRef, 296},
    {23, 1, "Absorption/AbsorptionValue", K::Float, 284},
    {23, 4, "AbsorptionSpline", K::Spline, 380, 256}, // beside its section
    {23, 29, "Exclusive", K::Bool, 1666},
    {23, 30, "Material", K::MaterialRef, 376},
    {24, 2, "Global/GlobalIntensity/GlobalI_RootValue", K::Float, 268},
    {24, 53, "Global/Pheumelanin/Pheumelanin_RandomizeValue", K::Float, 1116},
    {24, 143, "Material", K::Section, 0},
    {24, 151, "Material", K::MaterialRef, 4332}, // after the empty Material section
    {24, 150, "Material_UseTip", K::Bool, 4352},
    {25, 1, "Absorption/AbsorptionValue", K::Float, 284},
    {25, 16, "PhaseFunction/PhaseFunctionType", K::Enum, 444, 0, "HG|MIE"},
    {25, 34, "PhaseFunction/MIE/MieIOR-Kspline", K::Spline, 2524, 256},
    {25, 43, "Emission/EmitterResample", K::Bool, 6494}, // the last byte of any row, just past the cache flag
    {25, 63, "Material", K::MaterialRef, 448},
    {25, 65, "VDBFile/FileType", K::Enum, 2804, 0, "OPENVDB|AUR"},
    {25, 66, "VDBFile/Path", K::String, 4944, 768},
    {25, 108, "VDBFile/Channels/PointUVW", K::String, 4688, 128},
    {26, 0, "SmoothMap", K::TexMapRef, 268},
    {26, 8, "UseReferenceMatrix", K::Section, 0},
    {26, 9, "ReferenceMatrix", K::Matrix, 300},
    {26, 10, "CoordGen", K::CoordGen, 348},
    {28, 0, "Material", K::MaterialRef, 268},
    {29, 0, "MaterialDiffuse", K::MaterialRef, 268},
    {29, 13, "Type", K::Enum, 316, 0, "FIRST|LAST|SINGLE"},
    {29, 14, "DisplaceSource", K::Int, 320},
    {30, 1, "ThinFilm/ReflectionValue", K::Float, 268},
    {30, 33, "RTC/Roughness/RoughnessType", K::Enum, 4984, 0, kMicrofacet},
    {30, 38, "RTC/Roughness/RoughnessAnisotropySpline", K::Spline, 5520, 256},
    {30, 39, "RTC/Roughness/RoughnessAngleSpline", K::Spline, 5520, 256}, // on the anisotropy's bytes
    {30, 36, "RTC/Roughness/RoughnessAngleMap", K::TexMapRef, 5776},
    {30, 61, "RTC/ReflectionRetro/RoughnessType", K::Enum, 2532, 0, kMicrofacet},
    {30, 66, "RTC/ReflectionRetro/UsePBRforRetro", K::Bool, 5797},
    {30, 108, "RTC/Bump/TreatAsNormalMap", K::Bool, 5793},
    {31, 1, "IOR/MieIORvalue", K::Float, 308},
    {31, 4, "MieIORspline", K::Spline, 328, 256}, // beside its section
    {31, 22, "Special/Material", K::MaterialRef, 1120},
    {31, 27, "Resample", K::Bool, 1137},
    {32, 0, "States", K::Int, 268},
    {32, 2, "DefaultMaterial", K::MaterialRef, 272},
    {32, 3, "Pattern", K::Custom, 280, 48},
};

std::string joined(WordTable words) {
    std::string text;
    for (size_t i = 0; words && words[i]; ++i)
        text += (i ? "|" : "") + std::string(words[i]);
    return text;
}

TEST(Rows, SpotRowsStandWhereDocumentsPutThem) {
    for (const SpotRow& spot : kSpots) {
        SCOPED_TRACE("type " + std::to_string(spot.type) + " " + spot.key);
        const TypeDescriptor* table = findMaterialType(spot.type);
        ASSERT_NE(table, nullptr);
        ASSERT_LT(spot.index, table->fieldCount);
        const FieldDescriptor& field = table->fields[spot.index];
        EXPECT_STREQ(field.key, spot.key);
        EXPECT_EQ(field.kind, spot.kind);
        EXPECT_EQ(field.offset, spot.offset);
        EXPECT_EQ(field.width, spot.width ? spot.width : fixedWidth(spot.kind));
        if (spot.kind == K::Enum) {
            EXPECT_EQ(joined(field.words), spot.words);
        }
    }
    size_t enums = 0;
    for (const TypeDescriptor* table : allTables())
        enums += std::count_if(table->fields, table->fields + table->fieldCount,
                               [](const FieldDescriptor& field) { return field.kind == K::Enum; });
    EXPECT_EQ(enums, std::count_if(std::begin(kSpots), std::end(kSpots),
                                   [](const SpotRow& spot) { return spot.kind == K::Enum; }))
        << "every enum row is listed with its words";
}

// Keys that a table holds twice, and rows that lie on the bytes of another key: both as
// existing documents have them.
const std::map<int32_t, std::set<std::string>> kTwinKeys = {
    {4,
     {"Emission", "Emission/EmissionColor", "Emission/EmissionMap", "Emission/KelvinValue",
      "Emission/KelvinMap"}},
    {24, {"Material"}},
};
const std::map<int32_t, std::set<std::string>> kSharedBytes = {
    {30, {"RTC/Roughness/RoughnessAnisotropySpline", "RTC/Roughness/RoughnessAngleSpline"}},
};

std::set<std::string> listed(const std::map<int32_t, std::set<std::string>>& lists, int32_t type) {
    const auto found = lists.find(type);
    return found == lists.end() ? std::set<std::string>{} : found->second;
}

TEST(Rows, EveryTableIsWellFormed) {
    for (const TypeDescriptor* table : allTables()) {
        SCOPED_TRACE("type " + std::to_string(table->type));
        std::set<std::string> sections, seen, twins, shared;
        uint32_t end = 0;
        for (size_t i = 0; i < table->fieldCount; ++i) {
            const FieldDescriptor& field = table->fields[i];
            const std::string key = field.key;
            SCOPED_TRACE(key);
            const size_t slash = key.rfind('/');
            if (slash != std::string::npos) {
                EXPECT_TRUE(sections.count(key.substr(0, slash))) << "its section comes first";
            }
            if (!seen.insert(key).second) twins.insert(key);
            if (field.kind == K::Section) {
                sections.insert(key);
                continue;
            }
            EXPECT_GE(field.offset, kMaterialFieldsOffset) << "no row reaches into the head";
            end = std::max(end, field.offset + field.width);
            if (sharesBytes(*table, i)) shared.insert(key);
        }
        EXPECT_EQ(twins, listed(kTwinKeys, table->type));
        EXPECT_EQ(shared, listed(kSharedBytes, table->type));
        if (table->type != kVolumeMaterialType) {
            EXPECT_EQ(end, table->imageLength) << "the image ends with the last row";
        }
    }
}

} // namespace
} // namespace material_test

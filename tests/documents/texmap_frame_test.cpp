// The shared texmap blocks, the frames of both document kinds around a test-only table, and
// every table that the registries hold.
#include "documents/field_table.h"
#include "documents/material_document.h"
#include "documents/materials/material_types.h"
#include "documents/texmap_blocks.h"
#include "documents/texmap_document.h"
#include "documents/texmaps/texmap_types.h"
#include "tests/documents/document_test_support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using documents_test::parse;
using documents_test::RecordingNames;
using documents_test::serialise;
using documents_test::TempFolder;

namespace {

// ---- CoordGen flags ----------------------------------------------------------------------------

CoordGen identityBlock() {
    CoordGen block{};
    for (int i = 0; i < 3; ++i)
        block.CoordinateMatrix.m[i][i] = 1;
    block.matrixNotIdentity = 7;
    block.linearNotIdentity = 7;
    return block;
}

TEST(CoordGenFlags, FollowTheMatrixWithinTheTolerance) {
    const float tolerance = std::ldexp(1.0f, -20);
    struct Case {
        const char* what;
        int row, column;
        float value;
        uint8_t whole, linear;
    } cases[] = {
        {"identity", 0, 0, 1.0f, 0, 0},
        {"translation", 0, 3, 1.0f, 1, 0},
        {"diagonal at 1 + 2^-20", 1, 1, 1.0f + tolerance, 1, 1},
        {"diagonal at 1 - 2^-20", 2, 2, 1.0f - tolerance, 1, 1},
        {"diagonal within", 1, 1, 1.0f + tolerance / 2, 0, 0},
        {"off-diagonal at 2^-20", 0, 1, tolerance, 1, 1},
        {"off-diagonal within", 2, 0, -tolerance / 2, 0, 0},
        {"translation within", 2, 3, tolerance / 2, 0, 0},
        {"not a number", 1, 2, std::nanf(""), 1, 1},
    };
    for (const Case& c : cases) {
        CoordGen block = identityBlock();
        block.CoordinateMatrix.m[c.row][c.column] = c.value;
        UpdateCoordGenFlags(&block);
        EXPECT_EQ(block.matrixNotIdentity, c.whole) << c.what;
        EXPECT_EQ(block.linearNotIdentity, c.linear) << c.what;
    }
}

TEST(CoordGenBlock, IdentityWithTranslationFromADocument) {
    pugi::xml_document doc;
    parse(doc, "<CoordGen><CoordinateMatrix><Row0 m00='1' m01='0' m02='0'/><Row1 m10='0' m11='1' m12='0'/>"
               "<Row2 m20='0' m21='0' m22='1'/><Row3 m30='1' m31='2' m32='3'/></CoordinateMatrix>"
               "<CoordGenType value='worldspace'/><CoordinateEnTileY value='true'/>"
               "<CommonNoise><Levels value='70000'/><UsePhase value='yes'/><Scale R='2'/></CommonNoise>"
               "</CoordGen>");
    CoordGen block{};
    block.Noise.Scale = {5, 6, 7};
    ReadCoordGen(doc.child("CoordGen"), &block);
    EXPECT_EQ(block.matrixNotIdentity, 1);
    EXPECT_EQ(block.linearNotIdentity, 0);
    EXPECT_EQ(block.CoordinateMatrix.m[1][3], 2.0f);
    EXPECT_EQ(block.CoordGenType, 2);
    EXPECT_EQ(block.CoordinateEnTile[1], 1);
    EXPECT_EQ(block.Noise.Levels, 70000 - 65536);
    EXPECT_EQ(block.Noise.UsePhase, 1);
    EXPECT_EQ(block.Noise.Scale.R, 2.0f);
    EXPECT_EQ(block.Noise.Scale.G, 6.0f);
}

TEST(CoordGenBlock, MissingBlockKeepsFieldsAndStillComputesTheFlags) {
    CoordGen block = identityBlock();
    block.CoordinateMatrix.m[0][1] = 0.5f;
    block.Blur = 3;
    block.CoordGenType = 1;
    ReadCoordGen(pugi::xml_node(), &block);
    EXPECT_EQ(block.Blur, 3.0f);
    EXPECT_EQ(block.CoordGenType, 1) << "the CoordGenType table has no empty word";
    EXPECT_EQ(block.matrixNotIdentity, 1);
    EXPECT_EQ(block.linearNotIdentity, 1);
}

TEST(SharedBlocks, WriteThenReadRestoresThem) {
    CoordGen coord = identityBlock();
    coord.CoordinateMatrix.m[2][3] = -4;
    coord.OutsideColor = {1, 2, 3, 4, 5, 6, 7, 8};
    coord.Blur = 0.1f;
    coord.BlurOffset = 0.2f;
    coord.CoordinateChannel = 3;
    coord.CoordinateEnTile[2] = 1;
    coord.CoordinateEnMirror[0] = 1;
    coord.CoordGenType = 2;
    coord.Noise = {{1, 2, 3}, {4, 5, 6}, 0.5f, -3, 1, 0, 0.25f, 8};
    ColorOutput output{};
    output.RgbMul = 1.5f;
    output.LumB = 0.0722f;
    output.Clamp1 = 1;
    for (auto* spline : {output.SplineR, output.SplineG, output.SplineB, output.SplineA}) {
        for (int i = 0; i < 8; ++i)
            spline[i] = {1, 0, 0, 0, 0, 0, 0, 0};
        spline[0] = {0, 0.3f, 0.6f, 1, 0, 0.3f, 0.6f, 1};
    }
    pugi::xml_document doc;
    WriteCoordGen(doc.append_child("CoordGen"), &coord);
    WriteColorOutput(doc.append_child("ColorOutput"), &output);
    CoordGen coordBack{};
    ColorOutput outputBack{};
    ReadCoordGen(doc.child("CoordGen"), &coordBack);
    ReadColorOutput(doc.child("ColorOutput"), &outputBack);
    UpdateCoordGenFlags(&coord);
    EXPECT_EQ(std::memcmp(&coordBack, &coord, sizeof coord), 0);
    EXPECT_EQ(std::memcmp(&outputBack, &output, sizeof output), 0);
    EXPECT_TRUE(doc.child("CoordGen").child("CommonNoise").child("OctaveSize"));
}

// ---- Frames around a test-only table -----------------------------------------------------------

constexpr FieldDescriptor kImageLikeFields[] = {
    textureField("Texture", kTexMapMappedFieldsOffset),
    texMapField("Map", kTexMapMappedFieldsOffset + 4),
    readOnly(floatField("Blur", kTexMapMappedFieldsOffset + 8)),
};
constexpr TypeDescriptor kImageLike = [] {
    TypeDescriptor type = describeType(1, "IMAGE", kTexMapMappedFieldsOffset + 12, kImageLikeFields);
    type.mapped = true;
    type.resultTextureOffset = kTexMapMappedFieldsOffset;
    return type;
}();
static_assert(typeFits(kImageLike, sizeof(TexMapRecord)));

std::unique_ptr<TexMapRecord> texMapOf(int32_t type) {
    auto record = std::make_unique<TexMapRecord>();
    std::memset(record.get(), 0, sizeof(TexMapRecord));
    record->type = type;
    return record;
}

TEST(TexMapFrame, ReadsHeadSharedBlocksAndOwnFields) {
    TempFolder folder;
    const std::u16string path = folder.write(
        "image.xml",
        "<TaviTexMap type='image'><Common><Name value='Brick'/></Common>"
        "<CoordGen><Blur value='2'/><CoordinateMatrix><Row3 m30='5'/></CoordinateMatrix></CoordGen>"
        "<ColorOutput><RgbAdd value='0.5'/></ColorOutput>"
        "<SpecificParameters><Texture value='brick.png'/><Map name='Mortar'/><Blur value='9'/>"
        "</SpecificParameters></TaviTexMap>");
    auto record = texMapOf(1);
    RecordingNames names;
    EXPECT_TRUE(ReadTexMapWithTable(kImageLike, record.get(), path.c_str(), &names));
    EXPECT_EQ(std::u16string(record->Name), u"Brick");
    CoordGen coord;
    ColorOutput output;
    std::memcpy(&coord, reinterpret_cast<uint8_t*>(record.get()) + kTexMapCoordGenOffset, sizeof coord);
    std::memcpy(&output, reinterpret_cast<uint8_t*>(record.get()) + kTexMapColorOutputOffset, sizeof output);
    EXPECT_EQ(coord.Blur, 2.0f);
    EXPECT_EQ(coord.CoordinateMatrix.m[0][3], 5.0f);
    EXPECT_EQ(coord.matrixNotIdentity, 1) << "a zero matrix is no identity";
    EXPECT_EQ(output.RgbAdd, 0.5f);
    float blur = 0;
    std::memcpy(&blur, reinterpret_cast<uint8_t*>(record.get()) + kTexMapMappedFieldsOffset + 8, sizeof blur);
    EXPECT_EQ(blur, 9.0f) << "read-only fields are read";
    EXPECT_EQ(names.calls, (std::vector<std::string>{"TextureId brick.png", "TexMapId Mortar"}));
}

TEST(TexMapFrame, ImageResultIsWhetherTheTextureWasFound) {
    TempFolder folder;
    const std::u16string path =
        folder.write("image.xml", "<TaviTexMap type='IMAGE'><SpecificParameters/></TaviTexMap>");
    auto record = texMapOf(1);
    RecordingNames names;
    EXPECT_FALSE(ReadTexMapWithTable(kImageLike, record.get(), path.c_str(), &names));
    int32_t texture = 0;
    std::memcpy(&texture, reinterpret_cast<uint8_t*>(record.get()) + kTexMapMappedFieldsOffset,
                sizeof texture);
    EXPECT_EQ(texture, -1);
    auto untouched = texMapOf(1);
    EXPECT_FALSE(
        ReadTexMapWithTable(kImageLike, untouched.get(), folder.pathOf("absent.xml").c_str(), &names));
    EXPECT_EQ(untouched->Name[0], 0);
}

TEST(TexMapFrame, WalkWritesTheWholeDocumentAndCallsInOrder) {
    auto record = texMapOf(1);
    std::memcpy(record->Name, u"Brick", 6 * sizeof(char16_t));
    const int32_t texture = 7, map = 8;
    std::memcpy(reinterpret_cast<uint8_t*>(record.get()) + kTexMapMappedFieldsOffset, &texture, 4);
    std::memcpy(reinterpret_cast<uint8_t*>(record.get()) + kTexMapMappedFieldsOffset + 4, &map, 4);
    RecordingNames names;
    pugi::xml_document doc;
    BuildTexMapWithTable(kImageLike, record.get(), &names, &doc);
    EXPECT_EQ(names.calls, (std::vector<std::string>{"TextureName 7", "TexMapName 8"}));
    std::vector<std::string> order;
    for (const pugi::xml_node& child : doc.child(kTexMapRootWord).children())
        order.push_back(child.name());
    EXPECT_EQ(order, (std::vector<std::string>{"Common", "CoordGen", "ColorOutput", "SpecificParameters"}));
    EXPECT_STREQ(doc.child(kTexMapRootWord).attribute("type").value(), "IMAGE");
    EXPECT_FALSE(doc.child(kTexMapRootWord).child("SpecificParameters").child("Blur"));
}

constexpr FieldDescriptor kMaterialLikeFields[] = {
    colorField("FrontColor", 268), texMapField("FrontMap", 292),           splineField("FrontSpline", 316, 8),
    sectionField("Coating"),       materialField("Coating/Material", 280),
};
constexpr TypeDescriptor kMaterialLike = describeType(7, "DIFFUSE", 316 + 256, kMaterialLikeFields);
static_assert(typeFits(kMaterialLike, sizeof(MaterialRecord)));

TEST(MaterialFrame, ReadsTheHeadAndTheTableBelowSpecificParameters) {
    TempFolder folder;
    const std::u16string path = folder.write(
        "diffuse.xml", "<TaviMaterial type='diffuse'><Common><Name value='Clay'/><AovID value='4'/></Common>"
                       "<SpecificParameters><FrontColor R='0.5'/><FrontMap name='Dirt'/>"
                       "<Coating><Material name='Varnish'/></Coating></SpecificParameters></TaviMaterial>");
    auto record = std::make_unique<MaterialRecord>();
    std::memset(record.get(), 0, sizeof(MaterialRecord));
    record->type = 7;
    RecordingNames names;
    EXPECT_TRUE(ReadMaterialWithTable(kMaterialLike, record.get(), path.c_str(), &names));
    EXPECT_EQ(std::u16string(record->Name), u"Clay");
    EXPECT_EQ(record->AovID, 4);
    EXPECT_EQ(names.calls, (std::vector<std::string>{"TexMapId Dirt", "MaterialId Varnish"}));
    float front = 0;
    std::memcpy(&front, reinterpret_cast<uint8_t*>(record.get()) + 268, 4);
    EXPECT_EQ(front, 0.5f);

    RecordingNames walk;
    pugi::xml_document doc;
    BuildMaterialWithTable(kMaterialLike, record.get(), &walk, &doc);
    EXPECT_EQ(walk.calls, (std::vector<std::string>{"TexMapName 100", "MaterialName 101"}));
    EXPECT_STREQ(doc.child(kMaterialRootWord).attribute("type").value(), "DIFFUSE");
    EXPECT_TRUE(doc.child(kMaterialRootWord).child("SpecificParameters").child("Coating").child("Material"));
}

// ---- Every registered table --------------------------------------------------------------------

// Walks every registered table once over a record whose references are all distinct, and checks
// the table against its number, its word and the record's size.
template <class Record, class Find, class Build>
void checkRegistry(const TypeDescriptor* const* all, Find find, const char* const* words, int32_t last,
                   Build build) {
    for (const TypeDescriptor* const* entry = all; *entry; ++entry) {
        const TypeDescriptor& table = **entry;
        SCOPED_TRACE("type " + std::to_string(table.type));
        EXPECT_TRUE(typeFits(table, sizeof(Record)));
        ASSERT_GE(table.type, 1);
        ASSERT_LE(table.type, last);
        EXPECT_EQ(find(table.type), &table) << "each number has one table";
        if (table.word) {
            EXPECT_STREQ(table.word, words[table.type]);
        }
        size_t references = 0;
        for (size_t i = 0; i < table.fieldCount; ++i) {
            const FieldKind kind = table.fields[i].kind;
            EXPECT_TRUE(fieldHasExtras(table.fields[i])) << table.fields[i].key;
            const bool reference = kind == FieldKind::TexMapRef || kind == FieldKind::MaterialRef ||
                                   kind == FieldKind::TextureRef;
            if (reference && !(table.fields[i].flags & kFieldReadOnly)) ++references;
        }
        auto record = std::make_unique<Record>();
        std::memset(record.get(), 0, sizeof(Record));
        record->type = table.type;
        RecordingNames names;
        pugi::xml_document doc;
        build(table, record.get(), &names, &doc);
        EXPECT_GE(names.calls.size(), references);
    }
    for (int32_t type = -1; type <= last + 1; ++type) {
        const TypeDescriptor* table = find(type);
        if (table) {
            EXPECT_EQ(table->type, type);
        }
        if (type < 1 || type > last) {
            EXPECT_EQ(table, nullptr) << type;
        }
    }
}

TEST(Registries, EveryTableFitsItsNumberWordAndRecord) {
    checkRegistry<MaterialRecord>(allMaterialTypes(), findMaterialType, kMaterialTypeWords, kMaterialTypeLast,
                                  BuildMaterialWithTable);
    checkRegistry<TexMapRecord>(allTexMapTypes(), findTexMapType, kTexMapTypeWords, kTexMapTypeLast,
                                BuildTexMapWithTable);
    EXPECT_EQ(findTexMapType(16), nullptr);
}

} // namespace

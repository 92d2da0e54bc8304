// The derived flags of the coordinate block and the texture map frame around a test-only table;
// the registered tables, the blocks' round trips and the material frame are the families' tests.
#include "documents/field_table.h"
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

using documents_test::RecordingNames;
using documents_test::TempFolder;

namespace {

using Calls = std::vector<std::string>;

CoordGen identityBlock() {
    CoordGen block{};
    for (int i = 0; i < 3; ++i)
        block.CoordinateMatrix.m[i][i] = 1;
    block.matrixNotIdentity = 7;
    block.linearNotIdentity = 7;
    return block;
}

template <class T> T fieldAt(const void* record, size_t offset) {
    T value;
    std::memcpy(&value, static_cast<const uint8_t*>(record) + offset, sizeof value);
    return value;
}

TEST(CoordGenFlags, FollowTheMatrixWithinTheTolerance) {
    const float tolerance = std::ldexp(1.0f, -20);
    const struct {
        const char* what;
        int row, column;
        float value;
        uint8_t whole, linear;
    } cases[] = {{"identity", 0, 0, 1.0f, 0, 0},
                 {"translation", 0, 3, 1.0f, 1, 0},
                 {"diagonal at 1 + 2^-20", 1, 1, 1.0f + tolerance, 1, 1},
                 {"diagonal at 1 - 2^-20", 2, 2, 1.0f - tolerance, 1, 1},
                 {"diagonal within", 1, 1, 1.0f + tolerance / 2, 0, 0},
                 {"off-diagonal at 2^-20", 0, 1, tolerance, 1, 1},
                 {"off-diagonal within", 2, 0, -tolerance / 2, 0, 0},
                 {"translation within", 2, 3, tolerance / 2, 0, 0},
                 {"not a number", 1, 2, std::nanf(""), 1, 1}};
    for (const auto& c : cases) {
        CoordGen block = identityBlock();
        block.CoordinateMatrix.m[c.row][c.column] = c.value;
        UpdateCoordGenFlags(&block);
        EXPECT_EQ(block.matrixNotIdentity, c.whole) << c.what;
        EXPECT_EQ(block.linearNotIdentity, c.linear) << c.what;
    }
    // A missing block keeps the fields (CoordGenType has no empty word) and still computes the flags.
    CoordGen block = identityBlock();
    block.CoordinateMatrix.m[0][1] = 0.5f;
    block.CoordGenType = 1;
    ReadCoordGen(pugi::xml_node(), &block);
    EXPECT_EQ(block.CoordGenType, 1);
    EXPECT_EQ(block.matrixNotIdentity + block.linearNotIdentity, 2);
}

constexpr FieldDescriptor kImageLikeFields[] = {textureField("Texture", kTexMapMappedFieldsOffset),
                                                texMapField("Map", kTexMapMappedFieldsOffset + 4),
                                                readOnly(floatField("Blur", kTexMapMappedFieldsOffset + 8))};
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

TEST(TexMapFrame, ReadsHeadSharedBlocksAndOwnFieldsAndResultIsTheTexture) {
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
    const auto coord = fieldAt<CoordGen>(record.get(), kTexMapCoordGenOffset);
    EXPECT_EQ(coord.Blur, 2.0f);
    EXPECT_EQ(coord.CoordinateMatrix.m[0][3], 5.0f);
    EXPECT_EQ(coord.matrixNotIdentity, 1) << "a zero matrix is no identity";
    EXPECT_EQ(fieldAt<ColorOutput>(record.get(), kTexMapColorOutputOffset).RgbAdd, 0.5f);
    EXPECT_EQ(fieldAt<float>(record.get(), kTexMapMappedFieldsOffset + 8), 9.0f)
        << "read-only fields are read";
    EXPECT_EQ(names.calls, (Calls{"TextureId brick.png", "TexMapId Mortar"}));

    const std::u16string bare =
        folder.write("bare.xml", "<TaviTexMap type='IMAGE'><SpecificParameters/></TaviTexMap>");
    EXPECT_FALSE(ReadTexMapWithTable(kImageLike, record.get(), bare.c_str(), &names)) << "no texture found";
    EXPECT_EQ(fieldAt<int32_t>(record.get(), kTexMapMappedFieldsOffset), -1);
    auto untouched = texMapOf(1);
    EXPECT_FALSE(
        ReadTexMapWithTable(kImageLike, untouched.get(), folder.pathOf("absent.xml").c_str(), &names));
    EXPECT_EQ(untouched->Name[0], 0);
}

TEST(TexMapFrame, WalkWritesTheWholeDocumentAndCallsInOrder) {
    auto record = texMapOf(1);
    const int32_t ids[2] = {7, 8};
    std::memcpy(reinterpret_cast<uint8_t*>(record.get()) + kTexMapMappedFieldsOffset, ids, sizeof ids);
    RecordingNames names;
    pugi::xml_document doc;
    BuildTexMapWithTable(kImageLike, record.get(), &names, &doc);
    EXPECT_EQ(names.calls, (Calls{"TextureName 7", "TexMapName 8"}));
    Calls order;
    for (const pugi::xml_node& child : doc.child(kTexMapRootWord).children())
        order.push_back(child.name());
    EXPECT_EQ(order, (Calls{"Common", "CoordGen", "ColorOutput", "SpecificParameters"}));
    EXPECT_STREQ(doc.child(kTexMapRootWord).attribute("type").value(), "IMAGE");
    EXPECT_FALSE(doc.child(kTexMapRootWord).child("SpecificParameters").child("Blur"));
}

} // namespace

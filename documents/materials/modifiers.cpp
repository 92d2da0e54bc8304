// Materials that wrap a base material with a bump, a normal map, a displacement or a triplanar
// projection.
#include "documents/materials/families.h"

namespace {

constexpr FieldDescriptor kBumpFields[] = {
    texMapField("BumpMap", 268),
    texMapField("BumpHeightMap", 272),
    floatField("BumpHeightValue", 276),
    materialField("Material", 280),
};

constexpr FieldDescriptor kNormalMapFields[] = {
    texMapField("NormalMap", 268),
    floatField("ScaleValue", 272),
    materialField("Material", 276),
};

constexpr FieldDescriptor kDisplacementMapFields[] = {
    texMapField("Map", 268),        floatField("HeightValue", 276), floatField("WaterLevel", 284),
    boolField("3D", 300),           texMapField("Map2", 272),       floatField("HeightValue2", 280),
    floatField("WaterLevel2", 288), boolField("3D_2", 301),         intField("iterations", 292),
    materialField("Material", 296),
};

// UseReferenceMatrix is an empty element. CoordGen is the coordinate block that texture maps
// share, read and written by the same operations as there.
constexpr FieldDescriptor kTriplanarFields[] = {
    texMapField("SmoothMap", 268),       floatField("SmoothValue", 272),  floatField("ScaleX", 276),
    floatField("ScaleY", 280),           floatField("ScaleZ", 284),       materialField("MaterialX", 288),
    materialField("MaterialY", 292),     materialField("MaterialZ", 296), sectionField("UseReferenceMatrix"),
    matrixField("ReferenceMatrix", 300), coordGenField("CoordGen", 348),

};

} // namespace

constexpr TypeDescriptor kBumpMaterial = describeType(10, "BUMP", 284, kBumpFields);
constexpr TypeDescriptor kNormalMapMaterial = describeType(15, "NORMALMAP", 280, kNormalMapFields);
constexpr TypeDescriptor kDisplacementMapMaterial =
    describeType(22, "DISPACEMENTMAP", 302, kDisplacementMapFields);
constexpr TypeDescriptor kTriplanarMaterial = describeType(26, "TRIPLANAR", 492, kTriplanarFields);

// Each table fits the record, and its image is the one the scene reader copies.
static_assert(materialTableFits(kBumpMaterial));
static_assert(materialTableFits(kNormalMapMaterial));
static_assert(materialTableFits(kDisplacementMapMaterial));
static_assert(materialTableFits(kTriplanarMaterial));

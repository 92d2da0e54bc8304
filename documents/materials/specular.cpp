// The mirror, the conductors, the dielectrics, the coatings and the thin film. The rough forms
// are their ideal forms with a Roughness section added. Where a document's layout is irregular
// (a key beside its section instead of in it, an empty element, two keys on the same bytes), the
// tables keep it as documents have it, so that existing documents read as they always did.
#include "documents/materials/families.h"

namespace {

constexpr const char* const kMicrofacetWords[] = {"Beckmann", "GGX", nullptr};

// The Roughness section of the rough types, which differ only in where it lies.
constexpr std::array<FieldDescriptor, 7> roughnessFields(uint32_t typeOffset) {
    return {{
        sectionField("Roughness"),
        enumField("Roughness/RoughnessType", typeOffset, kMicrofacetWords),
        colorField("Roughness/RoughnessVector", typeOffset - 24),
        texMapField("Roughness/RoughnessMap", typeOffset - 12),
        splineField("Roughness/RoughnessSpline", typeOffset + 4, 8),
        splineField("Roughness/RoughnessAnisotropySpline", typeOffset + 260, 8),
        splineField("Roughness/RoughnessRotationSpline", typeOffset + 516, 8),
    }};
}

constexpr FieldDescriptor kIdealSpecularFields[] = {
    colorField("SpecularColor", 268), texMapField("SpecularMap", 284), splineField("SpecularSpline", 292, 8),
    floatField("PowerValue", 280),    texMapField("PowerMap", 288),    splineField("PowerSpline", 548, 8),
};

constexpr FieldDescriptor kIdealMirrorFields[] = {
    colorField("ReflectionColor", 268),
    texMapField("ReflectionMap", 280),
    splineField("ReflectionSpline", 284, 8),
};

// Only the weight of the reflection stands inside its section; the rest of it stands beside.
constexpr FieldDescriptor kIdealConductorFields[] = {
    sectionField("Reflection"),
    floatField("Reflection/ReflectionWeight", 360),
    texMapField("ReflectionWeightMap", 340),
    colorField("ReflectionColor", 268),
    texMapField("ReflectionMap", 328),
    splineField("ReflectionSpline", 380, 8),
    sectionField("ReflectionEdge"),
    floatField("ReflectionEdge/EdgeWeight", 364),
    texMapField("ReflectionEdge/EdgeWeightMap", 344),
    colorField("ReflectionEdge/EdgeColor", 280),
    texMapField("ReflectionEdge/EdgeMap", 332),
    splineField("ReflectionEdge/EdgeSpline", 636, 8),
    sectionField("ReflectionRetro"),
    floatField("ReflectionRetro/RetroWeight", 368),
    texMapField("ReflectionRetro/RetroWeightMap", 348),
    colorField("ReflectionRetro/RetroColor", 292),
    texMapField("ReflectionRetro/RetroMap", 336),
    splineField("ReflectionRetro/RetroSpline", 892, 8),
    sectionField("IOR"),
    floatField("IOR/IOR_Value", 372),
    colorField("IOR/IOR_Color", 304),
    texMapField("IOR/IOR_Map", 352),
    splineField("IOR/IOR_Spline", 1148, 8),
    sectionField("IOR-K"),
    floatField("IOR-K/IORK_Value", 376),
    colorField("IOR-K/IORK_Color", 316),
    texMapField("IOR-K/IORK_Map", 356),
    splineField("IOR-K/IORK_Spline", 1404, 8),
};

constexpr FieldDescriptor kDielectricKeys[] = {
    sectionField("Reflection"),
    floatField("Reflection/ReflectionWeight", 284),
    texMapField("Reflection/ReflectionWeightMap", 288),
    colorField("Reflection/ReflectionColor", 268),
    texMapField("Reflection/ReflectionMap", 280),
    splineField("Reflection/ReflectionSpline", 408, 8),
    sectionField("ReflectionEdge"),
    floatField("ReflectionEdge/EdgeValue", 312),
    texMapField("ReflectionEdge/EdgeWeightMap", 308),
    colorField("ReflectionEdge/EdgeColor", 292),
    texMapField("ReflectionEdge/EdgeMap", 304),
    splineField("ReflectionEdge/EdgeSpline", 664, 8),
    sectionField("ReflectionRetro"),
    floatField("ReflectionRetro/RetroValue", 336),
    texMapField("ReflectionRetro/RetroWeightMap", 332),
    colorField("ReflectionRetro/RetroColor", 316),
    texMapField("ReflectionRetro/RetroMap", 328),
    splineField("ReflectionRetro/RetroSpline", 920, 8),
    sectionField("IOR"),
    floatField("IOR/IOR_Value", 372),
    colorField("IOR/IOR_Color", 356),
    texMapField("IOR/IOR_Map", 368),
    splineField("IOR/IOR_Spline", 1432, 8),
    sectionField("Transmission"),
    floatField("Transmission/TransmissionValue", 376),
    texMapField("Transmission/TransmissionWeightMap", 380),
    colorField("Transmission/TransmissionColor", 340),
    texMapField("Transmission/TransmissionMap", 352),
    splineField("Transmission/TransmissionSpline", 1176, 8),
    floatField("Transmission/DepthValue", 396),
    colorField("Transmission/DepthColor", 384),
    texMapField("Transmission/DepthMap", 400),
    splineField("Transmission/DepthSpline", 1688, 8),
};
constexpr FieldDescriptor kDielectricTail[] = {
    boolField("Thin", 1944),
    boolField("FakedShadows", 1945),
    intField("NestedPriority", 404),
};
constexpr auto kIdealDielectricFields = joinFields(kDielectricKeys, kDielectricTail);

// RetroWeight is an empty element; bytes 332 to 335 belong to no key.
constexpr FieldDescriptor kCoatingKeys[] = {
    sectionField("Reflection"),
    floatField("Reflection/ReflectionValue", 284),
    colorField("Reflection/ReflectionColor", 268),
    texMapField("Reflection/ReflectionMap", 280),
    splineField("Reflection/ReflectionSpline", 416, 8),
    sectionField("ReflectionEdge"),
    floatField("ReflectionEdge/EdgeValue", 308),
    texMapField("ReflectionEdge/EdgeWeightMap", 304),
    colorField("ReflectionEdge/EdgeColor", 288),
    texMapField("ReflectionEdge/EdgeMap", 300),
    splineField("ReflectionEdge/EdgeSpline", 672, 8),
    sectionField("ReflectionRetro"),
    sectionField("ReflectionRetro/RetroWeight"),
    texMapField("ReflectionRetro/RetroWeightMap", 328),
    colorField("ReflectionRetro/RetroColor", 312),
    texMapField("ReflectionRetro/RetroMap", 324),
    splineField("ReflectionRetro/RetroSpline", 928, 8),
    sectionField("IOR"),
    floatField("IOR/IOR_Value", 352),
    colorField("IOR/IOR_Color", 336),
    texMapField("IOR/IOR_Map", 348),
    splineField("IOR/IOR_Spline", 1184, 8),
    sectionField("Transmission"),
    boolField("Transmission/Simplified", 1952),
    floatField("Transmission/TransmissionValue", 372),
    colorField("Transmission/TransmissionColor", 356),
    texMapField("Transmission/TransmissionMap", 368),
    splineField("Transmission/TransmissionSpline", 1440, 8),
    floatField("Transmission/ThicknessValue", 376),
    texMapField("Transmission/ThicknessMap", 380),
    floatField("Transmission/UnderlyingValue", 384),
    texMapField("Transmission/UnderlyingMap", 388),
    floatField("Transmission/DepthValue", 392),
    texMapField("Transmission/DepthMap", 396),
    splineField("Transmission/DepthSpline", 1696, 8),
};
constexpr FieldDescriptor kCoatingTail[] = {
    sectionField("Bump"),
    texMapField("Bump/BumpMap", 404),
    texMapField("Bump/BumpHeightMap", 408),
    floatField("Bump/BumpHeightValue", 412),
    boolField("Bump/NormalMap", 1953),
    materialField("Material", 400),
};
constexpr auto kIdealCoatingFields = joinFields(kCoatingKeys, kCoatingTail);

constexpr FieldDescriptor kRoughConductorKeys[] = {
    sectionField("Reflection"),
    floatField("Reflection/ReflectionWeight", 360),
    texMapField("Reflection/ReflectionWeightMap", 340),
    colorField("Reflection/ReflectionColor", 268),
    texMapField("Reflection/ReflectionMap", 328),
    splineField("Reflection/ReflectionSpline", 380, 8),
    sectionField("ReflectionEdge"),
    floatField("ReflectionEdge/EdgeWeight", 364),
    texMapField("ReflectionEdge/EdgeWeightMap", 344),
    colorField("ReflectionEdge/EdgeColor", 280),
    texMapField("ReflectionEdge/EdgeMap", 332),
    splineField("ReflectionEdge/EdgeSpline", 636, 8),
    sectionField("ReflectionRetro"),
    floatField("ReflectionRetro/RetroWeight", 368),
    texMapField("ReflectionRetro/RetroWeightMap", 348),
    colorField("ReflectionRetro/RetroColor", 292),
    texMapField("ReflectionRetro/RetroMap", 336),
    splineField("ReflectionRetro/RetroSpline", 892, 8),
    sectionField("IOR"),
    floatField("IOR/IOR_Value", 372),
    colorField("IOR/IOR_Color", 304),
    texMapField("IOR/IOR_Map", 352),
    splineField("IOR/IOR_Spline", 1148, 8),
    sectionField("IOR-K"),
    floatField("IOR-K/IORK_Value", 376),
    colorField("IOR-K/IORK_Color", 316),
    texMapField("IOR-K/IORK_Map", 356),
    splineField("IOR-K/IORK_Spline", 1404, 8),
};
constexpr auto kRoughConductorFields = joinFields(kRoughConductorKeys, roughnessFields(1684));

constexpr auto kRoughDielectricFields = joinFields(kDielectricKeys, roughnessFields(1972), kDielectricTail);

constexpr auto kRoughCoatingFields = joinFields(kCoatingKeys, roughnessFields(1980), kCoatingTail);

// The anisotropy and the angle spline of the RTC roughness both lie at byte 5520: a read takes
// the angle spline last, and bytes 5256 to 5511 belong to no key.
constexpr FieldDescriptor kThinFilmFields[] = {
    sectionField("ThinFilm"),
    floatField("ThinFilm/ReflectionValue", 268),
    colorField("ThinFilm/ReflectionColor", 272),
    splineField("ThinFilm/ReflectionSpline", 284, 8),
    texMapField("ThinFilm/ReflectionColorMap", 540),
    texMapField("ThinFilm/ReflectionWeightMap", 544),
    floatField("ThinFilm/EdgeValue", 548),
    colorField("ThinFilm/EdgeColor", 552),
    splineField("ThinFilm/EdgeSpline", 564, 8),
    texMapField("ThinFilm/EdgeColorMap", 820),
    texMapField("ThinFilm/EdgeWeightMap", 824),
    floatField("ThinFilm/IORvalue", 828),
    floatField("ThinFilm/AbbeValue", 832),
    colorField("ThinFilm/IORcolor", 836),
    splineField("ThinFilm/IORspline", 848, 8),
    texMapField("ThinFilm/IORmap", 1104),
    floatField("ThinFilm/ThicknessValue", 1108),
    texMapField("ThinFilm/ThicknessMap", 1112),
    floatField("ThinFilm/TransmissionValue", 1116),
    colorField("ThinFilm/TransmissionColor", 1120),
    splineField("ThinFilm/TransmissionSpline", 1132, 8),
    texMapField("ThinFilm/TransmissionColorMap", 1388),
    texMapField("ThinFilm/TransmissionWeightMap", 1392),
    floatField("ThinFilm/DepthValue", 1396),
    colorField("ThinFilm/DepthColor", 1400),
    splineField("ThinFilm/DepthSpline", 1412, 8),
    texMapField("ThinFilm/DepthMap", 1668),
    boolField("HasDielectricBody", 5792),
    sectionField("RTC"),
    sectionField("RTC/Roughness"),
    floatField("RTC/Roughness/RoughnessValue", 4988),
    floatField("RTC/Roughness/RoughnessAnisotropyValue", 5252),
    floatField("RTC/Roughness/RoughnessAngleValue", 5516),
    enumField("RTC/Roughness/RoughnessType", 4984, kMicrofacetWords),
    texMapField("RTC/Roughness/RoughnessMap", 5248),
    texMapField("RTC/Roughness/RoughnessAnisotropyMap", 5512),
    texMapField("RTC/Roughness/RoughnessAngleMap", 5776),
    splineField("RTC/Roughness/RoughnessSpline", 4992, 8),
    splineField("RTC/Roughness/RoughnessAnisotropySpline", 5520, 8),
    splineField("RTC/Roughness/RoughnessAngleSpline", 5520, 8),
    sectionField("RTC/Reflection"),
    floatField("RTC/Reflection/ReflectionValue", 1680),
    colorField("RTC/Reflection/ReflectionColor", 1684),
    splineField("RTC/Reflection/ReflectionSpline", 1696, 8),
    texMapField("RTC/Reflection/ReflectionMap", 1952),
    texMapField("RTC/Reflection/ReflectionWeightMap", 1956),
    sectionField("RTC/ReflectionEdge"),
    floatField("RTC/ReflectionEdge/EdgeValue", 1960),
    colorField("RTC/ReflectionEdge/EdgeColor", 1964),
    splineField("RTC/ReflectionEdge/EdgeSpline", 1976, 8),
    texMapField("RTC/ReflectionEdge/EdgeMap", 2232),
    texMapField("RTC/ReflectionEdge/EdgeWeightMap", 2236),
    sectionField("RTC/ReflectionRetro"),
    floatField("RTC/ReflectionRetro/RetroValue", 2240),
    colorField("RTC/ReflectionRetro/RetroColor", 2244),
    splineField("RTC/ReflectionRetro/RetroSpline", 2256, 8),
    texMapField("RTC/ReflectionRetro/RetroMap", 2512),
    texMapField("RTC/ReflectionRetro/RetroWeightMap", 2516),
    floatField("RTC/ReflectionRetro/RoughnessValue", 2520),
    floatField("RTC/ReflectionRetro/RoughnessAnisotropyValue", 2524),
    floatField("RTC/ReflectionRetro/RoughnessAngleValue", 2528),
    enumField("RTC/ReflectionRetro/RoughnessType", 2532, kMicrofacetWords),
    texMapField("RTC/ReflectionRetro/RoughnessMap", 2536),
    texMapField("RTC/ReflectionRetro/RoughnessAnisotropyMap", 2540),
    texMapField("RTC/ReflectionRetro/RoughnessAngleMap", 2544),
    boolField("RTC/ReflectionRetro/UseForMetallic", 5796),
    boolField("RTC/ReflectionRetro/UsePBRforRetro", 5797),
    splineField("RTC/ReflectionRetro/RoughnessSpline", 2548, 8),
    splineField("RTC/ReflectionRetro/RoughnessAnisotropySpline", 2804, 8),
    splineField("RTC/ReflectionRetro/RoughnessAngleSpline", 3060, 8),
    floatField("RTC/ReflectionRetro/IOR_Value", 3316),
    colorField("RTC/ReflectionRetro/IOR_Color", 3324),
    texMapField("RTC/ReflectionRetro/IOR_Map", 3348),
    floatField("RTC/ReflectionRetro/IOR_Abbe", 3356),
    splineField("RTC/ReflectionRetro/IOR_Spline", 3360, 8),
    floatField("RTC/ReflectionRetro/IORK_Value", 3320),
    colorField("RTC/ReflectionRetro/IORK_Color", 3336),
    texMapField("RTC/ReflectionRetro/IORK_Map", 3352),
    splineField("RTC/ReflectionRetro/IORK_Spline", 3616, 8),
    floatField("RTC/MetalnessValue", 1672),
    texMapField("RTC/MetalnessMap", 1676),
    sectionField("RTC/Transmission"),
    floatField("RTC/Transmission/TransmissionValue", 3872),
    colorField("RTC/Transmission/TransmissionColor", 3876),
    splineField("RTC/Transmission/TransmissionSpline", 3888, 8),
    texMapField("RTC/Transmission/TransmissionMap", 4144),
    texMapField("RTC/Transmission/TransmissionWeightMap", 4148),
    boolField("RTC/Transmission/Thin", 5795),
    floatField("RTC/Transmission/DepthValue", 4152),
    colorField("RTC/Transmission/DepthColor", 4156),
    splineField("RTC/Transmission/DepthSpline", 4168, 8),
    texMapField("RTC/Transmission/DepthMap", 4424),
    intField("RTC/Transmission/NestedPriority", 5788),
    boolField("RTC/Transmission/FakedShadows", 5794),
    sectionField("RTC/IOR"),
    floatField("RTC/IOR/IOR_Value", 4428),
    floatField("RTC/IOR/IOR_Abbe", 4432),
    colorField("RTC/IOR/IOR_Color", 4436),
    splineField("RTC/IOR/IOR_Spline", 4448, 8),
    texMapField("RTC/IOR/IOR_Map", 4704),
    sectionField("RTC/IOR-K"),
    floatField("RTC/IOR-K/IORK_Value", 4708),
    colorField("RTC/IOR-K/IORK_Color", 4712),
    splineField("RTC/IOR-K/IORK_Spline", 4724, 8),
    texMapField("RTC/IOR-K/IORK_Map", 4980),
    sectionField("RTC/Bump"),
    floatField("RTC/Bump/BumpHeightValue", 5780),
    texMapField("RTC/Bump/BumpMap", 5784),
    boolField("RTC/Bump/TreatAsNormalMap", 5793),
};

} // namespace

constexpr TypeDescriptor kIdealSpecularMaterial = describeType(8, "IDEALSPECULAR", 804, kIdealSpecularFields);
constexpr TypeDescriptor kIdealMirrorMaterial = describeType(12, "IDEALMIRROR", 540, kIdealMirrorFields);
constexpr TypeDescriptor kIdealDielectricMaterial =
    describeType(13, "IDEALDIELECTRIC", 1946, kIdealDielectricFields);
constexpr TypeDescriptor kIdealConductorMaterial =
    describeType(17, "IDEALCONDUCTOR", 1660, kIdealConductorFields);
constexpr TypeDescriptor kIdealCoatingMaterial = describeType(18, "IDEALCOATING", 1954, kIdealCoatingFields);
constexpr TypeDescriptor kRoughDielectricMaterial =
    describeType(19, "ROUGHDIELECTRIC", 2744, kRoughDielectricFields);
constexpr TypeDescriptor kRoughConductorMaterial =
    describeType(20, "ROUGHCONDUCTOR", 2456, kRoughConductorFields);
constexpr TypeDescriptor kRoughCoatingMaterial = describeType(21, "ROUGHCOATING", 2752, kRoughCoatingFields);
constexpr TypeDescriptor kThinFilmMaterial = describeType(30, "THINFILM", 5798, kThinFilmFields);

// Each table fits the record, and its image is the one the scene reader copies.
static_assert(materialTableFits(kIdealSpecularMaterial));
static_assert(materialTableFits(kIdealMirrorMaterial));
static_assert(materialTableFits(kIdealDielectricMaterial));
static_assert(materialTableFits(kIdealConductorMaterial));
static_assert(materialTableFits(kIdealCoatingMaterial));
static_assert(materialTableFits(kRoughDielectricMaterial));
static_assert(materialTableFits(kRoughConductorMaterial));
static_assert(materialTableFits(kRoughCoatingMaterial));
static_assert(materialTableFits(kThinFilmMaterial));

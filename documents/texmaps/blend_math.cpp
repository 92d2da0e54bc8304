// Blend and math maps: the types that combine other maps, mostly as pairs of a map reference
// and a colour. All have the plain shape. COMPOSITE's layers are the one repeated element.
#include "documents/texmaps/families.h"

#include "documents/texmap_document.h"
#include "documents/texmaps/entry_lists.h"
#include "scene/records.h"

#include <cstring>
#include <iterator>

const char* const kBlendOperationWords[] = {
    "A",           "B",          "Mul",         "Add",          "Sub",          "Blend",       "Difference",
    "Average",     "BW",         "Screen",      "Overlay",      "ColorDodge",   "LinearDodge", "Exclusion",
    "ColorBurn",   "LinearBurn", "LinearLight", "SoftLight",    "HardLight",    "VividLight",  "PinLight",
    "HardMix",     "Subtract",   "Divide",      "Darken",       "Lighten",      "DarkenColor", "LighterColor",
    "SpotLight",   "SpotLightBlend", "Hue",     "Saturation",   "Color",        "Value",       nullptr,
};
static_assert(sizeof(kBlendOperationWords) / sizeof(kBlendOperationWords[0]) == 34 + 1);

namespace {

const char* const kMathOperationWords[] = {
    "Add", "Sub",  "Mul",    "Div",      "Mod",       "Sqr",      "Sqrt",     "Exp",      "Pow",
    "Logn", "Sin", "Cos",    "Tan",      "ASin",      "ACos",     "ATan",     "Min",      "Max",
    "A",   "B",    "Abs",    "Neg",      "Cross",     "Dot",      "Length",   "Normalize", "Diagonal",
    "Floor", "Ceil", "Frac", "SRGB2LIN", "LIN2SRGB",  "Threshold", nullptr,
};
static_assert(sizeof(kMathOperationWords) / sizeof(kMathOperationWords[0]) == 33 + 1);

const char* const kAlphaOperationWords[] = {"SRC1", "SRC2", "MULTIPLY", nullptr};

// ---- BLEND, MATH, MATHBLEND --------------------------------------------------------------------

constexpr FieldDescriptor kBlendFields[] = {
    texMapField("Map1", 0x108),      texMapField("Map2", 0x10C),     texMapField("MapBlend", 0x110),
    colorField("Color1", 0x114),     colorField("Color2", 0x120),    floatField("WeightBlend", 0x12C),
    boolField("BlendCurve", 0x138),  floatField("CurveLow", 0x130),  floatField("CurveHigh", 0x134),
};
static_assert(fieldsEnd(kBlendFields) == 0x139 && fieldsFrom(kBlendFields, kTexMapPlainFieldsOffset));

constexpr FieldDescriptor kMathFields[] = {
    texMapField("Map1", 0x108),
    texMapField("Map2", 0x10C),
    colorField("Color1", 0x110),
    colorField("Color2", 0x11C),
    floatField("Weight1", 0x128),
    floatField("Weight2", 0x12C),
    boolField("Invert1", 0x134),
    boolField("Invert2", 0x135),
    boolField("ClampResult", 0x136),
    enumField("Operation", 0x130, kMathOperationWords),
};
static_assert(fieldsEnd(kMathFields) == 0x137 && fieldsFrom(kMathFields, kTexMapPlainFieldsOffset));

constexpr FieldDescriptor kMathBlendFields[] = {
    texMapField("Map1", 0x108),
    texMapField("Map2", 0x10C),
    texMapField("MapM", 0x110),
    colorField("Color1", 0x114),
    colorField("Color2", 0x120),
    floatField("Weight1", 0x12C),
    floatField("Weight2", 0x130),
    floatField("WeightM", 0x134),
    floatField("Offset1", 0x138),
    floatField("Offset2", 0x13C),
    floatField("OffsetM", 0x140),
    boolField("Invert1", 0x144),
    boolField("Invert2", 0x145),
    boolField("InvertM", 0x146),
    boolField("ClampResult", 0x147),
    boolField("sRGB1", 0x148),
    boolField("sRGB2", 0x149),
    boolField("sRGBM", 0x14A),
    boolField("Linearize", 0x14B),
    enumField("Operation", 0x14C, kBlendOperationWords),
};
static_assert(fieldsEnd(kMathBlendFields) == 0x150 && fieldsFrom(kMathBlendFields, kTexMapPlainFieldsOffset));

// ---- COMPOSITE ---------------------------------------------------------------------------------

// One layer; the offsets are within its entry.
constexpr FieldDescriptor kLayerFields[] = {
    enumField("Operation", 0x00, kBlendOperationWords),
    texMapField("Map", 0x04),
    texMapField("Mask", 0x08),
    floatField("Weight", 0x0C),
    floatField("MaskWeight", 0x10),
    boolField("Invert", 0x14),
    boolField("InvertM", 0x15),
    boolField("Clamp", 0x16),
    boolField("ClampResult", 0x17),
    colorField("Color", 0x18),
    colorField("MaskColor", 0x24),
};
constexpr uint32_t kLayerBytes = 0x30;
constexpr uint32_t kMaxLayers = 32;
static_assert(fieldsFit(kLayerFields, kLayerBytes) && fieldsEnd(kLayerFields) == kLayerBytes);

constexpr EntryList kLayers{"Layer", kLayerFields, std::size(kLayerFields), kLayerBytes, kMaxLayers};

// The layer list owns NumLayers as well as the array behind it: whatever number a document
// states, the count is that of the Layer elements read, and the walk writes as many layers as
// the count says.
constexpr uint32_t kNumLayersOffset = 0x108;
constexpr uint32_t kLayersOffset = 0x10C;
constexpr uint32_t kLayerListSpan = kLayersOffset - kNumLayersOffset + entryListBytes(kLayers);

void readLayers(pugi::xml_node parent, const char*, const FieldDescriptor& field, uint8_t* record, size_t,
                ITaviNameInterface* names) {
    uint8_t* numLayers = record + field.offset;
    const int32_t count = static_cast<int32_t>(readEntryList(parent, kLayers, numLayers + 4, names));
    std::memcpy(numLayers, &count, sizeof count);
}

void writeLayers(pugi::xml_node parent, const char*, const FieldDescriptor& field, const uint8_t* record,
                 size_t, ITaviNameInterface* names) {
    const uint8_t* numLayers = record + field.offset;
    int32_t count = 0;
    std::memcpy(&count, numLayers, sizeof count);
    writeEntryList(parent, kLayers, numLayers + 4, count, names);
}

void layerReferences(const FieldDescriptor& field, const uint8_t* record, size_t,
                     const ReferenceVisitor& visit) {
    const uint8_t* numLayers = record + field.offset;
    int32_t count = 0;
    std::memcpy(&count, numLayers, sizeof count);
    entryListReferences(kLayers, numLayers + 4, count, visit);
}

constexpr CustomField kLayerList{readLayers, writeLayers, layerReferences};

constexpr FieldDescriptor kCompositeFields[] = {
    intField("NumLayers", kNumLayersOffset),
    customField("Layer", kNumLayersOffset, kLayerListSpan, &kLayerList),
};
static_assert(fieldsEnd(kCompositeFields) == 0x70C && fieldsFrom(kCompositeFields, kTexMapPlainFieldsOffset));

// ---- RGB_MULTIPLY, RGB_TINT --------------------------------------------------------------------

constexpr FieldDescriptor kRgbMultiplyFields[] = {
    texMapField("Map1", 0x108),  texMapField("Map2", 0x10C),
    colorField("Color1", 0x110), colorField("Color2", 0x11C),
    enumField("AlphaOperation", 0x128, kAlphaOperationWords),
};
static_assert(fieldsEnd(kRgbMultiplyFields) == 0x12C && fieldsFrom(kRgbMultiplyFields, kTexMapPlainFieldsOffset));

constexpr FieldDescriptor kRgbTintFields[] = {
    texMapField("MapSource", 0x108), texMapField("MapR", 0x10C),   texMapField("MapG", 0x110),
    texMapField("MapB", 0x114),      colorField("ColorR", 0x118), colorField("ColorG", 0x124),
    colorField("ColorB", 0x130),
};
static_assert(fieldsEnd(kRgbTintFields) == 0x13C && fieldsFrom(kRgbTintFields, kTexMapPlainFieldsOffset));

} // namespace

constexpr TypeDescriptor kBlendTexMap = describeType(3, "BLEND", fieldsEnd(kBlendFields), kBlendFields);
constexpr TypeDescriptor kMathTexMap = describeType(4, "MATH", fieldsEnd(kMathFields), kMathFields);
constexpr TypeDescriptor kMathBlendTexMap =
    describeType(6, "MATHBLEND", fieldsEnd(kMathBlendFields), kMathBlendFields);
constexpr TypeDescriptor kCompositeTexMap =
    describeType(7, "COMPOSITE", fieldsEnd(kCompositeFields), kCompositeFields);
constexpr TypeDescriptor kRgbMultiplyTexMap =
    describeType(10, "RGB_MULTIPLY", fieldsEnd(kRgbMultiplyFields), kRgbMultiplyFields);
constexpr TypeDescriptor kRgbTintTexMap = describeType(11, "RGB_TINT", fieldsEnd(kRgbTintFields), kRgbTintFields);

static_assert(typeFits(kBlendTexMap, sizeof(TexMapRecord)) && typeFits(kMathTexMap, sizeof(TexMapRecord)));
static_assert(typeFits(kMathBlendTexMap, sizeof(TexMapRecord)) && typeFits(kCompositeTexMap, sizeof(TexMapRecord)));
static_assert(typeFits(kRgbMultiplyTexMap, sizeof(TexMapRecord)) && typeFits(kRgbTintTexMap, sizeof(TexMapRecord)));
static_assert(imageAgrees(kBlendTexMap) && imageAgrees(kMathTexMap));
static_assert(imageAgrees(kMathBlendTexMap) && imageAgrees(kCompositeTexMap));
static_assert(imageAgrees(kRgbMultiplyTexMap) && imageAgrees(kRgbTintTexMap));

// Selectors and wrappers: the maps that route or reshape other maps. TRIPLANAR and SELECTMAP
// have the mapped shape, the others the plain one; OUTPUT carries a ColorOutput among its
// fields. SELECTMAP's list of maps is the one repeated element.
#include "documents/texmaps/families.h"

#include "bridge/name_interface.h"
#include "common/unicode.h"
#include "documents/texmap_document.h"
#include "documents/texmaps/entry_lists.h"
#include "documents/xml_value_codec.h"
#include "scene/records.h"

#include <cstring>
#include <string>

namespace {

const char* const kRaySwitchTypeWords[] = {"FIRST", "LAST", "SINGLE", nullptr};

// ---- OUTPUT, TRIPLANAR -------------------------------------------------------------------------

constexpr FieldDescriptor kOutputFields[] = {
    texMapField("Map", 0x108),
    colorOutputField("ColorOutput", 0x10C),
};
static_assert(fieldsEnd(kOutputFields) == 0x52C && fieldsFrom(kOutputFields, kTexMapPlainFieldsOffset));

constexpr FieldDescriptor kTriplanarFields[] = {
    texMapField("Map1", 0x5B8),
    colorField("Color1", 0x5C8),
    texMapField("Map2", 0x5BC),
    colorField("Color2", 0x5D4),
    texMapField("Map3", 0x5C0),
    colorField("Color3", 0x5E0),
    texMapField("MapBlur", 0x5C4),
    floatField("Blur", 0x5EC),
    boolField("UseReferenceMatrix", 0x620),
    matrixField("ReferenceMatrix", 0x5F0),
    boolField("RotateBasis", 0x621),
};
static_assert(fieldsEnd(kTriplanarFields) == 0x622 && fieldsFrom(kTriplanarFields, kTexMapMappedFieldsOffset));

// ---- SELECTMAP ---------------------------------------------------------------------------------

// Eight entries in three parallel arrays: map ids, colours, probabilities. The list is only
// read behind a `Model` element, which documents carry ahead of their `Map` entries; each entry
// is placed by its `id`. The walk writes `Map` entries alone, so its own document reads back
// without maps.
constexpr uint32_t kSelectEntries = 8;
constexpr uint32_t kSelectIdsOffset = 0;
constexpr uint32_t kSelectColorsOffset = kSelectIdsOffset + kSelectEntries * sizeof(int32_t);
constexpr uint32_t kSelectProbabilitiesOffset = kSelectColorsOffset + kSelectEntries * sizeof(ColorRGB);
constexpr uint32_t kSelectListBytes = kSelectProbabilitiesOffset + kSelectEntries * sizeof(float);
static_assert(0x5B8 + kSelectColorsOffset == 0x5D8 && 0x5B8 + kSelectProbabilitiesOffset == 0x638);
static_assert(0x5B8 + kSelectListBytes == 0x658);

int32_t texMapIdOf(const char* name, ITaviNameInterface* names) {
    if (!names) return -1;
    const std::u16string text = utf8ToUtf16(name);
    int32_t result = -1;
    const int32_t* answer = names->GetTexMapId(&result, text.c_str());
    return answer ? *answer : result;
}

void readSelectList(pugi::xml_node parent, const char* key, const FieldDescriptor& field, uint8_t* record,
                    size_t, ITaviNameInterface* names) {
    uint8_t* list = record + field.offset;
    const int32_t none = -1;
    for (uint32_t i = 0; i < kSelectEntries; ++i)
        std::memcpy(list + kSelectIdsOffset + i * sizeof none, &none, sizeof none);
    for (pugi::xml_node child = parent.child(key).child("Model"); child; child = child.next_sibling()) {
        int32_t id = -1;
        if (!isListItem(child, "Map") || !readIdAttribute(child, &id)) continue;
        if (id < 0 || id >= static_cast<int32_t>(kSelectEntries)) continue;
        const size_t entry = static_cast<size_t>(id);
        const int32_t map = texMapIdOf(child.attribute("value").value(), names);
        std::memcpy(list + kSelectIdsOffset + entry * sizeof map, &map, sizeof map);
        ColorRGB color;
        std::memcpy(&color, list + kSelectColorsOffset + entry * sizeof color, sizeof color);
        XmlReadColor(child, "Color", &color);
        std::memcpy(list + kSelectColorsOffset + entry * sizeof color, &color, sizeof color);
        float probability;
        std::memcpy(&probability, list + kSelectProbabilitiesOffset + entry * sizeof probability,
                    sizeof probability);
        XmlReadFloat(child, "Probability", &probability);
        std::memcpy(list + kSelectProbabilitiesOffset + entry * sizeof probability, &probability,
                    sizeof probability);
    }
}

void writeSelectList(pugi::xml_node parent, const char* key, const FieldDescriptor& field, const uint8_t* record,
                     size_t, ITaviNameInterface* names) {
    const uint8_t* list = record + field.offset;
    const pugi::xml_node maps = appendChildElement(parent, key);
    for (uint32_t entry = 0; entry < kSelectEntries; ++entry) {
        int32_t map = -1;
        std::memcpy(&map, list + kSelectIdsOffset + entry * sizeof map, sizeof map);
        if (map == -1) continue;
        pugi::xml_node element = appendChildElement(maps, "Map");
        appendIdAttribute(element, entry);
        pugi::xml_attribute value = element.append_attribute("value");
        const char16_t* name = names ? names->GetTexMapName(map) : nullptr;
        if (value && name) value.set_value(utf16ToUtf8(name).c_str());
        ColorRGB color;
        std::memcpy(&color, list + kSelectColorsOffset + entry * sizeof color, sizeof color);
        XmlWriteColor(element, "Color", &color);
        float probability;
        std::memcpy(&probability, list + kSelectProbabilitiesOffset + entry * sizeof probability,
                    sizeof probability);
        XmlWriteFloat(element, "Probability", &probability);
    }
}

void selectListReferences(const FieldDescriptor& field, const uint8_t* record, size_t,
                          const ReferenceVisitor& visit) {
    const uint8_t* list = record + field.offset;
    for (uint32_t entry = 0; entry < kSelectEntries; ++entry) {
        int32_t map = -1;
        std::memcpy(&map, list + kSelectIdsOffset + entry * sizeof map, sizeof map);
        if (map != -1) visit(ReferenceKind::TexMap, map);
    }
}

constexpr CustomField kSelectList{readSelectList, writeSelectList, selectListReferences};

constexpr FieldDescriptor kSelectMapFields[] = {
    texMapField("MaskMap", 0x658),
    intField("NumSamples", 0x65C),
    boolField("SelectSingle", 0x660),
    customField("Maps", 0x5B8, kSelectListBytes, &kSelectList),
};
static_assert(fieldsEnd(kSelectMapFields) == 0x661 && fieldsFrom(kSelectMapFields, kTexMapMappedFieldsOffset));

// ---- CACHE, RAYSWITCH --------------------------------------------------------------------------

constexpr FieldDescriptor kCacheFields[] = {
    texMapField("Map", 0x108),
    boolField("UseCache", 0x10C),
};
static_assert(fieldsEnd(kCacheFields) == 0x10D && fieldsFrom(kCacheFields, kTexMapPlainFieldsOffset));

constexpr FieldDescriptor kRaySwitchFields[] = {
    texMapField("MapDiffuse", 0x108),       texMapField("MapDirect", 0x10C),
    texMapField("MapGI", 0x110),            texMapField("MapReflection", 0x114),
    texMapField("MapTransmission", 0x118),  texMapField("MapShadow", 0x11C),
    colorField("ColorDiffuse", 0x120),      colorField("ColorDirect", 0x12C),
    colorField("ColorGI", 0x138),           colorField("ColorReflection", 0x144),
    colorField("ColorTransmission", 0x150), colorField("ColorShadow", 0x15C),
    enumField("Type", 0x168, kRaySwitchTypeWords),
};
static_assert(fieldsEnd(kRaySwitchFields) == 0x16C && fieldsFrom(kRaySwitchFields, kTexMapPlainFieldsOffset));

// ---- NORMALMAP ---------------------------------------------------------------------------------

// Two sections with the same keys, interleaved in the record: Primary first in each pair.
constexpr FieldDescriptor kNormalMapFields[] = {
    sectionField("Primary"),
    texMapField("Primary/Map", 0x108),
    texMapField("Primary/MapHeight", 0x110),
    floatField("Primary/WeightHeight", 0x118),
    floatField("Primary/WeightMips", 0x120),
    floatField("Primary/WeightSpot", 0x128),
    floatField("Primary/Gamma", 0x130),
    boolField("Primary/NormalMap", 0x138),
    boolField("Primary/FlipX", 0x13A),
    boolField("Primary/FlipY", 0x13B),
    boolField("Primary/SwapXY", 0x13C),
    sectionField("Secondary"),
    texMapField("Secondary/Map", 0x10C),
    texMapField("Secondary/MapHeight", 0x114),
    floatField("Secondary/WeightHeight", 0x11C),
    floatField("Secondary/WeightMips", 0x124),
    floatField("Secondary/WeightSpot", 0x12C),
    floatField("Secondary/Gamma", 0x134),
    boolField("Secondary/NormalMap", 0x139),
    boolField("Secondary/FlipX", 0x13D),
    boolField("Secondary/FlipY", 0x13E),
    boolField("Secondary/SwapXY", 0x13F),
};
static_assert(fieldsEnd(kNormalMapFields) == 0x140 && fieldsFrom(kNormalMapFields, kTexMapPlainFieldsOffset));

// ---- UVWSET, RETILE ----------------------------------------------------------------------------

constexpr FieldDescriptor kUvwSetFields[] = {
    texMapField("MapA", 0x108),
    texMapField("MapB", 0x10C),
    intField("Channel", 0x110),
};
static_assert(fieldsEnd(kUvwSetFields) == 0x114 && fieldsFrom(kUvwSetFields, kTexMapPlainFieldsOffset));

// Type is a plain number here; no word table goes with it.
constexpr FieldDescriptor kRetileFields[] = {
    texMapField("MapA", 0x108), boolField("Enable", 0x124), floatField("Size", 0x10C),
    floatField("Angle", 0x110), floatField("Pivot", 0x114),  floatField("Contrast", 0x118),
    intField("Seed", 0x11C),    intField("Type", 0x120),
};
static_assert(fieldsEnd(kRetileFields) == 0x125 && fieldsFrom(kRetileFields, kTexMapPlainFieldsOffset));

} // namespace

constexpr TypeDescriptor kOutputTexMap = describeType(9, "OUTPUT", fieldsEnd(kOutputFields), kOutputFields);
constexpr TypeDescriptor kTriplanarTexMap =
    mappedType(describeType(15, "TRIPLANAR", fieldsEnd(kTriplanarFields), kTriplanarFields));
constexpr TypeDescriptor kSelectMapTexMap =
    mappedType(describeType(17, "SELECTMAP", fieldsEnd(kSelectMapFields), kSelectMapFields));
constexpr TypeDescriptor kCacheTexMap = describeType(19, "CACHE", fieldsEnd(kCacheFields), kCacheFields);
constexpr TypeDescriptor kRaySwitchTexMap =
    describeType(20, "RAYSWITCH", fieldsEnd(kRaySwitchFields), kRaySwitchFields);
constexpr TypeDescriptor kNormalMapTexMap =
    describeType(23, "NORMALMAP", fieldsEnd(kNormalMapFields), kNormalMapFields);
constexpr TypeDescriptor kUvwSetTexMap = describeType(25, "UVWSET", fieldsEnd(kUvwSetFields), kUvwSetFields);
constexpr TypeDescriptor kRetileTexMap = describeType(26, "RETILE", fieldsEnd(kRetileFields), kRetileFields);

static_assert(typeFits(kOutputTexMap, sizeof(TexMapRecord)) && typeFits(kTriplanarTexMap, sizeof(TexMapRecord)));
static_assert(typeFits(kSelectMapTexMap, sizeof(TexMapRecord)) && typeFits(kCacheTexMap, sizeof(TexMapRecord)));
static_assert(typeFits(kRaySwitchTexMap, sizeof(TexMapRecord)) && typeFits(kNormalMapTexMap, sizeof(TexMapRecord)));
static_assert(typeFits(kUvwSetTexMap, sizeof(TexMapRecord)) && typeFits(kRetileTexMap, sizeof(TexMapRecord)));
static_assert(imageAgrees(kOutputTexMap) && imageAgrees(kTriplanarTexMap));
static_assert(imageAgrees(kSelectMapTexMap) && imageAgrees(kCacheTexMap));
static_assert(imageAgrees(kRaySwitchTexMap) && imageAgrees(kNormalMapTexMap));
static_assert(imageAgrees(kUvwSetTexMap) && imageAgrees(kRetileTexMap));

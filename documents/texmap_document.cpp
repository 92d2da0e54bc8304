#include "documents/texmap_document.h"

#include "documents/texmaps/texmap_types.h"

#include <cstddef>
#include <iterator>

const char* const kTexMapTypeWords[] = {
    "",                // 0: no valid type
    "IMAGE",           // 1
    "SIMPLEIMAGE",     // 2
    "BLEND",           // 3
    "MATH",            // 4
    "COLORCORRECTION", // 5
    "MATHBLEND",       // 6
    "COMPOSITE",       // 7
    "NOISE",           // 8
    "OUTPUT",          // 9
    "RGB_MULTIPLY",    // 10
    "RGB_TINT",        // 11
    "SHUFFLE",         // 12
    "COLOR",           // 13
    "GRADIENT",        // 14
    "TRIPLANAR",       // 15
    "",                // 16: a free number
    "SELECTMAP",       // 17
    "OCEANSURFACE",    // 18
    "CACHE",           // 19
    "RAYSWITCH",       // 20
    "WIREFRAME",       // 21
    "AO",              // 22
    "NORMALMAP",       // 23
    "FALLOFF",         // 24
    "UVWSET",          // 25
    "RETILE",          // 26
    "SUN",             // 27
    nullptr,
};
static_assert(sizeof(kTexMapTypeWords) / sizeof(kTexMapTypeWords[0]) == kTexMapTypeLast + 2);

namespace {

constexpr FieldDescriptor kTexMapHead[] = {
    stringField("Common/Name", offsetof(TexMapRecord, Name), kNameChars),
};
static_assert(fieldsFit(kTexMapHead, kTexMapPlainFieldsOffset));

// The shared blocks of the mapped shape, which stand under the root ahead of the own fields.
constexpr FieldDescriptor kMappedBlocks[] = {
    coordGenField("CoordGen", kTexMapCoordGenOffset),
    colorOutputField("ColorOutput", kTexMapColorOutputOffset),
};
static_assert(fieldsFit(kMappedBlocks, kTexMapMappedFieldsOffset));

const TypeDescriptor* tableOf(int32_t type) {
    if (type < 1 || type > kTexMapTypeLast || type == 16) return nullptr;
    return findTexMapType(type);
}

const uint8_t* bytesOf(const TexMapRecord* record) {
    return reinterpret_cast<const uint8_t*>(record);
}

} // namespace

const AssetFrame kTexMapFrame = {
    kTexMapRootWord,
    kTexMapTypeWords,
    sizeof(TexMapRecord),
    kTexMapHead,
    std::size(kTexMapHead),
    kMappedBlocks,
    std::size(kMappedBlocks),
    tableOf,
    nullptr, // every type with a table has fields
};

int32_t DetectTexMapType(const char16_t* path) {
    return TexMapDocument(path).type();
}

bool ReadTexMapDocument(TexMapRecord* record, const char16_t* path, ITaviNameInterface* names) {
    return TexMapDocument(path).read(record, names);
}

bool ReadTexMapWithTable(const TypeDescriptor& table, TexMapRecord* record, const char16_t* path,
                         ITaviNameInterface* names) {
    return TexMapDocument(path).readWithTable(table, record, names);
}

void WalkTexMapReferences(const TexMapRecord* record, ITaviNameInterface* names) {
    walkAssetReferences(kTexMapFrame, bytesOf(record), names);
}

bool BuildTexMapDocument(const TexMapRecord* record, ITaviNameInterface* names, pugi::xml_document* doc) {
    return buildAssetDocument(kTexMapFrame, bytesOf(record), names, doc);
}

void BuildTexMapWithTable(const TypeDescriptor& table, const TexMapRecord* record, ITaviNameInterface* names,
                          pugi::xml_document* doc) {
    buildAssetDocument(kTexMapFrame, table, bytesOf(record), names, doc);
}

void ReadTexMapCommon(pugi::xml_node root, TexMapRecord* record) {
    readAssetHead(kTexMapFrame, root, reinterpret_cast<uint8_t*>(record));
}

void WriteTexMapCommon(pugi::xml_node root, const TexMapRecord* record) {
    writeAssetHead(kTexMapFrame, root, bytesOf(record));
}

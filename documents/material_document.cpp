#include "documents/material_document.h"

#include "documents/materials/material_types.h"

#include <cstddef>
#include <iterator>

const char* const kMaterialTypeWords[] = {
    "",                   // 0: no material
    "PHYSICAL",           // 1
    "BLEND_SIDED",        // 2
    "TOP_BOTTOM",         // 3
    "UBER",               // 4
    "LAMBERTIANEMISSION", // 5
    "IDEALDIFFUSE",       // 6
    "DIFFUSE",            // 7
    "IDEALSPECULAR",      // 8
    "",                   // 9: accepted, no fields
    "BUMP",               // 10
    "MIX",                // 11
    "IDEALMIRROR",        // 12
    "IDEALDIELECTRIC",    // 13
    "CUTOUT",             // 14
    "NORMALMAP",          // 15
    "TWOSIDED",           // 16
    "IDEALCONDUCTOR",     // 17
    "IDEALCOATING",       // 18
    "ROUGHDIELECTRIC",    // 19
    "ROUGHCONDUCTOR",     // 20
    "ROUGHCOATING",       // 21
    "DISPACEMENTMAP",     // 22
    "SSS",                // 23
    "HAIR",               // 24
    "VOLUMETRIC",         // 25
    "TRIPLANAR",          // 26
    "NULL",               // 27: accepted, no fields
    "MTLPROXY",           // 28
    "RAYSWITCH",          // 29
    "THINFILM",           // 30
    "MIE",                // 31
    nullptr,              // 32 has no word
};
static_assert(sizeof(kMaterialTypeWords) / sizeof(kMaterialTypeWords[0]) == kMaterialTypeLast + 1);

namespace {

constexpr FieldDescriptor kMaterialHead[] = {
    stringField("Common/Name", offsetof(MaterialRecord, Name), kNameChars),
    intField("Common/AovID", offsetof(MaterialRecord, AovID)),
};
static_assert(fieldsFit(kMaterialHead, kMaterialFieldsOffset));

const TypeDescriptor* tableOf(int32_t type) {
    if (type < 1 || type > kMaterialTypeLast) return nullptr;
    return findMaterialType(type);
}

bool hasNoFields(int32_t type) {
    return type == 9 || type == 27;
}

const uint8_t* bytesOf(const MaterialRecord* record) {
    return reinterpret_cast<const uint8_t*>(record);
}

} // namespace

const AssetFrame kMaterialFrame = {
    kMaterialRootWord,
    kMaterialTypeWords,
    sizeof(MaterialRecord),
    kMaterialHead,
    std::size(kMaterialHead),
    nullptr, // no shared blocks: no material table is mapped
    0,
    tableOf,
    hasNoFields,
};

int32_t DetectMaterialType(const char16_t* path) {
    return MaterialDocument(path).type();
}

bool ReadMaterialDocument(MaterialRecord* record, const char16_t* path, ITaviNameInterface* names) {
    return MaterialDocument(path).read(record, names);
}

void WalkMaterialReferences(const MaterialRecord* record, ITaviNameInterface* names) {
    walkAssetReferences(kMaterialFrame, bytesOf(record), names);
}

bool WriteMaterialDocument(const MaterialRecord* record, const char16_t* /*path*/,
                           ITaviNameInterface* names) {
    WalkMaterialReferences(record, names);
    return hasNoFields(record->type);
}

bool BuildMaterialDocument(const MaterialRecord* record, ITaviNameInterface* names, pugi::xml_document* doc) {
    return buildAssetDocument(kMaterialFrame, bytesOf(record), names, doc);
}

void ReadMaterialCommon(pugi::xml_node root, MaterialRecord* record) {
    readAssetHead(kMaterialFrame, root, reinterpret_cast<uint8_t*>(record));
}

void WriteMaterialCommon(pugi::xml_node root, const MaterialRecord* record) {
    writeAssetHead(kMaterialFrame, root, bytesOf(record));
}

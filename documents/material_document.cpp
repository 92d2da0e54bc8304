#include "documents/material_document.h"

#include "documents/field_table.h"
#include "documents/materials/material_types.h"
#include "documents/xml_value_codec.h"

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

bool hasNoFields(int32_t type) {
    return type == 9 || type == 27;
}

// The table of a number that may carry fields, or null for an unknown number or one whose
// table isn't there.
const TypeDescriptor* tableOf(int32_t type) {
    if (type < 1 || type > kMaterialTypeLast) return nullptr;
    return findMaterialType(type);
}

size_t usableLength(const TypeDescriptor& table) {
    return table.imageLength < sizeof(MaterialRecord) ? table.imageLength : sizeof(MaterialRecord);
}

} // namespace

int32_t DetectMaterialType(const char16_t* path) {
    pugi::xml_document doc;
    pugi::xml_node root;
    if (!XmlOpenDocument(doc, path, kMaterialRootWord, &root)) return 0;
    int32_t type = 0;
    XmlReadEnumAttribute(root, "type", &type, kMaterialTypeWords);
    return type;
}

void ReadMaterialCommon(pugi::xml_node root, MaterialRecord* record) {
    XmlReadEnumAttribute(root, "type", &record->type, kMaterialTypeWords);
    const pugi::xml_node common = root.child("Common");
    XmlReadString(common, "Name", record->Name, kNameChars);
    XmlReadInt(common, "AovID", &record->AovID);
}

void WriteMaterialCommon(pugi::xml_node root, const MaterialRecord* record) {
    XmlWriteEnumAttribute(root, "type", record->type, kMaterialTypeWords);
    pugi::xml_node common = root.append_child("Common");
    // The record's name need not be terminated; the copy is.
    char16_t name[kNameChars + 1] = {};
    for (size_t i = 0; i < kNameChars; ++i)
        name[i] = record->Name[i];
    XmlWriteString(common, "Name", name);
    XmlWriteInt(common, "AovID", &record->AovID);
}

bool ReadMaterialWithTable(const TypeDescriptor& table, MaterialRecord* record, const char16_t* path,
                           ITaviNameInterface* names) {
    pugi::xml_document doc;
    pugi::xml_node root;
    if (!XmlOpenDocument(doc, path, kMaterialRootWord, &root)) return false;
    ReadMaterialCommon(root, record);
    readFields(table.fields, table.fieldCount, root.child("SpecificParameters"),
               reinterpret_cast<uint8_t*>(record), usableLength(table), names);
    return true;
}

bool ReadMaterialDocument(MaterialRecord* record, const char16_t* path, ITaviNameInterface* names) {
    if (hasNoFields(record->type)) return true;
    const TypeDescriptor* table = tableOf(record->type);
    return table && ReadMaterialWithTable(*table, record, path, names);
}

void BuildMaterialWithTable(const TypeDescriptor& table, const MaterialRecord* record,
                            ITaviNameInterface* names, pugi::xml_document* doc) {
    doc->reset();
    pugi::xml_node root = doc->append_child(kMaterialRootWord);
    WriteMaterialCommon(root, record);
    writeFields(table.fields, table.fieldCount, root.append_child("SpecificParameters"),
                reinterpret_cast<const uint8_t*>(record), usableLength(table), names);
}

bool BuildMaterialDocument(const MaterialRecord* record, ITaviNameInterface* names, pugi::xml_document* doc) {
    doc->reset();
    const TypeDescriptor* table = tableOf(record->type);
    if (!table) return false;
    BuildMaterialWithTable(*table, record, names, doc);
    return true;
}

bool WriteMaterialDocument(const MaterialRecord* record, const char16_t* /*path*/,
                           ITaviNameInterface* names) {
    if (hasNoFields(record->type)) return true;
    pugi::xml_document doc;
    BuildMaterialDocument(record, names, &doc);
    return false;
}

void WalkMaterialReferences(const MaterialRecord* record, ITaviNameInterface* names) {
    WriteMaterialDocument(record, nullptr, names);
}

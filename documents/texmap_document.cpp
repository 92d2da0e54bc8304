#include "documents/texmap_document.h"

#include "documents/field_table.h"
#include "documents/texmaps/texmap_types.h"
#include "documents/xml_value_codec.h"

#include <cstring>
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

size_t usableLength(const TypeDescriptor& table) {
    return table.imageLength < sizeof(TexMapRecord) ? table.imageLength : sizeof(TexMapRecord);
}

} // namespace

int32_t DetectTexMapType(const char16_t* path) {
    pugi::xml_document doc;
    pugi::xml_node root;
    if (!XmlOpenDocument(doc, path, kTexMapRootWord, &root)) return 0;
    int32_t type = 0;
    XmlReadEnumAttribute(root, "type", &type, kTexMapTypeWords);
    return type;
}

void ReadTexMapCommon(pugi::xml_node root, TexMapRecord* record) {
    XmlReadEnumAttribute(root, "type", &record->type, kTexMapTypeWords);
    XmlReadString(root.child("Common"), "Name", record->Name, kNameChars);
}

void WriteTexMapCommon(pugi::xml_node root, const TexMapRecord* record) {
    XmlWriteEnumAttribute(root, "type", record->type, kTexMapTypeWords);
    // The record's name need not be terminated; the copy is.
    char16_t name[kNameChars + 1] = {};
    for (size_t i = 0; i < kNameChars; ++i)
        name[i] = record->Name[i];
    XmlWriteString(root.append_child("Common"), "Name", name);
}

bool ReadTexMapWithTable(const TypeDescriptor& table, TexMapRecord* record, const char16_t* path,
                         ITaviNameInterface* names) {
    pugi::xml_document doc;
    pugi::xml_node root;
    if (!XmlOpenDocument(doc, path, kTexMapRootWord, &root)) return false;
    uint8_t* bytes = reinterpret_cast<uint8_t*>(record);
    const size_t length = usableLength(table);
    ReadTexMapCommon(root, record);
    if (table.mapped) readFields(kMappedBlocks, std::size(kMappedBlocks), root, bytes, length, names);
    readFields(table.fields, table.fieldCount, root.child("SpecificParameters"), bytes, length, names);
    if (table.resultTextureOffset == 0) return true;
    if (table.resultTextureOffset + sizeof(int32_t) > length) return false;
    int32_t texture = -1;
    std::memcpy(&texture, bytes + table.resultTextureOffset, sizeof texture);
    return texture != -1;
}

bool ReadTexMapDocument(TexMapRecord* record, const char16_t* path, ITaviNameInterface* names) {
    const TypeDescriptor* table = tableOf(record->type);
    return table && ReadTexMapWithTable(*table, record, path, names);
}

void BuildTexMapWithTable(const TypeDescriptor& table, const TexMapRecord* record, ITaviNameInterface* names,
                          pugi::xml_document* doc) {
    doc->reset();
    const uint8_t* bytes = reinterpret_cast<const uint8_t*>(record);
    const size_t length = usableLength(table);
    pugi::xml_node root = doc->append_child(kTexMapRootWord);
    WriteTexMapCommon(root, record);
    if (table.mapped) writeFields(kMappedBlocks, std::size(kMappedBlocks), root, bytes, length, names);
    writeFields(table.fields, table.fieldCount, root.append_child("SpecificParameters"), bytes, length,
                names);
}

bool BuildTexMapDocument(const TexMapRecord* record, ITaviNameInterface* names, pugi::xml_document* doc) {
    doc->reset();
    const TypeDescriptor* table = tableOf(record->type);
    if (!table) return false;
    BuildTexMapWithTable(*table, record, names, doc);
    return true;
}

void WalkTexMapReferences(const TexMapRecord* record, ITaviNameInterface* names) {
    pugi::xml_document doc;
    BuildTexMapDocument(record, names, &doc);
}

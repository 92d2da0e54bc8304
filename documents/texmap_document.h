// TaviTexMap documents: the frame that all texmap types share, and the two dispatches over
// the type tables of documents/texmaps/.
//
//   <TaviTexMap type="IMAGE">
//     <Common><Name value="..."/></Common>
//     <CoordGen>...</CoordGen><ColorOutput>...</ColorOutput>   (mapped types only)
//     <SpecificParameters> the type's keys </SpecificParameters>
//   </TaviTexMap>
#pragma once
#include "documents/texmap_blocks.h"
#include "scene/records.h"

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>

class ITaviNameInterface;
struct TypeDescriptor;

// Texmap type words by number, 0 to 27, then the null end. Numbers 0 and 16 are the empty word.
extern const char* const kTexMapTypeWords[];
constexpr int32_t kTexMapTypeLast = 27;
constexpr char kTexMapRootWord[] = "TaviTexMap";

// Where the shapes put their parts. The 128 bytes after the name are left alone by documents.
constexpr size_t kTexMapCoordGenOffset = 0x108;
constexpr size_t kTexMapColorOutputOffset = 0x198;
constexpr size_t kTexMapMappedFieldsOffset = 0x5B8;
constexpr size_t kTexMapPlainFieldsOffset = 0x108;
static_assert(kTexMapCoordGenOffset + sizeof(CoordGen) == kTexMapColorOutputOffset);
static_assert(kTexMapColorOutputOffset + sizeof(ColorOutput) == kTexMapMappedFieldsOffset);

// The type that the document at `path` names, 0 when the file can't be read or parsed, has no
// TaviTexMap root, no type attribute or an unknown word.
int32_t DetectTexMapType(const char16_t* path);

// Reads the document over the record by the table of the record's `type`. A number outside
// 1..27, number 16, or a type without a table fails and changes nothing, and so does a document
// that can't be read. The image maps report whether their texture was found.
bool ReadTexMapDocument(TexMapRecord* record, const char16_t* path, ITaviNameInterface* names);

// Serialises the record into a document that is dropped again. What it leaves behind are its
// calls on `names`, one per reference, in table order. Unknown types do nothing.
void WalkTexMapReferences(const TexMapRecord* record, ITaviNameInterface* names);

// Builds the document of the record into `doc` (for the walk, and for checks that read it
// back). False, with `doc` empty, for a type without a table.
bool BuildTexMapDocument(const TexMapRecord* record, ITaviNameInterface* names, pugi::xml_document* doc);

// The head: `type` as the root's attribute (an unknown word leaves it), Common/Name (64
// characters, cleared when missing).
void ReadTexMapCommon(pugi::xml_node root, TexMapRecord* record);
void WriteTexMapCommon(pugi::xml_node root, const TexMapRecord* record);

// The frame around one given table, which the dispatches above pick by number; also how a table
// is exercised on its own.
bool ReadTexMapWithTable(const TypeDescriptor& table, TexMapRecord* record, const char16_t* path,
                         ITaviNameInterface* names);
void BuildTexMapWithTable(const TypeDescriptor& table, const TexMapRecord* record, ITaviNameInterface* names,
                          pugi::xml_document* doc);

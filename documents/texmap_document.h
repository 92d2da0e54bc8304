// TaviTexMap documents: the frame of documents/asset_document.h over TexMapRecord, and the
// dispatch over the type tables of documents/texmaps/.
//
//   <TaviTexMap type="IMAGE">
//     <Common><Name value="..."/></Common>
//     <CoordGen>...</CoordGen><ColorOutput>...</ColorOutput>   (mapped types only)
//     <SpecificParameters> the type's keys </SpecificParameters>
//   </TaviTexMap>
#pragma once
#include "documents/asset_document.h"
#include "documents/texmap_blocks.h"
#include "scene/records.h"

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>

class ITaviNameInterface;

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

// A number outside 1..27, number 16, or a type without a table reads as a failure. The image
// maps read as a success only when their texture was found.
extern const AssetFrame kTexMapFrame;

// A texmap document parsed once: its type() is detected from it, then it is read() over the
// record whose `type` has been set.
using TexMapDocument = RecordDocument<TexMapRecord, kTexMapFrame>;

// The type that the document at `path` names, 0 when the file can't be read or parsed, has no
// TaviTexMap root, no type attribute or an unknown word.
int32_t DetectTexMapType(const char16_t* path);

// Reads the document at `path` over the record by the table of the record's `type`, or by the
// given table; a document that can't be read changes nothing.
bool ReadTexMapDocument(TexMapRecord* record, const char16_t* path, ITaviNameInterface* names);
bool ReadTexMapWithTable(const TypeDescriptor& table, TexMapRecord* record, const char16_t* path,
                         ITaviNameInterface* names);

// The reference walk the registry runs before a map goes to the tracer: one call on `names` per
// reference, in table order. Unknown types do nothing.
void WalkTexMapReferences(const TexMapRecord* record, ITaviNameInterface* names);

// Builds the document of the record into `doc` (for document files, and for checks that read
// it back), by the record's type or by the given table. False, with `doc` empty, for a type
// without a table.
bool BuildTexMapDocument(const TexMapRecord* record, ITaviNameInterface* names, pugi::xml_document* doc);
void BuildTexMapWithTable(const TypeDescriptor& table, const TexMapRecord* record, ITaviNameInterface* names,
                          pugi::xml_document* doc);

// The head: `type` as the root's attribute (an unknown word leaves it), Common/Name (64
// characters, cleared when missing).
void ReadTexMapCommon(pugi::xml_node root, TexMapRecord* record);
void WriteTexMapCommon(pugi::xml_node root, const TexMapRecord* record);

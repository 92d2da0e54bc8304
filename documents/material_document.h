// TaviMaterial documents: the frame of documents/asset_document.h over MaterialRecord, and the
// dispatch over the type tables of documents/materials/.
//
//   <TaviMaterial type="DIFFUSE">
//     <Common><Name value="..."/><AovID value="..."/></Common>
//     <SpecificParameters> the type's keys </SpecificParameters>
//   </TaviMaterial>
#pragma once
#include "documents/asset_document.h"
#include "scene/records.h"

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>

class ITaviNameInterface;

// Material type words by number, 0 to 31, then the null end. Numbers 0 and 9 are the empty
// word; number 32 has no word at all, so no document can name it.
extern const char* const kMaterialTypeWords[];
constexpr int32_t kMaterialTypeLast = 32;
constexpr char kMaterialRootWord[] = "TaviMaterial";
// A type's own fields begin here.
constexpr size_t kMaterialFieldsOffset = 268;

// Types 9 and 27 have no fields: their documents read as a success at once and name nothing. A
// number outside 1..32 or without a table reads as a failure.
extern const AssetFrame kMaterialFrame;

// A material document parsed once: its type() is detected from it, then it is read() over the
// record whose `type` has been set.
using MaterialDocument = RecordDocument<MaterialRecord, kMaterialFrame>;

// The type that the document at `path` names, 0 when the file can't be read or parsed, has no
// TaviMaterial root, no type attribute or an unknown word.
int32_t DetectMaterialType(const char16_t* path);

// Reads the document at `path` over the record by the table of the record's `type`; a document
// that can't be read changes nothing.
bool ReadMaterialDocument(MaterialRecord* record, const char16_t* path, ITaviNameInterface* names);

// The reference walk the registry runs before a material goes to the tracer: one call on
// `names` per reference, in table order.
void WalkMaterialReferences(const MaterialRecord* record, ITaviNameInterface* names);
// The walk with the writer's result, which reports no success but for the types without fields
// (9 and 27); `path` is not used.
bool WriteMaterialDocument(const MaterialRecord* record, const char16_t* path, ITaviNameInterface* names);

// Builds the document of the record into `doc` (for document files, and for checks that read
// it back). False, with `doc` empty, for a type without a table.
bool BuildMaterialDocument(const MaterialRecord* record, ITaviNameInterface* names, pugi::xml_document* doc);

// The head: `type` as the root's attribute, then Common/Name (64 characters, cleared when
// missing) and Common/AovID.
void ReadMaterialCommon(pugi::xml_node root, MaterialRecord* record);
void WriteMaterialCommon(pugi::xml_node root, const MaterialRecord* record);

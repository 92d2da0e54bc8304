// TaviMaterial documents: the frame that all material types share, and the two dispatches
// over the type tables of documents/materials/.
//
//   <TaviMaterial type="DIFFUSE">
//     <Common><Name value="..."/><AovID value="..."/></Common>
//     <SpecificParameters> the type's keys </SpecificParameters>
//   </TaviMaterial>
#pragma once
#include "scene/records.h"

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>

class ITaviNameInterface;
struct TypeDescriptor;

// Material type words by number, 0 to 31, then the null end. Numbers 0 and 9 are the empty
// word; number 32 has no word at all, so no document can name it.
extern const char* const kMaterialTypeWords[];
constexpr int32_t kMaterialTypeLast = 32;
constexpr char kMaterialRootWord[] = "TaviMaterial";
// A type's own fields begin here.
constexpr size_t kMaterialFieldsOffset = 268;

// The type that the document at `path` names, 0 when the file can't be read or parsed, has no
// TaviMaterial root, no type attribute or an unknown word.
int32_t DetectMaterialType(const char16_t* path);

// Reads the document over the record by the table of the record's `type`. Types 9 and 27 have
// no fields and succeed at once; a number outside 1..32 or without a table fails and changes
// nothing, and so does a document that can't be read.
bool ReadMaterialDocument(MaterialRecord* record, const char16_t* path, ITaviNameInterface* names);

// Serialises the record into a document that is dropped again; `path` is not used. What it
// leaves behind are its calls on `names`, one per reference, in table order. True only for
// types 9 and 27, as a type with fields reports no success.
bool WriteMaterialDocument(const MaterialRecord* record, const char16_t* path, ITaviNameInterface* names);

// The reference walk the registry runs before a material goes to the tracer.
void WalkMaterialReferences(const MaterialRecord* record, ITaviNameInterface* names);

// Builds the document of the record into `doc` (for the walk, and for checks that read it
// back). False, with `doc` empty, for a type without a table.
bool BuildMaterialDocument(const MaterialRecord* record, ITaviNameInterface* names, pugi::xml_document* doc);

// The head: `type` as the root's attribute, then Common/Name (64 characters, cleared when
// missing) and Common/AovID.
void ReadMaterialCommon(pugi::xml_node root, MaterialRecord* record);
void WriteMaterialCommon(pugi::xml_node root, const MaterialRecord* record);

// The frame around one given table, which the dispatches above pick by number; also how a table
// is exercised on its own.
bool ReadMaterialWithTable(const TypeDescriptor& table, MaterialRecord* record, const char16_t* path,
                           ITaviNameInterface* names);
void BuildMaterialWithTable(const TypeDescriptor& table, const MaterialRecord* record,
                            ITaviNameInterface* names, pugi::xml_document* doc);

// Helpers of the tests of the physical, uber, volumetric, Mie and hair tables: records filled
// with a distinct value in every field, documents written to files and read back through the
// dispatch, and the reference rows of each type as an independent list.
#pragma once
#include "documents/field_table.h"
#include "scene/records.h"
#include "tests/documents/document_test_support.h"

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace families_b_test {

using documents_test::RecordingNames;

// The five types of these families.
std::vector<const TypeDescriptor*> familyTypes();

// A record of `type` with every byte set to `fill`.
std::unique_ptr<MaterialRecord> recordOf(int32_t type, uint8_t fill);

// Gives every field of the table a value that no other field has and that a zeroed record
// doesn't hold: numbers from the field's row, bools true, enums their last word, strings filled
// to capacity, splines and colour splines with used and unused segments, references ids from
// 1000 on whose names `names` knows. Also sets the head's AovID and Name.
void fillDistinct(const TypeDescriptor& table, MaterialRecord* record, RecordingNames* names);

// The reference id that fillDistinct gives to the row at `index` of the table.
int32_t referenceIdOf(size_t index);

// The record's document, built by the type's writer, as text.
std::string writtenDocument(const TypeDescriptor& table, const MaterialRecord* record, RecordingNames* names);

// Writes `text` to a file of its own and reads it over `record` through the dispatch.
bool readDocumentText(const std::string& text, MaterialRecord* record, RecordingNames* names);

// Bytes of a record, and where two records first differ, named by the field that holds the byte.
const uint8_t* bytesOf(const MaterialRecord* record);
uint8_t* bytesOf(MaterialRecord* record);
std::string describeFirstDifference(const TypeDescriptor& table, const MaterialRecord* actual,
                                    const MaterialRecord* expected);

template <class T> T valueAt(const MaterialRecord* record, size_t offset) {
    T value;
    std::memcpy(&value, bytesOf(record) + offset, sizeof value);
    return value;
}
template <class T> void putAt(MaterialRecord* record, size_t offset, const T& value) {
    std::memcpy(bytesOf(record) + offset, &value, sizeof value);
}

// ---- The reference rows of each type, in the order of its table ----------------------------

enum class Ref { Map, Material };

struct ReferenceRow {
    const char* key;
    Ref kind;
    uint32_t offset;
};

struct TypeReferences {
    int32_t type;
    const ReferenceRow* rows;
    size_t count;
};

std::vector<TypeReferences> referencesByType();

} // namespace families_b_test

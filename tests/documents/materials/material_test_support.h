// Helpers of the material type tests: records, a filler that gives every field of any table a
// value of its own, the two lists (MIX children, state patterns) that the generic checks can't
// see into, and documents read through the dispatch.
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

namespace material_test {

using documents_test::RecordingNames;
using RecordPtr = std::unique_ptr<MaterialRecord>;

// Every registered table, in registry order.
std::vector<const TypeDescriptor*> allTables();
// The type's word as a document carries it; "" for the type without a word.
std::string wordOf(const TypeDescriptor& table);

RecordPtr recordOf(int32_t type, uint8_t fill);
uint8_t* bytesOf(MaterialRecord* record);
const uint8_t* bytesOf(const MaterialRecord* record);

template <class T> T load(const MaterialRecord* record, size_t offset) {
    T value;
    std::memcpy(&value, bytesOf(record) + offset, sizeof value);
    return value;
}
template <class T> void store(MaterialRecord* record, size_t offset, const T& value) {
    std::memcpy(bytesOf(record) + offset, &value, sizeof value);
}

// What a list adds to the generic checks; the hooks of a Custom row, found by its type.
struct ListHooks {
    // Fills the list (and its count) with values of its own.
    void (*fill)(MaterialRecord* record, RecordingNames& names);
    // What reading back the written document leaves in a record that was zero before.
    void (*afterRoundTrip)(const MaterialRecord* original, MaterialRecord* expected);
    // What a document without any of the list's elements leaves.
    void (*afterMissing)(MaterialRecord* expected);
    // The name calls of the walk, in order.
    void (*walk)(const MaterialRecord* record, std::vector<std::string>& calls);
    // How many elements named by the list's key the writer appends.
    size_t (*elements)(const MaterialRecord* record);
};
const ListHooks& listHooks(int32_t type);

// Gives every field of the table a value that no other field has and a zeroed record doesn't
// hold: bools true, enums their last word, texts to capacity, splines with segment 1 and the
// last unused (as a zeroed record reads an unused one back), references with names that `names`
// knows. Also fills the head's AovID and Name.
void fillDistinct(const TypeDescriptor& table, MaterialRecord* record, RecordingNames& names);

// The row that a reader takes a row's element from: a key that stands twice is found at its
// first element. -1 when that first element is an empty section of the same name.
long sourceRow(const TypeDescriptor& table, size_t row);
// Whether the row lies on bytes of a row with another key.
bool sharesBytes(const TypeDescriptor& table, size_t row);

std::string documentText(const pugi::xml_document& doc);
// The record's document as its writer builds it.
std::string writtenText(const MaterialRecord* record, RecordingNames& names);
// A document of the type's word around `specific`, the content of SpecificParameters.
std::string materialText(const std::string& word, const std::string& specific);
// Writes `text` to a file of its own and reads it over `record` through the dispatch.
bool readText(const std::string& text, MaterialRecord* record, RecordingNames& names);

// Where two records first differ, named by the row that holds the byte; "" when they are equal.
std::string firstDifference(const TypeDescriptor& table, const MaterialRecord* actual,
                            const MaterialRecord* expected);

} // namespace material_test

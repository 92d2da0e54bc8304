// The material types of the mixing, diffuse, specular and modifier families as the tests know
// them: an independent transcription of every table (key, kind, byte, segments, word table),
// and, for the two types that carry a list, how a sample record fills the list and what the
// writer and the walk make of it. The tests hold the registered tables against these rows.
#pragma once
#include "documents/field_table.h"
#include "scene/records.h"
#include "tests/documents/document_test_support.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace families_test {

using K = FieldKind;

struct Row {
    const char* key;
    FieldKind kind;
    uint32_t byte = 0;
    uint32_t size = 0; // segments of a spline, bytes of a list
    const char* const* words = nullptr;
};

// Bytes of a row in the record, by its kind.
uint32_t rowWidth(const Row& row);

// The two rows that lie on the same bytes: the thin film's RTC roughness splines of the
// anisotropy and of the angle, both at byte 5520.
bool sharesBytes(int32_t type, const std::string& key);

struct TypeCase;

// What a type with a list adds to the generic checks.
struct ListHooks {
    // Fills the list (and its count, if any) of a sample record; `seed` varies the values.
    void (*fill)(uint8_t* record, int seed);
    // What reading back the written document leaves in a record that was zero before.
    void (*afterRoundTrip)(const uint8_t* original, uint8_t* expected);
    // What reading a document without any of the list's elements does to the record.
    void (*afterMissing)(uint8_t* expected);
    // The name calls of the list, in order, for a record.
    void (*walk)(const uint8_t* record, std::vector<std::string>& calls);
    // How many elements named by the list's key the writer appends for a record.
    size_t (*elements)(const uint8_t* record);
};

struct TypeCase {
    int32_t type;
    const char* word; // null for a type without a word
    uint32_t image;
    std::vector<Row> rows;
    const ListHooks* lists = nullptr;
};

std::vector<TypeCase> mixingCases();
std::vector<TypeCase> diffuseCases();
std::vector<TypeCase> specularCases();
std::vector<TypeCase> modifierCases();
std::vector<TypeCase> allCases();

// ---- Records -----------------------------------------------------------------------------------

using RecordPtr = std::unique_ptr<MaterialRecord>;

// A zeroed record of the type.
RecordPtr emptyRecord(int32_t type);
// A record with a distinct value in every field of the rows; bools and enum indices alternate
// with `seed`, and with seed 1 every odd spline segment is unused.
RecordPtr sampleRecord(const TypeCase& type, int seed);

uint8_t* bytesOf(MaterialRecord* record);
const uint8_t* bytesOf(const MaterialRecord* record);

template <class T> T load(const uint8_t* record, size_t offset);
template <class T> void store(uint8_t* record, size_t offset, const T& value);

// Texmap ids of sample records lie in 2000..2999 and are named "Map<id>", material ids in
// 3000..3999, named "Material<id>".
std::u16string sampleName(bool texMap, int32_t id);
// Teaches `names` every id of those ranges with its name.
void defineSampleNames(documents_test::RecordingNames& names);

// The first byte offset where two records differ, or -1.
long firstDifference(const MaterialRecord& a, const MaterialRecord& b);

// ---- Inline definitions ------------------------------------------------------------------------

template <class T> T load(const uint8_t* record, size_t offset) {
    T value;
    std::memcpy(&value, record + offset, sizeof value);
    return value;
}

template <class T> void store(uint8_t* record, size_t offset, const T& value) {
    std::memcpy(record + offset, &value, sizeof value);
}

} // namespace families_test

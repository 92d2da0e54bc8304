// The texmap tests' own copy of every type's layout, written down from the documents' tables
// independently of the descriptors, and the machinery that drives records and documents with it:
// records with a distinct value in every field, documents written to files and read back
// through the dispatch, and what a document without keys leaves in a record.
#pragma once
#include "documents/texmap_blocks.h"
#include "scene/records.h"
#include "tests/documents/document_test_support.h"

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace texmap_test {

using documents_test::RecordingNames;

// The test's name interface: texmaps and textures as the recording one answers them, models
// with a handle of their own. A model name "model_N" has handle N; the empty name has all bits
// set, as -1 would have.
class TestNames : public RecordingNames {
  public:
    uint64_t GetModelId(const char16_t* name) override;
};
constexpr uint64_t kNoModel = ~uint64_t{0};

// ---- Rows --------------------------------------------------------------------------------------

enum class Kind { Int, Float, Bool, Enum, Map, Texture, Color, ColorEx, Matrix, Spline, String, Output, Custom };

struct Row {
    std::string key; // path below SpecificParameters, '/' between sections
    Kind kind;
    uint32_t offset;
    uint32_t size = 0;              // segments of a spline, characters of a string, bytes of a custom row
    std::vector<std::string> words; // an enum's table, in index order
    bool written = true;            // false for the fields that only the reader knows
};

inline Row rowInt(const char* key, uint32_t offset) {
    return {key, Kind::Int, offset, 0, {}, true};
}
inline Row rowFloat(const char* key, uint32_t offset) {
    return {key, Kind::Float, offset, 0, {}, true};
}
inline Row rowBool(const char* key, uint32_t offset) {
    return {key, Kind::Bool, offset, 0, {}, true};
}
inline Row rowEnum(const char* key, uint32_t offset, std::vector<std::string> words) {
    return {key, Kind::Enum, offset, 0, std::move(words), true};
}
inline Row rowMap(const char* key, uint32_t offset) {
    return {key, Kind::Map, offset, 0, {}, true};
}
inline Row rowTexture(const char* key, uint32_t offset) {
    return {key, Kind::Texture, offset, 0, {}, true};
}
inline Row rowColor(const char* key, uint32_t offset) {
    return {key, Kind::Color, offset, 0, {}, true};
}
inline Row rowColorEx(const char* key, uint32_t offset) {
    return {key, Kind::ColorEx, offset, 0, {}, true};
}
inline Row rowMatrix(const char* key, uint32_t offset) {
    return {key, Kind::Matrix, offset, 0, {}, true};
}
inline Row rowSpline(const char* key, uint32_t offset, uint32_t segments) {
    return {key, Kind::Spline, offset, segments, {}, true};
}
inline Row rowString(const char* key, uint32_t offset, uint32_t characters) {
    return {key, Kind::String, offset, characters, {}, true};
}
inline Row rowOutput(const char* key, uint32_t offset) {
    return {key, Kind::Output, offset, 0, {}, true};
}
inline Row rowCustom(const char* key, uint32_t offset, uint32_t bytes) {
    return {key, Kind::Custom, offset, bytes, {}, true};
}
inline Row readOnlyRow(Row row) {
    row.written = false;
    return row;
}

// Word tables that more than one type uses.
std::vector<std::string> blendOperationWords();
std::vector<std::string> noiseTypeWords();

// One type as the tests know it. Repeated elements (Custom rows) get their own hooks.
struct Layout {
    int32_t type;
    std::string word;
    bool mapped;
    uint32_t imageLength;
    std::vector<Row> rows;
    // The walk's name calls, in order: a key of a Map or Texture row stands for its call with
    // the row's id; any other text is taken as the call itself.
    std::vector<std::string> walk = {};
    // The children of SpecificParameters in a written document, in order.
    std::vector<std::string> elements = {};
    // Distinct content for the Custom rows, and where the walk's own document, read back,
    // differs from the record it came from.
    void (*fillCustom)(uint8_t* record, RecordingNames* names) = nullptr;
    void (*afterRoundTrip)(uint8_t* record) = nullptr;
    // What a document without any own key does to the Custom rows.
    void (*missingCustom)(uint8_t* record) = nullptr;
    // Changes to the written document before it is read back (SELECTMAP's list needs a Model).
    void (*prepareReadBack)(pugi::xml_document& doc) = nullptr;
};

// All 26 types, by family.
std::vector<Layout> imageAndBlendLayouts();
std::vector<Layout> correctionLayouts();
std::vector<Layout> generatorLayouts();
std::vector<Layout> selectorLayouts();
std::vector<Layout> allLayouts();
const Layout& layoutOf(int32_t type);

// The id of a reference at `offset`, and the names the tests give to ids.
inline int32_t idAt(uint32_t offset) {
    return static_cast<int32_t>(offset);
}
std::string mapName(int32_t id);
std::string textureName(int32_t id);

// ---- Records -----------------------------------------------------------------------------------

std::unique_ptr<TexMapRecord> zeroedRecord(int32_t type);
inline uint8_t* bytesOf(TexMapRecord* record) {
    return reinterpret_cast<uint8_t*>(record);
}
inline const uint8_t* bytesOf(const TexMapRecord* record) {
    return reinterpret_cast<const uint8_t*>(record);
}
template <class T> T valueAt(const TexMapRecord* record, size_t offset) {
    T value;
    std::memcpy(&value, bytesOf(record) + offset, sizeof value);
    return value;
}
template <class T> void putAt(TexMapRecord* record, size_t offset, const T& value) {
    std::memcpy(bytesOf(record) + offset, &value, sizeof value);
}

// Distinct values for one kind at `at`, as the fill gives them to a field at `offset`.
void fillValue(uint8_t* at, Kind kind, uint32_t offset, uint32_t size, size_t wordCount, RecordingNames* names);
// A spline of `count` segments with used and unused ones; values follow `seed`.
void fillSpline(SplineSegment* segments, size_t count, float seed);

// A record of the layout's type in which every field holds a value that no other field has and
// a zeroed record doesn't hold; the references' names are made known to `names`.
std::unique_ptr<TexMapRecord> filledRecord(const Layout& layout, RecordingNames* names);

// What reading a document that has the head and an empty SpecificParameters does to `record`.
void applyMissingKeys(const Layout& layout, TexMapRecord* record);

// ---- Documents ---------------------------------------------------------------------------------

// The record's document as the walk builds it.
void buildDocument(const TexMapRecord* record, RecordingNames* names, pugi::xml_document* doc);
// Writes the document to a file of its own and reads it over the record through the dispatch.
bool readDocument(const pugi::xml_document& doc, TexMapRecord* record, RecordingNames* names);
bool readDocumentText(const std::string& text, TexMapRecord* record, RecordingNames* names);
// "<TaviTexMap type='WORD'><Common><Name value='Probe'/></Common><SpecificParameters>"
// + inner + "</SpecificParameters></TaviTexMap>"
std::string documentWith(const std::string& word, const std::string& inner);

// The first byte where two records differ within `length`, named by the row that holds it.
std::string firstDifference(const Layout& layout, const TexMapRecord* actual, const TexMapRecord* expected);

// The walk's calls as the layout states them.
std::vector<std::string> expectedWalk(const Layout& layout);

} // namespace texmap_test

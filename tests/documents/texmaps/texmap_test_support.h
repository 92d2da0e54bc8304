// Helpers of the texmap family tests: records of a background that shows whatever a reader
// touches, and documents read through the dispatch from files of their own.
#pragma once
#include "scene/records.h"
#include "tests/documents/document_test_support.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

namespace texmap_test {

using documents_test::RecordingNames;

// Model "model_N" has handle N; any other name the handle of none.
class TestNames : public RecordingNames {
  public:
    uint64_t GetModelId(const char16_t* name) override;
};
constexpr uint64_t kNoModel = ~uint64_t{0};

constexpr uint8_t kBackground = 0xA5;
constexpr uint32_t kBackgroundWord = 0xA5A5A5A5;

// Every byte the background, but the type.
std::unique_ptr<TexMapRecord> recordOf(int32_t type);
template <class T> T valueAt(const TexMapRecord& record, size_t offset) {
    T value;
    std::memcpy(&value, reinterpret_cast<const uint8_t*>(&record) + offset, sizeof value);
    return value;
}

bool readDocumentText(const std::string& text, TexMapRecord* record, RecordingNames* names);
// The head, and `inner` as SpecificParameters.
std::string documentWith(const std::string& word, const std::string& inner);

} // namespace texmap_test

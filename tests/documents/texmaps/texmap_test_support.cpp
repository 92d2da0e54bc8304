#include "tests/documents/texmaps/texmap_test_support.h"

#include "documents/texmap_document.h"

namespace texmap_test {

uint64_t TestNames::GetModelId(const char16_t* name) {
    const std::string text = narrow(name);
    calls.push_back("ModelId " + text);
    return text.rfind("model_", 0) == 0 ? std::stoull(text.substr(6)) : kNoModel;
}

std::unique_ptr<TexMapRecord> recordOf(int32_t type) {
    auto record = std::make_unique<TexMapRecord>();
    std::memset(record.get(), kBackground, sizeof(TexMapRecord));
    record->type = type;
    return record;
}

bool readDocumentText(const std::string& text, TexMapRecord* record, RecordingNames* names) {
    documents_test::TempFolder folder;
    const std::u16string path = folder.write("map.xml", text);
    return ReadTexMapDocument(record, path.c_str(), names);
}

std::string documentWith(const std::string& word, const std::string& inner) {
    return "<TaviTexMap type='" + word + "'><Common><Name value='Probe'/></Common><SpecificParameters>" +
           inner + "</SpecificParameters></TaviTexMap>";
}

} // namespace texmap_test

#include "tests/documents/document_test_support.h"

#include "common/unicode.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace documents_test {

std::string RecordingNames::narrow(const char16_t* text) {
    return text ? utf16ToUtf8(text) : "(null)";
}

int32_t* RecordingNames::idCall(const char* operation, int32_t* result, const char16_t* name) {
    calls.push_back(std::string(operation) + " " + narrow(name));
    if (!name || !name[0]) {
        *result = -1;
        return result;
    }
    const auto found = idOf.find(name);
    if (found != idOf.end()) {
        *result = found->second;
    } else {
        *result = nextId++;
        define(*result, name);
    }
    return result;
}

const char16_t* RecordingNames::nameCall(const char* operation, int32_t id) {
    calls.push_back(std::string(operation) + " " + std::to_string(id));
    const auto found = nameOf.find(id);
    return found == nameOf.end() ? u"" : found->second.c_str();
}

void parse(pugi::xml_document& doc, const char* text) {
    const pugi::xml_parse_result result = doc.load_string(text);
    ASSERT_TRUE(result) << result.description() << " in: " << text;
}

std::string serialise(const pugi::xml_node& node) {
    std::ostringstream out;
    node.print(out, "", pugi::format_raw);
    return out.str();
}

TempFolder::TempFolder() {
    static std::atomic<int> counter{0};
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name = "tavi_documents_";
    name += info ? std::string(info->test_suite_name()) + "_" + info->name() : "test";
    name += "_" + std::to_string(counter++);
    for (char& c : name) {
        if (c == '/') c = '_';
    }
    const std::filesystem::path path = std::filesystem::temp_directory_path() / name;
    std::filesystem::remove_all(path);
    std::filesystem::create_directories(path);
    folder = path.string();
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

std::u16string TempFolder::pathOf(const std::string& name) const {
    return utf8ToUtf16(folder + "/" + name);
}

std::u16string TempFolder::write(const std::string& name, const std::string& bytes) const {
    std::ofstream out(folder + "/" + name, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    EXPECT_TRUE(out.good()) << "could not write " << name;
    return pathOf(name);
}

std::string utf16LeWithBom(const std::string& utf8) {
    std::string bytes = "\xFF\xFE";
    for (char16_t unit : utf8ToUtf16(utf8)) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

} // namespace documents_test

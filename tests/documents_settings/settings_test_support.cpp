#include "tests/documents_settings/settings_test_support.h"

#include "common/unicode.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <random>

namespace settings_test {

TempFolder::TempFolder() {
    static std::atomic<unsigned> counter{0};
    static const unsigned salt = std::random_device{}();
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name = test ? std::string(test->test_suite_name()) + "_" + test->name() : "settings";
    for (char& c : name) {
        if (c == '/') c = '_';
    }
    name = "tavi_settings_" + name + "_" + std::to_string(salt) + "_" + std::to_string(counter++);
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
    return utf8ToUtf16(narrowPathOf(name));
}

std::u16string TempFolder::write(const std::string& name, const std::string& bytes) const {
    std::ofstream out(narrowPathOf(name), std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    EXPECT_TRUE(out.good()) << "could not write " << name;
    return pathOf(name);
}

int32_t* TableNames::lookUp(const char* operation, std::map<std::u16string, int32_t>& table, int32_t* result,
                            const char16_t* name) {
    const std::u16string text = name ? name : u"";
    calls.push_back(std::string(operation) + " " + narrow(text));
    if (text.empty()) {
        *result = -1;
        return result;
    }
    auto found = table.find(text);
    if (found == table.end()) found = table.emplace(text, nextId++).first;
    *result = found->second;
    return result;
}

int32_t* TableNames::GetTextureId(int32_t* result, const char16_t* name) {
    std::map<std::u16string, int32_t> none;
    return lookUp("TextureId", none, result, name);
}
const char16_t* TableNames::GetTextureName(int32_t id) {
    calls.push_back("TextureName " + std::to_string(id));
    return u"";
}
int32_t* TableNames::GetTexMapId(int32_t* result, const char16_t* name) {
    return lookUp("TexMapId", texMaps, result, name);
}
const char16_t* TableNames::GetTexMapName(int32_t id) {
    calls.push_back("TexMapName " + std::to_string(id));
    return u"";
}
int32_t* TableNames::GetMaterialId(int32_t* result, const char16_t* name) {
    return lookUp("MaterialId", materials, result, name);
}
const char16_t* TableNames::GetMaterialName(int32_t id) {
    calls.push_back("MaterialName " + std::to_string(id));
    return u"";
}
uint64_t TableNames::GetModelId(const char16_t* name) {
    calls.push_back("ModelId " + narrow(name ? name : u""));
    return 0;
}
const char16_t* TableNames::GetModelName() {
    calls.push_back("ModelName");
    return u"";
}

std::string narrow(const std::u16string& text) {
    return utf16ToUtf8(text);
}

uint32_t bitsOf(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

} // namespace settings_test

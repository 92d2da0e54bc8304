#include "tests/scene/scene_test_support.h"

#include "common/unicode.h"
#include "memory/pool_internals.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <random>

namespace {

std::string uniqueName() {
    static std::atomic<unsigned> counter{0};
    static const unsigned salt = std::random_device{}();
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name = test ? std::string(test->test_suite_name()) + "_" + test->name() : "scene";
    for (char& c : name) {
        if (c == '/') c = '_';
    }
    return "tavi_" + name + "_" + std::to_string(salt) + "_" + std::to_string(counter++) + ".tavi";
}

} // namespace

SceneOnDisk::SceneOnDisk(const Bytes& bytes) : size_(bytes.size()) {
    path_ = (std::filesystem::temp_directory_path() / uniqueName()).string();
    widePath_ = utf8ToUtf16(path_);
    if (!scene_writer::writeBytes(path_, bytes)) ADD_FAILURE() << "cannot write " << path_;
}

SceneOnDisk::~SceneOnDisk() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
}

uint64_t liveBlocks() {
    return poolLiveBlocks(poolInstance());
}

uint32_t floatBits(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

std::u16string wide(const std::string& text) {
    std::u16string result;
    for (unsigned char c : text)
        result.push_back(c);
    return result;
}

std::u16string wideField(const char16_t* field, size_t capacity) {
    std::u16string result;
    for (size_t i = 0; i < capacity && field[i]; ++i)
        result.push_back(field[i]);
    return result;
}

Bytes sceneOf(std::initializer_list<scene_writer::Chunk> chunks) {
    scene_writer::SceneFile file;
    for (const auto& chunk : chunks)
        file.add(chunk);
    return file.build();
}

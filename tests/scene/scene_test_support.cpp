#include "tests/scene/scene_test_support.h"

#include "common/unicode.h"
#include "memory/pool_internals.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <unistd.h>

SceneOnDisk::SceneOnDisk(const Bytes& bytes) {
    // Test processes run side by side; the process id keeps their files apart.
    static std::atomic<unsigned> counter{0};
    std::string name = "tavi_scene_" + std::to_string(getpid()) + "_" + std::to_string(counter++) + ".tavi";
    path_ = (std::filesystem::temp_directory_path() / name).string();
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

#include "tests/scene/geometry/geometry_test_support.h"

#include "common/hash.h"
#include "common/unicode.h"
#include "memory/pool_internals.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <random>

GeometryScene::GeometryScene(const Bytes& bytes) {
    static std::atomic<unsigned> counter{0};
    static const unsigned salt = std::random_device{}();
    path_ = (std::filesystem::temp_directory_path() /
             ("tavi_geometry_" + std::to_string(salt) + "_" + std::to_string(counter++) + ".tavi"))
                .string();
    if (!scene_writer::writeBytes(path_, bytes)) ADD_FAILURE() << "cannot write " << path_;
    openStatus = reader.open(utf8ToUtf16(path_).c_str());
}

GeometryScene::~GeometryScene() {
    reader.close();
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
}

LiveMemory liveMemory() {
    return {poolLiveBlocks(poolInstance()), TRDF_Load::liveSliceArrays()};
}

std::u16string wideText(const char16_t* field, size_t capacity) {
    std::u16string text;
    for (size_t i = 0; i < capacity && field[i]; ++i)
        text.push_back(field[i]);
    return text;
}

uint32_t hashOf(const std::string& text) {
    return murmurHash3x86_32(text.data(), text.size(), 0);
}

Bytes sceneOf(std::initializer_list<scene_writer::Chunk> chunks) {
    scene_writer::SceneFile file;
    for (const auto& chunk : chunks)
        file.add(chunk);
    return file.build();
}

scene_writer::Chunk otherChunk() {
    return scene_writer::storedChunk(scene_writer::kTextureFile, scene_writer::textureFileBody({}));
}

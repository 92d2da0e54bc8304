// Scene files written by the scene writer into a temporary folder, opened by the reader.
#pragma once
#include "scene/scene_file_reader.h"
#include "tools/scene_writer/record_builders.h"

#include <cstdint>
#include <cstring>
#include <string>

using scene_writer::Bytes;

// A file that lives as long as the object.
class SceneOnDisk {
  public:
    explicit SceneOnDisk(const Bytes& bytes);
    ~SceneOnDisk();
    SceneOnDisk(const SceneOnDisk&) = delete;
    SceneOnDisk& operator=(const SceneOnDisk&) = delete;
    const char16_t* path() const { return widePath_.c_str(); }
    uint64_t size() const { return size_; }

  private:
    std::string path_;
    std::u16string widePath_;
    uint64_t size_ = 0;
};

// A scene written to disk and opened.
struct OpenScene {
    explicit OpenScene(const Bytes& bytes) : file(bytes) { status = reader.open(file.path()); }
    SceneOnDisk file;
    SceneFileReader reader;
    SceneStatus status = SceneOk;
};

// Pool blocks handed out and not yet freed, to see that a path frees what it takes.
uint64_t liveBlocks();

// The 32-bit word at `offset` of any object.
template <class T> uint32_t wordAt(const T& object, size_t offset) {
    uint32_t word;
    std::memcpy(&word, reinterpret_cast<const uint8_t*>(&object) + offset, sizeof word);
    return word;
}

template <class T> float floatAt(const T& object, size_t offset) {
    float value;
    std::memcpy(&value, reinterpret_cast<const uint8_t*>(&object) + offset, sizeof value);
    return value;
}

uint32_t floatBits(float value);
std::u16string wide(const std::string& text);
// A wide text of at most `capacity` characters, stopping at the first zero.
std::u16string wideField(const char16_t* field, size_t capacity);
// A file holding `chunks` in chain order.
Bytes sceneOf(std::initializer_list<scene_writer::Chunk> chunks);

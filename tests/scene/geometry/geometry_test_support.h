// Geometry scenes written to a temporary file and read back, and what the tests need to see
// that a read leaves nothing behind.
#pragma once
#include "scene/geometry_readers.h"
#include "tools/scene_writer/geometry_builders.h"

#include <cstdint>
#include <cstring>
#include <string>

using scene_writer::Bytes;

// A scene file that lives as long as the object, opened for reading.
class GeometryScene {
  public:
    explicit GeometryScene(const Bytes& bytes);
    ~GeometryScene();
    GeometryScene(const GeometryScene&) = delete;
    GeometryScene& operator=(const GeometryScene&) = delete;

    SceneFileReader reader;
    SceneStatus openStatus = SceneOk;

  private:
    std::string path_;
};

// Owns the head of a chain and releases it, as the load driver does after every read.
template <class Part> struct Chain {
    Part* head = nullptr;
    Chain() = default;
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;
    ~Chain() { release(); }
    void release() {
        if (head) head->Release();
        head = nullptr;
    }
    size_t length() const {
        size_t n = 0;
        for (const Part* part = head; part; part = part->next)
            ++n;
        return n;
    }
};

// Pool blocks and slice arrays that are handed out; equal before and after a read that
// released its chain.
struct LiveMemory {
    uint64_t poolBlocks;
    uint64_t sliceArrays;
    bool operator==(const LiveMemory& other) const {
        return poolBlocks == other.poolBlocks && sliceArrays == other.sliceArrays;
    }
};
LiveMemory liveMemory();

std::u16string wideText(const char16_t* field, size_t capacity);
uint32_t hashOf(const std::string& text);

template <class T> uint32_t wordAt(const T* object, size_t offset) {
    uint32_t word;
    std::memcpy(&word, reinterpret_cast<const uint8_t*>(object) + offset, sizeof word);
    return word;
}
template <class T> size_t offsetIn(const void* object, const T* field) {
    return static_cast<size_t>(reinterpret_cast<const uint8_t*>(field) - static_cast<const uint8_t*>(object));
}
inline bool aligned64(const void* block) {
    return reinterpret_cast<uintptr_t>(block) % 64 == 0;
}

// A scene of these chunks in chain order.
Bytes sceneOf(std::initializer_list<scene_writer::Chunk> chunks);
// A chunk of a type no geometry reader wants.
scene_writer::Chunk otherChunk();

// Scene files written by the scene writer into a temporary folder, opened by the reader.
#pragma once
#include "scene/scene_readers.h"
#include "tools/scene_writer/record_builders.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

using scene_writer::Bytes;

// A file that lives as long as the object.
class SceneOnDisk {
  public:
    explicit SceneOnDisk(const Bytes& bytes);
    ~SceneOnDisk();
    SceneOnDisk(const SceneOnDisk&) = delete;
    SceneOnDisk& operator=(const SceneOnDisk&) = delete;
    const char16_t* path() const { return widePath_.c_str(); }

  private:
    std::string path_;
    std::u16string widePath_;
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

template <class T> const uint8_t* bytesOf(const T& object) {
    return reinterpret_cast<const uint8_t*>(&object);
}

std::u16string wide(const std::string& text);
// A wide text of at most `capacity` characters, stopping at the first zero.
std::u16string wideField(const char16_t* field, size_t capacity);
// A file holding `chunks` in chain order.
Bytes sceneOf(std::initializer_list<scene_writer::Chunk> chunks);

template <class Record> using RecordReader = SceneStatus (*)(SceneFileReader&, Record&, uint64_t&);

// The first record of a kind in `bytes`; `offset` receives the link after it.
template <class Record>
SceneStatus readFirst(RecordReader<Record> read, const Bytes& bytes, Record& record,
                      uint64_t* offset = nullptr) {
    OpenScene scene(bytes);
    uint64_t at = 0;
    SceneStatus status = read(scene.reader, record, at);
    if (offset) *offset = at;
    return status;
}

// Gives back what a record took from the pool; nothing for kinds that take nothing.
inline void releaseRecord(MaterialRecord& record) {
    releaseMaterial(record);
}
inline void releaseRecord(TextureDataRecord& record) {
    releaseTextureData(record);
}
template <class Record> void releaseRecord(Record&) {}

// The ids of one pass over a kind, with the status that ended it; `look` sees each record read.
template <class Record, class Look = void (*)(const Record&)>
std::vector<int32_t> passIds(
    RecordReader<Record> read, SceneFileReader& reader, SceneStatus& last, Look look = [](const Record&) {}) {
    std::vector<int32_t> ids;
    uint64_t offset = 0;
    do {
        Record record{};
        last = read(reader, record, offset);
        if (last == SceneOk) {
            ids.push_back(record.id);
            look(record);
        }
        releaseRecord(record);
    } while (last == SceneOk && offset != 0 && ids.size() < 10000);
    return ids;
}

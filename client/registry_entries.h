// The nodes of the asset registries: one per texture, texture map, material and model. The
// engine is handed the record inside a node; the rest is the registry's own bookkeeping.
#pragma once
#include "scene/records.h"

#include <cstdint>
#include <cstring>
#include <new>

// Where the ids of one kind of asset go on. Ids are signed 32-bit values that a file may set
// to anything, INT32_MAX included; the counter wraps past it as a two's-complement machine
// does, to INT32_MIN, rather than overflow.
class IdCounter {
  public:
    explicit IdCounter(int32_t first) : next_(first) {}
    // Hands out the next id.
    int32_t take() {
        const int32_t id = next_;
        next_ = after(id);
        return id;
    }
    // An id that a file gave an asset: later ids are handed out above it.
    void raisePast(int32_t id) {
        if (id >= next_) next_ = after(id);
    }

  private:
    static int32_t after(int32_t id) { return static_cast<int32_t>(static_cast<uint32_t>(id) + 1u); }
    int32_t next_;
};

// Whether the engine is handed `file` or `data` of a texture node.
enum class TextureKind : uint32_t { File, Data };

struct TextureEntry {
    TextureEntry* next;
    TextureKind kind;
    // A texture created by name keeps -1 in its record; the registry's id is this one.
    int32_t id;
    uint32_t handed;
    TextureFileRecord file;
    TextureDataRecord data;
};

// Texture maps and materials, which documents may replace.
template <class Record>
struct DocumentedEntry {
    DocumentedEntry* next;
    Record record;
    uint32_t handed, busy, documentTried;
};
using TexMapEntry = DocumentedEntry<TexMapRecord>;
using MaterialEntry = DocumentedEntry<MaterialRecord>;

struct ModelNameRecord {
    ModelNameRecord* next;
    uint64_t handle;
    char16_t name[kNameChars];
};

// Registry nodes start zeroed; they come from the process's allocator, which is the pool.
template <class Entry>
Entry* newZeroedEntry() {
    void* block = ::operator new(sizeof(Entry));
    std::memset(block, 0, sizeof(Entry));
    return static_cast<Entry*>(block);
}

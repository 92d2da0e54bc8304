// The records of the name registries: one node per texture, texture map, material and model,
// linked through their first word into the lists of FileRenderer.
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

enum TextureKind : uint32_t { TextureKindFile = 0, TextureKindData = 1 };

struct TextureFileEntry {
    TextureFileEntry* next;
    uint32_t kind; // TextureKindFile
    int32_t id;
    uint32_t handed;
    TextureFileRecord record;
};

struct TextureDataEntry {
    TextureDataEntry* next;
    uint32_t kind; // TextureKindData
    int32_t id;
    uint32_t handed;
    TextureDataRecord record;
};

// The two texture layouts share their head, so either is reached through it.
struct TextureEntryHead {
    void* next;
    uint32_t kind;
    int32_t id;
    uint32_t handed;
};

struct TexMapEntry {
    TexMapEntry* next;
    TexMapRecord record;
    uint32_t handed, busy, documentTried;
};

struct MaterialEntry {
    MaterialEntry* next;
    MaterialRecord record;
    uint32_t handed, busy, documentTried;
};

struct ModelNameRecord {
    ModelNameRecord* next;
    uint64_t handle;
    char16_t name[kNameChars];
};

inline const char16_t* textureName(const TextureEntryHead* head) {
    return head->kind == TextureKindData ? reinterpret_cast<const TextureDataEntry*>(head)->record.name
                                         : reinterpret_cast<const TextureFileEntry*>(head)->record.name;
}

// Registry nodes start zeroed; they come from the process's allocator, which is the pool.
template <class Entry>
Entry* newZeroedEntry() {
    void* block = ::operator new(sizeof(Entry));
    std::memset(block, 0, sizeof(Entry));
    return static_cast<Entry*>(block);
}

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

// Texture maps and materials, which documents may replace. A node read from the scene holds its
// record in the same block, behind it: scene items all arrive long before they are handed over,
// and giving their records back then would only touch pages left cold since. A node created for
// a document holds its record in a block of its own, which goes back to the pool once the engine
// has taken it; from then on the node keeps the name and id the item is still found by. Items
// that documents create while the scene is handed over so take the same warm pages one after
// another instead of fresh ones each.
template <class Record>
struct DocumentedEntry {
    DocumentedEntry* next;
    Record* record; // null once a record of its own block has been given back
    uint32_t handed, busy, documentTried;
    uint32_t recordApart;
    int32_t keptId;
    char16_t keptName[kNameChars + 1];
};
using TexMapEntry = DocumentedEntry<TexMapRecord>;
using MaterialEntry = DocumentedEntry<MaterialRecord>;

struct ModelNameRecord {
    ModelNameRecord* next;
    uint64_t handle;
    char16_t name[kNameChars];
};

// Registry nodes and their records start zeroed; they come from the process's allocator, which
// is the pool.
inline void* newZeroedBlock(size_t size) {
    void* block = ::operator new(size);
    std::memset(block, 0, size);
    return block;
}

template <class Entry>
Entry* newZeroedEntry() {
    return static_cast<Entry*>(newZeroedBlock(sizeof(Entry)));
}

template <class Record>
DocumentedEntry<Record>* newDocumentedEntry(bool recordApart) {
    using Entry = DocumentedEntry<Record>;
    constexpr size_t recordAt = (sizeof(Entry) + alignof(Record) - 1) & ~(alignof(Record) - 1);
    void* block = newZeroedBlock(recordApart ? sizeof(Entry) : recordAt + sizeof(Record));
    auto* entry = static_cast<Entry*>(block);
    entry->record = static_cast<Record*>(recordApart ? newZeroedBlock(sizeof(Record))
                                                     : static_cast<char*>(block) + recordAt);
    entry->recordApart = recordApart;
    return entry;
}

// The records of the name registries: one node per texture, texture map, material and model,
// linked through their first word into the lists of FileRenderer.
#pragma once
#include "scene/records.h"

#include <cstdint>
#include <cstring>
#include <new>

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

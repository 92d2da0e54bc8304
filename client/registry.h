// The names and ids of one kind of asset. Nodes come into a registry in two ways: the scene
// adopts the nodes it reads, with their own names and ids, and documents and the engine create
// nodes by name, which get the next free id. Either way a node is found by name and by id
// until the registry is released.
#pragma once
#include "client/name_table.h"
#include "client/registry_entries.h"
#include "common/hash.h"
#include "common/wide_format.h"

#include <cstdint>

namespace registry_names {

char16_t foldAscii(char16_t c);
// Case-insensitive, but only among names of equal hash: in practice names differing in case
// make two records.
bool sameName(const char16_t* stored, size_t capacity, const char16_t* name);
inline bool isEmpty(const char16_t* name) { return !name || !name[0]; }
inline uint64_t idKey(int32_t id) { return static_cast<uint64_t>(static_cast<int64_t>(id)); }

} // namespace registry_names

enum class Adoption {
    Added,    // linked, and found by its name and id from now on
    Known,    // the same name under the same id: the node is not needed
    Clash,    // the same name under another id: the scene is broken
    NoMemory, // linked, but a table could not take it
};

// `Kind` says where a node keeps its name and id, how a new node starts, how a node gives
// back what it holds, and whether a created node is keyed by the name as asked or by its
// stored (possibly shortened) copy.
template <class Kind>
class Registry {
  public:
    using Entry = typename Kind::Entry;

    Registry() = default;
    ~Registry() { release(); }
    Registry(const Registry&) = delete;
    Registry& operator=(const Registry&) = delete;

    Entry* find(const char16_t* name) const {
        const uint64_t key = nameKey(name);
        for (NameTable::Entry* e = names_.find(key); e; e = NameTable::next(e, key)) {
            auto* entry = static_cast<Entry*>(e->value);
            if (registry_names::sameName(Kind::name(*entry), kNameChars, name)) return entry;
        }
        return nullptr;
    }

    Entry* withId(int32_t id) const {
        const uint64_t key = registry_names::idKey(id);
        for (NameTable::Entry* e = ids_.find(key); e; e = NameTable::next(e, key)) {
            auto* entry = static_cast<Entry*>(e->value);
            if (entry && Kind::id(*entry) == id) return entry;
        }
        return nullptr;
    }

    // A zeroed node of the kind for the scene to fill, not yet in the registry.
    static Entry* newEntry() { return Kind::newEntry(); }
    // Gives back what a node that never joined the registry holds, and the node.
    static void discard(Entry* entry) {
        Kind::release(*entry);
        ::operator delete(entry);
    }

    // Creation, in two steps, so that what a document names gets its id before the item: the
    // node joins the list first, and gets its name and the next id once it is complete.
    Entry* create() {
        Entry* entry = Kind::newCreated();
        link(entry);
        return entry;
    }
    void link(Entry* entry) {
        entry->next = list_;
        list_ = entry;
    }
    int32_t enter(Entry* entry, const char16_t* name) {
        const int32_t id = nextId_.take();
        Kind::setId(*entry, id);
        copyBounded(Kind::nameField(*entry), kNameChars, name);
        names_.insert(nameKey(Kind::kKeyedByAskedName ? name : Kind::name(*entry)), entry);
        ids_.insert(registry_names::idKey(id), entry);
        return id;
    }

    // Adoption of a node read from the scene, under its own name and id.
    Adoption adopt(Entry* entry) {
        const char16_t* name = Kind::name(*entry);
        const int32_t id = Kind::id(*entry);
        // A node known under id -1 counts as unknown, as -1 is what a failed look-up answers.
        const Entry* known = registry_names::isEmpty(name) ? nullptr : find(name);
        const int32_t knownId = known ? Kind::id(*known) : -1;
        if (knownId != -1) return knownId == id ? Adoption::Known : Adoption::Clash;
        nextId_.raisePast(id);
        link(entry);
        if (!names_.insert(nameKey(name), entry) || !ids_.insert(registry_names::idKey(id), entry))
            return Adoption::NoMemory;
        return Adoption::Added;
    }

    // Gives every node back; ids start over below the lowest a file can give.
    void release() {
        while (list_) {
            Entry* next = list_->next;
            discard(list_);
            list_ = next;
        }
        nextId_ = IdCounter(-1);
    }

  private:
    NameTable names_, ids_;
    Entry* list_ = nullptr;
    IdCounter nextId_{0};
};

// A hash table from 64-bit keys to records, with its memory straight from the system's pages.
// It never grows, never rehashes and never removes: equal keys coexist, newest first, and a
// pointer into it stays valid for its whole life.
#pragma once
#include <atomic>
#include <cstdint>

class NameTable {
  public:
    struct Entry {
        uint64_t key;
        Entry* next;
        void* value;
    };

    NameTable();
    ~NameTable();
    NameTable(const NameTable&) = delete;
    NameTable& operator=(const NameTable&) = delete;

    // False when the entry was dropped for lack of memory.
    bool insert(uint64_t key, void* value);
    // The newest entry of `key`, then older ones through `next(entry, key)`.
    Entry* find(uint64_t key) const;
    static Entry* next(Entry* entry, uint64_t key);

    uint64_t bucketCount() const { return bucketCount_; }
    uint64_t pageCount() const;

    static constexpr uint32_t kEntriesPerPage = 1023;

  private:
    struct Bucket {
        Entry* head;
        uint64_t unused;
    };
    struct Page {
        Page* next;
        std::atomic<uint64_t> used;
        uint64_t spare;
        Entry entries[kEntriesPerPage];
    };
    static_assert(sizeof(Bucket) == 16);
    static_assert(sizeof(Page) == 0x6000, "an entry page fills its block exactly");

    Entry* newEntry();

    Page* pages_ = nullptr;
    Entry* freeEntries_ = nullptr;
    uint64_t bucketCount_ = 0;
    Bucket* buckets_ = nullptr;
};

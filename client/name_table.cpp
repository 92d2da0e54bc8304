#include "client/name_table.h"

#include "memory/page_source.h"

#include <new>

namespace {

constexpr uint64_t kWantedBuckets = 16384;

uint64_t bucketCountFor(uint64_t wanted) {
    uint64_t count = 512;
    while (count < wanted) count *= 2;
    return count;
}

} // namespace

NameTable::NameTable() {
    uint64_t count = bucketCountFor(kWantedBuckets);
    buckets_ = static_cast<Bucket*>(poolmem::requestPages(count * sizeof(Bucket)));
    bucketCount_ = buckets_ ? count : 0;
}

NameTable::~NameTable() {
    while (pages_) {
        Page* next = pages_->next;
        pages_->~Page();
        poolmem::returnPages(pages_, sizeof(Page));
        pages_ = next;
    }
    if (buckets_) poolmem::returnPages(buckets_, bucketCount_ * sizeof(Bucket));
}

NameTable::Entry* NameTable::newEntry() {
    if (freeEntries_) {
        Entry* entry = freeEntries_;
        freeEntries_ = entry->next;
        return entry;
    }
    if (pages_) {
        uint64_t index = pages_->used.fetch_add(1);
        if (index < kEntriesPerPage) return &pages_->entries[index];
        pages_->used.fetch_sub(1);
    }
    void* block = poolmem::requestPages(sizeof(Page));
    if (!block) return nullptr;
    Page* page = new (block) Page{};
    page->next = pages_;
    pages_ = page;
    return &page->entries[page->used.fetch_add(1)];
}

bool NameTable::insert(uint64_t key, void* value) {
    if (!buckets_) return false;
    Entry* entry = newEntry();
    if (!entry) return false;
    Bucket& bucket = buckets_[key & (bucketCount_ - 1)];
    entry->key = key;
    entry->value = value;
    entry->next = bucket.head;
    bucket.head = entry;
    return true;
}

NameTable::Entry* NameTable::find(uint64_t key) const {
    if (!buckets_) return nullptr;
    Entry* entry = buckets_[key & (bucketCount_ - 1)].head;
    return entry && entry->key == key ? entry : next(entry, key);
}

NameTable::Entry* NameTable::next(Entry* entry, uint64_t key) {
    if (!entry) return nullptr;
    for (entry = entry->next; entry; entry = entry->next)
        if (entry->key == key) return entry;
    return nullptr;
}

uint64_t NameTable::pageCount() const {
    uint64_t count = 0;
    for (Page* page = pages_; page; page = page->next) ++count;
    return count;
}

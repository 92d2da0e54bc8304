#include "memory/slab.h"

#include "memory/page_source.h"
#include "memory/spin_lock.h"

#include <cstring>
#include <initializer_list>
#include <new>

using namespace poolmem;

namespace {

char* elementsOf(poolmemPage* page) {
    return reinterpret_cast<char*>(page) + kSlabPageHeader;
}

bool bitSet(const poolmemPage* page, unsigned index) {
    return (page->bitmap[index / 32] >> (index % 32)) & 1u;
}

void pushFront(poolmemPage*& head, poolmemPage* page) {
    page->prev = nullptr;
    page->next = head;
    if (head) head->prev = page;
    head = page;
}

} // namespace

poolmemThreadAllocator::poolmemThreadAllocator(uint16_t size)
    : elementSize(size < kSlabMinElementSize ? kSlabMinElementSize : size) {}

poolmemPage* poolmemThreadAllocator::pageOf(const void* element) {
    return reinterpret_cast<poolmemPage*>(reinterpret_cast<uintptr_t>(element) &
                                          ~uintptr_t(kSlabPageSize - 1));
}

poolmemPage* poolmemThreadAllocator::firstPageOf(poolmemPage* page) {
    return reinterpret_cast<poolmemPage*>(reinterpret_cast<char*>(page) - page->pageIndex * kSlabPageSize);
}

// ---- Allocation -------------------------------------------------------------

void* poolmemThreadAllocator::allocate() {
    SpinGuard<uint32_t> guard(lock);
    void* element = emptyPages ? takeFrom(emptyPages) : nullptr;
    if (!element && !skipPartialPages) {
        for (poolmemPage* page = partialPages; page && !element;) {
            poolmemPage* next = page->next; // the page may move to the full list
            element = takeFrom(page);
            page = next;
        }
    }
    if (!element && addRegion()) element = takeFrom(emptyPages);
    return element;
}

// Called with the allocator's lock held, hence the bounded wait for the page:
// a thread freeing into this page holds its page lock and waits for ours.
void* poolmemThreadAllocator::takeFrom(poolmemPage* page) {
    if (!spinTryAcquire(page->pageLock, kSlabPageLockSpins)) return nullptr;
    if (page->nextIndex >= page->capacity) {
        spinRelease(page->pageLock);
        return nullptr;
    }
    unsigned index = page->nextIndex++;
    page->bitmap[index / 32] |= 1u << (index % 32);
    bool wasEmpty = page->usedCount++ == 0;
    uint8_t released = 0;
    if (wasEmpty) onPageEvent(page, poolmemPageFirstUse, &released, false);
    if (page->usedCount == page->capacity) onPageEvent(page, poolmemPageBecameFull, &released, false);
    spinRelease(page->pageLock);
    return elementsOf(page) + index * size_t(page->elementSize);
}

// The 64 pages go on the empty list in address order, ahead of what was there.
bool poolmemThreadAllocator::addRegion() {
    char* base = static_cast<char*>(requestPages(kSlabRegionSize));
    if (!base) return false;
    poolmemPage* following = emptyPages;
    for (size_t i = kSlabPagesPerRegion; i-- > 0;) {
        poolmemPage* page = new (base + i * kSlabPageSize) poolmemPage{};
        page->owner = this;
        page->capacity = static_cast<uint8_t>((kSlabPageSize - kSlabPageHeader) / elementSize);
        page->elementSize = elementSize;
        page->pageIndex = static_cast<uint8_t>(i);
        page->next = following;
        if (following) following->prev = page;
        following = page;
    }
    emptyPages = following;
    return true;
}

// ---- Release ----------------------------------------------------------------

void poolmemThreadAllocator::release(void* element) {
    if (!element) return;
    poolmemPage* page = pageOf(element);
    spinAcquire(page->pageLock);
    size_t offset = static_cast<char*>(element) - elementsOf(page);
    unsigned index = static_cast<unsigned>(offset / page->elementSize);
    if (offset % page->elementSize != 0 || index >= page->capacity || !bitSet(page, index)) {
        spinRelease(page->pageLock); // not handed out: nothing to undo
        return;
    }
    page->bitmap[index / 32] &= ~(1u << (index % 32));
    bool wasFull = page->usedCount-- == page->capacity;
    uint8_t released = 0;
    if (page->usedCount == 0) {
        page->owner->onPageEvent(page, poolmemPageBecameEmpty, &released, true);
    } else if (wasFull) {
        page->owner->onPageEvent(page, poolmemPageLeftFull, &released, true);
    }
    if (!released) spinRelease(page->pageLock);
}

// ---- Page events ------------------------------------------------------------

void poolmemThreadAllocator::onPageEvent(poolmemPage* page, int event, uint8_t* regionReleased,
                                         bool takeLock) {
    if (takeLock) spinAcquire(lock);
    *regionReleased = 0;
    poolmemPage* first = firstPageOf(page);
    switch (event) {
    case poolmemPageBecameFull:
        unlink(page);
        pushFront(fullPages, page);
        break;
    case poolmemPageLeftFull:
        unlink(page);
        pushFront(partialPages, page);
        break;
    case poolmemPageFirstUse:
        ++first->pagesInUse;
        if (page->nextIndex >= page->capacity) {
            unlink(page);
            pushFront(partialPages, page);
        }
        break;
    case poolmemPageBecameEmpty:
        unlink(page);
        page->nextIndex = 0;
        page->usedCount = 0;
        std::memset(page->bitmap, 0, sizeof page->bitmap);
        pushFront(emptyPages, page);
        --first->pagesInUse;
        if (releaseEmpty && first->pagesInUse == 0) {
            releaseRegion(first);
            *regionReleased = 1;
        }
        break;
    default:
        break;
    }
    if (takeLock) spinRelease(lock);
}

void poolmemThreadAllocator::unlink(poolmemPage* page) {
    if (page->prev) {
        page->prev->next = page->next;
    } else if (emptyPages == page) {
        emptyPages = page->next;
    } else if (partialPages == page) {
        partialPages = page->next;
    } else if (fullPages == page) {
        fullPages = page->next;
    }
    if (page->next) page->next->prev = page->prev;
    page->prev = page->next = nullptr;
}

// Every page of a region without pages in use sits on the empty list.
void poolmemThreadAllocator::releaseRegion(poolmemPage* first) {
    char* base = reinterpret_cast<char*>(first);
    for (size_t i = 0; i < kSlabPagesPerRegion; ++i)
        unlink(reinterpret_cast<poolmemPage*>(base + i * kSlabPageSize));
    returnPages(base, kSlabRegionSize);
}

// Every page is on one of the three lists at all times, so the first pages found
// there are all the regions. They are chained through `prev`, which is no longer
// needed, before anything is unmapped.
void poolmemThreadAllocator::flush() {
    SpinGuard<uint32_t> guard(lock);
    poolmemPage* regions = nullptr;
    for (poolmemPage* head : {emptyPages, partialPages, fullPages}) {
        for (poolmemPage* page = head; page; page = page->next) {
            if (page->pageIndex != 0) continue;
            page->prev = regions;
            regions = page;
        }
    }
    while (regions) {
        poolmemPage* next = regions->prev;
        returnPages(regions, kSlabRegionSize);
        regions = next;
    }
    emptyPages = partialPages = fullPages = nullptr;
}

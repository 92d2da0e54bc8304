// The slab layer beneath the pool: fixed-size bookkeeping records (the region
// records of the block allocator) carved from 4096-byte pages, 64 pages to a
// mapped slab region. It takes no memory from anywhere but the page source.
#pragma once
#include <atomic>
#include <cstddef>
#include <cstdint>

class poolmemThreadAllocator;

// The 64-byte header at the start of every slab page; elements follow it.
struct poolmemPage {
    poolmemPage* prev; // neighbours in the owner's empty, partial or full list
    poolmemPage* next;
    poolmemThreadAllocator* owner;
    uint8_t nextIndex; // next element to hand out; moves forward only
    uint8_t capacity;  // (page size - header) / elementSize
    uint8_t usedCount;
    std::atomic<uint8_t> pageLock;
    uint16_t elementSize;
    uint8_t pagesInUse; // meaningful in the first page of a region only
    uint8_t pageIndex;  // 0 to 63 within the region
    uint32_t bitmap[8]; // one bit an element, set while it is handed out
};

static_assert(sizeof(poolmemPage) == 64);
static_assert(offsetof(poolmemPage, owner) == 0x10);
static_assert(offsetof(poolmemPage, nextIndex) == 0x18);
static_assert(offsetof(poolmemPage, capacity) == 0x19);
static_assert(offsetof(poolmemPage, usedCount) == 0x1A);
static_assert(offsetof(poolmemPage, pageLock) == 0x1B);
static_assert(offsetof(poolmemPage, elementSize) == 0x1C);
static_assert(offsetof(poolmemPage, pagesInUse) == 0x1E);
static_assert(offsetof(poolmemPage, pageIndex) == 0x1F);
static_assert(offsetof(poolmemPage, bitmap) == 0x20);

namespace poolmem {
constexpr size_t kSlabPageSize = 4096;
constexpr size_t kSlabPagesPerRegion = 64;
constexpr size_t kSlabRegionSize = kSlabPageSize * kSlabPagesPerRegion; // 0x40000
constexpr size_t kSlabPageHeader = sizeof(poolmemPage);
constexpr uint16_t kSlabMinElementSize = 16; // keeps the capacity within the 256-bit bitmap
constexpr int kSlabPageLockSpins = 1024;
} // namespace poolmem

// How a page tells its allocator that it changed state.
enum poolmemPageEvent : int {
    poolmemPageBecameFull = 1,
    poolmemPageLeftFull = 2,
    poolmemPageFirstUse = 3,
    poolmemPageBecameEmpty = 4,
};

class poolmemPageCallback {
  public:
    // `regionReleased` is set to 1 when the event unmapped the page's region, so
    // that the caller no longer touches the page. `takeLock` is false when the
    // caller already holds the allocator's lock.
    virtual void onPageEvent(poolmemPage* page, int event, uint8_t* regionReleased, bool takeLock) = 0;

  protected:
    ~poolmemPageCallback() = default;
};

class poolmemThreadAllocator : public poolmemPageCallback {
  public:
    explicit poolmemThreadAllocator(uint16_t elementSize = 24);
    poolmemThreadAllocator(const poolmemThreadAllocator&) = delete;
    poolmemThreadAllocator& operator=(const poolmemThreadAllocator&) = delete;
    ~poolmemThreadAllocator() { flush(); }

    // One element, not zeroed; null when no page can be had.
    void* allocate();
    // Returns an element to the allocator that owns its page.
    static void release(void* element);
    // Unmaps every slab region, whatever is still handed out.
    void flush();

    void onPageEvent(poolmemPage* page, int event, uint8_t* regionReleased, bool takeLock) override;

    static poolmemPage* pageOf(const void* element);
    static poolmemPage* firstPageOf(poolmemPage* page);

    poolmemPage* emptyPages = nullptr;
    poolmemPage* partialPages = nullptr;
    poolmemPage* fullPages = nullptr;
    uint16_t elementSize;
    uint8_t skipPartialPages = 0; // 0: partial pages are searched
    uint8_t releaseEmpty = 0;     // 0: a region stays mapped until flush
    std::atomic<uint32_t> lock{0};

  private:
    void* takeFrom(poolmemPage* page);
    bool addRegion();
    void unlink(poolmemPage* page);
    void releaseRegion(poolmemPage* first);
};

// The slab layer: page headers, the page lists and the events that move pages
// between them.
#include "memory/pool_internals.h"
#include "memory/slab.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

bool onList(const poolmemPage* head, const poolmemPage* page) {
    for (; head; head = head->next) {
        if (head == page) return true;
    }
    return false;
}

// Writes down every event as "<event><list><page index> ", with the list ('e'mpty, 'p'artial,
// 'f'ull) that the page was on when the event came, before the allocator handles it. The trail
// is a fixed buffer: the events come with the page lock held.
class RecordingAllocator : public poolmemThreadAllocator {
  public:
    using poolmemThreadAllocator::poolmemThreadAllocator;
    void onPageEvent(poolmemPage* page, int event, uint8_t* regionReleased, bool takeLock) override {
        const char list = onList(emptyPages, page) ? 'e' : onList(partialPages, page) ? 'p' : 'f';
        if (length + 5 <= sizeof trail) {
            const char entry[5] = {static_cast<char>('0' + event), list,
                                   static_cast<char>('0' + page->pageIndex / 10),
                                   static_cast<char>('0' + page->pageIndex % 10), ' '};
            std::memcpy(trail + length, entry, sizeof entry);
            length += sizeof entry;
        }
        poolmemThreadAllocator::onPageEvent(page, event, regionReleased, takeLock);
    }
    std::string events() const { return std::string(trail, length); }
    char trail[512] = {};
    size_t length = 0;
};

poolmemPage* pageAt(poolmemPage* first, unsigned index) {
    return reinterpret_cast<poolmemPage*>(reinterpret_cast<char*>(first) + index * 4096);
}

TEST(Slab, NewRegionAndCapacityFollowingTheElementSize) {
    const struct {
        uint16_t elementSize, effectiveSize;
        unsigned capacity;
        const char* events; // a page that is full at its first use went to the partial list first
    } cases[] = {{24, 24, 168, "3e00 1e00 3e01 "},   {16, 16, 252, "3e00 1e00 3e01 "},
                 {8, 16, 252, "3e00 1e00 3e01 "},    {100, 100, 40, "3e00 1e00 3e01 "},
                 {2016, 2016, 2, "3e00 1e00 3e01 "}, {4032, 4032, 1, "3e00 1p00 3e01 1p01 "}};
    for (const auto& c : cases) {
        RecordingAllocator slab(c.elementSize);
        std::vector<char*> elements{static_cast<char*>(slab.allocate())};
        poolmemPage* page = poolmemThreadAllocator::pageOf(elements[0]);
        // A new region puts its 64 pages on the empty list in address order; a page that is full
        // at once has left it.
        unsigned count = c.capacity == 1 ? 1 : 0;
        EXPECT_EQ(slab.emptyPages->prev, nullptr);
        for (poolmemPage* p = slab.emptyPages; p; p = p->next, ++count) {
            EXPECT_TRUE(p == pageAt(page, count) && p->pageIndex == count && p->owner == &slab);
            EXPECT_TRUE(!p->next || p->next->prev == p);
        }
        EXPECT_EQ(count, 64u) << c.elementSize;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(page) % 4096, 0u);
        for (unsigned i = 1; i < c.capacity; ++i)
            elements.push_back(static_cast<char*>(slab.allocate()));
        EXPECT_EQ(page->capacity, c.capacity) << c.elementSize;
        EXPECT_EQ(page->elementSize, c.effectiveSize) << c.elementSize;
        for (unsigned i = 0; i < c.capacity; ++i) {
            EXPECT_EQ(elements[i], reinterpret_cast<char*>(page) + 64 + i * c.effectiveSize) << c.elementSize;
            std::memset(elements[i], 0xEE, c.effectiveSize);
        }
        EXPECT_EQ(page->usedCount, c.capacity);
        EXPECT_TRUE(onList(slab.fullPages, page)) << c.elementSize;
        // The page is full; the next element comes from the following page.
        elements.push_back(static_cast<char*>(slab.allocate()));
        EXPECT_EQ(poolmemThreadAllocator::pageOf(elements.back()), pageAt(page, 1)) << c.elementSize;
        EXPECT_EQ(slab.events(), c.events) << c.elementSize;
        for (char* element : elements)
            poolmemThreadAllocator::release(element);
    }
}

TEST(Slab, PageEventsAcrossFillingAndEmptyingAPage) {
    RecordingAllocator slab;
    std::vector<void*> elements;
    for (int i = 0; i < 168; ++i)
        elements.push_back(slab.allocate());
    poolmemPage* page = poolmemThreadAllocator::pageOf(elements[0]);
    // A page in use stays on the empty list while it has room.
    EXPECT_EQ(slab.events(), "3e00 1e00 ");
    EXPECT_EQ(page->nextIndex, 168u);
    EXPECT_EQ(page->pagesInUse, 1u);
    const uint32_t fullBitmap[8] = {~0u, ~0u, ~0u, ~0u, ~0u, 0xFFu, 0, 0};
    EXPECT_EQ(std::memcmp(page->bitmap, fullBitmap, sizeof fullBitmap), 0);
    EXPECT_TRUE(onList(slab.fullPages, page));

    // One element back: the page is no longer full. The freed element is not handed out again:
    // the index only moves forward.
    poolmemThreadAllocator::release(elements[5]);
    EXPECT_TRUE(onList(slab.partialPages, page));
    EXPECT_EQ(page->bitmap[0], ~0u & ~(1u << 5));
    EXPECT_EQ(page->usedCount, 167u);
    void* other = slab.allocate();
    EXPECT_EQ(poolmemThreadAllocator::pageOf(other), pageAt(page, 1));
    EXPECT_EQ(page->pagesInUse, 2u) << "counted in the region's first page";
    EXPECT_EQ(page->nextIndex, 168u);

    // A second release of the same element changes nothing.
    poolmemThreadAllocator::release(elements[5]);
    EXPECT_EQ(page->usedCount, 167u);
    EXPECT_EQ(slab.events(), "3e00 1e00 2f00 3e01 ");

    // The last element back: the page is emptied, reset and put first.
    for (int i = 0; i < 168; ++i) {
        if (i != 5) poolmemThreadAllocator::release(elements[i]);
    }
    EXPECT_EQ(slab.events(), "3e00 1e00 2f00 3e01 4p00 ");
    EXPECT_EQ(page->usedCount + page->nextIndex, 0u);
    const uint32_t emptyBitmap[8] = {};
    EXPECT_EQ(std::memcmp(page->bitmap, emptyBitmap, sizeof emptyBitmap), 0);
    EXPECT_EQ(slab.emptyPages, page);
    EXPECT_FALSE(onList(slab.partialPages, page));
    EXPECT_EQ(page->pagesInUse, 1u);
    EXPECT_EQ(slab.allocate(), reinterpret_cast<char*>(page) + 64) << "reused from its start";
    poolmemThreadAllocator::release(other);
}

TEST(Slab, RegionIsUnmappedWhenEmptyOnlyIfAskedToAndFlushUnmapsEveryRegion) {
    for (uint8_t releaseEmpty : {0, 1}) {
        const uint64_t pagesBefore = poolPageBytesOutstanding();
        poolmemThreadAllocator slab;
        slab.releaseEmpty = releaseEmpty;
        void* element = slab.allocate();
        ASSERT_NE(element, nullptr);
        EXPECT_EQ(poolPageBytesOutstanding() - pagesBefore, 0x40000u);
        poolmemThreadAllocator::release(element);
        EXPECT_EQ(poolPageBytesOutstanding() - pagesBefore, releaseEmpty ? 0u : 0x40000u);
        for (int i = 0; i < 64 * 168 + 1; ++i)
            ASSERT_NE(slab.allocate(), nullptr); // two regions
        EXPECT_EQ(poolPageBytesOutstanding() - pagesBefore, 2u * 0x40000u);
        slab.flush();
        EXPECT_EQ(poolPageBytesOutstanding(), pagesBefore);
        EXPECT_EQ(slab.emptyPages, nullptr);
        EXPECT_EQ(slab.fullPages, nullptr);
    }
    poolmemThreadAllocator slab;
    poolFailNextPageRequests(1);
    EXPECT_EQ(slab.allocate(), nullptr) << "a refused region gives null";
    EXPECT_NE(slab.allocate(), nullptr);
}

// Threads take and give back elements of one allocator; no element may be handed
// out twice at the same time.
TEST(Slab, ConcurrentUseHandsOutEachElementOnce) {
    poolmemThreadAllocator slab;
    std::atomic<int> faults{0};
    auto worker = [&](uint32_t id) {
        std::vector<uint32_t*> held(500);
        for (int round = 0; round < 40; ++round) {
            for (uint32_t i = 0; i < held.size(); ++i) {
                held[i] = static_cast<uint32_t*>(slab.allocate());
                if (held[i]) held[i][0] = id << 16 | i;
            }
            for (uint32_t i = 0; i < held.size(); ++i) {
                faults += !held[i] || held[i][0] != (id << 16 | i);
                poolmemThreadAllocator::release(held[i]);
            }
        }
    };
    std::vector<std::thread> threads;
    for (uint32_t id = 0; id < 4; ++id)
        threads.emplace_back(worker, id);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(faults.load(), 0);
    EXPECT_EQ(slab.fullPages, nullptr);
    EXPECT_EQ(slab.partialPages, nullptr);
    for (poolmemPage* page = slab.emptyPages; page; page = page->next)
        EXPECT_EQ(page->usedCount + page->nextIndex + (page->pageIndex == 0 ? page->pagesInUse : 0u), 0u);
}

} // namespace

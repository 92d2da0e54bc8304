// The slab layer: page headers, the page lists and the events that move pages
// between them.
#include "memory/pool_internals.h"
#include "memory/slab.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

namespace {

bool onList(const poolmemPage* head, const poolmemPage* page) {
    for (; head; head = head->next) {
        if (head == page) return true;
    }
    return false;
}

// Remembers every event, and the list that the page was on when it came, before
// the allocator handles it.
class RecordingAllocator : public poolmemThreadAllocator {
  public:
    using poolmemThreadAllocator::poolmemThreadAllocator;
    struct Event {
        poolmemPage* page;
        int event;
        char list; // 'e'mpty, 'p'artial, 'f'ull
    };
    void onPageEvent(poolmemPage* page, int event, uint8_t* regionReleased, bool takeLock) override {
        char list = onList(emptyPages, page) ? 'e' : onList(partialPages, page) ? 'p' : 'f';
        if (count < 64) events[count] = Event{page, event, list};
        ++count;
        poolmemThreadAllocator::onPageEvent(page, event, regionReleased, takeLock);
    }
    Event events[64] = {};
    int count = 0;
};

bool bit(const poolmemPage* page, unsigned index) {
    return (page->bitmap[index / 32] >> (index % 32)) & 1u;
}

poolmemPage* pageAt(poolmemPage* first, unsigned index) {
    return reinterpret_cast<poolmemPage*>(reinterpret_cast<char*>(first) + index * 4096);
}

TEST(Slab, NewRegionPutsSixtyFourPagesOnTheEmptyListInAddressOrder) {
    poolmemThreadAllocator slab;
    void* element = slab.allocate();
    ASSERT_NE(element, nullptr);
    poolmemPage* first = poolmemThreadAllocator::pageOf(element);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(first) % 4096, 0u);
    unsigned count = 0;
    for (poolmemPage* page = slab.emptyPages; page; page = page->next, ++count) {
        EXPECT_EQ(page, pageAt(first, count));
        EXPECT_EQ(page->pageIndex, count);
        EXPECT_EQ(page->owner, &slab);
        EXPECT_EQ(page->elementSize, 24u);
        EXPECT_EQ(page->capacity, 168u);
        if (page->next) {
            EXPECT_EQ(page->next->prev, page);
        }
    }
    EXPECT_EQ(count, 64u);
    EXPECT_EQ(slab.emptyPages->prev, nullptr);
    EXPECT_EQ(element, reinterpret_cast<char*>(first) + 64);
    poolmemThreadAllocator::release(element);
}

TEST(Slab, CapacityFollowsTheElementSize) {
    struct Case {
        uint16_t elementSize;
        uint16_t effectiveSize;
        unsigned capacity;
        char listWhenFull; // a page that is full at its first use went to the partial list first
    };
    const Case cases[] = {{24, 24, 168, 'e'},  {16, 16, 252, 'e'},   {8, 16, 252, 'e'},
                          {100, 100, 40, 'e'}, {2016, 2016, 2, 'e'}, {4032, 4032, 1, 'p'}};
    for (const Case& c : cases) {
        RecordingAllocator slab(c.elementSize);
        std::vector<char*> elements;
        for (unsigned i = 0; i < c.capacity; ++i)
            elements.push_back(static_cast<char*>(slab.allocate()));
        poolmemPage* page = poolmemThreadAllocator::pageOf(elements[0]);
        EXPECT_EQ(page->capacity, c.capacity) << c.elementSize;
        EXPECT_EQ(page->elementSize, c.effectiveSize) << c.elementSize;
        for (unsigned i = 0; i < c.capacity; ++i) {
            EXPECT_EQ(elements[i], reinterpret_cast<char*>(page) + 64 + i * c.effectiveSize) << c.elementSize;
            std::memset(elements[i], 0xEE, c.effectiveSize);
        }
        EXPECT_EQ(page->usedCount, c.capacity);
        EXPECT_TRUE(onList(slab.fullPages, page)) << c.elementSize;
        // The page is full; the next element comes from the following page.
        char* next = static_cast<char*>(slab.allocate());
        EXPECT_EQ(poolmemThreadAllocator::pageOf(next), pageAt(page, 1)) << c.elementSize;
        // The first use and the filling of the first page are the first events.
        ASSERT_GE(slab.count, 2) << c.elementSize;
        EXPECT_EQ(slab.events[0].event, poolmemPageFirstUse) << c.elementSize;
        EXPECT_EQ(slab.events[1].event, poolmemPageBecameFull) << c.elementSize;
        EXPECT_EQ(slab.events[1].list, c.listWhenFull) << c.elementSize;
        for (char* element : elements)
            poolmemThreadAllocator::release(element);
        poolmemThreadAllocator::release(next);
    }
}

TEST(Slab, PageEventsAcrossFillingAndEmptyingAPage) {
    RecordingAllocator slab;
    std::vector<void*> elements;
    for (int i = 0; i < 168; ++i)
        elements.push_back(slab.allocate());
    poolmemPage* page = poolmemThreadAllocator::pageOf(elements[0]);
    ASSERT_EQ(slab.count, 2);
    EXPECT_EQ(slab.events[0].page, page);
    EXPECT_EQ(slab.events[0].event, poolmemPageFirstUse);
    EXPECT_EQ(slab.events[0].list, 'e');
    EXPECT_EQ(slab.events[1].event, poolmemPageBecameFull);
    EXPECT_EQ(slab.events[1].list, 'e') << "a page in use stays on the empty list while it has room";
    EXPECT_EQ(page->nextIndex, 168u);
    EXPECT_EQ(page->pagesInUse, 1u);
    const uint32_t fullBitmap[8] = {~0u, ~0u, ~0u, ~0u, ~0u, 0xFFu, 0, 0};
    EXPECT_EQ(std::memcmp(page->bitmap, fullBitmap, sizeof fullBitmap), 0);
    EXPECT_TRUE(onList(slab.fullPages, page));
    EXPECT_FALSE(onList(slab.emptyPages, page));

    // One element back: the page is no longer full.
    poolmemThreadAllocator::release(elements[5]);
    ASSERT_EQ(slab.count, 3);
    EXPECT_EQ(slab.events[2].event, poolmemPageLeftFull);
    EXPECT_EQ(slab.events[2].list, 'f');
    EXPECT_TRUE(onList(slab.partialPages, page));
    EXPECT_FALSE(bit(page, 5));
    EXPECT_EQ(page->usedCount, 167u);

    // The freed element is not handed out again: the index only moves forward.
    void* other = slab.allocate();
    EXPECT_EQ(poolmemThreadAllocator::pageOf(other), pageAt(page, 1));
    EXPECT_EQ(slab.events[3].event, poolmemPageFirstUse);
    EXPECT_EQ(page->pagesInUse, 2u) << "counted in the region's first page";
    EXPECT_EQ(page->nextIndex, 168u);

    // A second release of the same element changes nothing.
    int eventsBefore = slab.count;
    poolmemThreadAllocator::release(elements[5]);
    EXPECT_EQ(page->usedCount, 167u);
    EXPECT_EQ(slab.count, eventsBefore);

    // The last element back: the page is emptied, reset and put first.
    for (int i = 0; i < 168; ++i) {
        if (i != 5) poolmemThreadAllocator::release(elements[i]);
    }
    ASSERT_EQ(slab.count, eventsBefore + 1);
    EXPECT_EQ(slab.events[eventsBefore].event, poolmemPageBecameEmpty);
    EXPECT_EQ(slab.events[eventsBefore].list, 'p');
    EXPECT_EQ(page->usedCount, 0u);
    EXPECT_EQ(page->nextIndex, 0u);
    const uint32_t emptyBitmap[8] = {};
    EXPECT_EQ(std::memcmp(page->bitmap, emptyBitmap, sizeof emptyBitmap), 0);
    EXPECT_EQ(slab.emptyPages, page);
    EXPECT_FALSE(onList(slab.partialPages, page));
    EXPECT_EQ(page->pagesInUse, 1u);
    EXPECT_EQ(slab.allocate(), reinterpret_cast<char*>(page) + 64) << "reused from its start";
    poolmemThreadAllocator::release(other);
}

TEST(Slab, FreedElementWaitsUntilThePageEmpties) {
    for (unsigned freed : {0u, 1u, 2u}) {
        poolmemThreadAllocator slab;
        char* elements[3];
        for (char*& element : elements)
            element = static_cast<char*>(slab.allocate());
        poolmemThreadAllocator::release(elements[freed]);
        char* next = static_cast<char*>(slab.allocate());
        EXPECT_EQ(next, elements[0] + 3 * 24) << freed;
        for (unsigned i = 0; i < 3; ++i) {
            if (i != freed) poolmemThreadAllocator::release(elements[i]);
        }
        poolmemThreadAllocator::release(next);
        EXPECT_EQ(slab.allocate(), elements[0]) << freed << ": the emptied page starts over";
    }
}

TEST(Slab, RegionIsUnmappedWhenEmptyOnlyIfAskedTo) {
    for (uint8_t releaseEmpty : {0, 1}) {
        uint64_t pagesBefore = poolPageBytesOutstanding();
        poolmemThreadAllocator slab;
        slab.releaseEmpty = releaseEmpty;
        void* element = slab.allocate();
        ASSERT_NE(element, nullptr);
        EXPECT_EQ(poolPageBytesOutstanding() - pagesBefore, 0x40000u);
        poolmemThreadAllocator::release(element);
        EXPECT_EQ(poolPageBytesOutstanding() - pagesBefore, releaseEmpty ? 0u : 0x40000u);
        EXPECT_EQ(slab.emptyPages == nullptr, releaseEmpty == 1);
        slab.flush();
        EXPECT_EQ(poolPageBytesOutstanding(), pagesBefore);
    }
}

TEST(Slab, FlushUnmapsEveryRegion) {
    uint64_t pagesBefore = poolPageBytesOutstanding();
    poolmemThreadAllocator slab;
    for (int i = 0; i < 64 * 168 + 1; ++i)
        ASSERT_NE(slab.allocate(), nullptr); // two regions
    EXPECT_EQ(poolPageBytesOutstanding() - pagesBefore, 2u * 0x40000u);
    slab.flush();
    EXPECT_EQ(poolPageBytesOutstanding(), pagesBefore);
    EXPECT_EQ(slab.emptyPages, nullptr);
    EXPECT_EQ(slab.fullPages, nullptr);
}

TEST(Slab, RefusedRegionGivesNull) {
    poolmemThreadAllocator slab;
    poolFailNextPageRequests(1);
    EXPECT_EQ(slab.allocate(), nullptr);
    EXPECT_NE(slab.allocate(), nullptr);
}

// Threads take and give back elements of one allocator; no element may be handed
// out twice at the same time.
TEST(Slab, ConcurrentUseHandsOutEachElementOnce) {
    poolmemThreadAllocator slab;
    std::atomic<int> faults{0};
    auto worker = [&](uint32_t id) {
        std::vector<uint32_t*> held;
        for (int round = 0; round < 40; ++round) {
            for (uint32_t i = 0; i < 500; ++i) {
                auto* element = static_cast<uint32_t*>(slab.allocate());
                if (!element) {
                    ++faults;
                    continue;
                }
                element[0] = id;
                element[1] = i;
                held.push_back(element);
            }
            for (uint32_t i = 0; i < held.size(); ++i) {
                if (held[i][0] != id || held[i][1] != i) ++faults;
                poolmemThreadAllocator::release(held[i]);
            }
            held.clear();
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
    for (poolmemPage* page = slab.emptyPages; page; page = page->next) {
        EXPECT_EQ(page->usedCount, 0u);
        EXPECT_EQ(page->nextIndex, 0u);
        if (page->pageIndex == 0) {
            EXPECT_EQ(page->pagesInUse, 0u);
        }
    }
}

} // namespace

// The aligned blocks of the slices' arrays.
//
// Each array sits behind a head of one alignment unit whose first word is the size of its own
// mapping, or 0 for a block of the C library, so that Free, which is given the pointer alone,
// returns it the way it came.
//
// Large arrays take whole pages of their own: they are written from end to end at once, and
// the system backs such runs with huge pages, which spares most of the faults. Under the
// sanitizers every array is a block of the C runtime, with the rounding behind it poisoned, so
// that a read past its end is reported wherever the engine makes it.
#include "scene/geometry_objects.h"

#include "platform/aligned_blocks.h"
#include "platform/pages.h"

#include <atomic>
#include <cstring>

#if TAVI_SANITIZER_BLOCKS
#include <sanitizer/asan_interface.h>
constexpr bool kSanitizerBlocks = true;
#else
#define ASAN_POISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
constexpr bool kSanitizerBlocks = false;
#endif

namespace TRDF_Load {

namespace {

constexpr size_t kSliceAlignment = 64;
constexpr size_t kPagedArrayBytes = size_t(2) << 20;

std::atomic<uint64_t> gLiveSliceArrays{0};

// The first words of the head in front of each array.
struct SliceHead {
    uint64_t mapped;  // the length of its own mapping, or 0 for a block of the C runtime
    uint64_t claimed; // what a block of the C runtime claimed of the machine's memory
};
static_assert(sizeof(SliceHead) <= kSliceAlignment);

} // namespace

void* allocateSliceArray(size_t size) {
    if (size > SIZE_MAX - 2 * kSliceAlignment) return nullptr;
    const size_t rounded = (size + kSliceAlignment - 1) & ~(kSliceAlignment - 1);
    const size_t total = kSliceAlignment + rounded;
    SliceHead head{};
    void* base;
    if (total >= kPagedArrayBytes && !kSanitizerBlocks) {
        base = platform::allocatePages(total);
        head.mapped = total;
    } else {
        // Under the sanitizers the machine's memory is claimed as page runs claim it, so that
        // what it cannot hold fails here too. An aligned block wants a whole number of alignment
        // units, which `total` is.
        if (kSanitizerBlocks && !platform::claimMemory(total)) return nullptr;
        head.claimed = kSanitizerBlocks ? total : 0;
        base = platform::allocateAligned(kSliceAlignment, total);
        if (!base && head.claimed) platform::unclaimMemory(total);
    }
    if (!base) return nullptr;
    std::memcpy(base, &head, sizeof head);
    gLiveSliceArrays.fetch_add(1, std::memory_order_relaxed);
    uint8_t* block = static_cast<uint8_t*>(base) + kSliceAlignment;
    ASAN_POISON_MEMORY_REGION(block + size, rounded - size);
    return block;
}

void freeSliceArray(void* block) {
    if (!block) return;
    void* base = static_cast<uint8_t*>(block) - kSliceAlignment;
    SliceHead head;
    std::memcpy(&head, base, sizeof head);
    gLiveSliceArrays.fetch_sub(1, std::memory_order_relaxed);
    if (head.mapped) {
        platform::releasePages(base, size_t(head.mapped));
        return;
    }
    platform::freeAligned(base);
    if (head.claimed) platform::unclaimMemory(size_t(head.claimed));
}

uint64_t liveSliceArrays() {
    return gLiveSliceArrays.load(std::memory_order_relaxed);
}

} // namespace TRDF_Load

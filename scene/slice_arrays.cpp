// The aligned blocks of the slices' arrays.
//
// Each array sits behind a head of one alignment unit whose first word is the size of its own
// mapping, or 0 for a block of the C library, so that Free, which is given the pointer alone,
// returns it the way it came.
//
// Large arrays take whole pages of their own: they are written from end to end at once, and
// the system backs such runs with huge pages, which spares most of the faults.
#include "scene/geometry_objects.h"

#include "platform/pages.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace TRDF_Load {

namespace {

constexpr size_t kSliceAlignment = 64;
constexpr size_t kPagedArrayBytes = size_t(2) << 20;

std::atomic<uint64_t> gLiveSliceArrays{0};

} // namespace

void* allocateSliceArray(size_t size) {
    if (size > SIZE_MAX - 2 * kSliceAlignment) return nullptr;
    const size_t rounded = (size + kSliceAlignment - 1) & ~(kSliceAlignment - 1);
    const size_t total = kSliceAlignment + rounded;
    uint64_t mapped = 0;
    void* base;
    if (total >= kPagedArrayBytes) {
        base = platform::allocatePages(total);
        mapped = total;
    } else {
        // aligned_alloc wants a whole number of alignment units, which `total` is.
        base = std::aligned_alloc(kSliceAlignment, total);
    }
    if (!base) return nullptr;
    std::memcpy(base, &mapped, sizeof mapped);
    gLiveSliceArrays.fetch_add(1, std::memory_order_relaxed);
    return static_cast<uint8_t*>(base) + kSliceAlignment;
}

void freeSliceArray(void* block) {
    if (!block) return;
    void* base = static_cast<uint8_t*>(block) - kSliceAlignment;
    uint64_t mapped;
    std::memcpy(&mapped, base, sizeof mapped);
    gLiveSliceArrays.fetch_sub(1, std::memory_order_relaxed);
    if (mapped) platform::releasePages(base, size_t(mapped));
    else std::free(base);
}

uint64_t liveSliceArrays() {
    return gLiveSliceArrays.load(std::memory_order_relaxed);
}

} // namespace TRDF_Load

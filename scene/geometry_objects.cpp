// Slots of the triangle mesh and its slices, and the aligned blocks of the slices' arrays.
#include "scene/geometry_objects.h"

#include "scene/pool_objects.h"
#include "scene/track_keys.h"

#include "platform/pages.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace TRDF_Load {

// ---- Slice arrays ------------------------------------------------------------------------------

namespace {

constexpr size_t kSliceAlignment = 64;
// Arrays this large take whole pages of their own: they are written from end to end at once,
// and the system backs such runs with huge pages, which spares most of the faults.
constexpr size_t kPagedArrayBytes = size_t(2) << 20;
std::atomic<uint64_t> gLiveSliceArrays{0};

} // namespace

// Each array sits behind a head of one alignment unit whose first word is the size of its own
// mapping, or 0 for a block of the C library, so that Free, which is given the pointer alone,
// returns it the way it came.
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

namespace {

// Frees one array through the slice's own slot and nulls the pointer.
template <class Slice, class T> void freeArray(Slice& slice, T*& array) {
    slice.Free(array);
    array = nullptr;
}

} // namespace

// ---- Triangle mesh -----------------------------------------------------------------------------

TriangleMesh::TriangleMesh() : TriangleMeshFields{} {
    value30 = -1;
    value38 = -1;
    value44 = 1;
    floats50[0] = floats50[1] = floats50[2] = 1.0f;
}

TriangleMesh::~TriangleMesh() {
    pool_objects::releaseChain(next);
    ClearKeys();
    if (staticSlice) staticSlice->Release();
    staticSlice = nullptr;
    pool_objects::releaseChain(timeSlices);
}

TriangleMesh* TriangleMesh::create() {
    return pool_objects::create<TriangleMesh>();
}

void TriangleMesh::Release() {
    destroy(1);
}

void* TriangleMesh::destroy(uint32_t flags) {
    return pool_objects::destroy(this, flags);
}

void TriangleMesh::ClearKeys() {
    freeTrack(keys);
    keys = nullptr;
    keyCount = 0;
}

// ---- Static slice ------------------------------------------------------------------------------

StaticSliceT::~StaticSliceT() {
    Clear();
}

StaticSliceT* StaticSliceT::create() {
    return pool_objects::create<StaticSliceT>();
}

void* StaticSliceT::Allocate(size_t size) {
    return allocateSliceArray(size);
}

void StaticSliceT::Free(void* block) {
    freeSliceArray(block);
}

void StaticSliceT::Release() {
    destroy(1);
}

int32_t StaticSliceT::Clear() {
    freeArray(*this, triangleTriples);
    freeArray(*this, triangleQuads);
    freeArray(*this, vectorTable);
    freeArray(*this, pairTable);
    freeArray(*this, triangleBits);
    freeArray(*this, triangleWords);
    freeArray(*this, cornerBits);
    return 0;
}

void* StaticSliceT::destroy(uint32_t flags) {
    return pool_objects::destroy(this, flags);
}

// ---- Time slice --------------------------------------------------------------------------------

TimeSliceT::~TimeSliceT() {
    Clear();
}

TimeSliceT* TimeSliceT::create() {
    return pool_objects::create<TimeSliceT>();
}

void* TimeSliceT::Allocate(size_t size) {
    return allocateSliceArray(size);
}

void TimeSliceT::Free(void* block) {
    freeSliceArray(block);
}

void TimeSliceT::Release() {
    destroy(1);
}

int32_t TimeSliceT::Clear() {
    freeArray(*this, positions);
    freeArray(*this, points);
    freeArray(*this, engineArray);
    return 0;
}

void* TimeSliceT::destroy(uint32_t flags) {
    return pool_objects::destroy(this, flags);
}

} // namespace TRDF_Load

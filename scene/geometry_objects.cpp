// Slots of the triangle mesh and its slices, and the aligned blocks of the slices' arrays.
#include "scene/geometry_objects.h"

#include "scene/pool_objects.h"
#include "scene/track_keys.h"

#include <atomic>
#include <cstdlib>

namespace TRDF_Load {

// ---- Slice arrays ------------------------------------------------------------------------------

namespace {

constexpr size_t kSliceAlignment = 64;
std::atomic<uint64_t> gLiveSliceArrays{0};

} // namespace

void* allocateSliceArray(size_t size) {
    // aligned_alloc wants a whole number of alignment units; a zero size takes one unit.
    if (size > SIZE_MAX - (kSliceAlignment - 1)) return nullptr;
    size_t rounded = (size + kSliceAlignment - 1) & ~(kSliceAlignment - 1);
    void* block = std::aligned_alloc(kSliceAlignment, rounded ? rounded : kSliceAlignment);
    if (block) gLiveSliceArrays.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void freeSliceArray(void* block) {
    if (!block) return;
    gLiveSliceArrays.fetch_sub(1, std::memory_order_relaxed);
    std::free(block);
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

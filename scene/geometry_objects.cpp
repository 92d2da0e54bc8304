// Slots of the triangle mesh and its slices.
#include "scene/geometry_objects.h"

#include "scene/pool_objects.h"
#include "scene/track_keys.h"

namespace TRDF_Load {

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

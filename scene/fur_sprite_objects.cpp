// Slots of the fur and sprite clouds and their time slices.
#include "scene/fur_sprite_objects.h"

#include "scene/pool_objects.h"
#include "scene/track_keys.h"

namespace TRDF_Load {

// ---- Fur ---------------------------------------------------------------------------------------

FurMesh::FurMesh() : FurMeshFields{} {
    value88 = -1;
    value8C = -1;
    value90 = 1;
    floats70[0] = floats70[1] = floats70[2] = 1.0f;
}

FurMesh::~FurMesh() {
    pool_objects::releaseChain(next);
    ClearKeys();
    pool_objects::releaseChain(timeSlices);
}

FurMesh* FurMesh::create() {
    return pool_objects::create<FurMesh>();
}

void FurMesh::Release() {
    destroy(1);
}

void* FurMesh::destroy(uint32_t flags) {
    return pool_objects::destroy(this, flags);
}

void FurMesh::ClearKeys() {
    freeTrack(keys);
    keys = nullptr;
    keyCount = 0;
}

TimeSliceF::~TimeSliceF() {
    Clear();
}

TimeSliceF* TimeSliceF::create() {
    return pool_objects::create<TimeSliceF>();
}

void* TimeSliceF::Allocate(size_t size) {
    return allocateSliceArray(size);
}

void TimeSliceF::Free(void* block) {
    freeSliceArray(block);
}

void TimeSliceF::Release() {
    destroy(1);
}

int32_t TimeSliceF::Clear() {
    Free(elements);
    elements = nullptr;
    return 0;
}

void* TimeSliceF::destroy(uint32_t flags) {
    return pool_objects::destroy(this, flags);
}

// ---- Sprites -----------------------------------------------------------------------------------

SprMesh::SprMesh() : SprMeshFields{} {
    value58 = -1;
    value5C = -1;
    value60 = 1;
    floats40[0] = floats40[1] = floats40[2] = 1.0f;
}

SprMesh::~SprMesh() {
    pool_objects::releaseChain(next);
    ClearKeys();
    pool_objects::releaseChain(timeSlices);
}

SprMesh* SprMesh::create() {
    return pool_objects::create<SprMesh>();
}

void SprMesh::Release() {
    destroy(1);
}

void* SprMesh::destroy(uint32_t flags) {
    return pool_objects::destroy(this, flags);
}

void SprMesh::ClearKeys() {
    freeTrack(keys);
    keys = nullptr;
    keyCount = 0;
}

TimeSliceS::~TimeSliceS() {
    Clear();
}

TimeSliceS* TimeSliceS::create() {
    return pool_objects::create<TimeSliceS>();
}

void* TimeSliceS::Allocate(size_t size, uint64_t* sizeOut) {
    if (sizeOut) *sizeOut = size;
    return allocateSliceArray(size);
}

void TimeSliceS::Free(void* block, uint64_t) {
    freeSliceArray(block);
}

void TimeSliceS::Release() {
    destroy(1);
}

int32_t TimeSliceS::Clear() {
    Free(elements, elementsBytes);
    elements = nullptr;
    elementsBytes = 0;
    return 0;
}

void* TimeSliceS::destroy(uint32_t flags) {
    return pool_objects::destroy(this, flags);
}

} // namespace TRDF_Load

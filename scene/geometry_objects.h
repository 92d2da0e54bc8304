// The geometry objects handed to the engine: triangle meshes with their static and time
// slices, fur and sprite clouds with their time slices. The engine reads their fields
// directly, so every offset below is part of the boundary.
//
// As with the camera and light objects, each class is its bridge base followed by a plain
// fields struct; the offsets the engine sees are the struct's plus the table pointer.
//
// The slices' arrays are 64-byte aligned blocks from the C runtime, not from the pool: the
// engine allocates and frees them through the same slots, and may take an array out of a
// slice (nulling the pointer) to keep it after the object is gone.
#pragma once
#include "bridge/bridge_objects.h"
#include "scene/records.h"
#include "scene/temp_objects.h"

#include <cstddef>
#include <cstdint>

namespace TRDF_Load {

// A 64-byte aligned block for the slices' arrays. A zero size still yields a block, so that
// "present but empty" stays distinguishable from "absent". Null when the size is absurd or
// the runtime has no memory left.
void* allocateSliceArray(size_t size);
void freeSliceArray(void* block);
// Blocks handed out by allocateSliceArray and not yet freed, process-wide.
uint64_t liveSliceArrays();

class TriangleMesh;
class StaticSliceT;
class TimeSliceT;
class FurMesh;
class TimeSliceF;
class SprMesh;
class TimeSliceS;

// ---- Array elements ----------------------------------------------------------------------------

// One triangle in the static slice's quad array; the three words before the material id
// belong to the engine.
struct TriangleQuad {
    uint32_t words[3];
    uint32_t materialId;
};
static_assert(sizeof(TriangleQuad) == 16);

// One point of a time slice: the position widened with 1.0, then room for eight extras.
struct PointElement {
    float position[4];
    uint8_t extras[8][16];
};
static_assert(sizeof(PointElement) == 0x90);
constexpr int32_t kMaxPointExtras = 8;

// One fur element: the 100 bytes of the file, at a stride that keeps every element on a
// 16-byte boundary. The last 12 bytes are never written.
struct FurElement {
    uint8_t vectors[64];
    uint32_t words64[5];
    uint32_t materialWord; // low 24 bits the material id, high 8 bits a flag byte
    uint32_t words88[3];
    uint8_t unused[12];

    uint32_t materialId() const { return materialWord & 0x00FFFFFFu; }
};
static_assert(sizeof(FurElement) == 0x70);
static_assert(offsetof(FurElement, materialWord) == 84);
constexpr size_t kFurElementFileBytes = 100;

struct SpriteElement {
    uint8_t data[28];
    uint32_t materialId;
};
static_assert(sizeof(SpriteElement) == 32);

// ---- Triangle mesh -----------------------------------------------------------------------------

struct TriangleMeshFields {
    TriangleMesh* next; // the next part of the same model
    StaticSliceT* staticSlice;
    TimeSliceT* timeSlices;
    TrackKey* keys; // count block in front, see track_keys.h
    uint32_t keyCount;
    uint32_t value2C; // this and the fields up to `name` are the engine's, copied from the body
    int32_t value30;
    int32_t value34;
    int32_t value38;
    uint32_t value3C;
    uint32_t value40;
    uint32_t value44;
    uint32_t nameHash; // MurmurHash3 x86 32, seed 0, of the name's narrow bytes
    uint32_t secondNameHash;
    float floats50[6];
    uint8_t block68[48];
    uint32_t value98;
    char16_t name[kNameChars];
    char16_t secondName[kNameChars];
    uint32_t reserved19C;
    void* modelNode; // the load driver's model handle
    uint8_t reserved1A8[8];
};
static_assert(objectOffset(offsetof(TriangleMeshFields, next)) == 0x08);
static_assert(objectOffset(offsetof(TriangleMeshFields, staticSlice)) == 0x10);
static_assert(objectOffset(offsetof(TriangleMeshFields, timeSlices)) == 0x18);
static_assert(objectOffset(offsetof(TriangleMeshFields, keys)) == 0x20);
static_assert(objectOffset(offsetof(TriangleMeshFields, keyCount)) == 0x28);
static_assert(objectOffset(offsetof(TriangleMeshFields, value2C)) == 0x2C);
static_assert(objectOffset(offsetof(TriangleMeshFields, value30)) == 0x30);
static_assert(objectOffset(offsetof(TriangleMeshFields, value34)) == 0x34);
static_assert(objectOffset(offsetof(TriangleMeshFields, value38)) == 0x38);
static_assert(objectOffset(offsetof(TriangleMeshFields, value3C)) == 0x3C);
static_assert(objectOffset(offsetof(TriangleMeshFields, value40)) == 0x40);
static_assert(objectOffset(offsetof(TriangleMeshFields, value44)) == 0x44);
static_assert(objectOffset(offsetof(TriangleMeshFields, nameHash)) == 0x48);
static_assert(objectOffset(offsetof(TriangleMeshFields, secondNameHash)) == 0x4C);
static_assert(objectOffset(offsetof(TriangleMeshFields, floats50)) == 0x50);
static_assert(objectOffset(offsetof(TriangleMeshFields, block68)) == 0x68);
static_assert(objectOffset(offsetof(TriangleMeshFields, value98)) == 0x98);
static_assert(objectOffset(offsetof(TriangleMeshFields, name)) == 0x9C);
static_assert(objectOffset(offsetof(TriangleMeshFields, secondName)) == 0x11C);
static_assert(objectOffset(offsetof(TriangleMeshFields, modelNode)) == 0x1A0);

class TriangleMesh final : public bridgeTriangleMesh, public TriangleMeshFields {
  public:
    // Empty, with the initial values the engine expects of the fields it alone interprets.
    TriangleMesh();
    ~TriangleMesh();
    TriangleMesh(const TriangleMesh&) = delete;
    TriangleMesh& operator=(const TriangleMesh&) = delete;

    // A part in pool memory; null when the pool is exhausted.
    static TriangleMesh* create();

    void Release() override;
    // Releases the followers on `next`, the keys and the slices; bit 0 also frees the object.
    void* destroy(uint32_t flags) override;
    void ClearKeys() override;
};
static_assert(sizeof(TriangleMesh) == objectOffset(sizeof(TriangleMeshFields)) && sizeof(TriangleMesh) == 0x1B0);

struct StaticSliceFields {
    uint32_t* triangleTriples; // triangleCount x 12 bytes
    TriangleQuad* triangleQuads;
    void* vectorTable; // vectorCount x 12 bytes
    void* pairTable;   // pairCount x 8 bytes
    uint32_t* triangleBits;
    uint32_t* triangleWords;
    uint32_t* cornerBits;
    int32_t vertexCount;
    int32_t triangleCount; // the body has pointCount first; both orders are fixed
    int32_t pointCount;
    int32_t pointExtraCount;
    int32_t vectorCount;
    int32_t pairCount;
};
static_assert(objectOffset(offsetof(StaticSliceFields, triangleTriples)) == 0x08);
static_assert(objectOffset(offsetof(StaticSliceFields, triangleQuads)) == 0x10);
static_assert(objectOffset(offsetof(StaticSliceFields, vectorTable)) == 0x18);
static_assert(objectOffset(offsetof(StaticSliceFields, pairTable)) == 0x20);
static_assert(objectOffset(offsetof(StaticSliceFields, triangleBits)) == 0x28);
static_assert(objectOffset(offsetof(StaticSliceFields, triangleWords)) == 0x30);
static_assert(objectOffset(offsetof(StaticSliceFields, cornerBits)) == 0x38);
static_assert(objectOffset(offsetof(StaticSliceFields, vertexCount)) == 0x40);
static_assert(objectOffset(offsetof(StaticSliceFields, triangleCount)) == 0x44);
static_assert(objectOffset(offsetof(StaticSliceFields, pointCount)) == 0x48);
static_assert(objectOffset(offsetof(StaticSliceFields, pointExtraCount)) == 0x4C);
static_assert(objectOffset(offsetof(StaticSliceFields, vectorCount)) == 0x50);
static_assert(objectOffset(offsetof(StaticSliceFields, pairCount)) == 0x54);

class StaticSliceT final : public bridgeStaticSlice, public StaticSliceFields {
  public:
    StaticSliceT() : StaticSliceFields{} {}
    ~StaticSliceT();
    StaticSliceT(const StaticSliceT&) = delete;
    StaticSliceT& operator=(const StaticSliceT&) = delete;

    static StaticSliceT* create();

    void* Allocate(size_t size) override;
    void Free(void* block) override;
    void Release() override;
    // Frees the seven arrays and nulls them; a second call finds nothing to free.
    int32_t Clear() override;
    void* destroy(uint32_t flags) override;
};
static_assert(sizeof(StaticSliceT) == objectOffset(sizeof(StaticSliceFields)) && sizeof(StaticSliceT) == 0x58);

struct TimeSliceFields {
    TimeSliceT* next;
    int32_t sliceParamA;
    int32_t sliceParamB;
    float* positions;      // vertexCount x 4 floats, the fourth 1.0
    PointElement* points;  // pointCount elements
    void* engineArray;     // never filled here; freed if the engine leaves one
};
static_assert(objectOffset(offsetof(TimeSliceFields, next)) == 0x08);
static_assert(objectOffset(offsetof(TimeSliceFields, sliceParamA)) == 0x10);
static_assert(objectOffset(offsetof(TimeSliceFields, sliceParamB)) == 0x14);
static_assert(objectOffset(offsetof(TimeSliceFields, positions)) == 0x18);
static_assert(objectOffset(offsetof(TimeSliceFields, points)) == 0x20);
static_assert(objectOffset(offsetof(TimeSliceFields, engineArray)) == 0x28);

class TimeSliceT final : public bridgeTimeSlice, public TimeSliceFields {
  public:
    TimeSliceT() : TimeSliceFields{} {}
    ~TimeSliceT();
    TimeSliceT(const TimeSliceT&) = delete;
    TimeSliceT& operator=(const TimeSliceT&) = delete;

    static TimeSliceT* create();

    void* Allocate(size_t size) override;
    void Free(void* block) override;
    void Release() override;
    // Frees the three arrays and nulls them.
    int32_t Clear() override;
    void* destroy(uint32_t flags) override;
};
static_assert(sizeof(TimeSliceT) == objectOffset(sizeof(TimeSliceFields)) && sizeof(TimeSliceT) == 0x30);

} // namespace TRDF_Load

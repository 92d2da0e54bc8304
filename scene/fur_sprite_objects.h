// Fur and sprite clouds: the kin of the triangle mesh with no static slice, whose time slices
// each hold one array of fixed records. Field offsets are part of the engine boundary.
#pragma once
#include "scene/geometry_objects.h"

namespace TRDF_Load {

// ---- Fur ---------------------------------------------------------------------------------------

struct FurMeshFields {
    FurMesh* next;
    TimeSliceF* timeSlices;
    int32_t elementCount; // elements in each time slice
    uint32_t reserved1C;
    TrackKey* keys;
    uint8_t block28[48]; // this and the other unnamed fields are the engine's, copied from the body
    uint32_t value58;
    uint32_t keyCount;
    uint32_t value60;
    uint32_t value64;
    uint32_t nameHash;
    uint32_t secondNameHash;
    float floats70[6];
    int32_t value88;
    int32_t value8C;
    uint32_t value90;
    int32_t value94;
    char16_t name[kNameChars];
    char16_t secondName[kNameChars];
    void* modelNode; // the load driver's model handle
    uint8_t reserved1A0[8];
};
static_assert(objectOffset(offsetof(FurMeshFields, next)) == 0x08);
static_assert(objectOffset(offsetof(FurMeshFields, timeSlices)) == 0x10);
static_assert(objectOffset(offsetof(FurMeshFields, elementCount)) == 0x18);
static_assert(objectOffset(offsetof(FurMeshFields, keys)) == 0x20);
static_assert(objectOffset(offsetof(FurMeshFields, block28)) == 0x28);
static_assert(objectOffset(offsetof(FurMeshFields, value58)) == 0x58);
static_assert(objectOffset(offsetof(FurMeshFields, keyCount)) == 0x5C);
static_assert(objectOffset(offsetof(FurMeshFields, value60)) == 0x60);
static_assert(objectOffset(offsetof(FurMeshFields, value64)) == 0x64);
static_assert(objectOffset(offsetof(FurMeshFields, nameHash)) == 0x68);
static_assert(objectOffset(offsetof(FurMeshFields, secondNameHash)) == 0x6C);
static_assert(objectOffset(offsetof(FurMeshFields, floats70)) == 0x70);
static_assert(objectOffset(offsetof(FurMeshFields, value88)) == 0x88);
static_assert(objectOffset(offsetof(FurMeshFields, value8C)) == 0x8C);
static_assert(objectOffset(offsetof(FurMeshFields, value90)) == 0x90);
static_assert(objectOffset(offsetof(FurMeshFields, value94)) == 0x94);
static_assert(objectOffset(offsetof(FurMeshFields, name)) == 0x98);
static_assert(objectOffset(offsetof(FurMeshFields, secondName)) == 0x118);
static_assert(objectOffset(offsetof(FurMeshFields, modelNode)) == 0x198);

class FurMesh final : public bridgeFurMesh, public FurMeshFields {
  public:
    FurMesh();
    ~FurMesh();
    FurMesh(const FurMesh&) = delete;
    FurMesh& operator=(const FurMesh&) = delete;

    static FurMesh* create();

    void Release() override;
    void* destroy(uint32_t flags) override;
    void ClearKeys() override;
};
static_assert(sizeof(FurMesh) == objectOffset(sizeof(FurMeshFields)) && sizeof(FurMesh) == 0x1A8);

struct TimeSliceFurFields {
    TimeSliceF* next;
    int32_t sliceParamA;
    int32_t sliceParamB;
    FurElement* elements; // elementCount of them
};
static_assert(objectOffset(offsetof(TimeSliceFurFields, next)) == 0x08);
static_assert(objectOffset(offsetof(TimeSliceFurFields, sliceParamA)) == 0x10);
static_assert(objectOffset(offsetof(TimeSliceFurFields, sliceParamB)) == 0x14);
static_assert(objectOffset(offsetof(TimeSliceFurFields, elements)) == 0x18);

class TimeSliceF final : public bridgeFurTimeSlice, public TimeSliceFurFields {
  public:
    TimeSliceF() : TimeSliceFurFields{} {}
    ~TimeSliceF();
    TimeSliceF(const TimeSliceF&) = delete;
    TimeSliceF& operator=(const TimeSliceF&) = delete;

    static TimeSliceF* create();

    void* Allocate(size_t size) override;
    void Free(void* block) override;
    void Release() override;
    int32_t Clear() override;
    void* destroy(uint32_t flags) override;
};
static_assert(sizeof(TimeSliceF) == objectOffset(sizeof(TimeSliceFurFields)) && sizeof(TimeSliceF) == 0x20);

// ---- Sprites -----------------------------------------------------------------------------------

struct SprMeshFields {
    SprMesh* next;
    TimeSliceS* timeSlices;
    void* modelNode; // the load driver's model handle
    TrackKey* keys;
    int32_t elementCount;
    uint32_t keyCount;
    uint32_t value30; // this and the other unnamed fields are the engine's, copied from the body
    uint32_t value34;
    uint32_t nameHash;
    uint32_t secondNameHash;
    float floats40[6];
    int32_t value58;
    int32_t value5C;
    uint32_t value60;
    int32_t value64;
    char16_t name[kNameChars];
    char16_t secondName[kNameChars];
    uint8_t reserved168[8];
};
static_assert(objectOffset(offsetof(SprMeshFields, next)) == 0x08);
static_assert(objectOffset(offsetof(SprMeshFields, timeSlices)) == 0x10);
static_assert(objectOffset(offsetof(SprMeshFields, modelNode)) == 0x18);
static_assert(objectOffset(offsetof(SprMeshFields, keys)) == 0x20);
static_assert(objectOffset(offsetof(SprMeshFields, elementCount)) == 0x28);
static_assert(objectOffset(offsetof(SprMeshFields, keyCount)) == 0x2C);
static_assert(objectOffset(offsetof(SprMeshFields, value30)) == 0x30);
static_assert(objectOffset(offsetof(SprMeshFields, value34)) == 0x34);
static_assert(objectOffset(offsetof(SprMeshFields, nameHash)) == 0x38);
static_assert(objectOffset(offsetof(SprMeshFields, secondNameHash)) == 0x3C);
static_assert(objectOffset(offsetof(SprMeshFields, floats40)) == 0x40);
static_assert(objectOffset(offsetof(SprMeshFields, value58)) == 0x58);
static_assert(objectOffset(offsetof(SprMeshFields, value5C)) == 0x5C);
static_assert(objectOffset(offsetof(SprMeshFields, value60)) == 0x60);
static_assert(objectOffset(offsetof(SprMeshFields, value64)) == 0x64);
static_assert(objectOffset(offsetof(SprMeshFields, name)) == 0x68);
static_assert(objectOffset(offsetof(SprMeshFields, secondName)) == 0xE8);

class SprMesh final : public bridgeSprMesh, public SprMeshFields {
  public:
    SprMesh();
    ~SprMesh();
    SprMesh(const SprMesh&) = delete;
    SprMesh& operator=(const SprMesh&) = delete;

    static SprMesh* create();

    void Release() override;
    void* destroy(uint32_t flags) override;
    void ClearKeys() override;
};
static_assert(sizeof(SprMesh) == objectOffset(sizeof(SprMeshFields)) && sizeof(SprMesh) == 0x170);

struct TimeSliceSpriteFields {
    TimeSliceS* next;
    int32_t sliceParamA;
    int32_t sliceParamB;
    SpriteElement* elements; // elementCount of them
    uint64_t elementsBytes;  // the block's size, as Allocate recorded it
};
static_assert(objectOffset(offsetof(TimeSliceSpriteFields, next)) == 0x08);
static_assert(objectOffset(offsetof(TimeSliceSpriteFields, sliceParamA)) == 0x10);
static_assert(objectOffset(offsetof(TimeSliceSpriteFields, sliceParamB)) == 0x14);
static_assert(objectOffset(offsetof(TimeSliceSpriteFields, elements)) == 0x18);
static_assert(objectOffset(offsetof(TimeSliceSpriteFields, elementsBytes)) == 0x20);

class TimeSliceS final : public bridgeSprTimeSlice, public TimeSliceSpriteFields {
  public:
    TimeSliceS() : TimeSliceSpriteFields{} {}
    ~TimeSliceS();
    TimeSliceS(const TimeSliceS&) = delete;
    TimeSliceS& operator=(const TimeSliceS&) = delete;

    static TimeSliceS* create();

    // Records `size` through `sizeOut` before it allocates, so the slice knows what it holds.
    void* Allocate(size_t size, uint64_t* sizeOut) override;
    void Free(void* block, uint64_t size) override;
    void Release() override;
    int32_t Clear() override;
    void* destroy(uint32_t flags) override;
};
static_assert(sizeof(TimeSliceS) == objectOffset(sizeof(TimeSliceSpriteFields)) && sizeof(TimeSliceS) == 0x28);

} // namespace TRDF_Load

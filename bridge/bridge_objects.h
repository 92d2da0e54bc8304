// Bases of the objects that carry cameras, lights, geometry and volume caches to the engine.
// The derived objects expose their data as plain fields at fixed offsets behind the table pointer.
#pragma once
#include <cstddef>
#include <cstdint>

// Slot order is part of the binary boundary: never reorder, insert or remove.
// `destroy` is the deleting destructor: bit 0 of `flags` also frees the object's memory.

class bridgeCamera {
  public:
    virtual void Release() = 0;                // 0
    virtual void* destroy(uint32_t flags) = 0; // 1
  protected:
    ~bridgeCamera() = default;
};

class bridgeLight {
  public:
    virtual void Release() = 0;                // 0
    virtual void* destroy(uint32_t flags) = 0; // 1
  protected:
    ~bridgeLight() = default;
};

class bridgeTriangleMesh {
  public:
    virtual void Release() = 0;                // 0
    virtual void* destroy(uint32_t flags) = 0; // 1
    virtual void ClearKeys() = 0;              // 2
  protected:
    ~bridgeTriangleMesh() = default;
};

class bridgeFurMesh {
  public:
    virtual void Release() = 0;                // 0
    virtual void* destroy(uint32_t flags) = 0; // 1
    virtual void ClearKeys() = 0;              // 2
  protected:
    ~bridgeFurMesh() = default;
};

class bridgeSprMesh {
  public:
    virtual void Release() = 0;                // 0
    virtual void* destroy(uint32_t flags) = 0; // 1
    virtual void ClearKeys() = 0;              // 2
  protected:
    ~bridgeSprMesh() = default;
};

// Arrays of the slices are allocated and freed through these slots, 64-byte aligned,
// so that an array can change hands between the client and the engine.
class bridgeStaticSlice {
  public:
    virtual void* Allocate(size_t size) = 0;   // 0
    virtual void Free(void* block) = 0;        // 1
    virtual void Release() = 0;                // 2
    virtual int32_t Clear() = 0;               // 3
    virtual void* destroy(uint32_t flags) = 0; // 4
  protected:
    ~bridgeStaticSlice() = default;
};

class bridgeTimeSlice {
  public:
    virtual void* Allocate(size_t size) = 0;   // 0
    virtual void Free(void* block) = 0;        // 1
    virtual void Release() = 0;                // 2
    virtual int32_t Clear() = 0;               // 3
    virtual void* destroy(uint32_t flags) = 0; // 4
  protected:
    ~bridgeTimeSlice() = default;
};

class bridgeFurTimeSlice {
  public:
    virtual void* Allocate(size_t size) = 0;   // 0
    virtual void Free(void* block) = 0;        // 1
    virtual void Release() = 0;                // 2
    virtual int32_t Clear() = 0;               // 3
    virtual void* destroy(uint32_t flags) = 0; // 4
  protected:
    ~bridgeFurTimeSlice() = default;
};

// The sprite slice tells the size of its element array on both ends of its life.
class bridgeSprTimeSlice {
  public:
    virtual void* Allocate(size_t size, uint64_t* sizeOut) = 0; // 0
    virtual void Free(void* block, uint64_t size) = 0;          // 1
    virtual void Release() = 0;                                 // 2
    virtual int32_t Clear() = 0;                                // 3
    virtual void* destroy(uint32_t flags) = 0;                  // 4
  protected:
    ~bridgeSprTimeSlice() = default;
};

// The simulation grid of a volumetric material.
class IPhxCache {
  public:
    virtual void* destroy(uint32_t flags) = 0;        // 0
    virtual void* GetChannel(int32_t channel) = 0;     // 1
    virtual bool HasChannel(int32_t channel) = 0;      // 2
    virtual void GetGridSize(uint32_t* size3) = 0;     // 3
    virtual void GetTransform(float* transform12) = 0; // 4
    virtual int32_t reserved5() = 0;                   // 5
    virtual int32_t reserved6() = 0;                   // 6
    virtual int32_t reserved7() = 0;                   // 7
    virtual void Release() = 0;                        // 8
  protected:
    ~IPhxCache() = default;
};

// How names and ids of textures, texture maps, materials and models are exchanged.
#pragma once
#include <cstdint>

// Slot order is part of the binary boundary: never reorder, insert or remove.
// The id operations return their id through a result pointer that they also return.
class ITaviNameInterface {
  public:
    virtual int32_t* GetTextureId(int32_t* result, const char16_t* name) = 0;  // 0
    virtual const char16_t* GetTextureName(int32_t id) = 0;                   // 1
    virtual int32_t* GetTexMapId(int32_t* result, const char16_t* name) = 0;   // 2
    virtual const char16_t* GetTexMapName(int32_t id) = 0;                    // 3
    virtual int32_t* GetMaterialId(int32_t* result, const char16_t* name) = 0; // 4
    virtual const char16_t* GetMaterialName(int32_t id) = 0;                  // 5
    virtual uint64_t GetModelId(const char16_t* name) = 0;                    // 6
    virtual const char16_t* GetModelName() = 0;                               // 7
    // Deleting destructor: bit 0 of `flags` also frees the memory.
    virtual void* destroy(uint32_t flags) = 0;                                // 8

  protected:
    ~ITaviNameInterface() = default;
};

// The simulation grid of a volumetric material, wrapped behind IPhxCache without a copy.
#pragma once
#include "bridge/bridge_objects.h"

#include <cstddef>
#include <cstdint>

namespace TRDF_Load {

class PhxData final : public IPhxCache {
  public:
    static constexpr int32_t kChannelCount = 26;
    // Body layout: grid size at 4, the 3x4 transform at 16, the channel offsets at 72, and the
    // channel data from 280 on, which the offsets count from.
    static constexpr uint64_t kGridSizeOffset = 4;
    static constexpr uint64_t kTransformOffset = 16;
    static constexpr uint64_t kChannelTableOffset = 72;
    static constexpr uint64_t kChannelDataOffset = 280;

    // True when the body holds the channel table and every channel starts inside the body.
    static bool bodyIsValid(const void* body, uint64_t size);
    // Takes the pool block `body` over; it must have passed bodyIsValid.
    explicit PhxData(void* body);
    ~PhxData();
    PhxData(const PhxData&) = delete;
    PhxData& operator=(const PhxData&) = delete;

    void* destroy(uint32_t flags) override;
    void* GetChannel(int32_t channel) override;
    bool HasChannel(int32_t channel) override;
    void GetGridSize(uint32_t* size3) override;
    void GetTransform(float* transform12) override;
    int32_t reserved5() override { return 0; }
    int32_t reserved6() override { return 0; }
    int32_t reserved7() override { return 0; }
    void Release() override;

    // Allocates the object from the pool over `body`; null when the pool is exhausted, and
    // the body then still belongs to the caller.
    static PhxData* create(void* body);

    uint8_t* body = nullptr;
    uint8_t* channels[kChannelCount] = {};
};

} // namespace TRDF_Load

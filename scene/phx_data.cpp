#include "scene/phx_data.h"

#include "memory/pool.h"

#include <cstring>
#include <new>

namespace TRDF_Load {

static_assert(sizeof(PhxData) == 0xE0);

namespace {

constexpr int64_t kAbsent = -1;

int64_t channelOffset(const void* body, int32_t channel) {
    int64_t value;
    std::memcpy(&value, static_cast<const uint8_t*>(body) + PhxData::kChannelTableOffset + 8 * channel,
                sizeof value);
    return value;
}

} // namespace

bool PhxData::bodyIsValid(const void* body, uint64_t size) {
    if (!body || size < kChannelDataOffset) return false;
    uint64_t dataBytes = size - kChannelDataOffset;
    for (int32_t i = 0; i < kChannelCount; ++i) {
        int64_t offset = channelOffset(body, i);
        if (offset == kAbsent) continue;
        if (offset < 0 || static_cast<uint64_t>(offset) > dataBytes) return false;
    }
    return true;
}

PhxData::PhxData(void* block) : body(static_cast<uint8_t*>(block)) {
    if (!body) return;
    for (int32_t i = 0; i < kChannelCount; ++i) {
        int64_t offset = channelOffset(body, i);
        channels[i] = offset == kAbsent ? nullptr : body + kChannelDataOffset + offset;
    }
}

PhxData::~PhxData() {
    poolFree(poolInstance(), body);
    body = nullptr;
}

PhxData* PhxData::create(void* block) {
    void* memory = poolAlloc(poolInstance(), sizeof(PhxData));
    return memory ? new (memory) PhxData(block) : nullptr;
}

void* PhxData::destroy(uint32_t flags) {
    this->~PhxData();
    if (flags & 1) poolFree(poolInstance(), this);
    return this;
}

// The engine asks by index; an index outside the table has no channel.
void* PhxData::GetChannel(int32_t channel) {
    return channel >= 0 && channel < kChannelCount ? channels[channel] : nullptr;
}

bool PhxData::HasChannel(int32_t channel) {
    return GetChannel(channel) != nullptr;
}

void PhxData::GetGridSize(uint32_t* size3) {
    if (!body) {
        std::memset(size3, 0, 3 * sizeof(uint32_t));
        return;
    }
    std::memcpy(size3, body + kGridSizeOffset, 3 * sizeof(uint32_t));
}

void PhxData::GetTransform(float* transform12) {
    if (!body) {
        std::memset(transform12, 0, 12 * sizeof(float));
        return;
    }
    std::memcpy(transform12, body + kTransformOffset, 12 * sizeof(float));
}

void PhxData::Release() {
    destroy(1);
}

} // namespace TRDF_Load

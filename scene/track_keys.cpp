#include "scene/track_keys.h"

#include "memory/pool.h"

#include <cstring>

namespace {

constexpr size_t kCountBlockBytes = 16;

uint64_t* countBlockOf(const TrackKey* track) {
    return reinterpret_cast<uint64_t*>(reinterpret_cast<uint8_t*>(const_cast<TrackKey*>(track)) -
                                       kCountBlockBytes);
}

size_t saturatingTrackBytes(uint64_t count) {
    constexpr uint64_t kMaxCount = (SIZE_MAX - kCountBlockBytes) / sizeof(TrackKey);
    return count > kMaxCount ? SIZE_MAX : static_cast<size_t>(count * sizeof(TrackKey) + kCountBlockBytes);
}

// Each key is cleared before its words are copied; the caller has checked that the source
// holds them.
void decodeTrackKeys(TrackKey* track, ByteSpan source, uint64_t offset, uint64_t count) {
    for (uint64_t i = 0; i < count; ++i) {
        TrackKey& key = track[i];
        std::memset(&key, 0, sizeof key);
        uint64_t keyStart = offset + i * kTrackKeyFileBytes;
        for (size_t word = 0; word < kTrackKeyFileBytes / 4; ++word) {
            key.words[kTrackKeyMemoryOffsets[word] / 4] = source.u32(keyStart + 4 * word);
        }
    }
}

} // namespace

void constructTrackKey(TrackKey& key) {
    std::memset(&key, 0, sizeof key);
    const uint32_t one = 0x3F800000; // 1.0f
    key.words[0x08 / 4] = 0x7FFFFFFF;
    key.words[0x24 / 4] = one;
    key.words[0x38 / 4] = one;
}

TrackKey* allocateTrack(uint64_t count) {
    void* block = poolAlloc(poolInstance(), saturatingTrackBytes(count));
    if (!block) return nullptr;
    std::memcpy(block, &count, sizeof count);
    TrackKey* track = reinterpret_cast<TrackKey*>(static_cast<uint8_t*>(block) + kCountBlockBytes);
    for (uint64_t i = 0; i < count; ++i)
        constructTrackKey(track[i]);
    return track;
}

void freeTrack(TrackKey* track) {
    if (track) poolFree(poolInstance(), countBlockOf(track));
}

uint64_t trackLength(const TrackKey* track) {
    return track ? *countBlockOf(track) : 0;
}

SceneStatus buildTrack(TrackKey*& track, uint32_t& trackCount, ByteSpan source, uint64_t offset,
                       uint32_t count) {
    if (count == 0) return SceneOk;
    if (!source.holds(offset, uint64_t(count) * kTrackKeyFileBytes)) return SceneInvalid;
    TrackKey* keys = allocateTrack(count);
    if (!keys) return SceneOutOfMemory;
    decodeTrackKeys(keys, source, offset, count);
    track = keys;
    trackCount = count;
    return SceneOk;
}

TrackKey* copyTrack(const TrackKey* source, uint64_t count) {
    if (!source || count == 0) return nullptr;
    TrackKey* copy = allocateTrack(count);
    if (copy) std::memcpy(copy, source, count * sizeof(TrackKey));
    return copy;
}

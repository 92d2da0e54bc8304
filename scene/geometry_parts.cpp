#include "scene/geometry_parts.h"

#include "common/hash.h"
#include "scene/scene_text.h"
#include "scene/track_keys.h"

#include <cstring>

namespace geometry_parts {

bool convertName(char16_t* dest, ByteSpan body, uint64_t offset) {
    ByteSpan field = body.tail(offset, kNameFieldBytes);
    return convertSceneString(dest, kNameChars, reinterpret_cast<const char*>(field.data), field.size);
}

uint32_t hashName(ByteSpan body, uint64_t offset) {
    ByteSpan field = body.tail(offset, kNameFieldBytes);
    const void* end = field.size ? std::memchr(field.data, 0, field.size) : nullptr;
    size_t length = end ? static_cast<size_t>(static_cast<const uint8_t*>(end) - field.data) : field.size;
    return murmurHash3x86_32(field.data, length, 0);
}

SceneStatus buildKeys(TrackKey*& keys, uint32_t& keyCount, ByteSpan body, uint64_t offset, uint32_t count) {
    if (count == 0) return SceneOk;
    if (!spans(body, 0, offset, uint64_t(count) * kTrackKeyFileBytes)) return SceneInvalid;
    TrackKey* track = allocateTrack(count);
    if (!track) return SceneOutOfMemory;
    decodeTrackKeys(track, body, offset, count);
    keys = track;
    keyCount = count;
    return SceneOk;
}

} // namespace geometry_parts

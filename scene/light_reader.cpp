// A light chunk and the path chunk that must follow it.
#include "scene/chunk_scan.h"
#include "scene/record_defaults.h"
#include "scene/record_images.h"
#include "scene/scene_readers.h"
#include "scene/scene_text.h"
#include "scene/track_keys.h"

namespace {

// Path body layout; bytes 0 to 7 are reserved.
constexpr uint64_t kTrackOffset = 8, kTrackCount = 16, kPath1C = 20, kPath20 = 24;
constexpr uint64_t kLightName = 28, kLightSecondName = 156;
constexpr size_t kLightTextBytes = 0x300;

bool convertName(char16_t* dest, ByteSpan body, uint64_t offset) {
    ByteSpan field = body.tail(offset, kNameFieldBytes);
    return convertSceneString(dest, kNameChars, reinterpret_cast<const char*>(field.data), field.size);
}

void fillLightPath(SceneFileReader& reader, TempLight& light, ByteSpan body) {
    light.releaseTrack();
    light.path1C = body.i32(kPath1C);
    light.path20 = body.u32(kPath20);
    if (!convertName(light.lightName, body, kLightName) ||
        !convertName(light.lightSecondName, body, kLightSecondName)) {
        reader.status = SceneInvalid;
    }
    uint64_t offset = body.u64(kTrackOffset);
    uint32_t count = body.u32(kTrackCount);
    if (reader.status != SceneOk || count == 0) return;
    if (!body.holds(offset, uint64_t(count) * kTrackKeyFileBytes)) {
        reader.status = SceneInvalid;
        return;
    }
    light.track = allocateTrack(count);
    if (!light.track) {
        reader.status = SceneOutOfMemory;
        return;
    }
    decodeTrackKeys(light.track, body, offset, count);
    light.trackCount = count;
}

} // namespace

SceneStatus readLight(SceneFileReader& reader, TempLight& light, uint64_t& offset) {
    SceneStatus status = findChunk(reader, ChunkLight, offset);
    if (status != SceneOk) return status;
    offset = reader.chunk.nextChunkOffset;
    uint32_t version = reader.chunk.chunkVersion;
    int32_t type = 0;
    {
        ChunkBody body;
        if (body.fetch(reader) != SceneOk) return reader.status;
        type = recordTypeOf(body.bytes());
        uint32_t image = lightImageLength(type);
        if (image == 0) return reader.status = SceneInvalid;
        initLightRecord(light.light);
        body.bytes().overlay(&light.light, image);
        // One text per type is converted; the second text of the types that have two stays
        // as the file has it.
        if (uint32_t text = lightTextOffset(type)) {
            fixRecordText(reinterpret_cast<uint8_t*>(&light.light) + text, kLightTextBytes);
        }
    }
    if (version != lightChunkVersion(type)) return reader.status = SceneBadVersion;

    if (readFollowingChunk(reader, offset) != SceneOk) return reader.status;
    offset = reader.chunk.nextChunkOffset;
    if (reader.chunk.chunkType != ChunkLightPath) return reader.status = SceneInvalid;
    ChunkBody path;
    if (path.fetch(reader) != SceneOk) return reader.status;
    if (reader.chunk.chunkVersion != kRecordChunkVersion) return reader.status = SceneBadVersion;
    fillLightPath(reader, light, path.bytes());
    return reader.status;
}

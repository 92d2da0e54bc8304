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

SceneStatus fillLightPath(TempLight& light, ByteSpan body) {
    light.releaseTrack();
    light.path1C = body.i32(kPath1C);
    light.path20 = body.u32(kPath20);
    if (!convertNameField(light.lightName, body, kLightName) ||
        !convertNameField(light.lightSecondName, body, kLightSecondName)) {
        return SceneInvalid;
    }
    return buildTrack(light.track, light.trackCount, body, body.u64(kTrackOffset), body.u32(kTrackCount));
}

} // namespace

SceneStatus readLight(SceneFileReader& reader, TempLight& light, uint64_t& offset) {
    RecordChunk record = openRecord(reader, ChunkLight, offset, VersionCheck::AfterRecord);
    if (record.status != SceneOk) return record.status;
    if (!copyImage(record.body.bytes(), lightImageLength, light.light, initLightRecord)) return SceneInvalid;
    const int32_t type = light.light.type;
    // One text per type is converted; the second text of the types that have two stays as the
    // file has it.
    if (uint32_t text = lightTextOffset(type))
        fixRecordText(reinterpret_cast<uint8_t*>(&light.light) + text, kLightTextBytes);
    record.body.reset();
    if (record.version != lightChunkVersion(type)) return SceneBadVersion;

    RecordChunk path = openFollowing(reader, ChunkLightPath, Following::Required, offset);
    if (path.status != SceneOk) return path.status;
    return fillLightPath(light, path.body.bytes());
}

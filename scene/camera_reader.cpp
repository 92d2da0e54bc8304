// A camera chunk and the path chunk that must follow it.
#include "scene/chunk_scan.h"
#include "scene/record_defaults.h"
#include "scene/record_images.h"
#include "scene/scene_readers.h"
#include "scene/scene_text.h"
#include "scene/track_keys.h"

namespace {

// Path body layout; the offsets are unaligned and read as they stand. Bytes 0 to 7 are reserved.
constexpr uint64_t kTrackAOffset = 8, kTrackACount = 16, kTrackBOffset = 20, kTrackBCount = 28;
constexpr uint64_t kTrackCOffset = 32, kTrackCCount = 40;
constexpr uint64_t kPath4C = 44, kPath50 = 48, kPath64 = 52, kRole = 56, kTarget = 60, kCameraFile = 72;

// Builds one track from keys inside the body. Keys that would lie outside it are a fault of
// the file; the count is only kept with a track that was built.
void buildTrack(SceneFileReader& reader, ByteSpan body, uint64_t offset, uint32_t count, TrackKey*& keys,
                uint32_t& keyCount) {
    if (reader.status != SceneOk || count == 0) return;
    if (!body.holds(offset, uint64_t(count) * kTrackKeyFileBytes)) {
        reader.status = SceneInvalid;
        return;
    }
    keys = allocateTrack(count);
    if (!keys) {
        reader.status = SceneOutOfMemory;
        return;
    }
    decodeTrackKeys(keys, body, offset, count);
    keyCount = count;
}

void fillCameraPath(SceneFileReader& reader, TempCamera& camera, ByteSpan body) {
    camera.releaseTracks();
    camera.path4C = body.u32(kPath4C);
    camera.path50 = body.u32(kPath50);
    camera.path64 = body.u32(kPath64);
    camera.cameraRole = body.i32(kRole);
    for (int i = 0; i < 3; ++i)
        camera.cameraTarget[i] = body.f32(kTarget + 4 * i);
    camera.cameraTarget[3] = 1.0f;
    ByteSpan file = body.tail(kCameraFile, kNameFieldBytes);
    if (!convertSceneString(camera.cameraFile, kNameChars, reinterpret_cast<const char*>(file.data),
                            file.size)) {
        reader.status = SceneInvalid;
    }
    buildTrack(reader, body, body.u64(kTrackAOffset), body.u32(kTrackACount), camera.trackA,
               camera.trackACount);
    buildTrack(reader, body, body.u64(kTrackBOffset), body.u32(kTrackBCount), camera.trackB,
               camera.trackBCount);
    buildTrack(reader, body, body.u64(kTrackCOffset), body.u32(kTrackCCount), camera.trackC,
               camera.trackCCount);
}

} // namespace

SceneStatus readCamera(SceneFileReader& reader, TempCamera& camera, uint64_t& offset) {
    SceneStatus status = findChunk(reader, ChunkCamera, offset);
    if (status != SceneOk) return status;
    offset = reader.chunk.nextChunkOffset;
    uint32_t version = reader.chunk.chunkVersion;
    {
        ChunkBody body;
        if (body.fetch(reader) != SceneOk) return reader.status;
        uint32_t image = cameraImageLength(recordTypeOf(body.bytes()));
        if (image == 0) return reader.status = SceneInvalid;
        initCameraRecord(camera.camera);
        body.bytes().overlay(&camera.camera, image);
    }
    if (version != kRecordChunkVersion) return reader.status = SceneBadVersion;

    // The path is the very next link, never found by scanning.
    if (readFollowingChunk(reader, offset) != SceneOk) return reader.status;
    offset = reader.chunk.nextChunkOffset;
    if (reader.chunk.chunkType != ChunkCameraPath) return reader.status = SceneInvalid;
    ChunkBody path;
    if (path.fetch(reader) != SceneOk) return reader.status;
    if (reader.chunk.chunkVersion != kRecordChunkVersion) return reader.status = SceneBadVersion;
    fillCameraPath(reader, camera, path.bytes());
    return reader.status;
}

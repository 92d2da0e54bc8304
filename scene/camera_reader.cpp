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

SceneStatus fillCameraPath(TempCamera& camera, ByteSpan body) {
    camera.releaseTracks();
    camera.path4C = body.u32(kPath4C);
    camera.path50 = body.u32(kPath50);
    camera.path64 = body.u32(kPath64);
    camera.cameraRole = body.i32(kRole);
    for (int i = 0; i < 3; ++i)
        camera.cameraTarget[i] = body.f32(kTarget + 4 * i);
    camera.cameraTarget[3] = 1.0f;
    if (!convertNameField(camera.cameraFile, body, kCameraFile)) return SceneInvalid;
    // Keys that would lie outside the body are a fault of the file; the tracks are built in
    // order, and the first that fails ends the path.
    SceneStatus status =
        buildTrack(camera.trackA, camera.trackACount, body, body.u64(kTrackAOffset), body.u32(kTrackACount));
    if (status == SceneOk)
        status = buildTrack(camera.trackB, camera.trackBCount, body, body.u64(kTrackBOffset),
                            body.u32(kTrackBCount));
    if (status == SceneOk)
        status = buildTrack(camera.trackC, camera.trackCCount, body, body.u64(kTrackCOffset),
                            body.u32(kTrackCCount));
    return status;
}

} // namespace

SceneStatus readCamera(SceneFileReader& reader, TempCamera& camera, uint64_t& offset) {
    RecordChunk record = openRecord(reader, ChunkCamera, offset, VersionCheck::AfterRecord);
    if (record.status != SceneOk) return record.status;
    if (!copyImage(record.body.bytes(), cameraImageLength, camera.camera, initCameraRecord))
        return SceneInvalid;
    record.body.reset();
    if (record.version != kRecordChunkVersion) return SceneBadVersion;

    // The path is the very next link, never found by scanning.
    RecordChunk path = openFollowing(reader, ChunkCameraPath, Following::Required, offset);
    if (path.status != SceneOk) return path.status;
    return fillCameraPath(camera, path.body.bytes());
}

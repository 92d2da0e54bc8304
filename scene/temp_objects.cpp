// Life of the camera and light objects, and the copy of a camera.
#include "scene/temp_objects.h"

#include "memory/pool.h"
#include "scene/record_defaults.h"
#include "scene/scene_readers.h"
#include "scene/track_keys.h"

#include <cstring>
#include <new>

// ---- Camera ------------------------------------------------------------------------------------

TempCamera::TempCamera() : TempCameraFields{} {
    cameraRole = -1;
    initCameraRecord(camera);
}

TempCamera::~TempCamera() {
    releaseTracks();
}

void TempCamera::releaseTracks() {
    freeTrack(trackA);
    freeTrack(trackB);
    freeTrack(trackC);
    trackA = trackB = trackC = nullptr;
    trackACount = trackBCount = trackCCount = 0;
}

void TempCamera::Release() {
    destroy(1);
}

void* TempCamera::destroy(uint32_t flags) {
    this->~TempCamera();
    if (flags & 1) poolFree(poolInstance(), this);
    return this;
}

TempCamera* TempCamera::create() {
    void* memory = poolAlloc(poolInstance(), sizeof(TempCamera));
    return memory ? new (memory) TempCamera() : nullptr;
}

SceneStatus assignCamera(TempCamera& target, const TempCamera& source) {
    if (&target == &source) return SceneOk;
    target.releaseTracks();
    // The plain fields start behind the object header, inside the fields struct.
    constexpr size_t kStart = kCameraPlainOffset - kTablePointerBytes;
    std::memcpy(reinterpret_cast<uint8_t*>(static_cast<TempCameraFields*>(&target)) + kStart,
                reinterpret_cast<const uint8_t*>(static_cast<const TempCameraFields*>(&source)) + kStart,
                kCameraPlainBytes);

    SceneStatus status = SceneOk;
    struct Track {
        TrackKey*& keys;
        uint32_t& count;
    };
    Track tracks[] = {{target.trackA, target.trackACount},
                      {target.trackB, target.trackBCount},
                      {target.trackC, target.trackCCount}};
    for (Track& track : tracks) {
        // Still the source's array: the copy above took its address along.
        const TrackKey* from = track.keys;
        uint64_t count = track.count < trackLength(from) ? track.count : trackLength(from);
        track.keys = copyTrack(from, count);
        if (!track.keys) {
            if (count != 0) status = SceneOutOfMemory;
            track.count = 0;
        }
    }
    return status;
}

// ---- Light -------------------------------------------------------------------------------------

TempLight::TempLight() : TempLightFields{} {
    path1C = -1;
    initLightRecord(light);
}

TempLight::~TempLight() {
    releaseTrack();
}

void TempLight::releaseTrack() {
    freeTrack(track);
    track = nullptr;
    trackCount = 0;
}

void TempLight::Release() {
    destroy(1);
}

void* TempLight::destroy(uint32_t flags) {
    this->~TempLight();
    if (flags & 1) poolFree(poolInstance(), this);
    return this;
}

TempLight* TempLight::create() {
    void* memory = poolAlloc(poolInstance(), sizeof(TempLight));
    return memory ? new (memory) TempLight() : nullptr;
}

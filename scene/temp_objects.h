// The camera and light objects handed to the engine: a bridge base, then plain fields at fixed
// offsets behind the table pointer, then the record read from the scene file.
//
// The fields live in a plain struct that the object inherits after its bridge base, so the
// layout can be pinned with offsetof; the offsets the engine sees are those plus the table
// pointer in front.
#pragma once
#include "bridge/bridge_objects.h"
#include "scene/records.h"

#include <cstddef>
#include <cstdint>

constexpr size_t kTablePointerBytes = sizeof(void*);
constexpr size_t objectOffset(size_t fieldOffset) {
    return kTablePointerBytes + fieldOffset;
}

// ---- Camera ------------------------------------------------------------------------------------

struct TempCameraFields {
    uint8_t objectHeader[8]; // the object's own, not copied with the camera
    uint32_t reserved10;
    uint32_t value14; // not interpreted by the client
    uint8_t reserved18[8];
    float cameraTarget[4]; // three floats of the path body and 1.0
    TrackKey* trackA;
    uint32_t trackACount;
    uint32_t reserved3C;
    TrackKey* trackB;
    uint32_t trackBCount;
    uint32_t path4C;
    uint32_t path50;
    uint32_t reserved54;
    TrackKey* trackC;
    uint32_t trackCCount;
    uint32_t path64;
    int32_t cameraRole; // 0 marks the render camera
    char16_t cameraFile[kNameChars];
    CameraRecord camera;
};
static_assert(objectOffset(offsetof(TempCameraFields, value14)) == 0x14);
static_assert(objectOffset(offsetof(TempCameraFields, cameraTarget)) == 0x20);
static_assert(objectOffset(offsetof(TempCameraFields, trackA)) == 0x30);
static_assert(objectOffset(offsetof(TempCameraFields, trackACount)) == 0x38);
static_assert(objectOffset(offsetof(TempCameraFields, trackB)) == 0x40);
static_assert(objectOffset(offsetof(TempCameraFields, trackBCount)) == 0x48);
static_assert(objectOffset(offsetof(TempCameraFields, path4C)) == 0x4C);
static_assert(objectOffset(offsetof(TempCameraFields, path50)) == 0x50);
static_assert(objectOffset(offsetof(TempCameraFields, trackC)) == 0x58);
static_assert(objectOffset(offsetof(TempCameraFields, trackCCount)) == 0x60);
static_assert(objectOffset(offsetof(TempCameraFields, path64)) == 0x64);
static_assert(objectOffset(offsetof(TempCameraFields, cameraRole)) == 0x68);
static_assert(objectOffset(offsetof(TempCameraFields, cameraFile)) == 0x6C);
static_assert(objectOffset(offsetof(TempCameraFields, camera)) == 0xEC);

// The plain fields that a copy of a camera takes over: everything behind the object's header,
// the camera record included.
constexpr size_t kCameraPlainOffset = 0x10;
constexpr size_t kCameraPlainBytes = 1380;
static_assert(objectOffset(offsetof(TempCameraFields, reserved10)) == kCameraPlainOffset);
static_assert(kCameraPlainOffset + kCameraPlainBytes == 0xEC + sizeof(CameraRecord));

class TempCamera final : public bridgeCamera, public TempCameraFields {
  public:
    // No tracks, role -1, the camera record at its defaults.
    TempCamera();
    ~TempCamera();
    TempCamera(const TempCamera&) = delete;
    TempCamera& operator=(const TempCamera&) = delete;

    // Only for objects made by create().
    void Release() override;
    void* destroy(uint32_t flags) override;

    // A camera in pool memory; null when the pool is exhausted.
    static TempCamera* create();
    void releaseTracks();
};
static_assert(sizeof(TempCamera) == objectOffset(sizeof(TempCameraFields)) && sizeof(TempCamera) == 0x578);

// ---- Light -------------------------------------------------------------------------------------

struct TempLightFields {
    uint8_t objectHeader[8];
    TrackKey* track;
    uint32_t trackCount;
    int32_t path1C;
    uint32_t path20;
    char16_t lightName[kNameChars];
    char16_t lightSecondName[kNameChars];
    uint8_t reserved124[12];
    LightRecord light;
};
static_assert(objectOffset(offsetof(TempLightFields, track)) == 0x10);
static_assert(objectOffset(offsetof(TempLightFields, trackCount)) == 0x18);
static_assert(objectOffset(offsetof(TempLightFields, path1C)) == 0x1C);
static_assert(objectOffset(offsetof(TempLightFields, path20)) == 0x20);
static_assert(objectOffset(offsetof(TempLightFields, lightName)) == 0x24);
static_assert(objectOffset(offsetof(TempLightFields, lightSecondName)) == 0xA4);
static_assert(objectOffset(offsetof(TempLightFields, light)) == 0x130);

class TempLight final : public bridgeLight, public TempLightFields {
  public:
    // No track, the word at 0x1C -1, the light record at its defaults.
    TempLight();
    ~TempLight();
    TempLight(const TempLight&) = delete;
    TempLight& operator=(const TempLight&) = delete;

    // Only for objects made by create().
    void Release() override;
    void* destroy(uint32_t flags) override;

    static TempLight* create();
    void releaseTrack();
};
static_assert(sizeof(TempLight) == objectOffset(sizeof(TempLightFields)) && sizeof(TempLight) == 0x1030);

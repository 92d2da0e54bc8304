// Cameras and lights with their paths, placed as the preview engine places them.
#include "client/sweep.h"
#include "documents/camera_document.h"
#include "documents/xml_value_codec.h"
#include "scene/scene_readers.h"
#include "tools/inspector/survey.h"

#include <cstring>

namespace inspector {

namespace {

// x, y, z of a key as it lies in memory.
constexpr size_t kKeyPositionWord = 4;

Vec3 keyPosition(const TrackKey& key) {
    Vec3 position;
    std::memcpy(position.data(), &key.words[kKeyPositionWord], sizeof position);
    return position;
}

// Where a track starts; `fallback` stands for a track without keys.
Vec3 trackStart(const TrackKey* track, uint32_t count, const Vec3& fallback) {
    return track && count > 0 ? keyPosition(track[0]) : fallback;
}

// The value a spline starts with: that of its first segment switched on, or `fallback` when
// every segment is off.
float splineStart(const SplineSegment* segments, size_t count, float fallback) {
    for (size_t i = 0; i < count; ++i)
        if (segments[i].ts <= segments[i].te) return segments[i].vs;
    return fallback;
}

// What each light type is to the engine; an empty kind is a type it gives no meaning.
const char* lightKind(int32_t type) {
    switch (type) {
    case 1: return "point";
    case 2: return "spot";
    case 3: return "rectangle";
    case 4: return "sky";
    case 5: return "directional";
    case 6: return "disc";
    case 8: return "environment";
    case 9: return "sun";
    default: return "";
    }
}

void addTexMapReference(std::vector<Reference>& references, const char* key, int32_t id) {
    if (id != -1) references.push_back(unresolved(key, "texmap", id));
}

} // namespace

SceneStatus surveyCameras(Survey& survey) {
    return sweep([&](uint64_t& offset, SceneStatus& result) {
        TempCamera camera;
        result = readCamera(survey.reader, camera, offset);
        if (result != SceneOk) return false;
        CameraInfo info;
        info.role = camera.cameraRole;
        info.type = camera.camera.type;
        if (info.type >= 0 && static_cast<size_t>(info.type) < XmlWordCount(kCameraTypeWords))
            info.typeWord = kCameraTypeWords[info.type];
        info.position = trackStart(camera.trackA, camera.trackACount, Vec3{0, 0, 0});
        info.positionKeys = camera.trackACount;
        const Vec3 target{camera.cameraTarget[0], camera.cameraTarget[1], camera.cameraTarget[2]};
        info.target = trackStart(camera.trackB, camera.trackBCount, target);
        info.targetKeys = camera.trackBCount;
        addTexMapReference(info.references, "DistortionMap", camera.camera.DistortionMap);
        addTexMapReference(info.references, "ApertureMap", camera.camera.ApertureMap);
        survey.inventory.cameras.push_back(info);
        return true;
    });
}

SceneStatus surveyLights(Survey& survey) {
    return sweep([&](uint64_t& offset, SceneStatus& result) {
        TempLight light;
        result = readLight(survey.reader, light, offset);
        if (result != SceneOk) return false;
        const LightRecord& record = light.light;
        LightInfo info;
        info.type = record.type;
        info.kind = lightKind(record.type);
        info.name = textOf(light.lightName, kNameChars);
        info.enabled = record.value4 != 0;
        info.position = trackStart(light.track, light.trackCount, Vec3{0, 0, 0});
        info.positionKeys = light.trackCount;
        info.intensity = splineStart(record.spline8, std::size(record.spline8), 1);
        info.multiplier = splineStart(record.spline904, std::size(record.spline904), 1);
        addTexMapReference(info.references, "TexMap", record.texMap);
        if (record.type == 4) {
            int32_t second;
            std::memcpy(&second, reinterpret_cast<const uint8_t*>(&record) + kLightSecondTexMapOffset,
                        sizeof second);
            addTexMapReference(info.references, "SecondTexMap", second);
        }
        survey.inventory.lights.push_back(info);
        return true;
    });
}

} // namespace inspector

#include "documents/camera_document.h"

#include "documents/field_table.h"
#include "scene/record_images.h"
#include "scene/temp_objects.h"

#include <cstddef>

const char* const kCameraTypeWords[] = {"",         "PERSPECTIVE", "FISHEYE", "ORTHO",
                                        "CYLINDER", "SPHERICAL",   nullptr};

namespace {

// ---- Word tables -------------------------------------------------------------------------------

constexpr const char* const kStereoWords[] = {"", "PARALLEL", "EYE_ROTATE", "AXIS_SHIFT", nullptr};
constexpr const char* const kFishEyeMappingWords[] = {"EQUIDISTANT", "STEREOGRAPHIC", "ORTHOGRAPHIC",
                                                      "EQUISOLID",   "THOBY",         nullptr};

// ---- The shared part ---------------------------------------------------------------------------

// Every projection's image begins with this many bytes of shared fields.
constexpr uint32_t kCameraBaseBytes = 764;

// Keys below Common, in reading order. StereoBase and StereoFocus fill the same field, so
// StereoFocus wins whenever it is there.
constexpr FieldDescriptor kCommonFields[] = {
    floatField("SensorSize", 4),
    floatField("Aspect", 8),
    splineField("FocusDistance", 12, 4),
    floatField("NearPlane", 140),
    floatField("FarPlane", 144),
    floatField("Distortion", 580),
    texMapField("DistortionMap", 584),
    colorField("BackgroundColor", 604),
    floatField("WhiteBalanceK", 588),
    colorField("WhiteBalanceRGB", 592),
    floatField("Exposure", 616),
    floatField("EV100", 620),
    sectionField("Shutter"),
    floatField("Shutter/TimeS", 148),
    floatField("Shutter/TimeE", 152),
    boolField("Shutter/UseCustomShutter", 761),
    splineField("Shutter/Shape", 156, 8),
    boolField("Shutter/Normalize", 760),
    floatField("Shutter/ShutterTailS", 412),
    floatField("Shutter/ShutterTailE", 416),
    sectionField("Aperture"),
    texMapField("Aperture/Map", 420),
    intField("Aperture/NumBlades", 424),
    splineField("Aperture/Fnumber", 428, 4),
    floatField("Aperture/BladeCurvature", 556),
    floatField("Aperture/Rotation", 560),
    floatField("Aperture/AspectRatio", 564),
    floatField("Aperture/CenterBias", 568),
    floatField("Aperture/CatEyeDiameter", 572),
    floatField("Aperture/CatEyeDistance", 576),
    sectionField("Stereo"),
    enumField("Stereo/StereoType", 624, kStereoWords),
    floatField("Stereo/StereoBase", 628),
    floatField("Stereo/StereoFocus", 628),
};
static_assert(fieldsFit(kCommonFields, kCameraBaseBytes));

// ---- The projections ---------------------------------------------------------------------------

constexpr FieldDescriptor kPerspectiveFields[] = {
    floatField("LensShiftX", 1148),     floatField("LensShiftY", 1152), floatField("FocalCurvature", 1156),
    splineField("FocalLength", 764, 4), splineField("Zoom", 1020, 4),   splineField("FovX", 892, 4),
};

constexpr FieldDescriptor kFishEyeFields[] = {
    floatField("FocalCurvature", 1020),
    enumField("MappingType", 1024, kFishEyeMappingWords),
    floatField("K1", 1028),
    floatField("K2", 1032),
    splineField("FocalLength", 764, 4),
    splineField("Zoom", 892, 4),
};

constexpr FieldDescriptor kOrthoFields[] = {
    floatField("Width", 764),
    boolField("Infinity", 1024),
    splineField("FocalLength", 768, 4),
    splineField("Zoom", 896, 4),
};

constexpr FieldDescriptor kCylinderFields[] = {
    floatField("FovX", 764),
    floatField("FovY", 768),
    floatField("Height", 772),
    floatField("LensShiftY", 776),
    boolField("ProjectFromCenterPoint", 1036),
    splineField("FocalLength", 780, 4),
    splineField("Zoom", 908, 4),
};

constexpr FieldDescriptor kSphericalFields[] = {
    floatField("FovX", 1020),           floatField("FovY", 1024),    boolField("Hemisphere", 1028),
    splineField("FocalLength", 764, 4), splineField("Zoom", 892, 4),
};

// A projection: its type number, the section that holds its keys (not its enum word: the type
// word is "FISHEYE", the section FishEye), the length of its image and its fields.
struct CameraKind {
    int32_t type;
    const char* section;
    uint32_t imageLength;
    const FieldDescriptor* fields;
    size_t fieldCount;
};

template <size_t N>
constexpr CameraKind cameraKind(int32_t type, const char* section, uint32_t imageLength,
                                const FieldDescriptor (&fields)[N]) {
    return {type, section, imageLength, fields, N};
}

constexpr CameraKind kPerspective = cameraKind(1, "Perspective", 1160, kPerspectiveFields);
constexpr CameraKind kFishEye = cameraKind(2, "FishEye", 1036, kFishEyeFields);
constexpr CameraKind kOrtho = cameraKind(3, "Ortho", 1028, kOrthoFields);
constexpr CameraKind kCylinder = cameraKind(4, "Cylinder", 1040, kCylinderFields);
constexpr CameraKind kSpherical = cameraKind(5, "Spherical", 1032, kSphericalFields);

// Each projection's fields lie behind the shared part and within its own image, and the image
// lengths are the ones the scene file reader assigns.
template <size_t N> constexpr bool kindFits(const CameraKind& kind, const FieldDescriptor (&fields)[N]) {
    if (kind.imageLength != record_images::kCameraImage[kind.type]) return false;
    if (kind.imageLength > sizeof(CameraRecord)) return false;
    for (size_t i = 0; i < N; ++i) {
        if (fields[i].offset < kCameraBaseBytes) return false;
    }
    return fieldsFit(fields, kind.imageLength);
}
static_assert(kindFits(kPerspective, kPerspectiveFields));
static_assert(kindFits(kFishEye, kFishEyeFields));
static_assert(kindFits(kOrtho, kOrthoFields));
static_assert(kindFits(kCylinder, kCylinderFields));
static_assert(kindFits(kSpherical, kSphericalFields));

bool readCameraKind(const CameraKind& kind, CameraRecord* camera, const char16_t* path,
                    ITaviNameInterface* names) {
    if (!camera) return false;
    pugi::xml_document document;
    pugi::xml_node root;
    if (!XmlOpenDocument(document, path, kCameraRootWord, &root)) return false;
    ReadCameraCommon(root, camera, names);
    uint8_t* bytes = reinterpret_cast<uint8_t*>(camera);
    readFields(kind.fields, kind.fieldCount, root.child(kind.section), bytes, kind.imageLength, names);
    return true;
}

} // namespace

int32_t LookUpCameraType(const char* word) {
    const int32_t index = XmlFindWord(kCameraTypeWords, word ? word : "");
    return index < 0 ? kCameraTypeUnknown : index;
}

void ReadCameraCommon(pugi::xml_node root, CameraRecord* camera, ITaviNameInterface* names) {
    if (!camera) return;
    const int32_t type = LookUpCameraType(root.attribute("type").value());
    if (type < kCameraTypeUnknown) camera->type = type;
    uint8_t* bytes = reinterpret_cast<uint8_t*>(camera);
    readFields(kCommonFields, sizeof kCommonFields / sizeof kCommonFields[0], root.child("Common"), bytes,
               kCameraBaseBytes, names);
}

bool ReadCameraPerspective(CameraRecord* camera, const char16_t* path, ITaviNameInterface* names) {
    return readCameraKind(kPerspective, camera, path, names);
}

bool ReadCameraFishEye(CameraRecord* camera, const char16_t* path, ITaviNameInterface* names) {
    return readCameraKind(kFishEye, camera, path, names);
}

bool ReadCameraOrtho(CameraRecord* camera, const char16_t* path, ITaviNameInterface* names) {
    return readCameraKind(kOrtho, camera, path, names);
}

bool ReadCameraCylinder(CameraRecord* camera, const char16_t* path, ITaviNameInterface* names) {
    return readCameraKind(kCylinder, camera, path, names);
}

bool ReadCameraSpherical(CameraRecord* camera, const char16_t* path, ITaviNameInterface* names) {
    return readCameraKind(kSpherical, camera, path, names);
}

bool ReadCameraDocument(CameraRecord* camera, const char16_t* path, ITaviNameInterface* names) {
    if (!camera) return false;
    switch (camera->type) {
    case 1:
        return ReadCameraPerspective(camera, path, names);
    case 2:
        return ReadCameraFishEye(camera, path, names);
    case 3:
        return ReadCameraOrtho(camera, path, names);
    case 4:
        return ReadCameraCylinder(camera, path, names);
    case 5:
        return ReadCameraSpherical(camera, path, names);
    default:
        return false;
    }
}

bool ApplyCameraDocument(TempCamera* camera, const char16_t* path, ITaviNameInterface* names) {
    return camera && ReadCameraDocument(&camera->camera, path, names);
}

TypeDescriptor CameraCommonTable() {
    return describeType(0, nullptr, kCameraBaseBytes, kCommonFields);
}

TypeDescriptor CameraProjectionTable(int32_t type) {
    for (const CameraKind* kind : {&kPerspective, &kFishEye, &kOrtho, &kCylinder, &kSpherical})
        if (kind->type == type) return {type, kind->section, kind->imageLength, kind->fields, kind->fieldCount};
    return {type, nullptr, 0, nullptr, 0};
}

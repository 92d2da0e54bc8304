#include "engines/preview/render/camera.h"

#include "documents/camera_document.h"
#include "engines/preview/record_view.h"
#include "engines/preview/render/tracks.h"
#include "engines/preview/turns.h"
#include "scene/temp_objects.h"

#include <cmath>

namespace preview {

namespace {

constexpr float kDegrees = kPi / 180.0f;

// A spline of the record that is switched on at `seconds`, else `fallback`.
float splineValue(const RecordView& view, const char* key, double seconds, float fallback) {
    uint32_t count = 0;
    const SplineSegment* segments = view.spline(key, &count);
    return segments ? evaluateSpline(segments, count, static_cast<float>(seconds), fallback) : fallback;
}

float positiveOr(float value, float fallback) {
    return std::isfinite(value) && value > 0 ? value : fallback;
}

} // namespace

Camera::Camera() {}

Camera::Camera(const TempCamera& object, double seconds, int32_t imageWidth, int32_t imageHeight,
               WarningLog& warnings)
    : width_(static_cast<float>(imageWidth)), height_(static_cast<float>(imageHeight)) {
    const CameraRecord& record = object.camera;
    const TypeDescriptor commonTable = CameraCommonTable();
    const TypeDescriptor projectionTable = CameraProjectionTable(record.type);
    const RecordView common(&record, sizeof record, &commonTable);
    const RecordView projection(&record, sizeof record, projectionTable.fields ? &projectionTable : nullptr);

    // Placement from the three tracks.
    int dropped = 0;
    const Track eyeTrack(object.trackA, object.trackACount, &dropped);
    const Track targetTrack(object.trackB, object.trackBCount, &dropped);
    const Track upTrack(object.trackC, object.trackCCount, &dropped);
    warnings.note("camera keys with non-finite values, dropped", dropped);
    const Vec3 storedTarget{object.cameraTarget[0], object.cameraTarget[1], object.cameraTarget[2]};
    eye_ = eyeTrack.at(seconds, TrackSample{}).value;
    Vec3 target = targetTrack.at(seconds, TrackSample{isFinite(storedTarget) ? storedTarget : Vec3(0, 0, -1)}).value;
    Vec3 up = upTrack.at(seconds, TrackSample{Vec3(0, 1, 0)}).value;
    if (length(target - eye_) <= 0) {
        warnings.note("a camera whose target is its position, looking down -Z");
        target = eye_ + Vec3(0, 0, -1);
    }
    forward_ = normalize(target - eye_);
    if (length(cross(forward_, up)) < 1e-6f) up = std::abs(forward_.z) < 0.9f ? Vec3(0, 0, 1) : Vec3(1, 0, 0);
    right_ = normalize(cross(forward_, up));
    up_ = cross(right_, forward_);

    const float recordAspect = common.real("Aspect", 0);
    aspect_ = positiveOr(recordAspect, width_ / std::max(height_, 1.0f));

    type_ = record.type;
    const float sensor = positiveOr(common.real("SensorSize", 36), 36);
    const float focal = positiveOr(splineValue(projection, "FocalLength", seconds, 50), 50) *
                        positiveOr(splineValue(projection, "Zoom", seconds, 1), 1);
    switch (type_) {
    case 1: {
        const float fovX = splineValue(projection, "FovX", seconds, 0);
        tanHalfX_ = fovX > 0 && fovX < 180 ? std::tan(0.5f * fovX * kDegrees) : 0.5f * sensor / focal;
        shiftX_ = projection.real("LensShiftX", 0);
        shiftY_ = projection.real("LensShiftY", 0);
        const float fnumber = splineValue(common, "Aperture/Fnumber", seconds, 0);
        if (std::isfinite(fnumber) && fnumber > 0) {
            // The aperture's diameter is the focal length over the f-number; lengths in metres.
            lensRadius_ = 0.5f * (focal * 1e-3f) / fnumber;
            focusDistance_ = positiveOr(splineValue(common, "FocusDistance", seconds, 0), length(target - eye_));
        }
        break;
    }
    case 2:
        fishEyeMapping_ = projection.integer("MappingType", 0);
        fishEyeFocal_ = focal / (0.5f * sensor);
        break;
    case 3:
        orthoWidth_ = positiveOr(projection.real("Width", 1), 1);
        break;
    case 4:
        angleX_ = positiveOr(projection.real("FovX", 360), 360) * kDegrees;
        angleY_ = std::min(positiveOr(projection.real("FovY", 90), 90), 179.0f) * kDegrees;
        shiftY_ = projection.real("LensShiftY", 0);
        break;
    case 5:
        angleX_ = std::min(positiveOr(projection.real("FovX", 360), 360), 360.0f) * kDegrees;
        angleY_ = std::min(positiveOr(projection.real("FovY", 180), 180), 180.0f) * kDegrees;
        break;
    default:
        warnings.note("cameras of an unknown projection, rendered as perspective");
        type_ = 1;
        tanHalfX_ = 0.5f * sensor / focal;
        break;
    }

    const float stops = common.real("Exposure", 0);
    const float ev100 = common.real("EV100", 0);
    exposure_ = std::isfinite(stops) ? std::exp2(stops) : 1;
    if (std::isfinite(ev100) && ev100 != 0) exposure_ /= 1.2f * std::exp2(ev100);
}

bool Camera::generate(float x, float y, float lensU, float lensV, Ray* ray) const {
    // Normalised frame coordinates: -1..1 across the width, and the height at the frame's aspect.
    const float sx = 2 * x / width_ - 1;
    const float sy = 1 - 2 * y / height_;
    switch (type_) {
    case 3: {
        const float halfWidth = 0.5f * orthoWidth_;
        ray->origin = eye_ + right_ * (sx * halfWidth) + up_ * (sy * halfWidth / aspect_);
        ray->direction = forward_;
        return true;
    }
    case 2: {
        // Radius on the frame, in half widths; the angle from the axis by the mapping.
        const float fx = sx, fy = sy / aspect_;
        const float r = std::sqrt(fx * fx + fy * fy) / fishEyeFocal_;
        float theta;
        switch (fishEyeMapping_) {
        case 1: theta = 2 * std::atan(0.5f * r); break;
        case 2: if (r > 1) return false; theta = std::asin(r); break;
        case 3: if (r > 2) return false; theta = 2 * std::asin(0.5f * r); break;
        default: theta = r; break;
        }
        if (theta > kPi) return false;
        const float phi = std::atan2(fy, fx);
        const Vec3 local{std::sin(theta) * std::cos(phi), std::sin(theta) * std::sin(phi), std::cos(theta)};
        ray->origin = eye_;
        ray->direction = normalize(right_ * local.x + up_ * local.y + forward_ * local.z);
        return true;
    }
    case 4: {
        const float phi = 0.5f * sx * angleX_;
        const float height = (sy / aspect_ + shiftY_) * std::tan(0.5f * angleY_) * aspect_;
        ray->origin = eye_;
        ray->direction = normalize(forward_ * std::cos(phi) + right_ * std::sin(phi) + up_ * height);
        return true;
    }
    case 5: {
        const float phi = 0.5f * sx * angleX_;
        const float theta = 0.5f * sy * angleY_;
        ray->origin = eye_;
        ray->direction = normalize((forward_ * std::cos(phi) + right_ * std::sin(phi)) * std::cos(theta) +
                                   up_ * std::sin(theta));
        return true;
    }
    default: {
        const float px = (sx + 2 * shiftX_) * tanHalfX_;
        const float py = (sy + 2 * shiftY_) * tanHalfX_ / aspect_;
        Vec3 direction = normalize(forward_ + right_ * px + up_ * py);
        Vec3 origin = eye_;
        if (lensRadius_ > 0) {
            // A thin lens: every ray through the same pixel meets at the plane of focus.
            const float cosine = dot(direction, forward_);
            const Vec3 focus = eye_ + direction * (focusDistance_ / cosine);
            const float r = lensRadius_ * std::sqrt(lensU);
            const SinCos angle = sinCosOfTurns(lensV);
            origin = eye_ + right_ * (r * angle.cos) + up_ * (r * angle.sin);
            direction = normalize(focus - origin);
        }
        ray->origin = origin;
        ray->direction = direction;
        return true;
    }
    }
}

} // namespace preview

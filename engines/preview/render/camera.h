// The render camera: placed by its tracks at the render time, projecting by its record's kind
// (perspective, fish-eye, orthographic, cylinder, spherical), with a thin lens when the record
// asks for depth of field.
#pragma once
#include "engines/preview/render/warnings.h"
#include "engines/preview/vec3.h"

#include <cstdint>

class TempCamera;

namespace preview {

class Camera {
  public:
    Camera(); // a perspective camera at the origin looking down -Z, 45 degrees across
    // From the client's object; the image size gives the aspect when the record has none.
    Camera(const TempCamera& camera, double seconds, int32_t imageWidth, int32_t imageHeight, WarningLog& warnings);

    // The ray through image position (x, y) in pixels (0,0 the top-left corner of the image),
    // with (lensU, lensV) in [0,1)^2 for the aperture. False where the projection has no ray
    // (outside a fish-eye's circle).
    bool generate(float x, float y, float lensU, float lensV, Ray* ray) const;
    // The factor the image is multiplied by (exposure).
    float exposureScale() const { return exposure_; }
    const Vec3& position() const { return eye_; }

  private:
    int32_t type_ = 1;
    float width_ = 1, height_ = 1; // image size in pixels
    Vec3 eye_{0}, right_{1, 0, 0}, up_{0, 1, 0}, forward_{0, 0, -1};
    float tanHalfX_ = 0.41421356f; // perspective: tan of half the horizontal angle
    float aspect_ = 1;              // frame width over height
    float shiftX_ = 0, shiftY_ = 0;
    float orthoWidth_ = 1;
    float angleX_ = 2 * 3.14159265f, angleY_ = 3.14159265f; // cylinder and spherical, radians
    int32_t fishEyeMapping_ = 0;
    float fishEyeFocal_ = 1; // focal length over the frame's half width
    float lensRadius_ = 0, focusDistance_ = 1;
    float exposure_ = 1;
};

} // namespace preview

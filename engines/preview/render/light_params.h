// What the engine keeps of one light of the scene: its kind and its values at the render time,
// read from the light record as the engine's README defines them.
#pragma once
#include "engines/preview/render/warnings.h"
#include "engines/preview/vec3.h"

#include <cstdint>
#include <string>

class TempLight;

namespace preview {

enum class LightKind { Point, Spot, Directional, Sun, Sky, Environment, Rectangle, Disc };

struct LightParams {
    LightKind kind = LightKind::Point;
    Color emitted{1};  // intensity, irradiance or radiance by kind, colour and temperature included
    Vec3 position{0};
    Vec3 direction{0, -1, 0}; // where the light points
    Vec3 up{0, 0, 1};         // a rectangle's height axis, across `direction`
    float width = 1, height = 1; // rectangle; a disc's radius is `width`
    float cosOuter = -1, cosInner = -1; // spot cones (half angles)
    float cosSun = 1;                   // the sun's half angle
    int32_t texMap = -1;
    std::string imagePath; // UTF-8, environment images
};

// False for a light that is switched off or gives no light; the kind a type cannot be rendered
// as yet is reported once per type.
bool readLight(const TempLight& light, double seconds, WarningLog& warnings, LightParams* out);

// The colour of a black body at `kelvin` relative to one at 6500 K, at a luminance of 1.
Color temperatureColor(float kelvin);

} // namespace preview

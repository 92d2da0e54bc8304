// Cameras and lights: those of the model file placed by their nodes, the view that frames a
// model without one, and the default sun and sky.
#pragma once
#include "tools/builder/imported_model.h"
#include "tools/scene_writer/preview_builders.h"

#include <assimp/scene.h>

#include <optional>
#include <string>
#include <vector>

namespace builder {

// The first camera of the file, in world space. Whatever assimp's header says, its importers
// give the full horizontal angle (a glTF camera of yfov 0.7 and aspect 1 comes as 0.7).
std::optional<CameraView> fileCamera(const aiScene& scene);
// Point, spot and directional lights; other kinds go to `notes`. `halfAngles` says that the
// importer passed the spot cones on as angles from the axis (glTF's), not as full cones.
std::vector<PointLight> fileLights(const aiScene& scene, bool halfAngles, std::vector<std::string>& notes);

// The side a view looks from: front, back, left, right, top, bottom, iso, or "x,y,z" (the
// direction from the model to the eye). False for anything else.
bool parseViewSide(const std::string& side, Vec3& towardsEye);
// A perspective view from `towardsEye` that holds the whole of `bounds` in an image of `aspect`.
CameraView framedView(const Bounds& bounds, const Vec3& towardsEye, float aspect);

scene_writer::LightPlan lightPlan(const PointLight& light);
// A sun (type 9) high in the south-west and a sky (type 4) of moderate radiance.
scene_writer::LightPlan defaultSun();
scene_writer::LightPlan defaultSky();

} // namespace builder

#include "tools/builder/camera_lights.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace builder {

namespace {

constexpr float kPi = 3.14159265358979f;
constexpr float kFramingFovX = 40; // degrees

Vec3 vec(const aiVector3D& v) {
    return {v.x, v.y, v.z};
}

float length(const Vec3& v) {
    return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
}

Vec3 normalised(const Vec3& v) {
    const float l = length(v);
    return l > 0 ? Vec3{v[0] / l, v[1] / l, v[2] / l} : v;
}

// The node's transform to world space: its own and its parents'.
aiMatrix4x4 worldTransform(const aiNode* node) {
    aiMatrix4x4 world;
    for (; node; node = node->mParent) world = node->mTransformation * world;
    return world;
}

const aiNode* nodeNamed(const aiScene& scene, const aiString& name) {
    return scene.mRootNode ? scene.mRootNode->FindNode(name) : nullptr;
}

Vec3 transformedPoint(const aiMatrix4x4& m, const aiVector3D& p) {
    return vec(m * p);
}

Vec3 transformedDirection(const aiMatrix4x4& m, const aiVector3D& d) {
    return normalised(vec(aiMatrix3x3(m) * d));
}

} // namespace

std::optional<CameraView> fileCamera(const aiScene& scene) {
    if (scene.mNumCameras == 0) return std::nullopt;
    const aiCamera& camera = *scene.mCameras[0];
    const aiMatrix4x4 world = worldTransform(nodeNamed(scene, camera.mName));
    CameraView view;
    view.eye = transformedPoint(world, camera.mPosition);
    const Vec3 forward = transformedDirection(world, camera.mLookAt);
    view.target = {view.eye[0] + forward[0], view.eye[1] + forward[1], view.eye[2] + forward[2]};
    view.up = transformedDirection(world, camera.mUp);
    if (camera.mOrthographicWidth > 0) {
        view.orthographicWidth = 2 * camera.mOrthographicWidth;
    } else if (camera.mHorizontalFOV > 0) {
        view.fovXDegrees = std::min(camera.mHorizontalFOV * 180 / kPi, 179.0f);
    }
    return view;
}

std::vector<PointLight> fileLights(const aiScene& scene, bool halfAngles, std::vector<std::string>& notes) {
    std::vector<PointLight> lights;
    for (unsigned i = 0; i < scene.mNumLights; ++i) {
        const aiLight& source = *scene.mLights[i];
        PointLight light;
        light.name = source.mName.C_Str();
        switch (source.mType) {
        case aiLightSource_POINT: light.type = 1; break;
        case aiLightSource_SPOT: light.type = 2; break;
        case aiLightSource_DIRECTIONAL: light.type = 5; break;
        default: notes.push_back("light " + light.name + " is of a kind left out"); continue;
        }
        const aiMatrix4x4 world = worldTransform(nodeNamed(scene, source.mName));
        light.position = transformedPoint(world, source.mPosition);
        light.direction = transformedDirection(world, source.mDirection);
        const Vec3 colour = {source.mColorDiffuse.r, source.mColorDiffuse.g, source.mColorDiffuse.b};
        // The file's colour carries the strength; the record keeps them apart.
        light.intensity = std::max({colour[0], colour[1], colour[2]});
        if (light.intensity > 0) light.colour = {colour[0] / light.intensity, colour[1] / light.intensity, colour[2] / light.intensity};
        if (light.type == 2) {
            const float scale = halfAngles ? 2 : 1;
            light.outerCone = std::min(scale * source.mAngleOuterCone, kPi);
            light.innerCone = std::min(scale * source.mAngleInnerCone, light.outerCone);
        }
        lights.push_back(light);
    }
    return lights;
}

bool parseViewSide(const std::string& side, Vec3& towardsEye) {
    struct Named {
        const char* word;
        Vec3 direction;
    };
    static const Named kSides[] = {
        {"front", {0, 0, 1}}, {"back", {0, 0, -1}}, {"left", {-1, 0, 0}}, {"right", {1, 0, 0}},
        {"top", {0, 1, 0}},   {"bottom", {0, -1, 0}}, {"iso", {1, 0.8f, 1}},
    };
    for (const Named& named : kSides) {
        if (side == named.word) {
            towardsEye = normalised(named.direction);
            return true;
        }
    }
    Vec3 v;
    char end;
    if (std::sscanf(side.c_str(), "%f,%f,%f%c", &v[0], &v[1], &v[2], &end) != 3) return false;
    if (!std::isfinite(length(v)) || length(v) == 0) return false;
    towardsEye = normalised(v);
    return true;
}

CameraView framedView(const Bounds& bounds, const Vec3& towardsEye, float aspect) {
    CameraView view;
    view.fovXDegrees = kFramingFovX;
    Vec3 centre{0, 0, 0}, extent{0, 0, 0};
    for (int a = 0; a < 3; ++a) {
        centre[a] = 0.5f * (bounds.lower[a] + bounds.upper[a]);
        extent[a] = bounds.upper[a] - bounds.lower[a];
    }
    const float radius = std::max(0.5f * length(extent), 1e-3f);
    const float halfX = 0.5f * kFramingFovX * kPi / 180;
    const float halfY = std::atan(std::tan(halfX) / std::max(aspect, 1e-3f));
    // The bounding sphere fits within the narrower of the two angles, with a small margin.
    const float distance = 1.1f * radius / std::sin(std::min(halfX, halfY));
    view.target = centre;
    view.eye = {centre[0] + distance * towardsEye[0], centre[1] + distance * towardsEye[1],
                centre[2] + distance * towardsEye[2]};
    // Looking straight down or up, the image's up is -Z (the model's back at the top).
    view.up = std::fabs(towardsEye[1]) > 0.999f ? Vec3{0, 0, -1} : Vec3{0, 1, 0};
    return view;
}

scene_writer::LightPlan lightPlan(const PointLight& light) {
    scene_writer::LightPlan plan;
    plan.type = light.type;
    plan.name = light.name;
    plan.intensity = light.intensity;
    plan.colour = {light.colour[0], light.colour[1], light.colour[2]};
    plan.position = light.position;
    plan.direction = light.direction;
    plan.spotCone = light.outerCone;
    plan.spotInnerCone = light.innerCone;
    return plan;
}

scene_writer::LightPlan defaultSun() {
    scene_writer::LightPlan sun;
    sun.type = 9;
    sun.name = "sun";
    sun.intensity = 2.5f;
    sun.temperature = 5800;
    sun.direction = {-0.45f, -0.8f, -0.4f};
    return sun;
}

scene_writer::LightPlan defaultSky() {
    scene_writer::LightPlan sky;
    sky.type = 4;
    sky.name = "sky";
    sky.intensity = 0.35f;
    sky.colour = {0.55f, 0.7f, 1.0f};
    return sky;
}

} // namespace builder

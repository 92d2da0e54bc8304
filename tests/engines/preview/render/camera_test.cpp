#include "engines/preview/render/camera.h"

#include "scene/temp_objects.h"
#include "tools/scene_writer/preview_builders.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace preview {
namespace {

constexpr int32_t kWidth = 200, kHeight = 100;

// A render camera at the origin looking down -Z (its stored target), with the record `image`.
Camera cameraOf(const scene_writer::Bytes& image, WarningLog& warnings) {
    TempCamera object;
    object.cameraRole = 0;
    std::memcpy(&object.camera, image.data(), std::min(image.size(), sizeof object.camera));
    object.cameraTarget[0] = 0, object.cameraTarget[1] = 0, object.cameraTarget[2] = -1;
    return Camera(object, 0, kWidth, kHeight, warnings);
}

struct ProjectionCase {
    const char* what;
    scene_writer::Bytes image;
    float x, y; // pixels
    Vec3 origin, direction;
};

TEST(Camera, ProjectsEachKindAsItsKeysSay) {
    scene_writer::Bytes spherical = scene_writer::cameraImage(5);
    scene_writer::setCameraValue(spherical, "FovX", 360);
    scene_writer::setCameraValue(spherical, "FovY", 180);
    scene_writer::Bytes shifted = scene_writer::perspectiveCamera(90);
    scene_writer::setCameraValue(shifted, "LensShiftX", 0.5f);
    const float diagonal = 1 / std::sqrt(2.0f);
    const ProjectionCase cases[] = {
        {"perspective centre", scene_writer::perspectiveCamera(90), 100, 50, {0, 0, 0}, {0, 0, -1}},
        {"perspective right edge at 45 degrees", scene_writer::perspectiveCamera(90), 200, 50, {0, 0, 0},
         {diagonal, 0, -diagonal}},
        {"perspective top edge at the image's aspect", scene_writer::perspectiveCamera(90), 100, 0, {0, 0, 0},
         normalize(Vec3(0, 0.5f, -1))},
        {"lens shift moves the frame by its widths", shifted, 100, 50, {0, 0, 0}, {diagonal, 0, -diagonal}},
        {"orthographic left edge", scene_writer::orthographicCamera(4), 0, 50, {-2, 0, 0}, {0, 0, -1}},
        {"orthographic top edge", scene_writer::orthographicCamera(4), 100, 0, {0, 1, 0}, {0, 0, -1}},
        {"spherical centre", spherical, 100, 50, {0, 0, 0}, {0, 0, -1}},
        {"spherical right edge looks back", spherical, 200, 50, {0, 0, 0}, {0, 0, 1}},
        {"spherical top looks up", spherical, 100, 0, {0, 0, 0}, {0, 1, 0}},
    };
    for (const ProjectionCase& c : cases) {
        WarningLog warnings;
        const Camera camera = cameraOf(c.image, warnings);
        Ray ray;
        ASSERT_TRUE(camera.generate(c.x, c.y, 0.5f, 0.5f, &ray)) << c.what;
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR(ray.origin[i], c.origin[i], 1e-4) << c.what << " origin " << i;
            EXPECT_NEAR(ray.direction[i], c.direction[i], 1e-4) << c.what << " direction " << i;
        }
    }
}

TEST(Camera, ExposureFollowsStopsAndEv100) {
    struct Case {
        float stops, ev100, scale;
    } cases[] = {{0, 0, 1}, {1, 0, 2}, {-2, 0, 0.25f}, {0, 1, 1 / 2.4f}};
    for (const Case& c : cases) {
        scene_writer::Bytes image = scene_writer::perspectiveCamera(60);
        scene_writer::setCameraValue(image, "Exposure", c.stops);
        scene_writer::setCameraValue(image, "EV100", c.ev100);
        WarningLog warnings;
        EXPECT_NEAR(cameraOf(image, warnings).exposureScale(), c.scale, 1e-5) << c.stops << " " << c.ev100;
    }
}

TEST(Camera, DepthOfFieldFocusesEveryLensPointOnThePlaneOfFocus) {
    scene_writer::Bytes image = scene_writer::perspectiveCamera(60);
    scene_writer::setCameraValue(image, "Aperture/Fnumber", 1.4f);
    scene_writer::setCameraValue(image, "FocusDistance", 3);
    WarningLog warnings;
    const Camera camera = cameraOf(image, warnings);
    Ray a, b;
    ASSERT_TRUE(camera.generate(120, 40, 0.1f, 0.2f, &a));
    ASSERT_TRUE(camera.generate(120, 40, 0.9f, 0.7f, &b));
    EXPECT_GT(length(a.origin - b.origin), 1e-3f);
    // Both rays meet the plane z = -3 at the same point.
    const Vec3 pa = a.origin + a.direction * ((-3 - a.origin.z) / a.direction.z);
    const Vec3 pb = b.origin + b.direction * ((-3 - b.origin.z) / b.direction.z);
    EXPECT_NEAR(length(pa - pb), 0, 1e-4);
}

} // namespace
} // namespace preview

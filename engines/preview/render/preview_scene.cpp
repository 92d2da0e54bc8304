#include "engines/preview/render/preview_scene.h"

#include "bridge/render_callback.h"
#include "common/unicode.h"
#include "engines/preview/output/image_output.h"
#include "engines/preview/render/accelerator.h"
#include "engines/preview/render/renderer.h"
#include "engines/preview/render/tracks.h"
#include "scene/temp_objects.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace preview {

namespace {

// A long render saves what it has about this often, so that a stopped run leaves an image.
constexpr std::chrono::seconds kPartialSaveInterval{60};

void progress(ITaviRenderCallback* callback, int32_t stage, float fraction, int32_t passes) {
    if (!callback) return;
    const ProgressInfo info{fraction, stage, 0, passes};
    callback->onProgress(&info);
}

// What the run cost, in the figures a benchmark compares: the build, samples and rays a second,
// and the rays a path took on average.
std::string statisticsLine(double buildSeconds, const RenderStatistics& statistics) {
    char line[256];
    const double seconds = std::max(statistics.seconds, 1e-9);
    std::snprintf(line, sizeof line,
                  "Preview engine: scene built in %.3f s; %d passes in %.3f s, %.0f samples/s, %.2f Mrays/s, "
                  "%.3f rays a sample",
                  buildSeconds, statistics.passes, statistics.seconds, statistics.samples / seconds,
                  statistics.rays / seconds * 1e-6, statistics.rays / std::max(double(statistics.samples), 1.0));
    return line;
}

PixelRect regionOf(const SettingsRecord& settings) {
    const int32_t width = settings.ImageSizeX, height = settings.ImageSizeY;
    PixelRect region{settings.RegionX, settings.RegionY, settings.RegionSizeX, settings.RegionSizeY};
    if (region.width <= 0 || region.height <= 0) region = {0, 0, width, height};
    const int32_t x0 = std::clamp(region.x, 0, width), y0 = std::clamp(region.y, 0, height);
    const int32_t x1 = std::clamp(region.x + std::max(region.width, 0), x0, width);
    const int32_t y1 = std::clamp(region.y + std::max(region.height, 0), y0, height);
    return {x0, y0, x1 - x0, y1 - y0};
}

} // namespace

PreviewScene::PreviewScene()
    : settings_(std::make_unique<SettingsRecord>()), materials_(temperatureColor), geometry_(0) {}

void PreviewScene::begin(const SettingsRecord& settings) {
    *settings_ = settings;
    seconds_ = renderSeconds(settings.FrameNumber, settings.FramesPerSecond);
    geometry_ = SceneGeometry(seconds_);
}

void PreviewScene::addCamera(const TempCamera& camera) {
    if (camera.cameraRole != 0) return;
    if (camera.trackACount > 1 || camera.trackBCount > 1 || camera.trackCCount > 1) animated_ = true;
    camera_.emplace(camera, seconds_, std::max(settings_->ImageSizeX, 1), std::max(settings_->ImageSizeY, 1),
                    warnings_);
}

void PreviewScene::addLight(const TempLight& light) {
    if (light.trackCount > 1) animated_ = true;
    LightParams params;
    if (readLight(light, seconds_, warnings_, &params)) lights_.add(params);
}

int32_t PreviewScene::render(ITaviRenderCallback* callback) {
    const SettingsRecord& settings = *settings_;
    if (settings.ImageSizeX <= 0 || settings.ImageSizeY <= 0 || settings.ImageSizeX > 65536 ||
        settings.ImageSizeY > 65536) {
        if (callback) callback->reportError(u"Preview engine: the image size is out of range.", 0);
        return 3;
    }
    progress(callback, 0, 0, 0);
    const auto buildStart = std::chrono::steady_clock::now();
    const WarningSink warn = warnings_.sink();
    materials_.finish(warn);
    maps_.finish(warn);
    lights_.addShapes(geometry_);
    Accelerator accelerator(warnings_);
    if (!accelerator.build(geometry_)) {
        if (callback) callback->reportError(u"Preview engine: the scene's geometry could not be built.", 0);
        return 4;
    }
    progress(callback, 0, 0.5f, 0);
    lights_.prepare(geometry_, materials_, maps_, warnings_);
    if (lights_.empty()) warnings_.note("the scene has no light; the image is black");
    if (!camera_) {
        warnings_.note("the scene has no render camera; a camera at the origin looks down -Z");
        camera_.emplace();
    }
    if (!geometry_.curves().empty()) warnings_.note("fur is rendered without its hair shading");
    if (settings.EnableMotionBlur && (animated_ || geometry_.animated()))
        warnings_.note("motion blur is not rendered; the frame is sharp at its time");
    progress(callback, 0, 1, 0);
    const double buildSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - buildStart).count();

    bool anyPassable = false;
    for (const TriangleMeshData& mesh : geometry_.meshes())
        for (int32_t material : mesh.materials) anyPassable = anyPassable || materials_.mayPassRays(material);
    // Emitting triangles and light shapes are lights of the set; emitting fur and sprites are not.
    bool emissionMet = !lights_.onlyDeltaLights();
    for (const CurveSetData& curves : geometry_.curves())
        for (int32_t material : curves.materials) emissionMet = emissionMet || materials_.isEmissive(material);
    for (const DiscSetData& discs : geometry_.discs())
        for (int32_t material : discs.materials) emissionMet = emissionMet || materials_.isEmissive(material);
    // A depth of 0 is a record that never set one: the record's own defaults stand in.
    const int32_t maxDepth = settings.MaxDepth > 0 ? std::min(settings.MaxDepth, 1024) : 10;
    const int32_t rouletteStart =
        settings.RussianRouletteStartDepth > 0 ? std::min(settings.RussianRouletteStartDepth, 1024) : 3;
    const float clamp = std::isfinite(settings.ClampIndirect) ? std::max(settings.ClampIndirect, 0.0f) : 0.0f;
    const OutputPlan plan = planOutput(settings, animated_ || geometry_.animated());
    // Only the EXR carries the albedo, normal and depth layers.
    const SceneView view{accelerator, geometry_,   materials_,  maps_, lights_,  maxDepth,
                         rouletteStart, anyPassable, emissionMet, clamp, plan.exr};

    Film film(settings.ImageSizeX, settings.ImageSizeY, regionOf(settings), plan.exr);
    PassPlan passes;
    passes.passes = std::max(settings.MaxIterations, 1);
    passes.threads = std::max(settings.MaxThreads, 0);

    auto lastSave = std::chrono::steady_clock::now();
    const RenderStatistics statistics = renderPasses(view, *camera_, film, passes, [&](int32_t done) {
        progress(callback, 1, static_cast<float>(done) / passes.passes, done);
        if (done < passes.passes && std::chrono::steady_clock::now() - lastSave >= kPartialSaveInterval) {
            writeImages(plan, film);
            lastSave = std::chrono::steady_clock::now();
        }
        return !(callback && callback->queryAbort());
    });

    if (callback) callback->reportInfo(utf8ToUtf16(statisticsLine(buildSeconds, statistics)).c_str());
    int32_t level = 0;
    written_.clear();
    for (const WrittenImage& image : writeImages(plan, film)) {
        if (image.ok) {
            written_.push_back(image.path);
            if (callback) callback->reportInfo(utf8ToUtf16("Preview engine: wrote " + image.path).c_str());
        } else {
            level = 2;
            if (callback)
                callback->reportError(
                    utf8ToUtf16("Preview engine: cannot write " + image.path + ": " + image.error).c_str(), 0);
        }
    }
    warnings_.flush(callback);
    // The result tells of every warning of the run, the load's included: the images are there,
    // but not all of the scene is in them.
    if (warnings_.noted() > 0) level = std::max(level, 1);
    return level;
}

} // namespace preview

// The whole load of a scene file into the preview engine, in one process, and a render of a
// few pixels: every record and model the client hands over goes through the engine's own
// reading of it, its scene build and its shading.
#include "bridge/render_callback.h"
#include "client/file_renderer.h"
#include "common/unicode.h"
#include "engines/preview/render/preview_tracer.h"
#include "scene/records.h"
#include "tests/fuzz/fuzz_support.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace {

// The file's settings, shrunk to a render that costs little whatever the file asks for.
class SmallRenderTracer final : public preview::PreviewTracer {
  public:
    int32_t beginScene(SettingsRecord* settings, ITaviRenderCallback* callback, int32_t zero) override {
        if (!settings) return PreviewTracer::beginScene(settings, callback, zero);
        SettingsRecord* small = new SettingsRecord(*settings);
        small->ImageSizeX = std::clamp(small->ImageSizeX, 1, 6);
        small->ImageSizeY = std::clamp(small->ImageSizeY, 1, 4);
        small->RegionX = small->RegionY = small->RegionSizeX = small->RegionSizeY = 0;
        small->MaxIterations = 1;
        small->MaxThreads = 1;
        small->MaxDepth = std::clamp(small->MaxDepth, 0, 4);
        small->SaveJPEG = small->SaveTIFF = 0;
        small->SaveEXR = 1;
        const std::u16string folder = fuzz_support::inputFolder() + u"out";
        std::fill(std::begin(small->OutputPath), std::end(small->OutputPath), u'\0');
        std::copy(folder.begin(), folder.begin() + std::min(folder.size(), kPathChars - 1), small->OutputPath);
        const int32_t level = PreviewTracer::beginScene(small, callback, zero);
        delete small;
        return level;
    }
};

// Hears nothing and asks nothing: the run's messages are not what this target looks at.
class SilentCallback final : public ITaviRenderCallback {
  public:
    bool onProgress(const ProgressInfo*) override { return true; }
    bool peekCommand(int32_t*) override { return false; }
    int32_t queryZero() override { return 0; }
    bool peekViewState(ViewState*) override { return false; }
    bool queryInteractive() override { return false; }
    void notifyStart() override {}
    void notifySceneReady() override {}
    void notifyPass() override {}
    void notifyStop() override {}
    bool queryPreview() override { return false; }
    bool queryAbort() override { return false; }
    void notifyImage() override {}
    Value16* filterValue(Value16* result, const Value16* source) override {
        *result = *source;
        return result;
    }
    Value16* defaultValue(Value16* result) override {
        *result = Value16{};
        return result;
    }
    bool acceptSave() override { return true; }
    bool acceptOutput() override { return true; }
    void reportError(const char16_t*, int64_t) override {}
    void reportWarning(const char16_t*, int64_t) override {}
    void reportInfo(const char16_t*) override {}
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const fuzz_support::LiveMemory before = fuzz_support::liveMemory();
    {
        ClientOptions options;
        options.scenePath = fuzz_support::writeInput("scene.tavi", data, size);
        SmallRenderTracer engine;
        FileRenderer renderer(options);
        renderer.attachEngine(&engine);
        const int32_t level = renderer.loadScene();
        FUZZ_CHECK(level >= StatusOk && level <= StatusOutOfMemory);
        if (level < 2) {
            SilentCallback callback;
            const int32_t rendered = engine.render(&callback);
            FUZZ_CHECK(rendered >= 0 && rendered <= 4);
        }
        FUZZ_CHECK(engine.shutdown(nullptr) == 0);
    }
    fuzz_support::checkGivenBack(before);
    return 0;
}

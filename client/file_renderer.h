// The client at the engine's boundary: both callback interfaces the engine calls, answered by
// the parts that own each concern (the asset registry, the progress display, the message log
// and the engine module).
#pragma once
#include "bridge/name_interface.h"
#include "bridge/render_callback.h"
#include "bridge/tracer.h"
#include "client/asset_registry.h"
#include "client/client_options.h"
#include "client/engine_module.h"
#include "client/message_log.h"
#include "client/progress_display.h"

#include <cstdint>

class FileRenderer final : public ITaviNameInterface, public ITaviRenderCallback {
  public:
    explicit FileRenderer(const ClientOptions& options);
    ~FileRenderer();
    FileRenderer(const FileRenderer&) = delete;
    FileRenderer& operator=(const FileRenderer&) = delete;

    // Loads the engine module beside the executable; false when there is none to use.
    bool startEngine() { return engine_.start(log_); }
    // An engine already in the process instead of the module.
    void attachEngine(ITaviTracer* tracer) { engine_.attach(tracer); }
    // Starts the clock of the title's elapsed time.
    void startRun() { progress_.startRun(); }

    // Reads the scene and hands it to the engine; the run's level so far.
    int32_t loadScene();
    // Runs the engine over the loaded scene and returns the final level.
    int32_t renderLoaded(int32_t loadResult);

    const ClientOptions& options() const { return options_; }
    ITaviTracer* tracer() const { return engine_.tracer(); }
    AssetRegistry& assets() { return assets_; }
    MessageLog& log() { return log_; }
    const MessageLog& log() const { return log_; }
    const ProgressDisplay& progress() const { return progress_; }

    // ITaviNameInterface
    int32_t* GetTextureId(int32_t* result, const char16_t* name) override;
    const char16_t* GetTextureName(int32_t id) override;
    int32_t* GetTexMapId(int32_t* result, const char16_t* name) override;
    const char16_t* GetTexMapName(int32_t id) override;
    int32_t* GetMaterialId(int32_t* result, const char16_t* name) override;
    const char16_t* GetMaterialName(int32_t id) override;
    uint64_t GetModelId(const char16_t* name) override;
    const char16_t* GetModelName() override;
    void* destroy(uint32_t flags) override;

    // ITaviRenderCallback
    bool onProgress(const ProgressInfo* info) override;
    bool peekCommand(int32_t* command) override;
    int32_t queryZero() override;
    bool peekViewState(ViewState* state) override;
    bool queryInteractive() override;
    void notifyStart() override {}
    void notifySceneReady() override {}
    void notifyPass() override {}
    void notifyStop() override {}
    bool queryPreview() override;
    bool queryAbort() override;
    void notifyImage() override {}
    Value16* filterValue(Value16* result, const Value16* source) override;
    Value16* defaultValue(Value16* result) override;
    bool acceptSave() override;
    bool acceptOutput() override;
    void reportError(const char16_t* text, int64_t code) override;
    void reportWarning(const char16_t* text, int64_t code) override;
    void reportInfo(const char16_t* text) override;

  private:
    const ClientOptions& options_;
    ProgressDisplay progress_;
    MessageLog log_;
    EngineModule engine_;
    AssetRegistry assets_;
};

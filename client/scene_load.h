// One load of a scene file: the reader, the settings being built, the kept render camera and
// the sweeps over the chain.
#pragma once
#include "client/asset_registry.h"
#include "scene/records.h"
#include "scene/scene_file_reader.h"
#include "scene/temp_objects.h"

#include <cstdint>

class FileRenderer;

class SceneLoad {
  public:
    explicit SceneLoad(FileRenderer& renderer);

    // Reads the scene and hands it to the engine, logging what goes wrong.
    void run();

  private:
    // The reader's last status; `stopped_` tells that the load ended on a report of its own.
    SceneStatus sweepChain();
    template <class Kind, class Read>
    SceneStatus adoptAll(Registry<Kind>& registry, Read read, const char16_t* duplicateMessage);
    SceneStatus readSceneSettings();
    bool applySettingsDocument();
    void applyCommandLine();
    SceneStatus registerCameras();
    SceneStatus registerLights();
    SceneStatus handOverCameras();
    SceneStatus handOverLights();
    void lookUpTexMap(int32_t id);
    SceneStatus registerGeometry();
    SceneStatus handOverGeometry();
    template <class Mesh>
    SceneStatus registerModels();
    template <class Mesh>
    SceneStatus handOverModels();
    void stop(int32_t level) {
        stopped_ = true;
        log_.raise(level);
    }

    FileRenderer& renderer_;
    SceneFileReader reader_;
    bool stopped_ = false;
    const ClientOptions& options_;
    AssetRegistry& assets_;
    MessageLog& log_;
    ITaviTracer* tracer_;
    SettingsRecord settings_;
    // The last camera of role 0 on the chain, as documents left it, for the transfer.
    TempCamera renderCamera_;
};

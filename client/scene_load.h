// One load of a scene file: the reader, the settings being built and the sweeps over the chain.
#pragma once
#include "scene/records.h"
#include "scene/scene_file_reader.h"

#include <cstdint>

class FileRenderer;

class SceneLoad {
  public:
    explicit SceneLoad(FileRenderer& renderer) : renderer(renderer) {}

    // The reader's last status; `stopped` tells that the load ended on a report of its own.
    SceneStatus run();

    FileRenderer& renderer;
    SceneFileReader reader;
    SettingsRecord settings;
    bool stopped = false;

  private:
    SceneStatus registerTextureFiles();
    SceneStatus registerTextureData();
    SceneStatus registerTexMaps();
    SceneStatus registerMaterials();
    SceneStatus readSceneSettings();
    bool applySettingsDocument();
    void applyCommandLine();
    SceneStatus registerCameras();
    SceneStatus registerLights();
    SceneStatus handOverCameras();
    SceneStatus handOverLights();
    void lookUpTexMap(int32_t id);
    void stop(int32_t level) {
        stopped = true;
        raiseLevel(level);
    }
    void raiseLevel(int32_t level);
};

// One load of a scene file: the reader, the settings being built and the sweeps over the chain.
#pragma once
#include "client/registry_entries.h"
#include "scene/records.h"
#include "scene/scene_file_reader.h"

#include <cstdint>

class FileRenderer;
class NameTable;

// Where one kind of asset is registered, and how a clash of names is told.
struct Registry {
    int32_t (FileRenderer::*find)(const char16_t* name, bool lookupOnly);
    NameTable* names;
    NameTable* ids;
    IdCounter* nextId;
    const char16_t* duplicateMessage;
};

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
    template <class Entry>
    SceneStatus registerAll(Entry*& list, const Registry& registry);
    bool registerEntry(void* entry, const char16_t* name, int32_t id, const Registry& registry);
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
    void nameModel(const char16_t* name, void*& modelNode);
    void stop(int32_t level) {
        stopped = true;
        raiseLevel(level);
    }
    void raiseLevel(int32_t level);
};

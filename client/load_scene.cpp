// The load driver: sweeps over the scene file's chunk chain, first to fill the registries,
// the settings and the render camera, then to hand everything to the engine in the order the
// engine relies on.
#include "client/file_renderer.h"
#include "client/load_messages.h"
#include "client/scene_load.h"
#include "scene/scene_readers.h"

#include <memory>

namespace {

// What a reader's last status means to the user, and the level it costs at least.
void reportSceneStatus(FileRenderer& renderer, SceneStatus status) {
    switch (status) {
    case SceneOk: break;
    case SceneInvalid:
        renderer.reportError(messages::kInvalidScene, 0);
        renderer.raiseStatus(StatusErrors);
        break;
    case SceneOutOfMemory: renderer.raiseStatus(StatusOutOfMemory); break;
    case SceneBadVersion:
        renderer.reportError(messages::kUnknownVersion, 0);
        renderer.raiseStatus(StatusErrors);
        break;
    case SceneIoError:
        renderer.reportError(messages::kIoError, 0);
        renderer.raiseStatus(StatusUnusable);
        break;
    case SceneEndOfChunks:
        renderer.reportError(messages::kInvalidScene, 0);
        renderer.raiseStatus(StatusUnusable);
        break;
    }
}

} // namespace

int32_t FileRenderer::loadScene() {
    if (!tracer) {
        status = StatusErrors;
        return status;
    }
    status = StatusOk;
    resolving = false;
    auto load = std::make_unique<SceneLoad>(*this);
    SceneStatus sceneStatus = load->reader.open(options->scenePath.c_str());
    if (sceneStatus == SceneOk) sceneStatus = load->run();
    if (!load->stopped) reportSceneStatus(*this, sceneStatus);
    resolving = false;
    load->reader.close();
    return status;
}

// The load driver: sweeps over the scene file's chunk chain, first to fill the registries,
// the settings and the render camera, then to hand everything to the engine in the order the
// engine relies on.
#include "client/file_renderer.h"
#include "client/messages.h"
#include "client/scene_load.h"
#include "scene/scene_readers.h"

#include <memory>

namespace {

// What a reader's last status means to the user, and the level it costs at least.
void reportSceneStatus(MessageLog& log, SceneStatus status) {
    switch (status) {
    case SceneOk: break;
    case SceneInvalid: log.fail(messages::kInvalidScene, StatusErrors); break;
    case SceneOutOfMemory: log.raise(StatusOutOfMemory); break;
    case SceneBadVersion: log.fail(messages::kUnknownVersion, StatusErrors); break;
    case SceneIoError: log.fail(messages::kIoError, StatusUnusable); break;
    case SceneEndOfChunks: log.fail(messages::kInvalidScene, StatusUnusable); break;
    }
}

} // namespace

int32_t FileRenderer::loadScene() {
    log_.resetLevel();
    if (!tracer()) {
        log_.raise(StatusErrors);
        return log_.level();
    }
    assets_.endResolution();
    auto load = std::make_unique<SceneLoad>(*this);
    SceneStatus sceneStatus = load->reader.open(options_.scenePath.c_str());
    if (sceneStatus == SceneOk) sceneStatus = load->run();
    if (!load->stopped) reportSceneStatus(log_, sceneStatus);
    assets_.endResolution();
    load->reader.close();
    return log_.level();
}

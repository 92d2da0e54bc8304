// The load driver: reads the scene file and hands it to the engine.
#include "client/file_renderer.h"
#include "client/messages.h"
#include "scene/scene_file_reader.h"

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
    SceneFileReader reader;
    SceneStatus sceneStatus = reader.open(options->scenePath.c_str());
    reportSceneStatus(*this, sceneStatus);
    reader.close();
    return status;
}

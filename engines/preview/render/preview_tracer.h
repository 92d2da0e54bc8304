// The preview engine's boundary object: every slot of the tracer, each answering with a status
// level, and none letting an exception or a bad record through to the client. The module
// exports one; a fuzz target drives another in its own process.
#pragma once
#include "bridge/tracer.h"
#include "engines/preview/render/preview_scene.h"

#include <tbb/global_control.h>

#include <memory>

namespace preview {

class PreviewTracer : public ITaviTracer {
  public:
    int32_t initialise(const char16_t* libraryPath) override;
    int32_t reserved1() override { return 0; }
    int32_t reserved2() override { return 0; }
    int32_t reserved3() override { return 0; }
    int32_t reserved4() override { return 0; }
    int32_t shutdown(ITaviRenderCallback* callback) override;
    int32_t beginScene(SettingsRecord* settings, ITaviRenderCallback* callback, int32_t zero) override;
    int32_t addTextureFolder(const char16_t* folder) override;
    int32_t addMaterial(MaterialRecord* material) override;
    int32_t addTexMap(TexMapRecord* texmap) override;
    int32_t addTextureData(TextureDataRecord* texture, ITaviRenderCallback* callback) override;
    int32_t addTextureFile(TextureFileRecord* texture, ITaviRenderCallback* callback) override;
    int32_t endLights() override { return 0; }
    int32_t addTriangleMeshes(bridgeTriangleMesh* head, ITaviRenderCallback* callback) override;
    int32_t addFur(bridgeFurMesh* head, ITaviRenderCallback* callback) override;
    int32_t addSprites(bridgeSprMesh* head, ITaviRenderCallback* callback) override;
    int32_t endScene(ITaviRenderCallback* callback) override;
    int32_t reserved17() override { return 0; }
    int32_t reserved18() override { return 0; }
    int32_t addLight(bridgeLight* light) override;
    int32_t addCamera(bridgeCamera* camera) override;
    int32_t endGeometry() override { return 0; }
    int32_t render(ITaviRenderCallback* callback) override;

  protected:
    ~PreviewTracer() = default;
    PreviewScene& scene();

  private:
    WarningSink sink() { return scene().warnings().sink(); }
    // Runs one operation; an exception never crosses the boundary. What the engine skips or
    // replaces is told by reportWarning and leaves the level at 0: the client starts no render
    // after a load whose level is above 0, and a scene with one bad triangle should render.
    template <class Operation> int32_t guarded(Operation operation);

    std::unique_ptr<PreviewScene> scene_;
    // The client unloads the module right after shutdown, and the thread pool's code with it:
    // shutdown waits for the pool's threads to end first.
    tbb::task_scheduler_handle threads_;
};

} // namespace preview

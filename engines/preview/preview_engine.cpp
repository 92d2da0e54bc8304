// The preview engine's boundary object: every slot of the tracer, each answering with a status
// level, and none letting an exception or a bad record through to the client.
#include "bridge/tracer.h"
#include "common/unicode.h"
#include "engines/preview/render/preview_scene.h"
#include "scene/fur_sprite_objects.h"
#include "scene/geometry_objects.h"
#include "scene/records.h"
#include "scene/temp_objects.h"

#include <memory>
#include <new>

namespace {

using preview::PreviewScene;

constexpr int32_t kAllWell = 0, kErrors = 2, kOutOfMemory = 4;

class PreviewEngine final : public ITaviTracer {
  public:
    int32_t initialise(const char16_t*) override {
        return guarded([&] { scene_ = std::make_unique<PreviewScene>(); });
    }
    int32_t reserved1() override { return kAllWell; }
    int32_t reserved2() override { return kAllWell; }
    int32_t reserved3() override { return kAllWell; }
    int32_t reserved4() override { return kAllWell; }
    int32_t shutdown(ITaviRenderCallback* callback) override {
        if (scene_) scene_->warnings().flush(callback);
        scene_.reset();
        return kAllWell;
    }
    int32_t beginScene(SettingsRecord* settings, ITaviRenderCallback*, int32_t) override {
        return guarded([&] { if (settings) scene().begin(*settings); });
    }
    int32_t addTextureFolder(const char16_t* folder) override {
        return guarded([&] { if (folder) scene().maps().addFolder(utf16ToUtf8(folder)); });
    }
    int32_t addMaterial(MaterialRecord* material) override {
        return guarded([&] { if (material) scene().materials().add(*material, sink()); });
    }
    int32_t addTexMap(TexMapRecord* texmap) override {
        return guarded([&] { if (texmap) scene().maps().add(*texmap, sink()); });
    }
    int32_t addTextureData(TextureDataRecord* texture, ITaviRenderCallback*) override {
        return guarded([&] { if (texture) scene().maps().addTextureData(*texture, sink()); });
    }
    int32_t addTextureFile(TextureFileRecord* texture, ITaviRenderCallback*) override {
        return guarded([&] { if (texture) scene().maps().addTextureFile(*texture, sink()); });
    }
    int32_t endLights() override { return kAllWell; }
    int32_t addTriangleMeshes(bridgeTriangleMesh* head, ITaviRenderCallback*) override {
        return guarded([&] {
            scene().geometry().addTriangleMeshes(static_cast<TRDF_Load::TriangleMesh*>(head), scene().warnings());
        });
    }
    int32_t addFur(bridgeFurMesh* head, ITaviRenderCallback*) override {
        return guarded(
            [&] { scene().geometry().addFur(static_cast<TRDF_Load::FurMesh*>(head), scene().warnings()); });
    }
    int32_t addSprites(bridgeSprMesh* head, ITaviRenderCallback*) override {
        return guarded(
            [&] { scene().geometry().addSprites(static_cast<TRDF_Load::SprMesh*>(head), scene().warnings()); });
    }
    // What the load met is told once, here, before the render starts.
    int32_t endScene(ITaviRenderCallback* callback) override {
        return guarded([&] { scene().warnings().flush(callback); });
    }
    int32_t reserved17() override { return kAllWell; }
    int32_t reserved18() override { return kAllWell; }
    int32_t addLight(bridgeLight* light) override {
        return guarded([&] { if (light) scene().addLight(*static_cast<TempLight*>(light)); });
    }
    int32_t addCamera(bridgeCamera* camera) override {
        return guarded([&] { if (camera) scene().addCamera(*static_cast<TempCamera*>(camera)); });
    }
    int32_t endGeometry() override { return kAllWell; }
    int32_t render(ITaviRenderCallback* callback) override {
        int32_t level = kAllWell;
        const int32_t guard = guarded([&] { level = scene().render(callback); });
        return std::max(level, guard);
    }

  private:
    PreviewScene& scene() {
        if (!scene_) scene_ = std::make_unique<PreviewScene>();
        return *scene_;
    }
    preview::WarningSink sink() { return scene().warnings().sink(); }

    // Runs one operation; an exception never crosses the boundary. What the engine skips or
    // replaces is told by reportWarning and leaves the level at 0: the client starts no render
    // after a load whose level is above 0, and a scene with one bad triangle should render.
    template <class Operation> int32_t guarded(Operation operation) {
        try {
            operation();
            return kAllWell;
        } catch (const std::bad_alloc&) {
            return kOutOfMemory;
        } catch (...) {
            return kErrors;
        }
    }

    std::unique_ptr<PreviewScene> scene_;
};

PreviewEngine gEngine;

} // namespace

extern "C" {
TAVI_ENGINE_EXPORT ITaviTracer* pTaviTracer = &gEngine;
}

#include "engines/preview/render/preview_tracer.h"

#include "common/unicode.h"
#include "scene/fur_sprite_objects.h"
#include "scene/geometry_objects.h"
#include "scene/records.h"
#include "scene/temp_objects.h"

#include <algorithm>
#include <new>

namespace preview {

namespace {

constexpr int32_t kAllWell = 0, kErrors = 2, kOutOfMemory = 4;

} // namespace

template <class Operation> int32_t PreviewTracer::guarded(Operation operation) {
    try {
        operation();
        return kAllWell;
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    } catch (...) {
        return kErrors;
    }
}

PreviewScene& PreviewTracer::scene() {
    if (!scene_) scene_ = std::make_unique<PreviewScene>();
    return *scene_;
}

int32_t PreviewTracer::initialise(const char16_t*) {
    return guarded([&] {
        threads_ = tbb::task_scheduler_handle{tbb::attach{}};
        scene_ = std::make_unique<PreviewScene>();
    });
}

int32_t PreviewTracer::shutdown(ITaviRenderCallback* callback) {
    return guarded([&] {
        if (scene_) scene_->warnings().flush(callback);
        scene_.reset();
        if (threads_) tbb::finalize(threads_, std::nothrow);
    });
}

int32_t PreviewTracer::beginScene(SettingsRecord* settings, ITaviRenderCallback*, int32_t) {
    return guarded([&] {
        if (settings) scene().begin(*settings);
    });
}

int32_t PreviewTracer::addTextureFolder(const char16_t* folder) {
    return guarded([&] {
        if (folder) scene().maps().addFolder(utf16ToUtf8(folder));
    });
}

int32_t PreviewTracer::addMaterial(MaterialRecord* material) {
    return guarded([&] {
        if (material) scene().materials().add(*material, sink());
    });
}

int32_t PreviewTracer::addTexMap(TexMapRecord* texmap) {
    return guarded([&] {
        if (texmap) scene().maps().add(*texmap, sink());
    });
}

int32_t PreviewTracer::addTextureData(TextureDataRecord* texture, ITaviRenderCallback*) {
    return guarded([&] {
        if (texture) scene().maps().addTextureData(*texture, sink());
    });
}

int32_t PreviewTracer::addTextureFile(TextureFileRecord* texture, ITaviRenderCallback*) {
    return guarded([&] {
        if (texture) scene().maps().addTextureFile(*texture, sink());
    });
}

int32_t PreviewTracer::addTriangleMeshes(bridgeTriangleMesh* head, ITaviRenderCallback*) {
    return guarded([&] {
        scene().geometry().addTriangleMeshes(static_cast<TRDF_Load::TriangleMesh*>(head), scene().warnings());
    });
}

int32_t PreviewTracer::addFur(bridgeFurMesh* head, ITaviRenderCallback*) {
    return guarded([&] { scene().geometry().addFur(static_cast<TRDF_Load::FurMesh*>(head), scene().warnings()); });
}

int32_t PreviewTracer::addSprites(bridgeSprMesh* head, ITaviRenderCallback*) {
    return guarded(
        [&] { scene().geometry().addSprites(static_cast<TRDF_Load::SprMesh*>(head), scene().warnings()); });
}

// What the load met is told once, here, before the render starts.
int32_t PreviewTracer::endScene(ITaviRenderCallback* callback) {
    return guarded([&] { scene().warnings().flush(callback); });
}

int32_t PreviewTracer::addLight(bridgeLight* light) {
    return guarded([&] {
        if (light) scene().addLight(*static_cast<TempLight*>(light));
    });
}

int32_t PreviewTracer::addCamera(bridgeCamera* camera) {
    return guarded([&] {
        if (camera) scene().addCamera(*static_cast<TempCamera*>(camera));
    });
}

int32_t PreviewTracer::render(ITaviRenderCallback* callback) {
    int32_t level = kAllWell;
    const int32_t guard = guarded([&] { level = scene().render(callback); });
    return std::max(level, guard);
}

} // namespace preview

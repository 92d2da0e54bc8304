// The sweeps over geometry: first every model gets its name and handle, so that documents
// and the engine can refer to models before any reaches the engine; then each model pulls in
// the materials it uses and goes to the engine. A chain lives for one step of a sweep.
#include "client/file_renderer.h"
#include "client/scene_load.h"
#include "client/sweep.h"
#include "common/wide_format.h"
#include "scene/geometry_readers.h"

using TRDF_Load::FurMesh;
using TRDF_Load::SprMesh;
using TRDF_Load::TriangleMesh;

namespace {

// Asks for a material only when the id changes from one element to the next.
class MaterialRequests {
  public:
    explicit MaterialRequests(FileRenderer& renderer) : renderer_(renderer) {}
    void request(int32_t id) {
        if (id == previous_) return;
        previous_ = id;
        renderer_.GetMaterialName(id);
    }

  private:
    FileRenderer& renderer_;
    int32_t previous_ = -1;
};

void requestMaterials(FileRenderer& renderer, const TriangleMesh& mesh) {
    MaterialRequests requests(renderer);
    const TRDF_Load::StaticSliceT* slice = mesh.staticSlice;
    if (!slice || !slice->triangleQuads) return;
    for (int32_t i = 0; i < slice->triangleCount; ++i)
        requests.request(static_cast<int32_t>(slice->triangleQuads[i].materialId));
}

void requestMaterials(FileRenderer& renderer, const FurMesh& fur) {
    for (const TRDF_Load::TimeSliceF* slice = fur.timeSlices; slice; slice = slice->next) {
        MaterialRequests requests(renderer);
        if (!slice->elements) continue;
        for (int32_t i = 0; i < fur.elementCount; ++i)
            requests.request(static_cast<int32_t>(slice->elements[i].materialId()));
    }
}

void requestMaterials(FileRenderer& renderer, const SprMesh& sprites) {
    for (const TRDF_Load::TimeSliceS* slice = sprites.timeSlices; slice; slice = slice->next) {
        MaterialRequests requests(renderer);
        if (!slice->elements) continue;
        for (int32_t i = 0; i < sprites.elementCount; ++i)
            requests.request(static_cast<int32_t>(slice->elements[i].materialId));
    }
}

int32_t addModel(FileRenderer& r, TriangleMesh* head) { return r.tracer()->addTriangleMeshes(head, &r); }
int32_t addModel(FileRenderer& r, FurMesh* head) { return r.tracer()->addFur(head, &r); }
int32_t addModel(FileRenderer& r, SprMesh* head) { return r.tracer()->addSprites(head, &r); }

} // namespace

template <class Mesh>
SceneStatus SceneLoad::registerModels() {
    return sweep([&](uint64_t& offset, SceneStatus& status) {
        Mesh* head = nullptr;
        // Naming needs no arrays; they are checked all the same, so a body fails here as it would
        // in the hand-over.
        status = readModel(reader_, head, offset, ModelArrays::CheckedOnly);
        if (status == SceneOk)
            for (Mesh* part = head; part; part = part->next) assets_.nameModel(part->name, part->modelNode);
        if (head) head->Release();
        return true;
    });
}

template <class Mesh>
SceneStatus SceneLoad::handOverModels() {
    return sweep([&](uint64_t& offset, SceneStatus& status) {
        Mesh* head = nullptr;
        status = readModel(reader_, head, offset, ModelArrays::Copied);
        if (status == SceneOk && head) {
            for (Mesh* part = head; part; part = part->next) requestMaterials(renderer_, *part);
            log_.raise(addModel(renderer_, head));
        }
        if (head) head->Release();
        return true;
    });
}

SceneStatus SceneLoad::registerGeometry() {
    SceneStatus status = registerModels<TriangleMesh>();
    if (status == SceneOk) status = registerModels<FurMesh>();
    if (status == SceneOk) status = registerModels<SprMesh>();
    return status;
}

SceneStatus SceneLoad::handOverGeometry() {
    SceneStatus status = handOverModels<TriangleMesh>();
    if (status == SceneOk) status = handOverModels<FurMesh>();
    if (status == SceneOk) status = handOverModels<SprMesh>();
    return status;
}

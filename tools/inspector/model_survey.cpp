// Models: triangle meshes, fur and sprites, each a chain of parts read as one.
#include "client/sweep.h"
#include "scene/geometry_readers.h"
#include "tools/inspector/survey.h"

#include <unordered_set>

using TRDF_Load::FurMesh;
using TRDF_Load::SprMesh;
using TRDF_Load::TriangleMesh;

namespace inspector {

namespace {

// Each material id once, in the order of first use.
class MaterialUse {
  public:
    explicit MaterialUse(ModelInfo& model) : model_(model) {}
    void note(uint32_t id) {
        if (seen_.insert(id).second) model_.materials.push_back(unresolved("material", "material", int32_t(id)));
    }

  private:
    ModelInfo& model_;
    std::unordered_set<uint32_t> seen_;
};

template <class Slice> uint32_t sliceCount(const Slice* slice) {
    uint32_t count = 0;
    for (; slice; slice = slice->next)
        ++count;
    return count;
}

// The counts are the readers' own, which they checked against the arrays they built.
void countPart(const TriangleMesh& part, ModelInfo& model, MaterialUse& use) {
    model.timeSlices += sliceCount(part.timeSlices);
    const TRDF_Load::StaticSliceT* slice = part.staticSlice;
    if (!slice || !slice->triangleQuads || slice->triangleCount <= 0) return;
    model.elements += uint64_t(slice->triangleCount);
    for (int32_t i = 0; i < slice->triangleCount; ++i)
        use.note(slice->triangleQuads[i].materialId);
}

void countPart(const FurMesh& part, ModelInfo& model, MaterialUse& use) {
    model.timeSlices += sliceCount(part.timeSlices);
    const TRDF_Load::TimeSliceF* slice = part.timeSlices;
    if (!slice || !slice->elements || part.elementCount <= 0) return;
    model.elements += uint64_t(part.elementCount);
    for (int32_t i = 0; i < part.elementCount; ++i)
        use.note(slice->elements[i].materialId());
}

void countPart(const SprMesh& part, ModelInfo& model, MaterialUse& use) {
    model.timeSlices += sliceCount(part.timeSlices);
    const TRDF_Load::TimeSliceS* slice = part.timeSlices;
    if (!slice || !slice->elements || part.elementCount <= 0) return;
    model.elements += uint64_t(part.elementCount);
    for (int32_t i = 0; i < part.elementCount; ++i)
        use.note(slice->elements[i].materialId);
}

template <class Mesh> SceneStatus checkKind(Survey& survey) {
    return sweep([&](uint64_t& offset, SceneStatus& result) {
        Mesh* head = nullptr;
        result = readModel(survey.reader, head, offset, ModelArrays::CheckedOnly);
        if (head) head->Release();
        return true;
    });
}

template <class Mesh> SceneStatus surveyKind(Survey& survey, ModelKind kind) {
    return sweep([&](uint64_t& offset, SceneStatus& result) {
        Mesh* head = nullptr;
        result = readModel(survey.reader, head, offset, ModelArrays::Copied);
        if (result == SceneOk && head) {
            ModelInfo model;
            model.kind = kind;
            model.name = textOf(head->name, kNameChars);
            MaterialUse use(model);
            for (const Mesh* part = head; part; part = part->next) {
                ++model.parts;
                countPart(*part, model, use);
            }
            survey.inventory.models.push_back(std::move(model));
        }
        if (head) head->Release();
        return true;
    });
}

} // namespace

SceneStatus checkModels(Survey& survey) {
    SceneStatus status = checkKind<TriangleMesh>(survey);
    if (status == SceneOk) status = checkKind<FurMesh>(survey);
    if (status == SceneOk) status = checkKind<SprMesh>(survey);
    return status;
}

SceneStatus surveyModels(Survey& survey) {
    SceneStatus status = surveyKind<TriangleMesh>(survey, ModelKind::Mesh);
    if (status == SceneOk) status = surveyKind<FurMesh>(survey, ModelKind::Fur);
    if (status == SceneOk) status = surveyKind<SprMesh>(survey, ModelKind::Sprites);
    return status;
}

} // namespace inspector

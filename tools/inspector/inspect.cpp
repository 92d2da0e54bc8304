// One inspection: the client's sweeps in the client's order, then the chain as listed.
#include "client/messages.h"
#include "common/unicode.h"
#include "tools/inspector/survey.h"

namespace inspector {

namespace {

// The client has no message for memory that runs out while the scene is read; it only ends
// the run as failed. This one is the tool's own.
constexpr char kOutOfMemory[] = "tavi-inspect: not enough memory to read the scene.";

// What the client tells the user for a status that ends its load.
std::vector<std::string> clientMessages(SceneStatus status) {
    switch (status) {
    case SceneOk: return {};
    case SceneInvalid:
    case SceneEndOfChunks: return {utf16ToUtf8(messages::kInvalidScene)};
    case SceneBadVersion: return {utf16ToUtf8(messages::kUnknownVersion)};
    case SceneIoError: return {utf16ToUtf8(messages::kIoError)};
    case SceneOutOfMemory: return {kOutOfMemory};
    }
    return {utf16ToUtf8(messages::kInvalidScene)};
}

using Step = SceneStatus (*)(Survey&);

// The sweeps of the client's load. Its second round, which hands cameras and lights to the
// engine, reads the same chunks again and is left out; the models are read whole there, and so
// they are here.
constexpr Step kSteps[] = {surveyTextures, surveyTexMaps, surveyMaterials, surveySettings,
                           surveyCameras,  surveyLights,  checkModels,     surveyModels};

} // namespace

const char* modelKindName(ModelKind kind) {
    switch (kind) {
    case ModelKind::Mesh: return "mesh";
    case ModelKind::Fur: return "fur";
    case ModelKind::Sprites: return "sprites";
    }
    return "mesh";
}

const char* statusName(SceneStatus status) {
    switch (status) {
    case SceneOk: return "ok";
    case SceneInvalid: return "invalid";
    case SceneOutOfMemory: return "out of memory";
    case SceneBadVersion: return "unknown version";
    case SceneIoError: return "io error";
    case SceneEndOfChunks: return "end of chunks";
    }
    return "invalid";
}

uint64_t elementCount(const Inventory& inventory, ModelKind kind) {
    uint64_t total = 0;
    for (const ModelInfo& model : inventory.models)
        if (model.kind == kind) total += model.elements;
    return total;
}

Inspection inspectScene(const std::u16string& path) {
    Inspection inspection;
    Survey survey(inspection.inventory);
    SceneStatus status = survey.reader.open(path.c_str());
    for (Step step : kSteps) {
        if (status != SceneOk || !survey.stopMessages.empty()) break;
        status = step(survey);
    }
    survey.reader.close();

    Verdict& verdict = inspection.verdict;
    verdict.status = status;
    verdict.messages = survey.stopMessages.empty() ? clientMessages(status) : survey.stopMessages;
    if (!verdict.accepted()) return inspection;
    resolveReferences(inspection.inventory, survey);
    listChain(path, inspection.inventory);
    return inspection;
}

} // namespace inspector

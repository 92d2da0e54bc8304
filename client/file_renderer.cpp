#include "client/file_renderer.h"

#include "client/console.h"
#include "client/messages.h"
#include "client/scene_load.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

namespace {

const char16_t kEmptyText[] = u"";

} // namespace

FileRenderer::FileRenderer(const ClientOptions& options)
    : options_(options), progress_(options.scenePath), log_(progress_), assets_(options, log_, *this, *this) {}

FileRenderer::~FileRenderer() {
    assets_.release();
    engine_.shutdown(log_, this);
}

void* FileRenderer::destroy(uint32_t flags) {
    this->~FileRenderer();
    if (flags & 1) ::operator delete(this);
    return this;
}

int32_t FileRenderer::loadScene() {
    log_.resetLevel();
    if (!tracer()) {
        log_.raise(StatusErrors);
        return log_.level();
    }
    // The load holds a whole settings record and a camera: too much for the stack.
    std::make_unique<SceneLoad>(*this)->run();
    return log_.level();
}

int32_t FileRenderer::renderLoaded(int32_t result) {
    if (result != 0 && (options_.ignoreWarnings == 0 || result != 1)) {
        consolePrint(messages::kNotStarted);
        return result;
    }
    int32_t tail = StatusErrors;
    if (ITaviTracer* tracer = engine_.tracer()) {
        // -ignorewarnings only spares the line above: a load with warnings never renders.
        if (log_.level() == StatusOk) {
            assets_.release();
            progress_.beginRendering();
            log_.raise(tracer->render(this));
            progress_.endRendering();
        }
        tail = log_.level();
    }
    return std::max(result, tail);
}

// ---------------------------------------------------------------- names

int32_t* FileRenderer::GetTextureId(int32_t* result, const char16_t* name) {
    *result = assets_.textureId(name);
    return result;
}

int32_t* FileRenderer::GetTexMapId(int32_t* result, const char16_t* name) {
    *result = assets_.texmapId(name);
    return result;
}

int32_t* FileRenderer::GetMaterialId(int32_t* result, const char16_t* name) {
    *result = assets_.materialId(name);
    return result;
}

const char16_t* FileRenderer::GetTextureName(int32_t id) { return assets_.textureName(id); }
const char16_t* FileRenderer::GetTexMapName(int32_t id) { return assets_.texmapName(id); }
const char16_t* FileRenderer::GetMaterialName(int32_t id) { return assets_.materialName(id); }
uint64_t FileRenderer::GetModelId(const char16_t* name) { return assets_.modelHandle(name); }
const char16_t* FileRenderer::GetModelName() { return kEmptyText; }

// ---------------------------------------------------------------- progress and messages

bool FileRenderer::onProgress(const ProgressInfo* info) {
    progress_.show(*info);
    return true;
}

void FileRenderer::reportError(const char16_t* text, int64_t) { log_.error(text); }
void FileRenderer::reportWarning(const char16_t* text, int64_t) { log_.warning(text); }
void FileRenderer::reportInfo(const char16_t* text) { log_.info(text); }

// ---------------------------------------------------------------- inert callbacks
// The engine asks these of every client; this one answers that nothing is going on.

bool FileRenderer::peekCommand(int32_t* command) {
    *command = 0;
    return false;
}

int32_t FileRenderer::queryZero() { return 0; }

bool FileRenderer::peekViewState(ViewState* state) {
    const float minusTen = -10.0f;
    state->words[0] = 0;
    state->words[1] = 0x00FF0101u;
    std::memcpy(&state->words[2], &minusTen, sizeof minusTen);
    std::memcpy(&state->words[3], &minusTen, sizeof minusTen);
    return false;
}

bool FileRenderer::queryInteractive() { return false; }
bool FileRenderer::queryPreview() { return false; }
bool FileRenderer::queryAbort() { return false; }

Value16* FileRenderer::filterValue(Value16* result, const Value16* source) {
    std::memmove(result, source, sizeof(Value16));
    return result;
}

Value16* FileRenderer::defaultValue(Value16* result) {
    std::memset(result, 0, sizeof(Value16));
    return result;
}

bool FileRenderer::acceptSave() { return true; }
bool FileRenderer::acceptOutput() { return true; }

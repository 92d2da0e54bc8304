#include "client/file_renderer.h"

#include "client/console.h"
#include "client/messages.h"
#include "platform/console.h"

#include <cstring>
#include <new>

namespace {

const char16_t kEmptyText[] = u"";

} // namespace

FileRenderer::FileRenderer(ClientOptions* options) : options(options) {}

FileRenderer::~FileRenderer() {
    releaseRecords();
    if (tracer) {
        reportInfo(messages::kClosingRenderer);
        tracer->shutdown(this);
    }
    platform::unloadModule(library);
    errorText.clear();
    warningText.clear();
}

void* FileRenderer::destroy(uint32_t flags) {
    this->~FileRenderer();
    if (flags & 1) ::operator delete(this);
    return this;
}

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

// ---------------------------------------------------------------- messages

// A message during rendering must not share the line of the progress bar.
void FileRenderer::beginMessageLine() {
    if (rendering && !messageShown) consolePrint(u"\n");
}

void FileRenderer::reportMessage(std::u16string& target, const char16_t* text) {
    beginMessageLine();
    std::u16string line = text ? text : kEmptyText;
    line += u'\n';
    target += line;
    // The text is the format: engines rely on "%%" printing as one percent sign.
    consolePrint(line.c_str());
    platform::debugOutput(line.c_str());
    messageShown = true;
    lastStage = kStageRestart;
}

void FileRenderer::reportError(const char16_t* text, int64_t) { reportMessage(errorText, text); }

void FileRenderer::reportWarning(const char16_t* text, int64_t) { reportMessage(warningText, text); }

void FileRenderer::reportInfo(const char16_t* text) {
    beginMessageLine();
    const char16_t* shown = text ? text : kEmptyText;
    consolePrint(u"%ls\n", shown);
    platform::debugOutput(shown);
    platform::debugOutput(u"\n");
    messageShown = true;
    lastStage = kStageRestart;
}

#include "client/run.h"

#include "client/banner.h"
#include "client/client_options.h"
#include "client/console.h"
#include "client/cpu_check.h"
#include "client/file_renderer.h"
#include "client/messages.h"
#include "platform/console.h"
#include "platform/module.h"

#include <algorithm>

namespace {

constexpr size_t kModulePathCapacity = 1024;
// A module path this long leaves no room for the engine's name in the original buffers.
constexpr size_t kModulePathLimit = 384;
constexpr size_t kTitleCapacity = 2048;
constexpr char16_t kEngineName[] = u"TaviTracerAVX";

void setTitle(std::u16string title) {
    if (title.size() >= kTitleCapacity) title.resize(kTitleCapacity - 1);
    platform::setConsoleTitle(title.c_str());
}

size_t boundedLength(const char16_t* text, size_t limit) {
    size_t n = 0;
    while (n < limit && text[n]) ++n;
    return n;
}

bool isPathSeparator(char16_t c) { return c == u'/' || c == u':' || c == u'\\'; }

// The engine is always sought in the executable's own folder.
void replaceFileName(char16_t* path, size_t length) {
    size_t index = length;
    while (index > 0 && !isPathSeparator(path[index - 1])) --index;
    std::u16string name = formatWide(u"%ls%ls", kEngineName, platform::kModuleSuffix);
    copyBounded(path + index, kModulePathCapacity - index, name.c_str());
}

int32_t exitStatusOf(int32_t final) { return final == 0 ? 0 : final == 1 ? 1 : -1; }

void printReport(int32_t final, const std::u16string& errors, const std::u16string& warnings) {
    consolePrint(u"%ls\n", std::u16string(100, u'#'));
    if (final == 0) {
        consolePrint(messages::kFinished);
        return;
    }
    if (final != 1) consolePrint(messages::kFailed);
    consolePrint(messages::kProblems);
    consolePrint(errors.c_str());
    consolePrint(u"\n");
    consolePrint(warnings.c_str());
}

int32_t startEngine(FileRenderer& renderer, char16_t* modulePath) {
    renderer.library = platform::loadModule(modulePath);
    if (!renderer.library) {
        renderer.reportError(messages::kLibraryNotFound, 0);
        return -1;
    }
    void* symbol = platform::findSymbol(renderer.library, TAVI_TRACER_SYMBOL);
    ITaviTracer* tracer = symbol ? *static_cast<ITaviTracer**>(symbol) : nullptr;
    if (!tracer) {
        renderer.reportError(messages::kInvalidLibrary, 0);
        return -1;
    }
    renderer.tracer = tracer;
    tracer->initialise(modulePath);
    return 0;
}

} // namespace

int32_t FileRenderer::renderLoaded(int32_t result) {
    if (result != 0 && (options->ignoreWarnings == 0 || result != 1)) {
        consolePrint(messages::kNotStarted);
        return result;
    }
    int32_t tail = StatusErrors;
    if (tracer) {
        // -ignorewarnings only spares the line above: a load with warnings never renders.
        if (status == StatusOk) {
            releaseRecords();
            rendering = true;
            messageShown = false;
            raiseStatus(tracer->render(this));
            consolePrint(u"\n");
            rendering = false;
        }
        tail = status;
    }
    return std::max(result, tail);
}

int runClient(int argc, const char16_t* const* argv) {
    printVersion();
    if (argc < 2) {
        printUsage();
        return 0;
    }
    std::u16string cpuMessage = missingCpuFeaturesMessage(cpuFeatures().leaf1Ecx, cpuFeatures().leaf7Ebx);
    if (!cpuMessage.empty()) {
        consolePrint(cpuMessage.c_str());
        return -1;
    }
    resetClientOptions(gClientOptions);
    switch (parseCommandLine(argc, argv, gClientOptions)) {
    case ParseOutcome::ExitSuccess: return 0;
    case ParseOutcome::ExitFailure: return -1;
    case ParseOutcome::Run: break;
    }

    char16_t modulePath[kModulePathCapacity];
    platform::executablePath(modulePath, kModulePathCapacity);
    FileRenderer* renderer = new FileRenderer(&gClientOptions);
    size_t length = boundedLength(modulePath, kModulePathLimit);
    if (length >= kModulePathLimit) {
        renderer->destroy(1);
        return -1;
    }
    replaceFileName(modulePath, length);
    if (startEngine(*renderer, modulePath) != 0) {
        renderer->destroy(1);
        return -1;
    }
    setTitle(formatWide(messages::kPreparingTitle, gClientOptions.scenePath));
    gRunStartSeconds = elapsedSeconds();

    int32_t result = renderer->loadScene();
    int32_t final = renderer->renderLoaded(result);
    std::u16string warnings = renderer->warningText;
    std::u16string errors = renderer->errorText;
    renderer->destroy(1);
    printReport(final, errors, warnings);
    return exitStatusOf(final);
}

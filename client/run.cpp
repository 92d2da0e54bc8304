#include "client/run.h"

#include "client/banner.h"
#include "client/client_options.h"
#include "client/console.h"
#include "client/cpu_check.h"
#include "client/file_renderer.h"
#include "client/messages.h"
#include "platform/console.h"


namespace {

constexpr size_t kTitleCapacity = 2048;

void setTitle(std::u16string title) {
    if (title.size() >= kTitleCapacity) title.resize(kTitleCapacity - 1);
    platform::setConsoleTitle(title.c_str());
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

} // namespace

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

    FileRenderer* renderer = new FileRenderer(gClientOptions);
    if (!renderer->startEngine()) {
        renderer->destroy(1);
        return -1;
    }
    setTitle(formatWide(messages::kPreparingTitle, gClientOptions.scenePath));
    renderer->startRun();

    int32_t result = renderer->loadScene();
    int32_t final = renderer->renderLoaded(result);
    std::u16string warnings = renderer->log().warnings();
    std::u16string errors = renderer->log().errors();
    renderer->destroy(1);
    printReport(final, errors, warnings);
    return exitStatusOf(final);
}

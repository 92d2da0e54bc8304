// tavi-inspect [--json] [--chunks] SCENE: what a scene file holds, and whether the client would
// load it. Exit status 0 when it would, 2 with the client's message when it would not, 1 for a
// command line that names no scene.
#include "common/unicode.h"
#include "tools/inspector/inventory.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr char kUsage[] = "usage: tavi-inspect [--json] [--chunks] SCENE\n"
                          "  --json    one JSON object instead of text (always lists every chunk)\n"
                          "  --chunks  list every chunk of the chain\n"
                          "exit status: 0 the client would load the scene, 2 it would not (its message is\n"
                          "printed), 1 a wrong command line\n";

} // namespace

int main(int argc, char** argv) {
    bool json = false, chunks = false;
    const char* scene = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--json") == 0) {
            json = true;
        } else if (std::strcmp(argv[i], "--chunks") == 0) {
            chunks = true;
        } else if (argv[i][0] == '-' || scene) {
            std::fputs(kUsage, stderr);
            return inspector::kExitUsage;
        } else {
            scene = argv[i];
        }
    }
    if (!scene) {
        std::fputs(kUsage, stderr);
        return inspector::kExitUsage;
    }
    const inspector::Inspection inspection = inspector::inspectScene(utf8ToUtf16(scene));
    const std::string report = json ? inspector::jsonReport(inspection) : inspector::textReport(inspection, chunks);
    std::fputs(report.c_str(), stdout);
    return inspection.verdict.accepted() ? inspector::kExitAccepted : inspector::kExitRejected;
}

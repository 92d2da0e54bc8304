#include "engines/recording/recording_script.h"

#include <fstream>
#include <sstream>

int32_t RecordingScript::resultOf(const std::string& operation) const {
    auto found = results.find(operation);
    return found == results.end() ? 0 : found->second;
}

namespace {

std::string restOfLine(std::istringstream& in) {
    std::string rest;
    std::getline(in >> std::ws, rest);
    return rest;
}

} // namespace

RecordingScript readRecordingScript(const std::string& path) {
    RecordingScript script;
    std::ifstream file(path);
    std::string line;
    while (std::getline(file, line)) {
        std::istringstream in(line);
        std::string word;
        if (!(in >> word) || word[0] == '#') continue;
        RenderAction action{};
        if (word == "result") {
            std::string operation;
            int32_t level = 0;
            if (in >> operation >> level) script.results[operation] = level;
            continue;
        } else if (word == "progress") {
            action.kind = RenderAction::Kind::Progress;
            if (!(in >> action.stage >> action.fraction >> action.passes)) continue;
        } else if (word == "error" || word == "warning" || word == "info") {
            action.kind = word == "error"     ? RenderAction::Kind::Error
                          : word == "warning" ? RenderAction::Kind::Warning
                                              : RenderAction::Kind::Info;
            action.text = restOfLine(in);
        } else if (word == "sleep") {
            action.kind = RenderAction::Kind::Sleep;
            if (!(in >> action.milliseconds)) continue;
        } else {
            continue;
        }
        script.renderActions.push_back(action);
    }
    return script;
}

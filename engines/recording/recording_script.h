// What a test tells the recording engine to do: levels to answer with, and what to report
// while rendering.
#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <vector>

struct RenderAction {
    enum class Kind { Progress, Error, Warning, Info, Sleep } kind;
    int32_t stage = 0;
    float fraction = 0;
    int32_t passes = 0;
    int32_t milliseconds = 0;
    std::string text; // UTF-8
};

struct RecordingScript {
    std::map<std::string, int32_t> results; // operation -> level it answers with
    std::vector<RenderAction> renderActions;

    int32_t resultOf(const std::string& operation) const;
};

// A missing file is an empty script; unknown lines are ignored, so that old scripts keep working.
RecordingScript readRecordingScript(const std::string& path);

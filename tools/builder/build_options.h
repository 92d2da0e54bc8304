// The choices of one tavi-build run, as the command line gives them.
#pragma once
#include <cstdint>
#include <optional>
#include <string>

namespace builder {

struct BuildOptions {
    std::string input;
    std::string output;
    int32_t width = 960, height = 540;
    int32_t passes = 128;
    int32_t framesPerSecond = 0;
    std::string outputName; // empty: the output file's stem
    std::string outputPath = "out";
    bool saveJpeg = true, saveTiff = false, saveExr = false;
    // Parts of a big mesh hold at most this many triangles.
    uint32_t maxPartTriangles = 1u << 20;
    // Frames the model from this side when set, even over a camera of the file.
    std::optional<std::string> view;
    bool sun = false, sky = false;    // added whatever the file holds
    bool defaultLights = true;        // sun and sky when the file has no light
    std::string documentsFolder;      // empty: no documents
    bool progress = true;             // on stderr, for large models
};

} // namespace builder

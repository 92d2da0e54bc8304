// Writing the film to the files the settings ask for: 8-bit JPEG and TIFF through the tone
// operator, linear half-float EXR with albedo, normal and depth layers, all through
// OpenImageIO. Files go to a temporary name first and are renamed when complete.
#pragma once
#include "engines/preview/output/film.h"
#include "scene/records.h"

#include <string>
#include <vector>

namespace preview {

struct OutputPlan {
    std::string folder;   // UTF-8; created when missing
    std::string baseName; // without extension; holds the frame number when the scene is animated
    bool jpeg = false, tiff = false, exr = false;
    ToneOperatorRecord tone{};
};

// From the settings record: OutputPath, OutputName, the Save flags and the ToneOperator
// section; `animated` adds the frame number to the name (name.0007).
OutputPlan planOutput(const SettingsRecord& settings, bool animated);

struct WrittenImage {
    std::string path; // UTF-8
    bool ok = false;
    std::string error;
};

// Writes every format of the plan, each under a temporary name renamed into place once whole,
// so that a periodic save during a long render never leaves a torn file. The full image is
// written; pixels outside the region are black.
std::vector<WrittenImage> writeImages(const OutputPlan& plan, const Film& film);

// The display transform of the 8-bit outputs for one linear colour: exposure, the operator
// (ACES, Reinhard, filmic, disabled), saturation and gamma (sRGB when no gamma is given).
Color toneMap(const ToneOperatorRecord& tone, Color linear);

} // namespace preview

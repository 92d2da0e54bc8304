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
    std::string folder;   // UTF-8; created when missing; empty: the working folder
    std::string baseName; // without extension; holds the frame number when the scene is animated
    bool jpeg = false, tiff = false, exr = false;
    ToneOperatorRecord tone{};
};

// From the settings record: OutputPath, OutputName (kDefaultOutputName when empty), the Save
// flags (none set: JPEG) and the ToneOperator section; `animated` adds the frame number to the
// name (name.0007).
OutputPlan planOutput(const SettingsRecord& settings, bool animated);
constexpr const char* kDefaultOutputName = "image";

struct WrittenImage {
    std::string path; // UTF-8
    bool ok = false;
    std::string error; // OpenImageIO's or the file system's text when !ok
};

// Writes every format of the plan (in the order JPEG, TIFF, EXR), each under a temporary name
// (the final name plus ".tmp") renamed into place once whole, so that a periodic save during
// a long render never leaves a torn file. The full image is written; pixels outside the region
// are black. The EXR is one part with the channels R, G, B, albedo.R/G/B, N.X/Y/Z and Z, its
// data window the whole image. The same film gives the same bytes: no time stamps are written.
std::vector<WrittenImage> writeImages(const OutputPlan& plan, const Film& film);

// The display transform of the 8-bit outputs for one linear colour, in order: exposure in stops
// (ApplyExposure); the operator, per channel: 1 extended Reinhard whose ReinhardFactor is the
// white point, the linear value mapped to 1 (0 or less: plain x / (1 + x)), 2 a fitted ACES
// curve, 3 the filmic toe and shoulder curve (defaults when its shape fields are all 0; a
// Filmic_gamma of 0 is 1), 0 and 4 none; Saturation around the luminance (ApplySaturation);
// 1 / Gamma as the power (ApplyGamma with Gamma > 0), otherwise the sRGB curve; then a clamp
// to [0, 1]. A non-finite colour is black. For many pixels, build a ToneMapper once instead.
Color toneMap(const ToneOperatorRecord& tone, Color linear);

} // namespace preview

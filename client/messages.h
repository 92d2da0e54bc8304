// Texts the client shows, exactly as users and scripts know them.
#pragma once

namespace messages {

constexpr char16_t kLibraryNotFound[] = u"Error: Tavi Tracer AVX library not found!";
constexpr char16_t kInvalidLibrary[] = u"Error: Invalid Tavi Tracer AVX library!";
constexpr char16_t kClosingRenderer[] = u"Closing renderer ...";
constexpr char16_t kNotStarted[] = u"Rendering not started because of errors or warnings.\n";
constexpr char16_t kFinished[] = u"Rendering finished without errors.\n";
constexpr char16_t kFailed[] = u"Rendering failed!\n\n";
constexpr char16_t kProblems[] = u"The errors and problems:\n\n";
constexpr char16_t kRendering[] = u"Rendering ...\n";
constexpr char16_t kStatistics[] = u"Calculate statistics ...\n";
constexpr char16_t kPreparingTitle[] = u"TaviClient [preparing...]: %s";
constexpr char16_t kEstimatingTitle[] = u"TaviClient [estimating...]: %s";
constexpr char16_t kRenderTitle[] =
    u"TaviClient %.1f%% done [%i passes, %i:%02i:%02i elapsed, %i:%02i:%02i left]: %s";

constexpr char16_t kInvalidScene[] = u"Error: invalid scene file.";
constexpr char16_t kUnknownVersion[] = u"Error: unknown version of scene file.";
constexpr char16_t kIoError[] = u"Error: IO error.";

constexpr char16_t kDuplicateTexture[] = u"Error: two textures with same name %ls, but different ID detected.";
constexpr char16_t kDuplicateTexMap[] = u"Error: two texmaps with same name %ls, but different ID detected.";
constexpr char16_t kDuplicateMaterial[] = u"Error: two materials with same name %ls, but different ID detected.";
constexpr char16_t kTexMapRecursion[] = u"Error: texmap %ls recurrently referenced by itself.";
constexpr char16_t kMaterialRecursion[] = u"Error: material %ls recurrently referenced by itself.";
constexpr char16_t kSettingsDocumentFailed[] =
    u"Error: the custom settings specified, but the file could not be loaded.";
constexpr char16_t kCameraDocumentFailed[] = u"Error: XML camera file specified, but is not found.";
constexpr char16_t kForcingFormats[] = u"Warning: Forcing Jpeg, TIFF and EXR!\n";
constexpr char16_t kToneOperatorSwitched[] = u"Warning: the external tonemap operator specified! Switched to ACES.\n";

} // namespace messages

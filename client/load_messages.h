// Texts of the load driver, exactly as users and scripts know them.
#pragma once
#include "client/messages.h"

namespace messages {

constexpr char16_t kDuplicateTexture[] = u"Error: two textures with same name %ls, but different ID detected.";
constexpr char16_t kDuplicateTexMap[] = u"Error: two texmaps with same name %ls, but different ID detected.";
constexpr char16_t kDuplicateMaterial[] = u"Error: two materials with same name %ls, but different ID detected.";
constexpr char16_t kSettingsDocumentFailed[] =
    u"Error: the custom settings specified, but the file could not be loaded.";
constexpr char16_t kCameraDocumentFailed[] = u"Error: XML camera file specified, but is not found.";
constexpr char16_t kForcingFormats[] = u"Warning: Forcing Jpeg, TIFF and EXR!\n";
constexpr char16_t kToneOperatorSwitched[] = u"Warning: the external tonemap operator specified! Switched to ACES.\n";

} // namespace messages

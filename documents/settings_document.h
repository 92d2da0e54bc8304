// The settings document (root TaviSettings): read over the SettingsRecord that the scene file
// gave, after its settings chunk and before the command-line overrides.
#pragma once
#include "scene/records.h"

class ITaviNameInterface;

// Reads the document at `path` (taken as it stands, no folder or extension added) over
// `record`: the ten render sections, then ToneOperator and AOV. What each kind of key does when
// the document leaves it out is told in settings_fields.h; a document without AOV switches
// the scene's AOV output off. `names` resolves StartingVolumetricMaterial. False when the file
// can't be opened or doesn't parse, with the record untouched; true otherwise, even when the
// root is missing.
bool ApplySettingsDocument(SettingsRecord* record, const char16_t* path, ITaviNameInterface* names);

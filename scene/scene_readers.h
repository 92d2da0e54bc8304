// The typed record readers. Each call returns the next record of its kind along the chain:
// `offset` starts at 0 for a pass, and on return names the link after the record. A caller
// loops while the result is SceneOk and `offset` isn't 0; SceneEndOfChunks ends a scan.
#pragma once
#include "scene/records.h"
#include "scene/scene_file_reader.h"
#include "scene/temp_objects.h"

SceneStatus readTextureFile(SceneFileReader& reader, TextureFileRecord& record, uint64_t& offset);
// The record owns its pixel block afterwards; releaseTextureData gives it back.
SceneStatus readTextureData(SceneFileReader& reader, TextureDataRecord& record, uint64_t& offset);
void releaseTextureData(TextureDataRecord& record);

SceneStatus readTexMap(SceneFileReader& reader, TexMapRecord& record, uint64_t& offset);
// A volumetric material may come back holding a volume cache; releaseMaterial destroys it.
SceneStatus readMaterial(SceneFileReader& reader, MaterialRecord& record, uint64_t& offset);
void releaseMaterial(MaterialRecord& record);

// Zeroes the record and sets every default.
void initSettings(SettingsRecord& record);
// Reads the first settings chunk of the chain over the defaults; later ones are never looked at.
SceneStatus readSettings(SceneFileReader& reader, SettingsRecord& record, uint64_t& offset);

// The camera and its path chunk. The camera must have been constructed.
SceneStatus readCamera(SceneFileReader& reader, TempCamera& camera, uint64_t& offset);
// The light and its path chunk. The light must have been constructed.
SceneStatus readLight(SceneFileReader& reader, TempLight& light, uint64_t& offset);

// Makes `target` the camera `source` is: the plain fields behind the object's header, and deep
// copies of the three tracks. The tracks `target` held before are released. SceneOutOfMemory
// when a copy cannot be allocated; that track is then left empty.
SceneStatus assignCamera(TempCamera& target, const TempCamera& source);

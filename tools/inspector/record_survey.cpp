// Textures, texture maps, materials and the settings, read as the client's registration does.
#include "client/messages.h"
#include "client/sweep.h"
#include "common/unicode.h"
#include "common/wide_format.h"
#include "documents/aov_tone_sections.h"
#include "documents/materials/material_types.h"
#include "documents/texmaps/texmap_types.h"
#include "documents/xml_value_codec.h"
#include "scene/scene_readers.h"
#include "tools/inspector/survey.h"

#include <cstring>
#include <memory>

namespace inspector {

namespace {

// Registers a record as the client does. False when the name clashes: the client then reports
// the clash, calls the scene invalid and stops.
bool registerRecord(Survey& survey, NameRegistry& registry, const char16_t* name, int32_t id,
                    const char16_t* clashMessage, bool& added) {
    const std::u16string text = wideTextOf(name, kNameChars);
    const NameRegistry::Outcome outcome = registry.add(text, id);
    added = outcome == NameRegistry::Outcome::Added;
    if (outcome != NameRegistry::Outcome::Clash) return true;
    survey.stopMessages.push_back(utf16ToUtf8(formatWide(clashMessage, text)));
    survey.stopMessages.push_back(utf16ToUtf8(messages::kInvalidScene));
    return false;
}

std::string typeWordOf(const TypeDescriptor* type) { return type && type->word ? type->word : ""; }

std::optional<std::array<uint32_t, 3>> volumeGridOf(MaterialRecord& record) {
    if (record.type != kVolumeMaterialType) return std::nullopt;
    IPhxCache* cache;
    std::memcpy(&cache, reinterpret_cast<uint8_t*>(&record) + kVolumeCacheOffset, sizeof cache);
    if (!cache) return std::nullopt;
    std::array<uint32_t, 3> grid{};
    cache->GetGridSize(grid.data());
    return grid;
}

} // namespace

SceneStatus surveyTextures(Survey& survey) {
    SceneStatus status = sweep([&](uint64_t& offset, SceneStatus& result) {
        TextureFileRecord record;
        result = readTextureFile(survey.reader, record, offset);
        if (result != SceneOk) return false;
        bool added = false;
        if (!registerRecord(survey, survey.textures, record.name, record.id, messages::kDuplicateTexture, added))
            return false;
        if (added) {
            TextureInfo info;
            info.id = record.id;
            info.name = textOf(record.name, kNameChars);
            info.path = textOf(record.path, kPathChars);
            survey.inventory.textures.push_back(info);
        }
        return true;
    });
    if (status != SceneOk || !survey.stopMessages.empty()) return status;
    return sweep([&](uint64_t& offset, SceneStatus& result) {
        TextureDataRecord record{};
        result = readTextureData(survey.reader, record, offset);
        releaseTextureData(record);
        if (result != SceneOk) return false;
        bool added = false;
        if (!registerRecord(survey, survey.textures, record.name, record.id, messages::kDuplicateTexture, added))
            return false;
        if (added) {
            TextureInfo info;
            info.id = record.id;
            info.name = textOf(record.name, kNameChars);
            info.embedded = true;
            info.width = record.width;
            info.height = record.height;
            info.pixelType = record.pixelType;
            survey.inventory.textures.push_back(info);
        }
        return true;
    });
}

SceneStatus surveyTexMaps(Survey& survey) {
    auto record = std::make_unique<TexMapRecord>();
    return sweep([&](uint64_t& offset, SceneStatus& result) {
        record->id = -1;
        result = readTexMap(survey.reader, *record, offset);
        if (result != SceneOk) return false;
        bool added = false;
        if (!registerRecord(survey, survey.texMaps, record->Name, record->id, messages::kDuplicateTexMap, added))
            return false;
        if (added) {
            const TypeDescriptor* type = findTexMapType(record->type);
            RecordInfo info;
            info.id = record->id;
            info.name = textOf(record->Name, kNameChars);
            info.type = record->type;
            info.typeWord = typeWordOf(type);
            info.references = tableReferences(type, reinterpret_cast<const uint8_t*>(record.get()), sizeof *record);
            survey.inventory.texMaps.push_back(info);
        }
        return true;
    });
}

SceneStatus surveyMaterials(Survey& survey) {
    auto record = std::make_unique<MaterialRecord>();
    return sweep([&](uint64_t& offset, SceneStatus& result) {
        record->id = -1;
        result = readMaterial(survey.reader, *record, offset);
        bool goOn = result == SceneOk;
        bool added = false;
        if (goOn)
            goOn = registerRecord(survey, survey.materials, record->Name, record->id, messages::kDuplicateMaterial,
                                  added);
        if (added) {
            const TypeDescriptor* type = findMaterialType(record->type);
            RecordInfo info;
            info.id = record->id;
            info.name = textOf(record->Name, kNameChars);
            info.type = record->type;
            info.typeWord = typeWordOf(type);
            info.references = tableReferences(type, reinterpret_cast<const uint8_t*>(record.get()), sizeof *record);
            info.volumeGrid = volumeGridOf(*record);
            survey.inventory.materials.push_back(info);
        }
        releaseMaterial(*record);
        return goOn;
    });
}

// The first settings chunk counts; a scene without one is unusable.
SceneStatus surveySettings(Survey& survey) {
    auto record = std::make_unique<SettingsRecord>();
    initSettings(*record);
    uint64_t offset = 0;
    const SceneStatus status = readSettings(survey.reader, *record, offset);
    if (status != SceneOk) return status;
    const SettingsRecord& s = *record;
    SettingsInfo info;
    info.imageWidth = s.ImageSizeX;
    info.imageHeight = s.ImageSizeY;
    info.regionX = s.RegionX;
    info.regionY = s.RegionY;
    info.regionWidth = s.RegionSizeX;
    info.regionHeight = s.RegionSizeY;
    info.passes = s.MaxIterations;
    info.threads = s.MaxThreads;
    info.outputPath = textOf(s.OutputPath, kPathChars);
    info.outputName = textOf(s.OutputName, kNameChars);
    info.jpeg = s.SaveJPEG != 0;
    info.tiff = s.SaveTIFF != 0;
    info.exr = s.SaveEXR != 0;
    info.toneOperator = s.ToneOperator.OperatorType;
    if (info.toneOperator < XmlWordCount(kToneOperatorWords))
        info.toneOperatorWord = kToneOperatorWords[info.toneOperator];
    info.aovChannels = s.NumChannels;
    if (s.StartingVolumetricMaterial != -1)
        info.startingMedium = unresolved("StartingVolumetricMaterial", "material", s.StartingVolumetricMaterial);
    survey.inventory.settings = info;
    return status;
}

} // namespace inspector

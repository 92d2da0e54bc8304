#include "client/scene_load.h"

#include "client/file_renderer.h"
#include "client/load_messages.h"
#include "client/sweep.h"
#include "common/hash.h"
#include "common/wide_format.h"
#include "documents/camera_document.h"
#include "documents/settings_document.h"
#include "scene/scene_readers.h"

#include <cstring>

namespace {

uint64_t idKey(int32_t id) { return static_cast<uint64_t>(static_cast<int64_t>(id)); }

// Light type 4 carries a second texmap reference at the start of its own fields.
int32_t secondTexMapOf(const LightRecord& light) {
    int32_t id;
    std::memcpy(&id, reinterpret_cast<const uint8_t*>(&light) + kLightSecondTexMapOffset, sizeof id);
    return id;
}

bool allZero(const SettingsRecord& s) {
    return s.RegionX == 0 && s.RegionY == 0 && s.RegionSizeX == 0 && s.RegionSizeY == 0;
}

} // namespace

void SceneLoad::raiseLevel(int32_t level) { renderer.raiseStatus(level); }

// ---------------------------------------------------------------- registration

// A record whose name is known under the same id is the same record; under another id the
// scene is broken. A new one is keyed by its name and by its id.
bool SceneLoad::registerEntry(void* entry, const char16_t* name, int32_t id, const Registry& registry) {
    FileRenderer& r = renderer;
    int32_t knownId = (r.*registry.find)(name, true);
    if (knownId != -1 && knownId == id) return false;
    if (knownId != -1) {
        r.reportError(formatWide(registry.duplicateMessage, name).c_str(), 0);
        r.reportError(messages::kInvalidScene, 0);
        stop(StatusErrors);
        return false;
    }
    registry.nextId->raisePast(id);
    if (!registry.names->insert(nameKey(name), entry) || !registry.ids->insert(idKey(id), entry))
        stop(StatusOutOfMemory);
    return true;
}

namespace {

// How each kind of registry node is read from its chunk, named, and given back unused.
SceneStatus readInto(SceneFileReader& reader, TextureFileEntry& entry, uint64_t& offset) {
    entry.kind = TextureKindFile;
    SceneStatus status = readTextureFile(reader, entry.record, offset);
    entry.id = entry.record.id;
    return status;
}
SceneStatus readInto(SceneFileReader& reader, TextureDataEntry& entry, uint64_t& offset) {
    entry.kind = TextureKindData;
    SceneStatus status = readTextureData(reader, entry.record, offset);
    entry.id = entry.record.id;
    return status;
}
SceneStatus readInto(SceneFileReader& reader, TexMapEntry& entry, uint64_t& offset) {
    entry.record.id = -1;
    return readTexMap(reader, entry.record, offset);
}
SceneStatus readInto(SceneFileReader& reader, MaterialEntry& entry, uint64_t& offset) {
    entry.record.id = -1;
    return readMaterial(reader, entry.record, offset);
}

const char16_t* nameOf(const TextureFileEntry& e) { return e.record.name; }
const char16_t* nameOf(const TextureDataEntry& e) { return e.record.name; }
const char16_t* nameOf(const TexMapEntry& e) { return e.record.Name; }
const char16_t* nameOf(const MaterialEntry& e) { return e.record.Name; }

int32_t idOf(const TextureFileEntry& e) { return e.id; }
int32_t idOf(const TextureDataEntry& e) { return e.id; }
int32_t idOf(const TexMapEntry& e) { return e.record.id; }
int32_t idOf(const MaterialEntry& e) { return e.record.id; }

void discard(TextureFileEntry&) {}
void discard(TextureDataEntry& e) { releaseTextureData(e.record); }
void discard(TexMapEntry&) {}
void discard(MaterialEntry& e) { releaseMaterial(e.record); }

} // namespace

template <class Entry>
SceneStatus SceneLoad::registerAll(Entry*& list, const Registry& registry) {
    return sweep([&](uint64_t& offset, SceneStatus& status) {
        auto* entry = newZeroedEntry<Entry>();
        status = readInto(reader, *entry, offset);
        bool kept = status == SceneOk && registerEntry(entry, nameOf(*entry), idOf(*entry), registry);
        if (kept) {
            entry->next = list;
            list = entry;
        } else {
            discard(*entry);
            ::operator delete(entry);
        }
        return !stopped;
    });
}

// The first settings chunk counts; a scene without one is unusable.
SceneStatus SceneLoad::readSceneSettings() {
    uint64_t offset = 0;
    initSettings(settings);
    return readSettings(reader, settings, offset);
}

bool SceneLoad::applySettingsDocument() {
    const std::u16string& document = renderer.options->settingsFile;
    if (!document.empty()) return ApplySettingsDocument(&settings, document.c_str(), &renderer);
    // A look-up there and back: in this state it loads nothing and leaves the registries alone.
    if (settings.StartingVolumetricMaterial != -1) {
        int32_t id;
        renderer.GetMaterialId(&id, renderer.GetMaterialName(settings.StartingVolumetricMaterial));
    }
    return true;
}

// The command line wins over the scene and the settings document.
void SceneLoad::applyCommandLine() {
    const ClientOptions& o = *renderer.options;
    settings.flag8B98 = 1;
    if (!o.cachePath.empty()) copyBounded(settings.CachePath, kPathChars, o.cachePath.c_str());
    if (!o.outputPath.empty()) copyBounded(settings.OutputPath, kPathChars, o.outputPath.c_str());
    if (!o.outputName.empty()) copyBounded(settings.OutputName, kNameChars, o.outputName.c_str());
    if (o.numPasses >= 0) settings.MaxIterations = o.numPasses;
    if (o.numThreads >= 0) {
        settings.MaxThreads = o.numThreads;
        settings.NotCheckMaxThreads = 1;
    }
    if (o.noAffinity >= 0) settings.NoAffinityMask = static_cast<uint32_t>(o.noAffinity);
    if (o.affinity >= 0) settings.AffinityShift = o.affinity;
    if (o.frame >= 0) settings.FrameNumber = o.frame;
    if (o.fps >= 0) settings.FramesPerSecond = o.fps;
    if (o.imageSizeX > 0 && o.imageSizeY > 0) {
        settings.ImageSizeX = o.imageSizeX;
        settings.ImageSizeY = o.imageSizeY;
    }
    // A region's origin alone never takes effect.
    if (o.regionSizeX > 0 && o.regionSizeY > 0) {
        settings.RegionX = o.regionX;
        settings.RegionY = o.regionY;
        settings.RegionSizeX = o.regionSizeX;
        settings.RegionSizeY = o.regionSizeY;
    }
    settings.flag8BA0 = 0;
    settings.flag8B88 = 0;
    // The options add formats and never take one away.
    settings.SaveJPEG |= static_cast<uint32_t>(o.saveJpeg);
    settings.SaveTIFF |= static_cast<uint32_t>(o.saveTiff);
    if (!settings.SaveJPEG && !settings.SaveEXR && !settings.SaveTIFF) {
        settings.SaveJPEG = settings.SaveTIFF = settings.SaveEXR = 1;
        renderer.reportWarning(messages::kForcingFormats, 0);
    }
    if (settings.ToneOperator.OperatorType == 0) {
        renderer.reportWarning(messages::kToneOperatorSwitched, 0);
        settings.ToneOperator.OperatorType = 2;
    }
}

void SceneLoad::lookUpTexMap(int32_t id) {
    if (id == -1) return;
    int32_t found;
    renderer.GetTexMapId(&found, renderer.GetTexMapName(id));
}

SceneStatus SceneLoad::registerCameras() {
    return sweep([&](uint64_t& offset, SceneStatus& status) {
        TempCamera camera;
        status = readCamera(reader, camera, offset);
        if (status != SceneOk) return false;
        bool goOn = true;
        if (camera.cameraRole == 0) {
            const std::u16string& document = renderer.options->cameraFile;
            // A document that fails ends the sweep after this camera; its level stops the
            // transfer right after beginScene.
            if (!document.empty() && !ApplyCameraDocument(&camera, document.c_str(), &renderer)) {
                renderer.reportError(messages::kCameraDocumentFailed, 0);
                raiseLevel(StatusUnusable);
                goOn = false;
            }
            // The last camera of role 0 is the one kept for the transfer.
            status = assignCamera(renderer.tempCamera, camera);
        }
        lookUpTexMap(camera.camera.DistortionMap);
        lookUpTexMap(camera.camera.ApertureMap);
        return goOn;
    });
}

SceneStatus SceneLoad::registerLights() {
    return sweep([&](uint64_t& offset, SceneStatus& status) {
        TempLight light;
        status = readLight(reader, light, offset);
        if (status != SceneOk) return false;
        lookUpTexMap(light.light.texMap);
        if (light.light.type == 4) lookUpTexMap(secondTexMapOf(light.light));
        return true;
    });
}

// ---------------------------------------------------------------- transfer

SceneStatus SceneLoad::handOverCameras() {
    return sweep([&](uint64_t& offset, SceneStatus& status) {
        TempCamera camera;
        status = readCamera(reader, camera, offset);
        if (status != SceneOk) return false;
        if (camera.cameraRole == 0) status = assignCamera(camera, renderer.tempCamera);
        if (camera.camera.DistortionMap != -1) renderer.GetTexMapName(camera.camera.DistortionMap);
        if (camera.camera.ApertureMap != -1) renderer.GetTexMapName(camera.camera.ApertureMap);
        renderer.raiseStatus(renderer.tracer->addCamera(&camera));
        return true;
    });
}

SceneStatus SceneLoad::handOverLights() {
    return sweep([&](uint64_t& offset, SceneStatus& status) {
        TempLight light;
        status = readLight(reader, light, offset);
        if (status != SceneOk) return false;
        if (light.light.texMap != -1) renderer.GetTexMapName(light.light.texMap);
        if (light.light.type == 4 && secondTexMapOf(light.light) != -1)
            renderer.GetTexMapName(secondTexMapOf(light.light));
        renderer.raiseStatus(renderer.tracer->addLight(&light));
        return true;
    });
}

#define TAVI_SWEEP(call)                                                                                     \
    do {                                                                                                     \
        SceneStatus swept = (call);                                                                          \
        if (swept != SceneOk || stopped) return swept;                                                       \
    } while (0)

SceneStatus SceneLoad::run() {
    FileRenderer& r = renderer;
    const Registry textures{&FileRenderer::findOrCreateTexture, &r.textureNames, &r.textureIds, &r.nextTextureId,
                            messages::kDuplicateTexture};
    const Registry texmaps{&FileRenderer::findOrCreateTexMap, &r.texmapNames, &r.texmapIds, &r.nextTexmapId,
                           messages::kDuplicateTexMap};
    const Registry materials{&FileRenderer::findOrCreateMaterial, &r.materialNames, &r.materialIds,
                             &r.nextMaterialId, messages::kDuplicateMaterial};
    TAVI_SWEEP(registerAll(r.textureFiles, textures));
    TAVI_SWEEP(registerAll(r.textureData, textures));
    TAVI_SWEEP(registerAll(r.texmapRecords, texmaps));
    TAVI_SWEEP(registerAll(r.materialRecords, materials));
    TAVI_SWEEP(readSceneSettings());
    if (!applySettingsDocument()) {
        renderer.reportError(messages::kSettingsDocumentFailed, 0);
        renderer.reportError(messages::kInvalidScene, 0);
        stop(StatusUnusable);
        return SceneOk;
    }
    applyCommandLine();
    TAVI_SWEEP(registerCameras());
    TAVI_SWEEP(registerLights());
    TAVI_SWEEP(registerGeometry());

    renderer.resolving = true;
    if (settings.StartingVolumetricMaterial != -1) renderer.GetMaterialName(settings.StartingVolumetricMaterial);
    if (allZero(settings)) {
        settings.RegionSizeX = settings.ImageSizeX;
        settings.RegionSizeY = settings.ImageSizeY;
    }
    ITaviTracer* tracer = renderer.tracer;
    renderer.raiseStatus(tracer->beginScene(&settings, &renderer, 0));
    if (renderer.status >= StatusErrors) return SceneOk;
    for (int32_t i = 0; i < renderer.options->texturePathCount; ++i)
        renderer.raiseStatus(tracer->addTextureFolder(renderer.options->texturePaths[i].c_str()));
    TAVI_SWEEP(handOverCameras());
    TAVI_SWEEP(handOverLights());
    renderer.raiseStatus(tracer->endLights());
    TAVI_SWEEP(handOverGeometry());
    renderer.raiseStatus(tracer->endGeometry());
    renderer.raiseStatus(tracer->endScene(&renderer));
    return SceneOk;
}

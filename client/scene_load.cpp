#include "client/scene_load.h"

#include "client/file_renderer.h"
#include "client/messages.h"
#include "client/sweep.h"
#include "common/wide_format.h"
#include "documents/camera_document.h"
#include "documents/settings_document.h"
#include "scene/scene_readers.h"

#include <cstring>

namespace {

// Light type 4 carries a second texmap reference at the start of its own fields.
int32_t secondTexMapOf(const LightRecord& light) {
    int32_t id;
    std::memcpy(&id, reinterpret_cast<const uint8_t*>(&light) + kLightSecondTexMapOffset, sizeof id);
    return id;
}

// What a reader's last status means to the user, and the level it costs at least.
void reportSceneStatus(MessageLog& log, SceneStatus status) {
    switch (status) {
    case SceneOk: break;
    case SceneInvalid: log.fail(messages::kInvalidScene, StatusErrors); break;
    case SceneOutOfMemory: log.raise(StatusOutOfMemory); break;
    case SceneBadVersion: log.fail(messages::kUnknownVersion, StatusErrors); break;
    case SceneIoError: log.fail(messages::kIoError, StatusUnusable); break;
    case SceneEndOfChunks: log.fail(messages::kInvalidScene, StatusUnusable); break;
    }
}

bool allZero(const SettingsRecord& s) {
    return s.RegionX == 0 && s.RegionY == 0 && s.RegionSizeX == 0 && s.RegionSizeY == 0;
}

} // namespace

SceneLoad::SceneLoad(FileRenderer& renderer)
    : renderer_(renderer), options_(renderer.options()), assets_(renderer.assets()), log_(renderer.log()),
      tracer_(renderer.tracer()) {}

void SceneLoad::run() {
    assets_.endResolution();
    SceneStatus status = reader_.open(options_.scenePath.c_str());
    if (status == SceneOk) status = sweepChain();
    if (!stopped_) reportSceneStatus(log_, status);
    assets_.endResolution();
    reader_.close();
}

// ---------------------------------------------------------------- adoption

namespace {

SceneStatus readTextureFileNode(SceneFileReader& reader, TextureEntry& entry, uint64_t& offset) {
    entry.kind = TextureKind::File;
    SceneStatus status = readTextureFile(reader, entry.file, offset);
    entry.id = entry.file.id;
    return status;
}

SceneStatus readTextureDataNode(SceneFileReader& reader, TextureEntry& entry, uint64_t& offset) {
    entry.kind = TextureKind::Data;
    SceneStatus status = readTextureData(reader, entry.data, offset);
    entry.id = entry.data.id;
    return status;
}

SceneStatus readTexMapNode(SceneFileReader& reader, TexMapEntry& entry, uint64_t& offset) {
    entry.record->id = -1;
    return readTexMap(reader, *entry.record, offset);
}

SceneStatus readMaterialNode(SceneFileReader& reader, MaterialEntry& entry, uint64_t& offset) {
    entry.record->id = -1;
    return readMaterial(reader, *entry.record, offset);
}

} // namespace

// A record whose name is known under the same id is the same record; under another id the
// scene is broken.
template <class Kind, class Read>
SceneStatus SceneLoad::adoptAll(Registry<Kind>& registry, Read read, const char16_t* duplicateMessage) {
    return sweep([&](uint64_t& offset, SceneStatus& status) {
        auto* entry = registry.newEntry();
        status = read(reader_, *entry, offset);
        const Adoption adoption = status == SceneOk ? registry.adopt(entry) : Adoption::Known;
        switch (adoption) {
        case Adoption::Added: break;
        case Adoption::NoMemory: stop(StatusOutOfMemory); break;
        case Adoption::Clash:
            log_.error(formatWide(duplicateMessage, Kind::name(*entry)).c_str());
            log_.error(messages::kInvalidScene);
            stop(StatusErrors);
            registry.discard(entry);
            break;
        case Adoption::Known: registry.discard(entry); break;
        }
        return !stopped_;
    });
}

// The first settings chunk counts; a scene without one is unusable.
SceneStatus SceneLoad::readSceneSettings() {
    uint64_t offset = 0;
    initSettings(settings_);
    return readSettings(reader_, settings_, offset);
}

bool SceneLoad::applySettingsDocument() {
    const std::u16string& document = options_.settingsFile;
    if (!document.empty()) return ApplySettingsDocument(&settings_, document.c_str(), &renderer_);
    // A look-up there and back: in this state it loads nothing and leaves the registries alone.
    if (settings_.StartingVolumetricMaterial != -1) {
        int32_t id;
        renderer_.GetMaterialId(&id, renderer_.GetMaterialName(settings_.StartingVolumetricMaterial));
    }
    return true;
}

// The command line wins over the scene and the settings document.
void SceneLoad::applyCommandLine() {
    const ClientOptions& o = options_;
    settings_.flag8B98 = 1;
    if (!o.cachePath.empty()) copyBounded(settings_.CachePath, kPathChars, o.cachePath.c_str());
    if (!o.outputPath.empty()) copyBounded(settings_.OutputPath, kPathChars, o.outputPath.c_str());
    if (!o.outputName.empty()) copyBounded(settings_.OutputName, kNameChars, o.outputName.c_str());
    if (o.numPasses >= 0) settings_.MaxIterations = o.numPasses;
    if (o.numThreads >= 0) {
        settings_.MaxThreads = o.numThreads;
        settings_.NotCheckMaxThreads = 1;
    }
    if (o.noAffinity >= 0) settings_.NoAffinityMask = static_cast<uint32_t>(o.noAffinity);
    if (o.affinity >= 0) settings_.AffinityShift = o.affinity;
    if (o.frame >= 0) settings_.FrameNumber = o.frame;
    if (o.fps >= 0) settings_.FramesPerSecond = o.fps;
    if (o.imageSizeX > 0 && o.imageSizeY > 0) {
        settings_.ImageSizeX = o.imageSizeX;
        settings_.ImageSizeY = o.imageSizeY;
    }
    // A region's origin alone never takes effect.
    if (o.regionSizeX > 0 && o.regionSizeY > 0) {
        settings_.RegionX = o.regionX;
        settings_.RegionY = o.regionY;
        settings_.RegionSizeX = o.regionSizeX;
        settings_.RegionSizeY = o.regionSizeY;
    }
    settings_.flag8BA0 = 0;
    settings_.flag8B88 = 0;
    // The options add formats and never take one away.
    settings_.SaveJPEG |= static_cast<uint32_t>(o.saveJpeg);
    settings_.SaveTIFF |= static_cast<uint32_t>(o.saveTiff);
    if (!settings_.SaveJPEG && !settings_.SaveEXR && !settings_.SaveTIFF) {
        settings_.SaveJPEG = settings_.SaveTIFF = settings_.SaveEXR = 1;
        log_.warning(messages::kForcingFormats);
    }
    if (settings_.ToneOperator.OperatorType == 0) {
        log_.warning(messages::kToneOperatorSwitched);
        settings_.ToneOperator.OperatorType = 2;
    }
}

void SceneLoad::lookUpTexMap(int32_t id) {
    if (id == -1) return;
    int32_t found;
    renderer_.GetTexMapId(&found, renderer_.GetTexMapName(id));
}

SceneStatus SceneLoad::registerCameras() {
    return sweep([&](uint64_t& offset, SceneStatus& status) {
        TempCamera camera;
        status = readCamera(reader_, camera, offset);
        if (status != SceneOk) return false;
        bool goOn = true;
        if (camera.cameraRole == 0) {
            const std::u16string& document = options_.cameraFile;
            // A document that fails ends the sweep after this camera; its level stops the
            // transfer right after beginScene.
            if (!document.empty() && !ApplyCameraDocument(&camera, document.c_str(), &renderer_)) {
                log_.fail(messages::kCameraDocumentFailed, StatusUnusable);
                goOn = false;
            }
            // The last camera of role 0 is the one kept for the transfer.
            status = assignCamera(renderCamera_, camera);
        }
        lookUpTexMap(camera.camera.DistortionMap);
        lookUpTexMap(camera.camera.ApertureMap);
        return goOn;
    });
}

SceneStatus SceneLoad::registerLights() {
    return sweep([&](uint64_t& offset, SceneStatus& status) {
        TempLight light;
        status = readLight(reader_, light, offset);
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
        status = readCamera(reader_, camera, offset);
        if (status != SceneOk) return false;
        if (camera.cameraRole == 0) status = assignCamera(camera, renderCamera_);
        if (camera.camera.DistortionMap != -1) renderer_.GetTexMapName(camera.camera.DistortionMap);
        if (camera.camera.ApertureMap != -1) renderer_.GetTexMapName(camera.camera.ApertureMap);
        log_.raise(tracer_->addCamera(&camera));
        return true;
    });
}

SceneStatus SceneLoad::handOverLights() {
    return sweep([&](uint64_t& offset, SceneStatus& status) {
        TempLight light;
        status = readLight(reader_, light, offset);
        if (status != SceneOk) return false;
        if (light.light.texMap != -1) renderer_.GetTexMapName(light.light.texMap);
        if (light.light.type == 4 && secondTexMapOf(light.light) != -1)
            renderer_.GetTexMapName(secondTexMapOf(light.light));
        log_.raise(tracer_->addLight(&light));
        return true;
    });
}

#define TAVI_SWEEP(call)                                                                                     \
    do {                                                                                                     \
        SceneStatus swept = (call);                                                                          \
        if (swept != SceneOk || stopped_) return swept;                                                       \
    } while (0)

SceneStatus SceneLoad::sweepChain() {
    TAVI_SWEEP(adoptAll(assets_.textures(), readTextureFileNode, messages::kDuplicateTexture));
    TAVI_SWEEP(adoptAll(assets_.textures(), readTextureDataNode, messages::kDuplicateTexture));
    TAVI_SWEEP(adoptAll(assets_.texmaps(), readTexMapNode, messages::kDuplicateTexMap));
    TAVI_SWEEP(adoptAll(assets_.materials(), readMaterialNode, messages::kDuplicateMaterial));
    TAVI_SWEEP(readSceneSettings());
    if (!applySettingsDocument()) {
        log_.error(messages::kSettingsDocumentFailed);
        log_.error(messages::kInvalidScene);
        stop(StatusUnusable);
        return SceneOk;
    }
    applyCommandLine();
    TAVI_SWEEP(registerCameras());
    TAVI_SWEEP(registerLights());
    TAVI_SWEEP(registerGeometry());

    assets_.beginResolution(tracer_);
    if (settings_.StartingVolumetricMaterial != -1) renderer_.GetMaterialName(settings_.StartingVolumetricMaterial);
    if (allZero(settings_)) {
        settings_.RegionSizeX = settings_.ImageSizeX;
        settings_.RegionSizeY = settings_.ImageSizeY;
    }
    log_.raise(tracer_->beginScene(&settings_, &renderer_, 0));
    if (log_.level() >= StatusErrors) return SceneOk;
    for (int32_t i = 0; i < options_.texturePathCount; ++i)
        log_.raise(tracer_->addTextureFolder(options_.texturePaths[i].c_str()));
    TAVI_SWEEP(handOverCameras());
    TAVI_SWEEP(handOverLights());
    log_.raise(tracer_->endLights());
    TAVI_SWEEP(handOverGeometry());
    log_.raise(tracer_->endGeometry());
    log_.raise(tracer_->endScene(&renderer_));
    return SceneOk;
}

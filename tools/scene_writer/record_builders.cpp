#include "tools/scene_writer/record_builders.h"

#include "scene/records.h"
#include "scene/scene_readers.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace scene_writer {

namespace {

void putTrack(Bytes& body, uint64_t offset, const std::vector<FileKey>& keys) {
    for (size_t k = 0; k < keys.size(); ++k) {
        for (size_t w = 0; w < keys[k].size(); ++w)
            put32(body, offset + 36 * k + 4 * w, keys[k][w]);
    }
}

Bytes zeroImage(int32_t type, size_t size) {
    Bytes image(size, 0);
    if (size >= 4) put32(image, 0, static_cast<uint32_t>(type));
    return image;
}

} // namespace

Bytes textureFileBody(const TextureFilePlan& plan) {
    Bytes body;
    put32(body, 0, plan.paramA);
    put32(body, 4, plan.paramB);
    put32(body, 8, static_cast<uint32_t>(plan.id));
    putText(body, 12, kNameField, plan.name);
    putText(body, 140, std::max(kPathField, plan.path.size() + 1), plan.path);
    return body;
}

Bytes textureDataBody(const TextureDataPlan& plan) {
    Bytes body;
    put32(body, 8, static_cast<uint32_t>(plan.width));
    put32(body, 12, static_cast<uint32_t>(plan.height));
    put32(body, 16, plan.paramA);
    put32(body, 20, plan.paramB);
    put32(body, 24, static_cast<uint32_t>(plan.id));
    put32(body, 28, plan.paramC);
    put32(body, 32, static_cast<uint32_t>(plan.pixelType));
    uint64_t pixelOffset = plan.pixelOffset.value_or(kTextureDataHeaderBytes);
    put64(body, 36, pixelOffset);
    putText(body, 44, kNameField, plan.name);
    if (!plan.pixels.empty()) {
        if (body.size() < pixelOffset + plan.pixels.size()) body.resize(pixelOffset + plan.pixels.size(), 0);
        std::copy(plan.pixels.begin(), plan.pixels.end(), body.begin() + static_cast<ptrdiff_t>(pixelOffset));
    }
    return body;
}

Bytes texMapBody(int32_t type, int32_t id, const std::string& name, size_t size) {
    Bytes image(kTexMapImage, 0);
    put32(image, 0, static_cast<uint32_t>(type));
    put32(image, 4, static_cast<uint32_t>(id));
    putText(image, 8, kNameField, name);
    image.resize(size, 0);
    return image;
}

Bytes materialBody(int32_t type, int32_t id, int32_t aovId, const std::string& name, size_t size) {
    Bytes image(kMaterialImage, 0);
    put32(image, 0, static_cast<uint32_t>(type));
    put32(image, 4, static_cast<uint32_t>(id));
    put32(image, 8, static_cast<uint32_t>(aovId));
    putText(image, 12, kNameField, name);
    if (size == 0) size = type == 25 ? kVolumeMaterialImage : kMaterialImage;
    image.resize(size, 0);
    return image;
}

Bytes phxDataBody(const PhxDataPlan& plan) {
    Bytes body(280, 0);
    put32(body, 4, plan.gridX);
    put32(body, 8, plan.gridY);
    put32(body, 12, plan.gridZ);
    for (size_t i = 0; i < plan.transform.size(); ++i)
        putF32(body, 16 + 4 * i, plan.transform[i]);
    for (size_t i = 0; i < plan.channelOffsets.size(); ++i) {
        put64(body, 72 + 8 * i, static_cast<uint64_t>(plan.channelOffsets[i]));
    }
    append(body, plan.channelData);
    return body;
}

Bytes settingsBody(const SettingsPlan& plan) {
    Bytes image(kSettingsImage, 0);
    if (plan.readerDefaults) {
        const auto defaults = std::make_unique<SettingsRecord>();
        initSettings(*defaults);
        std::memcpy(image.data(), defaults.get(), sizeof(SettingsRecord));
    }
    put32(image, 0x8, static_cast<uint32_t>(plan.maxIterations));
    put32(image, 0x84B0, static_cast<uint32_t>(plan.imageSizeX));
    put32(image, 0x84B4, static_cast<uint32_t>(plan.imageSizeY));
    put32(image, 0x8B48, plan.saveJpeg ? 1 : 0);
    put32(image, 0x8B4C, plan.saveTiff ? 1 : 0);
    put32(image, 0x8B50, plan.saveExr ? 1 : 0);
    const int32_t region[4] = {plan.regionX, plan.regionY, plan.regionSizeX, plan.regionSizeY};
    for (size_t i = 0; i < 4; ++i)
        put32(image, 0x84B8 + 4 * i, static_cast<uint32_t>(region[i]));
    put32(image, 0x8B64, static_cast<uint32_t>(plan.maxThreads));
    put32(image, 0x296C, static_cast<uint32_t>(plan.frameNumber));
    put32(image, 0x2970, static_cast<uint32_t>(plan.framesPerSecond));
    put32(image, 0x70D0, plan.toneOperator);
    put32(image, 0x9844, static_cast<uint32_t>(plan.startingVolumetricMaterial));
    putText(image, 0x84C8, kPathField, plan.outputPath);
    putText(image, 0x87C8, kNameField, plan.outputName);
    put32(image, 0x29BC, static_cast<uint32_t>(plan.aovNames.size()));
    for (size_t i = 0; i < plan.aovNames.size() && i < 32; ++i) {
        putText(image, 0x29D0 + 0x234 * i + 0x1C, kNameField, plan.aovNames[i]);
    }
    return image;
}

size_t cameraImageBytes(int32_t type) {
    const size_t lengths[6] = {0, 1160, 1036, 1028, 1040, 1032};
    return type >= 0 && type < 6 ? lengths[type] : 0;
}

size_t lightImageBytes(int32_t type) {
    const size_t lengths[10] = {0, 3284, 3288, 3424, 1740, 1616, 3416, 0, 3840, 1856};
    return type >= 0 && type < 10 ? lengths[type] : 0;
}

uint32_t lightVersion(int32_t type) {
    return type == 1 || type == 2 || type == 6 ? 101 : 100;
}

Bytes cameraBody(int32_t type, size_t size) {
    return zeroImage(type, size ? size : std::max<size_t>(cameraImageBytes(type), 764));
}

Bytes lightBody(int32_t type, size_t size) {
    return zeroImage(type, size ? size : std::max<size_t>(lightImageBytes(type), 1616));
}

Bytes cameraPathBody(const CameraPathPlan& plan) {
    Bytes body(kCameraPathHeaderBytes, 0);
    uint64_t at = kCameraPathHeaderBytes;
    const std::vector<FileKey>* tracks[3] = {&plan.trackA, &plan.trackB, &plan.trackC};
    const size_t slots[3] = {8, 20, 32};
    for (int t = 0; t < 3; ++t) {
        put64(body, slots[t], at);
        put32(body, slots[t] + 8, static_cast<uint32_t>(tracks[t]->size()));
        putTrack(body, at, *tracks[t]);
        at += 36 * tracks[t]->size();
    }
    if (plan.trackAOffset) put64(body, 8, *plan.trackAOffset);
    if (plan.trackACount) put32(body, 16, *plan.trackACount);
    put32(body, 44, plan.word44);
    put32(body, 48, plan.word48);
    put32(body, 52, plan.word52);
    put32(body, 56, static_cast<uint32_t>(plan.role));
    for (int i = 0; i < 3; ++i)
        putF32(body, 60 + 4 * i, plan.target[i]);
    putText(body, 72, kNameField, plan.cameraFile);
    return body;
}

Bytes lightPathBody(const LightPathPlan& plan) {
    Bytes body(kLightPathHeaderBytes, 0);
    put64(body, 8, plan.trackOffset.value_or(kLightPathHeaderBytes));
    put32(body, 16, plan.trackCount.value_or(static_cast<uint32_t>(plan.track.size())));
    putTrack(body, kLightPathHeaderBytes, plan.track);
    put32(body, 20, static_cast<uint32_t>(plan.word20));
    put32(body, 24, plan.word24);
    putText(body, 28, kNameField, plan.name);
    putText(body, 156, kNameField, plan.secondName);
    return body;
}

} // namespace scene_writer

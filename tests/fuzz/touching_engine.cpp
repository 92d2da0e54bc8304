#include "tests/fuzz/touching_engine.h"

#include "scene/fur_sprite_objects.h"
#include "scene/geometry_objects.h"
#include "scene/records.h"
#include "scene/temp_objects.h"
#include "scene/track_keys.h"
#include "tests/fuzz/fuzz_support.h"

#include <cstring>

using TRDF_Load::FurMesh;
using TRDF_Load::SprMesh;
using TRDF_Load::TriangleMesh;

namespace {

// Kept where the optimiser must assume someone looks, so that no read is dropped.
volatile uint64_t gSink;

// The bit arrays hold one bit a triangle (or a corner), in whole 32-bit words.
uint64_t bitArrayBytes(uint64_t bits) {
    return ((bits + 31) / 32) * 4;
}

// The pixel block's length as the format gives it: the product in 32-bit signed arithmetic of
// width, height and the bytes of a pixel of its type (other types have none).
uint64_t pixelBytes(const TextureDataRecord& texture) {
    constexpr uint32_t kBytesPerPixel[] = {4, 8, 8, 16, 1, 2, 2, 4, 8, 16, 16, 32};
    const bool known = texture.pixelType >= 0 && texture.pixelType < 12;
    const uint32_t perPixel = known ? kBytesPerPixel[texture.pixelType] : 0;
    const int32_t product = static_cast<int32_t>(static_cast<uint32_t>(texture.width) *
                                                 static_cast<uint32_t>(texture.height) * perPixel);
    return product < 0 ? 0 : static_cast<uint64_t>(product);
}

} // namespace

void TouchingEngine::touch(const void* bytes, uint64_t length) {
    const auto* p = static_cast<const uint8_t*>(bytes);
    uint64_t sum = sum_;
    for (uint64_t i = 0; i < length; ++i)
        sum = sum * 31 + p[i];
    sum_ = sum;
    gSink = sum;
}

void TouchingEngine::touchText(const char16_t* text) {
    FUZZ_CHECK(text != nullptr);
    size_t length = 0;
    while (text[length])
        ++length;
    touch(text, (length + 1) * sizeof(char16_t));
}

int32_t TouchingEngine::initialise(const char16_t* libraryPath) {
    if (libraryPath) touchText(libraryPath);
    return 0;
}

int32_t TouchingEngine::shutdown(ITaviRenderCallback*) {
    return 0;
}

int32_t TouchingEngine::beginScene(SettingsRecord* settings, ITaviRenderCallback* callback, int32_t zero) {
    FUZZ_CHECK(settings != nullptr && callback != nullptr && zero == 0);
    touch(settings, sizeof *settings);
    return 0;
}

int32_t TouchingEngine::addTextureFolder(const char16_t* folder) {
    touchText(folder);
    return 0;
}

int32_t TouchingEngine::addMaterial(MaterialRecord* material) {
    FUZZ_CHECK(material != nullptr);
    touch(material, sizeof *material);
    ++materialsAdded;
    if (material->type != kVolumeMaterialType) return 0;
    IPhxCache* cache;
    std::memcpy(&cache, reinterpret_cast<const uint8_t*>(material) + kVolumeCacheOffset, sizeof cache);
    if (!cache) return 0;
    uint32_t grid[3];
    float transform[12];
    cache->GetGridSize(grid);
    cache->GetTransform(transform);
    touch(grid, sizeof grid);
    touch(transform, sizeof transform);
    // How long a channel is stays the engine's business; only whether it is there is given.
    for (int32_t channel = 0; channel < 26; ++channel)
        FUZZ_CHECK(cache->HasChannel(channel) == (cache->GetChannel(channel) != nullptr));
    return 0;
}

int32_t TouchingEngine::addTexMap(TexMapRecord* texmap) {
    FUZZ_CHECK(texmap != nullptr);
    touch(texmap, sizeof *texmap);
    ++texmapsAdded;
    return 0;
}

int32_t TouchingEngine::addTextureData(TextureDataRecord* texture, ITaviRenderCallback*) {
    FUZZ_CHECK(texture != nullptr);
    touch(texture, sizeof *texture);
    const uint64_t length = pixelBytes(*texture);
    FUZZ_CHECK(texture->pixels != nullptr || length == 0);
    if (texture->pixels) touch(texture->pixels, length);
    return 0;
}

int32_t TouchingEngine::addTextureFile(TextureFileRecord* texture, ITaviRenderCallback*) {
    FUZZ_CHECK(texture != nullptr);
    touch(texture, sizeof *texture);
    return 0;
}

namespace {

// A track claims no keys it does not have, and its count block agrees with it.
template <class Touch> void touchTrack(const TrackKey* track, uint64_t count, Touch touch) {
    if (!track) {
        FUZZ_CHECK(count == 0);
        return;
    }
    FUZZ_CHECK(count <= trackLength(track));
    touch(track, count * sizeof(TrackKey));
}

} // namespace

int32_t TouchingEngine::addTriangleMeshes(bridgeTriangleMesh* head, ITaviRenderCallback*) {
    auto touchBytes = [this](const void* bytes, uint64_t length) { touch(bytes, length); };
    for (auto* part = static_cast<TriangleMesh*>(head); part; part = part->next) {
        touch(part, sizeof *part);
        touchTrack(part->keys, part->keyCount, touchBytes);
        uint64_t vertices = 0, points = 0;
        if (const TRDF_Load::StaticSliceT* slice = part->staticSlice) {
            touch(slice, sizeof *slice);
            FUZZ_CHECK(slice->vertexCount >= 0 && slice->triangleCount >= 0 && slice->pointCount >= 0);
            FUZZ_CHECK(slice->pointExtraCount >= 0 && slice->vectorCount >= 0 && slice->pairCount >= 0);
            const uint64_t triangles = uint64_t(slice->triangleCount);
            vertices = uint64_t(slice->vertexCount);
            points = uint64_t(slice->pointCount);
            const struct {
                const void* array;
                uint64_t bytes;
            } arrays[] = {
                {slice->triangleTriples, triangles * 12},
                {slice->triangleQuads, triangles * sizeof(TRDF_Load::TriangleQuad)},
                {slice->vectorTable, uint64_t(slice->vectorCount) * 12},
                {slice->pairTable, uint64_t(slice->pairCount) * 8},
                {slice->triangleBits, bitArrayBytes(triangles)},
                {slice->triangleWords, triangles * 4},
                {slice->cornerBits, bitArrayBytes(triangles * 3)},
            };
            for (const auto& a : arrays)
                if (a.array) touch(a.array, a.bytes);
        }
        for (const TRDF_Load::TimeSliceT* slice = part->timeSlices; slice; slice = slice->next) {
            touch(slice, sizeof *slice);
            if (slice->positions) touch(slice->positions, vertices * 4 * sizeof(float));
            if (slice->points) touch(slice->points, points * sizeof(TRDF_Load::PointElement));
        }
    }
    return 0;
}

// Fur and sprites are alike: parts with keys, and time slices of elements by the part's count.
template <class Element, class Part, class Touch> void touchCloud(Part* head, Touch touch) {
    for (Part* part = head; part; part = part->next) {
        touch(part, sizeof *part);
        touchTrack(part->keys, part->keyCount, touch);
        FUZZ_CHECK(part->elementCount >= 0);
        for (const auto* slice = part->timeSlices; slice; slice = slice->next) {
            touch(slice, sizeof *slice);
            if (slice->elements) touch(slice->elements, uint64_t(part->elementCount) * sizeof(Element));
        }
    }
}

int32_t TouchingEngine::addFur(bridgeFurMesh* head, ITaviRenderCallback*) {
    touchCloud<TRDF_Load::FurElement>(static_cast<FurMesh*>(head),
                                      [this](const void* bytes, uint64_t length) { touch(bytes, length); });
    return 0;
}

int32_t TouchingEngine::addSprites(bridgeSprMesh* head, ITaviRenderCallback*) {
    touchCloud<TRDF_Load::SpriteElement>(static_cast<SprMesh*>(head),
                                         [this](const void* bytes, uint64_t length) { touch(bytes, length); });
    return 0;
}

int32_t TouchingEngine::endScene(ITaviRenderCallback* callback) {
    FUZZ_CHECK(callback != nullptr);
    return 0;
}

int32_t TouchingEngine::addLight(bridgeLight* object) {
    FUZZ_CHECK(object != nullptr);
    const TempLight& light = *static_cast<TempLight*>(object);
    touch(&light, sizeof light);
    touchTrack(light.track, light.trackCount,
               [this](const void* bytes, uint64_t length) { touch(bytes, length); });
    return 0;
}

int32_t TouchingEngine::addCamera(bridgeCamera* object) {
    FUZZ_CHECK(object != nullptr);
    const TempCamera& camera = *static_cast<TempCamera*>(object);
    auto touchBytes = [this](const void* bytes, uint64_t length) { touch(bytes, length); };
    touch(&camera, sizeof camera);
    touchTrack(camera.trackA, camera.trackACount, touchBytes);
    touchTrack(camera.trackB, camera.trackBCount, touchBytes);
    touchTrack(camera.trackC, camera.trackCCount, touchBytes);
    return 0;
}

int32_t TouchingEngine::render(ITaviRenderCallback* callback) {
    FUZZ_CHECK(callback != nullptr);
    return 0;
}

// How many bytes of each record type the scene file carries: the record's image.
//
// A record is assigned from its chunk body up to the end of its type's image and no further.
// The texmap and material lengths here are provisional, one length for the whole kind; they
// are to be filled from the per-type field tables once those exist. A length of 0 means that
// the number is not a type of that kind.
#pragma once
#include "scene/records.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace record_images {

constexpr uint32_t kTexMapTypes = 28;   // 1 to 27
constexpr uint32_t kMaterialTypes = 33; // 1 to 32
constexpr uint32_t kCameraTypes = 6;    // 1 to 5
constexpr uint32_t kLightTypes = 10;    // 1 to 9

// Each texmap type's image ends with its last field; 0 and 16 are no texmap types.
constexpr std::array<uint32_t, kTexMapTypes> texMapImages() {
    return {
        0,      // 0
        0x5BC,  // 1 IMAGE
        0x114,  // 2 SIMPLEIMAGE
        0x139,  // 3 BLEND
        0x137,  // 4 MATH
        0x16A4, // 5 COLORCORRECTION, the longest
        0x150,  // 6 MATHBLEND
        0x70C,  // 7 COMPOSITE
        0x636,  // 8 NOISE
        0x52C,  // 9 OUTPUT
        0x12C,  // 10 RGB_MULTIPLY
        0x13C,  // 11 RGB_TINT
        0x1BC,  // 12 SHUFFLE
        0x5FF,  // 13 COLOR
        0x75D,  // 14 GRADIENT
        0x622,  // 15 TRIPLANAR
        0,      // 16
        0x661,  // 17 SELECTMAP
        0x6EE,  // 18 OCEANSURFACE
        0x10D,  // 19 CACHE
        0x16C,  // 20 RAYSWITCH
        0x14A,  // 21 WIREFRAME
        0x98F,  // 22 AO
        0x140,  // 23 NORMALMAP
        0x6D3,  // 24 FALLOFF
        0x114,  // 25 UVWSET
        0x125,  // 26 RETILE
        0x17C,  // 27 SUN
    };
}

// Each material type's image ends with its last field; the volumetric type's ends where its
// cache slot begins. Types 9 and 27 have no fields and no image.
constexpr std::array<uint32_t, kMaterialTypes> materialImages() {
    std::array<uint32_t, kMaterialTypes> table{};
    table[kVolumeMaterialType] = kVolumeCacheOffset;
    table[1] = 6201;  // PHYSICAL
    table[2] = 408;   // BLEND_SIDED
    table[3] = 536;   // TOP_BOTTOM
    table[4] = 13130; // UBER
    table[5] = 560;   // LAMBERTIANEMISSION
    table[6] = 1084;  // IDEALDIFFUSE
    table[7] = 1352;  // DIFFUSE
    table[8] = 804;   // IDEALSPECULAR
    table[10] = 284;  // BUMP
    table[11] = 550;  // MIX
    table[12] = 540;  // IDEALMIRROR
    table[13] = 1946; // IDEALDIELECTRIC
    table[14] = 284;  // CUTOUT
    table[15] = 280;  // NORMALMAP
    table[16] = 276;  // TWOSIDED
    table[17] = 1660; // IDEALCONDUCTOR
    table[18] = 1954; // IDEALCOATING
    table[19] = 2744; // ROUGHDIELECTRIC
    table[20] = 2456; // ROUGHCONDUCTOR
    table[21] = 2752; // ROUGHCOATING
    table[22] = 302;  // DISPACEMENTMAP
    table[23] = 1667; // SSS
    table[24] = 4353; // HAIR
    table[26] = 492;  // TRIPLANAR
    table[28] = 272;  // MTLPROXY
    table[29] = 325;  // RAYSWITCH
    table[30] = 5798; // THINFILM
    table[31] = 1138; // MIE
    table[32] = 328;  // the state switch, which has no word
    return table;
}

constexpr std::array<uint32_t, kTexMapTypes> kTexMapImage = texMapImages();
constexpr std::array<uint32_t, kMaterialTypes> kMaterialImage = materialImages();

constexpr uint32_t kCameraImage[kCameraTypes] = {0, 1160, 1036, 1028, 1040, 1032};

// The light types that carry text have longer images; type 7 does not exist.
constexpr uint32_t kLightImage[kLightTypes] = {0, 3284, 3288, 3424, 1740, 1616, 3416, 0, 3840, 1856};
// The chunk version each light type is written with.
constexpr uint32_t kLightVersion[kLightTypes] = {0, 101, 101, 100, 100, 100, 101, 0, 100, 100};
// Where each light type keeps its text of 0x300 bytes, 0 for none.
constexpr uint32_t kLightTextOffset[kLightTypes] = {0, 0x6D4, 0x6D8, 0x760, 0, 0, 0x758, 0, 0xC00, 0};

template <size_t N> constexpr uint32_t lookUp(const uint32_t (&table)[N], int32_t type) {
    return type >= 0 && static_cast<size_t>(type) < N ? table[type] : 0;
}
template <size_t N> constexpr uint32_t lookUp(const std::array<uint32_t, N>& table, int32_t type) {
    return type >= 0 && static_cast<size_t>(type) < N ? table[type] : 0;
}

static_assert(kCameraImage[1] == sizeof(CameraRecord));
static_assert(kLightImage[8] == sizeof(LightRecord));
static_assert(kLightTextOffset[8] + 0x300 == kLightImage[8] &&
              kLightTextOffset[1] + 2 * 0x300 == kLightImage[1]);
static_assert(kLightTextOffset[2] + 2 * 0x300 == kLightImage[2] &&
              kLightTextOffset[3] + 2 * 0x300 == kLightImage[3]);
static_assert(kLightTextOffset[6] + 2 * 0x300 == kLightImage[6]);

} // namespace record_images

inline uint32_t texMapImageLength(int32_t type) {
    return record_images::lookUp(record_images::kTexMapImage, type);
}
inline uint32_t materialImageLength(int32_t type) {
    return record_images::lookUp(record_images::kMaterialImage, type);
}
inline uint32_t cameraImageLength(int32_t type) {
    return record_images::lookUp(record_images::kCameraImage, type);
}
inline uint32_t lightImageLength(int32_t type) {
    return record_images::lookUp(record_images::kLightImage, type);
}
inline uint32_t lightChunkVersion(int32_t type) {
    return record_images::lookUp(record_images::kLightVersion, type);
}
inline uint32_t lightTextOffset(int32_t type) {
    return record_images::lookUp(record_images::kLightTextOffset, type);
}

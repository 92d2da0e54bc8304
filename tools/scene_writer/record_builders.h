// Bodies of every record chunk, laid out as the scene file carries them. Each builder gives
// a well-formed body; tests break what they need with put32 and friends afterwards.
#pragma once
#include "tools/scene_writer/scene_writer.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace scene_writer {

enum ChunkTypeNumber : uint32_t {
    kSettings = 1,
    kCamera = 2,
    kCameraPath = 3,
    kTexMap = 4,
    kMaterial = 5,
    kTriangleMesh = 6,
    kSprites = 7,
    kFur = 8,
    kLight = 9,
    kLightPath = 10,
    kTextureFile = 11,
    kTextureData = 12,
    kPhxData = 13,
};

constexpr size_t kNameField = 128;
constexpr size_t kPathField = 768;

// ---- Textures ----------------------------------------------------------------------------------

struct TextureFilePlan {
    uint32_t paramA = 0, paramB = 0;
    int32_t id = 0;
    std::string name = "texture";
    std::string path = "textures/texture.png";
};
Bytes textureFileBody(const TextureFilePlan& plan);

struct TextureDataPlan {
    int32_t width = 2, height = 2;
    uint32_t paramA = 0, paramB = 0, paramC = 0;
    int32_t id = 0;
    int32_t pixelType = 0;
    std::string name = "pixels";
    Bytes pixels;                        // placed at pixelOffset
    std::optional<uint64_t> pixelOffset; // default: right behind the name field
};
constexpr uint64_t kTextureDataHeaderBytes = 44 + kNameField;
Bytes textureDataBody(const TextureDataPlan& plan);

// ---- Texture maps and materials ----------------------------------------------------------------

constexpr size_t kTexMapImage = 0x19A8;
constexpr size_t kMaterialImage = 0x3350;
constexpr size_t kVolumeMaterialImage = 0x1960;
constexpr size_t kVolumeFlag = 0x195D;
constexpr size_t kVolumeTexts[9] = {0xB50, 0xC50, 0xD50, 0xE50, 0xF50, 0x1050, 0x1150, 0x1250, 0x1350};

// The image of a texmap; `size` cuts or extends it.
Bytes texMapBody(int32_t type, int32_t id, const std::string& name, size_t size = kTexMapImage);
// The image of a material; type 25 is as long as its image, up to the cache slot.
Bytes materialBody(int32_t type, int32_t id, int32_t aovId, const std::string& name, size_t size = 0);

struct PhxDataPlan {
    uint32_t gridX = 4, gridY = 4, gridZ = 4;
    std::array<float, 12> transform{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};
    std::array<int64_t, 26> channelOffsets; // -1 means absent; all absent by default
    Bytes channelData;                      // placed at body offset 280
    PhxDataPlan() { channelOffsets.fill(-1); }
};
Bytes phxDataBody(const PhxDataPlan& plan);

// ---- Settings ----------------------------------------------------------------------------------

constexpr size_t kSettingsImage = 0x9848;
struct SettingsPlan {
    int32_t imageSizeX = 640, imageSizeY = 480;
    int32_t maxIterations = 256;
    bool saveJpeg = true;
    std::string outputPath = "out";
    std::string outputName = "frame";
    std::vector<std::string> aovNames; // channels in use, NumChannels = their count
    int32_t startingVolumetricMaterial = 0;
    uint32_t toneOperator = 0; // 0 EDITOR, 2 ACES
    bool saveTiff = false, saveExr = false;
    // The render region; a size of 0 is the whole image.
    int32_t regionX = 0, regionY = 0, regionSizeX = 0, regionSizeY = 0;
    int32_t maxThreads = 0; // 0: every processor
    int32_t frameNumber = 0, framesPerSecond = 0;
    // Start from the values a scene reader gives a new record (depth, clamps, adaptation ...)
    // rather than from zeros: what a scene meant for users carries.
    bool readerDefaults = false;
};
// A zero image (or the reader's defaults) with the plan's fields set.
Bytes settingsBody(const SettingsPlan& plan);

// ---- Cameras and lights ------------------------------------------------------------------------

// Image length by type, 0 for no such type.
size_t cameraImageBytes(int32_t type);
size_t lightImageBytes(int32_t type);
// The chunk version each light type is written with.
uint32_t lightVersion(int32_t type);

// A zero image of the type's length with the type set; `size` overrides the length.
Bytes cameraBody(int32_t type, size_t size = 0);
Bytes lightBody(int32_t type, size_t size = 0);

using FileKey = std::array<uint32_t, 9>; // a track key as 36 bytes in the file

struct CameraPathPlan {
    std::vector<FileKey> trackA, trackB, trackC;
    uint32_t word44 = 0, word48 = 0, word52 = 0;
    int32_t role = 0;
    std::array<float, 3> target{0, 0, 0};
    std::string cameraFile;
    // Written instead of the computed offsets and counts when set.
    std::optional<uint64_t> trackAOffset;
    std::optional<uint32_t> trackACount;
};
constexpr size_t kCameraPathHeaderBytes = 72 + kNameField;
Bytes cameraPathBody(const CameraPathPlan& plan);

struct LightPathPlan {
    std::vector<FileKey> track;
    int32_t word20 = -1;
    uint32_t word24 = 0;
    std::string name = "light";
    std::string secondName;
    std::optional<uint64_t> trackOffset;
    std::optional<uint32_t> trackCount;
};
constexpr size_t kLightPathHeaderBytes = 156 + kNameField;
Bytes lightPathBody(const LightPathPlan& plan);

} // namespace scene_writer

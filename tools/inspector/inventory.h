// What tavi-inspect finds in a scene file: the chunk chain, the records the client's readers
// return, and the client's verdict on the file. Text is UTF-8 throughout.
#pragma once
#include "scene/scene_status.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace inspector {

using Vec3 = std::array<float, 3>;

struct ChunkEntry {
    uint64_t offset = 0;
    uint32_t type = 0;
    uint32_t version = 0;
    uint32_t compression = 0;
    uint64_t storedSize = 0;
    // Absent when the body could not be fetched; the listing stops there.
    std::optional<uint64_t> decodedSize;
    uint64_t next = 0;
};

// A reference a record makes by id, with the name of the record it names; no name when no
// record of that kind has the id.
struct Reference {
    std::string key;  // the field table's key, or the record field it comes from
    std::string kind; // "texture", "texmap" or "material"
    int32_t id = -1;
    std::optional<std::string> name;
};

struct TextureInfo {
    int32_t id = 0;
    std::string name;
    bool embedded = false; // pixels in the file rather than an image file
    std::string path;      // image file textures
    int32_t width = 0, height = 0, pixelType = 0; // embedded textures
};

// A texture map or a material.
struct RecordInfo {
    int32_t id = 0;
    std::string name;
    int32_t type = 0;
    std::string typeWord; // empty when the type has no field table
    std::vector<Reference> references;
    std::optional<std::array<uint32_t, 3>> volumeGrid; // volumetric materials with a cache
};

struct SettingsInfo {
    int32_t imageWidth = 0, imageHeight = 0;
    int32_t regionX = 0, regionY = 0, regionWidth = 0, regionHeight = 0;
    int32_t passes = 0;
    int32_t threads = 0;
    std::string outputPath, outputName;
    bool jpeg = false, tiff = false, exr = false;
    uint32_t toneOperator = 0;
    std::string toneOperatorWord; // empty for a number outside the word table
    int32_t aovChannels = 0;
    std::optional<Reference> startingMedium;
};

struct CameraInfo {
    int32_t role = 0;
    int32_t type = 0;
    std::string typeWord;
    // The first key of each track, or what stands in for a track without keys.
    Vec3 position{}, target{};
    uint32_t positionKeys = 0, targetKeys = 0;
    std::vector<Reference> references;
};

struct LightInfo {
    int32_t type = 0;
    std::string kind; // empty for a type the engine gives no meaning
    std::string name;
    bool enabled = true;
    Vec3 position{};
    uint32_t positionKeys = 0;
    float intensity = 1, multiplier = 1;
    std::vector<Reference> references;
};

enum class ModelKind { Mesh, Fur, Sprites };

struct ModelInfo {
    ModelKind kind = ModelKind::Mesh;
    std::string name;
    uint32_t parts = 0;
    uint32_t timeSlices = 0;
    // Triangles of a mesh, curves of fur, discs of sprites, over all parts (first slice).
    uint64_t elements = 0;
    std::vector<Reference> materials; // each material id used, in order of first use
};

struct Inventory {
    uint32_t formatVersion = 0;
    uint64_t fileSize = 0;
    std::vector<ChunkEntry> chunks;
    std::vector<TextureInfo> textures;
    std::vector<RecordInfo> texMaps, materials;
    std::optional<SettingsInfo> settings;
    std::vector<CameraInfo> cameras;
    std::vector<LightInfo> lights;
    std::vector<ModelInfo> models;
};

// How a scene fares: the reader's status and the client's messages for it, in the order the
// client prints them. No messages means the file loads.
struct Verdict {
    SceneStatus status = SceneOk;
    std::vector<std::string> messages;
    bool accepted() const { return messages.empty(); }
};

struct Inspection {
    Verdict verdict;
    Inventory inventory; // what was found before the verdict; complete when accepted
};

// Exit statuses of tavi-inspect.
constexpr int kExitAccepted = 0;
constexpr int kExitUsage = 1;
constexpr int kExitRejected = 2;

// Reads the scene the way the client's load does, sweep by sweep, and collects what it holds.
Inspection inspectScene(const std::u16string& path);

// Names of chunk types, compressions, model kinds and statuses, as the reports print them.
const char* chunkTypeName(uint32_t type);
const char* compressionName(uint32_t compression);
const char* modelKindName(ModelKind kind);
const char* statusName(SceneStatus status);

// Chunks of each type in the chain, in the order of the type numbers.
struct KindCount {
    const char* kind;
    size_t count;
};
std::vector<KindCount> chunkCounts(const Inventory& inventory);
// Elements of every model of a kind: triangles, curves or discs.
uint64_t elementCount(const Inventory& inventory, ModelKind kind);

std::string textReport(const Inspection& inspection, bool listChunks);
std::string jsonReport(const Inspection& inspection);

} // namespace inspector

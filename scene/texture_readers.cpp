// Texture chunks: a reference to an image file, or a texture with its pixels.
#include "memory/pool.h"
#include "scene/chunk_scan.h"
#include "scene/scene_readers.h"
#include "scene/scene_text.h"

#include <cstring>

namespace {

// Body layout of a texture file chunk.
constexpr uint64_t kFileParamA = 0, kFileParamB = 4, kFileId = 8, kFileName = 12, kFilePath = 140;

// Body layout of a texture data chunk; bytes 0 to 7 are reserved.
constexpr uint64_t kDataWidth = 8, kDataHeight = 12, kDataParamA = 16, kDataParamB = 20, kDataId = 24;
constexpr uint64_t kDataParamC = 28, kDataPixelType = 32, kDataPixelOffset = 36, kDataName = 44;

// Bytes per pixel by pixel type; any other type has none.
int32_t bytesPerPixel(int32_t pixelType) {
    switch (pixelType) {
    case 4:
        return 1;
    case 5:
    case 6:
        return 2;
    case 0:
    case 7:
        return 4;
    case 1:
    case 2:
    case 8:
        return 8;
    case 3:
    case 9:
    case 10:
        return 16;
    case 11:
        return 32;
    default:
        return 0;
    }
}

// The pixel byte count is the product in 32-bit signed arithmetic, widened with its sign,
// so that an overflow wraps the way that arithmetic does.
uint64_t pixelBytes(int32_t width, int32_t height, int32_t perPixel) {
    uint32_t product =
        static_cast<uint32_t>(width) * static_cast<uint32_t>(height) * static_cast<uint32_t>(perPixel);
    return static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(product)));
}

// Both texture records start cleared, with no id, and take what their body holds.
template <class Record> void clearWithoutId(Record& record) {
    std::memset(&record, 0, sizeof record);
    record.id = -1;
}

void readIfHeld(ByteSpan bytes, uint64_t offset, uint32_t& field) {
    if (bytes.holds(offset, 4)) field = bytes.u32(offset);
}

void readIfHeld(ByteSpan bytes, uint64_t offset, int32_t& field) {
    if (bytes.holds(offset, 4)) field = bytes.i32(offset);
}

} // namespace

SceneStatus readTextureFile(SceneFileReader& reader, TextureFileRecord& record, uint64_t& offset) {
    RecordChunk chunk = openRecord(reader, ChunkTextureFile, offset, VersionCheck::BeforeBody);
    if (chunk.status != SceneOk) return chunk.status;
    ByteSpan bytes = chunk.body.bytes();
    clearWithoutId(record);
    readIfHeld(bytes, kFileParamA, record.textureParamA);
    readIfHeld(bytes, kFileParamB, record.textureParamB);
    readIfHeld(bytes, kFileId, record.id);
    if (!convertNameField(record.name, bytes, kFileName) ||
        !convertTextField(record.path, kPathChars, bytes, kFilePath, UINT64_MAX)) {
        return SceneInvalid;
    }
    return SceneOk;
}

SceneStatus readTextureData(SceneFileReader& reader, TextureDataRecord& record, uint64_t& offset) {
    RecordChunk chunk = openRecord(reader, ChunkTextureData, offset, VersionCheck::BeforeBody);
    if (chunk.status != SceneOk) return chunk.status;
    ByteSpan bytes = chunk.body.bytes();
    clearWithoutId(record);
    readIfHeld(bytes, kDataParamA, record.textureParamA);
    readIfHeld(bytes, kDataParamB, record.textureParamB);
    readIfHeld(bytes, kDataWidth, record.width);
    readIfHeld(bytes, kDataHeight, record.height);
    readIfHeld(bytes, kDataId, record.id);
    readIfHeld(bytes, kDataParamC, record.textureParamC);
    readIfHeld(bytes, kDataPixelType, record.pixelType);
    uint64_t pixelOffset = bytes.u64(kDataPixelOffset);

    // A name that will not convert fails the record, but the pixels are still taken.
    SceneStatus status = convertNameField(record.name, bytes, kDataName) ? SceneOk : SceneInvalid;
    uint64_t size = pixelBytes(record.width, record.height, bytesPerPixel(record.pixelType));
    if (!bytes.holds(pixelOffset, size)) return SceneInvalid;
    record.pixels = static_cast<uint8_t*>(poolAlloc(poolInstance(), size));
    if (!record.pixels) return SceneOutOfMemory;
    if (size) std::memcpy(record.pixels, bytes.data + pixelOffset, size);
    return status;
}

void releaseTextureData(TextureDataRecord& record) {
    poolFree(poolInstance(), record.pixels);
    record.pixels = nullptr;
}

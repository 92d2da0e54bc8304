// Texture map and material chunks: images of the in-memory record, fixed up after the copy.
#include "scene/chunk_scan.h"
#include "scene/phx_data.h"
#include "scene/record_images.h"
#include "scene/scene_readers.h"
#include "scene/scene_text.h"

#include <cstring>

namespace {

uint8_t* bytesOf(MaterialRecord& record) {
    return reinterpret_cast<uint8_t*>(&record);
}

IPhxCache* volumeCacheOf(MaterialRecord& record) {
    IPhxCache* cache;
    std::memcpy(&cache, bytesOf(record) + kVolumeCacheOffset, sizeof cache);
    return cache;
}

void setVolumeCache(MaterialRecord& record, IPhxCache* cache) {
    std::memcpy(bytesOf(record) + kVolumeCacheOffset, &cache, sizeof cache);
}

void fixMaterialText(MaterialRecord& record) {
    fixRecordText(record.Name, kNameFieldBytes);
    if (record.type != 24 && record.type != kVolumeMaterialType) return;
    // Type 24 goes through the volumetric fix-up as well, its name included: the name is
    // then read as narrow text once more, which keeps its first character alone.
    if (record.type == 24) fixRecordText(record.Name, kNameFieldBytes);
    for (size_t offset : kVolumeTextOffsets)
        fixRecordText(bytesOf(record) + offset, kNameFieldBytes);
}

// The volume cache chunk that directly follows a volumetric material. A different chunk there
// leaves the material without a cache, and that chunk is passed over.
void readVolumeCache(SceneFileReader& reader, MaterialRecord& record, uint64_t& offset) {
    if (readFollowingChunk(reader, offset) != SceneOk) return;
    if (reader.chunk.chunkType != ChunkPhxData) return;
    ChunkBody body;
    if (body.fetch(reader) != SceneOk) return;
    if (reader.chunk.chunkVersion != kRecordChunkVersion) {
        reader.status = SceneBadVersion;
        return;
    }
    if (!TRDF_Load::PhxData::bodyIsValid(body.data(), body.bytes().size)) {
        reader.status = SceneInvalid;
        return;
    }
    TRDF_Load::PhxData* cache = TRDF_Load::PhxData::create(body.data());
    if (!cache) {
        reader.status = SceneOutOfMemory;
        return;
    }
    body.release();
    setVolumeCache(record, cache);
}

} // namespace

SceneStatus readTexMap(SceneFileReader& reader, TexMapRecord& record, uint64_t& offset) {
    SceneStatus status = findChunk(reader, ChunkTexMap, offset);
    if (status != SceneOk) return status;
    offset = reader.chunk.nextChunkOffset;
    uint32_t version = reader.chunk.chunkVersion;
    ChunkBody body;
    if (body.fetch(reader) != SceneOk) return reader.status;

    ByteSpan bytes = body.bytes();
    int32_t type = recordTypeOf(bytes);
    uint32_t image = texMapImageLength(type);
    // An unknown type is reported before the version, and leaves the record as it was.
    if (image == 0) return reader.status = SceneInvalid;
    std::memset(&record, 0, sizeof record);
    bytes.overlay(&record, image);
    fixRecordText(record.Name, kNameFieldBytes);
    body.reset();
    if (version != kRecordChunkVersion) reader.status = SceneBadVersion;
    return reader.status;
}

SceneStatus readMaterial(SceneFileReader& reader, MaterialRecord& record, uint64_t& offset) {
    SceneStatus status = findChunk(reader, ChunkMaterial, offset);
    if (status != SceneOk) return status;
    offset = reader.chunk.nextChunkOffset;
    uint32_t version = reader.chunk.chunkVersion;
    ChunkBody body;
    if (body.fetch(reader) != SceneOk) return reader.status;

    ByteSpan bytes = body.bytes();
    int32_t type = recordTypeOf(bytes);
    uint32_t image = materialImageLength(type);
    if (image == 0) return reader.status = SceneInvalid;
    std::memset(&record, 0, sizeof record);
    bytes.overlay(&record, image);
    fixMaterialText(record);
    body.reset();
    if (version != kRecordChunkVersion) return reader.status = SceneBadVersion;

    if (type == kVolumeMaterialType && bytesOf(record)[kVolumeCacheFlagOffset] != 0) {
        readVolumeCache(reader, record, offset);
        offset = reader.chunk.nextChunkOffset;
    }
    return reader.status;
}

void releaseMaterial(MaterialRecord& record) {
    if (record.type != kVolumeMaterialType) return;
    IPhxCache* cache = volumeCacheOf(record);
    if (cache) cache->Release();
    setVolumeCache(record, nullptr);
}

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
SceneStatus readVolumeCache(SceneFileReader& reader, MaterialRecord& record, uint64_t& offset) {
    RecordChunk cache = openFollowing(reader, ChunkPhxData, Following::Optional, offset);
    if (cache.status != SceneOk || !cache.found) return cache.status;
    if (!TRDF_Load::PhxData::bodyIsValid(cache.body.data(), cache.body.bytes().size)) return SceneInvalid;
    TRDF_Load::PhxData* grid = TRDF_Load::PhxData::create(cache.body.data());
    if (!grid) return SceneOutOfMemory;
    cache.body.release();
    setVolumeCache(record, grid);
    return SceneOk;
}

template <class Record> void clearRecord(Record& record) {
    std::memset(&record, 0, sizeof record);
}

} // namespace

SceneStatus readTexMap(SceneFileReader& reader, TexMapRecord& record, uint64_t& offset) {
    RecordChunk chunk = openRecord(reader, ChunkTexMap, offset, VersionCheck::AfterRecord);
    if (chunk.status != SceneOk) return chunk.status;
    // An unknown type is reported before the version, and leaves the record as it was.
    if (!copyImage(chunk.body.bytes(), texMapImageLength, record, clearRecord<TexMapRecord>))
        return SceneInvalid;
    fixRecordText(record.Name, kNameFieldBytes);
    return chunk.version == kRecordChunkVersion ? SceneOk : SceneBadVersion;
}

SceneStatus readMaterial(SceneFileReader& reader, MaterialRecord& record, uint64_t& offset) {
    RecordChunk chunk = openRecord(reader, ChunkMaterial, offset, VersionCheck::AfterRecord);
    if (chunk.status != SceneOk) return chunk.status;
    if (!copyImage(chunk.body.bytes(), materialImageLength, record, clearRecord<MaterialRecord>))
        return SceneInvalid;
    fixMaterialText(record);
    chunk.body.reset();
    if (chunk.version != kRecordChunkVersion) return SceneBadVersion;
    if (record.type != kVolumeMaterialType || bytesOf(record)[kVolumeCacheFlagOffset] == 0) return SceneOk;
    return readVolumeCache(reader, record, offset);
}

void releaseMaterial(MaterialRecord& record) {
    if (record.type != kVolumeMaterialType) return;
    IPhxCache* cache = volumeCacheOf(record);
    if (cache) cache->Release();
    setVolumeCache(record, nullptr);
}

#include "scene/chunk_scan.h"

#include "memory/pool.h"

namespace {

// Walks from `offset` to the next chunk of `type` and leaves its header in reader.chunk.
// SceneEndOfChunks when the chain ends first; `offset` then names the last link followed.
SceneStatus findChunk(SceneFileReader& reader, uint32_t type, uint64_t& offset) {
    for (;;) {
        SceneStatus status = reader.nextChunk(offset);
        if (status != SceneOk) return status;
        if (reader.chunk.chunkType == type) return SceneOk;
        offset = reader.chunk.nextChunkOffset;
        if (offset == 0 || offset >= reader.fileSize) return SceneEndOfChunks;
    }
}

RecordChunk failed(SceneStatus status) {
    RecordChunk chunk;
    chunk.status = status;
    return chunk;
}

} // namespace

RecordChunk openRecord(SceneFileReader& reader, uint32_t type, uint64_t& offset, VersionCheck check) {
    SceneStatus status = findChunk(reader, type, offset);
    if (status != SceneOk) return failed(status);
    offset = reader.chunk.nextChunkOffset;
    RecordChunk chunk;
    chunk.version = reader.chunk.chunkVersion;
    if (check == VersionCheck::BeforeBody && chunk.version != kRecordChunkVersion)
        return failed(SceneBadVersion);
    chunk.found = true;
    chunk.status = chunk.body.fetch(reader);
    return chunk;
}

RecordChunk openFollowing(SceneFileReader& reader, uint32_t type, Following rule, uint64_t& offset) {
    offset = reader.chunk.nextChunkOffset;
    if (offset == 0) return failed(SceneEndOfChunks);
    SceneStatus status = reader.nextChunk(offset);
    // A link that fails leaves the header as it was, and so `offset` where it stood.
    offset = reader.chunk.nextChunkOffset;
    if (status != SceneOk) return failed(status);
    if (reader.chunk.chunkType != type) return failed(rule == Following::Required ? SceneInvalid : SceneOk);
    RecordChunk chunk;
    chunk.found = true;
    chunk.version = reader.chunk.chunkVersion;
    chunk.status = chunk.body.fetch(reader);
    if (chunk.status == SceneOk && chunk.version != kRecordChunkVersion) chunk.status = SceneBadVersion;
    return chunk;
}

SceneStatus ChunkBody::fetch(SceneFileReader& reader) {
    reset();
    const BodyLocation where = reader.currentBody();
    SceneStatus status = reader.readChunkBody(block, where.storedSize, where.compression, where.offset);
    size = status == SceneOk ? reader.bodySize : 0;
    return status;
}

void* ChunkBody::release() {
    void* taken = block;
    block = nullptr;
    size = 0;
    return taken;
}

void ChunkBody::reset() {
    poolFree(poolInstance(), block);
    block = nullptr;
    size = 0;
}

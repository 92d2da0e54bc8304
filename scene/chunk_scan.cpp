#include "scene/chunk_scan.h"

#include "memory/pool.h"

SceneStatus findChunk(SceneFileReader& reader, uint32_t type, uint64_t& offset) {
    if (reader.status == SceneEndOfChunks) reader.status = SceneOk;
    if (reader.status != SceneOk) return reader.status;
    for (;;) {
        SceneStatus status = reader.nextChunk(offset);
        if (status != SceneOk) return status;
        if (reader.chunk.chunkType == type) return SceneOk;
        offset = reader.chunk.nextChunkOffset;
        if (offset == 0 || offset >= reader.fileSize) return reader.status = SceneEndOfChunks;
    }
}

SceneStatus readFollowingChunk(SceneFileReader& reader, uint64_t& offset) {
    offset = reader.chunk.nextChunkOffset;
    if (offset == 0) {
        if (reader.status == SceneOk) reader.status = SceneEndOfChunks;
        return reader.status;
    }
    return reader.nextChunk(offset);
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

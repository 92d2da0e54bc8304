// The walk that every typed reader shares: find the next chunk of a type, fetch its body,
// and step to the chunk that must directly follow a record.
#pragma once
#include "scene/byte_span.h"
#include "scene/scene_file_reader.h"

// The chunk version that every record type but some lights is written with.
constexpr uint32_t kRecordChunkVersion = 100;

// Walks from `offset` (0: the first chunk) to the next chunk of `type` and leaves its header
// in reader.chunk. SceneEndOfChunks when the chain ends first; `offset` then names the last
// link followed.
SceneStatus findChunk(SceneFileReader& reader, uint32_t type, uint64_t& offset);

// Reads the header of the chunk that the current one links to. A link of 0 ends the chain
// here: it never leads back to the first chunk.
SceneStatus readFollowingChunk(SceneFileReader& reader, uint64_t& offset);

// The type in the first four bytes of an image record; 0, which no kind uses, when the body
// is too short to hold one.
inline int32_t recordTypeOf(ByteSpan body) {
    return body.holds(0, 4) ? body.i32(0) : 0;
}

// The decoded body of the chunk whose header was read last. Owns the pool block.
class ChunkBody {
  public:
    ChunkBody() = default;
    ~ChunkBody() { reset(); }
    ChunkBody(const ChunkBody&) = delete;
    ChunkBody& operator=(const ChunkBody&) = delete;

    SceneStatus fetch(SceneFileReader& reader);
    ByteSpan bytes() const { return ByteSpan{block, size}; }
    uint8_t* data() const { return static_cast<uint8_t*>(block); }
    // Hands the block over; the body is empty afterwards.
    void* release();
    void reset();

  private:
    void* block = nullptr;
    uint64_t size = 0;
};

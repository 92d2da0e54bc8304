// The scene file's container: a header, then a chain of chunks whose bodies may be zstd frames.
#pragma once
#include "platform/files.h"
#include "scene/body_read_ahead.h"
#include "scene/scene_status.h"

#include <cstddef>
#include <cstdint>
#include <unordered_set>

enum ChunkType : uint32_t {
    ChunkSettings = 1,
    ChunkCamera = 2,
    ChunkCameraPath = 3,
    ChunkTexMap = 4,
    ChunkMaterial = 5,
    ChunkTriangleMesh = 6,
    ChunkSprites = 7,
    ChunkFur = 8,
    ChunkLight = 9,
    ChunkLightPath = 10,
    ChunkTextureFile = 11,
    ChunkTextureData = 12,
    ChunkPhxData = 13,
};

struct SceneFileHeader {
    char magic[16];
    uint32_t formatVersion;
    uint64_t headerCheck;
    uint64_t firstChunkOffset;
};

struct ChunkHeader {
    uint32_t chunkVersion;
    uint32_t chunkType;
    uint32_t compression;
    uint32_t headerSize;
    uint64_t storedSize;
    uint64_t nextChunkOffset;
};
static_assert(sizeof(ChunkHeader) == 32);

class SceneFileReader {
  public:
    SceneFileReader() = default;
    ~SceneFileReader() { close(); }
    SceneFileReader(const SceneFileReader&) = delete;
    SceneFileReader& operator=(const SceneFileReader&) = delete;

    SceneStatus open(const char16_t* path);
    void close();
    // `offset` names the chunk to read, 0 meaning the first; on return it holds the offset read.
    SceneStatus nextChunk(uint64_t& offset);
    // `out` receives a pool block holding the decoded body (the caller frees it), or null.
    SceneStatus readChunkBody(void*& out, uint64_t storedSize, uint32_t compression, uint64_t bodyOffset);
    // The body of the chunk whose header was read last, while the reader stands right behind
    // that header.
    BodyLocation currentBody() const;
    // Called right after a chunk header, before its body is fetched: has the body of the next
    // chunk of `type` and `version`, from the chunk at `offset` on, read and decoded on
    // another thread, beside the body of this chunk, for readChunkBody to take when it comes
    // to it. A chain that cannot be followed, or a body that cannot fit in the file, is left
    // for the sweep to meet in its own order.
    void readAhead(uint64_t offset, uint32_t type, uint32_t version);

    platform::FileHandle fileHandle = platform::kNoFile;
    SceneFileHeader header{};
    ChunkHeader chunk{};
    uint64_t filePosition = 0;
    uint64_t fileSize = 0;

    // Size of the block that the last successful readChunkBody handed out, so that the
    // typed readers never look past the decoded body.
    uint64_t bodySize = 0;
    // Diagnostics: seeks issued, file reads issued for bodies, decompression attempts, bodies
    // that were taken from the read-ahead.
    uint64_t seekCount = 0;
    uint64_t bodyReadCount = 0;
    uint64_t decodeAttempts = 0;
    uint64_t bodiesReadAhead = 0;
    // Longest single read of a body; the operating system call takes 32-bit lengths.
    uint64_t maxReadSlice = kMaxReadSlice;

    static constexpr uint64_t kMaxReadSlice = 0x40000000;

  private:
    bool seekTo(uint64_t offset);
    uint64_t sliceLimit() const;

    // The first failure of the file itself, from its header, a link or a body: every later
    // operation returns it without touching the file. The end of the chain is no failure.
    SceneStatus failure_ = SceneOk;
    // Offsets of the chunk headers read since the pass began (nextChunk with offset 0). A
    // chain that comes back to one of them is a loop, found before anything is read twice.
    std::unordered_set<uint64_t> linksThisPass;
    // The body about to be fetched may be under way in one; the other takes the next.
    BodyReadAhead ahead[2];
};

// The size of a chunk header in the file.
constexpr uint64_t kChunkHeaderBytes = 32;

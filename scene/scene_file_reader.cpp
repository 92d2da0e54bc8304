// Opening the scene file, walking its chain of chunks and fetching chunk bodies.
#include "scene/scene_file_reader.h"

#include "memory/pool.h"
#include "scene/byte_span.h"
#include "scene/chunk_decompress.h"

#include <cstring>

namespace {

constexpr char kSceneMagic[16] = {'t', 'a', 'v', 'i', 'r', 'e', 'n', 'd',
                                  'e', 'r', 'e', 'r', 'f', 'i', 'l', 'e'};
constexpr uint32_t kNewestFormatVersion = 103;
constexpr size_t kFileHeaderBytes = 36;
// Links that read-ahead follows to find the next body. Parts of a model follow each other,
// and looking further costs more than it could save; it also keeps a chain that loops from
// being walked twice before the sweep finds the loop.
constexpr uint64_t kReadAheadReach = 1024;

ChunkHeader parseChunkHeader(const uint8_t (&raw)[kChunkHeaderBytes]) {
    ByteSpan bytes{raw, sizeof raw};
    ChunkHeader header;
    header.chunkVersion = bytes.u32(0);
    header.chunkType = bytes.u32(4);
    header.compression = bytes.u32(8);
    header.headerSize = bytes.u32(12);
    header.storedSize = bytes.u64(16);
    header.nextChunkOffset = bytes.u64(24);
    return header;
}

} // namespace

SceneStatus SceneFileReader::open(const char16_t* path) {
    close();
    header = SceneFileHeader{};
    chunk = ChunkHeader{};
    filePosition = 0;
    fileSize = 0;
    failure_ = SceneOk;
    bodySize = 0;
    linksThisPass.clear();
    seekCount = bodyReadCount = decodeAttempts = bodiesReadAhead = 0;

    fileHandle = platform::openForReading(path);
    if (fileHandle == platform::kNoFile) return failure_ = SceneIoError;

    uint8_t raw[kFileHeaderBytes];
    size_t got = 0;
    if (!platform::readFile(fileHandle, raw, sizeof raw, &got) || got != sizeof raw) {
        return failure_ = SceneInvalid;
    }
    ByteSpan bytes{raw, sizeof raw};
    std::memcpy(header.magic, raw, sizeof header.magic);
    header.formatVersion = bytes.u32(16);
    header.headerCheck = bytes.u64(20);
    header.firstChunkOffset = bytes.u64(28);

    for (size_t i = 0; i < sizeof kSceneMagic; ++i) {
        if (header.magic[i] != kSceneMagic[i]) return failure_ = SceneInvalid;
    }
    if (header.formatVersion > kNewestFormatVersion) return failure_ = SceneBadVersion;
    if (header.headerCheck == 0) return failure_ = SceneInvalid;

    filePosition = kFileHeaderBytes;
    if (!platform::fileSize(fileHandle, &fileSize)) failure_ = SceneIoError;
    return failure_;
}

void SceneFileReader::close() {
    for (BodyReadAhead& slot : ahead)
        slot.drop(); // it reads through the handle
    if (fileHandle != platform::kNoFile) platform::closeFile(fileHandle);
    fileHandle = platform::kNoFile;
}

// Reading in chain order never needs a seek: the position is tracked and compared first.
bool SceneFileReader::seekTo(uint64_t offset) {
    if (offset != filePosition) {
        ++seekCount;
        if (!platform::seekFile(fileHandle, offset)) failure_ = SceneIoError;
    }
    filePosition = offset;
    return failure_ == SceneOk;
}

SceneStatus SceneFileReader::nextChunk(uint64_t& offset) {
    if (failure_ != SceneOk) return failure_;
    if (offset == 0) {
        offset = header.firstChunkOffset;
        linksThisPass.clear();
    }
    if (offset >= fileSize) return SceneEndOfChunks;
    // Chunk headers cannot overlap, so a well-formed chain has fewer links than this; the
    // bound also keeps the set of offsets in proportion to the file.
    if (linksThisPass.size() >= fileSize / kChunkHeaderBytes) return failure_ = SceneInvalid;
    if (!linksThisPass.insert(offset).second) return failure_ = SceneInvalid;
    if (!seekTo(offset)) return failure_;

    uint8_t raw[kChunkHeaderBytes];
    size_t got = 0;
    bool ok = platform::readFile(fileHandle, raw, sizeof raw, &got);
    filePosition += got;
    if (!ok || got != sizeof raw) return failure_ = SceneInvalid;

    chunk = parseChunkHeader(raw);
    return SceneOk;
}

void SceneFileReader::readAhead(uint64_t offset, uint32_t type, uint32_t version) {
    if (failure_ != SceneOk) return;
    for (uint64_t links = 0; offset != 0 && offset < fileSize && links < kReadAheadReach; ++links) {
        uint8_t raw[kChunkHeaderBytes];
        size_t got = 0;
        if (!platform::readFileAt(fileHandle, offset, raw, sizeof raw, &got) || got != sizeof raw) return;
        ChunkHeader next = parseChunkHeader(raw);
        if (next.chunkType == type && next.chunkVersion == version) {
            uint64_t bodyOffset = offset + next.headerSize;
            if (bodyOffset >= fileSize || next.storedSize > fileSize - bodyOffset) return;
            const BodyLocation location{bodyOffset, next.storedSize, next.compression};
            if (ahead[0].holds(location) || ahead[1].holds(location)) return;
            BodyReadAhead& slot = ahead[0].holds(currentBody()) ? ahead[1] : ahead[0];
            slot.start(fileHandle, location, sliceLimit());
            return;
        }
        offset = next.nextChunkOffset;
    }
}

BodyLocation SceneFileReader::currentBody() const {
    return BodyLocation{filePosition - kChunkHeaderBytes + chunk.headerSize, chunk.storedSize, chunk.compression};
}

uint64_t SceneFileReader::sliceLimit() const {
    return maxReadSlice == 0 || maxReadSlice > kMaxReadSlice ? kMaxReadSlice : maxReadSlice;
}

SceneStatus SceneFileReader::readChunkBody(void*& out, uint64_t storedSize, uint32_t compression,
                                           uint64_t bodyOffset) {
    out = nullptr;
    bodySize = 0;
    if (failure_ != SceneOk) return failure_;
    if (bodyOffset >= fileSize) return failure_ = SceneInvalid;
    // A body that runs past the end of the file would come up short when read; saying so
    // before allocating keeps a forged size from reserving memory the file cannot fill.
    if (storedSize > fileSize - bodyOffset) return failure_ = SceneIoError;

    FetchedBody early;
    const BodyLocation location{bodyOffset, storedSize, compression};
    if (ahead[0].take(location, early) || ahead[1].take(location, early)) {
        out = early.block;
        bodySize = early.size;
        bodyReadCount += early.reads;
        decodeAttempts += early.decodeAttempts;
        ++bodiesReadAhead;
        return SceneOk;
    }
    if (!seekTo(bodyOffset)) return failure_;

    void* block = poolAlloc(poolInstance(), storedSize);
    if (!block) return failure_ = SceneOutOfMemory;
    out = block;

    const uint64_t limit = sliceLimit();
    uint8_t* cursor = static_cast<uint8_t*>(block);
    uint64_t remaining = storedSize;
    while (remaining > 0 && failure_ == SceneOk) {
        uint64_t slice = remaining < limit ? remaining : limit;
        size_t got = 0;
        ++bodyReadCount;
        bool ok = platform::readFile(fileHandle, cursor, slice, &got);
        filePosition += got;
        if (!ok || got != slice) failure_ = SceneIoError;
        cursor += got;
        remaining -= got;
    }
    if (failure_ != SceneOk) return failure_;

    // Only 1 means a frame; every other value is stored data.
    if (compression == 1) return failure_ = decodeZstdBody(out, storedSize, bodySize, decodeAttempts);
    bodySize = storedSize;
    return SceneOk;
}

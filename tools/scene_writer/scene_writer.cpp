#include "tools/scene_writer/scene_writer.h"

#include <zstd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace scene_writer {

namespace {

constexpr uint64_t kFileHeaderBytes = 36;
constexpr uint64_t kChunkHeaderBytes = 32;
constexpr uint32_t kSkippableMagic = 0x184D2A50;

void reserveFor(Bytes& bytes, size_t end) {
    if (bytes.size() < end) bytes.resize(end, 0);
}

uint64_t bodyStart(const Chunk& chunk) {
    uint64_t declared = std::max<uint64_t>(chunk.headerSize, kChunkHeaderBytes);
    return chunk.bodyGap ? kChunkHeaderBytes + *chunk.bodyGap : declared;
}

// Size of a zstd frame header, magic number included, from its descriptor byte.
size_t frameHeaderBytes(const Bytes& frame) {
    uint8_t descriptor = frame.at(4);
    bool singleSegment = (descriptor >> 5) & 1;
    const size_t dictionaryBytes[4] = {0, 1, 2, 4};
    const size_t contentSizeBytes[4] = {singleSegment ? size_t(1) : size_t(0), 2, 4, 8};
    return 4 + 1 + (singleSegment ? 0 : 1) + dictionaryBytes[descriptor & 3] +
           contentSizeBytes[descriptor >> 6];
}

} // namespace

void put32(Bytes& bytes, size_t offset, uint32_t value) {
    reserveFor(bytes, offset + 4);
    for (int i = 0; i < 4; ++i)
        bytes[offset + i] = static_cast<uint8_t>(value >> (8 * i));
}

void put64(Bytes& bytes, size_t offset, uint64_t value) {
    put32(bytes, offset, static_cast<uint32_t>(value));
    put32(bytes, offset + 4, static_cast<uint32_t>(value >> 32));
}

void putF32(Bytes& bytes, size_t offset, float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    put32(bytes, offset, bits);
}

void putText(Bytes& bytes, size_t offset, size_t fieldBytes, const std::string& text) {
    reserveFor(bytes, offset + fieldBytes);
    std::fill(bytes.begin() + offset, bytes.begin() + offset + fieldBytes, 0);
    size_t length = std::min(text.size(), fieldBytes);
    std::memcpy(bytes.data() + offset, text.data(), length);
}

void append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

Bytes zstdFrame(const Bytes& data, bool withContentSize) {
    ZSTD_CCtx* context = ZSTD_createCCtx();
    if (!context) throw std::runtime_error("zstd context");
    ZSTD_CCtx_setParameter(context, ZSTD_c_contentSizeFlag, withContentSize ? 1 : 0);
    Bytes frame(ZSTD_compressBound(data.size()));
    size_t size = ZSTD_compress2(context, frame.data(), frame.size(), data.data(), data.size());
    ZSTD_freeCCtx(context);
    if (ZSTD_isError(size)) throw std::runtime_error("zstd compression");
    frame.resize(size);
    return frame;
}

Bytes skippableFrame(size_t payload) {
    Bytes frame;
    put32(frame, 0, kSkippableMagic);
    put32(frame, 4, static_cast<uint32_t>(payload));
    frame.resize(8 + payload, 0);
    return frame;
}

Bytes corruptFrame(const Bytes& data) {
    Bytes frame = zstdFrame(data, true);
    // Everything behind the frame header becomes nonsense, and the first block header claims
    // the reserved block type, so that decoding fails at once.
    size_t headerEnd = frameHeaderBytes(frame);
    for (size_t i = headerEnd; i < frame.size(); ++i)
        frame[i] = static_cast<uint8_t>(0xA5 ^ i);
    if (headerEnd < frame.size()) frame[headerEnd] = 0x07; // last block, type 3 (reserved)
    return frame;
}

Bytes runLengthFrame(uint64_t declaredSize, uint32_t blocks, uint8_t byte) {
    // Magic; a descriptor with an eight-byte content size and a window byte; a window of
    // 128 KiB; the size.
    Bytes frame = {0x28, 0xB5, 0x2F, 0xFD, 0xC0, 0x38};
    for (int i = 0; i < 8; ++i)
        frame.push_back(static_cast<uint8_t>(declaredSize >> (8 * i)));
    for (uint32_t i = 0; i < blocks; ++i) {
        const uint32_t last = i + 1 == blocks ? 1 : 0;
        const uint32_t header = uint32_t(kRunBlockBytes) << 3 | 1u << 1 | last; // size, run-length type, last
        frame.push_back(static_cast<uint8_t>(header));
        frame.push_back(static_cast<uint8_t>(header >> 8));
        frame.push_back(static_cast<uint8_t>(header >> 16));
        frame.push_back(byte);
    }
    return frame;
}

Chunk storedChunk(uint32_t type, Bytes body, uint32_t version, uint32_t compression) {
    Chunk chunk;
    chunk.type = type;
    chunk.version = version;
    chunk.compression = compression;
    chunk.stored = std::move(body);
    return chunk;
}

Chunk zstdChunk(uint32_t type, const Bytes& body, uint32_t version) {
    Chunk chunk = storedChunk(type, zstdFrame(body), version, 1);
    return chunk;
}

size_t SceneFile::add(Chunk chunk) {
    chunks_.push_back(std::move(chunk));
    return chunks_.size() - 1;
}

uint64_t SceneFile::bodyOffsetOf(size_t index) const {
    return offsetOf(index) + bodyStart(chunks_.at(index));
}

Bytes SceneFile::build() {
    std::vector<size_t> placed = layout;
    if (placed.empty()) {
        for (size_t i = 0; i < chunks_.size(); ++i)
            placed.push_back(i);
    }
    std::vector<size_t> linked = chain;
    if (linked.empty()) linked = placed;

    Bytes file(kFileHeaderBytes, 0);
    offsets_.assign(chunks_.size(), 0);
    for (size_t index : placed) {
        file.resize(file.size() + gapBytes, 0xEE);
        offsets_.at(index) = file.size();
        const Chunk& chunk = chunks_.at(index);
        file.resize(file.size() + bodyStart(chunk), 0xDD);
        append(file, chunk.stored);
    }

    // Headers are written once every offset is known.
    for (size_t index : placed) {
        const Chunk& chunk = chunks_[index];
        uint64_t at = offsets_[index];
        uint64_t next = 0;
        auto position = std::find(linked.begin(), linked.end(), index);
        if (position != linked.end() && position + 1 != linked.end()) {
            next = offsets_.at(*(position + 1));
        } else if (position != linked.end() && endChainAtFileSize) {
            next = file.size();
        }
        put32(file, at + 0, chunk.version);
        put32(file, at + 4, chunk.type);
        put32(file, at + 8, chunk.compression);
        put32(file, at + 12, chunk.headerSize);
        put64(file, at + 16, chunk.storedSize.value_or(chunk.stored.size()));
        put64(file, at + 24, chunk.next.value_or(next));
    }

    std::string paddedMagic = magic;
    paddedMagic.resize(16, '\0');
    std::memcpy(file.data(), paddedMagic.data(), 16);
    put32(file, 16, formatVersion);
    put64(file, 20, headerCheck);
    uint64_t first = linked.empty() ? 0 : offsets_.at(linked.front());
    put64(file, 28, firstChunkOffset.value_or(first));
    return file;
}

bool SceneFile::write(const std::string& path) {
    return writeBytes(path, build());
}

bool writeBytes(const std::string& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return static_cast<bool>(out);
}

} // namespace scene_writer

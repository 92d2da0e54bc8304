// Writes scene files for tavi-build, the example scene and the tests: the file header, chunks
// placed anywhere and linked in any order, stored or zstd bodies, and fields broken on purpose.
#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace scene_writer {

using Bytes = std::vector<uint8_t>;

// Little-endian stores into a byte image; the image grows when a store reaches past its end.
void put32(Bytes& bytes, size_t offset, uint32_t value);
void put64(Bytes& bytes, size_t offset, uint64_t value);
void putF32(Bytes& bytes, size_t offset, float value);
// Narrow text in a field of `fieldBytes`: as much as fits, then a terminator if there is room.
void putText(Bytes& bytes, size_t offset, size_t fieldBytes, const std::string& text);
void append(Bytes& bytes, const Bytes& more);

// ---- zstd frames -------------------------------------------------------------------------------

// One frame holding `data`; without the content size if asked.
Bytes zstdFrame(const Bytes& data, bool withContentSize = true);
// A skippable frame carrying `payload` bytes of nothing.
Bytes skippableFrame(size_t payload);
// A frame whose header declares data.size() bytes but whose blocks are garbage.
Bytes corruptFrame(const Bytes& data);
// A frame whose header declares `declaredSize` bytes and which holds `blocks` run-length blocks
// of 128 KiB of `byte` each: four bytes a block. Where the two sizes differ, a decoder must
// write the blocks out before it can tell that the declaration was wrong.
constexpr uint64_t kRunBlockBytes = 128u << 10;
Bytes runLengthFrame(uint64_t declaredSize, uint32_t blocks, uint8_t byte = 0);

// ---- Chunks --------------------------------------------------------------------------------

struct Chunk {
    uint32_t version = 100;
    uint32_t type = 0;
    uint32_t compression = 0;
    uint32_t headerSize = 32;
    // Bytes between the 32 header bytes and the body; default: what headerSize says.
    std::optional<uint64_t> bodyGap;
    Bytes stored;                       // the body as it stands in the file
    std::optional<uint64_t> storedSize; // written instead of stored.size()
    std::optional<uint64_t> next;       // written instead of the chain's link
};

Chunk storedChunk(uint32_t type, Bytes body, uint32_t version = 100, uint32_t compression = 0);
// compression 1 and the body as one zstd frame with its content size.
Chunk zstdChunk(uint32_t type, const Bytes& body, uint32_t version = 100);

// ---- The file ----------------------------------------------------------------------------------

class SceneFile {
  public:
    std::string magic = "tavirendererfile"; // the first 16 bytes, zero-padded
    uint32_t formatVersion = 103;
    uint64_t headerCheck = 1;
    std::optional<uint64_t> firstChunkOffset; // default: the first chunk of the chain, or 0

    // Order in which chunks are linked, by index; empty means the order in which they were added.
    std::vector<size_t> chain;
    // Order in which chunks are placed in the file; empty means the order in which they were added.
    // Chunks left out of `layout` are not written; chunks left out of `chain` are written unlinked.
    std::vector<size_t> layout;
    // Bytes of filler between the file header and the first chunk, and between chunks.
    uint64_t gapBytes = 0;
    // Link written by the last chunk of the chain: 0, or the file's size when asked.
    bool endChainAtFileSize = false;

    size_t add(Chunk chunk);
    Chunk& operator[](size_t index) { return chunks_[index]; }
    size_t size() const { return chunks_.size(); }

    Bytes build();
    bool write(const std::string& path);
    // Where chunk `index` starts and where its body starts; valid after build().
    uint64_t offsetOf(size_t index) const { return offsets_.at(index); }
    uint64_t bodyOffsetOf(size_t index) const;

  private:
    std::vector<Chunk> chunks_;
    std::vector<uint64_t> offsets_;
};

bool writeBytes(const std::string& path, const Bytes& bytes);

} // namespace scene_writer

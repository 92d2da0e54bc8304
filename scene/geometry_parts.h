// What the three geometry readers share: the walk over a run of chunks that makes one model,
// the checks of offsets against a body, names with their hashes, the first failure of a part,
// and the budget that keeps a small file from asking for unbounded array memory.
#pragma once
#include "scene/byte_span.h"
#include "scene/chunk_scan.h"
#include "scene/records.h"

#include <cstdint>

namespace geometry_parts {

// Array memory one model may take, in proportion to what the model's chunks hold, so that no
// count in a small body can ask for unbounded memory.
class ArrayBudget {
  public:
    // Arrays copied from a body widen its bytes at most twelvefold (a 12-byte point becomes a
    // 144-byte element); sixteen times the decoded bytes leaves room. Slices that share their
    // source bytes cannot make memory grow beyond this.
    static constexpr uint64_t kDecodedFactor = 16;
    // However well a body compresses, the arrays it backs stay within this multiple of its
    // stored bytes: a frame of a few kilobytes that decodes to a gigabyte of zeros cannot
    // become a hundred gigabytes of arrays. Geometry that is not forged compresses far less.
    static constexpr uint64_t kStoredFactor = 4096;
    // Zeroed arrays that no byte of the body stands behind (points whose positions and extras
    // are both absent) are free to declare, so they get only this multiple of stored bytes.
    static constexpr uint64_t kUnbackedFactor = 64;

    explicit ArrayBudget(bool copies) : copies_(copies) {}
    // Whether arrays are built once they have passed their checks, or only checked.
    bool copies() const { return copies_; }
    void grant(uint64_t storedBytes, uint64_t decodedBytes) {
        const uint64_t fromDecoded = times(decodedBytes, kDecodedFactor),
                       fromStored = times(storedBytes, kStoredFactor);
        backed_ = plus(backed_, fromDecoded < fromStored ? fromDecoded : fromStored);
        unbacked_ = plus(unbacked_, times(storedBytes, kUnbackedFactor));
    }
    // An array copied from bytes of the body.
    bool takeBacked(uint64_t bytes) { return take(backed_, bytes); }
    // An array of zeros, with no bytes of the body behind it.
    bool takeUnbacked(uint64_t bytes) { return take(unbacked_, bytes); }

  private:
    static uint64_t times(uint64_t a, uint64_t b) { return a > UINT64_MAX / b ? UINT64_MAX : a * b; }
    static uint64_t plus(uint64_t a, uint64_t b) { return a > UINT64_MAX - b ? UINT64_MAX : a + b; }
    static bool take(uint64_t& remaining, uint64_t bytes) {
        if (bytes > remaining) return false;
        remaining -= bytes;
        return true;
    }

    uint64_t backed_ = 0;
    uint64_t unbacked_ = 0;
    bool copies_;
};

// True when [base + offset, base + offset + length) lies inside the body. No sum can wrap.
inline bool spans(ByteSpan body, uint64_t base, uint64_t offset, uint64_t length) {
    return base <= body.size && offset <= body.size - base && length <= body.size - base - offset;
}

// MurmurHash3 x86 32, seed 0, of the field's narrow bytes up to its terminator.
uint32_t hashName(ByteSpan body, uint64_t offset);

// Keeps the first failure of a part: `status` is set unless a failure came first.
inline void fail(SceneStatus& status, SceneStatus failure) {
    if (status == SceneOk) status = failure;
}

// Reads one model: the run of `chunkType` chunks that starts at the next chunk of the type
// and lasts while each part says that more follow. `build(body, budget, status)` makes one part
// from a body and returns it, or null when nothing could be made; it reports its failures
// through `status`. The part is linked even when it failed halfway, so the caller can release
// what was built. `morePartsField` is the body offset of the part's follow flag; `copies`
// goes to the budget.
template <class Part, class Build>
SceneStatus readModelRun(SceneFileReader& reader, uint32_t chunkType, uint64_t morePartsField, Part*& head,
                         uint64_t& offset, bool copies, Build build) {
    head = nullptr;
    Part* previous = nullptr;
    bool seenOne = false;
    ArrayBudget budget(copies);
    SceneStatus status = SceneOk;
    while (status == SceneOk) {
        status = reader.nextChunk(offset);
        if (status != SceneOk) break;
        offset = reader.chunk.nextChunkOffset;
        if (reader.chunk.chunkType != chunkType) {
            // The run ends at the first chunk of another type once it has begun.
            if (seenOne) break;
        } else {
            seenOne = true;
            // Chunks of another layout version are passed over, not refused: a model may
            // carry parts that this reader doesn't know among those it does.
            if (reader.chunk.chunkVersion == kRecordChunkVersion) {
                // The next part, or the next model's first, decodes beside this one and while
                // it is built.
                reader.readAhead(offset, chunkType, kRecordChunkVersion);
                ChunkBody body;
                status = body.fetch(reader);
                if (status != SceneOk) break;
                budget.grant(reader.chunk.storedSize, body.bytes().size);
                Part* part = build(body.bytes(), budget, status);
                if (part) {
                    if (previous) previous->next = part;
                    if (!head) head = part;
                    previous = part;
                }
                if (body.bytes().i32(morePartsField) == 0) break;
            }
        }
        if (offset == 0 || offset >= reader.fileSize) break;
    }
    if (head && status == SceneEndOfChunks) status = SceneOk;
    if (status == SceneOk && !head) status = SceneEndOfChunks;
    return status;
}

} // namespace geometry_parts

// Decoding a chunk body that is a zstd frame.
//
// The size a frame declares is only where the output buffer starts: a body may hold more
// frames behind the first, so the buffer grows for as long as the decoder asks for more room.
// Each attempt decodes from the start again, so the buffer at least doubles each time (and
// never by less than 64 KiB): decoding then costs a small multiple of the decoded size, where
// steps of a fixed size would cost its square. The block handed to the caller always has
// exactly the decoded size.
#include "scene/chunk_decompress.h"

#include "memory/pool.h"

#include <zstd.h>
#include <zstd_errors.h>

#include <cstring>

namespace {

constexpr uint64_t kLeastCapacityStep = 0x10000;

// The capacity of the attempt after one of `capacity` that ran out of room.
uint64_t grown(uint64_t capacity, uint64_t ceiling) {
    const uint64_t step = capacity > kLeastCapacityStep ? capacity : kLeastCapacityStep;
    if (capacity >= ceiling) return UINT64_MAX;
    return step > ceiling - capacity ? ceiling : capacity + step;
}

// No zstd block is shorter than three bytes, nor decodes to more than one maximal block, so
// `storedSize` bytes cannot produce more than this. A buffer beyond it can never be needed.
uint64_t largestDecodable(uint64_t storedSize) {
    uint64_t blocks = storedSize / 3 + 1;
    constexpr uint64_t kLimit = UINT64_MAX / ZSTD_BLOCKSIZE_MAX;
    return blocks > kLimit ? UINT64_MAX : blocks * ZSTD_BLOCKSIZE_MAX;
}

enum class Attempt { Decoded, NeedsRoom, Failed };

Attempt decodeInto(void* work, uint64_t capacity, const void* frame, uint64_t storedSize, size_t& decoded) {
    ZSTD_DCtx* context = ZSTD_createDCtx();
    if (!context) return Attempt::Failed;
    size_t result = ZSTD_decompressDCtx(context, work, capacity, frame, storedSize);
    ZSTD_freeDCtx(context);
    if (!ZSTD_isError(result)) {
        decoded = result;
        return result != 0 ? Attempt::Decoded : Attempt::Failed;
    }
    return ZSTD_getErrorCode(result) == ZSTD_error_dstSize_tooSmall ? Attempt::NeedsRoom : Attempt::Failed;
}

} // namespace

uint64_t firstDecodeCapacity(const void* head, uint64_t headBytes, uint64_t storedSize) {
    unsigned long long declared = ZSTD_getFrameContentSize(head, headBytes);
    if (declared == ZSTD_CONTENTSIZE_UNKNOWN || declared == ZSTD_CONTENTSIZE_ERROR) return 0;
    return declared <= largestDecodable(storedSize) && declared <= SIZE_MAX ? declared : 0;
}

bool decodeFilling(void* out, uint64_t capacity, const void* frame, uint64_t storedSize) {
    size_t decoded = 0;
    return decodeInto(out, capacity, frame, storedSize, decoded) == Attempt::Decoded && decoded == capacity;
}

SceneStatus decodeZstdBody(void*& body, uint64_t storedSize, uint64_t& bodySize, uint64_t& decodeAttempts) {
    unsigned long long declared = ZSTD_getFrameContentSize(body, storedSize);
    if (declared == 0 || declared == ZSTD_CONTENTSIZE_UNKNOWN || declared == ZSTD_CONTENTSIZE_ERROR)
        return SceneInvalid;

    // Every way out of this loop but success is reported as a failed allocation: that is
    // where an unbounded retry would have ended, and callers already treat it as final.
    const uint64_t ceiling = largestDecodable(storedSize);
    PoolAllocator* pool = poolInstance();
    uint64_t capacity = declared;
    for (;;) {
        if (capacity > ceiling || capacity > SIZE_MAX) return SceneOutOfMemory;
        void* work = poolAlloc(pool, capacity);
        if (!work) return SceneOutOfMemory;
        ++decodeAttempts;
        size_t decoded = 0;
        Attempt attempt = decodeInto(work, capacity, body, storedSize, decoded);
        if (attempt == Attempt::Decoded) {
            poolFree(pool, body);
            // A frame that declared its size truly fills the working block exactly: that block
            // is already what a fresh one of the decoded size would be, and handing it over
            // spares a second body-sized block and a copy of the whole body.
            if (decoded == capacity) {
                body = work;
                bodySize = decoded;
                return SceneOk;
            }
            body = poolAlloc(pool, decoded);
            SceneStatus status = body ? SceneOk : SceneOutOfMemory;
            if (body) {
                std::memcpy(body, work, decoded);
                bodySize = decoded;
            }
            poolFree(pool, work);
            return status;
        }
        poolFree(pool, work);
        if (attempt == Attempt::Failed) return SceneOutOfMemory;
        capacity = grown(capacity, ceiling);
    }
}

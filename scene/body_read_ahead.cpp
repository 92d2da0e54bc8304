#include "scene/body_read_ahead.h"

#include "memory/pool.h"
#include "scene/chunk_decompress.h"

#include <functional>
#include <system_error>

namespace {

// Fills the blocks that `start` took: the second thread allocates nothing, so every block
// comes from the reader's own shard of the pool, as it would without read-ahead.
void fetch(platform::FileHandle file, BodyLocation where, uint64_t sliceLimit, FetchedBody& body) {
    uint8_t* cursor = static_cast<uint8_t*>(body.stored);
    for (uint64_t at = where.offset, remaining = where.storedSize; remaining > 0;) {
        uint64_t slice = remaining < sliceLimit ? remaining : sliceLimit;
        size_t got = 0;
        ++body.reads;
        if (!platform::readFileAt(file, at, cursor, slice, &got) || got != slice) return;
        cursor += got;
        at += got;
        remaining -= got;
    }
    if (where.compression == 1) {
        ++body.decodeAttempts;
        if (!decodeFilling(body.block, body.size, body.stored, where.storedSize)) return;
        poolFree(poolInstance(), body.stored);
    } else {
        body.block = body.stored;
        body.size = where.storedSize;
    }
    body.stored = nullptr;
    body.whole = true;
}

void release(FetchedBody& body) {
    poolFree(poolInstance(), body.stored);
    poolFree(poolInstance(), body.block);
    body = FetchedBody{};
}

} // namespace

void BodyReadAhead::start(platform::FileHandle file, const BodyLocation& where, uint64_t sliceLimit) {
    if (holds(where)) return;
    drop();
    PoolAllocator* pool = poolInstance();
    FetchedBody body;
    body.stored = poolAlloc(pool, where.storedSize);
    if (!body.stored) return;
    if (where.compression == 1) {
        // A frame that does not declare a size it can have is left to the reader, which
        // grows its block step by step or fails.
        uint8_t head[kFrameHeaderBytesMax];
        size_t headBytes = where.storedSize < sizeof head ? where.storedSize : sizeof head;
        size_t got = 0;
        bool headRead = platform::readFileAt(file, where.offset, head, headBytes, &got) && got == headBytes;
        body.size = headRead ? firstDecodeCapacity(head, headBytes, where.storedSize) : 0;
        body.block = body.size ? poolAlloc(pool, body.size) : nullptr;
        if (!body.block) {
            release(body);
            return;
        }
    }
    where_ = where;
    fetched_ = body;
    try {
        worker_ = std::thread(fetch, file, where, sliceLimit, std::ref(fetched_));
    } catch (const std::system_error&) {
        release(fetched_); // the reader fetches the body itself when it comes to it
    }
}

bool BodyReadAhead::take(const BodyLocation& where, FetchedBody& body) {
    if (!holds(where)) return false;
    worker_.join();
    if (!fetched_.whole) {
        release(fetched_);
        return false;
    }
    body = fetched_;
    fetched_ = FetchedBody{};
    return true;
}

void BodyReadAhead::drop() {
    if (!worker_.joinable()) return;
    worker_.join();
    release(fetched_);
}

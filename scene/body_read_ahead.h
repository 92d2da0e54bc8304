// Fetching one chunk body on a second thread while the caller works on the one before it.
//
// Decoding is most of what loading a large model costs, and the geometry sweeps know which
// body they will want next. Only a body that arrived whole is handed over: a fetch that went
// wrong, or a frame that needs more than the one decoding attempt its declared size allows,
// is dropped, and the reader meets it again in its own order, so statuses are what they
// would have been without a second thread.
#pragma once
#include "platform/files.h"

#include <cstdint>
#include <thread>

// Where a body lies in the file and how it is stored.
struct BodyLocation {
    uint64_t offset = 0;
    uint64_t storedSize = 0;
    uint32_t compression = 0;

    bool operator==(const BodyLocation& other) const {
        return offset == other.offset && storedSize == other.storedSize && compression == other.compression;
    }
};

// A body read and, when it is a frame, decoded; with what it took to get it.
struct FetchedBody {
    void* stored = nullptr; // pool block for the bytes as stored, while they are needed
    void* block = nullptr;  // pool block of `size` bytes: the body
    uint64_t size = 0;
    uint64_t reads = 0;
    uint64_t decodeAttempts = 0;
    bool whole = false; // read and decoded without a failure
};

class BodyReadAhead {
  public:
    BodyReadAhead() = default;
    ~BodyReadAhead() { drop(); }
    BodyReadAhead(const BodyReadAhead&) = delete;
    BodyReadAhead& operator=(const BodyReadAhead&) = delete;

    // Starts fetching the body at `where`, read in slices of at most `sliceLimit` bytes,
    // unless that body is already under way; any other fetch is dropped first. `file` must
    // stay open until the fetch is taken or dropped.
    void start(platform::FileHandle file, const BodyLocation& where, uint64_t sliceLimit);
    // Whether the body at `where` is the one under way or waiting.
    bool holds(const BodyLocation& where) const { return worker_.joinable() && where == where_; }
    // Hands over the body at `where` if it is the one fetched and it arrived whole, waiting
    // for the fetch to end. A fetch of another body is left running.
    bool take(const BodyLocation& where, FetchedBody& body);
    // Waits for a fetch under way and frees what it brought.
    void drop();

  private:
    std::thread worker_;
    BodyLocation where_;
    FetchedBody fetched_; // the worker's until it is joined
};

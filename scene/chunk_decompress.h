// Decoding a chunk body that is a zstd frame.
#pragma once
#include "scene/scene_status.h"

#include <cstdint>

// Replaces the frame in the pool block `body` (`storedSize` bytes) by a pool block of exactly
// its decoded bytes and sets `bodySize`. On a failure `body` is left to the caller: the frame,
// or null when the decoded bytes found no block. `decodeAttempts` counts decoder runs.
SceneStatus decodeZstdBody(void*& body, uint64_t storedSize, uint64_t& bodySize, uint64_t& decodeAttempts);

// The most bytes a frame header takes (magic 4, descriptor 1, window 1, dictionary id 4, size
// 8): enough of a body to learn the size it decodes to.
constexpr uint64_t kFrameHeaderBytesMax = 18;
// The block that decoding a body of `storedSize` bytes, whose first `headBytes` are `head`,
// starts with: the size its frame declares. 0 when it declares none, or more than the body
// could decode to.
uint64_t firstDecodeCapacity(const void* head, uint64_t headBytes, uint64_t storedSize);
// Decodes the body `frame` into `out`; true only when the result fills all `capacity` bytes,
// as that of a frame which declared its size does.
bool decodeFilling(void* out, uint64_t capacity, const void* frame, uint64_t storedSize);

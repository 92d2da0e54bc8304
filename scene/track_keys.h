// Animation tracks: arrays of TrackKey from the pool, with the element count in a 16-byte block
// in front of the first element, so that a track can be destroyed knowing only its address.
#pragma once
#include "scene/byte_span.h"
#include "scene/records.h"
#include "scene/scene_status.h"

#include <cstdint>

// A key as made: the word at 8 is 0x7FFFFFFF, the floats at 0x24 and 0x38 are 1.0.
void constructTrackKey(TrackKey& key);

// Constructs `count` keys; null when the pool cannot supply count x 64 + 16 bytes. The size
// saturates instead of wrapping, so an absurd count fails the allocation.
TrackKey* allocateTrack(uint64_t count);
void freeTrack(TrackKey* track);
uint64_t trackLength(const TrackKey* track);

// Builds a track of `count` keys from their 36-byte file form at `offset` of `source`. The
// keys must lie in the source (SceneInvalid); a track the pool cannot hold is
// SceneOutOfMemory. `track` and `trackCount` are set together, and only when the track is
// built, so that no object claims keys it does not have. No keys: SceneOk, nothing set.
SceneStatus buildTrack(TrackKey*& track, uint32_t& trackCount, ByteSpan source, uint64_t offset,
                       uint32_t count);

// A copy of `source` with its own count; null for an empty source or an exhausted pool.
TrackKey* copyTrack(const TrackKey* source, uint64_t count);

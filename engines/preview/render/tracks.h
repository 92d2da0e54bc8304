// Animation tracks as the engine reads them: the value of a track of keys at the render time.
#pragma once
#include "engines/preview/vec3.h"
#include "scene/records.h"

#include <cstdint>
#include <vector>

namespace preview {

// One key as this engine gives the words their meaning.
struct TrackSample {
    Vec3 value;
    float scale = 1;
};

struct TimedKey {
    int32_t milliseconds; // kAnyTime for a key that holds at every time
    bool hold;
    TrackSample sample;
};
constexpr int32_t kAnyTime = 0x7FFFFFFF;

// A copy of a track's keys, sorted by time; non-finite values are dropped (`dropped` counts them).
class Track {
  public:
    Track() = default;
    Track(const TrackKey* keys, uint32_t count, int* dropped = nullptr);

    bool empty() const { return keys_.empty(); }
    size_t size() const { return keys_.size(); }
    // The value at `seconds`: the first key before the first, the last after the last, linear
    // (or held) between them. `fallback` for an empty track.
    TrackSample at(double seconds, TrackSample fallback) const;

  private:
    std::vector<TimedKey> keys_;
};

// The render time in seconds from the settings' frame number and frames per second.
double renderSeconds(int32_t frameNumber, int32_t framesPerSecond);

} // namespace preview

#include "engines/preview/render/tracks.h"

#include <algorithm>
#include <cstring>

namespace preview {

namespace {

float wordAsFloat(uint32_t word) {
    float value;
    std::memcpy(&value, &word, sizeof value);
    return value;
}

} // namespace

Track::Track(const TrackKey* keys, uint32_t count, int* dropped) {
    if (!keys) return;
    keys_.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        const TrackKey& key = keys[i];
        TimedKey timed;
        timed.hold = key.words[0] == 1;
        timed.milliseconds = static_cast<int32_t>(key.words[2]);
        timed.sample.value = {wordAsFloat(key.words[4]), wordAsFloat(key.words[5]), wordAsFloat(key.words[6])};
        timed.sample.scale = wordAsFloat(key.words[9]);
        if (!isFinite(timed.sample.value) || !std::isfinite(timed.sample.scale)) {
            if (dropped) ++*dropped;
            continue;
        }
        keys_.push_back(timed);
    }
    std::stable_sort(keys_.begin(), keys_.end(),
                     [](const TimedKey& a, const TimedKey& b) { return a.milliseconds < b.milliseconds; });
}

TrackSample Track::at(double seconds, TrackSample fallback) const {
    if (keys_.empty()) return fallback;
    const double ms = seconds * 1000.0;
    if (keys_.front().milliseconds == kAnyTime || ms <= keys_.front().milliseconds) return keys_.front().sample;
    for (size_t i = 0; i + 1 < keys_.size(); ++i) {
        const TimedKey& a = keys_[i];
        const TimedKey& b = keys_[i + 1];
        if (b.milliseconds == kAnyTime || ms >= b.milliseconds) continue;
        if (a.hold || b.milliseconds == a.milliseconds) return a.sample;
        const float t = static_cast<float>((ms - a.milliseconds) / (static_cast<double>(b.milliseconds) - a.milliseconds));
        return {lerp(a.sample.value, b.sample.value, t), a.sample.scale + (b.sample.scale - a.sample.scale) * t};
    }
    // Past the last timed key (keys for every time sort last and never interpolate).
    for (size_t i = keys_.size(); i-- > 0;)
        if (keys_[i].milliseconds != kAnyTime) return keys_[i].sample;
    return keys_.back().sample;
}

double renderSeconds(int32_t frameNumber, int32_t framesPerSecond) {
    const int32_t fps = framesPerSecond > 0 ? framesPerSecond : 30;
    return static_cast<double>(frameNumber) / fps;
}

} // namespace preview

#include "engines/preview/render/tracks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

namespace preview {
namespace {

TrackKey key(int32_t milliseconds, float x, bool hold = false, float scale = 1) {
    TrackKey k{};
    k.words[0] = hold ? 1 : 0;
    k.words[2] = static_cast<uint32_t>(milliseconds);
    std::memcpy(&k.words[4], &x, sizeof x);
    std::memcpy(&k.words[9], &scale, sizeof scale);
    return k;
}

struct TrackCase {
    const char* what;
    std::vector<TrackKey> keys;
    double seconds;
    float expectedX;
};

TEST(Track, GivesTheValueAtTheRenderTime) {
    const TrackCase cases[] = {
        {"before the first key", {key(1000, 1), key(2000, 3)}, 0.5, 1},
        {"halfway between two keys", {key(1000, 1), key(2000, 3)}, 1.5, 2},
        {"keys out of order are sorted", {key(2000, 3), key(1000, 1)}, 1.25, 1.5},
        {"after the last key", {key(1000, 1), key(2000, 3)}, 9, 3},
        {"a held key keeps its value", {key(1000, 1, true), key(2000, 3)}, 1.9, 1},
        {"a key for every time", {key(kAnyTime, 7)}, 123, 7},
        {"timed keys win over one for every time", {key(kAnyTime, 7), key(0, 1), key(1000, 2)}, 0.5, 1.5},
        {"no keys: the fallback", {}, 1, -4},
    };
    for (const TrackCase& c : cases) {
        const Track track(c.keys.data(), static_cast<uint32_t>(c.keys.size()));
        EXPECT_FLOAT_EQ(track.at(c.seconds, TrackSample{Vec3(-4, 0, 0), 1}).value.x, c.expectedX) << c.what;
    }
}

TEST(Track, DropsKeysThatAreNotFiniteAndCountsThem) {
    const std::vector<TrackKey> keys = {key(0, NAN), key(1000, 5), key(2000, 1, false, INFINITY)};
    int dropped = 0;
    const Track track(keys.data(), 3, &dropped);
    EXPECT_EQ(dropped, 2);
    EXPECT_EQ(track.size(), 1u);
    EXPECT_FLOAT_EQ(track.at(0, {}).value.x, 5);
}

TEST(Track, InterpolatesTheScaleWithThePosition) {
    const std::vector<TrackKey> keys = {key(0, 0, false, 1), key(1000, 0, false, 3)};
    EXPECT_FLOAT_EQ(Track(keys.data(), 2).at(0.5, {}).scale, 2);
}

TEST(RenderSeconds, FollowsFrameAndRateWithThirtyFramesWhenTheRateIsUnset) {
    EXPECT_DOUBLE_EQ(renderSeconds(50, 25), 2.0);
    EXPECT_DOUBLE_EQ(renderSeconds(30, 0), 1.0);
    EXPECT_DOUBLE_EQ(renderSeconds(15, -3), 0.5);
}

} // namespace
} // namespace preview

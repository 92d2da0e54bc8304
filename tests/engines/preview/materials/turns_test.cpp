// The sampling angles' sine and cosine against the exact values, over the whole turn: each
// quarter has its own signs and swap, and the quarter boundaries are where a rounding of the
// quarter could go wrong.
#include "engines/preview/turns.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace preview {
namespace {

TEST(SinCosOfTurns, MatchesTheExactValuesOverTheWholeTurn) {
    std::vector<float> turns;
    for (int i = 0; i <= 1 << 20; ++i) turns.push_back(float(i) / float(1 << 20));
    for (float edge : {0.125f, 0.25f, 0.375f, 0.5f, 0.625f, 0.75f, 0.875f, 1.0f})
        for (float t : {std::nextafter(edge, 0.0f), edge, std::nextafter(edge, 2.0f)}) turns.push_back(t);
    const double tau = 2 * 3.14159265358979323846;
    for (float t : turns) {
        const SinCos got = sinCosOfTurns(t);
        ASSERT_NEAR(got.sin, std::sin(tau * double(t)), 2.5e-7) << "sin at " << t << " turns";
        ASSERT_NEAR(got.cos, std::cos(tau * double(t)), 2.5e-7) << "cos at " << t << " turns";
    }
}

} // namespace
} // namespace preview

// Gradient noise for the NOISE map: smooth, deterministic, about -1..1, and the sums of its
// octaves.
#pragma once
#include "engines/preview/vec3.h"

#include <cstdint>

namespace preview {

float gradientNoise(const Vec3& p, uint32_t seed);

struct Octaves {
    int count = 1;
    float gain = 0.5f;       // amplitude of each octave relative to the one before
    float lacunarity = 2;    // frequency of each octave relative to the one before
    bool turbulence = false; // sum of absolute values (0..1) instead of signed values (-1..1)
};
// The octaves' sum, normalised by the sum of their amplitudes.
float fractalNoise(const Vec3& p, uint32_t seed, const Octaves& octaves);

} // namespace preview

// Sine and cosine of a fraction of a full turn. Sampling draws angles as 2π times a uniform
// number, at every bounce; the library's sincos reduces any argument and is called out of line,
// which costs more than this whole evaluation.
#pragma once
#include "engines/preview/vec3.h"

#include <cmath>
#include <cstdint>
#include <cstring>

namespace preview {

struct SinCos {
    float sin, cos;
};

inline uint32_t bitsOf(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

inline float floatOf(uint32_t bits) {
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// sin and cos of 2π·turns, for turns in [0, 1] (a few ulp from the exact values).
inline SinCos sinCosOfTurns(float turns) {
    // The nearest quarter turn, and what is left: an angle within ±π/4, where short Taylor
    // series are exact to float precision (the first terms left out are below 2e-9).
    const float quarters = std::nearbyint(turns * 4);
    const float r = (turns * 4 - quarters) * (kPi / 2);
    const float r2 = r * r;
    const float s = r * (1 + r2 * (-1.0f / 6 + r2 * (1.0f / 120 + r2 * (-1.0f / 5040 + r2 * (1.0f / 362880)))));
    const float c =
        1 + r2 * (-0.5f + r2 * (1.0f / 24 + r2 * (-1.0f / 720 + r2 * (1.0f / 40320 + r2 * (-1.0f / 3628800)))));
    // Each quarter turn swaps the two and negates one. The quarter is random at every call, so
    // this is done on the bits: branches on it would be mispredicted every other time.
    const uint32_t quarter = static_cast<uint32_t>(static_cast<int32_t>(quarters));
    uint32_t sine = bitsOf(s), cosine = bitsOf(c);
    const uint32_t swapped = (sine ^ cosine) & (0u - (quarter & 1));
    sine ^= swapped ^ ((quarter & 2) << 30);
    cosine ^= swapped ^ (((quarter + 1) & 2) << 30);
    return {floatOf(sine), floatOf(cosine)};
}

} // namespace preview

// Random numbers that depend only on the pixel, the pass and a seed: each pixel's sample of a
// pass draws from a stream of its own, so no thread schedule can change an image.
#pragma once
#include <cstdint>

namespace preview {

class Sampler {
  public:
    Sampler() = default; // a stream of its own only once assigned one of the streams below
    Sampler(uint32_t pixel, uint32_t pass, uint32_t seed) {
        state_ = mix((uint64_t(pixel) << 32) ^ (uint64_t(pass) * 0x9E3779B97F4A7C15ull) ^ seed);
        increment_ = (mix(uint64_t(pass) << 32 | pixel) << 1) | 1u;
    }
    // Uniform in [0, 1).
    float next() {
        // PCG-XSH-RR, 32 bits out of 64 bits of state.
        const uint64_t old = state_;
        state_ = old * 6364136223846793005ull + increment_;
        const uint32_t shifted = static_cast<uint32_t>(((old >> 18u) ^ old) >> 27u);
        const uint32_t rotation = static_cast<uint32_t>(old >> 59u);
        const uint32_t bits = (shifted >> rotation) | (shifted << ((32u - rotation) & 31u));
        return static_cast<float>(bits >> 8) * 0x1p-24f;
    }

  private:
    // The finaliser of SplitMix64: nearby inputs give unrelated states.
    static uint64_t mix(uint64_t z) {
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    uint64_t state_ = 0;
    uint64_t increment_ = 1;
};

} // namespace preview

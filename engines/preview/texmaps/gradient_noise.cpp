#include "engines/preview/texmaps/gradient_noise.h"

#include <cmath>

namespace preview {

namespace {

// A well-mixed hash of a lattice point, so that no permutation table is needed.
uint32_t hashLattice(int32_t x, int32_t y, int32_t z, uint32_t seed) {
    uint32_t h = seed * 0x9E3779B9u;
    for (uint32_t v : {uint32_t(x), uint32_t(y), uint32_t(z)}) {
        h ^= v + 0x7F4A7C15u + (h << 6) + (h >> 2);
        h *= 0x85EBCA6Bu;
        h ^= h >> 13;
    }
    h *= 0xC2B2AE35u;
    return h ^ (h >> 16);
}

// One of the twelve edge directions of a cube, as in improved gradient noise.
float gradientDot(uint32_t hash, float x, float y, float z) {
    const uint32_t h = hash % 12;
    const float u = h < 8 ? x : y;
    const float v = h < 4 ? y : z;
    return ((h & 1) ? -u : u) + ((h & 2) ? -v : v);
}

float fade(float t) { return t * t * t * (t * (t * 6 - 15) + 10); }
float mix(float a, float b, float t) { return a + (b - a) * t; }

} // namespace

float gradientNoise(const Vec3& p, uint32_t seed) {
    const float fx = std::floor(p.x), fy = std::floor(p.y), fz = std::floor(p.z);
    const int32_t x = int32_t(fx), y = int32_t(fy), z = int32_t(fz);
    const float dx = p.x - fx, dy = p.y - fy, dz = p.z - fz;
    float corners[8];
    for (int i = 0; i < 8; ++i) {
        const int cx = i & 1, cy = (i >> 1) & 1, cz = (i >> 2) & 1;
        corners[i] = gradientDot(hashLattice(x + cx, y + cy, z + cz, seed), dx - cx, dy - cy, dz - cz);
    }
    const float u = fade(dx), v = fade(dy), w = fade(dz);
    const float x00 = mix(corners[0], corners[1], u), x10 = mix(corners[2], corners[3], u);
    const float x01 = mix(corners[4], corners[5], u), x11 = mix(corners[6], corners[7], u);
    return mix(mix(x00, x10, v), mix(x01, x11, v), w);
}

float fractalNoise(const Vec3& p, uint32_t seed, const Octaves& octaves) {
    float sum = 0, total = 0, amplitude = 1, frequency = 1;
    for (int i = 0; i < octaves.count; ++i) {
        const float n = gradientNoise(p * frequency, seed + uint32_t(i));
        sum += amplitude * (octaves.turbulence ? std::abs(n) : n);
        total += amplitude;
        amplitude *= octaves.gain;
        frequency *= octaves.lacunarity;
    }
    return total > 0 ? sum / total : 0;
}

} // namespace preview

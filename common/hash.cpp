#include "common/hash.h"

#include <cstring>
#include <string>
#include <utility>

namespace {

// Loads are assembled byte by byte so that the result does not depend on the host's byte order;
// the memcpy keeps unaligned input legal.
uint64_t load64(const unsigned char *p) {
    unsigned char b[8];
    std::memcpy(b, p, 8);
    uint64_t v = 0;
    for (int i = 7; i >= 0; --i)
        v = (v << 8) | b[i];
    return v;
}

uint32_t load32(const unsigned char *p) {
    unsigned char b[4];
    std::memcpy(b, p, 4);
    return static_cast<uint32_t>(b[0]) | static_cast<uint32_t>(b[1]) << 8 |
           static_cast<uint32_t>(b[2]) << 16 | static_cast<uint32_t>(b[3]) << 24;
}

// ---- CityHash64 -------------------------------------------------------------------------------

constexpr uint64_t kK0 = 0xc3a5c85c97cb3127ULL;
constexpr uint64_t kK1 = 0xb492b66fbe98f273ULL;
constexpr uint64_t kK2 = 0x9ae16a3b2f90404fULL;
constexpr uint64_t kMul = 0x9ddfea08eb382d69ULL;

uint64_t rotate64(uint64_t v, int shift) {
    return shift == 0 ? v : (v >> shift) | (v << (64 - shift));
}

uint64_t shiftMix(uint64_t v) {
    return v ^ (v >> 47);
}

uint64_t byteSwap64(uint64_t v) {
    uint64_t r = 0;
    for (int i = 0; i < 8; ++i) {
        r = (r << 8) | (v & 0xFF);
        v >>= 8;
    }
    return r;
}

uint64_t hashLen16(uint64_t u, uint64_t v, uint64_t mul) {
    uint64_t a = (u ^ v) * mul;
    a ^= a >> 47;
    uint64_t b = (v ^ a) * mul;
    b ^= b >> 47;
    return b * mul;
}

uint64_t hashLen16(uint64_t u, uint64_t v) {
    return hashLen16(u, v, kMul);
}

uint64_t hashLen0to16(const unsigned char *s, size_t len) {
    if (len >= 8) {
        uint64_t mul = kK2 + len * 2;
        uint64_t a = load64(s) + kK2;
        uint64_t b = load64(s + len - 8);
        uint64_t c = rotate64(b, 37) * mul + a;
        uint64_t d = (rotate64(a, 25) + b) * mul;
        return hashLen16(c, d, mul);
    }
    if (len >= 4) {
        uint64_t mul = kK2 + len * 2;
        uint64_t a = load32(s);
        return hashLen16(len + (a << 3), load32(s + len - 4), mul);
    }
    if (len > 0) {
        uint32_t a = s[0];
        uint32_t b = s[len >> 1];
        uint32_t c = s[len - 1];
        uint32_t y = a + (b << 8);
        uint32_t z = static_cast<uint32_t>(len) + (c << 2);
        return shiftMix(y * kK2 ^ z * kK0) * kK2;
    }
    return kK2;
}

uint64_t hashLen17to32(const unsigned char *s, size_t len) {
    uint64_t mul = kK2 + len * 2;
    uint64_t a = load64(s) * kK1;
    uint64_t b = load64(s + 8);
    uint64_t c = load64(s + len - 8) * mul;
    uint64_t d = load64(s + len - 16) * kK2;
    return hashLen16(rotate64(a + b, 43) + rotate64(c, 30) + d, a + rotate64(b + kK2, 18) + c, mul);
}

uint64_t hashLen33to64(const unsigned char *s, size_t len) {
    uint64_t mul = kK2 + len * 2;
    uint64_t a = load64(s) * kK2;
    uint64_t b = load64(s + 8);
    uint64_t c = load64(s + len - 24);
    uint64_t d = load64(s + len - 32);
    uint64_t e = load64(s + 16) * kK2;
    uint64_t f = load64(s + 24) * 9;
    uint64_t g = load64(s + len - 8);
    uint64_t h = load64(s + len - 16) * mul;
    uint64_t u = rotate64(a + g, 43) + (rotate64(b, 30) + c) * 9;
    uint64_t v = ((a + g) ^ d) + f + 1;
    uint64_t w = byteSwap64((u + v) * mul) + h;
    uint64_t x = rotate64(e + f, 42) + c;
    uint64_t y = (byteSwap64((v + w) * mul) + g) * mul;
    uint64_t z = e + f + c;
    a = byteSwap64((x + z) * mul + y) + b;
    b = shiftMix((z + a) * mul + d + h) * mul;
    return b + x;
}

// A 16-byte hash of 32 bytes and two seeds.
std::pair<uint64_t, uint64_t> weakHashLen32WithSeeds(const unsigned char *s, uint64_t a, uint64_t b) {
    uint64_t w = load64(s);
    uint64_t x = load64(s + 8);
    uint64_t y = load64(s + 16);
    uint64_t z = load64(s + 24);
    a += w;
    b = rotate64(b + a + z, 21);
    uint64_t c = a;
    a += x;
    a += y;
    b += rotate64(a, 44);
    return {a + z, b + c};
}

// ---- MurmurHash3 x86 32-bit -------------------------------------------------------------------

uint32_t rotate32(uint32_t v, int shift) {
    return (v << shift) | (v >> (32 - shift));
}

uint32_t murmurMixBlock(uint32_t k) {
    k *= 0xcc9e2d51u;
    k = rotate32(k, 15);
    return k * 0x1b873593u;
}

} // namespace

uint64_t cityHash64(const void *data, size_t length) {
    const unsigned char *s = static_cast<const unsigned char *>(data);
    size_t len = length;
    if (len <= 16) return hashLen0to16(s, len);
    if (len <= 32) return hashLen17to32(s, len);
    if (len <= 64) return hashLen33to64(s, len);

    // Beyond 64 bytes the tail is hashed first; the loop then carries 56 bytes of state (v, w, x,
    // y, z) through whole 64-byte blocks, the last of which overlaps the tail already seen.
    uint64_t x = load64(s + len - 40);
    uint64_t y = load64(s + len - 16) + load64(s + len - 56);
    uint64_t z = hashLen16(load64(s + len - 48) + len, load64(s + len - 24));
    std::pair<uint64_t, uint64_t> v = weakHashLen32WithSeeds(s + len - 64, len, z);
    std::pair<uint64_t, uint64_t> w = weakHashLen32WithSeeds(s + len - 32, y + kK1, x);
    x = x * kK1 + load64(s);

    len = (len - 1) & ~static_cast<size_t>(63);
    do {
        x = rotate64(x + y + v.first + load64(s + 8), 37) * kK1;
        y = rotate64(y + v.second + load64(s + 48), 42) * kK1;
        x ^= w.second;
        y += v.first + load64(s + 40);
        z = rotate64(z + w.first, 33) * kK1;
        v = weakHashLen32WithSeeds(s, v.second * kK1, x + w.first);
        w = weakHashLen32WithSeeds(s + 32, z + w.second, y + load64(s + 16));
        std::swap(z, x);
        s += 64;
        len -= 64;
    } while (len != 0);
    return hashLen16(hashLen16(v.first, w.first) + shiftMix(y) * kK1 + z, hashLen16(v.second, w.second) + x);
}

uint32_t murmurHash3x86_32(const void *data, size_t length, uint32_t seed) {
    const unsigned char *s = static_cast<const unsigned char *>(data);
    const size_t blocks = length / 4;
    uint32_t h = seed;
    for (size_t i = 0; i < blocks; ++i) {
        h ^= murmurMixBlock(load32(s + i * 4));
        h = rotate32(h, 13);
        h = h * 5 + 0xe6546b64u;
    }
    const unsigned char *tail = s + blocks * 4;
    uint32_t k = 0;
    switch (length & 3) {
    case 3:
        k ^= static_cast<uint32_t>(tail[2]) << 16;
        [[fallthrough]];
    case 2:
        k ^= static_cast<uint32_t>(tail[1]) << 8;
        [[fallthrough]];
    case 1:
        k ^= tail[0];
        h ^= murmurMixBlock(k);
        break;
    default:
        break;
    }
    // The published function mixes in the length as a 32-bit value.
    h ^= static_cast<uint32_t>(length);
    h ^= h >> 16;
    h *= 0x85ebca6bu;
    h ^= h >> 13;
    h *= 0xc2b2ae35u;
    h ^= h >> 16;
    return h;
}

uint64_t nameKey(const char16_t *name) {
    std::string bytes;
    for (const char16_t *p = name; *p; ++p) {
        bytes += static_cast<char>(*p & 0xFF);
        bytes += static_cast<char>(*p >> 8);
    }
    return cityHash64(bytes.data(), bytes.size());
}

// The two hash functions whose values are part of the client's formats: CityHash64 (version 1.1,
// no seed) keys the name tables, MurmurHash3 x86 32-bit is stored in the geometry records.
// Both read their input as little-endian bytes, whatever the host, so a key is the same everywhere.
#pragma once
#include <cstddef>
#include <cstdint>

uint64_t cityHash64(const void *data, size_t length);
uint32_t murmurHash3x86_32(const void *data, size_t length, uint32_t seed);

// Key of a name in the client's tables: cityHash64 over the UTF-16 code units as little-endian
// bytes, without the terminator. Letters are not folded.
uint64_t nameKey(const char16_t *name);

// Bounds-checked little-endian reads from file bytes.
//
// Reads beyond the span yield zero bytes, as a body shorter than its record is read as far as
// it goes; callers that must tell a short body from a zero field ask `holds` first.
#pragma once
#include <cstddef>
#include <cstdint>
#include <cstring>

struct ByteSpan {
    const uint8_t* data = nullptr;
    uint64_t size = 0;

    ByteSpan() = default;
    ByteSpan(const void* bytes, uint64_t length) : data(static_cast<const uint8_t*>(bytes)), size(length) {}

    // True when [offset, offset + length) lies inside the span.
    bool holds(uint64_t offset, uint64_t length) const { return offset <= size && length <= size - offset; }

    // Copies what the span has of [offset, offset + length) and zero-fills the rest.
    void copy(void* dest, uint64_t offset, uint64_t length) const {
        uint64_t available = offset < size ? size - offset : 0;
        uint64_t taken = length < available ? length : available;
        if (taken) std::memcpy(dest, data + offset, taken);
        if (taken < length) std::memset(static_cast<uint8_t*>(dest) + taken, 0, length - taken);
    }

    // Copies the first `length` bytes, or as many as the span has; what lies beyond the span
    // keeps its bytes in `dest`.
    void overlay(void* dest, uint64_t length) const {
        uint64_t taken = length < size ? length : size;
        if (taken) std::memcpy(dest, data, taken);
    }

    uint32_t u32(uint64_t offset) const {
        uint8_t b[4];
        copy(b, offset, sizeof b);
        return uint32_t(b[0]) | uint32_t(b[1]) << 8 | uint32_t(b[2]) << 16 | uint32_t(b[3]) << 24;
    }
    int32_t i32(uint64_t offset) const { return static_cast<int32_t>(u32(offset)); }
    uint64_t u64(uint64_t offset) const { return uint64_t(u32(offset)) | uint64_t(u32(offset + 4)) << 32; }
    int64_t i64(uint64_t offset) const { return static_cast<int64_t>(u64(offset)); }
    float f32(uint64_t offset) const {
        uint32_t bits = u32(offset);
        float value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    // The bytes from `offset` to the end, at most `limit` of them; empty past the end.
    ByteSpan tail(uint64_t offset, uint64_t limit) const {
        if (offset >= size) return ByteSpan{};
        uint64_t length = size - offset < limit ? size - offset : limit;
        return ByteSpan{data + offset, length};
    }
};

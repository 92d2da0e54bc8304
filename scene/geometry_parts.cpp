#include "scene/geometry_parts.h"

#include "common/hash.h"

#include <cstring>

namespace geometry_parts {

uint32_t hashName(ByteSpan body, uint64_t offset) {
    ByteSpan field = body.tail(offset, kNameFieldBytes);
    const void* end = field.size ? std::memchr(field.data, 0, field.size) : nullptr;
    size_t length = end ? static_cast<size_t>(static_cast<const uint8_t*>(end) - field.data) : field.size;
    return murmurHash3x86_32(field.data, length, 0);
}

} // namespace geometry_parts

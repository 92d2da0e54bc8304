// Hands the process's global operator new and delete to the pool. Linked into an
// executable (the object library memory_global_new), it replaces the runtime's
// versions everywhere in the process, the standard library's own calls included.
#include "memory/pool.h"
#include "memory/pool_internals.h"

#include <cstddef>
#include <new>

namespace {

// A zero-byte request still needs a distinct address, so it takes the smallest block.
size_t atLeastOne(std::size_t size) {
    return size ? size : 1;
}

void* allocateOrThrow(std::size_t size) {
    void* block = clientNew(atLeastOne(size));
    if (!block) throw std::bad_alloc();
    return block;
}

void* allocateAlignedOrThrow(std::size_t size, std::align_val_t alignment) {
    void* block = clientAlignedNew(size, static_cast<size_t>(alignment));
    if (!block) throw std::bad_alloc();
    return block;
}

} // namespace

void* operator new(std::size_t size) {
    return allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return allocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return clientTryNew(atLeastOne(size));
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return clientTryNew(atLeastOne(size));
}

void operator delete(void* block) noexcept {
    clientDelete(block);
}
void operator delete[](void* block) noexcept {
    clientDelete(block);
}
void operator delete(void* block, std::size_t) noexcept {
    clientDelete(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    clientDelete(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    clientDelete(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    clientDelete(block);
}

void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocateAlignedOrThrow(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return allocateAlignedOrThrow(size, alignment);
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return clientAlignedNew(size, static_cast<size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return clientAlignedNew(size, static_cast<size_t>(alignment));
}

void operator delete(void* block, std::align_val_t alignment) noexcept {
    clientAlignedDelete(block, static_cast<size_t>(alignment));
}
void operator delete[](void* block, std::align_val_t alignment) noexcept {
    clientAlignedDelete(block, static_cast<size_t>(alignment));
}
void operator delete(void* block, std::size_t, std::align_val_t alignment) noexcept {
    clientAlignedDelete(block, static_cast<size_t>(alignment));
}
void operator delete[](void* block, std::size_t, std::align_val_t alignment) noexcept {
    clientAlignedDelete(block, static_cast<size_t>(alignment));
}
void operator delete(void* block, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    clientAlignedDelete(block, static_cast<size_t>(alignment));
}
void operator delete[](void* block, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    clientAlignedDelete(block, static_cast<size_t>(alignment));
}

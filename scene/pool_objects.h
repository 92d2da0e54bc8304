// Life of the engine-facing objects that live in pool memory: placement construction, the
// deleting destructor's two halves, and the walks that release a chain link by link.
#pragma once
#include "memory/pool.h"

#include <cstdint>
#include <new>

namespace pool_objects {

// A default-constructed object in pool memory; null when the pool is exhausted.
template <class T> T* create() {
    void* memory = poolAlloc(poolInstance(), sizeof(T));
    return memory ? new (memory) T() : nullptr;
}

// The deleting destructor's body: destroy, and free the memory if bit 0 of `flags` asks.
template <class T> void* destroy(T* object, uint32_t flags) {
    object->~T();
    if (flags & 1) poolFree(poolInstance(), object);
    return object;
}

// Releases every link from `head` on, one at a time and without recursion, so a long chain
// cannot exhaust the stack. Each link is detached before its Release runs, so it never
// reaches back into the rest of the chain. `head` is null afterwards.
template <class T> void releaseChain(T*& head) {
    while (T* link = head) {
        head = link->next;
        link->next = nullptr;
        link->Release();
    }
}

} // namespace pool_objects

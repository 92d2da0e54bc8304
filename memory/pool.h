// The process-wide pool allocator: every dynamic allocation of the client comes from here.
#pragma once
#include <cstddef>

struct PoolAllocator;

// Creates the pool on first use.
PoolAllocator* poolInstance();
// 64-byte aligned, not zeroed; null when the system has no more pages.
void* poolAlloc(PoolAllocator* pool, size_t size);
// Null is allowed; a second free of the same block changes nothing.
void poolFree(PoolAllocator* pool, void* block);

// The global allocation functions of the process.
void* clientNew(size_t size);
void clientDelete(void* block);

// Whole pages straight from the operating system, committed and zeroed.
#pragma once
#include <cstddef>
#include <cstdint>

namespace platform {

// Null on failure. The memory is readable, writable and zero-filled.
void* allocatePages(size_t bytes);
// `bytes` must be the size given to allocatePages.
void releasePages(void* base, size_t bytes);

// Memory is committed as it is first written, so a request beyond what the machine holds would
// be granted and then end the process as its pages are touched. Every page run claims its
// length of the machine's physical memory; blocks that come from elsewhere (the C runtime's,
// under the sanitizers) claim theirs through these. False when the claim would not fit beside
// what is claimed already.
bool claimMemory(size_t bytes);
void unclaimMemory(size_t bytes);

// Bytes of physical memory the machine holds: the allowance that claims are measured against.
// UINT64_MAX when the system does not tell.
uint64_t physicalMemory();

} // namespace platform

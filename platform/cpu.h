// The processor's identification leaves.
#pragma once
#include <cstdint>

namespace platform {

struct CpuidResult {
    uint32_t eax, ebx, ecx, edx;
};

// A leaf the processor lacks reads as all zero.
CpuidResult cpuid(uint32_t leaf, uint32_t subleaf);

} // namespace platform

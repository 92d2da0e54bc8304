#include "platform/cpu.h"

#include <intrin.h>

namespace platform {

CpuidResult cpuid(uint32_t leaf, uint32_t subleaf) {
    CpuidResult r{0, 0, 0, 0};
    // The highest leaf of the range (standard or extended) that `leaf` belongs to.
    int range[4];
    __cpuid(range, static_cast<int>(leaf & 0x80000000u));
    const uint32_t highest = static_cast<uint32_t>(range[0]);
    if (highest == 0 || leaf > highest) return r;
    int words[4];
    __cpuidex(words, static_cast<int>(leaf), static_cast<int>(subleaf));
    r.eax = static_cast<uint32_t>(words[0]);
    r.ebx = static_cast<uint32_t>(words[1]);
    r.ecx = static_cast<uint32_t>(words[2]);
    r.edx = static_cast<uint32_t>(words[3]);
    return r;
}

} // namespace platform

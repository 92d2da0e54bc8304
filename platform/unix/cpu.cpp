#include "platform/cpu.h"

#include <cpuid.h>

namespace platform {

CpuidResult cpuid(uint32_t leaf, uint32_t subleaf) {
    CpuidResult r{0, 0, 0, 0};
    unsigned highest = __get_cpuid_max(leaf & 0x80000000u, nullptr);
    if (highest == 0 || leaf > highest) return r;
    __cpuid_count(leaf, subleaf, r.eax, r.ebx, r.ecx, r.edx);
    return r;
}

} // namespace platform

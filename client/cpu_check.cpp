#include "client/cpu_check.h"

#include "client/messages.h"

#include "platform/cpu.h"

namespace {

CpuFeatures readCpuFeatures() {
    CpuFeatures f{};
    f.highestLeaf = platform::cpuid(0, 0).eax;
    if (f.highestLeaf >= 1) {
        platform::CpuidResult r = platform::cpuid(1, 0);
        f.leaf1Ecx = r.ecx;
        f.leaf1Edx = r.edx;
    }
    if (f.highestLeaf >= 7) {
        platform::CpuidResult r = platform::cpuid(7, 0);
        f.leaf7Ebx = r.ebx;
        f.leaf7Ecx = r.ecx;
    }
    f.highestExtendedLeaf = platform::cpuid(0x80000000u, 0).eax;
    if (f.highestExtendedLeaf >= 0x80000001u) {
        platform::CpuidResult r = platform::cpuid(0x80000001u, 0);
        f.extended1Ecx = r.ecx;
        f.extended1Edx = r.edx;
    }
    return f;
}

const CpuFeatures gCpuFeatures = readCpuFeatures();

struct Requirement {
    bool inLeaf7;
    int bit;
    const char16_t* name;
};

// In the order the message lists them.
const Requirement kRequired[] = {
    {false, 20, u" SSE42"}, {true, 5, u" AVX2"},  {true, 8, u" BMI2"},
    {false, 29, u" F16C"},  {false, 12, u" FMA"}, {false, 23, u" POPCNT"},
};

} // namespace

const CpuFeatures& cpuFeatures() {
    return gCpuFeatures;
}

std::u16string missingCpuFeaturesMessage(uint32_t leaf1Ecx, uint32_t leaf7Ebx) {
    std::u16string missing;
    for (const Requirement& r : kRequired)
        if (!(((r.inLeaf7 ? leaf7Ebx : leaf1Ecx) >> r.bit) & 1)) missing += r.name;
    if (missing.empty()) return missing;
    return messages::kCpuRequirements + missing + u"\n";
}

// The processor features that the engine module is built for.
#pragma once
#include <cstdint>
#include <string>

// Identification words read once before main; a leaf the processor lacks stays 0.
struct CpuFeatures {
    uint32_t highestLeaf;
    uint32_t leaf1Ecx, leaf1Edx;
    uint32_t leaf7Ebx, leaf7Ecx;
    uint32_t highestExtendedLeaf;
    uint32_t extended1Ecx, extended1Edx;
};

const CpuFeatures& cpuFeatures();

// Empty when every required feature is present, else the message that names the missing ones.
std::u16string missingCpuFeaturesMessage(uint32_t leaf1Ecx, uint32_t leaf7Ebx);

#include "client/cpu_check.h"
#include "common/unicode.h"

#include <gtest/gtest.h>

namespace {

constexpr uint32_t bit(int n) { return 1u << n; }
constexpr uint32_t kAllLeaf1 = bit(20) | bit(29) | bit(12) | bit(23);
constexpr uint32_t kAllLeaf7 = bit(5) | bit(8);
const std::string kHead = "Required CPU extensions are: SSE42, AVX2, BMI2, F16C, FMA, POPCNT\nYour CPU does not support";

TEST(CpuCheck, NamesEveryMissingFeatureInOrder) {
    struct Case {
        uint32_t leaf1Ecx, leaf7Ebx;
        std::string missing;
    } cases[] = {
        {kAllLeaf1, kAllLeaf7, ""},
        {kAllLeaf1 & ~bit(20), kAllLeaf7, " SSE42"},
        {kAllLeaf1, kAllLeaf7 & ~bit(5), " AVX2"},
        {kAllLeaf1, kAllLeaf7 & ~bit(8), " BMI2"},
        {kAllLeaf1 & ~bit(29), kAllLeaf7, " F16C"},
        {kAllLeaf1 & ~bit(12), kAllLeaf7, " FMA"},
        {kAllLeaf1 & ~bit(23), kAllLeaf7, " POPCNT"},
        {0, 0, " SSE42 AVX2 BMI2 F16C FMA POPCNT"},
        {kAllLeaf1 & ~bit(23) & ~bit(20), kAllLeaf7 & ~bit(8), " SSE42 BMI2 POPCNT"},
    };
    for (const Case& c : cases) {
        std::string message = utf16ToUtf8(missingCpuFeaturesMessage(c.leaf1Ecx, c.leaf7Ebx));
        EXPECT_EQ(message, c.missing.empty() ? "" : kHead + c.missing + "\n");
    }
}

TEST(CpuCheck, ThisMachineRunsTheTests) {
    const CpuFeatures& f = cpuFeatures();
    EXPECT_GE(f.highestLeaf, 7u);
    EXPECT_TRUE(missingCpuFeaturesMessage(f.leaf1Ecx, f.leaf7Ebx).empty());
}

} // namespace

// Page runs: what the machine cannot hold is refused when asked for, not when first touched.
#include "memory/pool.h"
#include "platform/pages.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>

namespace {

size_t physicalMemory() {
    return size_t(sysconf(_SC_PHYS_PAGES)) * size_t(sysconf(_SC_PAGESIZE));
}

TEST(Pages, RunsBeyondThePhysicalMemoryAreRefused) {
    const size_t physical = physicalMemory();
    ASSERT_GT(physical, size_t(1) << 30);
    EXPECT_EQ(platform::allocatePages(physical + 4096), nullptr);

    // Each of two runs of 60 % fits alone; together they do not. Untouched, they cost nothing.
    const size_t part = physical / 10 * 6;
    void* first = platform::allocatePages(part);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(platform::allocatePages(part), nullptr);
    EXPECT_EQ(poolAlloc(poolInstance(), part), nullptr) << "the pool's own page runs count too";
    platform::releasePages(first, part);
    void* second = platform::allocatePages(part);
    EXPECT_NE(second, nullptr) << "a released run is given back to the allowance";
    platform::releasePages(second, part);
}

} // namespace

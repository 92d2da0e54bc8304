#include "platform/clock.h"

#include <time.h>

namespace platform {

bool readCounter(int64_t* ticks) {
    timespec now;
    if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) return false;
    *ticks = static_cast<int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
    return true;
}

bool counterFrequency(int64_t* ticksPerSecond) {
    *ticksPerSecond = 1000000000;
    return true;
}

uint32_t tickCount() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<uint32_t>(static_cast<uint64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000);
}

} // namespace platform

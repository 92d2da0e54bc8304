// A monotonic high-resolution counter with a coarse millisecond fallback.
#pragma once
#include <cstdint>

namespace platform {

bool readCounter(int64_t* ticks);
bool counterFrequency(int64_t* ticksPerSecond);
// Milliseconds since an arbitrary start, for when the counter fails.
uint32_t tickCount();

} // namespace platform

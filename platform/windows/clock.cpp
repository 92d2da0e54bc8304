#include "platform/clock.h"

#include <windows.h>

namespace platform {

bool readCounter(int64_t* ticks) {
    LARGE_INTEGER now;
    if (!QueryPerformanceCounter(&now)) return false;
    *ticks = now.QuadPart;
    return true;
}

bool counterFrequency(int64_t* ticksPerSecond) {
    LARGE_INTEGER frequency;
    if (!QueryPerformanceFrequency(&frequency) || frequency.QuadPart <= 0) return false;
    *ticksPerSecond = frequency.QuadPart;
    return true;
}

uint32_t tickCount() { return GetTickCount(); }

} // namespace platform

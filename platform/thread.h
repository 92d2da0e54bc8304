// Identity of the calling thread.
#pragma once
#include <cstdint>

namespace platform {

uint32_t currentThreadId();

} // namespace platform

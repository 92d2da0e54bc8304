#include "platform/thread.h"

#include <windows.h>

namespace platform {

uint32_t currentThreadId() { return GetCurrentThreadId(); }

} // namespace platform

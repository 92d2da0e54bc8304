#include "platform/thread.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

uint32_t currentThreadId() { return static_cast<uint32_t>(syscall(SYS_gettid)); }

} // namespace platform

#include "platform/console.h"

#include "common/unicode.h"

#include <unistd.h>

namespace platform {

void writeStandardOutput(const char* utf8, size_t length) {
    while (length > 0) {
        ssize_t written = write(STDOUT_FILENO, utf8, length);
        if (written <= 0) return;
        utf8 += written;
        length -= static_cast<size_t>(written);
    }
}

// A terminal shows the title through the xterm escape; a pipe or file must not receive it.
void setConsoleTitle(const char16_t* title) {
    if (!isatty(STDOUT_FILENO)) return;
    std::string sequence = "\033]0;" + utf16ToUtf8(title) + "\007";
    writeStandardOutput(sequence.data(), sequence.size());
}

// There is no debugger channel on this platform.
void debugOutput(const char16_t*) {}

} // namespace platform

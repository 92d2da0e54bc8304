// Console output, console title and the debugger channel.
#pragma once
#include <cstddef>

namespace platform {

// Writes UTF-8 bytes to standard output.
void writeStandardOutput(const char* utf8, size_t length);
// Shows `title` as the console window's title where the console has one.
void setConsoleTitle(const char16_t* title);
// Sends text to an attached debugger; silent where there is none.
void debugOutput(const char16_t* text);

} // namespace platform

// All console text of the client goes through consolePrint: a wide format, written as UTF-8.
#pragma once
#include "common/wide_format.h"

void writeConsole(const std::u16string& text);

template <class... Args>
void consolePrint(const char16_t* format, const Args&... args) {
    writeConsole(formatWide(format, args...));
}

#include "platform/console.h"

#include "platform/windows/wide_text.h"

#include <windows.h>

#include <string>

namespace platform {

namespace {

void writeBytes(HANDLE output, const char* bytes, size_t length) {
    while (length > 0) {
        const DWORD chunk = length > (1u << 30) ? (1u << 30) : static_cast<DWORD>(length);
        DWORD written = 0;
        if (!WriteFile(output, bytes, chunk, &written, nullptr) || written == 0) return;
        bytes += written;
        length -= written;
    }
}

// A console shows UTF-16 whatever its code page is; the bytes would be read in that code page.
void writeToConsole(HANDLE console, const char* utf8, size_t length) {
    const int units = MultiByteToWideChar(CP_UTF8, 0, utf8, static_cast<int>(length), nullptr, 0);
    if (units <= 0) return;
    std::wstring wide(static_cast<size_t>(units), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8, static_cast<int>(length), wide.data(), units);
    const wchar_t* cursor = wide.data();
    DWORD left = static_cast<DWORD>(units);
    while (left > 0) {
        DWORD written = 0;
        if (!WriteConsoleW(console, cursor, left, &written, nullptr) || written == 0) return;
        cursor += written;
        left -= written;
    }
}

} // namespace

// Redirected output (a pipe, a file) receives the UTF-8 bytes as they are.
void writeStandardOutput(const char* utf8, size_t length) {
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    if (output == nullptr || output == INVALID_HANDLE_VALUE || length == 0) return;
    DWORD mode = 0;
    if (length <= INT_MAX && GetConsoleMode(output, &mode)) writeToConsole(output, utf8, length);
    else writeBytes(output, utf8, length);
}

// Without a console window the call fails, which is what the title asks for.
void setConsoleTitle(const char16_t* title) { SetConsoleTitleW(asWide(title)); }

void debugOutput(const char16_t* text) { OutputDebugStringW(asWide(text)); }

} // namespace platform

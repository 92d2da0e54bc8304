#include "client/console.h"

#include "common/unicode.h"
#include "platform/console.h"

void writeConsole(const std::u16string& text) {
    std::string utf8 = utf16ToUtf8(text);
    platform::writeStandardOutput(utf8.data(), utf8.size());
}

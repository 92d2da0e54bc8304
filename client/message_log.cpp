#include "client/message_log.h"

#include "client/console.h"
#include "platform/console.h"

namespace {

const char16_t kEmptyText[] = u"";

} // namespace

void MessageLog::collect(std::u16string& target, const char16_t* text) {
    progress_.beforeMessage();
    std::u16string line = text ? text : kEmptyText;
    line += u'\n';
    target += line;
    consolePrint(line.c_str());
    platform::debugOutput(line.c_str());
    progress_.afterMessage();
}

void MessageLog::info(const char16_t* text) {
    progress_.beforeMessage();
    const char16_t* shown = text ? text : kEmptyText;
    consolePrint(u"%ls\n", shown);
    platform::debugOutput(shown);
    platform::debugOutput(u"\n");
    progress_.afterMessage();
}

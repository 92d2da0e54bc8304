#include "client/banner.h"

#include "client/console.h"
#include "client/messages.h"

void printVersion() {
    consolePrint(messages::kVersion);
}

void printUsage() {
    consolePrint(messages::kUsage);
}

// The banner and the usage text.
#pragma once

void printVersion();
void printUsage();

// The client from its command line to its exit status.
#pragma once

int runClient(int argc, const char16_t* const* argv);

// The command line of tavi-build.
#pragma once
#include "tools/builder/build_options.h"

#include <string>
#include <vector>

namespace builder {

enum class CommandLine { Build, Help, Wrong };

extern const char kUsage[];

// `arguments` without the program's name. Wrong comes with `error` set.
CommandLine parseCommandLine(const std::vector<std::string>& arguments, BuildOptions& options, std::string& error);

} // namespace builder

// One tavi-build run: import, assemble, write. Nothing is written when the model cannot be
// read; the scene reaches its name only whole (written under a temporary name in the same
// folder, then renamed).
#pragma once
#include "tools/builder/build_options.h"
#include "tools/builder/scene_assembly.h"

#include <string>
#include <vector>

namespace builder {

struct BuildReport {
    AssemblyCounts counts;
    size_t materials = 0, textures = 0;
    std::vector<std::string> notes; // what was left out or not found
};

// False with `error` set, a whole sentence naming the file concerned.
bool buildScene(const BuildOptions& options, BuildReport& report, std::string& error);

} // namespace builder

// tavi-build: a model file in, a scene file for TaviClient out.
#include "tools/builder/command_line.h"
#include "tools/builder/scene_build.h"

#include <cstdio>

int main(int argc, char** argv) {
    builder::BuildOptions options;
    std::string error;
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    switch (builder::parseCommandLine(arguments, options, error)) {
    case builder::CommandLine::Help: std::fputs(builder::kUsage, stdout); return 0;
    case builder::CommandLine::Wrong:
        std::fprintf(stderr, "tavi-build: %s\n\n%s", error.c_str(), builder::kUsage);
        return 2;
    case builder::CommandLine::Build: break;
    }
    builder::BuildReport report;
    if (!builder::buildScene(options, report, error)) {
        std::fprintf(stderr, "tavi-build: %s\n", error.c_str());
        return 1;
    }
    for (const std::string& note : report.notes) std::fprintf(stderr, "tavi-build: note: %s\n", note.c_str());
    const builder::AssemblyCounts& c = report.counts;
    std::fprintf(stderr, "tavi-build: wrote %s: %zu models in %zu parts, %zu triangles, %zu materials, %zu textures, %zu lights\n",
                 options.output.c_str(), c.models, c.parts, c.triangles, report.materials, report.textures, c.lights);
    return 0;
}

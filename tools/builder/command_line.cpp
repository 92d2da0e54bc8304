#include "tools/builder/command_line.h"

#include "tools/builder/camera_lights.h"

#include <cerrno>
#include <cstdlib>
#include <limits>

namespace builder {

const char kUsage[] =
    "usage: tavi-build [options] <model file> <scene file>\n"
    "Imports a model (glTF 2.0, OBJ+MTL, PLY, FBX, Collada and every other format assimp reads)\n"
    "and writes a scene file for TaviClient.\n"
    "\n"
    "  --size <w> <h>              image size in pixels (default 960 540)\n"
    "  --passes <n>                passes of the render (default 128)\n"
    "  --fps <n>                   frames per second (default 0: the engine's 30)\n"
    "  --output-name <name>        base name of the images (default: the scene file's stem)\n"
    "  --output-path <folder>      folder of the images (default out)\n"
    "  --formats <list>            image formats, comma-separated: jpg, tif, exr (default jpg)\n"
    "  --view <side>               frame the whole model from front, back, left, right, top,\n"
    "                              bottom, iso or x,y,z (towards the eye); replaces a camera of\n"
    "                              the file. Without a camera in the file: iso\n"
    "  --sun                       add a sun even when the file has lights\n"
    "  --sky                       add a sky even when the file has lights\n"
    "  --no-default-lights         no sun and sky when the file has no lights (added by default)\n"
    "  --max-part-triangles <n>    split meshes into parts of at most n triangles (default 1048576)\n"
    "  --documents <folder>        also write <folder>/materials/<name>.xml and\n"
    "                              <folder>/texmaps/<name>.xml, for TaviClient's -materials and\n"
    "                              -texmaps\n"
    "  --quiet                     no progress display\n"
    "  --help                      print this text and exit\n";

namespace {

bool parsePositive(const std::string& text, int64_t limit, int64_t& value) {
    if (text.empty()) return false;
    char* end = nullptr;
    errno = 0;
    const long long parsed = std::strtoll(text.c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || parsed < 1 || parsed > limit) return false;
    value = parsed;
    return true;
}

bool parseFormats(const std::string& list, BuildOptions& options) {
    options.saveJpeg = options.saveTiff = options.saveExr = false;
    size_t start = 0;
    while (start <= list.size()) {
        const size_t comma = std::min(list.find(',', start), list.size());
        const std::string format = list.substr(start, comma - start);
        if (format == "jpg" || format == "jpeg") options.saveJpeg = true;
        else if (format == "tif" || format == "tiff") options.saveTiff = true;
        else if (format == "exr") options.saveExr = true;
        else return false;
        start = comma + 1;
    }
    return true;
}

} // namespace

CommandLine parseCommandLine(const std::vector<std::string>& arguments, BuildOptions& options, std::string& error) {
    std::vector<std::string> files;
    constexpr int64_t kIntLimit = std::numeric_limits<int32_t>::max();
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& a = arguments[i];
        // The values an option takes: present, or the line is wrong.
        auto value = [&](size_t n) {
            if (i + n < arguments.size()) return true;
            error = a + " needs " + std::to_string(n) + (n == 1 ? " value" : " values");
            return false;
        };
        auto number = [&](const std::string& text, int64_t limit, int64_t& out) {
            if (parsePositive(text, limit, out)) return true;
            error = "wrong value for " + a + ": " + text;
            return false;
        };
        int64_t n = 0, m = 0;
        if (a == "--help" || a == "-h") return CommandLine::Help;
        if (a == "--size") {
            if (!value(2) || !number(arguments[i + 1], 65536, n) || !number(arguments[i + 2], 65536, m))
                return CommandLine::Wrong;
            options.width = static_cast<int32_t>(n);
            options.height = static_cast<int32_t>(m);
            i += 2;
        } else if (a == "--passes" || a == "--fps" || a == "--max-part-triangles") {
            if (!value(1) || !number(arguments[i + 1], kIntLimit, n)) return CommandLine::Wrong;
            if (a == "--passes") options.passes = static_cast<int32_t>(n);
            else if (a == "--fps") options.framesPerSecond = static_cast<int32_t>(n);
            else options.maxPartTriangles = static_cast<uint32_t>(n);
            ++i;
        } else if (a == "--output-name" || a == "--output-path" || a == "--documents" || a == "--view" ||
                   a == "--formats") {
            if (!value(1)) return CommandLine::Wrong;
            const std::string& text = arguments[++i];
            Vec3 side;
            if (a == "--output-name") options.outputName = text;
            else if (a == "--output-path") options.outputPath = text;
            else if (a == "--documents") options.documentsFolder = text;
            else if (a == "--view" && parseViewSide(text, side)) options.view = text;
            else if (a == "--formats" && parseFormats(text, options)) {
            } else {
                error = "wrong value for " + a + ": " + text;
                return CommandLine::Wrong;
            }
        } else if (a == "--sun") {
            options.sun = true;
        } else if (a == "--sky") {
            options.sky = true;
        } else if (a == "--no-default-lights") {
            options.defaultLights = false;
        } else if (a == "--quiet") {
            options.progress = false;
        } else if (a.size() > 1 && a[0] == '-') {
            error = "unknown option " + a;
            return CommandLine::Wrong;
        } else {
            files.push_back(a);
        }
    }
    if (files.size() != 2) {
        error = "give one model file and one scene file";
        return CommandLine::Wrong;
    }
    options.input = files[0];
    options.output = files[1];
    return CommandLine::Build;
}

} // namespace builder

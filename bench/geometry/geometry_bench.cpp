// Loading a large triangle scene through the real client, against what zstd alone needs.
//
// A scene of several models and more than five million triangles, every body a zstd frame, is
// written to a folder of its own beside copies of the client and the recording engine. The
// client is run on it a few times; its wall time and its peak resident memory are measured
// from outside. The floor is the time zstd needs to decode every compressed body of the file
// twice in this process, since a load decodes each model twice: once to name it, once to hand
// it over. The client decodes later bodies on other threads beside its own work, so on two
// cores its wall time may come in under the floor; its processor time shows what it spent.
// Targets: load within 1.3 times the floor, peak within four times the largest decoded body
// plus 32 MiB.
#include "scene/records.h"
#include "tools/scene_writer/geometry_builders.h"
#include "tools/scene_writer/record_builders.h"
#include "tools/scene_writer/scene_writer.h"

#include <zstd.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;
namespace sw = scene_writer;

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kClientRuns = 3;
constexpr int kFloorRounds = 3;
constexpr int kMaterialCount = 4;
constexpr double kLoadTarget = 1.3;
constexpr double kPeakBodyFactor = 4.0;
constexpr double kPeakAllowanceMiB = 32.0;

struct PartShape {
    const char* name;
    uint32_t columns, rows, materials;
};

// Several models of different sizes, two of them in more than one part; the largest part
// decides the memory target.
const std::vector<std::vector<PartShape>> kModels = {
    {{"terrain", 1024, 640, 4}},
    {{"city", 640, 512, 3}, {"city blocks", 512, 512, 2}, {"city towers", 512, 384, 4}},
    {{"forest", 800, 600, 2}},
    {{"sea", 768, 512, 1}},
    {{"rocks", 400, 400, 3}, {"rocks rubble", 300, 300, 1}},
};

uint64_t triangleCount(const PartShape& part) { return uint64_t(2) * part.columns * part.rows; }

double mib(double bytes) { return bytes / (1024.0 * 1024.0); }

[[noreturn]] void die(const std::string& why) {
    std::fprintf(stderr, "geometry_bench: %s\n", why.c_str());
    std::exit(1);
}

// ---- The scene --------------------------------------------------------------------------------

sw::Bytes quietSettings() {
    sw::Bytes settings = sw::settingsBody({});
    sw::put32(settings, offsetof(SettingsRecord, ToneOperator.OperatorType), 2);
    sw::put32(settings, offsetof(SettingsRecord, StartingVolumetricMaterial), static_cast<uint32_t>(-1));
    return settings;
}

// Each part is built, compressed and dropped before the next, so that only compressed bodies
// are held.
void writeScene(const std::string& path) {
    sw::SceneFile file;
    for (int32_t id = 0; id < kMaterialCount; ++id)
        file.add(sw::storedChunk(sw::kMaterial, sw::materialBody(7, id, 0, "material " + std::to_string(id))));
    for (const std::vector<PartShape>& model : kModels) {
        for (size_t i = 0; i < model.size(); ++i) {
            sw::MeshPlan plan = sw::gridMesh(model[i].name, model[i].columns, model[i].rows, model[i].materials);
            plan.morePartsFollow = i + 1 < model.size();
            file.add(sw::zstdChunk(sw::kTriangleMesh, sw::meshBody(plan)));
        }
    }
    file.add(sw::storedChunk(sw::kSettings, quietSettings()));
    if (!file.write(path)) die("cannot write " + path);
}

// The scene is made in a child process: the parent's resident pages at the time it forks
// count towards a child's peak in the kernel's accounting, so the parent stays small.
void writeSceneInChild(const std::string& path) {
    std::fflush(nullptr);
    pid_t child = fork();
    if (child < 0) die("fork");
    if (child == 0) {
        writeScene(path);
        std::fflush(nullptr);
        _exit(0);
    }
    int status = 0;
    if (waitpid(child, &status, 0) < 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        die("writing the scene failed");
}

// ---- Compressed bodies of the file -------------------------------------------------------------

struct Frame {
    std::vector<uint8_t> bytes;
    uint64_t decodedSize = 0;
};

uint64_t load64(const std::vector<uint8_t>& file, uint64_t at) {
    uint64_t value;
    std::memcpy(&value, file.data() + at, sizeof value);
    return value;
}

uint32_t load32(const std::vector<uint8_t>& file, uint64_t at) {
    uint32_t value;
    std::memcpy(&value, file.data() + at, sizeof value);
    return value;
}

// Walks the chain as the client does and takes every body that is a zstd frame.
std::vector<Frame> compressedBodies(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::vector<uint8_t> file((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (file.size() < 36) die("scene too short");
    std::vector<Frame> frames;
    for (uint64_t at = load64(file, 28); at != 0 && at + 32 <= file.size(); at = load64(file, at + 24)) {
        uint32_t compression = load32(file, at + 8);
        uint64_t bodyAt = at + load32(file, at + 12), stored = load64(file, at + 16);
        if (compression != 1) continue;
        if (bodyAt + stored > file.size()) die("body beyond the end of the scene");
        Frame frame;
        frame.bytes.assign(file.begin() + static_cast<ptrdiff_t>(bodyAt),
                           file.begin() + static_cast<ptrdiff_t>(bodyAt + stored));
        frame.decodedSize = ZSTD_getFrameContentSize(frame.bytes.data(), frame.bytes.size());
        if (frame.decodedSize == ZSTD_CONTENTSIZE_UNKNOWN || frame.decodedSize == ZSTD_CONTENTSIZE_ERROR)
            die("a frame without its size");
        frames.push_back(std::move(frame));
    }
    return frames;
}

// Decodes every frame twice into one buffer that is already resident, the least a load that
// decodes each body twice can cost.
double floorSeconds(const std::vector<Frame>& frames, uint64_t largest) {
    std::vector<uint8_t> out(largest, 1);
    double best = 1e30;
    for (int round = 0; round < kFloorRounds; ++round) {
        Clock::time_point start = Clock::now();
        for (int pass = 0; pass < 2; ++pass) {
            for (const Frame& frame : frames) {
                size_t got = ZSTD_decompress(out.data(), out.size(), frame.bytes.data(), frame.bytes.size());
                if (ZSTD_isError(got) || got != frame.decodedSize) die("zstd cannot decode a body");
            }
        }
        best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count());
    }
    return best;
}

// Writing `bytes` of pages this process has never touched: what a load pays for its peak
// before any of its own work, and what the floor, decoding into resident pages, leaves out.
double firstTouchSeconds(uint64_t bytes) {
    Clock::time_point start = Clock::now();
    std::vector<uint8_t> pages(bytes, 1);
    double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (pages[bytes / 2] != 1) die("fresh pages lost their bytes");
    return seconds;
}

// ---- The client --------------------------------------------------------------------------------

// The build folder holds bin/TaviClient and engines/recording/TaviTracerAVX.so; this program
// sits in it at bench/geometry, or at bin with the client.
fs::path buildFolder() {
    fs::path here = fs::read_symlink("/proc/self/exe").parent_path();
    for (fs::path folder = here; !folder.empty(); folder = folder.parent_path()) {
        if (fs::exists(folder / "bin/TaviClient") && fs::exists(folder / "engines/recording/TaviTracerAVX.so"))
            return folder;
        if (folder == folder.root_path()) break;
    }
    die("no bin/TaviClient with engines/recording/TaviTracerAVX.so above " + here.string());
}

struct ClientResult {
    double seconds = 0;
    double cpuSeconds = 0; // user and system, all threads
    long peakKiB = 0;
    int exitStatus = -1;
};

ClientResult runClient(const fs::path& folder, const std::string& scene) {
    std::string executable = (folder / "TaviClient").string();
    std::string output = (folder / "client.out").string();
    std::fflush(nullptr);
    Clock::time_point start = Clock::now();
    pid_t child = fork();
    if (child < 0) die("fork");
    if (child == 0) {
        int fd = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (fd >= 0) dup2(fd, STDOUT_FILENO);
        execl(executable.c_str(), executable.c_str(), "-scene", scene.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (wait4(child, &status, 0, &usage) < 0) die("wait4");
    ClientResult result;
    result.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    result.peakKiB = usage.ru_maxrss; // the child's VmHWM, in KiB
    result.cpuSeconds = double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                        double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
    result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

std::string readText(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// A run only counts if every part reached the engine with its triangles.
void checkEngineLog(const fs::path& folder) {
    std::istringstream log(readText(folder / "recording.log"));
    std::vector<std::string> models;
    for (std::string line; std::getline(log, line);)
        if (line.rfind("addTriangleMeshes ", 0) == 0) models.push_back(line);
    if (models.size() != kModels.size()) die("the engine received " + std::to_string(models.size()) + " models");
    for (size_t m = 0; m < kModels.size(); ++m) {
        std::string counts;
        for (const PartShape& part : kModels[m]) counts += (counts.empty() ? "" : ",") + std::to_string(triangleCount(part));
        if (models[m].find(" triangles=" + counts + " ") == std::string::npos)
            die("model " + std::to_string(m) + " arrived as: " + models[m]);
    }
}

long residentKiB(const char* key) {
    std::istringstream status(readText("/proc/self/status"));
    for (std::string line; std::getline(status, line);)
        if (line.rfind(key, 0) == 0) return std::strtol(line.c_str() + std::strlen(key), nullptr, 10);
    return 0;
}

const char* verdict(bool met) { return met ? "PASS" : "MISS"; }

} // namespace

// With a folder named, the scene and the copies are left there, to be profiled at leisure.
int main(int argc, char** argv) {
    fs::path build = buildFolder();
    const bool keep = argc > 1;
    fs::path folder;
    if (keep) {
        folder = argv[1];
        fs::create_directories(folder);
    } else {
        std::string pattern = (fs::temp_directory_path() / "tavi-geometry-bench-XXXXXX").string();
        if (!mkdtemp(pattern.data())) die("mkdtemp");
        folder = pattern;
    }
    const auto overwrite = fs::copy_options::overwrite_existing;
    fs::copy_file(build / "bin/TaviClient", folder / "TaviClient", overwrite);
    fs::copy_file(build / "engines/recording/TaviTracerAVX.so", folder / "TaviTracerAVX.so", overwrite);
    std::string scene = (folder / "scene.tavi").string();

    uint64_t triangles = 0;
    size_t parts = 0;
    for (const std::vector<PartShape>& model : kModels) {
        parts += model.size();
        for (const PartShape& part : model) triangles += triangleCount(part);
    }
    Clock::time_point writeStart = Clock::now();
    writeSceneInChild(scene);
    double writeSeconds = std::chrono::duration<double>(Clock::now() - writeStart).count();

    // The client runs first, while this process is still small (see writeSceneInChild).
    long launchKiB = residentKiB("VmRSS:");
    std::vector<ClientResult> runs;
    for (int run = 0; run < kClientRuns; ++run) {
        fs::remove(folder / "recording.log");
        ClientResult result = runClient(folder, scene);
        if (result.exitStatus != 0)
            die("the client exited with " + std::to_string(result.exitStatus) + ":\n" + readText(folder / "client.out"));
        checkEngineLog(folder);
        runs.push_back(result);
    }

    std::vector<Frame> frames = compressedBodies(scene);
    uint64_t largest = 0, decodedTotal = 0, storedTotal = 0;
    for (const Frame& frame : frames) {
        largest = std::max(largest, frame.decodedSize);
        decodedTotal += frame.decodedSize;
        storedTotal += frame.bytes.size();
    }
    double floor = floorSeconds(frames, largest);
    uint64_t fileBytes = fs::file_size(scene);
    if (!keep) {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    double bestLoad = runs.front().seconds;
    long peakKiB = 0;
    for (const ClientResult& run : runs) {
        bestLoad = std::min(bestLoad, run.seconds);
        peakKiB = std::max(peakKiB, run.peakKiB);
    }
    double peak = mib(double(peakKiB) * 1024.0);
    double peakTarget = kPeakBodyFactor * mib(double(largest)) + kPeakAllowanceMiB;
    double loadRatio = bestLoad / floor;
    double touch = firstTouchSeconds(uint64_t(peakKiB) * 1024);

    std::printf("scene: %zu models, %zu parts, %" PRIu64 " triangles, %zu zstd bodies\n", kModels.size(), parts,
                triangles, frames.size());
    std::printf("  file %.1f MiB, bodies %.1f MiB compressed, %.1f MiB decoded; written in %.2f s\n",
                mib(double(fileBytes)), mib(double(storedTotal)), mib(double(decodedTotal)), writeSeconds);
    std::printf("client load, wall time (best of %d):   %8.1f ms   runs:", kClientRuns, bestLoad * 1e3);
    for (const ClientResult& run : runs) std::printf(" %.1f", run.seconds * 1e3);
    std::printf(" ms\n");
    std::printf("client processor time, same runs:               runs:");
    for (const ClientResult& run : runs) std::printf(" %.1f", run.cpuSeconds * 1e3);
    std::printf(" ms\n");
    std::printf("client peak resident (VmHWM, worst):  %8.1f MiB   runs:", peak);
    for (const ClientResult& run : runs) std::printf(" %.1f", mib(double(run.peakKiB) * 1024.0));
    std::printf(" MiB (this process held %.1f MiB at launch)\n", mib(double(launchKiB) * 1024.0));
    std::printf("largest decoded body:                 %8.1f MiB\n", mib(double(largest)));
    std::printf("zstd floor, all bodies twice (best of %d): %6.1f ms\n", kFloorRounds, floor * 1e3);
    std::printf("first touch of %.1f MiB of fresh pages:  %6.1f ms (in every load, not in the floor)\n", peak,
                touch * 1e3);
    std::printf("\n");
    std::printf("load / floor:                 %6.2f   target <= %.2f          %s\n", loadRatio, kLoadTarget,
                verdict(loadRatio <= kLoadTarget));
    std::printf("peak / (4 x largest + 32 MiB): %5.2f   %.1f of %.1f MiB        %s\n", peak / peakTarget, peak,
                peakTarget, verdict(peak <= peakTarget));
    return 0;
}

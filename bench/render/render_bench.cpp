// The preview engine through the real client on the Cornell box, against Embree's own path
// tracer on the same box in the same run.
//
// The box is the one Embree's tutorials ship (cornell_box.obj and cornell_box.ecs among
// embree3's documentation models): white floor, ceiling and back wall, red and green side
// walls, two white blocks, no front wall and no area light (its quad is commented out there),
// lit by a point light. For 1, 2 and the processor count of threads, the client renders it with
// the preview engine beside it and the engine's statistics line is read; then Embree's
// pathtracer tutorial renders its own copy of the box at the same size, samples a pixel and
// path length on as many threads, the two sides taking turns three times. Target: at least
// Embree's samples a second at every thread count. The scaling from one thread shows whether anything shared (the client's pool, which
// serves the engine's `new`, for one) holds the threads back; Embree's scaling on the same
// machine says what the machine allows.
#include "bench/support/child_process.h"
#include "scene/records.h"
#include "tools/scene_writer/preview_builders.h"
#include "tools/scene_writer/record_builders.h"
#include "tools/scene_writer/scene_writer.h"

#include <unistd.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;
namespace sw = scene_writer;

namespace {

using bench::readText;
using bench::runProcess;

constexpr int kImageSize = 512;
constexpr int kPasses = 32; // one sample a pixel each
constexpr int kMaxDepth = 8;
constexpr float kFovDegrees = 37;
constexpr sw::Vec3f kEye{278, 273, -800}, kTarget{278, 273, 0};
constexpr sw::Vec3f kLightPosition{213, 300, 227};
constexpr float kLightIntensity = 100000;

constexpr int kEmbreeWarmupFrames = 4;
// Each side runs this many times, the two alternating, and its best run counts: other work on a
// shared machine only ever slows a run, and alternating spreads it over both sides.
constexpr int kRounds = 3;
const char* const kEmbreeScene = "/usr/share/doc/embree3/models/cornell_box.ecs";
const char* const kEmbreeTracer = "pathtracer";

[[noreturn]] void die(const std::string& why) {
    std::fprintf(stderr, "render_bench: %s\n", why.c_str());
    std::exit(1);
}

// ---- The box ------------------------------------------------------------------------------------

enum BoxMaterial : uint32_t { kWhite, kRed, kGreen };

using Quad = std::array<float, 12>; // four corners, x y z each, in the order of cornell_box.obj

struct BoxPart {
    const char* name;
    BoxMaterial material;
    std::vector<Quad> faces;
};

// cornell_box.obj's objects with their faces as they stand there, the footprints of the blocks
// on the floor included.
const std::vector<BoxPart> kBox = {
    {"floor",
     kWhite,
     {{552.8f, 0, 0, 0, 0, 0, 0, 0, 559.2f, 549.6f, 0, 559.2f},
      {290, 0, 114, 240, 0, 272, 82, 0, 225, 130, 0, 65},
      {472, 0, 406, 314, 0, 456, 265, 0, 296, 423, 0, 247}}},
    {"ceiling", kWhite, {{556, 548.8f, 0, 556, 548.8f, 559.2f, 0, 548.8f, 559.2f, 0, 548.8f, 0}}},
    {"back_wall", kWhite, {{549.6f, 0, 559.2f, 0, 0, 559.2f, 0, 548.8f, 559.2f, 556, 548.8f, 559.2f}}},
    {"green_wall", kGreen, {{0, 0, 559.2f, 0, 0, 0, 0, 548.8f, 0, 0, 548.8f, 559.2f}}},
    {"red_wall", kRed, {{552.8f, 0, 0, 549.6f, 0, 559.2f, 556, 548.8f, 559.2f, 556, 548.8f, 0}}},
    {"short_block",
     kWhite,
     {{130, 165, 65, 82, 165, 225, 240, 165, 272, 290, 165, 114},
      {290, 0, 114, 290, 165, 114, 240, 165, 272, 240, 0, 272},
      {130, 0, 65, 130, 165, 65, 290, 165, 114, 290, 0, 114},
      {82, 0, 225, 82, 165, 225, 130, 165, 65, 130, 0, 65},
      {240, 0, 272, 240, 165, 272, 82, 165, 225, 82, 0, 225}}},
    {"tall_block",
     kWhite,
     {{423, 330, 247, 265, 330, 296, 314, 330, 456, 472, 330, 406},
      {423, 0, 247, 423, 330, 247, 472, 330, 406, 472, 0, 406},
      {472, 0, 406, 472, 330, 406, 314, 330, 456, 314, 0, 456},
      {314, 0, 456, 314, 330, 456, 265, 330, 296, 265, 0, 296},
      {265, 0, 296, 265, 330, 296, 423, 330, 247, 423, 0, 247}}},
};

// Each quad as the fan of its first corner, as an OBJ polygon is read.
sw::MeshPlan partMesh(const BoxPart& part) {
    std::vector<float> positions;
    std::vector<uint32_t> indices, materialIds;
    for (const Quad& face : part.faces) {
        const uint32_t first = static_cast<uint32_t>(positions.size() / 3);
        positions.insert(positions.end(), face.begin(), face.end());
        for (uint32_t corner : {0u, 1u, 2u, 0u, 2u, 3u})
            indices.push_back(first + corner);
        materialIds.insert(materialIds.end(), 2, part.material);
    }
    return sw::triangleMesh(part.name, positions, indices, materialIds);
}

// cornell_box.mtl's Kd of each material as a Lambertian albedo.
sw::MaterialBuilder diffuse(BoxMaterial id, const char* name, ColorRGB albedo) {
    sw::MaterialBuilder material("DIFFUSE", id, name);
    material.color("FrontColor", albedo);
    return material;
}

void writeScene(const std::string& path, int threads) {
    sw::SettingsPlan plan;
    plan.imageSizeX = plan.imageSizeY = kImageSize;
    plan.maxIterations = kPasses;
    plan.saveJpeg = true;
    plan.saveExr = false;
    plan.outputName = "cornell_box";
    plan.startingVolumetricMaterial = -1;
    plan.maxThreads = threads;
    sw::Bytes settings = sw::settingsBody(plan);
    sw::put32(settings, offsetof(SettingsRecord, MaxDepth), kMaxDepth);
    sw::put32(settings, offsetof(SettingsRecord, RussianRouletteStartDepth), kMaxDepth);

    sw::LightPlan light;
    light.type = 1;
    light.intensity = kLightIntensity;
    light.position = kLightPosition;

    sw::SceneFile file;
    file.add(sw::zstdChunk(sw::kSettings, settings));
    file.add(sw::zstdChunk(sw::kCamera, sw::perspectiveCamera(kFovDegrees)));
    file.add(sw::storedChunk(sw::kCameraPath, sw::cameraPathBody(sw::lookAt(kEye, kTarget))));
    file.add(sw::zstdChunk(sw::kLight, sw::lightImage(light), sw::lightVersion(light.type)));
    file.add(sw::storedChunk(sw::kLightPath, sw::lightPathBody(sw::lightPath(light))));
    file.add(sw::zstdChunk(sw::kMaterial, diffuse(kWhite, "white", {1, 1, 1}).body()));
    file.add(sw::zstdChunk(sw::kMaterial, diffuse(kRed, "red", {1, 0, 0}).body()));
    file.add(sw::zstdChunk(sw::kMaterial, diffuse(kGreen, "green", {0, 1, 0}).body()));
    for (const BoxPart& part : kBox)
        file.add(sw::zstdChunk(sw::kTriangleMesh, sw::meshBody(partMesh(part))));
    if (!file.write(path)) die("cannot write " + path);
}

// ---- Processes ----------------------------------------------------------------------------------


std::optional<fs::path> findOnPath(const std::string& name) {
    const char* path = std::getenv("PATH");
    std::istringstream folders(path ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (folder.empty()) continue;
        fs::path candidate = fs::path(folder) / name;
        if (access(candidate.c_str(), X_OK) == 0) return candidate;
    }
    return std::nullopt;
}

// ---- Ours ---------------------------------------------------------------------------------------

// The build folder holds bin/TaviClient and engines/preview/TaviTracerAVX.so; this program
// sits in it at bench/render.
fs::path buildFolder() {
    fs::path here = fs::read_symlink("/proc/self/exe").parent_path();
    for (fs::path folder = here; !folder.empty(); folder = folder.parent_path()) {
        if (fs::exists(folder / "bin/TaviClient") && fs::exists(folder / "engines/preview/TaviTracerAVX.so"))
            return folder;
        if (folder == folder.root_path()) break;
    }
    die("no bin/TaviClient with engines/preview/TaviTracerAVX.so above " + here.string());
}

struct OurRun {
    double buildSeconds = 0, samplesPerSecond = 0, mraysPerSecond = 0;
    fs::path jpeg;
};

OurRun renderOurs(const fs::path& folder, int threads) {
    const std::string name = "threads-" + std::to_string(threads);
    const fs::path scene = folder / (name + ".tavi"), output = folder / name, log = folder / (name + ".log");
    writeScene(scene.string(), threads);
    fs::create_directories(output);
    int status = runProcess(
        {(folder / "TaviClient").string(), "-scene", scene.string(), "-outputpath", output.string()}, log);
    const std::string text = readText(log);
    if (status != 0) die("the client exited with " + std::to_string(status) + ":\n" + text);

    OurRun run;
    const char* const kStatistics = "Preview engine: scene built in ";
    const size_t at = text.find(kStatistics);
    int passes = 0;
    double passSeconds = 0;
    if (at == std::string::npos ||
        std::sscanf(text.c_str() + at + std::strlen(kStatistics),
                    "%lf s; %d passes in %lf s, %lf samples/s, %lf Mrays/s", &run.buildSeconds, &passes,
                    &passSeconds, &run.samplesPerSecond, &run.mraysPerSecond) != 5)
        die("no statistics line from the engine:\n" + text);
    if (passes != kPasses) die("the engine ran " + std::to_string(passes) + " passes:\n" + text);
    for (const fs::directory_entry& entry : fs::directory_iterator(output))
        if (entry.path().extension() == ".jpg") run.jpeg = entry.path();
    if (run.jpeg.empty()) die("no JPEG in " + output.string() + ":\n" + text);
    return run;
}

// ---- Embree's -----------------------------------------------------------------------------------

struct EmbreeRun {
    double samplesPerSecond = 0, mraysPerSecond = 0;
};

// The value after `key` and a space at the start of a line.
std::optional<double> reportedValue(const std::string& text, const std::string& key) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.rfind(key + " ", 0) == 0) return std::strtod(line.c_str() + key.size() + 1, nullptr);
    return std::nullopt;
}

// Empty, with the reason on the console, when the tracer fails or reports nothing.
std::optional<EmbreeRun> renderEmbree(const fs::path& tracer, const fs::path& folder, int threads) {
    const fs::path log = folder / ("embree-threads-" + std::to_string(threads) + ".log");
    const std::string size = std::to_string(kImageSize);
    int status = runProcess({tracer.string(), "-c", kEmbreeScene, "--size", size, size, "--spp", "1",
                             "--max-path-length", std::to_string(kMaxDepth), "--rtcore",
                             "threads=" + std::to_string(threads), "--benchmark",
                             std::to_string(kEmbreeWarmupFrames), std::to_string(kPasses)},
                            log);
    const std::string text = readText(log);
    std::optional<double> fps = reportedValue(text, "BENCHMARK_RENDER_AVG");
    std::optional<double> mrays = reportedValue(text, "BENCHMARK_RENDER_MRAYPS_AVG");
    if (status != 0 || !fps || !mrays) {
        std::printf("Embree's %s on %d threads gave no figures (exit %d); its side is skipped:\n%s\n",
                    kEmbreeTracer, threads, status, text.c_str());
        return std::nullopt;
    }
    return EmbreeRun{*fps * kImageSize * kImageSize, *mrays};
}

std::vector<int> threadCounts() {
    std::vector<int> counts{1, 2};
    const int processors = static_cast<int>(std::thread::hardware_concurrency());
    if (processors > 2) counts.push_back(processors);
    return counts;
}

const char* verdict(bool met) {
    return met ? "PASS" : "MISS";
}

} // namespace

// With a folder named, the scenes, logs and copies are left there, to be profiled at leisure;
// otherwise only the last image is kept.
int main(int argc, char** argv) {
    fs::path build = buildFolder();
    const bool keep = argc > 1;
    fs::path folder;
    if (keep) {
        folder = argv[1];
        fs::create_directories(folder);
    } else {
        std::string pattern = (fs::temp_directory_path() / "tavi-render-bench-XXXXXX").string();
        if (!mkdtemp(pattern.data())) die("mkdtemp");
        folder = pattern;
    }
    const auto overwrite = fs::copy_options::overwrite_existing;
    fs::copy_file(build / "bin/TaviClient", folder / "TaviClient", overwrite);
    fs::copy_file(build / "engines/preview/TaviTracerAVX.so", folder / "TaviTracerAVX.so", overwrite);

    std::optional<fs::path> tracer = findOnPath(kEmbreeTracer);
    const bool embreeSceneFound = fs::exists(kEmbreeScene);
    if (!tracer)
        std::printf("Embree's %s is not on the PATH (package embree-tools): its side is skipped.\n",
                    kEmbreeTracer);
    if (!embreeSceneFound)
        std::printf("%s is missing (package embree-tools): Embree's side is skipped.\n", kEmbreeScene);

    struct Row {
        int threads;
        OurRun ours;
        std::optional<EmbreeRun> embree;
    };
    std::vector<Row> rows;
    for (int threads : threadCounts()) {
        Row row{threads, {}, std::nullopt};
        for (int round = 0; round < kRounds; ++round) {
            OurRun ours = renderOurs(folder, threads);
            if (ours.samplesPerSecond > row.ours.samplesPerSecond) row.ours = ours;
            if (!tracer || !embreeSceneFound) continue;
            std::optional<EmbreeRun> embree = renderEmbree(*tracer, folder, threads);
            if (embree && (!row.embree || embree->samplesPerSecond > row.embree->samplesPerSecond))
                row.embree = embree;
        }
        rows.push_back(row);
    }

    fs::path image = rows.back().ours.jpeg;
    if (!keep) {
        fs::path kept = folder / image.filename();
        fs::rename(image, kept);
        image = kept;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder))
            if (entry.path() != kept) fs::remove_all(entry.path());
    }

    std::printf("Cornell box, %d x %d, %d passes of 1 sample a pixel, path length %d, a point light\n",
                kImageSize, kImageSize, kPasses, kMaxDepth);
    std::printf("ours: TaviClient with the preview engine; Embree: %s --benchmark %d %d on %s\n",
                kEmbreeTracer, kEmbreeWarmupFrames, kPasses, kEmbreeScene);
    std::printf("each side's best of %d runs, the two alternating\n\n", kRounds);
    std::printf("threads |  ours: build s   samples/s  Mrays/s | Embree: samples/s  Mrays/s | ours/Embree  "
                "target >= 1 "
                "| scaling from 1: ours  Embree\n");
    const Row& one = rows.front();
    for (const Row& row : rows) {
        std::printf("%7d | %14.3f %11.0f %8.2f |", row.threads, row.ours.buildSeconds,
                    row.ours.samplesPerSecond, row.ours.mraysPerSecond);
        if (row.embree) {
            const double ratio = row.ours.samplesPerSecond / row.embree->samplesPerSecond;
            std::printf(" %17.0f %8.2f | %11.2f  %-11s |", row.embree->samplesPerSecond,
                        row.embree->mraysPerSecond, ratio, verdict(ratio >= 1));
        } else {
            std::printf(" %17s %8s | %11s  %-11s |", "-", "-", "-", "");
        }
        std::printf(" %20.2f", row.ours.samplesPerSecond / one.ours.samplesPerSecond);
        if (row.embree && one.embree)
            std::printf("  %6.2f", row.embree->samplesPerSecond / one.embree->samplesPerSecond);
        std::printf("\n");
    }
    std::printf("\nimage (%d threads): %s\n", rows.back().threads, image.c_str());
    return 0;
}

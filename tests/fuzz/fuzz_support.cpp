#include "tests/fuzz/fuzz_support.h"

#include "common/unicode.h"
#include "memory/pool.h"
#include "memory/pool_internals.h"
#include "scene/geometry_objects.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <system_error>

namespace fuzz_support {

namespace {

// Several fuzzers and replays may run side by side, so the folder's name is drawn at random.
struct Folder {
    std::filesystem::path path;
    std::u16string wide;

    Folder() {
        std::random_device random;
        const std::string name = "tavi-fuzz-" + std::to_string(random()) + std::to_string(random());
        path = std::filesystem::temp_directory_path() / name;
        std::error_code error;
        std::filesystem::create_directories(path, error);
        if (error) {
            std::fprintf(stderr, "fuzz: cannot create %s: %s\n", path.c_str(), error.message().c_str());
            std::abort();
        }
        wide = utf8ToUtf16((path / "").string());
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
};

Folder& folder() {
    static Folder instance;
    return instance;
}

} // namespace

void checkFailed(const char* condition, const char* file, int line) {
    std::fprintf(stderr, "%s:%d: fuzz check failed: %s\n", file, line, condition);
    std::abort();
}

const std::u16string& inputFolder() {
    return folder().wide;
}

std::u16string writeInput(const char* name, const uint8_t* data, size_t size) {
    const std::filesystem::path path = folder().path / name;
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        FUZZ_CHECK(out.good());
    }
    return utf8ToUtf16(path.string());
}

LiveMemory liveMemory() {
    return {poolLiveBlocks(poolInstance()), TRDF_Load::liveSliceArrays()};
}

void checkGivenBack(const LiveMemory& before) {
    const LiveMemory after = liveMemory();
    FUZZ_CHECK(after.poolBlocks == before.poolBlocks);
    FUZZ_CHECK(after.sliceArrays == before.sliceArrays);
}

} // namespace fuzz_support

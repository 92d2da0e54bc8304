// What the fuzz targets share: a check that holds in every build, the input as the file the
// client would be handed, and the counts of memory that a run must give back.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

// Unlike assert, never compiled out: the replay of the corpus runs in release builds too.
#define FUZZ_CHECK(condition)                                                                                \
    ((condition) ? static_cast<void>(0) : fuzz_support::checkFailed(#condition, __FILE__, __LINE__))

namespace fuzz_support {

[[noreturn]] void checkFailed(const char* condition, const char* file, int line);

// A folder of the process's own, with a trailing separator, as the client's folder options
// hold one. It is removed with everything in it when the process ends normally.
const std::u16string& inputFolder();

// Writes the input to `name` in that folder, replacing what an earlier input left there, and
// returns the file's path as the client passes paths.
std::u16string writeInput(const char* name, const uint8_t* data, size_t size);

// Blocks of the process's pool and slice arrays still allocated. Everything a reader takes
// it must give back once its records are released.
struct LiveMemory {
    uint64_t poolBlocks;
    uint64_t sliceArrays;
};
LiveMemory liveMemory();
void checkGivenBack(const LiveMemory& before);

} // namespace fuzz_support

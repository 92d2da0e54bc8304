// Runs inputs through a fuzz target without libFuzzer, so that every build can replay the seeds
// and the reproducers: each file named, and each file under each folder named, once, in path
// order. An input that breaks the target ends the process the way it would end a fuzzer; the
// name of the input is printed before it runs.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace fs = std::filesystem;

namespace {

bool collect(const fs::path& path, std::vector<fs::path>& inputs) {
    std::error_code error;
    if (fs::is_regular_file(path, error)) {
        inputs.push_back(path);
        return true;
    }
    if (!fs::is_directory(path, error)) return false;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path, error))
        if (entry.is_regular_file()) inputs.push_back(entry.path());
    return !error;
}

} // namespace

int main(int argc, char** argv) {
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        if (!collect(argv[i], inputs)) {
            std::fprintf(stderr, "replay: no input at %s\n", argv[i]);
            return 2;
        }
    }
    std::sort(inputs.begin(), inputs.end());
    for (const fs::path& input : inputs) {
        std::ifstream in(input, std::ios::binary);
        const std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        if (in.bad()) {
            std::fprintf(stderr, "replay: cannot read %s\n", input.c_str());
            return 2;
        }
        // A block of exactly the input's length, as libFuzzer gives, so that a read past the
        // end of the input is an overrun.
        std::unique_ptr<uint8_t[]> data(new uint8_t[bytes.size()]);
        std::copy(bytes.begin(), bytes.end(), data.get());
        std::fprintf(stderr, "replay: %s\n", input.c_str());
        LLVMFuzzerTestOneInput(data.get(), bytes.size());
    }
    std::fprintf(stderr, "replay: %zu inputs\n", inputs.size());
    // A replay that ran nothing would pass without having checked anything.
    return inputs.empty() ? 1 : 0;
}

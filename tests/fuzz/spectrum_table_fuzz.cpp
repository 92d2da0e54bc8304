// The spectrum table file that a settings document names for its colour conversion.
#include "documents/spectrum_table.h"
#include "tests/fuzz/fuzz_support.h"

#include <cstddef>
#include <cstdint>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::u16string path = fuzz_support::writeInput("spectrum.csv", data, size);
    const fuzz_support::LiveMemory before = fuzz_support::liveMemory();
    // On the heap at its exact size, so that a write past its end is seen.
    struct Table {
        float entries[kSpectrumEntries][4];
    };
    auto table = std::make_unique<Table>();
    auto& entries = table->entries;
    for (auto& entry : entries)
        for (float& value : entry)
            value = 1.0f;
    if (!ReadSpectrumTable(entries, path.c_str())) {
        // A file that fails leaves the table zeroed, not half filled.
        for (const auto& entry : entries)
            for (float value : entry)
                FUZZ_CHECK(value == 0.0f);
    }
    fuzz_support::checkGivenBack(before);
    return 0;
}

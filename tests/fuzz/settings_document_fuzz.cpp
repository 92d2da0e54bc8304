// The settings document over the settings that a scene's settings chunk gave.
#include "client/file_renderer.h"
#include "documents/settings_document.h"
#include "scene/scene_readers.h"
#include "tests/fuzz/fuzz_support.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::u16string path = fuzz_support::writeInput("settings.xml", data, size);
    const fuzz_support::LiveMemory before = fuzz_support::liveMemory();
    {
        // Two registries in the same state: a name asked twice of one registry may get two ids
        // (a long name is stored cut, and is never found again).
        ClientOptions options;
        FileRenderer firstNames(options), secondNames(options);
        auto first = std::make_unique<SettingsRecord>();
        auto second = std::make_unique<SettingsRecord>();
        initSettings(*first);
        initSettings(*second);
        const bool read = ApplySettingsDocument(first.get(), path.c_str(), &firstNames);
        // The same document over the same settings gives the same bytes: nothing of the result
        // may come from memory the reader did not set.
        FUZZ_CHECK(ApplySettingsDocument(second.get(), path.c_str(), &secondNames) == read);
        FUZZ_CHECK(std::memcmp(first.get(), second.get(), sizeof(SettingsRecord)) == 0);
        // The channel count is what the document lists, never what it claims.
        if (read) FUZZ_CHECK(first->NumChannels >= 0 && first->NumChannels <= int32_t(kAovChannelCount));
    }
    fuzz_support::checkGivenBack(before);
    return 0;
}

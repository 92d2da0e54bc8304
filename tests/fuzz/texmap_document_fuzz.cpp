// A texmap document as the registry meets it: a texture map asked for by name reads the
// document of that name from the texmaps folder, and once resolved walks what it refers to and
// goes to the engine.
#include "client/file_renderer.h"
#include "tests/fuzz/fuzz_support.h"
#include "tests/fuzz/touching_engine.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_support::writeInput("fuzz.xml", data, size);
    const fuzz_support::LiveMemory before = fuzz_support::liveMemory();
    {
        ClientOptions options;
        options.texmapsPath = fuzz_support::inputFolder();
        TouchingEngine engine;
        FileRenderer renderer(options);
        renderer.attachEngine(&engine);
        const int32_t id = renderer.assets().texmapId(u"fuzz");
        FUZZ_CHECK(id != -1);
        renderer.assets().beginResolution(&engine);
        renderer.GetTexMapName(id);
        FUZZ_CHECK(engine.texmapsAdded >= 1);
    }
    fuzz_support::checkGivenBack(before);
    return 0;
}

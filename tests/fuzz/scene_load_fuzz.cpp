// The whole load of a scene file in one process: the container, every record reader, the
// registries and both geometry sweeps, up to the engine, which reads all it is handed.
#include "client/file_renderer.h"
#include "tests/fuzz/fuzz_support.h"
#include "tests/fuzz/touching_engine.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const fuzz_support::LiveMemory before = fuzz_support::liveMemory();
    {
        ClientOptions options;
        options.scenePath = fuzz_support::writeInput("scene.tavi", data, size);
        TouchingEngine engine;
        FileRenderer renderer(options);
        renderer.attachEngine(&engine);
        const int32_t level = renderer.loadScene();
        FUZZ_CHECK(level >= StatusOk && level <= StatusOutOfMemory);
        FUZZ_CHECK(level == renderer.log().level());
    }
    fuzz_support::checkGivenBack(before);
    return 0;
}

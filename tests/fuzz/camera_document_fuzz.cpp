// The camera document over the render camera of a scene, for each projection the scene's
// camera may have: which sections are read follows the type the record already holds.
#include "client/file_renderer.h"
#include "documents/camera_document.h"
#include "scene/temp_objects.h"
#include "tests/fuzz/fuzz_support.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::u16string path = fuzz_support::writeInput("camera.xml", data, size);
    const fuzz_support::LiveMemory before = fuzz_support::liveMemory();
    {
        // Two registries that get the same calls, so that they stay in the same state: a name
        // asked twice of one registry may get two ids (a long name is stored cut, and is never
        // found again).
        ClientOptions options;
        FileRenderer firstNames(options), secondNames(options);
        for (int32_t type = 1; type <= 5; ++type) {
            auto first = std::make_unique<TempCamera>();
            auto second = std::make_unique<TempCamera>();
            first->cameraRole = second->cameraRole = 0;
            first->camera.type = second->camera.type = type;
            const bool read = ApplyCameraDocument(first.get(), path.c_str(), &firstNames);
            // A document names a projection by a known word or leaves the type alone.
            FUZZ_CHECK(first->camera.type >= 0 && first->camera.type <= 5);
            // The same document over the same camera gives the same bytes: nothing of the result
            // may come from memory the reader did not set.
            FUZZ_CHECK(ApplyCameraDocument(second.get(), path.c_str(), &secondNames) == read);
            FUZZ_CHECK(std::memcmp(&first->camera, &second->camera, sizeof(CameraRecord)) == 0);
        }
    }
    fuzz_support::checkGivenBack(before);
    return 0;
}

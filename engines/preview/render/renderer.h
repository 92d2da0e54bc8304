// The passes over the render region: one sample per pixel a pass, spread over the threads by
// oneTBB, each pixel's numbers drawn from a stream of its own.
#pragma once
#include "engines/preview/output/film.h"
#include "engines/preview/render/path_tracer.h"

#include <functional>

namespace preview {

struct PassPlan {
    int32_t passes = 1;
    int32_t threads = 0; // 0: every processor
    uint32_t seed = 0x5EEDu;
};

// Called after each pass with the passes done; false stops the render there.
using PassDone = std::function<bool(int32_t passesDone)>;

struct RenderStatistics {
    int32_t passes = 0;   // passes done
    uint64_t samples = 0; // camera samples
    uint64_t rays = 0;    // ray queries of every kind
    double seconds = 0;   // wall time of the passes
};

// Renders `plan.passes` passes into `film` (whose region says which pixels).
RenderStatistics renderPasses(const SceneView& scene, const Camera& camera, Film& film, const PassPlan& plan,
                              const PassDone& passDone);

} // namespace preview

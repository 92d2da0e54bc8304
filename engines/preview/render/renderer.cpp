#include "engines/preview/render/renderer.h"

#include <tbb/blocked_range2d.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>
#include <xmmintrin.h>

namespace preview {

namespace {

constexpr int32_t kTileSize = 16;
// Denormal numbers cost a hundred cycles an operation and add nothing a picture can show.
constexpr unsigned kFlushToZeroAndDenormalsAreZero = 0x8040;

void renderTile(const SceneView& scene, const Camera& camera, Film& film, const PassPlan& plan, int32_t pass,
                const tbb::blocked_range2d<int32_t>& tile) {
    _mm_setcsr(_mm_getcsr() | kFlushToZeroAndDenormalsAreZero);
    const int32_t width = film.imageWidth();
    for (int32_t y = tile.rows().begin(); y < tile.rows().end(); ++y)
        for (int32_t x = tile.cols().begin(); x < tile.cols().end(); ++x) {
            Sampler sampler(static_cast<uint32_t>(y) * static_cast<uint32_t>(width) + static_cast<uint32_t>(x),
                            static_cast<uint32_t>(pass), plan.seed);
            const float jitterX = sampler.next(), jitterY = sampler.next();
            const float lensU = sampler.next(), lensV = sampler.next();
            Ray ray;
            PathSample sample;
            if (camera.generate(x + jitterX, y + jitterY, lensU, lensV, &ray)) sample = tracePath(scene, ray, sampler);
            film.add(x, y, sample.radiance * camera.exposureScale(), sample.albedo, sample.normal, sample.depth);
        }
}

} // namespace

int32_t renderPasses(const SceneView& scene, const Camera& camera, Film& film, const PassPlan& plan,
                     const PassDone& passDone) {
    const PixelRect& region = film.region();
    if (region.width <= 0 || region.height <= 0) return 0;
    tbb::task_arena arena(plan.threads > 0 ? plan.threads : tbb::task_arena::automatic);
    int32_t done = 0;
    for (int32_t pass = 0; pass < plan.passes; ++pass) {
        arena.execute([&] {
            // The simple partitioner keeps tiles at their size whatever the thread count, which
            // the results never depend on, but the load balance does.
            tbb::parallel_for(tbb::blocked_range2d<int32_t>(region.y, region.y + region.height, kTileSize, region.x,
                                                            region.x + region.width, kTileSize),
                              [&](const tbb::blocked_range2d<int32_t>& tile) {
                                  renderTile(scene, camera, film, plan, pass, tile);
                              },
                              tbb::simple_partitioner());
        });
        done = pass + 1;
        film.setPasses(done);
        if (!passDone(done)) break;
    }
    return done;
}

} // namespace preview

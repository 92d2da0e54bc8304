#include "engines/preview/render/renderer.h"

#include <tbb/blocked_range2d.h>
#include <tbb/combinable.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>
#include <xmmintrin.h>

#include <algorithm>
#include <chrono>

namespace preview {

namespace {

constexpr int32_t kTileSize = 16;
// Denormal numbers cost a hundred cycles an operation and add nothing a picture can show.
constexpr unsigned kFlushToZeroAndDenormalsAreZero = 0x8040;

// Returns the rays the tile's paths queried.
uint64_t renderTile(const SceneView& scene, const Camera& camera, Film& film, const PassPlan& plan, int32_t pass,
                    const tbb::blocked_range2d<int32_t>& tile) {
    _mm_setcsr(_mm_getcsr() | kFlushToZeroAndDenormalsAreZero);
    const int32_t width = film.imageWidth();
    constexpr int kPacket = Accelerator::kPacket;
    uint64_t rays = 0;
    // Neighbouring camera rays go to Embree together, a row's run of kPacket pixels at a time;
    // each path then goes on on its own.
    for (int32_t y = tile.rows().begin(); y < tile.rows().end(); ++y)
        for (int32_t x0 = tile.cols().begin(); x0 < tile.cols().end(); x0 += kPacket) {
            Sampler samplers[kPacket];
            Ray cameraRays[kPacket];
            bool active[kPacket] = {};
            const int count = std::min(kPacket, tile.cols().end() - x0);
            for (int i = 0; i < count; ++i) {
                const int32_t x = x0 + i;
                Sampler& sampler = samplers[i];
                sampler = Sampler(static_cast<uint32_t>(y) * static_cast<uint32_t>(width) + static_cast<uint32_t>(x),
                                  static_cast<uint32_t>(pass), plan.seed);
                const float jitterX = sampler.next(), jitterY = sampler.next();
                const float lensU = sampler.next(), lensV = sampler.next();
                active[i] = camera.generate(x + jitterX, y + jitterY, lensU, lensV, &cameraRays[i]);
            }
            Hit hits[kPacket];
            bool found[kPacket];
            scene.accelerator.intersectPacket(cameraRays, active, hits, found);
            for (int i = 0; i < count; ++i) {
                PathSample sample;
                if (active[i]) sample = tracePath(scene, cameraRays[i], found[i] ? &hits[i] : nullptr, samplers[i]);
                film.add(x0 + i, y, sample.radiance * camera.exposureScale(), sample.albedo, sample.normal,
                         sample.depth);
                rays += sample.rays;
            }
        }
    return rays;
}

} // namespace

RenderStatistics renderPasses(const SceneView& scene, const Camera& camera, Film& film, const PassPlan& plan,
                              const PassDone& passDone) {
    RenderStatistics statistics;
    const PixelRect& region = film.region();
    if (region.width <= 0 || region.height <= 0) return statistics;
    tbb::task_arena arena(plan.threads > 0 ? plan.threads : tbb::task_arena::automatic);
    tbb::combinable<uint64_t> rays([] { return uint64_t(0); });
    const auto start = std::chrono::steady_clock::now();
    for (int32_t pass = 0; pass < plan.passes; ++pass) {
        arena.execute([&] {
            // The simple partitioner keeps tiles at their size whatever the thread count, which
            // the results never depend on, but the load balance does.
            tbb::parallel_for(tbb::blocked_range2d<int32_t>(region.y, region.y + region.height, kTileSize, region.x,
                                                            region.x + region.width, kTileSize),
                              [&](const tbb::blocked_range2d<int32_t>& tile) {
                                  rays.local() += renderTile(scene, camera, film, plan, pass, tile);
                              },
                              tbb::simple_partitioner());
        });
        statistics.passes = pass + 1;
        film.setPasses(statistics.passes);
        statistics.samples += uint64_t(region.width) * uint64_t(region.height);
        if (!passDone(statistics.passes)) break;
    }
    statistics.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    statistics.rays = rays.combine(std::plus<uint64_t>());
    return statistics;
}

} // namespace preview

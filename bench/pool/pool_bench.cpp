// The pool against malloc on the client's allocation pattern: records from 64
// bytes to 0x3350 bytes and many small wide strings. Prints pool/malloc at the end.
#include "memory/pool.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr size_t kRecordSizes[] = {64, 96, 128, 200, 256, 448, 560, 1024, 1800, 2416, 4096, 0x1A00, 0x3350};
// Wide strings past the 7 inline units: 16-bit units plus the terminator.
constexpr size_t kWideSizes[] = {16, 18, 24, 30, 32, 40, 48, 62, 80, 128};
constexpr uint32_t kSlots = 2048;
constexpr uint32_t kSteps = 1 << 16; // a power of two, walked round and round

struct Step {
    uint32_t slot;
    uint32_t size;
};

// Two of three requests are strings, the rest records.
std::vector<Step> makeSteps(unsigned seed) {
    std::mt19937 random(seed);
    std::vector<Step> steps(kSteps);
    for (Step& step : steps) {
        step.slot = random() % kSlots;
        step.size =
            static_cast<uint32_t>(random() % 3 != 0 ? kWideSizes[random() % std::size(kWideSizes)]
                                                    : kRecordSizes[random() % std::size(kRecordSizes)]);
    }
    return steps;
}

struct PoolApi {
    static void* allocate(size_t size) { return poolAlloc(poolInstance(), size); }
    static void release(void* block) { poolFree(poolInstance(), block); }
};

struct MallocApi {
    static void* allocate(size_t size) { return std::malloc(size); }
    static void release(void* block) { std::free(block); }
};

// Steady churn: each step frees one slot and fills it with a new block.
template <class Api> void churn(benchmark::State& state) {
    std::vector<Step> steps = makeSteps(1000 + state.thread_index());
    std::vector<void*> slots(kSlots, nullptr);
    uint32_t next = 0;
    for (auto _ : state) {
        const Step& step = steps[next++ & (kSteps - 1)];
        void*& slot = slots[step.slot];
        Api::release(slot);
        slot = Api::allocate(step.size);
        static_cast<char*>(slot)[0] = 1;
        benchmark::DoNotOptimize(slot);
    }
    for (void* block : slots)
        Api::release(block);
    state.SetItemsProcessed(state.iterations());
}

// Bursts: a load allocates thousands of records, then all are released.
template <class Api> void burst(benchmark::State& state) {
    std::vector<Step> steps = makeSteps(2000 + state.thread_index());
    std::vector<void*> blocks(4096);
    for (auto _ : state) {
        for (size_t i = 0; i < blocks.size(); ++i) {
            blocks[i] = Api::allocate(steps[i].size);
            static_cast<char*>(blocks[i])[0] = 1;
        }
        benchmark::ClobberMemory();
        for (void* block : blocks)
            Api::release(block);
    }
    state.SetItemsProcessed(state.iterations() * blocks.size());
}

// Keeps the console output and remembers each run's time per iteration.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    // Plain text: the output is mostly read from logs.
    RatioReporter() : ConsoleReporter(OO_Tabular) {}
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                times[run.benchmark_name()] = run.GetAdjustedRealTime();
            }
        }
    }
    std::map<std::string, double> times;
};

} // namespace

int main(int argc, char** argv) {
    for (const char* workload : {"churn", "burst"}) {
        bool isChurn = std::string(workload) == "churn";
        for (const char* side : {"pool", "malloc"}) {
            bool isPool = std::string(side) == "pool";
            auto* function = isChurn ? (isPool ? churn<PoolApi> : churn<MallocApi>)
                                     : (isPool ? burst<PoolApi> : burst<MallocApi>);
            benchmark::RegisterBenchmark((std::string(workload) + "/" + side).c_str(), function)
                ->Threads(1)
                ->Threads(2)
                ->UseRealTime();
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    std::printf("\npool/malloc time ratio (below 1: the pool is faster)\n");
    for (const auto& [name, poolTime] : reporter.times) {
        size_t at = name.find("/pool/");
        if (at == std::string::npos) continue;
        std::string partner = name.substr(0, at) + "/malloc/" + name.substr(at + 6);
        auto found = reporter.times.find(partner);
        if (found == reporter.times.end() || found->second <= 0) continue;
        std::printf("  %-36s %.2f\n", name.c_str(), poolTime / found->second);
    }
    benchmark::Shutdown();
    return 0;
}

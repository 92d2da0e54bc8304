#include "tools/builder/progress_meter.h"

namespace builder {

ProgressMeter::ProgressMeter(bool enabled, size_t total, size_t threshold, std::FILE* out)
    : shown_(enabled && total >= threshold && total > 0), total_(total), out_(out) {}

ProgressMeter::~ProgressMeter() {
    if (shown_ && lastPercent_ >= 0) std::fputc('\n', out_);
}

void ProgressMeter::advance(size_t done, size_t models, size_t modelCount) {
    if (!shown_) return;
    const int percent = static_cast<int>(100 * static_cast<double>(done) / static_cast<double>(total_));
    if (percent == lastPercent_) return;
    lastPercent_ = percent;
    std::fprintf(out_, "\rtavi-build: meshes %zu/%zu, triangles %3d%%", models, modelCount, percent);
    std::fflush(out_);
}

} // namespace builder

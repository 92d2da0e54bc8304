// Progress of a long build on stderr: one line rewritten in place, each whole percent once.
#pragma once
#include <cstddef>
#include <cstdio>

namespace builder {

class ProgressMeter {
  public:
    // Silent unless `enabled` and the work is at least `threshold` units.
    ProgressMeter(bool enabled, size_t total, size_t threshold, std::FILE* out = stderr);
    ~ProgressMeter();
    void advance(size_t done, size_t models, size_t modelCount);

  private:
    bool shown_;
    size_t total_;
    int lastPercent_ = -1;
    std::FILE* out_;
};

} // namespace builder

// The image being rendered: per pixel sums of radiance and, when an output shows them, of the
// auxiliary layers, for the pixels of the render region only, so a small region of a large
// image costs little memory.
// Each pixel is written by one thread at a time; reads must not overlap a pass that writes.
#pragma once
#include "engines/preview/vec3.h"

#include <cstdint>
#include <vector>

namespace preview {

struct PixelRect {
    int32_t x = 0, y = 0, width = 0, height = 0;

    bool contains(int32_t px, int32_t py) const {
        return px >= x && py >= y && int64_t(px) - x < width && int64_t(py) - y < height;
    }
};

// The region as the settings give it, made usable: a width or height of 0 (or less) spans the
// whole image along that axis, and the result is clipped to the image (possibly empty).
PixelRect clipRegion(int32_t imageWidth, int32_t imageHeight, PixelRect requested);

class Film {
  public:
    // `region` goes through clipRegion. Without `layers` the film keeps radiance alone: the
    // albedo, normal and depth read as zero.
    Film(int32_t imageWidth, int32_t imageHeight, PixelRect region, bool layers);

    int32_t imageWidth() const { return imageWidth_; }
    int32_t imageHeight() const { return imageHeight_; }
    const PixelRect& region() const { return region_; }

    // Adds one sample to pixel (x, y) in image coordinates; samples outside the region are
    // ignored. A layer whose value is not finite takes the sample as zero (black for radiance)
    // so that one bad path never poisons the pixel's mean.
    void add(int32_t x, int32_t y, const Color& radiance, const Color& albedo, const Vec3& normal,
             float depth);
    // Completed passes, for the caller's bookkeeping; the means below count each pixel's own
    // samples, so they stay right whatever this says.
    void setPasses(int32_t passes) { passes_ = passes; }
    int32_t passes() const { return passes_; }

    // Mean values over the samples of a pixel; zero for a pixel without samples or outside the
    // region.
    Color radiance(int32_t x, int32_t y) const;
    Color albedo(int32_t x, int32_t y) const;
    Vec3 normal(int32_t x, int32_t y) const; // the mean, not renormalised
    float depth(int32_t x, int32_t y) const; // distance to the first hit; 0 where nothing was hit

  private:
    size_t index(int32_t x, int32_t y) const;
    float inverseCount(size_t i) const;
    int32_t imageWidth_, imageHeight_;
    PixelRect region_;
    int32_t passes_ = 0;
    bool layers_;
    std::vector<Color> radiance_, albedo_, normal_;
    std::vector<float> depth_;
    std::vector<uint32_t> samples_;
};

} // namespace preview

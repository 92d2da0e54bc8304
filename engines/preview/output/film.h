// The image being rendered: per pixel sums of radiance and of the auxiliary layers, for the
// pixels of the render region only. Each pixel is written by one thread at a time.
#pragma once
#include "engines/preview/vec3.h"

#include <cstdint>
#include <vector>

namespace preview {

struct PixelRect {
    int32_t x = 0, y = 0, width = 0, height = 0;
};

class Film {
  public:
    Film(int32_t imageWidth, int32_t imageHeight, PixelRect region);

    int32_t imageWidth() const { return imageWidth_; }
    int32_t imageHeight() const { return imageHeight_; }
    const PixelRect& region() const { return region_; }

    // Adds one sample to pixel (x, y) in image coordinates, which must lie in the region.
    // Non-finite radiance is dropped (counted as black).
    void add(int32_t x, int32_t y, const Color& radiance, const Color& albedo, const Vec3& normal, float depth);
    // Completed passes: every region pixel holds this many samples.
    void setPasses(int32_t passes) { passes_ = passes; }
    int32_t passes() const { return passes_; }

    // Mean values of a pixel of the region (zero before the first pass).
    Color radiance(int32_t x, int32_t y) const;
    Color albedo(int32_t x, int32_t y) const;
    Vec3 normal(int32_t x, int32_t y) const;
    float depth(int32_t x, int32_t y) const; // distance to the first hit; 0 where nothing was hit

  private:
    size_t index(int32_t x, int32_t y) const;
    int32_t imageWidth_, imageHeight_;
    PixelRect region_;
    int32_t passes_ = 0;
    std::vector<Color> radiance_, albedo_, normal_;
    std::vector<float> depth_;
};

} // namespace preview

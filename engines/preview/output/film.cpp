#include "engines/preview/output/film.h"

#include <algorithm>

namespace preview {

namespace {

// Clips one axis: a non-positive size spans the whole extent.
void clipAxis(int32_t extent, int32_t& start, int32_t& size) {
    if (size <= 0) {
        start = 0;
        size = extent;
    }
    int64_t begin = std::clamp<int64_t>(start, 0, extent);
    int64_t end = std::clamp<int64_t>(int64_t(start) + size, 0, extent);
    start = int32_t(begin);
    size = int32_t(std::max<int64_t>(end - begin, 0));
}

Vec3 finiteOrZero(const Vec3& v) {
    return isFinite(v) ? v : Vec3();
}

} // namespace

PixelRect clipRegion(int32_t imageWidth, int32_t imageHeight, PixelRect requested) {
    clipAxis(std::max(imageWidth, 0), requested.x, requested.width);
    clipAxis(std::max(imageHeight, 0), requested.y, requested.height);
    return requested;
}

Film::Film(int32_t imageWidth, int32_t imageHeight, PixelRect region, bool layers)
    : imageWidth_(std::max(imageWidth, 0)), imageHeight_(std::max(imageHeight, 0)),
      region_(clipRegion(imageWidth, imageHeight, region)), layers_(layers) {
    size_t pixels = size_t(region_.width) * size_t(region_.height);
    radiance_.resize(pixels);
    samples_.resize(pixels);
    if (!layers_) return;
    albedo_.resize(pixels);
    normal_.resize(pixels);
    depth_.resize(pixels);
}

size_t Film::index(int32_t x, int32_t y) const {
    return size_t(y - region_.y) * size_t(region_.width) + size_t(x - region_.x);
}

float Film::inverseCount(size_t i) const {
    return samples_[i] > 0 ? 1.0f / float(samples_[i]) : 0.0f;
}

void Film::add(int32_t x, int32_t y, const Color& radiance, const Color& albedo, const Vec3& normal,
               float depth) {
    if (!region_.contains(x, y)) return;
    size_t i = index(x, y);
    radiance_[i] += finiteOrZero(radiance);
    ++samples_[i];
    if (!layers_) return;
    albedo_[i] += finiteOrZero(albedo);
    normal_[i] += finiteOrZero(normal);
    depth_[i] += std::isfinite(depth) ? depth : 0.0f;
}

Color Film::radiance(int32_t x, int32_t y) const {
    if (!region_.contains(x, y)) return {};
    size_t i = index(x, y);
    return radiance_[i] * inverseCount(i);
}

Color Film::albedo(int32_t x, int32_t y) const {
    if (!layers_ || !region_.contains(x, y)) return {};
    size_t i = index(x, y);
    return albedo_[i] * inverseCount(i);
}

Vec3 Film::normal(int32_t x, int32_t y) const {
    if (!layers_ || !region_.contains(x, y)) return {};
    size_t i = index(x, y);
    return normal_[i] * inverseCount(i);
}

float Film::depth(int32_t x, int32_t y) const {
    if (!layers_ || !region_.contains(x, y)) return 0.0f;
    size_t i = index(x, y);
    return depth_[i] * inverseCount(i);
}

} // namespace preview

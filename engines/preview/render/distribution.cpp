#include "engines/preview/render/distribution.h"

#include <algorithm>
#include <cmath>

namespace preview {

Distribution1D::Distribution1D(const std::vector<float>& weights) : weights_(weights), cdf_(weights.size() + 1) {
    for (float& w : weights_)
        if (!(w > 0) || !std::isfinite(w)) w = 0;
    double sum = 0;
    for (float w : weights_) sum += w;
    total_ = static_cast<float>(sum);
    if (!(sum > 0)) {
        std::fill(weights_.begin(), weights_.end(), 1.0f);
        sum = static_cast<double>(weights_.size());
    }
    double running = 0;
    for (size_t i = 0; i < weights_.size(); ++i) {
        cdf_[i] = static_cast<float>(running / sum);
        running += weights_[i];
    }
    cdf_.back() = 1;
    for (float& w : weights_) w = static_cast<float>(w / sum);
}

size_t Distribution1D::sample(float u, float* probability, float* remapped) const {
    // The last cell whose start is at or below u, skipping cells of zero weight.
    size_t index = static_cast<size_t>(std::upper_bound(cdf_.begin(), cdf_.end() - 1, u) - cdf_.begin());
    index = index > 0 ? index - 1 : 0;
    while (index + 1 < weights_.size() && weights_[index] <= 0) ++index;
    *probability = weights_[index];
    if (remapped) {
        const float width = cdf_[index + 1] - cdf_[index];
        *remapped = width > 0 ? std::min((u - cdf_[index]) / width, 0.99999994f) : 0.5f;
    }
    return index;
}

float Distribution1D::probability(size_t index) const {
    return index < weights_.size() ? weights_[index] : 0;
}

Distribution2D::Distribution2D(const std::vector<float>& weights, size_t width, size_t height)
    : width_(width), height_(height) {
    std::vector<float> rowSums(height);
    rows_.reserve(height);
    for (size_t y = 0; y < height; ++y) {
        std::vector<float> row(weights.begin() + y * width, weights.begin() + (y + 1) * width);
        rows_.emplace_back(row);
        rowSums[y] = rows_.back().total();
    }
    marginal_ = Distribution1D(rowSums);
}

void Distribution2D::sample(float u0, float u1, float* u, float* v, float* density) const {
    float rowProbability, columnProbability, inRow, inColumn;
    const size_t row = marginal_.sample(u1, &rowProbability, &inRow);
    const size_t column = rows_[row].sample(u0, &columnProbability, &inColumn);
    *u = (column + inColumn) / width_;
    *v = (row + inRow) / height_;
    *density = rowProbability * columnProbability * width_ * height_;
}

float Distribution2D::density(float u, float v) const {
    if (rows_.empty()) return 0;
    const size_t column = std::min(static_cast<size_t>(std::max(u, 0.0f) * width_), width_ - 1);
    const size_t row = std::min(static_cast<size_t>(std::max(v, 0.0f) * height_), height_ - 1);
    return marginal_.probability(row) * rows_[row].probability(column) * width_ * height_;
}

} // namespace preview

// Sampling in proportion to tabulated weights: one dimension (choosing a light by power) and
// two (choosing a direction of an environment image by luminance).
#pragma once
#include <cstddef>
#include <vector>

namespace preview {

class Distribution1D {
  public:
    Distribution1D() = default;
    // Negative and non-finite weights count as 0; all zero gives a uniform choice.
    explicit Distribution1D(const std::vector<float>& weights);

    size_t size() const { return weights_.size(); }
    bool empty() const { return weights_.empty(); }
    // An index for `u` in [0,1), its probability, and `u` rescaled within the chosen cell.
    size_t sample(float u, float* probability, float* remapped = nullptr) const;
    float probability(size_t index) const;
    float total() const { return total_; }

  private:
    std::vector<float> weights_;
    std::vector<float> cdf_; // size()+1 entries, from 0 to 1
    float total_ = 0;
};

// A piecewise-constant density over [0,1)^2, rows by v.
class Distribution2D {
  public:
    Distribution2D() = default;
    Distribution2D(const std::vector<float>& weights, size_t width, size_t height);

    bool empty() const { return rows_.empty(); }
    // A point of [0,1)^2 and its density with respect to area on the unit square.
    void sample(float u0, float u1, float* u, float* v, float* density) const;
    float density(float u, float v) const;

  private:
    size_t width_ = 0, height_ = 0;
    std::vector<Distribution1D> rows_;
    Distribution1D marginal_;
};

} // namespace preview

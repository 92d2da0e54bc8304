#include "engines/preview/render/distribution.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace preview {
namespace {

TEST(Distribution1D, ChoosesInProportionToTheWeights) {
    const std::vector<std::vector<float>> cases = {{1, 3}, {0, 2, 0, 2}, {5}, {1, NAN, -2, 1}, {0, 0, 0}};
    for (const std::vector<float>& weights : cases) {
        const Distribution1D distribution(weights);
        std::vector<int> counts(weights.size());
        const int draws = 40000;
        for (int i = 0; i < draws; ++i) {
            float probability;
            const size_t index = distribution.sample((i + 0.5f) / draws, &probability);
            ASSERT_LT(index, weights.size());
            EXPECT_FLOAT_EQ(probability, distribution.probability(index));
            ++counts[index];
        }
        float sum = 0;
        for (float w : weights) sum += std::isfinite(w) && w > 0 ? w : 0;
        for (size_t i = 0; i < weights.size(); ++i) {
            const float w = std::isfinite(weights[i]) && weights[i] > 0 ? weights[i] : 0;
            const float expected = sum > 0 ? w / sum : 1.0f / weights.size();
            EXPECT_NEAR(counts[i] / float(draws), expected, 1e-3) << "cell " << i;
            EXPECT_NEAR(distribution.probability(i), expected, 1e-6);
        }
    }
}

TEST(Distribution1D, RemapsTheNumberWithinTheChosenCell) {
    const Distribution1D distribution({1, 1});
    float probability, remapped;
    EXPECT_EQ(distribution.sample(0.75f, &probability, &remapped), 1u);
    EXPECT_NEAR(remapped, 0.5f, 1e-6);
}

TEST(Distribution2D, DensityIntegratesToOneAndMatchesTheSamples) {
    const size_t width = 4, height = 3;
    std::vector<float> weights(width * height);
    for (size_t i = 0; i < weights.size(); ++i) weights[i] = float(i % 5);
    const Distribution2D distribution(weights, width, height);
    double integral = 0;
    for (size_t y = 0; y < height; ++y)
        for (size_t x = 0; x < width; ++x)
            integral += distribution.density((x + 0.5f) / width, (y + 0.5f) / height) / (width * height);
    EXPECT_NEAR(integral, 1.0, 1e-5);
    for (int i = 0; i < 100; ++i) {
        float u, v, density;
        distribution.sample((i * 0.37f) - std::floor(i * 0.37f), (i + 0.5f) / 100, &u, &v, &density);
        EXPECT_GT(density, 0);
        EXPECT_NEAR(density, distribution.density(u, v), 1e-4f * density);
    }
}

} // namespace
} // namespace preview

// Evaluation of compiled texture maps at a surface hit.
#pragma once
#include "engines/preview/shading.h"
#include "engines/preview/texmaps/color_ops.h"
#include "engines/preview/texmaps/texmap_node.h"
#include "engines/preview/texmaps/texture_store.h"

#include <vector>

namespace preview {

// How deep maps may nest in one evaluation; deeper inputs give their constants. References are
// made acyclic when the set is finished, so this only bounds very long chains.
constexpr int kMaxTexMapDepth = 32;

class TexMapEvaluator {
  public:
    TexMapEvaluator(const std::vector<TexMapNode>& nodes, const TextureStore& textures)
        : nodes_(nodes), textures_(textures) {}

    // `raw`: values as data (normal maps), so sRGB-encoded images are not linearised.
    Color color(int32_t node, const ShadingContext& at, Color fallback, bool raw = false) const;
    // A unit tangent-space normal (z up).
    Vec3 normal(int32_t node, const ShadingContext& at) const;

  private:
    struct State {
        const ShadingContext& at;
        Color fallback;
        bool raw;
        int depth;
    };
    Color evaluate(int32_t node, const State& state) const;
    Color input(const MapInput& in, const State& state) const;
    Color input(const MapInput& in, const ShadingContext& at, const State& state) const;
    float scalarInput(const MapInput& in, const State& state) const { return average(input(in, state)); }
    Color body(const TexMapNode& node, const State& state) const;
    Vec3 coordinates(const TexMapNode& node, const ShadingContext& at) const;
    Color image(const TexMapNode& node, const ImageMap& map, const State& state) const;
    Color noise(const TexMapNode& node, const NoiseMap& map, const State& state) const;
    Color gradient(const TexMapNode& node, const GradientMap& map, const State& state) const;
    Color uvwSet(const UvwSetMap& map, const State& state) const;
    Vec3 sectionNormal(const NormalSection& section, const ShadingContext& at) const;

    const std::vector<TexMapNode>& nodes_;
    const TextureStore& textures_;
};

} // namespace preview

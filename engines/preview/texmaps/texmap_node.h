// A texture map as the engine keeps it: what its record says, in a form that is quick to
// evaluate. Made once per record (texmap_compile.cpp), read per hit (texmap_eval.cpp).
#pragma once
#include "documents/texmap_blocks.h"
#include "engines/preview/vec3.h"

#include <array>
#include <cstdint>
#include <variant>
#include <vector>

namespace preview {

// A colour that may come from another map: `mapId` when set, else `constant`. `node` is the
// map's place in the set once references are resolved; -1 means the constant stands.
struct MapInput {
    int32_t mapId = -1;
    int32_t node = -1;
    Color constant;
};

// The coordinate block: where a map looks in its own space.
struct Mapping {
    float matrix[3][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}};
    int32_t channel = 0;
    int32_t source = 0; // 0 a UV channel, 1 and 2 the hit's position
    std::array<bool, 3> tile{true, true, true};
    std::array<bool, 3> mirror{false, false, false};
    Color outside;
};

// The output block, applied to a map's result.
struct OutputShaping {
    float rgbMul = 1, rgbAdd = 0;
    Color luminanceWeights;
    bool toLuminance = false, clamp0 = false, clamp1 = false;
    // Per channel, the curve that the channel's value goes through; count 0 for none.
    std::array<std::array<SplineSegment, 8>, 3> curves{};
    std::array<uint32_t, 3> curveCounts{};
};

struct ImageMap {
    int32_t texture = -1;
};

struct ConstantMap {
    enum class Kind { Color, Uvw, Normal } kind = Kind::Color;
    Color color;
    float intensity = 1;
    MapInput intensityMap;
    int32_t uvChannel = 0;
};

struct BlendMap {
    MapInput a, b, weight; // weight: constant = WeightBlend
    bool curve = false;
    float curveLow = 0, curveHigh = 1;
};

struct MathMap {
    MapInput a, b;
    float weightA = 1, weightB = 1;
    bool invertA = false, invertB = false, clamp = false;
    int32_t operation = 0;
};

struct MathBlendInput {
    MapInput map;
    float weight = 1, offset = 0;
    bool invert = false, srgb = false;
};

struct MathBlendMap {
    MathBlendInput a, b, mask;
    bool clamp = false, linearize = false;
    int32_t operation = 0;
};

struct MultiplyMap {
    MapInput a, b;
};

struct TintMap {
    MapInput source, red, green, blue;
};

struct NoiseMap {
    MapInput color0, color1;
    int32_t type = 1; // 1 FRACTAL, 2 TURBULENCE
    int32_t dimensionsIn = 3, dimensionsOut = 1;
    int32_t octaves = 1, seed = 0;
    bool range01 = false;
    float phase = 0;
    float thresholdLow = 0, thresholdHigh = 0;
    Vec3 size{1, 1, 1};
    float amplitude = 1, gain = 0.5f, lacunarity = 2;
};

struct GradientMap {
    MapInput color1, color2, color3;
    float center = 0.5f;
    int32_t shape = 0; // GradientType
    std::array<SplineSegment, 8> curve{};
    uint32_t curveCount = 0;
};

// OUTPUT and CACHE: another map, shaped by the node's output block (identity for CACHE).
struct PassMap {
    MapInput map;
};

struct NormalSection {
    MapInput map, height;
    float heightWeight = 0;
    bool normalMap = false, flipX = false, flipY = false, swapXY = false;
};

struct NormalMapMap {
    NormalSection primary, secondary;
};

struct UvwSetMap {
    MapInput map, coordinates;
    int32_t channel = 0;
};

using MapBody = std::variant<std::monostate, ImageMap, ConstantMap, BlendMap, MathMap, MathBlendMap, MultiplyMap,
                             TintMap, NoiseMap, GradientMap, PassMap, NormalMapMap, UvwSetMap>;

struct TexMapNode {
    int32_t id = -1;
    int32_t type = 0;
    bool hasMapping = false;
    Mapping mapping;
    bool hasOutput = false;
    OutputShaping output;
    MapBody body; // monostate: a type this engine does not evaluate
};

// Every MapInput of a node, for the reference pass of `finish`.
std::vector<MapInput*> inputsOf(TexMapNode& node);

} // namespace preview

#include "engines/preview/texmaps/texmap_eval.h"

#include "engines/preview/record_view.h"
#include "engines/preview/texmaps/gradient_noise.h"

#include <cmath>

namespace preview {

namespace {

// ---- Coordinates and output --------------------------------------------------------------------

Vec3 transform(const float (&m)[3][4], const Vec3& p) {
    return {m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3],
            m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3],
            m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3]};
}

TextureWrap wrapOf(const Mapping& mapping, int axis) {
    if (!mapping.tile[axis]) return TextureWrap::Clamp;
    return mapping.mirror[axis] ? TextureWrap::Mirror : TextureWrap::Periodic;
}

Color shape(const OutputShaping& out, Color c) {
    c = c * out.rgbMul + Color(out.rgbAdd);
    if (out.toLuminance) c = Color(dot(c, out.luminanceWeights));
    float* channels[3] = {&c.x, &c.y, &c.z};
    for (int i = 0; i < 3; ++i) {
        if (out.curveCounts[i]) *channels[i] = evaluateSpline(out.curves[i].data(), out.curveCounts[i], *channels[i], *channels[i]);
    }
    if (out.clamp0) c = vmax(c, Color(0));
    if (out.clamp1) c = vmin(c, Color(1));
    return c;
}

float smoothStep(float low, float high, float t) {
    if (!(high > low)) return t < low ? 0.0f : 1.0f;
    const float x = std::clamp((t - low) / (high - low), 0.0f, 1.0f);
    return x * x * (3 - 2 * x);
}

// The position along a gradient: the "2" shapes lie in the (u, v) square around its centre, the
// "3" shapes in the mapped space around its origin.
float gradientPosition(int32_t shape, const Vec3& p) {
    switch (shape) {
    case 0: return p.x;                                                  // LINEAR2
    case 1: return 1 - std::abs(2 * p.x - 1);                            // TRIANGLE2
    case 2: return 2 * std::hypot(p.x - 0.5f, p.y - 0.5f);               // RADIAL2
    case 3: return length(p);                                            // RADIAL3
    case 4: return p.y;                                                  // LINEAR3
    case 5: return std::abs(p.y);                                        // TRIANGLE3
    case 6: return std::hypot(p.x, p.z);                                 // CYLINDER3
    default: return p.x;
    }
}

ShadingContext withUv(const ShadingContext& at, float u, float v) {
    ShadingContext moved = at;
    for (auto& channel : moved.uv) {
        channel[0] = u;
        channel[1] = v;
    }
    return moved;
}

} // namespace

// ---- Graph -------------------------------------------------------------------------------------

Color TexMapEvaluator::color(int32_t node, const ShadingContext& at, Color fallback, bool raw) const {
    return evaluate(node, State{at, fallback, raw, 0});
}

Color TexMapEvaluator::evaluate(int32_t index, const State& state) const {
    if (index < 0 || static_cast<size_t>(index) >= nodes_.size()) return state.fallback;
    const TexMapNode& node = nodes_[static_cast<size_t>(index)];
    if (std::holds_alternative<std::monostate>(node.body)) return state.fallback;
    const Color c = body(node, state);
    return node.hasOutput ? shape(node.output, c) : c;
}

Color TexMapEvaluator::input(const MapInput& in, const State& state) const { return input(in, state.at, state); }

Color TexMapEvaluator::input(const MapInput& in, const ShadingContext& at, const State& state) const {
    if (in.node < 0 || state.depth + 1 >= kMaxTexMapDepth) return in.constant;
    return evaluate(in.node, State{at, in.constant, state.raw, state.depth + 1});
}

Vec3 TexMapEvaluator::coordinates(const TexMapNode& node, const ShadingContext& at) const {
    const Mapping& mapping = node.mapping;
    if (node.hasMapping && mapping.source != 0) return transform(mapping.matrix, at.position);
    const float* uv = at.uv[node.hasMapping ? mapping.channel : 0];
    const Vec3 p(uv[0], uv[1], 0);
    return node.hasMapping ? transform(mapping.matrix, p) : p;
}

Color TexMapEvaluator::body(const TexMapNode& node, const State& state) const {
    if (const auto* m = std::get_if<ImageMap>(&node.body)) return image(node, *m, state);
    if (const auto* m = std::get_if<ConstantMap>(&node.body)) {
        switch (m->kind) {
        case ConstantMap::Kind::Uvw: {
            ShadingContext channel = state.at;
            for (auto& uv : channel.uv) {
                uv[0] = state.at.uv[m->uvChannel][0];
                uv[1] = state.at.uv[m->uvChannel][1];
            }
            return coordinates(node, channel);
        }
        case ConstantMap::Kind::Normal: return state.at.shadingNormal;
        case ConstantMap::Kind::Color: return m->color * m->intensity * scalarInput(m->intensityMap, state);
        }
    }
    if (const auto* m = std::get_if<BlendMap>(&node.body)) {
        float w = scalarInput(m->weight, state);
        if (m->curve) w = smoothStep(m->curveLow, m->curveHigh, w);
        return lerp(input(m->a, state), input(m->b, state), w);
    }
    if (const auto* m = std::get_if<MathMap>(&node.body)) {
        Color a = input(m->a, state) * m->weightA;
        Color b = input(m->b, state) * m->weightB;
        if (m->invertA) a = Color(1) - a;
        if (m->invertB) b = Color(1) - b;
        const Color r = mathColors(m->operation, a, b);
        return m->clamp ? clamp01(r) : r;
    }
    if (const auto* m = std::get_if<MathBlendMap>(&node.body)) {
        auto term = [&](const MathBlendInput& in) {
            Color c = input(in.map, state);
            if (in.srgb) c = srgbToLinear(c);
            c = c * in.weight + Color(in.offset);
            return in.invert ? Color(1) - c : c;
        };
        const Color a = term(m->a), b = term(m->b);
        Color r = lerp(a, blendColors(m->operation, a, b), average(term(m->mask)));
        if (m->linearize) r = srgbToLinear(r);
        return m->clamp ? clamp01(r) : r;
    }
    if (const auto* m = std::get_if<MultiplyMap>(&node.body)) return input(m->a, state) * input(m->b, state);
    if (const auto* m = std::get_if<TintMap>(&node.body)) {
        const Color s = input(m->source, state);
        return input(m->red, state) * s.x + input(m->green, state) * s.y + input(m->blue, state) * s.z;
    }
    if (const auto* m = std::get_if<NoiseMap>(&node.body)) return noise(node, *m, state);
    if (const auto* m = std::get_if<GradientMap>(&node.body)) return gradient(node, *m, state);
    if (const auto* m = std::get_if<PassMap>(&node.body)) {
        MapInput in = m->map;
        in.constant = state.fallback;
        return input(in, state);
    }
    if (std::holds_alternative<NormalMapMap>(node.body)) {
        const Vec3 n = normal(static_cast<int32_t>(&node - nodes_.data()), state.at);
        return n * 0.5f + Color(0.5f);
    }
    if (const auto* m = std::get_if<UvwSetMap>(&node.body)) return uvwSet(*m, state);
    return state.fallback;
}

// ---- Leaves ------------------------------------------------------------------------------------

Color TexMapEvaluator::image(const TexMapNode& node, const ImageMap& map, const State& state) const {
    const Vec3 p = coordinates(node, state.at);
    TextureQuery query;
    query.raw = state.raw;
    if (node.hasMapping) {
        for (int axis = 0; axis < 2; ++axis) {
            if (!node.mapping.tile[axis] && (p[axis] < 0 || p[axis] > 1)) return node.mapping.outside;
        }
        query.swrap = wrapOf(node.mapping, 0);
        query.twrap = wrapOf(node.mapping, 1);
    } else {
        query.swrap = query.twrap = TextureWrap::Periodic;
    }
    // v runs up the image and t down it: the first row is the top.
    query.s = p.x;
    query.t = 1 - p.y;
    // The ray's footprint across the surface, in texture units along each tangent.
    const float lu = length(state.at.dpdu), lv = length(state.at.dpdv);
    const float du = lu > 0 ? state.at.footprint / lu : 0;
    const float dv = lv > 0 ? state.at.footprint / lv : 0;
    const float(&m)[3][4] = node.mapping.matrix;
    query.dsdx = m[0][0] * du;
    query.dtdx = -m[1][0] * du;
    query.dsdy = m[0][1] * dv;
    query.dtdy = -m[1][1] * dv;
    return textures_.lookup(map.texture, query, state.fallback);
}

Color TexMapEvaluator::noise(const TexMapNode& node, const NoiseMap& map, const State& state) const {
    Vec3 p = coordinates(node, state.at);
    p = {p.x / map.size.x, p.y / map.size.y, map.dimensionsIn == 2 ? 0 : p.z / map.size.z};
    p.z += map.phase;
    const Octaves octaves{map.octaves, map.gain, map.lacunarity, map.type == 2};
    auto level = [&](uint32_t seed) {
        const float n = fractalNoise(p, seed, octaves) * map.amplitude;
        const float t = octaves.turbulence ? n : 0.5f + 0.5f * n;
        const float shaped = map.thresholdHigh > map.thresholdLow ? smoothStep(map.thresholdLow, map.thresholdHigh, t) : t;
        return std::clamp(shaped, 0.0f, 1.0f);
    };
    const uint32_t seed = static_cast<uint32_t>(map.seed);
    const Color a = input(map.color0, state), b = input(map.color1, state);
    if (map.dimensionsOut == 1) return lerp(a, b, level(seed));
    const Color t(level(seed), level(seed + 101), level(seed + 202));
    return a + (b - a) * t;
}

Color TexMapEvaluator::gradient(const TexMapNode& node, const GradientMap& map, const State& state) const {
    float t = std::clamp(gradientPosition(map.shape, coordinates(node, state.at)), 0.0f, 1.0f);
    if (map.curveCount) t = std::clamp(evaluateSpline(map.curve.data(), map.curveCount, t, t), 0.0f, 1.0f);
    if (t < map.center) return lerp(input(map.color1, state), input(map.color2, state), t / map.center);
    const float rest = 1 - map.center;
    return lerp(input(map.color2, state), input(map.color3, state), rest > 0 ? (t - map.center) / rest : 1);
}

Color TexMapEvaluator::uvwSet(const UvwSetMap& map, const State& state) const {
    float u = state.at.uv[map.channel][0], v = state.at.uv[map.channel][1];
    if (map.coordinates.node >= 0) {
        const Color c = input(map.coordinates, state);
        u = c.x;
        v = c.y;
    }
    MapInput in = map.map;
    in.constant = state.fallback;
    return input(in, withUv(state.at, u, v), state);
}

// ---- Normals -----------------------------------------------------------------------------------

Vec3 TexMapEvaluator::sectionNormal(const NormalSection& section, const ShadingContext& at) const {
    Vec3 n(0, 0, 1);
    const State state{at, Color(0.5f, 0.5f, 1), true, 1};
    if (section.map.node >= 0) {
        n = input(section.map, state) * 2.0f - Vec3(1);
        if (section.swapXY) std::swap(n.x, n.y);
        if (section.flipX) n.x = -n.x;
        if (section.flipY) n.y = -n.y;
    }
    if (section.height.node >= 0) {
        // The height's slope along u and v, by differences over a small step.
        constexpr float kStep = 1.0f / 1024;
        const float u = at.uv[0][0], v = at.uv[0][1];
        const float h = average(input(section.height, at, state));
        const float hu = average(input(section.height, withUv(at, u + kStep, v), state));
        const float hv = average(input(section.height, withUv(at, u, v + kStep), state));
        const float weight = section.heightWeight != 0 ? section.heightWeight : 1;
        const Vec3 bump(-weight * (hu - h) / kStep, -weight * (hv - h) / kStep, 1);
        // Whiteout blend of the two: slopes add, heights multiply.
        n = Vec3(n.x + bump.x, n.y + bump.y, n.z * bump.z);
    }
    return normalize(n);
}

Vec3 TexMapEvaluator::normal(int32_t index, const ShadingContext& at) const {
    if (index < 0 || static_cast<size_t>(index) >= nodes_.size()) return {0, 0, 1};
    const TexMapNode& node = nodes_[static_cast<size_t>(index)];
    if (const auto* m = std::get_if<NormalMapMap>(&node.body)) {
        const Vec3 a = sectionNormal(m->primary, at), b = sectionNormal(m->secondary, at);
        return normalize(Vec3(a.x + b.x, a.y + b.y, a.z * b.z));
    }
    if (std::holds_alternative<std::monostate>(node.body)) return {0, 0, 1};
    // Any other map is read as a tangent-space normal map.
    const Vec3 n = color(index, at, Color(0.5f, 0.5f, 1), true) * 2.0f - Vec3(1);
    return length(n) > 0 ? normalize(n) : Vec3(0, 0, 1);
}

} // namespace preview

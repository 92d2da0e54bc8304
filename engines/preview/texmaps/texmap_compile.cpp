#include "engines/preview/texmaps/texmap_compile.h"

#include "documents/texmap_document.h"
#include "engines/preview/record_view.h"
#include "engines/preview/texmaps/color_ops.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace preview {

namespace {

// ---- Shared blocks -----------------------------------------------------------------------------

bool allZero(const uint8_t* bytes, size_t count) {
    return std::all_of(bytes, bytes + count, [](uint8_t b) { return b == 0; });
}

// A block that was never filled (all zero) means no mapping rather than a collapsed one.
bool readMapping(const uint8_t* bytes, Mapping* mapping) {
    if (!bytes || allZero(bytes, sizeof(CoordGen))) return false;
    CoordGen block;
    std::memcpy(&block, bytes, sizeof block);
    std::memcpy(mapping->matrix, block.CoordinateMatrix.m, sizeof mapping->matrix);
    mapping->channel = std::clamp(block.CoordinateChannel, 0, kUvChannels - 1);
    mapping->source = block.CoordGenType;
    for (int axis = 0; axis < 3; ++axis) {
        mapping->tile[axis] = block.CoordinateEnTile[axis] != 0;
        mapping->mirror[axis] = block.CoordinateEnMirror[axis] != 0;
    }
    mapping->outside = {block.OutsideColor.R, block.OutsideColor.G, block.OutsideColor.B};
    return true;
}

// Likewise an unfilled output block passes the colour through unchanged.
bool readOutput(const uint8_t* bytes, OutputShaping* output) {
    if (!bytes || allZero(bytes, sizeof(ColorOutput))) return false;
    ColorOutput block;
    std::memcpy(&block, bytes, sizeof block);
    output->rgbMul = block.RgbMul;
    output->rgbAdd = block.RgbAdd;
    output->luminanceWeights = {block.LumR, block.LumG, block.LumB};
    output->toLuminance = block.RGB2Lum != 0;
    output->clamp0 = block.Clamp0 != 0;
    output->clamp1 = block.Clamp1 != 0;
    const SplineSegment* curves[3] = {block.SplineR, block.SplineG, block.SplineB};
    for (int c = 0; c < 3; ++c) {
        std::copy(curves[c], curves[c] + 8, output->curves[c].begin());
        // Segment 0 counts as present whatever it holds; a curve is in use when one is switched on.
        const bool used = std::any_of(curves[c], curves[c] + 8, [](const SplineSegment& s) { return s.ts <= s.te; });
        const bool zero = allZero(reinterpret_cast<const uint8_t*>(curves[c]), 8 * sizeof(SplineSegment));
        output->curveCounts[c] = used && !zero ? 8 : 0;
    }
    return true;
}

const uint8_t* recordBytes(const TexMapRecord& record, size_t offset) {
    return reinterpret_cast<const uint8_t*>(&record) + offset;
}

// ---- Inputs ------------------------------------------------------------------------------------

MapInput input(const RecordView& view, const char* mapKey, const char* colorKey, Color fallback = Color(0)) {
    MapInput in;
    in.mapId = mapKey ? view.texMap(mapKey) : -1;
    in.constant = colorKey ? view.color(colorKey, fallback) : fallback;
    return in;
}

MapInput scalarInput(const RecordView& view, const char* mapKey, const char* valueKey, float fallback) {
    MapInput in;
    in.mapId = mapKey ? view.texMap(mapKey) : -1;
    in.constant = Color(view.real(valueKey, fallback));
    return in;
}

// A zero stands for "not given" in the few values where zero would make no map at all: records
// made from documents that leave keys out arrive zeroed.
float positiveOr(float value, float fallback) { return value > 0 ? value : fallback; }
float multiplier(const RecordView& view, const char* key) {
    const float value = view.real(key, 1);
    return value == 0 ? 1 : value;
}

// ---- Types -------------------------------------------------------------------------------------

ImageMap image(const RecordView& view) { return {view.texture("Texture")}; }

ConstantMap constant(const RecordView& view, const WarningSink& warn) {
    ConstantMap map;
    const int32_t kind = view.integer("Type");
    switch (kind) {
    case 0: map.kind = ConstantMap::Kind::Color; break;
    case 2: map.kind = ConstantMap::Kind::Uvw; break;
    case 7: map.kind = ConstantMap::Kind::Normal; break;
    default: warn("unsupported COLOR map type " + std::to_string(kind)); break;
    }
    map.color = view.color("Color");
    if (view.flag("sRGB")) map.color = srgbToLinear(map.color);
    map.intensity = multiplier(view, "Intensity");
    map.intensityMap = input(view, "MapIntensity", nullptr, Color(1));
    map.uvChannel = std::clamp(view.integer("IndexUVW"), 0, kUvChannels - 1);
    return map;
}

BlendMap blend(const RecordView& view) {
    BlendMap map;
    map.a = input(view, "Map1", "Color1");
    map.b = input(view, "Map2", "Color2");
    map.weight = scalarInput(view, "MapBlend", "WeightBlend", 0);
    map.curve = view.flag("BlendCurve");
    map.curveLow = view.real("CurveLow");
    map.curveHigh = view.real("CurveHigh", 1);
    return map;
}

MathMap math(const RecordView& view) {
    MathMap map;
    map.a = input(view, "Map1", "Color1");
    map.b = input(view, "Map2", "Color2");
    map.weightA = multiplier(view, "Weight1");
    map.weightB = multiplier(view, "Weight2");
    map.invertA = view.flag("Invert1");
    map.invertB = view.flag("Invert2");
    map.clamp = view.flag("ClampResult");
    map.operation = view.integer("Operation");
    return map;
}

MathBlendInput mathBlendInput(const RecordView& view, const std::string& n, const char* colorKey, Color fallback) {
    MathBlendInput in;
    in.map = input(view, ("Map" + n).c_str(), colorKey, fallback);
    in.weight = multiplier(view, ("Weight" + n).c_str());
    in.offset = view.real(("Offset" + n).c_str());
    in.invert = view.flag(("Invert" + n).c_str());
    in.srgb = view.flag(("sRGB" + n).c_str());
    return in;
}

MathBlendMap mathBlend(const RecordView& view) {
    MathBlendMap map;
    map.a = mathBlendInput(view, "1", "Color1", Color(0));
    map.b = mathBlendInput(view, "2", "Color2", Color(0));
    map.mask = mathBlendInput(view, "M", nullptr, Color(1));
    map.clamp = view.flag("ClampResult");
    map.linearize = view.flag("Linearize");
    map.operation = view.integer("Operation");
    return map;
}

MultiplyMap multiply(const RecordView& view) {
    return {input(view, "Map1", "Color1"), input(view, "Map2", "Color2")};
}

TintMap tint(const RecordView& view) {
    return {input(view, "MapSource", nullptr, Color(1)), input(view, "MapR", "ColorR"), input(view, "MapG", "ColorG"),
            input(view, "MapB", "ColorB")};
}

NoiseMap noise(const RecordView& view, const WarningSink& warn) {
    NoiseMap map;
    map.color0 = input(view, "Map0", "Color0");
    map.color1 = input(view, "Map1", "Color1");
    map.type = view.integer("NoiseType", 1);
    if (map.type != 1 && map.type != 2) {
        warn("unsupported NOISE type " + std::to_string(map.type));
        map.type = 1;
    }
    map.dimensionsIn = view.integer("DimensionsIn") == 2 ? 2 : 3;
    map.dimensionsOut = view.integer("DimensionsOut") == 3 ? 3 : 1;
    map.octaves = std::clamp(view.integer("Levels"), 1, 16);
    map.seed = view.integer("Seed");
    map.range01 = view.flag("Range01");
    map.phase = view.real("Phase");
    map.thresholdLow = view.real("ThresholdLow");
    map.thresholdHigh = view.real("ThresholdHigh");
    const Color size = view.color("Size");
    map.size = {positiveOr(size.x, 1), positiveOr(size.y, 1), positiveOr(size.z, 1)};
    map.amplitude = positiveOr(view.real("Amplitude"), 1);
    map.gain = positiveOr(view.real("Gain"), 0.5f);
    map.lacunarity = positiveOr(view.real("Lacunarity"), 2);
    return map;
}

GradientMap gradient(const RecordView& view) {
    GradientMap map;
    map.color1 = input(view, "Map1", "Color1");
    map.color2 = input(view, "Map2", "Color2");
    map.color3 = input(view, "Map3", "Color3");
    map.center = std::clamp(view.real("CenterPosition", 0.5f), 0.0f, 1.0f);
    map.shape = view.integer("GradientType");
    uint32_t count = 0;
    const SplineSegment* curve = view.spline("Curve", &count);
    if (curve && count == map.curve.size() &&
        !allZero(reinterpret_cast<const uint8_t*>(curve), count * sizeof(SplineSegment))) {
        std::copy(curve, curve + count, map.curve.begin());
        map.curveCount = count;
    }
    return map;
}

NormalSection normalSection(const RecordView& view, const std::string& section) {
    auto key = [&](const char* name) { return section + "/" + name; };
    NormalSection s;
    s.map = input(view, key("Map").c_str(), nullptr, Color(0.5f, 0.5f, 1));
    s.height = input(view, key("MapHeight").c_str(), nullptr, Color(0));
    s.heightWeight = view.real(key("WeightHeight").c_str());
    s.normalMap = view.flag(key("NormalMap").c_str());
    s.flipX = view.flag(key("FlipX").c_str());
    s.flipY = view.flag(key("FlipY").c_str());
    s.swapXY = view.flag(key("SwapXY").c_str());
    return s;
}

UvwSetMap uvwSet(const RecordView& view) {
    UvwSetMap map;
    map.map = input(view, "MapA", nullptr);
    map.coordinates = input(view, "MapB", nullptr);
    map.channel = std::clamp(view.integer("Channel"), 0, kUvChannels - 1);
    return map;
}

std::string typeWord(const TexMapRecord& record, const TypeDescriptor* type) {
    return type && type->word ? type->word : std::to_string(record.type);
}

} // namespace

TexMapNode compileTexMap(const TexMapRecord& record, const WarningSink& warn) {
    const RecordView view = RecordView::texMap(record);
    TexMapNode node;
    node.id = record.id;
    node.type = record.type;
    const TypeDescriptor* type = view.type();
    if (type && type->mapped) {
        node.hasMapping = readMapping(recordBytes(record, kTexMapCoordGenOffset), &node.mapping);
        node.hasOutput = readOutput(recordBytes(record, kTexMapColorOutputOffset), &node.output);
    } else {
        node.hasOutput = readOutput(view.bytes("ColorOutput", kColorOutputBytes), &node.output);
    }
    switch (record.type) {
    case 1:
    case 2: node.body = image(view); break;
    case 3: node.body = blend(view); break;
    case 4: node.body = math(view); break;
    case 6: node.body = mathBlend(view); break;
    case 8: node.body = noise(view, warn); break;
    case 9:
    case 19: node.body = PassMap{input(view, "Map", nullptr)}; break;
    case 10: node.body = multiply(view); break;
    case 11: node.body = tint(view); break;
    case 13: node.body = constant(view, warn); break;
    case 14: node.body = gradient(view); break;
    case 23: node.body = NormalMapMap{normalSection(view, "Primary"), normalSection(view, "Secondary")}; break;
    case 25: node.body = uvwSet(view); break;
    default: warn("unsupported texmap type " + typeWord(record, type)); break;
    }
    return node;
}

namespace {

struct InputCollector {
    std::vector<MapInput*> inputs;
    void operator()(std::monostate) {}
    void operator()(ImageMap&) {}
    void operator()(ConstantMap& m) { inputs.push_back(&m.intensityMap); }
    void operator()(BlendMap& m) { inputs.insert(inputs.end(), {&m.a, &m.b, &m.weight}); }
    void operator()(MathMap& m) { inputs.insert(inputs.end(), {&m.a, &m.b}); }
    void operator()(MathBlendMap& m) { inputs.insert(inputs.end(), {&m.a.map, &m.b.map, &m.mask.map}); }
    void operator()(MultiplyMap& m) { inputs.insert(inputs.end(), {&m.a, &m.b}); }
    void operator()(TintMap& m) { inputs.insert(inputs.end(), {&m.source, &m.red, &m.green, &m.blue}); }
    void operator()(NoiseMap& m) { inputs.insert(inputs.end(), {&m.color0, &m.color1}); }
    void operator()(GradientMap& m) { inputs.insert(inputs.end(), {&m.color1, &m.color2, &m.color3}); }
    void operator()(PassMap& m) { inputs.push_back(&m.map); }
    void operator()(NormalMapMap& m) {
        inputs.insert(inputs.end(), {&m.primary.map, &m.primary.height, &m.secondary.map, &m.secondary.height});
    }
    void operator()(UvwSetMap& m) { inputs.insert(inputs.end(), {&m.map, &m.coordinates}); }
};

} // namespace

std::vector<MapInput*> inputsOf(TexMapNode& node) {
    InputCollector collector;
    std::visit(collector, node.body);
    return collector.inputs;
}

} // namespace preview

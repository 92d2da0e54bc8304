// Maps that combine, generate and route other maps, and the references between them.
#include "texmap_test_support.h"

#include <OpenImageIO/color.h>

#include <cmath>

namespace preview_test {
namespace {

using preview::Vec3;

TexMapRecord colorMap(int32_t id, Color c) {
    TexMapRecord record = texMap(13, id);
    setField(record, "Color", ColorEx{c.x, c.y, c.z, 1, 0, 0, 0, 0});
    return record;
}

template <class F> TexMapRecord made(int32_t type, int32_t id, F fill) {
    TexMapRecord record = texMap(type, id);
    fill(record);
    return record;
}

struct Graph {
    Warnings warnings;
    preview::TexMapSet set;
    explicit Graph(const std::vector<TexMapRecord>& records) {
        for (const TexMapRecord& record : records)
            set.add(record, warnings.sink());
        set.finish(warnings.sink());
    }
};

TEST(TexMapGraph, MapsCombineAsTheirKeysSay) {
    const Color red(1, 0, 0), green(0, 1, 0), blue(0, 0, 1);
    struct Case {
        const char* name;
        std::vector<TexMapRecord> records; // the first is looked up
        float u;
        Color expected;
    };
    const Case cases[] = {
        {"constant", {colorMap(1, {0.2f, 0.4f, 0.6f})}, 0.5f, {0.2f, 0.4f, 0.6f}},
        {"constant in sRGB",
         {made(13, 1, [](TexMapRecord& r) {
             setField(r, "Color", ColorEx{0.5f, 0.5f, 0.5f, 1, 0, 0, 0, 0});
             setField(r, "sRGB", uint8_t(1));
             setField(r, "Intensity", 2.0f);
         })},
         0.5f,
         Color(2 * OIIO::sRGB_to_linear(0.5f))},
        {"blend of two colours",
         {made(3, 1, [&](TexMapRecord& r) {
             setColor(r, "Color1", red);
             setColor(r, "Color2", blue);
             setField(r, "WeightBlend", 0.25f);
         })},
         0.5f,
         {0.75f, 0, 0.25f}},
        {"blend weighted by a map",
         {made(3, 1,
               [&](TexMapRecord& r) {
                   setColor(r, "Color1", red);
                   setColor(r, "Color2", blue);
                   setField(r, "MapBlend", int32_t(2));
               }),
          colorMap(2, Color(0.8f))},
         0.5f,
         {0.2f, 0, 0.8f}},
        {"math Mul", {made(4, 1, [](TexMapRecord& r) {
             setColor(r, "Color1", {0.5f, 1, 2});
             setColor(r, "Color2", {2, 0.5f, 0.25f});
             setField(r, "Operation", int32_t(2));
         })},
         0.5f,
         {1, 0.5f, 0.5f}},
        {"math Sub of an inverted input", {made(4, 1, [](TexMapRecord& r) {
             setColor(r, "Color1", Color(0.25f));
             setColor(r, "Color2", Color(0.5f));
             setField(r, "Invert1", uint8_t(1));
             setField(r, "Operation", int32_t(1));
         })},
         0.5f,
         Color(0.25f)},
        {"math Add, weighted and clamped", {made(4, 1, [](TexMapRecord& r) {
             setColor(r, "Color1", {0.25f, 0.5f, 0.75f});
             setColor(r, "Color2", Color(0.1f));
             setField(r, "Weight1", 2.0f);
             setField(r, "ClampResult", uint8_t(1));
         })},
         0.5f,
         {0.6f, 1, 1}},
        {"math Threshold", {made(4, 1, [](TexMapRecord& r) {
             setColor(r, "Color1", {0.2f, 0.6f, 0.9f});
             setColor(r, "Color2", Color(0.5f));
             setField(r, "Operation", int32_t(32));
         })},
         0.5f,
         {0, 1, 1}},
        {"math blend Screen at half strength", {made(6, 1, [](TexMapRecord& r) {
             setColor(r, "Color1", Color(0.5f));
             setColor(r, "Color2", Color(0.5f));
             setField(r, "WeightM", 0.5f);
             setField(r, "Operation", int32_t(9));
         })},
         0.5f,
         Color(0.625f)},
        {"rgb multiply of a colour and a map",
         {made(10, 1,
               [](TexMapRecord& r) {
                   setColor(r, "Color1", {0.5f, 0.5f, 1});
                   setField(r, "Map2", int32_t(2));
               }),
          colorMap(2, {0.2f, 0.4f, 0.6f})},
         0.5f,
         {0.1f, 0.2f, 0.6f}},
        {"rgb tint sends each channel to a colour",
         {made(11, 1,
               [&](TexMapRecord& r) {
                   setField(r, "MapSource", int32_t(2));
                   setColor(r, "ColorR", red);
                   setColor(r, "ColorG", blue);
                   setColor(r, "ColorB", green);
               }),
          colorMap(2, {1, 0.5f, 0})},
         0.5f,
         {1, 0, 0.5f}},
        {"output block scales, offsets and clamps",
         {made(9, 1,
               [](TexMapRecord& r) {
                   setField(r, "Map", int32_t(2));
                   ColorOutput out{};
                   out.RgbMul = 2;
                   out.RgbAdd = 0.1f;
                   out.Clamp1 = 1;
                   setField(r, "ColorOutput", out);
               }),
          colorMap(2, {0.2f, 0.4f, 0.6f})},
         0.5f,
         {0.5f, 0.9f, 1}},
        {"linear gradient between its first two colours", {made(14, 1, [&](TexMapRecord& r) {
             setColor(r, "Color1", red);
             setColor(r, "Color2", green);
             setColor(r, "Color3", blue);
             setField(r, "CenterPosition", 0.5f);
         })},
         0.25f,
         {0.5f, 0.5f, 0}},
        {"coordinates set by another map",
         {made(25, 1,
               [](TexMapRecord& r) {
                   setField(r, "MapA", int32_t(2));
                   setField(r, "MapB", int32_t(3));
               }),
          made(14, 2,
               [&](TexMapRecord& r) {
                   setColor(r, "Color1", red);
                   setColor(r, "Color2", green);
                   setColor(r, "Color3", blue);
                   setField(r, "CenterPosition", 0.5f);
               }),
          colorMap(3, {0.75f, 0, 0})},
         0.1f,
         {0, 0.5f, 0.5f}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Graph graph(c.records);
        EXPECT_TRUE(graph.warnings.counts.empty()) << graph.warnings.text();
        EXPECT_COLOR_NEAR(graph.set.color(1, at(c.u, 0.5f), Color(-1)), c.expected, 1e-4f);
        EXPECT_NEAR(graph.set.scalar(1, at(c.u, 0.5f), -1), (c.expected.x + c.expected.y + c.expected.z) / 3, 1e-4f);
    }
}

TEST(TexMapGraph, UnsupportedTypesWarnOnceEachAndGiveTheNeutralValue) {
    Graph graph({texMap(15, 1), texMap(15, 2), texMap(27, 3), texMap(5, 4), texMap(16, 5)});
    EXPECT_EQ(graph.warnings.counts, (std::map<std::string, int>{{"unsupported texmap type TRIPLANAR", 2},
                                                                 {"unsupported texmap type SUN", 1},
                                                                 {"unsupported texmap type COLORCORRECTION", 1},
                                                                 {"unsupported texmap type 16", 1}}));
    for (int32_t id : {1, 2, 3, 4, 5, 6, -1})
        EXPECT_COLOR_NEAR(graph.set.color(id, at(0.5f, 0.5f), Color(0.3f)), Color(0.3f), 0) << id;
}

TexMapRecord blendOf(int32_t id, int32_t map1, Color color1) {
    return made(3, id, [&](TexMapRecord& r) {
        setField(r, "Map1", map1);
        setColor(r, "Color1", color1);
    });
}

TEST(TexMapGraph, CyclesAndMissingMapsBecomeTheConstantWithOneWarningKind) {
    Graph graph({
        blendOf(1, 2, {0, 0, 1}), // 1 -> 2 -> 1: the reference that closes the loop is cut
        blendOf(2, 1, {1, 0, 0}),
        blendOf(3, 3, {0, 1, 0}),  // itself
        blendOf(4, 99, {0, 0, 1}), // no such map
    });
    EXPECT_EQ(graph.warnings.counts,
              (std::map<std::string, int>{{"texmap reference to a missing map or a cycle of maps", 1}}));
    const struct {
        int32_t id;
        Color expected;
    } cases[] = {{1, {1, 0, 0}}, {2, {1, 0, 0}}, {3, {0, 1, 0}}, {4, {0, 0, 1}}};
    for (const auto& c : cases)
        EXPECT_COLOR_NEAR(graph.set.color(c.id, at(0.5f, 0.5f), Color(-1)), c.expected, 0) << c.id;
}

TEST(TexMapGraph, LongChainsStopAtTheDepthLimit) {
    std::vector<TexMapRecord> chain;
    constexpr int32_t kLength = 40;
    for (int32_t id = 0; id < kLength; ++id)
        chain.push_back(blendOf(id, id + 1, {1, 0, 1}));
    chain.push_back(colorMap(kLength, {0, 1, 0}));
    Graph graph(chain);
    EXPECT_TRUE(graph.warnings.counts.empty()) << graph.warnings.text();
    EXPECT_COLOR_NEAR(graph.set.color(0, at(0.5f, 0.5f), Color(-1)), Color(1, 0, 1), 0);
    EXPECT_COLOR_NEAR(graph.set.color(kLength - 5, at(0.5f, 0.5f), Color(-1)), Color(0, 1, 0), 0);
}

TEST(TexMapGraph, NormalMapsReadTheImageAsDataAndFlipAsAsked) {
    std::vector<uint8_t> pixel = {255, 128, 128, 255}; // +X, stored as 8-bit sRGB-encoded data
    TextureDataRecord data{};
    data.id = 0;
    data.width = data.height = 1;
    data.pixelType = 0;
    data.pixels = pixel.data();
    struct Case {
        const char* flag;
        Vec3 expected;
    };
    const Case cases[] = {{nullptr, {1, 0, 0}}, {"Primary/FlipX", {-1, 0, 0}}, {"Primary/SwapXY", {0, 1, 0}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.flag ? c.flag : "as stored");
        Warnings warnings;
        preview::TexMapSet set;
        set.addTextureData(data, warnings.sink());
        TexMapRecord image = texMap(2, 2);
        setField(image, "Texture", int32_t(0));
        set.add(image, warnings.sink());
        set.add(made(23, 1,
                     [&](TexMapRecord& r) {
                         setField(r, "Primary/Map", int32_t(2));
                         if (c.flag) setField(r, c.flag, uint8_t(1));
                     }),
                warnings.sink());
        set.finish(warnings.sink());
        EXPECT_TRUE(warnings.counts.empty()) << warnings.text();
        EXPECT_COLOR_NEAR(set.normal(1, at(0.5f, 0.5f)), c.expected, 2e-2f);
    }
    preview::TexMapSet empty;
    EXPECT_COLOR_NEAR(empty.normal(-1, at(0.5f, 0.5f)), Vec3(0, 0, 1), 0);
}

TEST(TexMapGraph, NoiseLiesBetweenItsColoursVariesAndRepeats) {
    auto noise = [](int32_t seed) {
        return made(8, 1, [&](TexMapRecord& r) {
            setColor(r, "Color0", {0, 0, 0});
            setColor(r, "Color1", {1, 0.5f, 0});
            setField(r, "Levels", int32_t(3));
            setField(r, "Seed", seed);
            setColor(r, "Size", Color(0.1f));
        });
    };
    Graph first({noise(1)}), again({noise(1)}), other({noise(2)});
    float low = 1, high = 0;
    int differ = 0;
    for (int i = 0; i < 64; ++i) {
        const float u = float(i % 8) / 8, v = float(i / 8) / 8;
        const Color c = first.set.color(1, at(u, v), Color(-1));
        EXPECT_NEAR(c.y, c.x * 0.5f, 1e-5f);
        EXPECT_EQ(c.z, 0);
        low = std::min(low, c.x);
        high = std::max(high, c.x);
        EXPECT_COLOR_NEAR(again.set.color(1, at(u, v), Color(-1)), c, 0);
        differ += other.set.color(1, at(u, v), Color(-1)).x != c.x;
    }
    EXPECT_GE(low, 0);
    EXPECT_LE(high, 1);
    EXPECT_GT(high - low, 0.2f);
    EXPECT_GT(differ, 32);
}

} // namespace
} // namespace preview_test

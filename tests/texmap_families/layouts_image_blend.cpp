// The layouts of the image maps and of the blend and math maps, as their tables give them.
#include "tests/texmap_families/texmap_rows.h"

#include "common/unicode.h"

namespace texmap_test {

std::vector<std::string> blendOperationWords() {
    return {"A",          "B",          "Mul",         "Add",          "Sub",        "Blend",     "Difference",
            "Average",    "BW",         "Screen",      "Overlay",      "ColorDodge", "LinearDodge", "Exclusion",
            "ColorBurn",  "LinearBurn", "LinearLight", "SoftLight",    "HardLight",  "VividLight", "PinLight",
            "HardMix",    "Subtract",   "Divide",      "Darken",       "Lighten",    "DarkenColor", "LighterColor",
            "SpotLight",  "SpotLightBlend", "Hue",     "Saturation",   "Color",      "Value"};
}

namespace {

std::vector<std::string> mathOperationWords() {
    return {"Add",   "Sub",  "Mul",  "Div",      "Mod",      "Sqr",      "Sqrt",   "Exp",       "Pow",
            "Logn",  "Sin",  "Cos",  "Tan",      "ASin",     "ACos",     "ATan",   "Min",       "Max",
            "A",     "B",    "Abs",  "Neg",      "Cross",    "Dot",      "Length", "Normalize", "Diagonal",
            "Floor", "Ceil", "Frac", "SRGB2LIN", "LIN2SRGB", "Threshold"};
}

// ---- COMPOSITE's layers ------------------------------------------------------------------------

constexpr uint32_t kLayers = 0x10C;
constexpr uint32_t kLayerBytes = 0x30;

void fillLayers(uint8_t* record, RecordingNames* names) {
    const int32_t count = 32;
    std::memcpy(record + 0x108, &count, sizeof count);
    const std::vector<std::string> words = blendOperationWords();
    for (uint32_t i = 0; i < 32; ++i) {
        const uint32_t base = kLayers + i * kLayerBytes;
        const int32_t operation = static_cast<int32_t>(1 + i % (words.size() - 1));
        std::memcpy(record + base, &operation, sizeof operation);
        fillValue(record + base + 0x04, Kind::Map, base + 0x04, 0, 0, names);
        fillValue(record + base + 0x08, Kind::Map, base + 0x08, 0, 0, names);
        fillValue(record + base + 0x0C, Kind::Float, base + 0x0C, 0, 0, names);
        fillValue(record + base + 0x10, Kind::Float, base + 0x10, 0, 0, names);
        for (uint32_t flag = 0x14; flag < 0x18; ++flag)
            record[base + flag] = 1;
        fillValue(record + base + 0x18, Kind::Color, base + 0x18, 0, 0, names);
        fillValue(record + base + 0x24, Kind::Color, base + 0x24, 0, 0, names);
    }
}

void missingLayers(uint8_t* record) {
    std::memset(record + 0x108, 0, 4 + 32 * kLayerBytes);
}

Layout compositeLayout() {
    Layout layout{7, "COMPOSITE", false, 0x70C, {rowInt("NumLayers", 0x108), rowCustom("Layer", kLayers, 0x600)}};
    layout.elements.push_back("NumLayers");
    for (uint32_t i = 0; i < 32; ++i) {
        layout.elements.push_back("Layer");
        layout.walk.push_back("TexMapName " + std::to_string(kLayers + i * kLayerBytes + 4));
        layout.walk.push_back("TexMapName " + std::to_string(kLayers + i * kLayerBytes + 8));
    }
    layout.fillCustom = fillLayers;
    layout.missingCustom = missingLayers;
    return layout;
}

} // namespace

std::vector<Layout> imageAndBlendLayouts() {
    std::vector<Layout> layouts;
    layouts.push_back({1, "IMAGE", true, 0x5BC, {rowTexture("Texture", 0x5B8)}, {"Texture"}});
    layouts.push_back({2,
                       "SIMPLEIMAGE",
                       false,
                       0x114,
                       {rowTexture("Texture", 0x108), readOnlyRow(rowFloat("Blur", 0x10C)),
                        readOnlyRow(rowFloat("BlurOffset", 0x110))},
                       {"Texture"},
                       {"Texture"}});
    layouts.push_back({3,
                       "BLEND",
                       false,
                       0x139,
                       {rowMap("Map1", 0x108), rowMap("Map2", 0x10C), rowMap("MapBlend", 0x110),
                        rowColor("Color1", 0x114), rowColor("Color2", 0x120), rowFloat("WeightBlend", 0x12C),
                        rowBool("BlendCurve", 0x138), rowFloat("CurveLow", 0x130), rowFloat("CurveHigh", 0x134)},
                       {"Map1", "Map2", "MapBlend"}});
    layouts.push_back({4,
                       "MATH",
                       false,
                       0x137,
                       {rowMap("Map1", 0x108), rowMap("Map2", 0x10C), rowColor("Color1", 0x110),
                        rowColor("Color2", 0x11C), rowFloat("Weight1", 0x128), rowFloat("Weight2", 0x12C),
                        rowBool("Invert1", 0x134), rowBool("Invert2", 0x135), rowBool("ClampResult", 0x136),
                        rowEnum("Operation", 0x130, mathOperationWords())},
                       {"Map1", "Map2"}});
    layouts.push_back({6,
                       "MATHBLEND",
                       false,
                       0x150,
                       {rowMap("Map1", 0x108),       rowMap("Map2", 0x10C),        rowMap("MapM", 0x110),
                        rowColor("Color1", 0x114),   rowColor("Color2", 0x120),    rowFloat("Weight1", 0x12C),
                        rowFloat("Weight2", 0x130),  rowFloat("WeightM", 0x134),   rowFloat("Offset1", 0x138),
                        rowFloat("Offset2", 0x13C),  rowFloat("OffsetM", 0x140),   rowBool("Invert1", 0x144),
                        rowBool("Invert2", 0x145),   rowBool("InvertM", 0x146),    rowBool("ClampResult", 0x147),
                        rowBool("sRGB1", 0x148),     rowBool("sRGB2", 0x149),      rowBool("sRGBM", 0x14A),
                        rowBool("Linearize", 0x14B), rowEnum("Operation", 0x14C, blendOperationWords())},
                       {"Map1", "Map2", "MapM"}});
    layouts.push_back(compositeLayout());
    layouts.push_back({10,
                       "RGB_MULTIPLY",
                       false,
                       0x12C,
                       {rowMap("Map1", 0x108), rowMap("Map2", 0x10C), rowColor("Color1", 0x110),
                        rowColor("Color2", 0x11C), rowEnum("AlphaOperation", 0x128, {"SRC1", "SRC2", "MULTIPLY"})},
                       {"Map1", "Map2"}});
    layouts.push_back({11,
                       "RGB_TINT",
                       false,
                       0x13C,
                       {rowMap("MapSource", 0x108), rowMap("MapR", 0x10C), rowMap("MapG", 0x110),
                        rowMap("MapB", 0x114), rowColor("ColorR", 0x118), rowColor("ColorG", 0x124),
                        rowColor("ColorB", 0x130)},
                       {"MapSource", "MapR", "MapG", "MapB"}});
    return layouts;
}

} // namespace texmap_test

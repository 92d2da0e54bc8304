// The layouts of the colour correction and shuffle maps, as their tables give them.
#include "tests/texmap_families/texmap_rows.h"

namespace texmap_test {

namespace {

// ---- COLORCORRECTION's channels and point curves ------------------------------------------------

constexpr uint32_t kCorrectionChannels = 0x120;
constexpr uint32_t kCorrectionChannelBytes = 0x11C;

struct Curve {
    const char* key;
    uint32_t points, cubic, count;
    int32_t filledCount;
    uint8_t filledCubic;
};
const Curve kCurves[] = {
    {"CurvesW", 0xBA4, 0xB98, 0xB88, 64, 0},
    {"CurvesR", 0xDA4, 0xB99, 0xB8C, 3, 1},
    {"CurvesG", 0xFA4, 0xB9A, 0xB90, 0, 1},
    {"CurvesB", 0x11A4, 0xB9B, 0xB94, 17, 0},
};

void fillCorrection(uint8_t* record, RecordingNames* names) {
    for (uint32_t i = 0; i < 8; ++i) {
        const uint32_t base = kCorrectionChannels + i * kCorrectionChannelBytes;
        fillValue(record + base, Kind::Int, base, 0, 0, names);
        record[base + 0x04] = record[base + 0x05] = 1;
        for (uint32_t at = 0x08; at < 0x1C; at += 4)
            fillValue(record + base + at, Kind::Float, base + at, 0, 0, names);
        fillValue(record + base + 0x1C, Kind::Spline, base + 0x1C, 8, 0, names);
    }
    for (const Curve& curve : kCurves) {
        std::memcpy(record + curve.count, &curve.filledCount, 4);
        record[curve.cubic] = curve.filledCubic;
        for (int32_t i = 0; i < curve.filledCount; ++i) {
            const float pair[2] = {static_cast<float>(curve.points + i) + 0.5f, -static_cast<float>(i) - 0.25f};
            std::memcpy(record + curve.points + 8 * i, pair, sizeof pair);
        }
    }
}

void missingCorrection(uint8_t* record) {
    std::memset(record + kCorrectionChannels, 0, 8 * kCorrectionChannelBytes);
    for (const Curve& curve : kCurves) {
        std::memset(record + curve.count, 0, 4);
        record[curve.cubic] = 1;
        std::memset(record + curve.points, 0, 0x200);
    }
}

Layout correctionLayout() {
    Layout layout{5,
                  "COLORCORRECTION",
                  false,
                  0x16A4,
                  {rowColor("ChildColor", 0x108),
                   rowMap("ChildMap", 0x114),
                   rowFloat("MaskWeight", 0x118),
                   rowMap("MaskMap", 0x11C),
                   rowCustom("Channel", kCorrectionChannels, 8 * kCorrectionChannelBytes),
                   rowFloat("ContrastAlt", 0xA04),
                   rowFloat("BrightnessAlt", 0xA00),
                   rowFloat("Contrast", 0xA08),
                   rowMap("ContrastMap", 0xA0C),
                   rowFloat("Pivot", 0xA10),
                   rowMap("PivotMap", 0xA14),
                   rowFloat("Exposure", 0xB30),
                   rowMap("ExposureMap", 0xB34),
                   rowColor("Gamma", 0xB20),
                   rowMap("GammaMap", 0xB2C),
                   rowFloat("Low", 0xA18),
                   rowFloat("High", 0xA1C),
                   rowSpline("CurveLevels", 0xA20, 8),
                   rowFloat("Hue", 0xB38),
                   rowMap("HueMap", 0xB3C),
                   rowFloat("Saturation", 0xB40),
                   rowMap("SaturationMap", 0xB44),
                   rowFloat("HueTint", 0xB4C),
                   rowFloat("HueTintStrength", 0xB48),
                   rowFloat("GreenMagentaTint", 0xB50),
                   rowFloat("Kelvin", 0xB54),
                   rowColor("TintColor", 0xB58),
                   rowMap("TintMap", 0xB70),
                   rowColor("GroundColor", 0xB64),
                   rowMap("GroundMap", 0xB74),
                   rowBool("ClampResult", 0xB9C),
                   rowBool("Invert", 0xB9D),
                   rowBool("ApplyAlpha", 0xB9E),
                   rowBool("sRGB", 0xB9F),
                   rowBool("AlternativeProcessing", 0xBA0),
                   rowColor("DefaultLuminance", 0xB78),
                   rowBool("LogSpaceLUT", 0xBA1),
                   rowFloat("AmountLUT", 0xB84),
                   rowString("LUT", 0x13A4, 384),
                   rowCustom("CurvesW", 0xBA4, 0x200),
                   rowCustom("CurvesR", 0xDA4, 0x200),
                   rowCustom("CurvesG", 0xFA4, 0x200),
                   rowCustom("CurvesB", 0x11A4, 0x200)},
                  {"ChildMap", "MaskMap", "ContrastMap", "PivotMap", "ExposureMap", "GammaMap", "HueMap",
                   "SaturationMap", "TintMap", "GroundMap"}};
    for (const Row& row : layout.rows) {
        if (row.key == "Channel") {
            layout.elements.push_back("NumChannels");
            layout.elements.insert(layout.elements.end(), 8, "Channel");
        } else {
            layout.elements.push_back(row.key);
        }
    }
    layout.fillCustom = fillCorrection;
    layout.missingCustom = missingCorrection;
    return layout;
}

// ---- SHUFFLE's channels ------------------------------------------------------------------------

constexpr uint32_t kShuffleChannels = 0x130;

void fillShuffle(uint8_t* record, RecordingNames* names) {
    for (uint32_t i = 0; i < 8; ++i) {
        const uint32_t base = kShuffleChannels + i * 16;
        fillValue(record + base, Kind::Int, base, 0, 0, names);
        fillValue(record + base + 4, Kind::Int, base + 4, 0, 0, names);
        fillValue(record + base + 8, Kind::Float, base + 8, 0, 0, names);
        record[base + 0x0C] = record[base + 0x0D] = record[base + 0x0E] = 1;
    }
}

void missingShuffle(uint8_t* record) {
    std::memset(record + kShuffleChannels, 0, 8 * 16);
}

Layout shuffleLayout() {
    Layout layout{12,
                  "SHUFFLE",
                  false,
                  0x1BC,
                  {rowColor("Color1", 0x108), rowMap("Map1", 0x114), rowFloat("Weight1", 0x118),
                   rowColor("Color2", 0x11C), rowMap("Map2", 0x128), rowFloat("Weight2", 0x12C),
                   rowCustom("Channel", kShuffleChannels, 0x80), rowColor("DefaultLuminance", 0x1B0)},
                  {"Map1", "Map2"},
                  {"Color1", "Map1", "Weight1", "Color2", "Map2", "Weight2", "NumChannels"}};
    layout.elements.insert(layout.elements.end(), 8, "Channel");
    layout.elements.push_back("DefaultLuminance");
    layout.fillCustom = fillShuffle;
    layout.missingCustom = missingShuffle;
    return layout;
}

} // namespace

std::vector<Layout> correctionLayouts() {
    return {correctionLayout(), shuffleLayout()};
}

} // namespace texmap_test

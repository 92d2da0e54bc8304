// Every key of the settings document, spelled as the format spells it, lands at its offset.
#include "documents/settings_document.h"

#include "common/unicode.h"
#include "tests/documents_settings/settings_test_support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <vector>

using namespace settings_test;

namespace {

enum class Kind { Int, Float, Bool, Quiet, String, Enum, Material, Color };

struct Row {
    const char* section;
    const char* key;
    Kind kind;
    uint32_t offset;            // within the settings record
    uint32_t capacity = 0;      // strings
    const char* word = nullptr; // enums: the word written...
    uint32_t index = 0;         // ...and its number
};

constexpr uint32_t kTone = 0x7050;

const std::vector<Row> kRows = {
    {"RenderRegion", "ImageSizeX", Kind::Int, 0x84B0},
    {"RenderRegion", "ImageSizeY", Kind::Int, 0x84B4},
    {"RenderRegion", "RegionX", Kind::Int, 0x84B8},
    {"RenderRegion", "RegionY", Kind::Int, 0x84BC},
    {"RenderRegion", "RegionSizeX", Kind::Int, 0x84C0},
    {"RenderRegion", "RegionSizeY", Kind::Int, 0x84C4},
    {"Output", "OutputPath", Kind::String, 0x84C8, 384},
    {"Output", "OutputName", Kind::String, 0x87C8, 64},
    {"Output", "HTXSavePath", Kind::String, 0x8848, 384},
    {"Output", "SaveJPEG", Kind::Bool, 0x8B48},
    {"Output", "SaveTIFF", Kind::Bool, 0x8B4C},
    {"Output", "SaveEXR", Kind::Bool, 0x8B50},
    {"Output", "SaveHTXtextures", Kind::Bool, 0x8B54},
    {"Quality", "MinNoise", Kind::Float, 0x0},
    {"Quality", "AvrNoise", Kind::Float, 0x4},
    {"Quality", "MaxIterations", Kind::Int, 0x8},
    {"Quality", "MaxTime", Kind::Int, 0xC},
    {"Quality", "RaysPerPixel", Kind::Int, 0x10},
    {"Quality", "GI2AA", Kind::Int, 0x14},
    {"Quality", "NumEmitterSamples", Kind::Int, 0x18},
    {"Quality", "EnableMotionBlur", Kind::Bool, 0x1C},
    {"Quality", "EnableDOF", Kind::Bool, 0x20},
    {"Quality", "EnableSpectralMode", Kind::Bool, 0x24},
    {"Quality", "EnableDisplacement", Kind::Bool, 0x28},
    {"Quality", "EnableVolumetrics", Kind::Bool, 0x2C},
    {"Quality", "EnableFluorescence", Kind::Bool, 0x30},
    {"Quality", "EnableCaustics", Kind::Bool, 0x34},
    {"Adaptation", "UseTimeAdaptation", Kind::Bool, 0x40},
    {"Adaptation", "UseSpectrumAdaptation", Kind::Bool, 0x44},
    {"Adaptation", "UseImageNoiseAdaptation", Kind::Int, 0x48},
    {"Adaptation", "PreferLights", Kind::Bool, 0x4C},
    {"Adaptation", "EmitterAdaptation", Kind::Bool, 0x50},
    {"Adaptation", "EmitterAdaptationGB", Kind::Int, 0x54},
    {"Adaptation", "PathAdaptation", Kind::Bool, 0x58},
    {"Adaptation", "PathAdaptationGB", Kind::Int, 0x68},
    {"Adaptation", "PathAdaptationVolume", Kind::Bool, 0x5C},
    {"Adaptation", "PathAdaptationVolumeGB", Kind::Int, 0x6C},
    {"Adaptation", "NumberAdaptationPhases", Kind::Int, 0x64},
    {"Sampling", "SpreadAA", Kind::Float, 0x80},
    {"Sampling", "RayDiameter", Kind::Float, 0x84},
    {"Sampling", "ReconstructionFilter", Kind::Enum, 0x88, 0, "gaussian_blackman", 11},
    {"Sampling", "ReconstructionFilterDiameter", Kind::Float, 0x8C},
    {"Sampling", "UseReconstructionSubKernels", Kind::Bool, 0x90},
    {"Sampling", "EnableBlueNoiseTail", Kind::Bool, 0x98},
    {"Sampling", "AddChaos", Kind::Float, 0x9C},
    {"Sampling", "BestBumpFilter", Kind::Bool, 0xA0},
    {"Sampling", "LockSamplingPattern", Kind::Bool, 0xA4},
    {"NoiseFiltration", "NoiseFilterType", Kind::Enum, 0xA8, 0, "NVIDIA", 5},
    {"NoiseFiltration", "NoiseReductionAmount", Kind::Float, 0xAC},
    {"NoiseFiltration", "RemoveFireFlies", Kind::Float, 0xB0},
    {"NoiseFiltration", "ClampAA", Kind::Float, 0xB4},
    {"NoiseFiltration", "ClampIndirect", Kind::Float, 0xB8},
    {"NoiseFiltration", "ClampIndirectSpecular", Kind::Float, 0xBC},
    {"Colors", "MinWavelenght", Kind::Float, 0xC0},
    {"Colors", "MaxWavelenght", Kind::Float, 0xC4},
    {"Colors", "RGBtoXYZ", Kind::Enum, 0xC8, 0, "HTSS7", 3},
    {"Colors", "XYZtoRGB", Kind::Enum, 0x8D0, 0, "Cie2006", 1},
    {"Tracing", "Integrator", Kind::Enum, 0x28C4, 0, "BIDIR", 1},
    {"Tracing", "MaxDepth", Kind::Int, 0x28C8},
    {"Tracing", "RussianRouletteStartDepth", Kind::Int, 0x28CC},
    {"Tracing", "MaxEventsGI", Kind::Int, 0x28D0},
    {"Tracing", "MaxVolumetricScatter", Kind::Int, 0x28D4},
    {"Tracing", "CausticMinSpecularsTotal", Kind::Int, 0x28F0},
    {"Tracing", "CausticMaxSpecularsTotal", Kind::Int, 0x28E4},
    {"Tracing", "CausticMinSpecularsR", Kind::Int, 0x28F4},
    {"Tracing", "CausticMaxSpecularsR", Kind::Int, 0x28E8},
    {"Tracing", "CausticMinSpecularsT", Kind::Int, 0x28F8},
    {"Tracing", "CausticMaxSpecularsT", Kind::Int, 0x28EC},
    {"Tracing", "IndirectlyVisibleCaustics", Kind::Bool, 0x2910},
    {"Tracing", "DetectHairsAndParticles", Kind::Bool, 0x2914},
    {"Tracing", "MaxDepthSDS", Kind::Int, 0x28D8},
    {"Tracing", "CausticMaxGI", Kind::Int, 0x28FC},
    {"Tracing", "CausticMaxV", Kind::Int, 0x2900},
    {"Tracing", "CausticRate", Kind::Float, 0x2904},
    {"Tracing", "CausticRateVol", Kind::Float, 0x2908},
    {"Tracing", "CausticRateInd", Kind::Float, 0x290C},
    {"Tracing", "CausticUseMetropolis", Kind::Bool, 0x28DC},
    {"Tracing", "CausticUseParticles", Kind::Bool, 0x28E0},
    {"Tracing", "DetectDOF", Kind::Bool, 0x2918},
    {"Tracing", "DetectPureRT", Kind::Bool, 0x291C},
    {"Tracing", "LowLightThreshold", Kind::Float, 0x2920},
    {"Tracing", "MinPointLightDiameter", Kind::Float, 0x2924},
    {"Tracing", "PreciseRayTriangleIntersection", Kind::Bool, 0x2928},
    {"Tracing", "BspType", Kind::Enum, 0x292C, 0, "compromise", 2},
    {"Tracing", "BetterBspQuality", Kind::Enum, 0x2930, 0, "GOOD", 1},
    {"Tracing", "UseFakedShadows", Kind::Bool, 0x2934},
    {"Tracing", "EnvironmentWeight", Kind::Float, 0x2938},
    {"Tracing", "PreferPreciseMaterials", Kind::Bool, 0x293C},
    {"Tracing", "ForceStartingMedium", Kind::Bool, 0x2940},
    {"Tracing", "StartingMediumDependsOnPixel", Kind::Quiet, 0x2944},
    {"Tracing", "DeformationIntervals", Kind::Int, 0x2948},
    {"Tracing", "BoundingIntervalsPerFrame", Kind::Int, 0x294C},
    {"Tracing", "BoundingEstimationSubsampling", Kind::Int, 0x2950},
    {"Tracing", "EnlargeBoundingBox", Kind::Float, 0x2954},
    {"Tracing", "SubdivisonVisiblePixels", Kind::Float, 0x295C},
    {"Tracing", "SubdivisonBackPixels", Kind::Float, 0x2960},
    {"Tracing", "SubdivisonSidePixels", Kind::Float, 0x2964},
    {"Tracing", "MetricToSceneUnitsFactor", Kind::Float, 0x2968},
    {"Tracing", "StartingVolumetricMaterial", Kind::Material, 0x9844},
    {"Textures", "TexturePath", Kind::String, 0x8F34, 384},
    {"Textures", "LinearizeTextures", Kind::Quiet, 0x2974},
    {"Textures", "LinearizeAtRendering", Kind::Quiet, 0x8B78},
    {"Textures", "AnisotropyLevel", Kind::Int, 0x2990},
    {"Textures", "TextureFilter", Kind::Enum, 0x2978, 0, "Ellipse", 2},
    {"Textures", "EnableAutoMipmap", Kind::Quiet, 0x297C},
    {"Textures", "MipmapFilter", Kind::Enum, 0x2984, 0, "LANCZOS12", 9},
    {"Textures", "FastMipmapGenerationIfLargerThan", Kind::Int, 0x2980},
    {"Textures", "TextureGamma", Kind::Float, 0x2988},
    {"Textures", "ForceSRGBifNoProfile", Kind::Quiet, 0x298C},
    {"Textures", "PagedTextureMode", Kind::Bool, 0x8B84},
    {"System", "LowPriority", Kind::Int, 0x8B68},
    {"System", "TextureCacheSize", Kind::Int, 0x8B7C},
    {"System", "DataCacheSize", Kind::Int, 0x8B80},
    {"System", "NoCacheClear", Kind::Bool, 0x8B90},
    {"System", "CachePath", Kind::String, 0x9234, 384},
    {"System", "MaxThreads", Kind::Int, 0x8B64},
    {"System", "NotCheckMaxThreads", Kind::Bool, 0x8B6C},
    {"System", "NoAffinityMask", Kind::Bool, 0x8B70},
    {"System", "AffinityShift", Kind::Int, 0x8B74},
    {"ToneOperator", "ApplyExposure", Kind::Bool, kTone + 0x00},
    {"ToneOperator", "ExposureValue", Kind::Float, kTone + 0x04},
    {"ToneOperator", "ApplyWhiteBalanceByKelvin", Kind::Bool, kTone + 0x08},
    {"ToneOperator", "WhiteBalanceByKelvin", Kind::Float, kTone + 0x0C},
    {"ToneOperator", "ApplyGreenMagentaTint", Kind::Bool, kTone + 0x10},
    {"ToneOperator", "GreenMagentaTint", Kind::Float, kTone + 0x14},
    {"ToneOperator", "ApplyTintRGB", Kind::Bool, kTone + 0x18},
    {"ToneOperator", "TintRGB", Kind::Color, kTone + 0x1C},
    {"ToneOperator", "ApplyVignette", Kind::Bool, kTone + 0x28},
    {"ToneOperator", "Vignette", Kind::Float, kTone + 0x2C},
    {"ToneOperator", "ApplyHighlightCompress", Kind::Bool, kTone + 0x30},
    {"ToneOperator", "HighlightCompress", Kind::Float, kTone + 0x34},
    {"ToneOperator", "ApplyPrimaryGain", Kind::Bool, kTone + 0x38},
    {"ToneOperator", "PrimaryGain", Kind::Float, kTone + 0x3C},
    {"ToneOperator", "ApplyCausticGain", Kind::Bool, kTone + 0x40},
    {"ToneOperator", "CausticGain", Kind::Float, kTone + 0x44},
    {"ToneOperator", "ApplyGlow", Kind::Bool, kTone + 0x48},
    {"ToneOperator", "GlowThreshold", Kind::Float, kTone + 0x4C},
    {"ToneOperator", "GlowSize", Kind::Float, kTone + 0x50},
    {"ToneOperator", "GlowScale", Kind::Float, kTone + 0x54},
    {"ToneOperator", "GlowChromatic", Kind::Float, kTone + 0x58},
    {"ToneOperator", "ApplyGlare", Kind::Bool, kTone + 0x5C},
    {"ToneOperator", "GlareThreshold", Kind::Float, kTone + 0x60},
    {"ToneOperator", "GlareSize", Kind::Float, kTone + 0x64},
    {"ToneOperator", "GlareScale", Kind::Float, kTone + 0x68},
    {"ToneOperator", "GlareBlur", Kind::Float, kTone + 0x6C},
    {"ToneOperator", "GlareChromatic", Kind::Float, kTone + 0x70},
    {"ToneOperator", "GlareFromCamera", Kind::Int, kTone + 0x74},
    {"ToneOperator", "GlareNrays", Kind::Int, kTone + 0x78},
    {"ToneOperator", "GlareAngle", Kind::Float, kTone + 0x7C},
    {"ToneOperator", "OperatorType", Kind::Enum, kTone + 0x80, 0, "filmic", 3},
    {"ToneOperator", "ReinhardFactor", Kind::Float, kTone + 0x84},
    {"ToneOperator", "Filmic_toeStrength", Kind::Float, kTone + 0x88},
    {"ToneOperator", "Filmic_toeLength", Kind::Float, kTone + 0x8C},
    {"ToneOperator", "Filmic_shoulderStrength", Kind::Float, kTone + 0x90},
    {"ToneOperator", "Filmic_shoulderLength", Kind::Float, kTone + 0x94},
    {"ToneOperator", "Filmic_shoulderAngle", Kind::Float, kTone + 0x98},
    {"ToneOperator", "Filmic_gamma", Kind::Float, kTone + 0x9C},
    {"ToneOperator", "ApplySaturation", Kind::Bool, kTone + 0xA0},
    {"ToneOperator", "Saturation", Kind::Float, kTone + 0xA4},
    {"ToneOperator", "ApplyGamma", Kind::Bool, kTone + 0xA8},
    {"ToneOperator", "Gamma", Kind::Float, kTone + 0xAC},
    {"ToneOperator", "ApplyContrast", Kind::Bool, kTone + 0xB0},
    {"ToneOperator", "Contrast", Kind::Float, kTone + 0xB4},
    {"ToneOperator", "ContrastPivot", Kind::Float, kTone + 0xB8},
    {"ToneOperator", "ApplyCurvesRGB", Kind::Bool, kTone + 0xBC},
    {"ToneOperator", "ApplyLUT", Kind::Bool, kTone + 0xE4C},
    {"ToneOperator", "ApplySharpen", Kind::Bool, kTone + 0xE50},
    {"ToneOperator", "SharpenAmount", Kind::Float, kTone + 0xE54},
    {"ToneOperator", "SharpenRadius", Kind::Float, kTone + 0xE58},
    {"ToneOperator", "SharpenThreshold", Kind::Float, kTone + 0xE5C},
    {"ToneOperator", "LUTPath", Kind::String, kTone + 0xE60, 384},
    {"AOV", "SaveAOV", Kind::Bool, 0x29B8},
    {"AOV", "Path", Kind::String, 0x8BB4, 384},
    {"AOV", "Name", Kind::String, 0x8EB4, 64},
    {"AOV", "ChannelShare", Kind::Enum, 0x29C0, 0, "separate", 2},
    {"AOV", "HalfPrecision", Kind::Bool, 0x29C4},
    {"AOV", "ApplyToneOperator", Kind::Bool, 0x29C8},
    {"AOV", "CropOutput", Kind::Bool, 0x29CC},
};

const char* const kSectionOrder[] = {"RenderRegion", "Output",          "Quality",      "Adaptation",
                                     "Sampling",     "NoiseFiltration", "Colors",       "Tracing",
                                     "Textures",     "System",          "ToneOperator", "AOV"};

uint32_t widthOf(const Row& row) {
    if (row.kind == Kind::String) return row.capacity * 2;
    if (row.kind == Kind::Color) return 12;
    return 4;
}

// Values that no two keys share, and bools of both values, so that a key read into another's
// field, or not read at all, shows.
int32_t intFor(size_t i) {
    return static_cast<int32_t>(1000 + i);
}
float floatFor(size_t i) {
    return 0.5f + static_cast<float>(i);
}
uint32_t boolFor(size_t i) {
    return i % 3 == 0 ? 0 : 1;
}
std::string textFor(size_t i) {
    return "text" + std::to_string(i);
}

std::string elementFor(const Row& row, size_t i) {
    const std::string key = row.key;
    switch (row.kind) {
    case Kind::Int:
        return "<" + key + " value=\"" + std::to_string(intFor(i)) + "\"/>";
    case Kind::Float:
        return "<" + key + " value=\"" + std::to_string(floatFor(i)) + "\"/>";
    case Kind::Bool:
    case Kind::Quiet:
        return "<" + key + " value=\"" + (boolFor(i) ? "true" : "false") + "\"/>";
    case Kind::String:
        return "<" + key + " value=\"" + textFor(i) + "\"/>";
    case Kind::Enum:
        return "<" + key + " value=\"" + row.word + "\"/>";
    case Kind::Material:
        return "<" + key + " name=\"" + textFor(i) + "\"/>";
    case Kind::Color:
        return "<" + key + " R=\"" + std::to_string(floatFor(i)) + "\" G=\"" +
               std::to_string(floatFor(i + 1000)) + "\" B=\"" + std::to_string(floatFor(i + 2000)) + "\"/>";
    }
    return "";
}

std::string documentOf(const std::vector<Row>& rows) {
    std::string text = "<TaviSettings>";
    for (const char* section : kSectionOrder) {
        text += std::string("<") + section + ">";
        for (size_t i = 0; i < rows.size(); ++i) {
            if (std::string(rows[i].section) == section) text += elementFor(rows[i], i);
        }
        // Channels keep the AOV switch as the document states it.
        if (std::string(section) == "AOV") text += "<Channels/>";
        text += std::string("</") + section + ">";
    }
    return text + "</TaviSettings>";
}

TEST(SettingsKeys, EveryKeyLandsAtItsOffset) {
    TempFolder folder;
    TableNames names;
    for (size_t i = 0; i < kRows.size(); ++i) {
        if (kRows[i].kind == Kind::Material) names.materials[utf8ToUtf16(textFor(i))] = 77;
    }
    auto record = std::make_unique<SettingsRecord>();
    std::memset(record.get(), 0xA5, sizeof *record);
    const std::u16string path = folder.write("settings.xml", documentOf(kRows));
    ASSERT_TRUE(ApplySettingsDocument(record.get(), path.c_str(), &names));

    std::set<uint32_t> written;
    for (size_t i = 0; i < kRows.size(); ++i) {
        const Row& row = kRows[i];
        SCOPED_TRACE(std::string(row.section) + "/" + row.key);
        for (uint32_t b = 0; b < widthOf(row); ++b)
            EXPECT_TRUE(written.insert(row.offset + b).second) << "overlap";
        switch (row.kind) {
        case Kind::Int:
            EXPECT_EQ(intAt(*record, row.offset), intFor(i));
            break;
        case Kind::Float:
            EXPECT_EQ(floatAt(*record, row.offset), floatFor(i));
            break;
        case Kind::Bool:
        case Kind::Quiet:
            EXPECT_EQ(wordAt(*record, row.offset), boolFor(i));
            break;
        case Kind::String:
            EXPECT_EQ(textAt(*record, row.offset, row.capacity), textFor(i));
            break;
        case Kind::Enum:
            EXPECT_EQ(wordAt(*record, row.offset), row.index);
            break;
        case Kind::Material:
            EXPECT_EQ(intAt(*record, row.offset), 77);
            break;
        case Kind::Color:
            EXPECT_EQ(floatAt(*record, row.offset), floatFor(i));
            EXPECT_EQ(floatAt(*record, row.offset + 4), floatFor(i + 1000));
            EXPECT_EQ(floatAt(*record, row.offset + 8), floatFor(i + 2000));
            break;
        }
    }
    // The record's own field names agree with the offsets the document uses.
    EXPECT_EQ(record->MinWavelenght, floatAt(*record, 0xC0));
    EXPECT_EQ(record->SubdivisonVisiblePixels, floatAt(*record, 0x295C));
    EXPECT_EQ(record->ForceSRGBifNoProfile, wordAt(*record, 0x298C));
    EXPECT_EQ(record->ToneOperator.Filmic_shoulderAngle, floatAt(*record, kTone + 0x98));
    EXPECT_EQ(record->SaveHTXtextures, wordAt(*record, 0x8B54));
    EXPECT_EQ(record->StartingVolumetricMaterial, 77);
    EXPECT_EQ(record->NumChannels, 0);
}

TEST(SettingsKeys, OnlyTheFormatsSpellingIsRead) {
    TempFolder folder;
    TableNames names;
    struct Case {
        const char* section;
        const char* key;
        uint32_t offset;
    };
    // Each of these is the usual English spelling, or another case, of a key.
    const Case cases[] = {
        {"Colors", "MinWavelength", 0xC0},
        {"Colors", "MaxWavelength", 0xC4},
        {"Tracing", "SubdivisionVisiblePixels", 0x295C},
        {"Tracing", "SubdivisionBackPixels", 0x2960},
        {"Tracing", "SubdivisionSidePixels", 0x2964},
        {"Quality", "minNoise", 0x0},
        {"quality", "MinNoise", 0x0},
        {"ToneOperator", "Filmic_ToeLength", kTone + 0x8C},
        {"Textures", "TextureGAMMA", 0x2988},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.key);
        auto record = std::make_unique<SettingsRecord>();
        std::memset(record.get(), 0xA5, sizeof *record);
        const std::string document = std::string("<TaviSettings><") + c.section + "><" + c.key +
                                     " value=\"42\"/></" + c.section + "></TaviSettings>";
        ASSERT_TRUE(
            ApplySettingsDocument(record.get(), folder.write("settings.xml", document).c_str(), &names));
        EXPECT_EQ(wordAt(*record, c.offset), 0xA5A5A5A5u);
    }
}

} // namespace

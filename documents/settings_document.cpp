#include "documents/settings_document.h"

#include "common/unicode.h"
#include "documents/aov_tone_sections.h"
#include "documents/settings_fields.h"
#include "documents/spectrum_table.h"

#include <cmath>
#include <limits>
#include <string>

namespace {

// ---- Word tables -------------------------------------------------------------------------------

constexpr const char* const kFilterWords[] = {
    "BOX",        "TENT",     "BELL",     "BSPLINE",   "MITCHELL", "LANCZOS2",
    "LANCZOS3",   "LANCZOS4", "LANCZOS8", "LANCZOS12", "KAISER",   "GAUSSIAN_BLACKMAN",
    "CATMULLROM", "BLACKMAN", "GAUSSIAN", "SOFTBELL",  nullptr};
constexpr const char* const kNoiseFilterWords[] = {"INTEL",     "INTEL_CPU", "INTEL_SYCL", "INTEL_CUDA",
                                                   "INTEL_HIP", "NVIDIA",    nullptr};
constexpr const char* const kRgbToXyzWords[] = {"Splines", "Smits1931", "HTSS3", "HTSS7", nullptr};
constexpr const char* const kXyzToRgbWords[] = {"CIE1931", "CIE2006", "file", nullptr};
constexpr int32_t kXyzFromFile = 2;
constexpr const char* const kIntegratorWords[] = {"PT", "BIDIR", "VCM", nullptr};
constexpr const char* const kBspWords[] = {"COMPATIBILITY", "COMPACT", "COMPROMISE", "FAST", nullptr};
constexpr const char* const kBspQualityWords[] = {"BASE", "GOOD", nullptr};
constexpr const char* const kTextureFilterWords[] = {"BILINEAR", "BICUBIC", "ELLIPSE", "BSPLINE", nullptr};

// ---- The ten render sections, offsets within the settings record -------------------------------

constexpr SettingField kRenderRegion[] = {
    intSetting("ImageSizeX", 0x84B0), intSetting("ImageSizeY", 0x84B4),  intSetting("RegionX", 0x84B8),
    intSetting("RegionY", 0x84BC),    intSetting("RegionSizeX", 0x84C0), intSetting("RegionSizeY", 0x84C4),
};

constexpr SettingField kOutput[] = {
    stringSetting("OutputPath", 0x84C8, kPathChars),
    stringSetting("OutputName", 0x87C8, kNameChars),
    stringSetting("HTXSavePath", 0x8848, kPathChars),
    boolSetting("SaveJPEG", 0x8B48),
    boolSetting("SaveTIFF", 0x8B4C),
    boolSetting("SaveEXR", 0x8B50),
    boolSetting("SaveHTXtextures", 0x8B54),
};

constexpr SettingField kQuality[] = {
    floatSetting("MinNoise", 0x0),           floatSetting("AvrNoise", 0x4),
    intSetting("MaxIterations", 0x8),        intSetting("MaxTime", 0xC),
    intSetting("RaysPerPixel", 0x10),        intSetting("GI2AA", 0x14),
    intSetting("NumEmitterSamples", 0x18),   boolSetting("EnableMotionBlur", 0x1C),
    boolSetting("EnableDOF", 0x20),          boolSetting("EnableSpectralMode", 0x24),
    boolSetting("EnableDisplacement", 0x28), boolSetting("EnableVolumetrics", 0x2C),
    boolSetting("EnableFluorescence", 0x30), boolSetting("EnableCaustics", 0x34),
};

constexpr SettingField kAdaptation[] = {
    boolSetting("UseTimeAdaptation", 0x40),      boolSetting("UseSpectrumAdaptation", 0x44),
    intSetting("UseImageNoiseAdaptation", 0x48), boolSetting("PreferLights", 0x4C),
    boolSetting("EmitterAdaptation", 0x50),      intSetting("EmitterAdaptationGB", 0x54),
    boolSetting("PathAdaptation", 0x58),         intSetting("PathAdaptationGB", 0x68),
    boolSetting("PathAdaptationVolume", 0x5C),   intSetting("PathAdaptationVolumeGB", 0x6C),
    intSetting("NumberAdaptationPhases", 0x64),
};

constexpr SettingField kSampling[] = {
    floatSetting("SpreadAA", 0x80),
    floatSetting("RayDiameter", 0x84),
    enumSetting("ReconstructionFilter", 0x88, kFilterWords),
    floatSetting("ReconstructionFilterDiameter", 0x8C),
    boolSetting("UseReconstructionSubKernels", 0x90),
    boolSetting("EnableBlueNoiseTail", 0x98),
    floatSetting("AddChaos", 0x9C),
    boolSetting("BestBumpFilter", 0xA0),
    boolSetting("LockSamplingPattern", 0xA4),
};

constexpr SettingField kNoiseFiltration[] = {
    enumSetting("NoiseFilterType", 0xA8, kNoiseFilterWords),
    floatSetting("NoiseReductionAmount", 0xAC),
    floatSetting("RemoveFireFlies", 0xB0),
    floatSetting("ClampAA", 0xB4),
    floatSetting("ClampIndirect", 0xB8),
    floatSetting("ClampIndirectSpecular", 0xBC),
};

// XYZtoRGB_filename and TextureChannels follow in readColorsTail.
constexpr SettingField kColors[] = {
    floatSetting("MinWavelenght", 0xC0),
    floatSetting("MaxWavelenght", 0xC4),
    enumSetting("RGBtoXYZ", 0xC8, kRgbToXyzWords),
    enumSetting("XYZtoRGB", 0x8D0, kXyzToRgbWords),
};

constexpr SettingField kTracing[] = {
    enumSetting("Integrator", 0x28C4, kIntegratorWords),
    intSetting("MaxDepth", 0x28C8),
    intSetting("RussianRouletteStartDepth", 0x28CC),
    intSetting("MaxEventsGI", 0x28D0),
    intSetting("MaxVolumetricScatter", 0x28D4),
    intSetting("CausticMinSpecularsTotal", 0x28F0),
    intSetting("CausticMaxSpecularsTotal", 0x28E4),
    intSetting("CausticMinSpecularsR", 0x28F4),
    intSetting("CausticMaxSpecularsR", 0x28E8),
    intSetting("CausticMinSpecularsT", 0x28F8),
    intSetting("CausticMaxSpecularsT", 0x28EC),
    boolSetting("IndirectlyVisibleCaustics", 0x2910),
    boolSetting("DetectHairsAndParticles", 0x2914),
    intSetting("MaxDepthSDS", 0x28D8),
    intSetting("CausticMaxGI", 0x28FC),
    intSetting("CausticMaxV", 0x2900),
    floatSetting("CausticRate", 0x2904),
    floatSetting("CausticRateVol", 0x2908),
    floatSetting("CausticRateInd", 0x290C),
    boolSetting("CausticUseMetropolis", 0x28DC),
    boolSetting("CausticUseParticles", 0x28E0),
    boolSetting("DetectDOF", 0x2918),
    boolSetting("DetectPureRT", 0x291C),
    floatSetting("LowLightThreshold", 0x2920),
    floatSetting("MinPointLightDiameter", 0x2924),
    boolSetting("PreciseRayTriangleIntersection", 0x2928),
    enumSetting("BspType", 0x292C, kBspWords),
    enumSetting("BetterBspQuality", 0x2930, kBspQualityWords),
    boolSetting("UseFakedShadows", 0x2934),
    floatSetting("EnvironmentWeight", 0x2938),
    boolSetting("PreferPreciseMaterials", 0x293C),
    boolSetting("ForceStartingMedium", 0x2940),
    quietBoolSetting("StartingMediumDependsOnPixel", 0x2944),
    intSetting("DeformationIntervals", 0x2948),
    intSetting("BoundingIntervalsPerFrame", 0x294C),
    intSetting("BoundingEstimationSubsampling", 0x2950),
    floatSetting("EnlargeBoundingBox", 0x2954),
    floatSetting("SubdivisonVisiblePixels", 0x295C),
    floatSetting("SubdivisonBackPixels", 0x2960),
    floatSetting("SubdivisonSidePixels", 0x2964),
    floatSetting("MetricToSceneUnitsFactor", 0x2968),
    materialSetting("StartingVolumetricMaterial", 0x9844),
};

constexpr SettingField kTextures[] = {
    stringSetting("TexturePath", 0x8F34, kPathChars),
    quietBoolSetting("LinearizeTextures", 0x2974),
    quietBoolSetting("LinearizeAtRendering", 0x8B78),
    intSetting("AnisotropyLevel", 0x2990),
    enumSetting("TextureFilter", 0x2978, kTextureFilterWords),
    quietBoolSetting("EnableAutoMipmap", 0x297C),
    enumSetting("MipmapFilter", 0x2984, kFilterWords),
    intSetting("FastMipmapGenerationIfLargerThan", 0x2980),
    floatSetting("TextureGamma", 0x2988),
    quietBoolSetting("ForceSRGBifNoProfile", 0x298C),
    boolSetting("PagedTextureMode", 0x8B84),
};

constexpr SettingField kSystem[] = {
    intSetting("LowPriority", 0x8B68),
    intSetting("TextureCacheSize", 0x8B7C),
    intSetting("DataCacheSize", 0x8B80),
    boolSetting("NoCacheClear", 0x8B90),
    stringSetting("CachePath", 0x9234, kPathChars),
    intSetting("MaxThreads", 0x8B64),
    boolSetting("NotCheckMaxThreads", 0x8B6C),
    boolSetting("NoAffinityMask", 0x8B70),
    intSetting("AffinityShift", 0x8B74),
};

constexpr uint32_t kRecordBytes = sizeof(SettingsRecord);
#define TAVI_CHECK_SECTION(table)                                                                            \
    static_assert(settingsFit(table, kRecordBytes) && settingsDisjoint(table), #table " has a bad row")
TAVI_CHECK_SECTION(kRenderRegion);
TAVI_CHECK_SECTION(kOutput);
TAVI_CHECK_SECTION(kQuality);
TAVI_CHECK_SECTION(kAdaptation);
TAVI_CHECK_SECTION(kSampling);
TAVI_CHECK_SECTION(kNoiseFiltration);
TAVI_CHECK_SECTION(kColors);
TAVI_CHECK_SECTION(kTracing);
TAVI_CHECK_SECTION(kTextures);
TAVI_CHECK_SECTION(kSystem);
#undef TAVI_CHECK_SECTION

// ---- Colors: the spectrum file and the texture channels ----------------------------------------

constexpr int32_t kSegmentsPerChannel = 8;

// wcstod's reading of an attribute, narrowed to f32 without casting a double beyond the float
// range (which has no defined result).
float parseFloatText(const char* text) {
    const double value = XmlParseDouble(text);
    constexpr double kMax = std::numeric_limits<float>::max();
    if (std::isfinite(value) && std::fabs(value) > kMax) {
        // Half an ulp above the largest float: from there on the nearest f32 is infinity.
        const bool infinite = std::fabs(value) >= kMax + std::ldexp(1.0, 103);
        const float big =
            infinite ? std::numeric_limits<float>::infinity() : std::numeric_limits<float>::max();
        return value < 0 ? -big : big;
    }
    return static_cast<float>(value);
}

// The `id` attribute of a list element when it has text and lies in 0..limit-1.
bool readListIndex(pugi::xml_node element, int32_t limit, int32_t* index) {
    pugi::xml_attribute id = element.attribute("id");
    if (!id || id.value()[0] == '\0') return false;
    const int32_t value = id.as_int();
    if (value < 0 || value >= limit) return false;
    *index = value;
    return true;
}

// Attributes of a texture channel segment with the value each takes when missing or empty:
// unlike the codec's splines, an absent attribute does not keep the old value.
constexpr struct {
    const char* name;
    float fallback;
} kChannelSegmentAttributes[] = {{"ts", 0.0f}, {"t1", 0.0f}, {"t2", 1.0f}, {"te", 1.0f},
                                 {"vs", 0.0f}, {"v1", 0.0f}, {"v2", 0.0f}, {"ve", 0.0f}};
static_assert(sizeof kChannelSegmentAttributes / sizeof kChannelSegmentAttributes[0] ==
              sizeof(SplineSegment) / sizeof(float));

void readChannelSegment(pugi::xml_node element, SplineSegment& segment) {
    float values[sizeof(SplineSegment) / sizeof(float)];
    for (size_t i = 0; i < sizeof values / sizeof values[0]; ++i) {
        const char* text = element.attribute(kChannelSegmentAttributes[i].name).value();
        values[i] = text[0] != '\0' ? parseFloatText(text) : kChannelSegmentAttributes[i].fallback;
    }
    segment =
        SplineSegment{values[0], values[1], values[2], values[3], values[4], values[5], values[6], values[7]};
}

void readTextureChannels(pugi::xml_node colors, SettingsRecord& record) {
    pugi::xml_node element = colors.child("TextureChannels");
    if (!element) return;
    int32_t count = record.MaxTextureChannels;
    XmlReadInt(element, "MaxTextureChannels", &count);
    constexpr int32_t kMaxChannels = static_cast<int32_t>(kTextureChannelCount);
    count = count < 0 ? 0 : count > kMaxChannels ? kMaxChannels : count;
    record.MaxTextureChannels = count;

    for (pugi::xml_node channel = element.first_child(); channel; channel = channel.next_sibling()) {
        int32_t id = 0;
        if (channel.type() != pugi::node_element || !XmlNameEqualsNoCase(channel.name(), "Channel")) continue;
        if (!readListIndex(channel, count, &id)) continue;
        SplineSegment* segments = record.TextureChannels[id];
        for (int32_t i = 0; i < kSegmentsPerChannel; ++i) {
            segments[i].ts = 1.0f;
            segments[i].te = 0.0f;
        }
        for (pugi::xml_node segment = channel.first_child(); segment; segment = segment.next_sibling()) {
            int32_t index = 0;
            if (segment.type() != pugi::node_element || !XmlNameEqualsNoCase(segment.name(), "Segment"))
                continue;
            if (readListIndex(segment, kSegmentsPerChannel, &index))
                readChannelSegment(segment, segments[index]);
        }
    }
}

// Only a document that itself asks for the file mode reads the file; a scene that was already in
// file mode keeps its table.
void readSpectrumFile(pugi::xml_node colors, SettingsRecord& record) {
    const char* word = colors.child("XYZtoRGB").attribute("value").value();
    if (XmlFindWord(kXyzToRgbWords, word) != kXyzFromFile) return;
    const std::u16string path = utf8ToUtf16(colors.child("XYZtoRGB_filename").attribute("value").value());
    if (path.empty()) return;
    // A table that can't be read falls back to the first standard observer; the failed read
    // has already zeroed the table.
    if (!ReadSpectrumTable(record.SpectrumTable, path.c_str())) record.XYZtoRGB = 0;
}

void readColorsTail(pugi::xml_node colors, SettingsRecord& record, SettingsPass& pass) {
    readSpectrumFile(colors, record);
    readTextureChannels(colors, record);
    // The scratch byte's value after the channels is not given by the format; start again at 0.
    pass.scratch = 0;
}

// ---- The pass ----------------------------------------------------------------------------------

struct SettingsSection {
    const char* name;
    const SettingField* fields;
    size_t count;
    void (*tail)(pugi::xml_node section, SettingsRecord& record, SettingsPass& pass);
};

template <size_t N>
constexpr SettingsSection section(const char* name, const SettingField (&fields)[N],
                                  void (*tail)(pugi::xml_node, SettingsRecord&, SettingsPass&) = nullptr) {
    return {name, fields, N, tail};
}

// In this order: it is the order of the scratch byte.
const SettingsSection kSections[] = {
    section("RenderRegion", kRenderRegion),
    section("Output", kOutput),
    section("Quality", kQuality),
    section("Adaptation", kAdaptation),
    section("Sampling", kSampling),
    section("NoiseFiltration", kNoiseFiltration),
    section("Colors", kColors, readColorsTail),
    section("Tracing", kTracing),
    section("Textures", kTextures),
    section("System", kSystem),
};

} // namespace

bool ApplySettingsDocument(SettingsRecord* record, const char16_t* path, ITaviNameInterface* names) {
    if (!record) return false;
    pugi::xml_document document;
    pugi::xml_node root;
    if (!XmlOpenDocument(document, path, "TaviSettings", &root)) return false;

    // Without a root every section is absent, and the pass still runs: it sets the bools from the
    // scratch byte, clears the strings and switches AOV off.
    SettingsPass pass;
    pass.names = names;
    uint8_t* bytes = reinterpret_cast<uint8_t*>(record);
    for (const SettingsSection& entry : kSections) {
        pugi::xml_node element = root.child(entry.name);
        readSettingFields(entry.fields, entry.count, element, bytes, sizeof *record, pass);
        if (entry.tail) entry.tail(element, *record, pass);
    }
    ReadToneOperator(root, &record->ToneOperator);
    ReadAovSection(root, record, pass);
    return true;
}

#include "documents/aov_tone_sections.h"

#include "common/unicode.h"
#include "common/wide_format.h"

#include <cstdio>
#include <cstring>

const char* const kToneOperatorWords[] = {"EDITOR", "REINHARD", "ACES", "FILMIC", "DISABLED", nullptr};

namespace {

// ---- ToneOperator ------------------------------------------------------------------------------

// Offsets are within the tone operator block.
constexpr SettingField kToneFields[] = {
    switchSetting("ApplyExposure", 0x00),
    floatSetting("ExposureValue", 0x04),
    switchSetting("ApplyWhiteBalanceByKelvin", 0x08),
    floatSetting("WhiteBalanceByKelvin", 0x0C),
    switchSetting("ApplyGreenMagentaTint", 0x10),
    floatSetting("GreenMagentaTint", 0x14),
    switchSetting("ApplyTintRGB", 0x18),
    colorSetting("TintRGB", 0x1C),
    switchSetting("ApplyVignette", 0x28),
    floatSetting("Vignette", 0x2C),
    switchSetting("ApplyHighlightCompress", 0x30),
    floatSetting("HighlightCompress", 0x34),
    switchSetting("ApplyPrimaryGain", 0x38),
    floatSetting("PrimaryGain", 0x3C),
    switchSetting("ApplyCausticGain", 0x40),
    floatSetting("CausticGain", 0x44),
    switchSetting("ApplyGlow", 0x48),
    floatSetting("GlowThreshold", 0x4C),
    floatSetting("GlowSize", 0x50),
    floatSetting("GlowScale", 0x54),
    floatSetting("GlowChromatic", 0x58),
    switchSetting("ApplyGlare", 0x5C),
    floatSetting("GlareThreshold", 0x60),
    floatSetting("GlareSize", 0x64),
    floatSetting("GlareScale", 0x68),
    floatSetting("GlareBlur", 0x6C),
    floatSetting("GlareChromatic", 0x70),
    intSetting("GlareFromCamera", 0x74),
    intSetting("GlareNrays", 0x78),
    floatSetting("GlareAngle", 0x7C),
    enumSetting("OperatorType", 0x80, kToneOperatorWords),
    floatSetting("ReinhardFactor", 0x84),
    floatSetting("Filmic_toeStrength", 0x88),
    floatSetting("Filmic_toeLength", 0x8C),
    floatSetting("Filmic_shoulderStrength", 0x90),
    floatSetting("Filmic_shoulderLength", 0x94),
    floatSetting("Filmic_shoulderAngle", 0x98),
    floatSetting("Filmic_gamma", 0x9C),
    switchSetting("ApplySaturation", 0xA0),
    floatSetting("Saturation", 0xA4),
    switchSetting("ApplyGamma", 0xA8),
    floatSetting("Gamma", 0xAC),
    switchSetting("ApplyContrast", 0xB0),
    floatSetting("Contrast", 0xB4),
    floatSetting("ContrastPivot", 0xB8),
    switchSetting("ApplyCurvesRGB", 0xBC),
    curveSetting("CurveSplineR", 0xC0),
    curveSetting("CurveSplineG", 0x544),
    curveSetting("CurveSplineB", 0x9C8),
    switchSetting("ApplyLUT", 0xE4C),
    switchSetting("ApplySharpen", 0xE50),
    floatSetting("SharpenAmount", 0xE54),
    floatSetting("SharpenRadius", 0xE58),
    floatSetting("SharpenThreshold", 0xE5C),
    stringSetting("LUTPath", 0xE60, kPathChars),
};
static_assert(settingsFit(kToneFields, sizeof(ToneOperatorRecord)) && settingsDisjoint(kToneFields));
static_assert(0xE60 + kPathChars * 2 == sizeof(ToneOperatorRecord), "LUTPath closes the block");

// ---- AOV -----------------------------------------------------------------------------------------

constexpr const char* const kShareWords[] = {"AUTO", "SAME", "SEPARATE", nullptr};

// Offsets are within the settings record.
constexpr SettingField kAovFields[] = {
    boolSetting("SaveAOV", 0x29B8),
    stringSetting("Path", 0x8BB4, kPathChars),
    stringSetting("Name", 0x8EB4, kNameChars),
    intSetting("NumChannels", 0x29BC),
    enumSetting("ChannelShare", 0x29C0, kShareWords),
    boolSetting("HalfPrecision", 0x29C4),
    boolSetting("ApplyToneOperator", 0x29C8),
    boolSetting("CropOutput", 0x29CC),
};
static_assert(settingsFit(kAovFields, sizeof(SettingsRecord)) && settingsDisjoint(kAovFields));

constexpr const char* const kChannelTypeWords[] = {
    "XYZ",       "RAW",       "ALPHA",        "DEPTH",         "ENV",
    "ALBEDO",    "DIRECT",    "INDIRECT",     "EMISSION",      "NRM",
    "POS",       "TEX0",      "TEX1",         "TEX2",          "TEX3",
    "TEX4",      "TEX5",      "TEX6",         "TEX7",          "RR",
    "RAY_LIMIT", "RAY_COUNT", "CRYPTO_ASSET", "CRYPTO_OBJECT", "CRYPTO_MATERIAL",
    nullptr};

// The element keys of a channel, in reading order; offsets are within the channel entry. These
// bools are bytes and keep the channel's defaults when absent: no scratch byte here.
constexpr SettingField kChannelFields[] = {
    flagSetting("SeparateFile", 0x21C),
    flagSetting("HalfFloat", 0x21D),
    flagSetting("Denoise", 0x21E),
    flagSetting("ToneOperator", 0x220),
    flagSetting("PrimaryPass", 0x22F),
    flagSetting("CausticPass", 0x230),
    flagSetting("Diffuse", 0x221),
    flagSetting("Reflection", 0x222),
    flagSetting("Transmission", 0x223),
    flagSetting("Coat", 0x224),
    flagSetting("SSS", 0x225),
    flagSetting("Volumetric", 0x226),
    flagSetting("Other", 0x227),
    flagSetting("DiffuseDeny", 0x228),
    flagSetting("ReflectionDeny", 0x229),
    flagSetting("TransmissionDeny", 0x22A),
    flagSetting("CoatDeny", 0x22B),
    flagSetting("SSSDeny", 0x22C),
    flagSetting("VolumetricDeny", 0x22D),
    flagSetting("OtherDeny", 0x22E),
    intSetting("MaxCryptomatteSamples", 0x18),
};
static_assert(settingsFit(kChannelFields, sizeof(AovChannel)) && settingsDisjoint(kChannelFields));

constexpr int32_t kDefaultCryptomatteSamples = 6;
// Bits of the named sources in an id mask.
constexpr struct {
    const char* name;
    uint32_t bit;
} kNamedIdBits[] = {{"sky", 29}, {"glow", 30}, {"sun", 31}};
constexpr int kMaskIds = 32;

void setChannelDefaults(AovChannel& channel, int32_t index) {
    std::memset(&channel, 0, sizeof channel);
    channel.MaxCryptomatteSamples = kDefaultCryptomatteSamples;
    copyBounded(channel.name, kNameChars, formatWide(u"default_name_%i", index).c_str());
    channel.Denoise = channel.reserved21F = 1;
    uint8_t* const allowed[] = {&channel.ToneOperator, &channel.Diffuse, &channel.Reflection,
                                &channel.Transmission, &channel.Coat,    &channel.SSS,
                                &channel.Volumetric,   &channel.Other,   &channel.PrimaryPass,
                                &channel.CausticPass};
    for (uint8_t* flag : allowed)
        *flag = 1;
}

void readChannel(pugi::xml_node element, AovChannel& channel, int32_t index, SettingsPass& pass) {
    setChannelDefaults(channel, index);
    pugi::xml_attribute name = element.attribute("name");
    if (name) copyBounded(channel.name, kNameChars, utf8ToUtf16(name.value()).c_str());
    // An unknown or missing word leaves the cleared 0.
    const int32_t type = XmlFindWord(kChannelTypeWords, element.attribute("type").value());
    if (type >= 0) channel.type = static_cast<uint32_t>(type);
    ReadIdMask(element, "IncludeID", &channel.IncludeID);
    ReadIdMask(element, "ExcludeID", &channel.ExcludeID);
    readSettingFields(kChannelFields, element, reinterpret_cast<uint8_t*>(&channel), sizeof channel, pass);
}

} // namespace

void ReadIdMask(pugi::xml_node parent, const char* key, uint32_t* mask) {
    pugi::xml_node element = parent.child(key);
    if (!element) return;
    uint32_t bits = element.attribute("value").as_uint();
    for (int id = 1; id <= kMaskIds; ++id) {
        char attribute[8];
        std::snprintf(attribute, sizeof attribute, "id%i", id);
        if (XmlParseBool(element.attribute(attribute).value())) bits |= 1u << (id - 1);
    }
    for (const auto& named : kNamedIdBits) {
        if (XmlParseBool(element.attribute(named.name).value())) bits |= 1u << named.bit;
    }
    *mask = bits;
}

void ReadToneOperator(pugi::xml_node root, ToneOperatorRecord* block) {
    pugi::xml_node section = root.child("ToneOperator");
    if (!section || !block) return;
    // The tone operator's bools don't take part in the scratch byte: an absent one is 0.
    SettingsPass pass;
    readSettingFields(kToneFields, section, reinterpret_cast<uint8_t*>(block), sizeof *block, pass);
}

void ReadAovSection(pugi::xml_node root, SettingsRecord* record, SettingsPass& pass) {
    pugi::xml_node aov = root.child("AOV");
    readSettingFields(kAovFields, aov, reinterpret_cast<uint8_t*>(record), sizeof *record, pass);
    constexpr int32_t kMaxChannels = static_cast<int32_t>(kAovChannelCount);
    if (record->NumChannels < 0) record->NumChannels = 0;
    if (record->NumChannels > kMaxChannels) record->NumChannels = kMaxChannels;

    pugi::xml_node channels = aov.child("Channels");
    if (!channels) {
        record->SaveAOV = 0;
        record->NumChannels = 0;
        return;
    }
    int32_t counted = 0;
    for (pugi::xml_node child = channels.first_child(); child && counted < kMaxChannels;
         child = child.next_sibling()) {
        if (child.type() != pugi::node_element || !XmlNameEqualsNoCase(child.name(), "Channel")) continue;
        readChannel(child, record->Channels[counted], counted, pass);
        ++counted;
    }
    record->NumChannels = counted;
}

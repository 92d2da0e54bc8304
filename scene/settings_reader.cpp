// The render settings: their defaults, and the first settings chunk read over them.
#include "scene/chunk_scan.h"
#include "scene/record_defaults.h"
#include "scene/scene_readers.h"
#include "scene/scene_text.h"

#include <cstring>

namespace {

void initAovChannel(AovChannel& c) {
    std::memset(&c, 0, sizeof c);
    c.MaxCryptomatteSamples = 6;
    c.Denoise = c.reserved21F = c.ToneOperator = 1;
    c.Diffuse = c.Reflection = c.Transmission = c.Coat = c.SSS = c.Volumetric = c.Other = 1;
    c.PrimaryPass = c.CausticPass = 1;
}

// The curves start as the identity ramp on their first segment.
void initToneCurve(ToneCurve& curve) {
    SplineSegment& first = curve.segments[0];
    first.t2 = first.te = 1.0f;
    first.v2 = first.ve = 1.0f;
}

void initToneOperator(ToneOperatorRecord& t) {
    t.WhiteBalanceByKelvin = 6500.0f;
    t.TintRGB = ColorRGB{1.0f, 1.0f, 1.0f};
    t.HighlightCompress = 0.5f;
    t.PrimaryGain = 1.0f;
    t.CausticGain = 1.0f;
    t.GlowThreshold = 1.0f;
    t.GlowSize = 0.1f;
    t.GlowScale = 1.0f;
    t.GlareThreshold = 1.0f;
    t.GlareSize = 0.05f;
    t.GlareScale = 1.0f;
    t.GlareFromCamera = 1;
    t.GlareNrays = 6;
    t.ReinhardFactor = 5.0f;
    t.Filmic_toeLength = 0.5f;
    t.Filmic_shoulderLength = 0.5f;
    t.Filmic_gamma = 1.0f;
    t.Saturation = 1.0f;
    t.Gamma = 2.2f;
    initToneCurve(t.CurveSplineR);
    initToneCurve(t.CurveSplineG);
    initToneCurve(t.CurveSplineB);
    t.SharpenAmount = 0.5f;
    t.SharpenRadius = 2.0f;
}

void initQualityAndSampling(SettingsRecord& s) {
    s.MinNoise = 20.0f;
    s.AvrNoise = 40.0f;
    s.MaxIterations = 256;
    s.RaysPerPixel = 1;
    s.GI2AA = 1;
    s.NumEmitterSamples = 1;
    s.EnableDisplacement = s.EnableVolumetrics = s.EnableFluorescence = 1;
    s.reserved38 = 2;
    s.reserved3C = 4;
    s.UseImageNoiseAdaptation = 1;
    s.PreferLights = 1;
    s.PathAdaptationVolume = 1;
    s.reserved60 = 1;
    s.NumberAdaptationPhases = 1;
    s.reserved74 = 8;
    s.reserved78 = 5;
    s.reserved7C = 5;
    s.SpreadAA = 1.0f;
    s.RayDiameter = 1.0f;
    s.ReconstructionFilterDiameter = 2.5f;
    s.reserved94 = 1;
    s.AddChaos = -0.177f;
    s.NoiseReductionAmount = -2.0f;
    s.RemoveFireFlies = 0.5f;
    s.ClampAA = -10.0f;
    s.ClampIndirect = 10.0f;
    s.ClampIndirectSpecular = 1.0f;
    s.MinWavelenght = 360.0f;
    s.MaxWavelenght = 830.0f;
    s.RGBtoXYZ = 3;
    s.MaxTextureChannels = 3;
    for (auto& channel : s.TextureChannels)
        setConstantSpline(channel, 8, 0.0f);
}

void initTracingAndTextures(SettingsRecord& s) {
    s.MaxDepth = 10;
    s.RussianRouletteStartDepth = 10;
    s.MaxEventsGI = 2;
    s.MaxVolumetricScatter = 1;
    s.CausticUseParticles = 1;
    s.CausticMaxSpecularsTotal = s.CausticMaxSpecularsR = s.CausticMaxSpecularsT = 10;
    s.CausticMinSpecularsTotal = 1;
    s.CausticMaxGI = 1;
    s.CausticMaxV = 1;
    s.CausticRate = s.CausticRateVol = s.CausticRateInd = 1.0f;
    s.IndirectlyVisibleCaustics = 1;
    s.LowLightThreshold = 0.001f;
    s.BspType = 3;
    s.UseFakedShadows = 1;
    s.EnvironmentWeight = 1.0f;
    s.DeformationIntervals = -5;
    s.BoundingIntervalsPerFrame = -5;
    s.BoundingEstimationSubsampling = -10;
    s.reserved2958 = 0.02f;
    s.SubdivisonVisiblePixels = 1.0f;
    s.SubdivisonBackPixels = 25.0f;
    s.SubdivisonSidePixels = 5.0f;
    s.MetricToSceneUnitsFactor = 1.0f;
    s.FramesPerSecond = 1;
    s.LinearizeTextures = 1;
    s.EnableAutoMipmap = 1;
    s.MipmapFilter = 7;
    s.TextureGamma = 2.2f;
    s.ForceSRGBifNoProfile = 1;
    s.AnisotropyLevel = 2;
    s.reserved29B4 = 1;
    s.ApplyToneOperator = 1;
    s.CropOutput = 1;
}

void initOutputAndSystem(SettingsRecord& s) {
    s.SaveJPEG = 1;
    s.reserved8B5C = 0.25f;
    s.reserved8B60 = 1;
    s.TextureCacheSize = 16384;
    s.DataCacheSize = 8192;
    s.flag8B88 = 1;
    s.reserved8BA4 = 1;
    s.StartingVolumetricMaterial = -1;
}

// Text of the settings image, converted in place in this order. The AOV channel names stand
// between the tone operator's LUT path and the output path; only the channels in use keep them.
void fixSettingsText(SettingsRecord& s) {
    fixRecordText(s.ToneOperator.LUTPath, kPathFieldBytes);
    for (size_t i = 0; i < kAovChannelCount; ++i) {
        AovChannel& channel = s.Channels[i];
        if (static_cast<int64_t>(i) < s.NumChannels) {
            fixRecordText(channel.secondText, kNameFieldBytes);
            fixRecordText(channel.name, kNameFieldBytes);
        } else {
            std::memset(channel.name, 0, sizeof channel.name);
        }
    }
    fixRecordText(s.OutputPath, kPathFieldBytes);
    fixRecordText(s.OutputName, kNameFieldBytes);
    fixRecordText(s.HTXSavePath, kPathFieldBytes);
    fixRecordText(s.Path, kPathFieldBytes);
    fixRecordText(s.Name, kNameFieldBytes);
    fixRecordText(s.TexturePath, kPathFieldBytes);
    fixRecordText(s.CachePath, kPathFieldBytes);
    fixRecordText(s.reserved9534, kPathFieldBytes);
}

} // namespace

void initSettings(SettingsRecord& record) {
    std::memset(&record, 0, sizeof record);
    initQualityAndSampling(record);
    initTracingAndTextures(record);
    for (AovChannel& channel : record.Channels)
        initAovChannel(channel);
    initToneOperator(record.ToneOperator);
    initOutputAndSystem(record);
}

SceneStatus readSettings(SceneFileReader& reader, SettingsRecord& record, uint64_t& offset) {
    RecordChunk chunk = openRecord(reader, ChunkSettings, offset, VersionCheck::BeforeBody);
    if (chunk.status != SceneOk) return chunk.status;
    initSettings(record);
    chunk.body.bytes().overlay(&record, sizeof record);
    fixSettingsText(record);
    return SceneOk;
}

// Records that cross from the scene file to the client and on to the engine.
//
// Each is a wire format: the same bytes in the file, in memory and towards the engine, so every
// offset is pinned by a static_assert and a drifting layout does not compile. Engines built
// elsewhere include this header, so it stays free of everything but standard headers.
#pragma once
#include <cstddef>
#include <cstdint>

// ---- Shared value types ----------------------------------------------------------------------

struct ColorRGB {
    float R, G, B;
};
static_assert(sizeof(ColorRGB) == 12);

// One piece of a scalar spline; a segment whose ts lies above te is switched off.
struct SplineSegment {
    float ts, t1, t2, te;
    float vs, v1, v2, ve;
};
static_assert(sizeof(SplineSegment) == 32);
static_assert(offsetof(SplineSegment, te) == 12 && offsetof(SplineSegment, vs) == 16);
static_assert(offsetof(SplineSegment, ve) == 28);

// One piece of a colour spline; te comes right after ts here, unlike the scalar form.
struct ColorSplineSegment {
    float ts, te;
    float t1[3], t2[3];
    float vs[3], v1[3], v2[3], ve[3];
};
static_assert(sizeof(ColorSplineSegment) == 80);
static_assert(offsetof(ColorSplineSegment, te) == 4 && offsetof(ColorSplineSegment, t1) == 8);
static_assert(offsetof(ColorSplineSegment, t2) == 20 && offsetof(ColorSplineSegment, vs) == 32);
static_assert(offsetof(ColorSplineSegment, v1) == 44 && offsetof(ColorSplineSegment, v2) == 56);
static_assert(offsetof(ColorSplineSegment, ve) == 68);

constexpr size_t kNameChars = 64;
constexpr size_t kPathChars = 384;
// A name travels in the file as narrow text in a field of this many bytes.
constexpr size_t kNameFieldBytes = 128;
constexpr size_t kPathFieldBytes = kPathChars * sizeof(char16_t);

// ---- Textures ----------------------------------------------------------------------------------

// A texture that lives in an image file.
struct TextureFileRecord {
    char16_t path[kPathChars];
    char16_t name[kNameChars];
    uint32_t textureParamA;
    uint32_t textureParamB;
    int32_t id;
};
static_assert(offsetof(TextureFileRecord, name) == 768 && offsetof(TextureFileRecord, id) == 904);

// A texture whose pixels travel in the scene file; the record owns `pixels` (a pool block).
struct TextureDataRecord {
    char16_t name[kNameChars];
    uint32_t textureParamA;
    uint32_t textureParamB;
    int32_t width;
    int32_t height;
    int32_t id;
    uint32_t textureParamC;
    int32_t pixelType;
    uint8_t* pixels;
};
static_assert(offsetof(TextureDataRecord, width) == 136 && offsetof(TextureDataRecord, pixelType) == 152);
static_assert(offsetof(TextureDataRecord, pixels) == 160 && sizeof(TextureDataRecord) == 168);

// ---- Texture maps and materials ----------------------------------------------------------------

// The head is common to all types; what follows depends on `type` and is laid out by the
// type's field table.
struct alignas(8) TexMapRecord {
    int32_t type;
    int32_t id;
    char16_t Name[kNameChars];
    uint8_t typeData[0x19A8 - 0x88];
};
static_assert(sizeof(TexMapRecord) == 0x19A8);
static_assert(offsetof(TexMapRecord, id) == 4 && offsetof(TexMapRecord, Name) == 8);

struct alignas(8) MaterialRecord {
    int32_t type;
    int32_t id;
    int32_t AovID;
    char16_t Name[kNameChars];
    uint8_t typeData[0x3350 - 0x8C];
};
static_assert(sizeof(MaterialRecord) == 0x3350);
static_assert(offsetof(MaterialRecord, AovID) == 8 && offsetof(MaterialRecord, Name) == 12);

// The volumetric material (type 25): a flag byte that says a volume cache chunk follows, and
// the slot of the cache object, which lies past the end of the type's file image.
constexpr int32_t kVolumeMaterialType = 25;
constexpr size_t kVolumeCacheFlagOffset = 0x195D;
constexpr size_t kVolumeCacheOffset = 0x1960;
constexpr size_t kVolumeTextOffsets[9] = {0xB50, 0xC50, 0xD50, 0xE50, 0xF50, 0x1050, 0x1150, 0x1250, 0x1350};
static_assert(kVolumeCacheOffset % alignof(void*) == 0 && kVolumeCacheOffset + sizeof(void*) <= 0x3350);
static_assert(kVolumeTextOffsets[8] + kNameFieldBytes <= kVolumeCacheFlagOffset);

// ---- Render settings -------------------------------------------------------------------------

// One of the three tone curves: 32 segments, then data the engine derives from them.
struct ToneCurve {
    SplineSegment segments[32];
    uint8_t derived[0x84];
};
static_assert(sizeof(ToneCurve) == 0x484);

struct ToneOperatorRecord {
    uint32_t ApplyExposure;
    float ExposureValue;
    uint32_t ApplyWhiteBalanceByKelvin;
    float WhiteBalanceByKelvin;
    uint32_t ApplyGreenMagentaTint;
    float GreenMagentaTint;
    uint32_t ApplyTintRGB;
    ColorRGB TintRGB;
    uint32_t ApplyVignette;
    float Vignette;
    uint32_t ApplyHighlightCompress;
    float HighlightCompress;
    uint32_t ApplyPrimaryGain;
    float PrimaryGain;
    uint32_t ApplyCausticGain;
    float CausticGain;
    uint32_t ApplyGlow;
    float GlowThreshold, GlowSize, GlowScale, GlowChromatic;
    uint32_t ApplyGlare;
    float GlareThreshold, GlareSize, GlareScale, GlareBlur, GlareChromatic;
    int32_t GlareFromCamera;
    int32_t GlareNrays;
    float GlareAngle;
    uint32_t OperatorType; // 0 EDITOR, 1 REINHARD, 2 ACES, 3 FILMIC, 4 DISABLED
    float ReinhardFactor;
    float Filmic_toeStrength, Filmic_toeLength;
    float Filmic_shoulderStrength, Filmic_shoulderLength, Filmic_shoulderAngle;
    float Filmic_gamma;
    uint32_t ApplySaturation;
    float Saturation;
    uint32_t ApplyGamma;
    float Gamma;
    uint32_t ApplyContrast;
    float Contrast, ContrastPivot;
    uint32_t ApplyCurvesRGB;
    ToneCurve CurveSplineR, CurveSplineG, CurveSplineB;
    uint32_t ApplyLUT;
    uint32_t ApplySharpen;
    float SharpenAmount, SharpenRadius, SharpenThreshold;
    char16_t LUTPath[kPathChars];
};
static_assert(offsetof(ToneOperatorRecord, WhiteBalanceByKelvin) == 0x0C);
static_assert(offsetof(ToneOperatorRecord, TintRGB) == 0x1C &&
              offsetof(ToneOperatorRecord, Vignette) == 0x2C);
static_assert(offsetof(ToneOperatorRecord, HighlightCompress) == 0x34);
static_assert(offsetof(ToneOperatorRecord, PrimaryGain) == 0x3C &&
              offsetof(ToneOperatorRecord, CausticGain) == 0x44);
static_assert(offsetof(ToneOperatorRecord, GlowThreshold) == 0x4C &&
              offsetof(ToneOperatorRecord, GlowScale) == 0x54);
static_assert(offsetof(ToneOperatorRecord, GlareThreshold) == 0x60 &&
              offsetof(ToneOperatorRecord, GlareScale) == 0x68);
static_assert(offsetof(ToneOperatorRecord, GlareFromCamera) == 0x74 &&
              offsetof(ToneOperatorRecord, GlareNrays) == 0x78);
static_assert(offsetof(ToneOperatorRecord, OperatorType) == 0x80 &&
              offsetof(ToneOperatorRecord, ReinhardFactor) == 0x84);
static_assert(offsetof(ToneOperatorRecord, Filmic_toeLength) == 0x8C);
static_assert(offsetof(ToneOperatorRecord, Filmic_shoulderLength) == 0x94);
static_assert(offsetof(ToneOperatorRecord, Filmic_gamma) == 0x9C &&
              offsetof(ToneOperatorRecord, Saturation) == 0xA4);
static_assert(offsetof(ToneOperatorRecord, Gamma) == 0xAC &&
              offsetof(ToneOperatorRecord, ContrastPivot) == 0xB8);
static_assert(offsetof(ToneOperatorRecord, CurveSplineR) == 0xC0 &&
              offsetof(ToneOperatorRecord, CurveSplineG) == 0x544);
static_assert(offsetof(ToneOperatorRecord, CurveSplineB) == 0x9C8 &&
              offsetof(ToneOperatorRecord, ApplyLUT) == 0xE4C);
static_assert(offsetof(ToneOperatorRecord, SharpenAmount) == 0xE54);
static_assert(offsetof(ToneOperatorRecord, SharpenRadius) == 0xE58 &&
              offsetof(ToneOperatorRecord, LUTPath) == 0xE60);
static_assert(sizeof(ToneOperatorRecord) == 0x1160);

// One extra output channel.
struct AovChannel {
    uint8_t reserved00[12];
    uint32_t type;
    uint32_t IncludeID;
    uint32_t ExcludeID;
    int32_t MaxCryptomatteSamples;
    char16_t name[kNameChars];
    uint8_t reserved9C[0x80];
    char16_t secondText[kNameChars]; // converted with the name, no document key
    uint8_t reserved19C[0x80];
    uint8_t SeparateFile, HalfFloat, Denoise, reserved21F;
    uint8_t ToneOperator, Diffuse, Reflection, Transmission, Coat, SSS, Volumetric, Other;
    uint8_t DiffuseDeny, ReflectionDeny, TransmissionDeny, CoatDeny, SSSDeny, VolumetricDeny, OtherDeny;
    uint8_t PrimaryPass, CausticPass;
    uint8_t reserved231[3];
};
static_assert(offsetof(AovChannel, type) == 0x0C && offsetof(AovChannel, MaxCryptomatteSamples) == 0x18);
static_assert(offsetof(AovChannel, name) == 0x1C && offsetof(AovChannel, secondText) == 0x11C);
static_assert(offsetof(AovChannel, SeparateFile) == 0x21C && offsetof(AovChannel, Denoise) == 0x21E);
static_assert(offsetof(AovChannel, ToneOperator) == 0x220 && offsetof(AovChannel, Other) == 0x227);
static_assert(offsetof(AovChannel, DiffuseDeny) == 0x228 && offsetof(AovChannel, OtherDeny) == 0x22E);
static_assert(offsetof(AovChannel, PrimaryPass) == 0x22F && offsetof(AovChannel, CausticPass) == 0x230);
static_assert(sizeof(AovChannel) == 0x234);

constexpr size_t kAovChannelCount = 32;
constexpr size_t kTextureChannelCount = 8;
constexpr size_t kSpectrumEntries = 511;

// Field names are the keys of the settings document, letter for letter.
struct SettingsRecord {
    // Quality
    float MinNoise, AvrNoise;
    int32_t MaxIterations, MaxTime, RaysPerPixel, GI2AA, NumEmitterSamples;
    uint32_t EnableMotionBlur, EnableDOF, EnableSpectralMode, EnableDisplacement;
    uint32_t EnableVolumetrics, EnableFluorescence, EnableCaustics;
    int32_t reserved38, reserved3C;
    // Adaptation
    uint32_t UseTimeAdaptation, UseSpectrumAdaptation;
    int32_t UseImageNoiseAdaptation;
    uint32_t PreferLights, EmitterAdaptation;
    int32_t EmitterAdaptationGB;
    uint32_t PathAdaptation, PathAdaptationVolume;
    int32_t reserved60;
    int32_t NumberAdaptationPhases, PathAdaptationGB, PathAdaptationVolumeGB;
    int32_t reserved70, reserved74, reserved78, reserved7C;
    // Sampling
    float SpreadAA, RayDiameter;
    uint32_t ReconstructionFilter;
    float ReconstructionFilterDiameter;
    uint32_t UseReconstructionSubKernels;
    int32_t reserved94;
    uint32_t EnableBlueNoiseTail;
    float AddChaos;
    uint32_t BestBumpFilter, LockSamplingPattern;
    // NoiseFiltration
    uint32_t NoiseFilterType;
    float NoiseReductionAmount, RemoveFireFlies, ClampAA, ClampIndirect, ClampIndirectSpecular;
    // Colors
    float MinWavelenght, MaxWavelenght;
    uint32_t RGBtoXYZ;
    int32_t MaxTextureChannels;
    SplineSegment TextureChannels[kTextureChannelCount][8];
    uint32_t XYZtoRGB;
    float SpectrumTable[kSpectrumEntries][4]; // filled from XYZtoRGB_filename
    // Tracing
    uint32_t Integrator;
    int32_t MaxDepth, RussianRouletteStartDepth, MaxEventsGI, MaxVolumetricScatter, MaxDepthSDS;
    uint32_t CausticUseMetropolis, CausticUseParticles;
    int32_t CausticMaxSpecularsTotal, CausticMaxSpecularsR, CausticMaxSpecularsT;
    int32_t CausticMinSpecularsTotal, CausticMinSpecularsR, CausticMinSpecularsT;
    int32_t CausticMaxGI, CausticMaxV;
    float CausticRate, CausticRateVol, CausticRateInd;
    uint32_t IndirectlyVisibleCaustics, DetectHairsAndParticles, DetectDOF, DetectPureRT;
    float LowLightThreshold, MinPointLightDiameter;
    uint32_t PreciseRayTriangleIntersection, BspType, BetterBspQuality, UseFakedShadows;
    float EnvironmentWeight;
    uint32_t PreferPreciseMaterials, ForceStartingMedium, StartingMediumDependsOnPixel;
    int32_t DeformationIntervals, BoundingIntervalsPerFrame, BoundingEstimationSubsampling;
    float EnlargeBoundingBox, reserved2958;
    float SubdivisonVisiblePixels, SubdivisonBackPixels, SubdivisonSidePixels;
    float MetricToSceneUnitsFactor;
    int32_t FrameNumber, FramesPerSecond; // no document keys; set from the command line
    // Textures
    uint32_t LinearizeTextures, TextureFilter, EnableAutoMipmap;
    int32_t FastMipmapGenerationIfLargerThan;
    uint32_t MipmapFilter;
    float TextureGamma;
    uint32_t ForceSRGBifNoProfile;
    int32_t AnisotropyLevel;
    uint8_t reserved2994[0x20];
    int32_t reserved29B4;
    // AOV
    uint32_t SaveAOV;
    int32_t NumChannels;
    uint32_t ChannelShare, HalfPrecision, ApplyToneOperator, CropOutput;
    AovChannel Channels[kAovChannelCount];
    ToneOperatorRecord ToneOperator;
    uint8_t reserved81B0[0x300];
    // RenderRegion
    int32_t ImageSizeX, ImageSizeY, RegionX, RegionY, RegionSizeX, RegionSizeY;
    // Output
    char16_t OutputPath[kPathChars];
    char16_t OutputName[kNameChars];
    char16_t HTXSavePath[kPathChars];
    uint32_t SaveJPEG, SaveTIFF, SaveEXR, SaveHTXtextures;
    int32_t reserved8B58;
    float reserved8B5C;
    int32_t reserved8B60;
    // System and the rest of Textures
    int32_t MaxThreads, LowPriority;
    uint32_t NotCheckMaxThreads, NoAffinityMask;
    int32_t AffinityShift;
    uint32_t LinearizeAtRendering;
    int32_t TextureCacheSize, DataCacheSize;
    uint32_t PagedTextureMode;
    uint32_t flag8B88; // no document key; the loader clears it
    int32_t reserved8B8C;
    uint32_t NoCacheClear;
    int32_t reserved8B94;
    uint32_t flag8B98; // no document key; the loader sets it
    int32_t reserved8B9C;
    uint32_t flag8BA0; // no document key; the loader clears it
    int32_t reserved8BA4;
    uint8_t reserved8BA8[12];
    char16_t Path[kPathChars]; // AOV output folder
    char16_t Name[kNameChars]; // AOV output name
    char16_t TexturePath[kPathChars];
    char16_t CachePath[kPathChars];
    char16_t reserved9534[kPathChars];
    uint8_t reserved9834[0x10];
    int32_t StartingVolumetricMaterial;
};
static_assert(offsetof(SettingsRecord, MaxIterations) == 0x8 &&
              offsetof(SettingsRecord, RaysPerPixel) == 0x10);
static_assert(offsetof(SettingsRecord, NumEmitterSamples) == 0x18 &&
              offsetof(SettingsRecord, EnableCaustics) == 0x34);
static_assert(offsetof(SettingsRecord, reserved38) == 0x38 &&
              offsetof(SettingsRecord, UseTimeAdaptation) == 0x40);
static_assert(offsetof(SettingsRecord, UseImageNoiseAdaptation) == 0x48);
static_assert(offsetof(SettingsRecord, EmitterAdaptationGB) == 0x54);
static_assert(offsetof(SettingsRecord, PathAdaptationVolume) == 0x5C &&
              offsetof(SettingsRecord, reserved60) == 0x60);
static_assert(offsetof(SettingsRecord, NumberAdaptationPhases) == 0x64);
static_assert(offsetof(SettingsRecord, PathAdaptationGB) == 0x68);
static_assert(offsetof(SettingsRecord, PathAdaptationVolumeGB) == 0x6C &&
              offsetof(SettingsRecord, reserved74) == 0x74);
static_assert(offsetof(SettingsRecord, SpreadAA) == 0x80 &&
              offsetof(SettingsRecord, ReconstructionFilter) == 0x88);
static_assert(offsetof(SettingsRecord, reserved94) == 0x94 && offsetof(SettingsRecord, AddChaos) == 0x9C);
static_assert(offsetof(SettingsRecord, LockSamplingPattern) == 0xA4 &&
              offsetof(SettingsRecord, NoiseFilterType) == 0xA8);
static_assert(offsetof(SettingsRecord, ClampIndirectSpecular) == 0xBC);
static_assert(offsetof(SettingsRecord, MinWavelenght) == 0xC0 && offsetof(SettingsRecord, RGBtoXYZ) == 0xC8);
static_assert(offsetof(SettingsRecord, MaxTextureChannels) == 0xCC &&
              offsetof(SettingsRecord, TextureChannels) == 0xD0);
static_assert(offsetof(SettingsRecord, XYZtoRGB) == 0x8D0 &&
              offsetof(SettingsRecord, SpectrumTable) == 0x8D4);
static_assert(offsetof(SettingsRecord, Integrator) == 0x28C4 && offsetof(SettingsRecord, MaxDepth) == 0x28C8);
static_assert(offsetof(SettingsRecord, MaxDepthSDS) == 0x28D8 &&
              offsetof(SettingsRecord, CausticUseParticles) == 0x28E0);
static_assert(offsetof(SettingsRecord, CausticMaxSpecularsTotal) == 0x28E4);
static_assert(offsetof(SettingsRecord, CausticMinSpecularsTotal) == 0x28F0);
static_assert(offsetof(SettingsRecord, CausticMinSpecularsT) == 0x28F8 &&
              offsetof(SettingsRecord, CausticMaxGI) == 0x28FC);
static_assert(offsetof(SettingsRecord, CausticRate) == 0x2904 &&
              offsetof(SettingsRecord, CausticRateInd) == 0x290C);
static_assert(offsetof(SettingsRecord, IndirectlyVisibleCaustics) == 0x2910);
static_assert(offsetof(SettingsRecord, DetectPureRT) == 0x291C &&
              offsetof(SettingsRecord, LowLightThreshold) == 0x2920);
static_assert(offsetof(SettingsRecord, PreciseRayTriangleIntersection) == 0x2928);
static_assert(offsetof(SettingsRecord, BspType) == 0x292C &&
              offsetof(SettingsRecord, UseFakedShadows) == 0x2934);
static_assert(offsetof(SettingsRecord, EnvironmentWeight) == 0x2938);
static_assert(offsetof(SettingsRecord, StartingMediumDependsOnPixel) == 0x2944);
static_assert(offsetof(SettingsRecord, DeformationIntervals) == 0x2948);
static_assert(offsetof(SettingsRecord, BoundingEstimationSubsampling) == 0x2950);
static_assert(offsetof(SettingsRecord, EnlargeBoundingBox) == 0x2954 &&
              offsetof(SettingsRecord, reserved2958) == 0x2958);
static_assert(offsetof(SettingsRecord, SubdivisonVisiblePixels) == 0x295C);
static_assert(offsetof(SettingsRecord, MetricToSceneUnitsFactor) == 0x2968);
static_assert(offsetof(SettingsRecord, FrameNumber) == 0x296C &&
              offsetof(SettingsRecord, FramesPerSecond) == 0x2970);
static_assert(offsetof(SettingsRecord, LinearizeTextures) == 0x2974 &&
              offsetof(SettingsRecord, TextureFilter) == 0x2978);
static_assert(offsetof(SettingsRecord, FastMipmapGenerationIfLargerThan) == 0x2980);
static_assert(offsetof(SettingsRecord, MipmapFilter) == 0x2984 &&
              offsetof(SettingsRecord, TextureGamma) == 0x2988);
static_assert(offsetof(SettingsRecord, AnisotropyLevel) == 0x2990 &&
              offsetof(SettingsRecord, reserved29B4) == 0x29B4);
static_assert(offsetof(SettingsRecord, SaveAOV) == 0x29B8 && offsetof(SettingsRecord, NumChannels) == 0x29BC);
static_assert(offsetof(SettingsRecord, ChannelShare) == 0x29C0 &&
              offsetof(SettingsRecord, CropOutput) == 0x29CC);
static_assert(offsetof(SettingsRecord, Channels) == 0x29D0 &&
              offsetof(SettingsRecord, ToneOperator) == 0x7050);
static_assert(offsetof(SettingsRecord, ToneOperator) + offsetof(ToneOperatorRecord, OperatorType) == 0x70D0);
static_assert(offsetof(SettingsRecord, ToneOperator) + offsetof(ToneOperatorRecord, LUTPath) == 0x7EB0);
static_assert(offsetof(SettingsRecord, ImageSizeX) == 0x84B0 &&
              offsetof(SettingsRecord, RegionSizeY) == 0x84C4);
static_assert(offsetof(SettingsRecord, OutputPath) == 0x84C8 &&
              offsetof(SettingsRecord, OutputName) == 0x87C8);
static_assert(offsetof(SettingsRecord, HTXSavePath) == 0x8848 &&
              offsetof(SettingsRecord, SaveJPEG) == 0x8B48);
static_assert(offsetof(SettingsRecord, SaveEXR) == 0x8B50 &&
              offsetof(SettingsRecord, reserved8B5C) == 0x8B5C);
static_assert(offsetof(SettingsRecord, reserved8B60) == 0x8B60 &&
              offsetof(SettingsRecord, MaxThreads) == 0x8B64);
static_assert(offsetof(SettingsRecord, LowPriority) == 0x8B68 &&
              offsetof(SettingsRecord, NotCheckMaxThreads) == 0x8B6C);
static_assert(offsetof(SettingsRecord, NoAffinityMask) == 0x8B70 &&
              offsetof(SettingsRecord, AffinityShift) == 0x8B74);
static_assert(offsetof(SettingsRecord, LinearizeAtRendering) == 0x8B78);
static_assert(offsetof(SettingsRecord, TextureCacheSize) == 0x8B7C &&
              offsetof(SettingsRecord, DataCacheSize) == 0x8B80);
static_assert(offsetof(SettingsRecord, PagedTextureMode) == 0x8B84 &&
              offsetof(SettingsRecord, flag8B88) == 0x8B88);
static_assert(offsetof(SettingsRecord, NoCacheClear) == 0x8B90 &&
              offsetof(SettingsRecord, flag8B98) == 0x8B98);
static_assert(offsetof(SettingsRecord, flag8BA0) == 0x8BA0 &&
              offsetof(SettingsRecord, reserved8BA4) == 0x8BA4);
static_assert(offsetof(SettingsRecord, Path) == 0x8BB4 && offsetof(SettingsRecord, Name) == 0x8EB4);
static_assert(offsetof(SettingsRecord, TexturePath) == 0x8F34 &&
              offsetof(SettingsRecord, CachePath) == 0x9234);
static_assert(offsetof(SettingsRecord, reserved9534) == 0x9534);
static_assert(offsetof(SettingsRecord, StartingVolumetricMaterial) == 0x9844);
static_assert(sizeof(SettingsRecord) == 0x9848);

// ---- Cameras -------------------------------------------------------------------------------

// The camera record: a base shared by every projection, then the projection's own fields,
// which the projections lay out over the same bytes.
struct CameraRecord {
    int32_t type; // 1 perspective, 2 fish-eye, 3 ortho, 4 cylinder, 5 spherical
    float SensorSize, Aspect;
    SplineSegment FocusDistance[4];
    float NearPlane, FarPlane;
    float TimeS, TimeE;
    SplineSegment Shape[8];
    float ShutterTailS, ShutterTailE;
    int32_t ApertureMap; // texmap id of the aperture, -1 for none
    int32_t NumBlades;
    SplineSegment Fnumber[4];
    float BladeCurvature, Rotation, AspectRatio, CenterBias, CatEyeDiameter, CatEyeDistance;
    float Distortion;
    int32_t DistortionMap; // texmap id, -1 for none
    float WhiteBalanceK;
    ColorRGB WhiteBalanceRGB;
    ColorRGB BackgroundColor;
    float Exposure, EV100;
    uint32_t StereoType;
    float StereoBase;
    SplineSegment reserved632[4];
    uint8_t Normalize, UseCustomShutter;
    uint8_t reserved762[2];
    uint8_t projectionData[1160 - 764];
};
static_assert(offsetof(CameraRecord, SensorSize) == 4 && offsetof(CameraRecord, Aspect) == 8);
static_assert(offsetof(CameraRecord, FocusDistance) == 12 && offsetof(CameraRecord, NearPlane) == 140);
static_assert(offsetof(CameraRecord, TimeS) == 148 && offsetof(CameraRecord, TimeE) == 152);
static_assert(offsetof(CameraRecord, Shape) == 156 && offsetof(CameraRecord, ShutterTailS) == 412);
static_assert(offsetof(CameraRecord, ShutterTailE) == 416 && offsetof(CameraRecord, ApertureMap) == 420);
static_assert(offsetof(CameraRecord, NumBlades) == 424 && offsetof(CameraRecord, Fnumber) == 428);
static_assert(offsetof(CameraRecord, BladeCurvature) == 556 && offsetof(CameraRecord, CatEyeDistance) == 576);
static_assert(offsetof(CameraRecord, Distortion) == 580 && offsetof(CameraRecord, DistortionMap) == 584);
static_assert(offsetof(CameraRecord, WhiteBalanceK) == 588 && offsetof(CameraRecord, WhiteBalanceRGB) == 592);
static_assert(offsetof(CameraRecord, BackgroundColor) == 604 && offsetof(CameraRecord, Exposure) == 616);
static_assert(offsetof(CameraRecord, EV100) == 620 && offsetof(CameraRecord, StereoType) == 624);
static_assert(offsetof(CameraRecord, StereoBase) == 628 && offsetof(CameraRecord, reserved632) == 632);
static_assert(offsetof(CameraRecord, Normalize) == 760 && offsetof(CameraRecord, UseCustomShutter) == 761);
static_assert(offsetof(CameraRecord, projectionData) == 764 && sizeof(CameraRecord) == 1160);

// ---- Lights ------------------------------------------------------------------------------------

// The light record. Only the engine gives its fields a meaning; they are named by offset.
struct LightRecord {
    int32_t type;
    int32_t value4;
    SplineSegment spline8[4];
    ColorSplineSegment colorSpline136[4];
    ColorSplineSegment colorSpline456[4];
    SplineSegment spline776[4];
    SplineSegment spline904[4];
    SplineSegment spline1032[4];
    SplineSegment spline1160[4];
    SplineSegment spline1288[4];
    SplineSegment spline1416[4];
    int32_t texMap; // texmap id, -1 for none
    float value1548;
    uint32_t reserved1552;
    float values1556[11];
    uint32_t reserved1600;
    uint8_t flags1604[12];
    uint8_t typeData[0xF00 - 1616];
};
static_assert(offsetof(LightRecord, spline8) == 8 && offsetof(LightRecord, colorSpline136) == 136);
static_assert(offsetof(LightRecord, colorSpline456) == 456 && offsetof(LightRecord, spline776) == 776);
static_assert(offsetof(LightRecord, spline904) == 904 && offsetof(LightRecord, spline1032) == 1032);
static_assert(offsetof(LightRecord, spline1160) == 1160 && offsetof(LightRecord, spline1288) == 1288);
static_assert(offsetof(LightRecord, spline1416) == 1416 && offsetof(LightRecord, texMap) == 1544);
static_assert(offsetof(LightRecord, value1548) == 1548 && offsetof(LightRecord, values1556) == 1556);
static_assert(offsetof(LightRecord, flags1604) == 1604 && offsetof(LightRecord, typeData) == 1616);
static_assert(sizeof(LightRecord) == 0xF00);

// Light type 4 carries a second texmap reference at the start of its own fields.
constexpr size_t kLightSecondTexMapOffset = 1616;
static_assert(kLightSecondTexMapOffset == offsetof(LightRecord, typeData));

// ---- Animation keys ----------------------------------------------------------------------------

// One key of an animation track: 36 bytes in the file, 64 in memory. Only the engine
// interprets the words.
struct TrackKey {
    uint32_t words[16];
};
static_assert(sizeof(TrackKey) == 64);

constexpr size_t kTrackKeyFileBytes = 36;
// Byte offset in memory of each 32-bit word of a key in the file, in file order.
constexpr size_t kTrackKeyMemoryOffsets[kTrackKeyFileBytes / 4] = {0,    4,    0x10, 0x14, 0x18,
                                                                   0x1C, 0x20, 0x24, 8};

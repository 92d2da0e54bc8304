// The layouts of the noise and ocean maps and of the gradients, falloff, occlusion, wireframe,
// colour and sun maps, as their tables give them.
#include "tests/texmap_families/texmap_rows.h"

namespace texmap_test {

std::vector<std::string> noiseTypeWords() {
    return {"BRICK", "FRACTAL", "TURBULENCE"};
}

namespace {

// ---- AO's model lists --------------------------------------------------------------------------

struct ModelSlot {
    uint32_t list;
    uint32_t slot;
    uint64_t handle;
};
const ModelSlot kModels[] = {{0x168, 0, 11}, {0x168, 5, 12}, {0x168, 63, 13}, {0x368, 7, 14}};

void fillModels(uint8_t* record, RecordingNames*) {
    for (const ModelSlot& model : kModels)
        std::memcpy(record + model.list + 8 * model.slot, &model.handle, 8);
}

// The walk has no names for models, so a list comes back with its places taken by the handle
// of the empty name.
void modelsAfterRoundTrip(uint8_t* record) {
    for (const ModelSlot& model : kModels)
        std::memcpy(record + model.list + 8 * model.slot, &kNoModel, 8);
}

void missingModels(uint8_t* record) {
    std::memset(record + 0x168, 0, 0x400);
}

Layout aoLayout() {
    Layout layout{22,
                  "AO",
                  false,
                  0x98F,
                  {rowEnum("Type", 0x158, {"NOFILTER", "EXCLUDE_SAME", "EXCLUDE_ALL_BUT_SAME", "BY_LISTS"}),
                   rowBool("TraceInside", 0x988),
                   rowBool("traceOutside", 0x989),
                   rowMap("MapOcclude", 0x108),
                   rowFloat("WeightOcclude", 0x13C),
                   rowColor("ColorOcclude", 0x118),
                   rowMap("MapUnocclude", 0x10C),
                   rowFloat("WeightUnocclude", 0x140),
                   rowColor("ColorUnocclude", 0x124),
                   rowMap("MapInner", 0x110),
                   rowFloat("WeightInner", 0x144),
                   rowColor("ColorInner", 0x130),
                   rowFloat("Gamma", 0x150),
                   rowInt("NumSamples", 0x154),
                   rowFloat("Directionality", 0x14C),
                   rowMap("MapMaxTraceDistance", 0x114),
                   rowFloat("MaxTraceDistance", 0x148),
                   rowBool("bTarget", 0x98A),
                   rowBool("bTargetRelative", 0x98D),
                   rowBool("bCurvatureMode", 0x98E),
                   rowColor("TargetDirection", 0x15C),
                   rowBool("UseInclude", 0x98B),
                   rowBool("UseExclude", 0x98C),
                   rowCustom("IncludeList", 0x168, 0x200),
                   rowCustom("ExcludeList", 0x368, 0x200),
                   rowOutput("ColorOutput", 0x568)},
                  {"MapOcclude", "MapUnocclude", "MapInner", "MapMaxTraceDistance", "ModelName", "ModelName",
                   "ModelName", "ModelName"}};
    layout.fillCustom = fillModels;
    layout.afterRoundTrip = modelsAfterRoundTrip;
    layout.missingCustom = missingModels;
    return layout;
}

} // namespace

std::vector<Layout> generatorLayouts() {
    std::vector<Layout> layouts;
    layouts.push_back(
        {8,
         "NOISE",
         true,
         0x636,
         {rowMap("Map0", 0x5B8),
          rowMap("Map1", 0x5BC),
          rowColor("Color0", 0x5C0),
          rowColor("Color1", 0x5CC),
          rowEnum("NoiseType", 0x5D8, noiseTypeWords()),
          rowInt("DimensionsIn", 0x5DC),
          rowInt("DimensionsOut", 0x5E0),
          rowInt("Levels", 0x5E4),
          rowInt("Seed", 0x5E8),
          rowBool("Range01", 0x634),
          rowFloat("Phase", 0x5EC),
          rowMap("PhaseMap", 0x5F0),
          rowBool("FrameInterpolation", 0x635),
          rowFloat("ThresholdLow", 0x5F4),
          rowFloat("ThresholdHigh", 0x5F8),
          rowMap("ThresholdLowMap", 0x5FC),
          rowMap("ThresholdHighMap", 0x600),
          rowColor("Size", 0x604),
          rowMap("SizeMap", 0x610),
          rowFloat("Amplitude", 0x614),
          rowMap("AmplitudeMap", 0x618),
          rowFloat("Gain", 0x61C),
          rowMap("GainMap", 0x620),
          rowFloat("Lacunarity", 0x624),
          rowMap("LacunarityMap", 0x628),
          rowFloat("Distortion", 0x62C),
          rowMap("DistortionMap", 0x630)},
         {"Map0", "Map1", "PhaseMap", "ThresholdLowMap", "ThresholdHighMap", "SizeMap", "AmplitudeMap", "GainMap",
          "LacunarityMap", "DistortionMap"}});
    layouts.push_back({18,
                       "OCEANSURFACE",
                       true,
                       0x6EE,
                       {rowFloat("WindDirection", 0x5BC), rowFloat("WindSpeed", 0x5C0),
                        rowFloat("WindDispersion", 0x5C4), rowFloat("TimeStart", 0x5C8),
                        rowFloat("TimeScale", 0x5CC), rowFloat("Choppy", 0x5D0), rowFloat("SpectrumScale", 0x5D4),
                        rowFloat("Balance", 0x5DC), rowFloat("Anisotropy", 0x5D8), rowFloat("Gamma", 0x5E0),
                        rowInt("Bits", 0x5E4), rowInt("Seed", 0x5E8), rowBool("3D", 0x6EC),
                        rowBool("HalfFloat", 0x6ED), rowSpline("SpectrumCurve", 0x5EC, 8)},
                       {}});
    layouts.push_back({13,
                       "COLOR",
                       true,
                       0x5FF,
                       {rowEnum("Type", 0x5F4,
                                {"COLOR", "KELVIN", "UVW", "INSTANCE_COLOR", "INSTANCE_UVW", "RANDOM", "TIME",
                                 "NORMAL"}),
                        rowColorEx("Color", 0x5B8), rowFloat("Kelvin", 0x5D8), rowMap("MapKelvin", 0x5DC),
                        rowBool("KelvinNormalize", 0x5FB), rowFloat("Intensity", 0x5E0),
                        rowMap("MapIntensity", 0x5E4), rowMap("MapScatter", 0x5E8), rowInt("IndexUVW", 0x5EC),
                        rowInt("Seed", 0x5F0), rowBool("sRGB", 0x5F8), rowBool("ApplyIntensityToAlpha", 0x5F9),
                        rowBool("PerChannel", 0x5FA), rowBool("UseInstance", 0x5FC), rowBool("UseMaterial", 0x5FD),
                        rowBool("UsePrimitive", 0x5FE)},
                       {"MapKelvin", "MapIntensity", "MapScatter"}});
    layouts.push_back(
        {14,
         "GRADIENT",
         true,
         0x75D,
         {rowMap("Map1", 0x5B8),
          rowMap("Map2", 0x5BC),
          rowMap("Map3", 0x5C0),
          rowMap("NoiseMap", 0x5C4),
          rowColor("Color1", 0x5C8),
          rowColor("Color2", 0x5D4),
          rowColor("Color3", 0x5E0),
          rowColor("ColorN", 0x5EC),
          rowFloat("CenterPosition", 0x5F8),
          rowEnum("GradientType", 0x5FC,
                  {"LINEAR2", "TRIANGLE2", "RADIAL2", "RADIAL3", "LINEAR3", "TRIANGLE3", "CYLINDER3"}),
          rowFloat("NoiseAmount", 0x600),
          rowEnum("NoiseType", 0x604, noiseTypeWords()),
          rowColor("NoiseSize", 0x608),
          rowFloat("NoisePhase", 0x614),
          rowInt("NoiseNumLevels", 0x618),
          rowFloat("NoiseLow", 0x61C),
          rowFloat("NoiseHigh", 0x620),
          rowFloat("NoiseSmooth", 0x624),
          rowEnum("Operation", 0x628, blendOperationWords()),
          rowBool("RefSpace", 0x75C),
          rowMatrix("MatrixRefSpace", 0x62C),
          rowSpline("Curve", 0x65C, 8)},
         {"Map1", "Map2", "Map3", "NoiseMap"}});
    layouts.push_back({21,
                       "WIREFRAME",
                       false,
                       0x14A,
                       {rowMap("MapBackground", 0x108), rowFloat("ValueBackground", 0x10C),
                        rowFloat("ValueEdge", 0x110), rowFloat("ValueVertex", 0x114), rowFloat("EdgeDiameter", 0x118),
                        rowFloat("VertexDiameter", 0x11C), rowFloat("Falloff", 0x120),
                        rowColor("ColorBackground", 0x124), rowColor("ColorEdge", 0x130),
                        rowColor("ColorVertex", 0x13C), rowBool("ModePixels", 0x148),
                        rowBool("ShowHiddenEdges", 0x149)},
                       {"MapBackground"}});
    layouts.push_back(aoLayout());
    layouts.push_back({24,
                       "FALLOFF",
                       false,
                       0x6D3,
                       {rowMap("MapLow", 0x108),
                        rowMap("MapHigh", 0x10C),
                        rowMap("MapCenter", 0x110),
                        rowColor("ColorLow", 0x114),
                        rowColor("ColorHigh", 0x120),
                        rowColor("ColorCenter", 0x12C),
                        rowFloat("CenterPosition", 0x138),
                        rowEnum("Type", 0x13C, {"DEGREE90", "DEGREE180", "FRESNELL", "DISTANCE"}),
                        rowEnum("Dir", 0x140,
                                {"CAMX", "CAMY", "CAMZ", "SHADEPNT", "OBJCNT", "OBJ2OBJ", "OBJX", "OBJY", "OBJZ",
                                 "WRLDX", "WRLDY", "WRLDZ", "LOCX", "LOCY", "LOCZ"}),
                        rowBool("Extrapolate", 0x6D0),
                        rowBool("Angular", 0x6D1),
                        rowBool("ClampOutput", 0x6D2),
                        rowFloat("Near", 0x144),
                        rowFloat("Far", 0x148),
                        rowFloat("IOR", 0x14C),
                        rowMatrix("MatrixObject1", 0x150),
                        rowMatrix("MatrixObject2", 0x180),
                        rowSpline("Curve", 0x1B0, 8),
                        rowOutput("ColorOutput", 0x2B0)},
                       {"MapLow", "MapHigh", "MapCenter"}});
    layouts.push_back({27,
                       "SUN",
                       false,
                       0x17C,
                       {rowColor("SunDirection", 0x108),
                        rowFloat("SunDiskAngle", 0x114),
                        rowColor("SunDiskLuminance", 0x118),
                        rowFloat("SunKelvin", 0x124),
                        rowMap("SunMap", 0x128),
                        rowMap("SkyReplacementMap", 0x12C),
                        rowFloat("GlowLuminanceScale", 0x164),
                        rowFloat("GlowAngle", 0x168),
                        rowColor("SkyLuminance", 0x130),
                        rowFloat("SkyTurbidity", 0x13C),
                        rowColor("SpaceLuminance", 0x140),
                        rowMap("SpaceMap", 0x14C),
                        rowColor("GroundLuminance", 0x150),
                        rowFloat("HorizonBlur", 0x15C),
                        rowFloat("HorizonLift", 0x160),
                        rowColor("GlobalIntensity", 0x16C),
                        rowBool("NeedEstimateEnergySunGlow", 0x178),
                        rowBool("Analytic", 0x179),
                        rowBool("Portals", 0x17A),
                        rowBool("MoonIllusion", 0x17B)},
                       {"SunMap", "SkyReplacementMap", "SpaceMap"}});
    return layouts;
}

} // namespace texmap_test

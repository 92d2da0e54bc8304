// Noise and ocean: the two procedural generators, both of the mapped shape.
#include "documents/texmaps/families.h"

#include "documents/texmap_document.h"
#include "scene/records.h"

const char* const kNoiseTypeWords[] = {"BRICK", "FRACTAL", "TURBULENCE", nullptr};

namespace {

constexpr FieldDescriptor kNoiseFields[] = {
    texMapField("Map0", 0x5B8),
    texMapField("Map1", 0x5BC),
    colorField("Color0", 0x5C0),
    colorField("Color1", 0x5CC),
    enumField("NoiseType", 0x5D8, kNoiseTypeWords),
    intField("DimensionsIn", 0x5DC),
    intField("DimensionsOut", 0x5E0),
    intField("Levels", 0x5E4),
    intField("Seed", 0x5E8),
    boolField("Range01", 0x634),
    floatField("Phase", 0x5EC),
    texMapField("PhaseMap", 0x5F0),
    boolField("FrameInterpolation", 0x635),
    floatField("ThresholdLow", 0x5F4),
    floatField("ThresholdHigh", 0x5F8),
    texMapField("ThresholdLowMap", 0x5FC),
    texMapField("ThresholdHighMap", 0x600),
    colorField("Size", 0x604),
    texMapField("SizeMap", 0x610),
    floatField("Amplitude", 0x614),
    texMapField("AmplitudeMap", 0x618),
    floatField("Gain", 0x61C),
    texMapField("GainMap", 0x620),
    floatField("Lacunarity", 0x624),
    texMapField("LacunarityMap", 0x628),
    floatField("Distortion", 0x62C),
    texMapField("DistortionMap", 0x630),
};
static_assert(fieldsEnd(kNoiseFields) == 0x636 && fieldsFrom(kNoiseFields, kTexMapMappedFieldsOffset));

// The four bytes at 0x5B8 belong to no key; they keep what the scene file gave them.
constexpr FieldDescriptor kOceanSurfaceFields[] = {
    floatField("WindDirection", 0x5BC),
    floatField("WindSpeed", 0x5C0),
    floatField("WindDispersion", 0x5C4),
    floatField("TimeStart", 0x5C8),
    floatField("TimeScale", 0x5CC),
    floatField("Choppy", 0x5D0),
    floatField("SpectrumScale", 0x5D4),
    floatField("Balance", 0x5DC),
    floatField("Anisotropy", 0x5D8),
    floatField("Gamma", 0x5E0),
    intField("Bits", 0x5E4),
    intField("Seed", 0x5E8),
    boolField("3D", 0x6EC),
    boolField("HalfFloat", 0x6ED),
    splineField("SpectrumCurve", 0x5EC, 8),
};
static_assert(fieldsEnd(kOceanSurfaceFields) == 0x6EE &&
              fieldsFrom(kOceanSurfaceFields, kTexMapMappedFieldsOffset + 4));

} // namespace

constexpr TypeDescriptor kNoiseTexMap = mappedType(describeType(8, "NOISE", fieldsEnd(kNoiseFields), kNoiseFields));
constexpr TypeDescriptor kOceanSurfaceTexMap =
    mappedType(describeType(18, "OCEANSURFACE", fieldsEnd(kOceanSurfaceFields), kOceanSurfaceFields));

static_assert(typeFits(kNoiseTexMap, sizeof(TexMapRecord)) && typeFits(kOceanSurfaceTexMap, sizeof(TexMapRecord)));
static_assert(imageAgrees(kNoiseTexMap) && imageAgrees(kOceanSurfaceTexMap));

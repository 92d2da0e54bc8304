// The participating media. VOLUMETRIC fills a volume with absorption, scattering, emission and
// a phase function, and may take its density from an external volume file whose channels are
// named here; MIE is the particle-scattering material.
//
// The curve of MIE's refractive index stands at the top level, beside its IOR section rather
// than in it; the document is written so and read so.
#include "documents/materials/families.h"

#include <iterator>

namespace {

// Phase functions of the volume.
const char* const kPhaseFunctionWords[] = {"HG", "MIE", nullptr};
// Formats of the external volume file.
const char* const kVolumeFileWords[] = {"OPENVDB", "AUR", nullptr};

// ---- VOLUMETRIC --------------------------------------------------------------------------------

constexpr FieldDescriptor kVolumetricFields[] = {
    sectionField("Absorption"),
    floatField("Absorption/AbsorptionValue", 284),
    colorField("Absorption/AbsorptionColor", 268),
    texMapField("Absorption/AbsorptionMap", 280),
    splineField("Absorption/AbsorptionSpline", 476, 8),

    sectionField("Scattering"),
    floatField("Scattering/ScatteringValue", 304),
    colorField("Scattering/ScatteringColor", 288),
    texMapField("Scattering/ScatteringMap", 300),
    splineField("Scattering/ScatteringSpline", 732, 8),

    sectionField("Depth"),
    floatField("Depth/DepthValue", 308),

    sectionField("Density"),
    floatField("Density/DensityValue", 432),
    texMapField("Density/DensityMap", 436),

    sectionField("PhaseFunction"),
    enumField("PhaseFunction/PhaseFunctionType", 444, kPhaseFunctionWords),
    sectionField("PhaseFunction/HG"),
    floatField("PhaseFunction/HG/PhaseValue", 328),
    colorField("PhaseFunction/HG/PhaseColor", 312),
    texMapField("PhaseFunction/HG/PhaseMap", 324),
    splineField("PhaseFunction/HG/PhaseSpline", 988, 8),
    sectionField("PhaseFunction/MIE"),
    colorField("PhaseFunction/MIE/MieIORcolor", 332),
    colorField("PhaseFunction/MIE/MieIOR-Kcolor", 344),
    texMapField("PhaseFunction/MIE/MieSizeMap", 356),
    texMapField("PhaseFunction/MIE/MieIORmap", 360),
    texMapField("PhaseFunction/MIE/MieIOR-Kmap", 364),
    floatField("PhaseFunction/MIE/MieSizeValue", 368),
    floatField("PhaseFunction/MIE/MieIORvalue", 372),
    floatField("PhaseFunction/MIE/MieIOR-Kvalue", 376),
    floatField("PhaseFunction/MIE/MieGainValue", 380),
    floatField("PhaseFunction/MIE/MieSpreadValue", 384),
    splineField("PhaseFunction/MIE/MieIORspline", 2268, 8),
    splineField("PhaseFunction/MIE/MieIOR-Kspline", 2524, 8),

    sectionField("Emission"),
    floatField("Emission/EmissionValue", 404),
    colorField("Emission/EmissionColor", 388),
    texMapField("Emission/EmissionMap", 400),
    splineField("Emission/EmissionSpline", 1244, 8),
    floatField("Emission/KelvinValue", 412),
    texMapField("Emission/KelvinMap", 408),
    boolField("Emission/OptimizeEmission", 6490),
    boolField("Emission/EmitterResample", 6494),
    boolField("Emission/ApplyDensityToEmission", 6491),
    boolField("Emission/NoInternalEmitters", 6485),
    boolField("Emission/Caustics", 6486),

    sectionField("Displacement"),
    colorField("Displacement/DisplacementScale", 416),
    texMapField("Displacement/DisplacementScaleMap", 428),
    intField("Expert", 2788),
    floatField("EquAngularFactor", 440),
    boolField("ForceBounce", 6480),
    boolField("ForceFlyOut", 6481),
    boolField("SingleBounce", 6482),
    boolField("Exclusive", 6492),
    boolField("RelativeUVWcoordinates", 6483),
    colorField("ModelSpaceBoxMin", 452),
    colorField("ModelSpaceBoxMax", 464),
    intField("AccelerationDeep", 2780),
    floatField("Threshold", 2792),
    floatField("SamplingQuality", 2796),
    intField("NestedPriority", 2784),
    materialField("Material", 448),

    sectionField("VDBFile"),
    enumField("VDBFile/FileType", 2804, kVolumeFileWords),
    stringField("VDBFile/Path", 4944, 384),
    intField("VDBFile/AnimationSpeed", 2808),
    intField("VDBFile/AnimationOffset", 2812),
    boolField("VDBFile/BestSamplingQuality", 6484),
    floatField("VDBFile/EmissionQuality", 2800),
    floatField("VDBFile/Velocity", 2816),
    boolField("VDBFile/UseDensityMapping", 6487),
    boolField("VDBFile/UseIntensityMapping", 6488),
    boolField("VDBFile/UseKelvinMapping", 6489),
    sectionField("VDBFile/DensityMapping"),
    splineField("VDBFile/DensityMapping/DensitySpline", 1500, 8),
    floatField("VDBFile/DensityMapping/DensityInputLow", 2820),
    floatField("VDBFile/DensityMapping/DensityInputHigh", 2824),
    floatField("VDBFile/DensityMapping/DensityOutputLow", 2828),
    floatField("VDBFile/DensityMapping/DensityOutputHigh", 2832),
    floatField("VDBFile/DensityMapping/DensityBias", 2836),
    sectionField("VDBFile/IntensityMapping"),
    splineField("VDBFile/IntensityMapping/IntensitySpline", 1756, 8),
    floatField("VDBFile/IntensityMapping/IntensityInputLow", 2840),
    floatField("VDBFile/IntensityMapping/IntensityInputHigh", 2844),
    floatField("VDBFile/IntensityMapping/IntensityOutputLow", 2848),
    floatField("VDBFile/IntensityMapping/IntensityOutputHigh", 2852),
    floatField("VDBFile/IntensityMapping/IntensityBias", 2856),
    sectionField("VDBFile/KelvinMapping"),
    splineField("VDBFile/KelvinMapping/KelvinSpline", 2012, 8),
    floatField("VDBFile/KelvinMapping/KelvinInputLow", 2860),
    floatField("VDBFile/KelvinMapping/KelvinInputHigh", 2864),
    floatField("VDBFile/KelvinMapping/KelvinOutputLow", 2868),
    floatField("VDBFile/KelvinMapping/KelvinOutputHigh", 2872),
    floatField("VDBFile/KelvinMapping/KelvinBias", 2876),
    floatField("VDBFile/KelvinMapping/KelvinPhysical", 2880),
    floatField("VDBFile/PointRadius", 2884),
    intField("VDBFile/PointRadiusScale", 2888),
    materialField("VDBFile/PointMaterial", 2892),
    sectionField("VDBFile/Channels"),
    stringField("VDBFile/Channels/Density", 2896, 64),
    stringField("VDBFile/Channels/Intensity", 3152, 64),
    stringField("VDBFile/Channels/Kelvin", 3408, 64),
    stringField("VDBFile/Channels/Velocity", 3664, 64),
    stringField("VDBFile/Channels/PointPosition", 3920, 64),
    stringField("VDBFile/Channels/PointRadius", 4176, 64),
    stringField("VDBFile/Channels/PointVelocity", 4432, 64),
    stringField("VDBFile/Channels/PointUVW", 4688, 64),
};

// The record keeps the flag that says a volume cache follows in the scene file, and the cache
// object itself past the image; no key may touch either. The file path and the eight channel
// names are the texts that a scene file stores narrow.
constexpr bool coversByte(const FieldDescriptor* fields, size_t count, uint32_t byte) {
    for (size_t i = 0; i < count; ++i) {
        if (fields[i].width != 0 && fields[i].offset <= byte && byte - fields[i].offset < fields[i].width)
            return true;
    }
    return false;
}
constexpr bool textsAtSceneTextOffsets(const FieldDescriptor* fields, size_t count) {
    size_t texts = 0;
    for (size_t i = 0; i < count; ++i) {
        if (fields[i].kind != FieldKind::String) continue;
        bool known = false;
        for (size_t offset : kVolumeTextOffsets)
            known = known || fields[i].offset == offset;
        if (!known) return false;
        ++texts;
    }
    return texts == std::size(kVolumeTextOffsets);
}

// The image runs on past the last flag, up to the cache slot.
constexpr uint32_t kVolumetricImage = kVolumeCacheOffset;
static_assert(fieldsEnd(kVolumetricFields) <= kVolumetricImage);
static_assert(!coversByte(kVolumetricFields, std::size(kVolumetricFields), kVolumeCacheFlagOffset));
static_assert(textsAtSceneTextOffsets(kVolumetricFields, std::size(kVolumetricFields)));

// ---- MIE ---------------------------------------------------------------------------------------

constexpr FieldDescriptor kMieFields[] = {
    sectionField("IOR"),
    floatField("IOR/MieIORvalue", 308),
    colorField("IOR/MieIORcolor", 268),
    texMapField("IOR/MieIORmap", 296),
    splineField("MieIORspline", 328, 8),

    sectionField("IOR-K"),
    floatField("IOR-K/MieIOR-Kvalue", 312),
    colorField("IOR-K/MieIOR-Kcolor", 280),
    texMapField("IOR-K/MieIOR-Kmap", 300),
    splineField("IOR-K/MieIOR-Kspline", 584, 8),

    sectionField("Shape"),
    floatField("Shape/MieSizeValue", 304),
    texMapField("Shape/MieSizeMap", 292),
    floatField("Shape/MieGainValue", 316),
    floatField("Shape/MieBiasValue", 320),
    floatField("Shape/MieSpreadValue", 324),

    sectionField("Special"),
    colorField("Special/TintColor", 840),
    texMapField("Special/TintMap", 852),
    splineField("Special/TintSpline", 856, 8),
    floatField("Special/MaterialWeightValue", 1112),
    texMapField("Special/MaterialWeightMap", 1116),
    materialField("Special/Material", 1120),
    floatField("Special/CutoutValue", 1128),
    texMapField("Special/CutoutMap", 1124),
    intField("NestedPriority", 1132),
    boolField("FakedShadows", 1136),
    boolField("Resample", 1137),
};

} // namespace

constexpr TypeDescriptor kVolumetricMaterial =
    describeType(kVolumeMaterialType, "VOLUMETRIC", kVolumetricImage, kVolumetricFields);
static_assert(materialTableFits(kVolumetricMaterial));

constexpr TypeDescriptor kMieMaterial = describeType(31, "MIE", fieldsEnd(kMieFields), kMieFields);
static_assert(materialTableFits(kMieMaterial));

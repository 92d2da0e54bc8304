// Gradients, falloff, occlusion, wireframe, colour and sun: the remaining generators. COLOR and
// GRADIENT have the mapped shape, WIREFRAME and SUN the plain one; AO and FALLOFF carry a
// ColorOutput among their own fields. AO's model lists are the one repeated element.
#include "documents/texmaps/families.h"

#include "bridge/name_interface.h"
#include "common/unicode.h"
#include "documents/texmap_document.h"
#include "documents/texmaps/entry_lists.h"
#include "scene/records.h"

#include <cstring>
#include <string>

namespace {

const char* const kColorTypeWords[] = {
    "COLOR", "KELVIN", "UVW", "INSTANCE_COLOR", "INSTANCE_UVW", "RANDOM", "TIME", "NORMAL", nullptr,
};
const char* const kGradientTypeWords[] = {
    "LINEAR2", "TRIANGLE2", "RADIAL2", "RADIAL3", "LINEAR3", "TRIANGLE3", "CYLINDER3", nullptr,
};
const char* const kAoTypeWords[] = {"NOFILTER", "EXCLUDE_SAME", "EXCLUDE_ALL_BUT_SAME", "BY_LISTS", nullptr};
// "FRESNELL" keeps its double L: it is the word that documents carry.
const char* const kFalloffTypeWords[] = {"DEGREE90", "DEGREE180", "FRESNELL", "DISTANCE", nullptr};
const char* const kFalloffDirectionWords[] = {
    "CAMX", "CAMY", "CAMZ", "SHADEPNT", "OBJCNT", "OBJ2OBJ", "OBJX", "OBJY",
    "OBJZ", "WRLDX", "WRLDY", "WRLDZ",  "LOCX",   "LOCY",    "LOCZ", nullptr,
};

// ---- COLOR, GRADIENT ---------------------------------------------------------------------------

constexpr FieldDescriptor kColorFields[] = {
    enumField("Type", 0x5F4, kColorTypeWords),
    colorExField("Color", 0x5B8),
    floatField("Kelvin", 0x5D8),
    texMapField("MapKelvin", 0x5DC),
    boolField("KelvinNormalize", 0x5FB),
    floatField("Intensity", 0x5E0),
    texMapField("MapIntensity", 0x5E4),
    texMapField("MapScatter", 0x5E8),
    intField("IndexUVW", 0x5EC),
    intField("Seed", 0x5F0),
    boolField("sRGB", 0x5F8),
    boolField("ApplyIntensityToAlpha", 0x5F9),
    boolField("PerChannel", 0x5FA),
    boolField("UseInstance", 0x5FC),
    boolField("UseMaterial", 0x5FD),
    boolField("UsePrimitive", 0x5FE),
};
static_assert(fieldsEnd(kColorFields) == 0x5FF && fieldsFrom(kColorFields, kTexMapMappedFieldsOffset));

constexpr FieldDescriptor kGradientFields[] = {
    texMapField("Map1", 0x5B8),
    texMapField("Map2", 0x5BC),
    texMapField("Map3", 0x5C0),
    texMapField("NoiseMap", 0x5C4),
    colorField("Color1", 0x5C8),
    colorField("Color2", 0x5D4),
    colorField("Color3", 0x5E0),
    colorField("ColorN", 0x5EC),
    floatField("CenterPosition", 0x5F8),
    enumField("GradientType", 0x5FC, kGradientTypeWords),
    floatField("NoiseAmount", 0x600),
    enumField("NoiseType", 0x604, kNoiseTypeWords),
    colorField("NoiseSize", 0x608),
    floatField("NoisePhase", 0x614),
    intField("NoiseNumLevels", 0x618),
    floatField("NoiseLow", 0x61C),
    floatField("NoiseHigh", 0x620),
    floatField("NoiseSmooth", 0x624),
    enumField("Operation", 0x628, kBlendOperationWords),
    boolField("RefSpace", 0x75C),
    matrixField("MatrixRefSpace", 0x62C),
    splineField("Curve", 0x65C, 8),
};
static_assert(fieldsEnd(kGradientFields) == 0x75D && fieldsFrom(kGradientFields, kTexMapMappedFieldsOffset));

// ---- WIREFRAME ---------------------------------------------------------------------------------

constexpr FieldDescriptor kWireframeFields[] = {
    texMapField("MapBackground", 0x108),
    floatField("ValueBackground", 0x10C),
    floatField("ValueEdge", 0x110),
    floatField("ValueVertex", 0x114),
    floatField("EdgeDiameter", 0x118),
    floatField("VertexDiameter", 0x11C),
    floatField("Falloff", 0x120),
    colorField("ColorBackground", 0x124),
    colorField("ColorEdge", 0x130),
    colorField("ColorVertex", 0x13C),
    boolField("ModePixels", 0x148),
    boolField("ShowHiddenEdges", 0x149),
};
static_assert(fieldsEnd(kWireframeFields) == 0x14A && fieldsFrom(kWireframeFields, kTexMapPlainFieldsOffset));

// ---- AO ----------------------------------------------------------------------------------------

// A model list is 64 slots of 64-bit handles. A document places each model by its `id`, not by
// its order; the walk writes the slots that hold a handle, and asks the name interface for a
// name that models don't have, so that its calls still mirror the document.
constexpr uint32_t kModelSlots = 64;
constexpr uint32_t kModelListBytes = kModelSlots * sizeof(uint64_t);

void readModelList(pugi::xml_node parent, const char* key, const FieldDescriptor& field, uint8_t* record,
                   size_t, ITaviNameInterface* names) {
    uint8_t* slots = record + field.offset;
    std::memset(slots, 0, kModelListBytes);
    for (const pugi::xml_node& child : parent.child(key).children("Model")) {
        int32_t id = -1;
        if (!readIdAttribute(child, &id) || id < 0 || id >= static_cast<int32_t>(kModelSlots)) continue;
        const std::u16string name = utf8ToUtf16(child.attribute("value").value());
        const uint64_t handle = names ? names->GetModelId(name.c_str()) : 0;
        std::memcpy(slots + static_cast<size_t>(id) * sizeof handle, &handle, sizeof handle);
    }
}

void writeModelList(pugi::xml_node parent, const char* key, const FieldDescriptor& field, const uint8_t* record,
                    size_t, ITaviNameInterface* names) {
    const uint8_t* slots = record + field.offset;
    const pugi::xml_node list = appendChildElement(parent, key);
    for (uint32_t id = 0; id < kModelSlots; ++id) {
        uint64_t handle = 0;
        std::memcpy(&handle, slots + static_cast<size_t>(id) * sizeof handle, sizeof handle);
        if (handle == 0) continue;
        pugi::xml_node model = appendChildElement(list, "Model");
        appendIdAttribute(model, id);
        pugi::xml_attribute value = model.append_attribute("value");
        const char16_t* name = names ? names->GetModelName() : nullptr;
        if (value && name) value.set_value(utf16ToUtf8(name).c_str());
    }
}

void modelListReferences(const FieldDescriptor& field, const uint8_t* record, size_t,
                         const ReferenceVisitor& visit) {
    const uint8_t* slots = record + field.offset;
    for (uint32_t id = 0; id < kModelSlots; ++id) {
        uint64_t handle = 0;
        std::memcpy(&handle, slots + static_cast<size_t>(id) * sizeof handle, sizeof handle);
        if (handle != 0) visit(ReferenceKind::Model, -1);
    }
}

constexpr CustomField kModelList{readModelList, writeModelList, modelListReferences};

constexpr FieldDescriptor kAoFields[] = {
    enumField("Type", 0x158, kAoTypeWords),
    boolField("TraceInside", 0x988),
    boolField("traceOutside", 0x989),
    texMapField("MapOcclude", 0x108),
    floatField("WeightOcclude", 0x13C),
    colorField("ColorOcclude", 0x118),
    texMapField("MapUnocclude", 0x10C),
    floatField("WeightUnocclude", 0x140),
    colorField("ColorUnocclude", 0x124),
    texMapField("MapInner", 0x110),
    floatField("WeightInner", 0x144),
    colorField("ColorInner", 0x130),
    floatField("Gamma", 0x150),
    intField("NumSamples", 0x154),
    floatField("Directionality", 0x14C),
    texMapField("MapMaxTraceDistance", 0x114),
    floatField("MaxTraceDistance", 0x148),
    boolField("bTarget", 0x98A),
    boolField("bTargetRelative", 0x98D),
    boolField("bCurvatureMode", 0x98E),
    colorField("TargetDirection", 0x15C),
    boolField("UseInclude", 0x98B),
    boolField("UseExclude", 0x98C),
    customField("IncludeList", 0x168, kModelListBytes, &kModelList),
    customField("ExcludeList", 0x368, kModelListBytes, &kModelList),
    colorOutputField("ColorOutput", 0x568),
};
static_assert(fieldsEnd(kAoFields) == 0x98F && fieldsFrom(kAoFields, kTexMapPlainFieldsOffset));
static_assert(0x168 % alignof(uint64_t) == 0 && 0x168 + kModelListBytes == 0x368);

// ---- FALLOFF -----------------------------------------------------------------------------------

constexpr FieldDescriptor kFalloffFields[] = {
    texMapField("MapLow", 0x108),
    texMapField("MapHigh", 0x10C),
    texMapField("MapCenter", 0x110),
    colorField("ColorLow", 0x114),
    colorField("ColorHigh", 0x120),
    colorField("ColorCenter", 0x12C),
    floatField("CenterPosition", 0x138),
    enumField("Type", 0x13C, kFalloffTypeWords),
    enumField("Dir", 0x140, kFalloffDirectionWords),
    boolField("Extrapolate", 0x6D0),
    boolField("Angular", 0x6D1),
    boolField("ClampOutput", 0x6D2),
    floatField("Near", 0x144),
    floatField("Far", 0x148),
    floatField("IOR", 0x14C),
    matrixField("MatrixObject1", 0x150),
    matrixField("MatrixObject2", 0x180),
    splineField("Curve", 0x1B0, 8),
    colorOutputField("ColorOutput", 0x2B0),
};
static_assert(fieldsEnd(kFalloffFields) == 0x6D3 && fieldsFrom(kFalloffFields, kTexMapPlainFieldsOffset));

// ---- SUN ---------------------------------------------------------------------------------------

constexpr FieldDescriptor kSunFields[] = {
    colorField("SunDirection", 0x108),
    floatField("SunDiskAngle", 0x114),
    colorField("SunDiskLuminance", 0x118),
    floatField("SunKelvin", 0x124),
    texMapField("SunMap", 0x128),
    texMapField("SkyReplacementMap", 0x12C),
    floatField("GlowLuminanceScale", 0x164),
    floatField("GlowAngle", 0x168),
    colorField("SkyLuminance", 0x130),
    floatField("SkyTurbidity", 0x13C),
    colorField("SpaceLuminance", 0x140),
    texMapField("SpaceMap", 0x14C),
    colorField("GroundLuminance", 0x150),
    floatField("HorizonBlur", 0x15C),
    floatField("HorizonLift", 0x160),
    colorField("GlobalIntensity", 0x16C),
    boolField("NeedEstimateEnergySunGlow", 0x178),
    boolField("Analytic", 0x179),
    boolField("Portals", 0x17A),
    boolField("MoonIllusion", 0x17B),
};
static_assert(fieldsEnd(kSunFields) == 0x17C && fieldsFrom(kSunFields, kTexMapPlainFieldsOffset));

} // namespace

constexpr TypeDescriptor kColorTexMap = mappedType(describeType(13, "COLOR", fieldsEnd(kColorFields), kColorFields));
constexpr TypeDescriptor kGradientTexMap =
    mappedType(describeType(14, "GRADIENT", fieldsEnd(kGradientFields), kGradientFields));
constexpr TypeDescriptor kWireframeTexMap =
    describeType(21, "WIREFRAME", fieldsEnd(kWireframeFields), kWireframeFields);
constexpr TypeDescriptor kAoTexMap = describeType(22, "AO", fieldsEnd(kAoFields), kAoFields);
constexpr TypeDescriptor kFalloffTexMap = describeType(24, "FALLOFF", fieldsEnd(kFalloffFields), kFalloffFields);
constexpr TypeDescriptor kSunTexMap = describeType(27, "SUN", fieldsEnd(kSunFields), kSunFields);

static_assert(typeFits(kColorTexMap, sizeof(TexMapRecord)) && typeFits(kGradientTexMap, sizeof(TexMapRecord)));
static_assert(typeFits(kWireframeTexMap, sizeof(TexMapRecord)) && typeFits(kAoTexMap, sizeof(TexMapRecord)));
static_assert(typeFits(kFalloffTexMap, sizeof(TexMapRecord)) && typeFits(kSunTexMap, sizeof(TexMapRecord)));
static_assert(imageAgrees(kColorTexMap) && imageAgrees(kGradientTexMap));
static_assert(imageAgrees(kWireframeTexMap) && imageAgrees(kAoTexMap));
static_assert(imageAgrees(kFalloffTexMap) && imageAgrees(kSunTexMap));

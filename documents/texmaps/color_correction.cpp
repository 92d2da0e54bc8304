// Colour correction and shuffle. Both rebuild a colour from per-channel settings kept in
// arrays of eight; COLORCORRECTION adds four point curves and a LUT text. Plain shape.
#include "documents/texmaps/families.h"

#include "documents/texmap_document.h"
#include "documents/texmaps/entry_lists.h"
#include "documents/xml_value_codec.h"
#include "scene/records.h"

#include <cstring>
#include <iterator>

namespace {

// ---- Channel arrays ----------------------------------------------------------------------------

constexpr uint32_t kChannels = 8;

// One channel of COLORCORRECTION; offsets within the entry.
constexpr FieldDescriptor kCorrectionChannelFields[] = {
    intField("Source", 0x00),   boolField("Invert", 0x04), boolField("ClampResult", 0x05),
    floatField("Contrast", 0x08), floatField("Pivot", 0x0C), floatField("Ground", 0x10),
    floatField("Low", 0x14),    floatField("High", 0x18),  splineField("Curve", 0x1C, 8),
};
constexpr uint32_t kCorrectionChannelBytes = 0x11C;
static_assert(fieldsFit(kCorrectionChannelFields, kCorrectionChannelBytes) &&
              fieldsEnd(kCorrectionChannelFields) == kCorrectionChannelBytes);

// One channel of SHUFFLE.
constexpr FieldDescriptor kShuffleChannelFields[] = {
    intField("Source1", 0x00),   intField("Source2", 0x04), floatField("MixValue", 0x08),
    boolField("Invert1", 0x0C), boolField("Invert2", 0x0D), boolField("ClampResult", 0x0E),
};
constexpr uint32_t kShuffleChannelBytes = 0x10;
static_assert(fieldsFit(kShuffleChannelFields, kShuffleChannelBytes));

constexpr EntryList kCorrectionChannels{"Channel", kCorrectionChannelFields, std::size(kCorrectionChannelFields),
                                        kCorrectionChannelBytes, kChannels};
constexpr EntryList kShuffleChannels{"Channel", kShuffleChannelFields, std::size(kShuffleChannelFields),
                                     kShuffleChannelBytes, kChannels};
static_assert(entryListBytes(kCorrectionChannels) == 0x8E0 && entryListBytes(kShuffleChannels) == 0x80);

// The array always has eight channels; the document states the number for readers elsewhere,
// and this one ignores it.
template <const EntryList& List>
void readChannels(pugi::xml_node parent, const char*, const FieldDescriptor& field, uint8_t* record, size_t,
                  ITaviNameInterface* names) {
    readEntryList(parent, List, record + field.offset, names);
}

template <const EntryList& List>
void writeChannels(pugi::xml_node parent, const char*, const FieldDescriptor& field, const uint8_t* record,
                   size_t, ITaviNameInterface* names) {
    const int32_t count = static_cast<int32_t>(List.capacity);
    XmlWriteInt(parent, "NumChannels", &count);
    writeEntryList(parent, List, record + field.offset, List.capacity, names);
}

template <const EntryList& List>
void channelReferences(const FieldDescriptor& field, const uint8_t* record, size_t,
                       const ReferenceVisitor& visit) {
    entryListReferences(List, record + field.offset, List.capacity, visit);
}

constexpr CustomField kCorrectionChannelList{readChannels<kCorrectionChannels>, writeChannels<kCorrectionChannels>,
                                             channelReferences<kCorrectionChannels>};
constexpr CustomField kShuffleChannelList{readChannels<kShuffleChannels>, writeChannels<kShuffleChannels>,
                                          channelReferences<kShuffleChannels>};

// ---- Point curves ------------------------------------------------------------------------------

// A curve's points, cubic flag and count lie apart, and the four curves interleave: counts
// first, then flags, then the point arrays. Each curve's row spans from its count to the end of
// its points, and its hook touches only those three pieces within the span.
struct PointCurve {
    uint32_t count;
    uint32_t cubic;
    uint32_t points;
};
constexpr PointCurve kPointCurves[] = {
    {0xB88, 0xB98, 0xBA4},  // CurvesW
    {0xB8C, 0xB99, 0xDA4},  // CurvesR
    {0xB90, 0xB9A, 0xFA4},  // CurvesG
    {0xB94, 0xB9B, 0x11A4}, // CurvesB
};
constexpr uint32_t kMaxPoints = 64;
constexpr uint32_t kPointBytes = 2 * sizeof(float);
constexpr uint32_t kPointArrayBytes = kMaxPoints * kPointBytes;
static_assert(kPointArrayBytes == 0x200);

constexpr uint32_t curveSpan(const PointCurve& curve) {
    return curve.points + kPointArrayBytes - curve.count;
}
constexpr bool curveInsideSpan(const PointCurve& curve) {
    return curve.count < curve.cubic && curve.cubic < curve.points;
}
static_assert(curveInsideSpan(kPointCurves[0]) && curveInsideSpan(kPointCurves[1]) &&
              curveInsideSpan(kPointCurves[2]) && curveInsideSpan(kPointCurves[3]));

// The flag is on unless the document says otherwise in so many words: an absent curve, an
// absent Cubic and an empty value all mean cubic.
template <size_t Curve>
void readPointCurve(pugi::xml_node parent, const char* key, const FieldDescriptor& field, uint8_t* record,
                    size_t, ITaviNameInterface*) {
    constexpr PointCurve layout = kPointCurves[Curve];
    uint8_t* span = record + field.offset;
    uint8_t* points = span + (layout.points - layout.count);
    std::memset(points, 0, kPointArrayBytes);
    const pugi::xml_node element = parent.child(key);
    const pugi::xml_attribute cubicValue = element.child("Cubic").attribute("value");
    const bool notCubic = cubicValue && cubicValue.value()[0] != '\0' && !XmlParseBool(cubicValue.value());
    span[layout.cubic - layout.count] = notCubic ? 0 : 1;
    int32_t count = 0;
    for (pugi::xml_node child = element.first_child(); child && count < static_cast<int32_t>(kMaxPoints);
         child = child.next_sibling()) {
        if (!isListItem(child, "Point")) continue;
        const float pair[2] = {readFloatAttribute(child, "X", 0.0f), readFloatAttribute(child, "Y", 0.0f)};
        std::memcpy(points + static_cast<size_t>(count) * kPointBytes, pair, sizeof pair);
        ++count;
    }
    std::memcpy(span, &count, sizeof count);
}

template <size_t Curve>
void writePointCurve(pugi::xml_node parent, const char* key, const FieldDescriptor& field,
                     const uint8_t* record, size_t, ITaviNameInterface*) {
    constexpr PointCurve layout = kPointCurves[Curve];
    const uint8_t* span = record + field.offset;
    const uint8_t* points = span + (layout.points - layout.count);
    int32_t count = 0;
    std::memcpy(&count, span, sizeof count);
    if (count < 0) count = 0;
    if (count > static_cast<int32_t>(kMaxPoints)) count = kMaxPoints;
    const uint8_t cubic = span[layout.cubic - layout.count] ? 1 : 0;
    const pugi::xml_node element = appendChildElement(parent, key);
    XmlWriteBool(element, "Cubic", &cubic);
    for (int32_t i = 0; i < count; ++i) {
        float pair[2];
        std::memcpy(pair, points + static_cast<size_t>(i) * kPointBytes, sizeof pair);
        const pugi::xml_node point = appendChildElement(element, "Point");
        appendFloatAttribute(point, "X", pair[0]);
        appendFloatAttribute(point, "Y", pair[1]);
    }
}

constexpr CustomField kPointCurveHooks[] = {
    {readPointCurve<0>, writePointCurve<0>},
    {readPointCurve<1>, writePointCurve<1>},
    {readPointCurve<2>, writePointCurve<2>},
    {readPointCurve<3>, writePointCurve<3>},
};

constexpr FieldDescriptor pointCurveField(const char* key, size_t curve) {
    return customField(key, kPointCurves[curve].count, curveSpan(kPointCurves[curve]), &kPointCurveHooks[curve]);
}

// ---- COLORCORRECTION ---------------------------------------------------------------------------

constexpr uint32_t kLutChars = 384;

constexpr FieldDescriptor kColorCorrectionFields[] = {
    colorField("ChildColor", 0x108),
    texMapField("ChildMap", 0x114),
    floatField("MaskWeight", 0x118),
    texMapField("MaskMap", 0x11C),
    customField("Channel", 0x120, entryListBytes(kCorrectionChannels), &kCorrectionChannelList),
    floatField("ContrastAlt", 0xA04),
    floatField("BrightnessAlt", 0xA00),
    floatField("Contrast", 0xA08),
    texMapField("ContrastMap", 0xA0C),
    floatField("Pivot", 0xA10),
    texMapField("PivotMap", 0xA14),
    floatField("Exposure", 0xB30),
    texMapField("ExposureMap", 0xB34),
    colorField("Gamma", 0xB20),
    texMapField("GammaMap", 0xB2C),
    floatField("Low", 0xA18),
    floatField("High", 0xA1C),
    splineField("CurveLevels", 0xA20, 8),
    floatField("Hue", 0xB38),
    texMapField("HueMap", 0xB3C),
    floatField("Saturation", 0xB40),
    texMapField("SaturationMap", 0xB44),
    floatField("HueTint", 0xB4C),
    floatField("HueTintStrength", 0xB48),
    floatField("GreenMagentaTint", 0xB50),
    floatField("Kelvin", 0xB54),
    colorField("TintColor", 0xB58),
    texMapField("TintMap", 0xB70),
    colorField("GroundColor", 0xB64),
    texMapField("GroundMap", 0xB74),
    boolField("ClampResult", 0xB9C),
    boolField("Invert", 0xB9D),
    boolField("ApplyAlpha", 0xB9E),
    boolField("sRGB", 0xB9F),
    boolField("AlternativeProcessing", 0xBA0),
    colorField("DefaultLuminance", 0xB78),
    boolField("LogSpaceLUT", 0xBA1),
    floatField("AmountLUT", 0xB84),
    stringField("LUT", 0x13A4, kLutChars),
    pointCurveField("CurvesW", 0),
    pointCurveField("CurvesR", 1),
    pointCurveField("CurvesG", 2),
    pointCurveField("CurvesB", 3),
};
static_assert(fieldsEnd(kColorCorrectionFields) == 0x16A4 &&
              fieldsFrom(kColorCorrectionFields, kTexMapPlainFieldsOffset));

// ---- SHUFFLE -----------------------------------------------------------------------------------

constexpr FieldDescriptor kShuffleFields[] = {
    colorField("Color1", 0x108),
    texMapField("Map1", 0x114),
    floatField("Weight1", 0x118),
    colorField("Color2", 0x11C),
    texMapField("Map2", 0x128),
    floatField("Weight2", 0x12C),
    customField("Channel", 0x130, entryListBytes(kShuffleChannels), &kShuffleChannelList),
    colorField("DefaultLuminance", 0x1B0),
};
static_assert(fieldsEnd(kShuffleFields) == 0x1BC && fieldsFrom(kShuffleFields, kTexMapPlainFieldsOffset));

} // namespace

constexpr TypeDescriptor kColorCorrectionTexMap =
    describeType(5, "COLORCORRECTION", fieldsEnd(kColorCorrectionFields), kColorCorrectionFields);
constexpr TypeDescriptor kShuffleTexMap = describeType(12, "SHUFFLE", fieldsEnd(kShuffleFields), kShuffleFields);

static_assert(typeFits(kColorCorrectionTexMap, sizeof(TexMapRecord)) &&
              typeFits(kShuffleTexMap, sizeof(TexMapRecord)));
static_assert(imageAgrees(kColorCorrectionTexMap) && imageAgrees(kShuffleTexMap));

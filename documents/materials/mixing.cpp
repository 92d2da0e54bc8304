// Materials without a surface of their own: they blend, stack, cut out or select other
// materials by reference. Two of them carry a list: the children of MIX and the state
// patterns of the state switch; each list has a small reader and writer of its own below.
#include "documents/materials/families.h"

#include <cstring>
#include <iterator>

namespace {

constexpr const char* const kSpaceWords[] = {"", "WORLD", "LOCAL", nullptr};
constexpr const char* const kNormalizationWords[] = {"NONE", "NORMALIZE", "PROGRESSIVE", "BACKPROGRESSIVE",
                                                     nullptr};
constexpr const char* const kDisplaceWords[] = {"BASE", "MIX", "ADD", "NONE", nullptr};
constexpr const char* const kSelectionWords[] = {"FIRST", "LAST", "SINGLE", nullptr};

// ---- MIX children ------------------------------------------------------------------------------

// The list holds 16 entries of 16 bytes. NumChildren, 16 bytes ahead of the list, says how many
// are in use and so how many the writer puts out; the reader goes by the Child elements alone.
constexpr uint32_t kMixCountOffset = 268;
constexpr uint32_t kMixListOffset = 284;
constexpr uint32_t kMixEntryBytes = 16;
constexpr uint32_t kMixEntries = 16;

// One entry, relative to its first byte.
constexpr FieldDescriptor kMixChildFields[] = {
    materialField("Material", 0),
    floatField("Weight", 4),
    texMapField("WeightMap", 8),
    floatField("MapMix", 12),
};
static_assert(fieldsFit(kMixChildFields, kMixEntryBytes));

// The Child elements fill entries 0, 1, 2, ... in document order, whatever their `id` says.
// Entries beyond the last Child keep what they held.
void readMixChildren(pugi::xml_node parent, const char* key, const FieldDescriptor& field, uint8_t* record,
                     size_t, ITaviNameInterface* names) {
    const size_t capacity = field.width / kMixEntryBytes;
    size_t entry = 0;
    for (pugi::xml_node child = parent.child(key); child && entry < capacity;
         child = child.next_sibling(key), ++entry) {
        readFields(kMixChildFields, std::size(kMixChildFields), child,
                   record + field.offset + entry * kMixEntryBytes, kMixEntryBytes, names);
    }
}

// The number of entries in use, as far as the record holds it; a count outside 0..16 is cut to
// that range so that a damaged record can't lead the walk off the list.
size_t mixChildrenInUse(const FieldDescriptor& field, const uint8_t* record, size_t recordSize) {
    int32_t count = 0;
    if (kMixCountOffset + sizeof count > recordSize) return 0;
    std::memcpy(&count, record + kMixCountOffset, sizeof count);
    const size_t capacity = field.width / kMixEntryBytes;
    if (count <= 0) return 0;
    return static_cast<size_t>(count) < capacity ? static_cast<size_t>(count) : capacity;
}

// One Child per entry in use, with the entry's index as attribute `id`. Without an element to
// append to, only the name calls of each entry happen.
void writeMixChildren(pugi::xml_node parent, const char* key, const FieldDescriptor& field,
                      const uint8_t* record, size_t recordSize, ITaviNameInterface* names) {
    const size_t count = mixChildrenInUse(field, record, recordSize);
    for (size_t entry = 0; entry < count; ++entry) {
        pugi::xml_node child;
        if (parent.type() == pugi::node_element) {
            child = parent.append_child(key);
            child.append_attribute("id").set_value(static_cast<int>(entry));
        }
        writeFields(kMixChildFields, std::size(kMixChildFields), child,
                    record + field.offset + entry * kMixEntryBytes, kMixEntryBytes, names);
    }
}

void mixChildReferences(const FieldDescriptor& field, const uint8_t* record, size_t recordSize,
                        const ReferenceVisitor& visit) {
    const size_t count = mixChildrenInUse(field, record, recordSize);
    for (size_t entry = 0; entry < count; ++entry)
        forEachReference(kMixChildFields, std::size(kMixChildFields),
                         record + field.offset + entry * kMixEntryBytes, kMixEntryBytes, visit);
}

constexpr CustomField kMixChildren{readMixChildren, writeMixChildren, mixChildReferences};

// ---- State switch patterns ---------------------------------------------------------------------

// Four entries of 12 bytes: the states (i32), whether any state matches (a bool kept in a whole
// word) and a material id. Documents carry the first two; the material id of a pattern is no
// key, so neither the writer nor the walk touch it.
constexpr uint32_t kPatternListOffset = 280;
constexpr uint32_t kPatternEntryBytes = 12;
constexpr uint32_t kPatternEntries = 4;
constexpr uint32_t kPatternAnyState = 4;
constexpr uint32_t kPatternMaterial = 8;

int32_t loadWord(const uint8_t* at) {
    int32_t value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

void storeWord(uint8_t* at, int32_t value) {
    std::memcpy(at, &value, sizeof value);
}

// The Pattern elements fill the entries in document order, at most four; every entry after the
// last one read is reset to no states and no material.
void readPatterns(pugi::xml_node parent, const char* key, const FieldDescriptor& field, uint8_t* record,
                  size_t, ITaviNameInterface*) {
    const size_t capacity = field.width / kPatternEntryBytes;
    size_t entry = 0;
    for (pugi::xml_node pattern = parent.child(key); pattern && entry < capacity;
         pattern = pattern.next_sibling(key), ++entry) {
        uint8_t* at = record + field.offset + entry * kPatternEntryBytes;
        int32_t states = loadWord(at);
        XmlReadInt(pattern, "States", &states);
        storeWord(at, states);
        // A flag value that a read never stores tells whether AnyState was there at all: a
        // missing key keeps the word as it was, like every other number.
        constexpr uint8_t kAbsent = 2;
        uint8_t anyState = kAbsent;
        XmlReadBool(pattern, "AnyState", &anyState);
        if (anyState != kAbsent) storeWord(at + kPatternAnyState, anyState);
    }
    for (; entry < capacity; ++entry) {
        uint8_t* at = record + field.offset + entry * kPatternEntryBytes;
        storeWord(at, 0);
        storeWord(at + kPatternAnyState, 0);
        storeWord(at + kPatternMaterial, -1);
    }
}

void writePatterns(pugi::xml_node parent, const char* key, const FieldDescriptor& field,
                   const uint8_t* record, size_t, ITaviNameInterface*) {
    if (parent.type() != pugi::node_element) return;
    const size_t capacity = field.width / kPatternEntryBytes;
    for (size_t entry = 0; entry < capacity; ++entry) {
        const uint8_t* at = record + field.offset + entry * kPatternEntryBytes;
        pugi::xml_node pattern = parent.append_child(key);
        const int32_t states = loadWord(at);
        const uint8_t anyState = loadWord(at + kPatternAnyState) != 0 ? 1 : 0;
        XmlWriteInt(pattern, "States", &states);
        XmlWriteBool(pattern, "AnyState", &anyState);
    }
}

constexpr CustomField kPatterns{readPatterns, writePatterns};

// ---- Tables ------------------------------------------------------------------------------------

constexpr FieldDescriptor kBlendSidedFields[] = {
    materialField("FrontMaterial", 268),
    materialField("BackMaterial", 272),
    splineField("TranslucencySpline", 276, 4),
    texMapField("TranslucencyMap", 404),
};

constexpr FieldDescriptor kTopBottomFields[] = {
    materialField("TopMaterial", 268),        materialField("BottomMaterial", 272),
    splineField("BlendSpline", 276, 4),       splineField("PositionSpline", 404, 4),
    enumField("CoordType", 532, kSpaceWords),
};

constexpr FieldDescriptor kTwoSidedFields[] = {
    materialField("FrontMaterial", 268),
    materialField("BackMaterial", 272),
};

constexpr FieldDescriptor kMixFields[] = {
    intField("NumChildren", kMixCountOffset),
    enumField("NormalizationType", 272, kNormalizationWords),
    enumField("DisplaceType", 280, kDisplaceWords),
    texMapField("GlobalMask", 276),
    boolField("UseMaskAsChoice", 549),
    boolField("UseCurve", 548),
    floatField("Upper", 540),
    floatField("Lower", 544),
    customField("Child", kMixListOffset, kMixEntries* kMixEntryBytes, &kMixChildren),
};

constexpr FieldDescriptor kCutoutFields[] = {
    texMapField("MaskMap", 268),
    floatField("MaskValue", 276),
    floatField("FlyThroughValue", 280),
    materialField("Material", 272),
};

constexpr FieldDescriptor kRaySwitchFields[] = {
    materialField("MaterialDiffuse", 268),
    floatField("WeightDiffuse", 272),
    materialField("MaterialDirect", 276),
    floatField("WeightDirect", 280),
    materialField("MaterialGI", 284),
    floatField("WeightGI", 288),
    materialField("MaterialReflection", 292),
    floatField("WeightReflection", 296),
    materialField("MaterialTransmission", 300),
    floatField("WeightTransmission", 304),
    materialField("MaterialShadow", 308),
    floatField("WeightShadow", 312),
    boolField("NoShadow", 324),
    enumField("Type", 316, kSelectionWords),
    intField("DisplaceSource", 320),
};

constexpr FieldDescriptor kMtlProxyFields[] = {
    materialField("Material", 268),
};

constexpr FieldDescriptor kStateSwitchFields[] = {
    intField("States", 268),
    intField("NestedPriority", 276),
    materialField("DefaultMaterial", 272),
    customField("Pattern", kPatternListOffset, kPatternEntries* kPatternEntryBytes, &kPatterns),
};

} // namespace

constexpr TypeDescriptor kBlendSidedMaterial = describeType(2, "BLEND_SIDED", 408, kBlendSidedFields);
constexpr TypeDescriptor kTopBottomMaterial = describeType(3, "TOP_BOTTOM", 536, kTopBottomFields);
constexpr TypeDescriptor kMixMaterial = describeType(11, "MIX", 550, kMixFields);
constexpr TypeDescriptor kMixChildEntry = describeType(0, "Child", kMixEntryBytes, kMixChildFields);
constexpr TypeDescriptor kCutoutMaterial = describeType(14, "CUTOUT", 284, kCutoutFields);
constexpr TypeDescriptor kTwoSidedMaterial = describeType(16, "TWOSIDED", 276, kTwoSidedFields);
constexpr TypeDescriptor kMtlProxyMaterial = describeType(28, "MTLPROXY", 272, kMtlProxyFields);
constexpr TypeDescriptor kRaySwitchMaterial = describeType(29, "RAYSWITCH", 325, kRaySwitchFields);
constexpr TypeDescriptor kStateSwitchMaterial = describeType(32, nullptr, 328, kStateSwitchFields);

// Each table fits the record, and its image is the one the scene reader copies.
static_assert(materialTableFits(kBlendSidedMaterial));
static_assert(materialTableFits(kTopBottomMaterial));
static_assert(materialTableFits(kMixMaterial));
static_assert(materialTableFits(kCutoutMaterial));
static_assert(materialTableFits(kTwoSidedMaterial));
static_assert(materialTableFits(kMtlProxyMaterial));
static_assert(materialTableFits(kRaySwitchMaterial));
static_assert(materialTableFits(kStateSwitchMaterial));

// Every registered type, driven by its production table: a probe record with a value of its own
// in every field is walked, its document read back over a record of the background, and the two
// compared byte by byte, so that a field lost, moved or spilled over its neighbours shows, and so
// does a byte that no field claims. The same probes give the order of the name calls and what a
// document without keys leaves behind. Only the repeated elements, whose insides no table row
// shows, are described here.
#include "common/unicode.h"
#include "documents/texmap_document.h"
#include "documents/texmaps/families.h"
#include "documents/texmaps/texmap_types.h"
#include "tests/documents/texmaps/texmap_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <vector>

namespace texmap_test {
namespace {

// ---- Repeated elements -------------------------------------------------------------------------

enum class Shape { Entries, PointCurve, Models, SelectList };

struct Repeated {
    int32_t type;
    const char* key;
    Shape shape;
    uint32_t first;     // the first byte the row owns: its count where it has one
    uint32_t items;     // the first entry, point, slot or map id
    uint32_t itemBytes; // a select list's entry is its id, colour and probability together
    uint32_t capacity;
    uint32_t cubic = 0; // a point curve's flag
    std::vector<FieldDescriptor> fields = {};
    uint32_t end() const { return items + itemBytes * capacity; }
};

// One entry of each list; offsets within the entry.
// clang-format off
const std::vector<FieldDescriptor> kLayer = {
    texMapField("Map", 0x04),       texMapField("Mask", 0x08),      floatField("Weight", 0x0C),
    floatField("MaskWeight", 0x10), boolField("Invert", 0x14),      boolField("InvertM", 0x15),
    boolField("Clamp", 0x16),       boolField("ClampResult", 0x17), colorField("Color", 0x18),
    colorField("MaskColor", 0x24),  enumField("Operation", 0x00, kBlendOperationWords)};
// clang-format on
const std::vector<FieldDescriptor> kCorrectionChannel = {
    intField("Source", 0x00),     boolField("Invert", 0x04), boolField("ClampResult", 0x05),
    floatField("Contrast", 0x08), floatField("Pivot", 0x0C), floatField("Ground", 0x10),
    floatField("Low", 0x14),      floatField("High", 0x18),  splineField("Curve", 0x1C, 8)};
const std::vector<FieldDescriptor> kShuffleChannel = {
    intField("Source1", 0x00),  intField("Source2", 0x04),  floatField("MixValue", 0x08),
    boolField("Invert1", 0x0C), boolField("Invert2", 0x0D), boolField("ClampResult", 0x0E)};

const std::vector<Repeated> kRepeated = {
    {7, "Layer", Shape::Entries, 0x108, 0x10C, 0x30, 32, 0, kLayer},
    {5, "Channel", Shape::Entries, 0x120, 0x120, 0x11C, 8, 0, kCorrectionChannel},
    {12, "Channel", Shape::Entries, 0x130, 0x130, 0x10, 8, 0, kShuffleChannel},
    {5, "CurvesW", Shape::PointCurve, 0xB88, 0xBA4, 8, 64, 0xB98},
    {5, "CurvesR", Shape::PointCurve, 0xB8C, 0xDA4, 8, 64, 0xB99},
    {5, "CurvesG", Shape::PointCurve, 0xB90, 0xFA4, 8, 64, 0xB9A},
    {5, "CurvesB", Shape::PointCurve, 0xB94, 0x11A4, 8, 64, 0xB9B},
    {22, "IncludeList", Shape::Models, 0x168, 0x168, 8, 64},
    {22, "ExcludeList", Shape::Models, 0x368, 0x368, 8, 64},
    {17, "Maps", Shape::SelectList, 0x5B8, 0x5B8, 20, 8},
};

const Repeated* repeatedOf(int32_t type, const char* key) {
    for (const Repeated& repeated : kRepeated) {
        if (repeated.type == type && std::string(repeated.key) == key) return &repeated;
    }
    return nullptr;
}

// ---- Probes ------------------------------------------------------------------------------------

struct Probe {
    std::unique_ptr<TexMapRecord> record;
    std::unique_ptr<TexMapRecord> readBack;    // what the walk's own document reads back
    std::unique_ptr<TexMapRecord> missingKeys; // what a document without own keys leaves
    std::vector<std::string> walk, reads;      // the name calls of the walk and of its read
    RecordingNames* names;
};

template <class T> void put(uint8_t* at, const T& value) {
    std::memcpy(at, &value, sizeof value);
}

// Segments 0, 2 and the last in use unless `unused`; the others marked unused, keeping the rest.
void fillSpline(uint8_t* at, uint32_t count, float seed, bool unused = false) {
    for (uint32_t i = 0; i < count; ++i) {
        const float x = static_cast<float>(i);
        const float used[8] = {x,        x + 0.25f,         x + 0.5f,         x + 1,
                               seed + x, seed + x + 0.125f, seed + x + 0.25f, seed + x + 0.375f};
        if (!unused && (i == 0 || i == 2 || i + 1 == count)) {
            std::memcpy(at + 32 * i, used, sizeof used);
        } else {
            put(at + 32 * i, 1.0f);
            put(at + 32 * i + 12, 0.0f);
        }
    }
}

void fillFloats(uint8_t* at, uint32_t count, float seed) {
    for (uint32_t i = 0; i < count; ++i)
        put(at + 4 * i, seed + 0.25f * static_cast<float>(i) + 0.5f);
}

// A value derived from the offset, so that no two fields agree and none is what a read of
// nothing would leave.
void fillValue(const FieldDescriptor& field, uint32_t at, Probe& probe) {
    uint8_t* p = reinterpret_cast<uint8_t*>(probe.record.get()) + at;
    const float seed = static_cast<float>(at);
    switch (field.kind) {
    case FieldKind::Int:
        return put(p, static_cast<int32_t>(100000 + at));
    case FieldKind::Float:
        return put(p, seed + 0.125f);
    case FieldKind::Bool:
        return put(p, uint8_t{1});
    case FieldKind::Enum:
        return put(p, static_cast<int32_t>(1 + at / 4 % (XmlWordCount(field.words) - 1)));
    case FieldKind::Color:
    case FieldKind::ColorEx:
    case FieldKind::Matrix:
        return fillFloats(p, field.width / 4, seed);
    case FieldKind::Spline:
        return fillSpline(p, field.segments, seed);
    case FieldKind::String: {
        // A read leaves the terminator and the last character; the rest keeps the background.
        const uint32_t length = std::min(200u, field.width / 2 - 1);
        for (uint32_t i = 0; i < length; ++i)
            put(p + 2 * i, static_cast<char16_t>(u'a' + (i + at) % 26));
        put(p + 2 * length, char16_t{0});
        return put(p + field.width - 2, char16_t{0});
    }
    case FieldKind::TexMapRef:
    case FieldKind::TextureRef: {
        const bool map = field.kind == FieldKind::TexMapRef;
        const std::string name = (map ? "map_" : "tex_") + std::to_string(at);
        put(p, static_cast<int32_t>(at));
        probe.names->define(static_cast<int32_t>(at), utf8ToUtf16(name));
        probe.walk.push_back((map ? "TexMapName " : "TextureName ") + std::to_string(at));
        probe.reads.push_back((map ? "TexMapId " : "TextureId ") + name);
        return;
    }
    case FieldKind::CoordGen:
        // Matrix, outside colour and blurs; channel; tiling, mirroring and the derived flags,
        // which a matrix this far from identity sets; type; the noise but for its spare byte.
        fillFloats(p, 0x58 / 4, seed);
        put(p + 0x58, int32_t{11});
        std::memset(p + 0x5C, 1, 8);
        put(p + 0x64, int32_t{2});
        fillFloats(p + 0x68, 7, seed + 30);
        put(p + 0x84, int16_t{-19});
        p[0x86] = 1;
        return fillFloats(p + 0x88, 2, seed + 40);
    case FieldKind::ColorOutput:
        fillFloats(p, 7, seed);
        std::memset(p + 0x1C, 1, 3);
        return fillSpline(p + 0x20, 32, seed);
    default:
        ADD_FAILURE() << "no values for the kind of " << field.key;
    }
}

bool selectEntryUsed(uint32_t entry) {
    return entry == 0 || entry == 3 || entry == 7;
}

// A read starts a list from zero, padding included, and so does the probe. Models have no names,
// so a slot comes back as the handle of none; starting from that handle keeps the round trip
// exact. A select entry without a map isn't written, so its colour and probability are left to
// the background.
void fillRepeated(const Repeated& r, Probe& probe) {
    uint8_t* bytes = reinterpret_cast<uint8_t*>(probe.record.get());
    if (r.shape != Shape::SelectList) std::memset(bytes + r.items, 0, r.end() - r.items);
    switch (r.shape) {
    case Shape::Entries:
        if (r.first != r.items) put(bytes + r.first, static_cast<int32_t>(r.capacity));
        for (uint32_t i = 0; i < r.capacity; ++i) {
            for (const FieldDescriptor& field : r.fields)
                fillValue(field, r.items + i * r.itemBytes + field.offset, probe);
        }
        return;
    case Shape::PointCurve:
        put(bytes + r.first, static_cast<int32_t>(r.first % 64));
        bytes[r.cubic] = r.first / 4 % 2;
        return fillFloats(bytes + r.items, 2 * (r.first % 64), static_cast<float>(r.items));
    case Shape::Models:
        for (uint32_t slot : {0u, 5u, 63u}) {
            put(bytes + r.items + 8 * slot, kNoModel);
            probe.walk.push_back("ModelName");
            probe.reads.push_back("ModelId ");
        }
        return;
    case Shape::SelectList:
        for (uint32_t entry = 0; entry < r.capacity; ++entry) {
            put(bytes + r.items + 4 * entry, int32_t{-1});
            if (!selectEntryUsed(entry)) continue;
            fillValue(texMapField("Map", 0), r.items + 4 * entry, probe);
            fillValue(colorField("Color", 0), r.items + 0x20 + 12 * entry, probe);
            fillValue(floatField("Probability", 0), r.items + 0x80 + 4 * entry, probe);
        }
    }
}

// What a document without the key does: a reference becomes none, a text empty, a spline unused
// and a list empty, with its curves cubic again; any other value stays.
void applyMissing(const FieldDescriptor& field, int32_t type, uint8_t* bytes) {
    uint8_t* p = bytes + field.offset;
    if (field.kind == FieldKind::TexMapRef || field.kind == FieldKind::TextureRef) put(p, int32_t{-1});
    if (field.kind == FieldKind::Spline) fillSpline(p, field.segments, 0, true);
    if (field.kind == FieldKind::ColorOutput) fillSpline(p + 0x20, 32, 0, true);
    if (field.kind == FieldKind::String) {
        put(p, char16_t{0});
        put(p + field.width - 2, char16_t{0});
    }
    const Repeated* r = field.kind == FieldKind::Custom ? repeatedOf(type, field.key) : nullptr;
    if (!r) return;
    if (r->shape == Shape::Entries || r->shape == Shape::Models) std::memset(p, 0, r->end() - r->first);
    if (r->shape == Shape::PointCurve) {
        put(p, int32_t{0});
        bytes[r->cubic] = 1;
        std::memset(bytes + r->items, 0, r->end() - r->items);
    }
    for (uint32_t entry = 0; entry < r->capacity && r->shape == Shape::SelectList; ++entry)
        put(p + 4 * entry, int32_t{-1});
}

Probe makeProbe(const TypeDescriptor& table, RecordingNames* names) {
    std::vector<FieldDescriptor> fields;
    if (table.mapped) {
        fields.push_back(coordGenField("CoordGen", kTexMapCoordGenOffset));
        fields.push_back(colorOutputField("ColorOutput", kTexMapColorOutputOffset));
    }
    fields.insert(fields.end(), table.fields, table.fields + table.fieldCount);

    Probe probe;
    probe.names = names;
    probe.record = recordOf(table.type);
    std::memcpy(probe.record->Name, u"Probe", sizeof u"Probe");
    probe.record->Name[kNameChars - 1] = 0;
    for (const FieldDescriptor& field : fields) {
        const Repeated* repeated = repeatedOf(table.type, field.key);
        if (field.kind == FieldKind::Custom && repeated) fillRepeated(*repeated, probe);
        if (field.kind != FieldKind::Custom && field.kind != FieldKind::Section)
            fillValue(field, field.offset, probe);
    }
    probe.readBack = std::make_unique<TexMapRecord>(*probe.record);
    probe.missingKeys = std::make_unique<TexMapRecord>(*probe.record);
    for (const FieldDescriptor& field : fields) {
        if (field.flags & kFieldReadOnly)
            std::memset(reinterpret_cast<uint8_t*>(probe.readBack.get()) + field.offset, kBackground,
                        field.width);
        applyMissing(field, table.type, reinterpret_cast<uint8_t*>(probe.missingKeys.get()));
    }
    return probe;
}

// ---- Tests -------------------------------------------------------------------------------------

template <class Check> void forEachType(Check check) {
    for (const TypeDescriptor* const* entry = allTexMapTypes(); *entry; ++entry) {
        SCOPED_TRACE((*entry)->word);
        check(**entry);
    }
}

// SELECTMAP's list counts only behind a Model element, which the walk doesn't write.
bool readBack(pugi::xml_document& doc, TexMapRecord* record, RecordingNames* names) {
    pugi::xml_node maps = doc.child("TaviTexMap").child("SpecificParameters").child("Maps");
    if (maps) maps.prepend_child("Model");
    std::ostringstream text;
    doc.save(text);
    return readDocumentText(text.str(), record, names);
}

// The first byte where the records differ, named by the field that holds it.
std::string firstDifference(const TypeDescriptor& table, const TexMapRecord& actual,
                            const TexMapRecord& expected) {
    for (uint32_t i = 0; i < sizeof(TexMapRecord); ++i) {
        const int a = valueAt<uint8_t>(actual, i), e = valueAt<uint8_t>(expected, i);
        if (a == e) continue;
        std::string where = i < kTexMapPlainFieldsOffset ? "head" : "a shared block or no field";
        for (size_t k = 0; k < table.fieldCount; ++k) {
            if (i >= table.fields[k].offset && i < table.fields[k].offset + table.fields[k].width)
                where = table.fields[k].key;
        }
        std::ostringstream out;
        out << where << " at 0x" << std::hex << i << ": 0x" << a << " instead of 0x" << e;
        return out.str();
    }
    return "";
}

// The walk names every reference in table order; the read of its document asks for the same
// names in the same order, and gives the record back.
TEST(RoundTrip, EveryTypeWalksInTableOrderAndComesBackFromItsOwnDocument) {
    forEachType([](const TypeDescriptor& table) {
        TestNames names;
        const Probe probe = makeProbe(table, &names);
        WalkTexMapReferences(probe.record.get(), &names);
        EXPECT_EQ(names.calls, probe.walk);

        pugi::xml_document doc;
        ASSERT_TRUE(BuildTexMapDocument(probe.record.get(), &names, &doc));
        names.calls.clear();
        auto back = recordOf(table.type);
        EXPECT_TRUE(readBack(doc, back.get(), &names));
        EXPECT_EQ(names.calls, probe.reads);
        EXPECT_EQ(firstDifference(table, *back, *probe.readBack), "");
    });
}

TEST(MissingKeys, ReferencesBecomeNoneStringsEmptySplinesUnusedListsEmptyAndTheRestStays) {
    forEachType([](const TypeDescriptor& table) {
        const std::string word = table.word;
        const std::string head = "<TaviTexMap type='" + word + "'><Common><Name value='Probe'/></Common>";
        for (const std::string& text : {documentWith(word, ""), head + "</TaviTexMap>"}) {
            SCOPED_TRACE(text);
            TestNames names;
            const Probe probe = makeProbe(table, &names);
            const bool found = readDocumentText(text, probe.record.get(), &names);
            EXPECT_EQ(found, table.type != 1 && table.type != 2)
                << "only the image maps report a missing texture";
            EXPECT_EQ(firstDifference(table, *probe.record, *probe.missingKeys), "");
        }
    });
}

// A plain field that shares a byte with another survives a round trip unnoticed, so overlaps are
// looked for here. Repeated elements may span others (the interleaved point curves); what the
// tests describe of them must match their rows exactly.
TEST(Tables, FieldsAreDisjointAndRepeatedElementsOwnWhatTheTestsDescribe) {
    size_t repeated = 0;
    forEachType([&repeated](const TypeDescriptor& table) {
        std::set<std::string> keys;
        std::vector<const char*> owner(sizeof(TexMapRecord), nullptr);
        for (size_t i = 0; i < table.fieldCount; ++i) {
            const FieldDescriptor& field = table.fields[i];
            EXPECT_TRUE(keys.insert(field.key).second) << "duplicate key " << field.key;
            if (field.kind == FieldKind::Custom) {
                const Repeated* described = repeatedOf(table.type, field.key);
                ASSERT_NE(described, nullptr) << "the tests don't know the shape of " << field.key;
                EXPECT_EQ(field.offset, described->first) << field.key;
                EXPECT_EQ(field.offset + field.width, described->end()) << field.key;
                ++repeated;
                continue;
            }
            for (uint32_t b = field.offset; b < field.offset + field.width; ++b) {
                EXPECT_EQ(owner[b], nullptr)
                    << field.key << " shares 0x" << std::hex << b << " with " << owner[b];
                owner[b] = field.key;
            }
        }
    });
    EXPECT_EQ(repeated, kRepeated.size());
}

} // namespace
} // namespace texmap_test

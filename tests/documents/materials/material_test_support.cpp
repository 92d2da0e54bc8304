#include "tests/documents/materials/material_test_support.h"

#include "documents/material_document.h"
#include "documents/materials/material_types.h"
#include "documents/texmap_blocks.h"
#include "documents/xml_value_codec.h"

#include <gtest/gtest.h>

#include <sstream>

namespace material_test {

std::vector<const TypeDescriptor*> allTables() {
    std::vector<const TypeDescriptor*> tables;
    for (const TypeDescriptor* const* entry = allMaterialTypes(); *entry; ++entry)
        tables.push_back(*entry);
    return tables;
}

std::string wordOf(const TypeDescriptor& table) {
    return table.word ? table.word : "";
}

RecordPtr recordOf(int32_t type, uint8_t fill) {
    auto record = std::make_unique<MaterialRecord>();
    std::memset(record.get(), fill, sizeof(MaterialRecord));
    record->type = type;
    return record;
}

uint8_t* bytesOf(MaterialRecord* record) {
    return reinterpret_cast<uint8_t*>(record);
}

const uint8_t* bytesOf(const MaterialRecord* record) {
    return reinterpret_cast<const uint8_t*>(record);
}

namespace {

std::u16string wide(const std::string& text) {
    return std::u16string(text.begin(), text.end());
}

void storeReference(MaterialRecord* record, size_t offset, int32_t id, RecordingNames& names) {
    store(record, offset, id);
    names.define(id, wide("R" + std::to_string(id)));
}

// ---- MIX: 16 children of 16 bytes from byte 284, NumChildren at 268 ----------------------------

constexpr int32_t kMixInUse = 5;

size_t mixInUse(const MaterialRecord* record) {
    const int32_t count = load<int32_t>(record, 268);
    return count < 0 ? 0 : count > 16 ? 16 : static_cast<size_t>(count);
}

void fillMix(MaterialRecord* record, RecordingNames& names) {
    store<int32_t>(record, 268, kMixInUse);
    for (int32_t i = 0; i < 16; ++i) {
        const size_t at = 284 + 16 * static_cast<size_t>(i);
        storeReference(record, at, 3500 + i, names);
        store<float>(record, at + 4, 0.5f + static_cast<float>(i));
        storeReference(record, at + 8, 2500 + i, names);
        store<float>(record, at + 12, 10.25f + static_cast<float>(i));
    }
}

// The entries beyond NumChildren are not written, so a zeroed record keeps them zero.
void mixAfterRoundTrip(const MaterialRecord* original, MaterialRecord* expected) {
    for (size_t i = mixInUse(original); i < 16; ++i)
        std::memset(bytesOf(expected) + 284 + 16 * i, 0, 16);
}

void mixAfterMissing(MaterialRecord*) {} // no Child element: every entry keeps what it held

void mixWalk(const MaterialRecord* record, std::vector<std::string>& calls) {
    for (size_t i = 0; i < mixInUse(record); ++i) {
        calls.push_back("MaterialName " + std::to_string(load<int32_t>(record, 284 + 16 * i)));
        calls.push_back("TexMapName " + std::to_string(load<int32_t>(record, 292 + 16 * i)));
    }
}

const ListHooks kMixHooks{fillMix, mixAfterRoundTrip, mixAfterMissing, mixWalk, mixInUse};

// ---- State switch: 4 patterns of 12 bytes from byte 280 ----------------------------------------

void fillPatterns(MaterialRecord* record, RecordingNames&) {
    for (int32_t i = 0; i < 4; ++i) {
        const size_t at = 280 + 12 * static_cast<size_t>(i);
        store<int32_t>(record, at, 40 + i);
        store<int32_t>(record, at + 4, i % 2);
        store<int32_t>(record, at + 8, 3900 + i);
    }
}

// A pattern's material is no key: the zeroed record keeps its zeros.
void patternsAfterRoundTrip(const MaterialRecord*, MaterialRecord* expected) {
    for (size_t i = 0; i < 4; ++i)
        store<int32_t>(expected, 280 + 12 * i + 8, 0);
}

// Without Pattern elements every entry becomes no states, no flag, no material.
void patternsAfterMissing(MaterialRecord* expected) {
    for (size_t i = 0; i < 4; ++i) {
        store<int32_t>(expected, 280 + 12 * i, 0);
        store<int32_t>(expected, 280 + 12 * i + 4, 0);
        store<int32_t>(expected, 280 + 12 * i + 8, -1);
    }
}

void patternsWalk(const MaterialRecord*, std::vector<std::string>&) {}

size_t patternElements(const MaterialRecord*) {
    return 4;
}

const ListHooks kPatternHooks{fillPatterns, patternsAfterRoundTrip, patternsAfterMissing, patternsWalk,
                              patternElements};

// ---- Values of single kinds --------------------------------------------------------------------

// A text of capacity - 1 characters, unique to the row, with one character beyond ASCII.
void fillText(MaterialRecord* record, const FieldDescriptor& field, size_t index) {
    const size_t capacity = field.width / 2;
    std::u16string text = u"F" + wide(std::to_string(index)) + u"\u00FC";
    while (text.size() < capacity - 1)
        text += static_cast<char16_t>(u'a' + text.size() % 26);
    text.resize(capacity - 1);
    text += u'\0';
    std::memcpy(bytesOf(record) + field.offset, text.data(), field.width);
}

void fillSpline(MaterialRecord* record, const FieldDescriptor& field, size_t index) {
    const float base = static_cast<float>(index) * 16.0f;
    for (uint32_t s = 0; s < field.segments; ++s) {
        SplineSegment segment{1, 0, 0, 0, 0, 0, 0, 0};
        if (s != 1 && s + 1 != field.segments) {
            const float t = static_cast<float>(s);
            segment = {t,        t + 0.25f,         t + 0.5f,          t + 1,
                       base + t, base + t + 0.125f, base + t + 0.375f, base + t + 0.625f};
        }
        store(record, field.offset + s * sizeof(SplineSegment), segment);
    }
}

void fillColorSpline(MaterialRecord* record, const FieldDescriptor& field, size_t index) {
    const float base = static_cast<float>(index) * 64.0f;
    for (uint32_t s = 0; s < kColorSplineSegments; ++s) {
        ColorSplineSegment segment{};
        segment.ts = 1;
        if (s % 2 == 0) {
            float values[sizeof(ColorSplineSegment) / sizeof(float)];
            for (size_t k = 0; k < std::size(values); ++k)
                values[k] = base + static_cast<float>(s * 20 + k) * 0.5f;
            std::memcpy(&segment, values, sizeof segment);
            segment.ts = static_cast<float>(s);
            segment.te = static_cast<float>(s) + 1;
        }
        store(record, field.offset + s * sizeof(ColorSplineSegment), segment);
    }
}

void fillCoordGen(MaterialRecord* record, const FieldDescriptor& field, size_t index) {
    CoordGen block{};
    const float base = static_cast<float>(index);
    for (int i = 0; i < 12; ++i)
        block.CoordinateMatrix.m[i / 4][i % 4] = base + static_cast<float>(i) * 0.5f;
    block.OutsideColor = {1.5f, 2.5f, 3.5f, 4.5f, 5.5f, 6.5f, 7.5f, base};
    block.Blur = 0.125f * base;
    block.BlurOffset = 0.25f;
    block.CoordinateChannel = 3;
    block.CoordinateEnTile[0] = 1;
    block.CoordinateEnMirror[2] = 1;
    block.CoordGenType = 2;
    block.Noise = {{0.1f, 0.2f, 0.3f}, {4, 5, 6}, 0.75f, 7, 1, 0, 0.6f, 1.7f};
    UpdateCoordGenFlags(&block); // derived on every read, so the sample agrees with it
    store(record, field.offset, block);
}

} // namespace

const ListHooks& listHooks(int32_t type) {
    static const ListHooks kNone{[](MaterialRecord*, RecordingNames&) {},
                                 [](const MaterialRecord*, MaterialRecord*) {}, [](MaterialRecord*) {},
                                 [](const MaterialRecord*, std::vector<std::string>&) {},
                                 [](const MaterialRecord*) -> size_t { return 0; }};
    if (type == 11) return kMixHooks;
    if (type == 32) return kPatternHooks;
    ADD_FAILURE() << "type " << type << " has a list that the tests don't know";
    return kNone;
}

void fillDistinct(const TypeDescriptor& table, MaterialRecord* record, RecordingNames& names) {
    record->AovID = 77;
    const char16_t name[] = u"Distinct \u00E9";
    std::memcpy(record->Name, name, sizeof name);
    for (size_t i = 0; i < table.fieldCount; ++i) {
        const FieldDescriptor& field = table.fields[i];
        const float f = static_cast<float>(i);
        switch (field.kind) {
        case FieldKind::Section:
            break;
        case FieldKind::Int:
            store<int32_t>(record, field.offset, -7000 - static_cast<int32_t>(i));
            break;
        case FieldKind::UInt:
            store<uint32_t>(record, field.offset, 3000000u + static_cast<uint32_t>(i));
            break;
        case FieldKind::Float:
            store(record, field.offset, f + 0.375f);
            break;
        case FieldKind::Bool:
            store<uint8_t>(record, field.offset, 1);
            break;
        case FieldKind::Enum:
            store<int32_t>(record, field.offset, static_cast<int32_t>(XmlWordCount(field.words)) - 1);
            break;
        case FieldKind::String:
            fillText(record, field, i);
            break;
        case FieldKind::Color:
            store(record, field.offset, ColorRGB{f + 0.25f, f + 0.5f, f + 0.75f});
            break;
        case FieldKind::Matrix:
            for (uint32_t k = 0; k < 12; ++k)
                store<float>(record, field.offset + 4 * k, f * 20 + 0.5f * static_cast<float>(k));
            break;
        case FieldKind::Spline:
            fillSpline(record, field, i);
            break;
        case FieldKind::ColorSpline:
            fillColorSpline(record, field, i);
            break;
        case FieldKind::TexMapRef:
        case FieldKind::MaterialRef:
            storeReference(record, field.offset, 1000 + static_cast<int32_t>(i), names);
            break;
        case FieldKind::CoordGen:
            fillCoordGen(record, field, i);
            break;
        case FieldKind::Custom:
            listHooks(table.type).fill(record, names);
            break;
        default:
            ADD_FAILURE() << field.key << ": the filler knows no value of kind "
                          << static_cast<int>(field.kind);
        }
    }
}

long sourceRow(const TypeDescriptor& table, size_t row) {
    const FieldDescriptor& field = table.fields[row];
    for (size_t i = 0; i < row; ++i) {
        if (std::strcmp(table.fields[i].key, field.key) != 0) continue;
        const bool emptySection =
            table.fields[i].kind == FieldKind::Section && field.kind != FieldKind::Section;
        return emptySection ? -1 : static_cast<long>(i);
    }
    return static_cast<long>(row);
}

bool sharesBytes(const TypeDescriptor& table, size_t row) {
    const FieldDescriptor& field = table.fields[row];
    for (size_t i = 0; i < table.fieldCount; ++i) {
        const FieldDescriptor& other = table.fields[i];
        if (field.width == 0 || other.width == 0 || std::strcmp(field.key, other.key) == 0) continue;
        if (field.offset < other.offset + other.width && other.offset < field.offset + field.width)
            return true;
    }
    return false;
}

std::string documentText(const pugi::xml_document& doc) {
    std::ostringstream out;
    doc.save(out, "  ", pugi::format_default, pugi::encoding_utf8);
    return out.str();
}

std::string writtenText(const MaterialRecord* record, RecordingNames& names) {
    pugi::xml_document doc;
    EXPECT_TRUE(BuildMaterialDocument(record, &names, &doc));
    return documentText(doc);
}

std::string materialText(const std::string& word, const std::string& specific) {
    return "<TaviMaterial type='" + word + "'><SpecificParameters>" + specific +
           "</SpecificParameters></TaviMaterial>";
}

bool readText(const std::string& text, MaterialRecord* record, RecordingNames& names) {
    documents_test::TempFolder folder;
    const std::u16string path = folder.write("material.xml", text);
    return ReadMaterialDocument(record, path.c_str(), &names);
}

std::string firstDifference(const TypeDescriptor& table, const MaterialRecord* actual,
                            const MaterialRecord* expected) {
    const uint8_t* a = bytesOf(actual);
    const uint8_t* e = bytesOf(expected);
    for (size_t byte = 0; byte < sizeof(MaterialRecord); ++byte) {
        if (a[byte] == e[byte]) continue;
        std::string where = byte < kMaterialFieldsOffset ? "the head" : "no row";
        for (size_t i = 0; i < table.fieldCount; ++i) {
            const FieldDescriptor& field = table.fields[i];
            if (field.width && byte >= field.offset && byte - field.offset < field.width)
                where = std::string(field.key) + " at " + std::to_string(field.offset);
        }
        return "byte " + std::to_string(byte) + " in " + where + ": " + std::to_string(a[byte]) +
               " instead of " + std::to_string(e[byte]);
    }
    return "";
}

} // namespace material_test

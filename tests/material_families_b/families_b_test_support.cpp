#include "tests/material_families_b/families_b_test_support.h"

#include "documents/material_document.h"
#include "documents/materials/families.h"
#include "documents/xml_value_codec.h"

#include <sstream>

namespace families_b_test {

std::vector<const TypeDescriptor*> familyTypes() {
    return {&kPhysicalMaterial, &kUberMaterial, &kHairMaterial, &kVolumetricMaterial, &kMieMaterial};
}

std::unique_ptr<MaterialRecord> recordOf(int32_t type, uint8_t fill) {
    auto record = std::make_unique<MaterialRecord>();
    std::memset(record.get(), fill, sizeof(MaterialRecord));
    record->type = type;
    return record;
}

const uint8_t* bytesOf(const MaterialRecord* record) {
    return reinterpret_cast<const uint8_t*>(record);
}

uint8_t* bytesOf(MaterialRecord* record) {
    return reinterpret_cast<uint8_t*>(record);
}

int32_t referenceIdOf(size_t index) {
    return 1000 + static_cast<int32_t>(index);
}

namespace {

std::u16string digits(size_t value) {
    std::u16string text;
    for (char c : std::to_string(value))
        text += static_cast<char16_t>(c);
    return text;
}

// A text of capacity - 1 characters, unique to the row, with one character beyond ASCII.
void fillText(MaterialRecord* record, const FieldDescriptor& field, size_t index) {
    const size_t capacity = field.width / 2;
    std::u16string text = u"F" + digits(index) + u"\u00FC";
    while (text.size() < capacity - 1)
        text += static_cast<char16_t>(u'a' + text.size() % 26);
    text.resize(capacity - 1);
    text += u'\0';
    std::memcpy(bytesOf(record) + field.offset, text.data(), field.width);
}

// Segments in use carry values of their own; segment 1 and the last are unused, and an unused
// segment is written as the reader leaves one in a zeroed record: the marker and nothing else.
void fillSpline(MaterialRecord* record, const FieldDescriptor& field, size_t index) {
    const float base = static_cast<float>(index) * 16.0f;
    for (uint32_t s = 0; s < field.segments; ++s) {
        SplineSegment segment{1, 0, 0, 0, 0, 0, 0, 0};
        if (s != 1 && s + 1 != field.segments) {
            const float t = static_cast<float>(s);
            segment = {t,        t + 0.25f,         t + 0.5f,          t + 1,
                       base + t, base + t + 0.125f, base + t + 0.375f, base + t + 0.625f};
        }
        putAt(record, field.offset + s * sizeof(SplineSegment), segment);
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
        putAt(record, field.offset + s * sizeof(ColorSplineSegment), segment);
    }
}

} // namespace

void fillDistinct(const TypeDescriptor& table, MaterialRecord* record, RecordingNames* names) {
    record->AovID = 77;
    const char16_t name[] = u"Distinct \u00E9";
    std::memcpy(record->Name, name, sizeof name);
    for (size_t i = 0; i < table.fieldCount; ++i) {
        const FieldDescriptor& field = table.fields[i];
        const float f = static_cast<float>(i);
        switch (field.kind) {
        case FieldKind::Int:
            putAt<int32_t>(record, field.offset, -7000 - static_cast<int32_t>(i));
            break;
        case FieldKind::UInt:
            putAt<uint32_t>(record, field.offset, 3000000u + static_cast<uint32_t>(i));
            break;
        case FieldKind::Float:
            putAt(record, field.offset, f + 0.375f);
            break;
        case FieldKind::Bool:
            putAt<uint8_t>(record, field.offset, 1);
            break;
        case FieldKind::Enum:
            putAt<int32_t>(record, field.offset, static_cast<int32_t>(XmlWordCount(field.words)) - 1);
            break;
        case FieldKind::String:
            fillText(record, field, i);
            break;
        case FieldKind::Color:
            putAt(record, field.offset, ColorRGB{f + 0.25f, f + 0.5f, f + 0.75f});
            break;
        case FieldKind::Spline:
            fillSpline(record, field, i);
            break;
        case FieldKind::ColorSpline:
            fillColorSpline(record, field, i);
            break;
        case FieldKind::TexMapRef:
        case FieldKind::MaterialRef:
            putAt(record, field.offset, referenceIdOf(i));
            names->define(referenceIdOf(i), u"Ref" + digits(i));
            break;
        default:
            break;
        }
    }
}

std::string writtenDocument(const TypeDescriptor& table, const MaterialRecord* record,
                            RecordingNames* names) {
    pugi::xml_document doc;
    BuildMaterialWithTable(table, record, names, &doc);
    std::ostringstream out;
    doc.save(out, "  ", pugi::format_default, pugi::encoding_utf8);
    return out.str();
}

bool readDocumentText(const std::string& text, MaterialRecord* record, RecordingNames* names) {
    documents_test::TempFolder folder;
    const std::u16string path = folder.write("material.xml", text);
    return ReadMaterialDocument(record, path.c_str(), names);
}

std::string describeFirstDifference(const TypeDescriptor& table, const MaterialRecord* actual,
                                    const MaterialRecord* expected) {
    const uint8_t* a = bytesOf(actual);
    const uint8_t* e = bytesOf(expected);
    for (size_t byte = 0; byte < sizeof(MaterialRecord); ++byte) {
        if (a[byte] == e[byte]) continue;
        std::string where = "outside every field";
        if (byte < kMaterialFieldsOffset) where = "the head";
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

} // namespace families_b_test

#include "tests/material_families/family_cases.h"

#include "documents/texmap_blocks.h"

namespace families_test {

uint32_t rowWidth(const Row& row) {
    switch (row.kind) {
    case K::Int:
    case K::Float:
    case K::Enum:
    case K::TexMapRef:
    case K::MaterialRef:
        return 4;
    case K::Bool:
        return 1;
    case K::Color:
        return 12;
    case K::Matrix:
        return 48;
    case K::Spline:
        return 32 * row.size;
    case K::CoordGen:
        return 144;
    case K::Custom:
        return row.size;
    default:
        return 0;
    }
}

bool sharesBytes(int32_t type, const std::string& key) {
    return type == 30 &&
           (key == "RTC/Roughness/RoughnessAnisotropySpline" || key == "RTC/Roughness/RoughnessAngleSpline");
}

std::vector<TypeCase> allCases() {
    std::vector<TypeCase> all;
    for (auto part : {mixingCases, diffuseCases, specularCases, modifierCases}) {
        for (TypeCase& type : part())
            all.push_back(std::move(type));
    }
    return all;
}

uint8_t* bytesOf(MaterialRecord* record) {
    return reinterpret_cast<uint8_t*>(record);
}

const uint8_t* bytesOf(const MaterialRecord* record) {
    return reinterpret_cast<const uint8_t*>(record);
}

RecordPtr emptyRecord(int32_t type) {
    auto record = std::make_unique<MaterialRecord>();
    std::memset(record.get(), 0, sizeof(MaterialRecord));
    record->type = type;
    return record;
}

std::u16string sampleName(bool texMap, int32_t id) {
    const std::string text = (texMap ? "Map" : "Material") + std::to_string(id);
    return std::u16string(text.begin(), text.end());
}

void defineSampleNames(documents_test::RecordingNames& names) {
    for (int32_t id = 2000; id < 3000; ++id)
        names.define(id, sampleName(true, id));
    for (int32_t id = 3000; id < 4000; ++id)
        names.define(id, sampleName(false, id));
}

namespace {

size_t wordCount(const char* const* words) {
    size_t count = 0;
    while (words[count])
        ++count;
    return count;
}

void fillSpline(uint8_t* record, const Row& row, int index, int seed) {
    for (uint32_t segment = 0; segment < row.size; ++segment) {
        SplineSegment value{};
        if (seed == 1 && segment % 2 == 1) {
            value.ts = 1; // unused: the writer leaves it out, the reader marks it so again
        } else {
            const float base = static_cast<float>(index * 100 + static_cast<int>(segment) * 10 + seed);
            value = {base, base + 0.25f, base + 0.5f, base + 1, base + 2, base + 3, base + 4, base + 5};
        }
        store(record, row.byte + 32 * segment, value);
    }
}

void fillCoordGen(uint8_t* record, const Row& row, int index, int seed) {
    CoordGen block{};
    for (int i = 0; i < 12; ++i)
        block.CoordinateMatrix.m[i / 4][i % 4] = static_cast<float>(index + i + seed) * 0.5f;
    block.OutsideColor = {1.5f, 2.5f, 3.5f, 4.5f, 5.5f, 6.5f, 7.5f, static_cast<float>(index)};
    block.Blur = 0.125f * static_cast<float>(index);
    block.BlurOffset = 0.25f + static_cast<float>(seed);
    block.CoordinateChannel = 3 + seed;
    block.CoordinateEnTile[seed] = 1;
    block.CoordinateEnMirror[2 - seed] = 1;
    block.CoordGenType = 1 + seed;
    block.Noise.Amplitude = {0.1f, 0.2f, 0.3f};
    block.Noise.Scale = {4, 5, 6};
    block.Noise.Phase = 0.75f;
    block.Noise.Levels = static_cast<int16_t>(7 + seed);
    block.Noise.UsePhase = static_cast<uint8_t>(seed);
    block.Noise.OctaveAmplitude = 0.6f;
    block.Noise.OctaveSize = 1.7f;
    UpdateCoordGenFlags(&block); // derived on every read, so the sample agrees with it
    store(record, row.byte, block);
}

} // namespace

RecordPtr sampleRecord(const TypeCase& type, int seed) {
    RecordPtr record = emptyRecord(type.type);
    record->AovID = 70 + seed;
    const std::u16string name = u"Sample " + std::u16string(1, static_cast<char16_t>(u'A' + seed));
    std::copy(name.begin(), name.end(), record->Name);
    uint8_t* bytes = bytesOf(record.get());
    int index = 0;
    for (const Row& row : type.rows) {
        ++index;
        switch (row.kind) {
        case K::Int:
            store<int32_t>(bytes, row.byte, 1000 * (seed + 1) + index);
            break;
        case K::Float:
            store<float>(bytes, row.byte,
                         static_cast<float>(index) * 1.5f + 0.1f * static_cast<float>(seed + 1));
            break;
        case K::Bool:
            bytes[row.byte] = static_cast<uint8_t>((index + seed) % 2);
            break;
        case K::Enum:
            store<int32_t>(bytes, row.byte, static_cast<int32_t>((index + seed) % wordCount(row.words)));
            break;
        case K::Color: {
            const float base = static_cast<float>(index * 10 + seed);
            store(bytes, row.byte, ColorRGB{base + 0.25f, base + 0.5f, base + 0.75f});
            break;
        }
        case K::Matrix:
            for (uint32_t i = 0; i < 12; ++i)
                store<float>(bytes, row.byte + 4 * i, static_cast<float>(index * 20 + seed) + 0.5f * i);
            break;
        case K::Spline:
            fillSpline(bytes, row, index, seed);
            break;
        case K::TexMapRef:
            store<int32_t>(bytes, row.byte, 2000 + index + 200 * seed);
            break;
        case K::MaterialRef:
            store<int32_t>(bytes, row.byte, 3000 + index + 200 * seed);
            break;
        case K::CoordGen:
            fillCoordGen(bytes, row, index, seed);
            break;
        default:
            break;
        }
    }
    if (type.lists) type.lists->fill(bytes, seed);
    return record;
}

long firstDifference(const MaterialRecord& a, const MaterialRecord& b) {
    const uint8_t* left = bytesOf(&a);
    const uint8_t* right = bytesOf(&b);
    for (size_t i = 0; i < sizeof(MaterialRecord); ++i) {
        if (left[i] != right[i]) return static_cast<long>(i);
    }
    return -1;
}

} // namespace families_test

#include "tests/texmap_families/texmap_rows.h"

#include "common/unicode.h"
#include "documents/texmap_document.h"

#include <gtest/gtest.h>

#include <sstream>

namespace texmap_test {

using documents_test::TempFolder;

uint64_t TestNames::GetModelId(const char16_t* name) {
    const std::string text = narrow(name);
    calls.push_back("ModelId " + text);
    const std::string prefix = "model_";
    if (text.compare(0, prefix.size(), prefix) == 0) return std::stoull(text.substr(prefix.size()));
    return kNoModel;
}

std::string mapName(int32_t id) {
    return "map_" + std::to_string(id);
}

std::string textureName(int32_t id) {
    return "tex_" + std::to_string(id);
}

std::vector<Layout> allLayouts() {
    std::vector<Layout> all;
    for (auto family : {imageAndBlendLayouts, correctionLayouts, generatorLayouts, selectorLayouts}) {
        for (Layout& layout : family())
            all.push_back(std::move(layout));
    }
    return all;
}

const Layout& layoutOf(int32_t type) {
    static const std::vector<Layout> all = allLayouts();
    for (const Layout& layout : all) {
        if (layout.type == type) return layout;
    }
    ADD_FAILURE() << "no layout for type " << type;
    return all.front();
}

// ---- Records -----------------------------------------------------------------------------------

std::unique_ptr<TexMapRecord> zeroedRecord(int32_t type) {
    auto record = std::make_unique<TexMapRecord>();
    std::memset(record.get(), 0, sizeof(TexMapRecord));
    record->type = type;
    return record;
}

namespace {

uint32_t widthOf(const Row& row) {
    switch (row.kind) {
    case Kind::Int:
    case Kind::Float:
    case Kind::Enum:
    case Kind::Map:
    case Kind::Texture:
        return 4;
    case Kind::Bool:
        return 1;
    case Kind::Color:
        return 12;
    case Kind::ColorEx:
        return 32;
    case Kind::Matrix:
        return 48;
    case Kind::Spline:
        return row.size * 32;
    case Kind::String:
        return row.size * 2;
    case Kind::Output:
        return 0x420;
    case Kind::Custom:
        return row.size;
    }
    return 0;
}

template <class T> void put(uint8_t* at, const T& value) {
    std::memcpy(at, &value, sizeof value);
}

void fillOutput(uint8_t* at, float seed) {
    ColorOutput block{};
    block.RgbMul = seed + 0.5f;
    block.RgbAdd = seed + 1.5f;
    block.AlphaMul = seed + 2.5f;
    block.AlphaAdd = seed + 3.5f;
    block.LumR = seed + 4.5f;
    block.LumG = seed + 5.5f;
    block.LumB = seed + 6.5f;
    block.RGB2Lum = block.Clamp0 = block.Clamp1 = 1;
    fillSpline(block.SplineR, 8, seed + 10);
    fillSpline(block.SplineG, 8, seed + 20);
    fillSpline(block.SplineB, 8, seed + 30);
    fillSpline(block.SplineA, 8, seed + 40);
    put(at, block);
}

void fillCoordGen(uint8_t* at) {
    CoordGen block{};
    for (int i = 0; i < 12; ++i)
        block.CoordinateMatrix.m[i / 4][i % 4] = 0.75f * static_cast<float>(i) + 0.5f;
    block.OutsideColor = {1.5f, 2.5f, 3.5f, 4.5f, 5.5f, 6.5f, 7.5f, 8.5f};
    block.Blur = 9.25f;
    block.BlurOffset = 10.25f;
    block.CoordinateChannel = 11;
    for (int i = 0; i < 3; ++i)
        block.CoordinateEnTile[i] = block.CoordinateEnMirror[i] = 1;
    block.CoordGenType = 2;
    block.Noise = {{12.5f, 13.5f, 14.5f}, {15.5f, 16.5f, 17.5f}, 18.5f, -19, 1, 0, 20.5f, 21.5f};
    UpdateCoordGenFlags(&block);
    put(at, block);
}

void markUnused(uint8_t* at, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        put(at + i * sizeof(SplineSegment), 1.0f);
        put(at + i * sizeof(SplineSegment) + 12, 0.0f);
    }
}

} // namespace

void fillSpline(SplineSegment* segments, size_t count, float seed) {
    for (size_t i = 0; i < count; ++i) {
        const float x = static_cast<float>(i);
        if (i == 0 || i == 2 || i + 1 == count) {
            segments[i] = {x, x + 0.25f, x + 0.5f, x + 1, seed + x, seed + x + 0.125f, seed + x + 0.25f,
                           seed + x + 0.375f};
        } else {
            segments[i] = {1, 0, 0, 0, 0, 0, 0, 0};
        }
    }
}

void fillValue(uint8_t* at, Kind kind, uint32_t offset, uint32_t size, size_t wordCount, RecordingNames* names) {
    const float seed = static_cast<float>(offset);
    switch (kind) {
    case Kind::Int:
        put(at, static_cast<int32_t>(100000 + offset));
        break;
    case Kind::Float:
        put(at, seed + 0.125f);
        break;
    case Kind::Bool:
        put(at, uint8_t{1});
        break;
    case Kind::Enum:
        put(at, static_cast<int32_t>(wordCount > 1 ? 1 + (offset / 4) % (wordCount - 1) : 0));
        break;
    case Kind::Map:
        put(at, idAt(offset));
        names->define(idAt(offset), utf8ToUtf16(mapName(idAt(offset))));
        break;
    case Kind::Texture:
        put(at, idAt(offset));
        names->define(idAt(offset), utf8ToUtf16(textureName(idAt(offset))));
        break;
    case Kind::Color:
        put(at, ColorRGB{seed + 0.5f, seed + 1.5f, seed + 2.5f});
        break;
    case Kind::ColorEx:
        for (int i = 0; i < 8; ++i)
            put(at + 4 * i, seed + static_cast<float>(i) + 0.25f);
        break;
    case Kind::Matrix:
        for (int i = 0; i < 12; ++i)
            put(at + 4 * i, seed + 0.75f * static_cast<float>(i) + 0.5f);
        break;
    case Kind::Spline: {
        std::vector<SplineSegment> segments(size);
        fillSpline(segments.data(), size, seed);
        std::memcpy(at, segments.data(), size * sizeof(SplineSegment));
        break;
    }
    case Kind::String:
        // Long enough to matter, short of the capacity so that the terminator survives.
        for (uint32_t i = 0; i + 1 < size && i < 200; ++i)
            put(at + 2 * i, static_cast<char16_t>(u'a' + (i + offset) % 26));
        break;
    case Kind::Output:
        fillOutput(at, seed);
        break;
    case Kind::Custom:
        break;
    }
}

std::unique_ptr<TexMapRecord> filledRecord(const Layout& layout, RecordingNames* names) {
    auto record = zeroedRecord(layout.type);
    std::memcpy(record->Name, u"Probe", sizeof(u"Probe"));
    uint8_t* bytes = bytesOf(record.get());
    if (layout.mapped) {
        fillCoordGen(bytes + 0x108);
        fillOutput(bytes + 0x198, 0.0f);
    }
    for (const Row& row : layout.rows)
        fillValue(bytes + row.offset, row.kind, row.offset, row.size, row.words.size(), names);
    if (layout.fillCustom) layout.fillCustom(bytes, names);
    return record;
}

void applyMissingKeys(const Layout& layout, TexMapRecord* record) {
    uint8_t* bytes = bytesOf(record);
    if (layout.mapped) markUnused(bytes + 0x198 + 0x20, 32);
    for (const Row& row : layout.rows) {
        uint8_t* at = bytes + row.offset;
        switch (row.kind) {
        case Kind::Map:
        case Kind::Texture:
            put(at, int32_t{-1});
            break;
        case Kind::String:
            put(at, char16_t{0});
            put(at + 2 * (row.size - 1), char16_t{0});
            break;
        case Kind::Spline:
            markUnused(at, row.size);
            break;
        case Kind::Output:
            markUnused(at + 0x20, 32);
            break;
        case Kind::Enum:
            for (size_t i = 0; i < row.words.size(); ++i) {
                if (row.words[i].empty()) put(at, static_cast<int32_t>(i));
            }
            break;
        default:
            break;
        }
    }
    if (layout.missingCustom) layout.missingCustom(bytes);
}

// ---- Documents ---------------------------------------------------------------------------------

void buildDocument(const TexMapRecord* record, RecordingNames* names, pugi::xml_document* doc) {
    EXPECT_TRUE(BuildTexMapDocument(record, names, doc)) << "type " << record->type;
}

bool readDocumentText(const std::string& text, TexMapRecord* record, RecordingNames* names) {
    TempFolder folder;
    const std::u16string path = folder.write("map.xml", text);
    return ReadTexMapDocument(record, path.c_str(), names);
}

bool readDocument(const pugi::xml_document& doc, TexMapRecord* record, RecordingNames* names) {
    std::ostringstream text;
    doc.save(text);
    return readDocumentText(text.str(), record, names);
}

std::string documentWith(const std::string& word, const std::string& inner) {
    return "<TaviTexMap type='" + word + "'><Common><Name value='Probe'/></Common><SpecificParameters>" + inner +
           "</SpecificParameters></TaviTexMap>";
}

std::string firstDifference(const Layout& layout, const TexMapRecord* actual, const TexMapRecord* expected) {
    const uint8_t* a = bytesOf(actual);
    const uint8_t* e = bytesOf(expected);
    for (size_t i = 0; i < sizeof(TexMapRecord); ++i) {
        if (a[i] == e[i]) continue;
        std::string where = "unclaimed byte";
        if (i < 0x108) where = "head";
        if (layout.mapped && i >= 0x108 && i < 0x198) where = "CoordGen";
        if (layout.mapped && i >= 0x198 && i < 0x5B8) where = "ColorOutput";
        for (const Row& row : layout.rows) {
            if (i >= row.offset && i < row.offset + widthOf(row)) where = row.key;
        }
        std::ostringstream out;
        out << where << " at 0x" << std::hex << i << ": 0x" << int(a[i]) << " instead of 0x" << int(e[i]);
        return out.str();
    }
    return "";
}

std::vector<std::string> expectedWalk(const Layout& layout) {
    std::vector<std::string> calls;
    for (const std::string& entry : layout.walk) {
        std::string call = entry;
        for (const Row& row : layout.rows) {
            if (row.key != entry) continue;
            if (row.kind == Kind::Map) call = "TexMapName " + std::to_string(idAt(row.offset));
            if (row.kind == Kind::Texture) call = "TextureName " + std::to_string(idAt(row.offset));
        }
        calls.push_back(call);
    }
    return calls;
}

} // namespace texmap_test

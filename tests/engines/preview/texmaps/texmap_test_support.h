// Records, images and shading points for the texmap tests. Records are filled through the field
// tables (a row found by its key, its bytes written at its offset), as the engine reads them.
#pragma once
#include "documents/texmap_document.h"
#include "documents/texmaps/texmap_types.h"
#include "engines/preview/texmaps/texmap_set.h"

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <map>
#include <unistd.h>
#include <string>
#include <vector>

namespace preview_test {

using preview::Color;

// A record as a document that states no key would leave it: zero, with every reference -1.
inline TexMapRecord texMap(int32_t type, int32_t id) {
    TexMapRecord record{};
    record.type = type;
    record.id = id;
    const TypeDescriptor* table = findTexMapType(type);
    for (size_t i = 0; table && i < table->fieldCount; ++i) {
        const FieldDescriptor& row = table->fields[i];
        if (row.kind != FieldKind::TexMapRef && row.kind != FieldKind::TextureRef) continue;
        const int32_t none = -1;
        std::memcpy(reinterpret_cast<uint8_t*>(&record) + row.offset, &none, sizeof none);
    }
    return record;
}

// Writes `value` at the row of `key` in the record's table; fails the test when the table has
// no such key or its width differs.
template <class T> void setField(TexMapRecord& record, const char* key, const T& value) {
    const TypeDescriptor* type = findTexMapType(record.type);
    ASSERT_NE(type, nullptr) << record.type;
    for (size_t i = 0; i < type->fieldCount; ++i) {
        const FieldDescriptor& row = type->fields[i];
        if (row.kind == FieldKind::Section || std::strcmp(row.key, key) != 0) continue;
        ASSERT_EQ(row.width, sizeof(T)) << key;
        std::memcpy(reinterpret_cast<uint8_t*>(&record) + row.offset, &value, sizeof(T));
        return;
    }
    FAIL() << "no key " << key << " in type " << record.type;
}

inline void setColor(TexMapRecord& record, const char* key, Color c) { setField(record, key, ColorRGB{c.x, c.y, c.z}); }

// A coordinate block of the mapped shape: the matrix, tiling on or off for u and v.
inline void setCoordGen(TexMapRecord& record, const float (&matrix)[3][4], bool tile, bool mirror = false,
                        Color outside = Color(0)) {
    CoordGen block{};
    std::memcpy(block.CoordinateMatrix.m, matrix, sizeof matrix);
    block.CoordinateEnTile[0] = block.CoordinateEnTile[1] = tile;
    block.CoordinateEnMirror[0] = block.CoordinateEnMirror[1] = mirror;
    block.OutsideColor = {outside.x, outside.y, outside.z, 1, 0, 0, 0, 0};
    std::memcpy(reinterpret_cast<uint8_t*>(&record) + kTexMapCoordGenOffset, &block, sizeof block);
}

inline preview::ShadingContext at(float u, float v) {
    preview::ShadingContext context;
    for (auto& channel : context.uv) {
        channel[0] = u;
        channel[1] = v;
    }
    context.geometricNormal = context.shadingNormal = {0, 0, 1};
    return context;
}

// Warning kinds and how often each came.
struct Warnings {
    std::map<std::string, int> counts;
    preview::WarningSink sink() {
        return [this](const std::string& kind) { ++counts[kind]; };
    }
    std::string text() const {
        std::string all;
        for (const auto& [kind, count] : counts)
            all += kind + " x" + std::to_string(count) + "\n";
        return all;
    }
};

// A fresh folder under the system's temporary folder, removed with the object.
class TempFolder {
  public:
    TempFolder() {
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        path_ = std::filesystem::temp_directory_path() /
                ("preview_texmaps_" + std::string(test->name()) + "_" + std::to_string(::getpid()));
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~TempFolder() { std::filesystem::remove_all(path_); }
    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

// Writes an image, rows from the top; `format` UINT8 for PNG, FLOAT for EXR.
template <class T>
void writeImage(const std::filesystem::path& file, int width, int height, int channels, OIIO::TypeDesc format,
                const std::vector<T>& pixels) {
    std::filesystem::create_directories(file.parent_path());
    auto out = OIIO::ImageOutput::create(file.string());
    ASSERT_TRUE(out) << file;
    const OIIO::ImageSpec header(width, height, channels, format);
    ASSERT_TRUE(out->open(file.string(), header)) << out->geterror();
    ASSERT_TRUE(out->write_image(format, pixels.data())) << out->geterror();
    out->close();
}

inline TextureFileRecord textureFile(int32_t id, const std::string& path) {
    TextureFileRecord record{};
    record.id = id;
    for (size_t i = 0; i < path.size() && i + 1 < kPathChars; ++i)
        record.path[i] = static_cast<char16_t>(path[i]);
    return record;
}

inline ::testing::AssertionResult colorNear(const Color& actual, const Color& expected, float tolerance) {
    const bool near = std::abs(actual.x - expected.x) <= tolerance && std::abs(actual.y - expected.y) <= tolerance &&
                      std::abs(actual.z - expected.z) <= tolerance;
    if (near) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "(" << actual.x << ", " << actual.y << ", " << actual.z << ") is not ("
                                         << expected.x << ", " << expected.y << ", " << expected.z << ")";
}
#define EXPECT_COLOR_NEAR(actual, expected, tolerance)                                                            \
    EXPECT_TRUE(::preview_test::colorNear((actual), (expected), (tolerance)))

} // namespace preview_test

// The preview builders write what engines/preview/README.md and the field tables say: each
// record goes through a scene file and the client's reader, and its values are looked for at
// the README's offsets, or at the offset of the key's row in the type's table.
#include "documents/camera_document.h"
#include "documents/materials/material_types.h"
#include "documents/texmap_blocks.h"
#include "documents/texmap_document.h"
#include "documents/texmaps/texmap_types.h"
#include "tests/scene/scene_test_support.h"
#include "tools/scene_writer/preview_builders.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <stdexcept>

using namespace scene_writer;

namespace {

template <class T> T valueAt(const void* record, size_t offset) {
    T value;
    std::memcpy(&value, static_cast<const uint8_t*>(record) + offset, sizeof value);
    return value;
}

// A constant spline: its first segment is on and spans every time, holding `value` throughout.
void expectConstantSpline(const void* record, size_t offset, float value) {
    const auto first = valueAt<SplineSegment>(record, offset);
    EXPECT_LT(first.ts, -1e29f);
    EXPECT_GT(first.te, 1e29f);
    EXPECT_EQ(first.vs, value);
    EXPECT_EQ(first.ve, value);
    const auto second = valueAt<SplineSegment>(record, offset + sizeof(SplineSegment));
    EXPECT_GT(second.ts, second.te) << "second segment switched off";
}

std::unique_ptr<MaterialRecord> readMaterialBack(const RecordBuilder& builder) {
    auto record = std::make_unique<MaterialRecord>();
    EXPECT_EQ(readFirst(readMaterial, sceneOf({zstdChunk(kMaterial, builder.body())}), *record), SceneOk);
    return record;
}

std::unique_ptr<TexMapRecord> readTexMapBack(const RecordBuilder& builder) {
    auto record = std::make_unique<TexMapRecord>();
    EXPECT_EQ(readFirst(readTexMap, sceneOf({zstdChunk(kTexMap, builder.body())}), *record), SceneOk);
    return record;
}

TEST(PreviewBuilders, TrackKeyWordsLandWhereTheReadmeSays) {
    const FileKey key = trackKey(1.5f, -2.0f, 3.25f, 1200, 0.5f, true);
    // File offsets of the README's key table.
    EXPECT_EQ(key[0], 1u);
    EXPECT_EQ(key[32 / 4], 1200u);
    EXPECT_EQ(key[8 / 4], 0x3FC00000u);
    EXPECT_EQ(key[12 / 4], 0xC0000000u);
    EXPECT_EQ(key[16 / 4], 0x40500000u);
    EXPECT_EQ(key[28 / 4], 0x3F000000u);
    EXPECT_EQ(trackKey(0, 0, 0)[32 / 4], 0x7FFFFFFFu);

    // And through the reader, at the memory offsets.
    auto camera = std::make_unique<TempCamera>();
    CameraPathPlan path = lookAt({1, 2, 3}, {4, 5, 6}, {0, 0, 1});
    path.trackA = {key};
    const Bytes scene = sceneOf({storedChunk(kCamera, perspectiveCamera(50)), storedChunk(kCameraPath, cameraPathBody(path))});
    ASSERT_EQ(readFirst(readCamera, scene, *camera), SceneOk);
    ASSERT_EQ(camera->trackACount, 1u);
    const TrackKey& read = camera->trackA[0];
    EXPECT_EQ(read.words[0], 1u);
    EXPECT_EQ(valueAt<int32_t>(&read, 0x08), 1200);
    EXPECT_EQ(valueAt<float>(&read, 0x10), 1.5f);
    EXPECT_EQ(valueAt<float>(&read, 0x14), -2.0f);
    EXPECT_EQ(valueAt<float>(&read, 0x18), 3.25f);
    EXPECT_EQ(valueAt<float>(&read, 0x24), 0.5f);
    ASSERT_EQ(camera->trackBCount, 1u);
    EXPECT_EQ(valueAt<float>(camera->trackB, 0x10), 4.0f);
    ASSERT_EQ(camera->trackCCount, 1u);
    EXPECT_EQ(valueAt<float>(camera->trackC, 0x18), 1.0f);
    EXPECT_EQ(camera->cameraRole, 0);
}

TEST(PreviewBuilders, MaterialValuesLandAtTheirRowsOffsets) {
    enum class Kind { Real, Spline, Colour, Word, TexMap, Flag };
    struct Case {
        const char* type;
        const char* key;
        Kind kind;
        float value;
        const char* word = nullptr;
    };
    const Case cases[] = {
        {"ROUGHCONDUCTOR", "Reflection/ReflectionColor", Kind::Colour, 0.9f},
        {"ROUGHCONDUCTOR", "Roughness/RoughnessType", Kind::Word, 1, "GGX"},
        {"ROUGHCONDUCTOR", "Roughness/RoughnessSpline", Kind::Spline, 0.3f},
        {"ROUGHDIELECTRIC", "IOR/IOR_Value", Kind::Real, 1.5f},
        {"IDEALDIELECTRIC", "Transmission/TransmissionColor", Kind::Colour, 0.95f},
        {"DIFFUSE", "FrontMap", Kind::TexMap, 7},
        {"DIFFUSE", "RoughnessValue", Kind::Real, 0.25f},
        {"LAMBERTIANEMISSION", "IntensityValue", Kind::Real, 12},
        {"LAMBERTIANEMISSION", "Visible", Kind::Flag, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.type) + " " + c.key);
        MaterialBuilder builder(c.type, 4, "m");
        switch (c.kind) {
        case Kind::Real:
        case Kind::Spline:
            builder.real(c.key, c.value);
            break;
        case Kind::Colour:
            builder.color(c.key, {c.value, c.value / 2, c.value / 4});
            break;
        case Kind::Word:
            builder.word(c.key, c.word);
            break;
        case Kind::TexMap:
            builder.texMap(c.key, static_cast<int32_t>(c.value));
            break;
        case Kind::Flag:
            builder.flag(c.key, c.value != 0);
            break;
        }
        const auto record = readMaterialBack(builder);
        EXPECT_EQ(record->type, materialType(c.type).type);
        EXPECT_EQ(record->id, 4);
        EXPECT_EQ(std::u16string(record->Name), u"m");
        const FieldDescriptor* row = findRow(*findMaterialType(record->type), c.key);
        ASSERT_NE(row, nullptr);
        switch (c.kind) {
        case Kind::Real:
            EXPECT_EQ(valueAt<float>(record.get(), row->offset), c.value);
            break;
        case Kind::Spline:
            expectConstantSpline(record.get(), row->offset, c.value);
            break;
        case Kind::Colour: {
            const auto colour = valueAt<ColorRGB>(record.get(), row->offset);
            EXPECT_EQ(colour.R, c.value);
            EXPECT_EQ(colour.G, c.value / 2);
            EXPECT_EQ(colour.B, c.value / 4);
            break;
        }
        case Kind::Word:
        case Kind::TexMap:
            EXPECT_EQ(valueAt<int32_t>(record.get(), row->offset), static_cast<int32_t>(c.value));
            break;
        case Kind::Flag:
            EXPECT_EQ(valueAt<uint8_t>(record.get(), row->offset), 1);
            break;
        }
    }
}

// Every table's references start at -1 and its splines unset, whatever the type: a zero there
// would name the first texmap or material, or a spline holding 0.
template <class Record> void expectNothingReferenced(const Record& record, const TypeDescriptor& type) {
    for (size_t i = 0; i < type.fieldCount; ++i) {
        const FieldDescriptor& row = type.fields[i];
        if (row.kind == FieldKind::TexMapRef || row.kind == FieldKind::MaterialRef ||
            row.kind == FieldKind::TextureRef) {
            EXPECT_EQ(valueAt<int32_t>(&record, row.offset), -1) << type.word << " " << row.key;
        }
        if (row.kind == FieldKind::Spline) {
            const auto first = valueAt<SplineSegment>(&record, row.offset);
            EXPECT_GT(first.ts, first.te) << type.word << " " << row.key;
        }
    }
}

TEST(PreviewBuilders, EveryTypeStartsWithNothingReferenced) {
    for (const TypeDescriptor* const* type = allMaterialTypes(); *type; ++type) {
        // The reader runs the volume text fix-up over hair as well, which rewrites its fields
        // there; the engine renders hair as a neutral diffuse.
        if ((*type)->type == 24) continue;
        const auto record = readMaterialBack(MaterialBuilder((*type)->type, 1, "any"));
        EXPECT_EQ(record->type, (*type)->type);
        expectNothingReferenced(*record, **type);
        releaseMaterial(*record);
    }
    for (const TypeDescriptor* const* type = allTexMapTypes(); *type; ++type) {
        const auto record = readTexMapBack(TexMapBuilder((*type)->type, 1, "any"));
        EXPECT_EQ(record->type, (*type)->type);
        expectNothingReferenced(*record, **type);
    }
}

TEST(PreviewBuilders, ImageMapTilesItsTexture) {
    const auto record = readTexMapBack(TexMapBuilder("IMAGE", 3, "checker").tiling(4, 2).texture("Texture", 2));
    EXPECT_EQ(valueAt<int32_t>(record.get(), findRow(texMapType("IMAGE"), "Texture")->offset), 2);
    const auto coordinates = valueAt<CoordGen>(record.get(), kTexMapCoordGenOffset);
    EXPECT_EQ(coordinates.CoordinateMatrix.m[0][0], 4.0f);
    EXPECT_EQ(coordinates.CoordinateMatrix.m[1][1], 2.0f);
    EXPECT_EQ(coordinates.CoordinateMatrix.m[2][2], 1.0f);
    EXPECT_EQ(coordinates.CoordinateMatrix.m[0][3], 0.0f);
    EXPECT_EQ(coordinates.CoordinateEnTile[0], 1);
    EXPECT_EQ(coordinates.CoordinateEnTile[1], 1);
    EXPECT_EQ(coordinates.matrixNotIdentity, 1);
    const auto output = valueAt<ColorOutput>(record.get(), kTexMapColorOutputOffset);
    EXPECT_EQ(output.RgbMul, 1.0f);
    EXPECT_EQ(output.AlphaMul, 1.0f);
}

TEST(PreviewBuilders, KeysOutsideTheTableOrOfAnotherKindThrow) {
    EXPECT_THROW(MaterialBuilder("DIFFUSE", 0, "m").real("NoSuchKey", 1), std::invalid_argument);
    EXPECT_THROW(MaterialBuilder("DIFFUSE", 0, "m").real("FrontColor", 1), std::invalid_argument);
    EXPECT_THROW(MaterialBuilder("DIFFUSE", 0, "m").word("RoughnessType", "NOSUCHWORD"), std::invalid_argument);
    EXPECT_THROW(MaterialBuilder("NOSUCHTYPE", 0, "m"), std::invalid_argument);
    EXPECT_THROW(TexMapBuilder("BLEND", 0, "t").tiling(2, 2), std::invalid_argument);
    Bytes camera = perspectiveCamera(40);
    EXPECT_THROW(setCameraValue(camera, "Width", 1), std::invalid_argument); // an ortho key
}

TEST(PreviewBuilders, CamerasByTheirTables) {
    struct Case {
        Bytes image;
        int32_t type;
        const char* key;
        float value;
    };
    Bytes aperture = perspectiveCamera(60);
    setCameraValue(aperture, "Aperture/Fnumber", 2.8f);
    const Case cases[] = {
        {perspectiveCamera(60), 1, "FovX", 60},
        {perspectiveCamera(60), 1, "FocalLength", 18 / std::tan(30 * 3.14159265f / 180)},
        {perspectiveCamera(60), 1, "Zoom", 1},
        {aperture, 1, "Aperture/Fnumber", 2.8f},
        {orthographicCamera(3), 3, "Width", 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.key);
        auto camera = std::make_unique<TempCamera>();
        const Bytes scene = sceneOf({storedChunk(kCamera, c.image), storedChunk(kCameraPath, cameraPathBody(lookAt({0, 1, 5}, {0, 1, 0})))});
        ASSERT_EQ(readFirst(readCamera, scene, *camera), SceneOk);
        const CameraRecord& record = camera->camera;
        EXPECT_EQ(record.type, c.type);
        EXPECT_EQ(record.SensorSize, 36.0f);
        EXPECT_EQ(record.Aspect, 0.0f);
        EXPECT_EQ(record.Exposure, 0.0f);
        EXPECT_EQ(record.DistortionMap, -1);
        EXPECT_EQ(record.ApertureMap, -1);
        const FieldDescriptor* row = findRow(CameraCommonTable(), c.key);
        if (!row) row = findRow(CameraProjectionTable(c.type), c.key);
        ASSERT_NE(row, nullptr);
        if (row->kind == FieldKind::Spline) {
            const auto first = valueAt<SplineSegment>(&record, row->offset);
            EXPECT_NEAR(first.vs, c.value, 1e-4f);
            EXPECT_LT(first.ts, first.te);
        } else {
            EXPECT_EQ(valueAt<float>(&record, row->offset), c.value);
        }
    }
}

TEST(PreviewBuilders, LightFieldsAtTheReadmeOffsets) {
    for (int32_t type : {1, 3, 4, 5, 6, 8, 9}) {
        SCOPED_TRACE(type);
        LightPlan plan;
        plan.type = type;
        plan.enabled = type != 5;
        plan.intensity = 3;
        plan.colour = {1, 0.5f, 0.25f};
        plan.temperature = 5000;
        plan.direction = {0, -1, 1};
        plan.up = {0, 1, 0};
        plan.width = 2;
        plan.height = 0.5f;
        plan.sunDiameterDegrees = 1;
        plan.texMap = type == 4 ? 6 : -1;
        plan.environmentFile = "sky.exr";
        plan.position = {1, 2, 3};
        plan.name = "lamp";
        SceneFile file;
        file.add(storedChunk(kLight, lightImage(plan), lightVersion(type)));
        file.add(storedChunk(kLightPath, lightPathBody(lightPath(plan))));
        auto light = std::make_unique<TempLight>();
        ASSERT_EQ(readFirst(readLight, file.build(), *light), SceneOk);
        const LightRecord& record = light->light;
        EXPECT_EQ(record.type, type);
        EXPECT_EQ(valueAt<int32_t>(&record, 4), type != 5 ? 1 : 0);
        expectConstantSpline(&record, 8, 3);
        expectConstantSpline(&record, 776, 5000);
        expectConstantSpline(&record, 904, 1);
        const auto colour = valueAt<ColorSplineSegment>(&record, 136);
        EXPECT_LT(colour.ts, colour.te);
        EXPECT_EQ(colour.vs[1], 0.5f);
        EXPECT_EQ(colour.ve[2], 0.25f);
        EXPECT_EQ(valueAt<int32_t>(&record, 1544), plan.texMap);
        const float floats[][2] = {{1556, 0}, {1560, -1}, {1564, 1}, {1572, 1}, {1580, 2}, {1584, 0.5f}, {1588, 1}};
        for (const auto& f : floats)
            EXPECT_EQ(valueAt<float>(&record, static_cast<size_t>(f[0])), f[1]) << f[0];
        if (type == 4) {
            EXPECT_EQ(valueAt<int32_t>(&record, 1616), -1);
        }
        if (type == 8) {
            EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(bytesOf(record) + 0xC00)), u"sky.exr");
        }
        EXPECT_EQ(std::u16string(light->lightName), u"lamp");
        ASSERT_EQ(light->trackCount, 1u);
        EXPECT_EQ(valueAt<float>(light->track, 0x10), 1.0f);
        EXPECT_EQ(valueAt<float>(light->track, 0x18), 3.0f);
    }
}

TEST(PreviewBuilders, SettingsOfTheEngine) {
    SettingsPlan plan;
    plan.saveTiff = plan.saveExr = true;
    plan.regionX = 8;
    plan.regionY = 16;
    plan.regionSizeX = 32;
    plan.regionSizeY = 24;
    plan.maxThreads = 3;
    plan.frameNumber = 12;
    plan.framesPerSecond = 24;
    auto settings = std::make_unique<SettingsRecord>();
    ASSERT_EQ(readFirst(readSettings, sceneOf({storedChunk(kSettings, settingsBody(plan))}), *settings), SceneOk);
    EXPECT_EQ(settings->SaveTIFF, 1u);
    EXPECT_EQ(settings->SaveEXR, 1u);
    EXPECT_EQ(settings->SaveJPEG, 1u);
    EXPECT_EQ(settings->RegionX, 8);
    EXPECT_EQ(settings->RegionY, 16);
    EXPECT_EQ(settings->RegionSizeX, 32);
    EXPECT_EQ(settings->RegionSizeY, 24);
    EXPECT_EQ(settings->MaxThreads, 3);
    EXPECT_EQ(settings->FrameNumber, 12);
    EXPECT_EQ(settings->FramesPerSecond, 24);
}

} // namespace

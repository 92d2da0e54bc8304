// Bodies of the geometry chunks: triangle meshes, fur and sprites, laid out as the scene file
// carries them. Each builder gives a well-formed body with its offsets computed; tests break
// what they need afterwards with put32/put64, finding the places through get64 and the field
// offsets below.
#pragma once
#include "tools/scene_writer/record_builders.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace scene_writer {

uint32_t get32(const Bytes& bytes, size_t offset);
uint64_t get64(const Bytes& bytes, size_t offset);

// ---- Triangle meshes ---------------------------------------------------------------------------

namespace mesh_field {
constexpr size_t kStaticSliceOffset = 8, kTimeSlicesOffset = 16, kKeysOffset = 24, kKeyCount = 32;
constexpr size_t kTimeSliceCount = 40, kMorePartsFollow = 44, kName = 148, kSecondName = 276;
constexpr size_t kHeaderBytes = 404;
} // namespace mesh_field

// Offsets inside the static slice, from its own start.
namespace static_field {
constexpr size_t kTriangleTriples = 8, kTriangleQuads = 16, kVectorTable = 24, kPairTable = 32;
constexpr size_t kTriangleBits = 40, kTriangleWords = 48, kCornerBits = 56;
constexpr size_t kVertexCount = 64, kPointCount = 68, kTriangleCount = 72, kPointExtraCount = 76;
constexpr size_t kVectorCount = 80, kPairCount = 84, kHeaderBytes = 88;
} // namespace static_field

// Offsets inside a mesh time slice, from its own start.
namespace mesh_slice_field {
constexpr size_t kNextSliceDistance = 0, kParamA = 8, kParamB = 12, kPositions = 16, kPoints = 24;
constexpr size_t kPointExtras = 32, kHeaderBytes = 40;
} // namespace mesh_slice_field

struct MeshSlicePlan {
    int32_t paramA = 0, paramB = 0;
    std::vector<float> positions; // x, y, z per vertex; empty: offset 0
    std::vector<float> points;    // x, y, z per point; empty: offset 0
    Bytes pointExtras;            // pointExtraCount x 16 bytes per point; empty: offset 0
};

struct MeshPlan {
    std::string name = "mesh";
    std::string secondName;
    bool morePartsFollow = false;
    std::vector<FileKey> keys;
    // Header fields that only the engine interprets, by their body offsets.
    uint32_t word36 = 0;
    int32_t word48 = -1, word52 = 0, word56 = -1;
    uint32_t word60 = 0, word64 = 0, word68 = 1;
    std::array<float, 6> floats72{1, 1, 1, 0, 0, 0};
    std::array<uint8_t, 48> block96{};
    uint32_t word144 = 0;

    bool withStaticSlice = true;
    int32_t vertexCount = 0, pointCount = 0, triangleCount = 0, pointExtraCount = 0;
    int32_t vectorCount = 0, pairCount = 0;
    // The static slice's arrays as the file holds them; an empty one gets offset 0.
    Bytes triangleTriples, triangleQuads, vectorTable, pairTable, triangleBits, triangleWords, cornerBits;
    std::vector<MeshSlicePlan> timeSlices;
};
Bytes meshBody(const MeshPlan& plan);

// A consistent mesh: a grid of `columns` x `rows` cells, two triangles a cell, with every
// static array filled, one time slice of positions, and `materials` material ids in runs of
// whole rows. Values follow the index, so that a copy can be checked element by element.
MeshPlan gridMesh(const std::string& name, uint32_t columns, uint32_t rows, uint32_t materials = 1);

// ---- Fur and sprites ---------------------------------------------------------------------------

namespace cloud_field {
constexpr size_t kTimeSlicesOffset = 8, kKeysOffset = 16, kTimeSliceCount = 24, kElementCount = 28;
constexpr size_t kKeyCount = 32, kMorePartsFollow = 40;
constexpr size_t kFurName = 140, kFurSecondName = 268, kFurHeaderBytes = 396;
constexpr size_t kSpriteName = 88, kSpriteSecondName = 216, kSpriteHeaderBytes = 344;
// Inside a time slice, from its own start.
constexpr size_t kNextSliceDistance = 0, kParamA = 8, kParamB = 12, kElements = 16, kSliceHeaderBytes = 24;
} // namespace cloud_field

constexpr size_t kFurElementBytes = 100;
constexpr size_t kSpriteElementBytes = 32;

struct CloudSlicePlan {
    int32_t paramA = 0, paramB = 0;
    Bytes elements; // the elements in their file form; empty: offset 0
};

// Fur and sprite bodies share this plan; the fur-only fields are ignored for sprites.
struct CloudPlan {
    std::string name = "cloud";
    std::string secondName;
    bool morePartsFollow = false;
    std::vector<FileKey> keys;
    int32_t elementCount = 0;
    uint32_t word36 = 0;
    int32_t word44 = -1, word48 = -1, word52 = 0;
    uint32_t word56 = 0, word60 = 1;
    std::array<float, 6> floats64{1, 1, 1, 0, 0, 0};
    std::array<uint8_t, 48> furBlock88{};
    uint32_t furWord136 = 0;
    std::vector<CloudSlicePlan> timeSlices;
};
Bytes furBody(const CloudPlan& plan);
Bytes spriteBody(const CloudPlan& plan);

// One element in its file form, its bytes patterned from `seed`, with the material word set.
Bytes furElement(uint32_t seed, uint32_t materialWord);
Bytes spriteElement(uint32_t seed, uint32_t materialId);

} // namespace scene_writer

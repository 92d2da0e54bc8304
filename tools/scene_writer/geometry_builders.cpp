#include "tools/scene_writer/geometry_builders.h"

#include <algorithm>
#include <cstring>

namespace scene_writer {

namespace {

// Appends `data` at the next 8-byte boundary and returns its offset from `base`; 0, the
// format's "absent", for empty data.
uint64_t place(Bytes& body, size_t base, const void* data, size_t size) {
    if (size == 0) return 0;
    size_t at = (body.size() + 7) & ~size_t(7);
    body.resize(at + size, 0);
    std::memcpy(body.data() + at, data, size);
    return at - base;
}

uint64_t place(Bytes& body, size_t base, const Bytes& data) {
    return place(body, base, data.data(), data.size());
}

uint64_t place(Bytes& body, size_t base, const std::vector<float>& data) {
    return place(body, base, data.data(), data.size() * sizeof(float));
}

size_t alignedEnd(Bytes& body) {
    size_t end = (body.size() + 7) & ~size_t(7);
    body.resize(end, 0);
    return end;
}

// The keys right behind the header; their offset, or 0 when there are none.
void placeKeys(Bytes& body, size_t offsetField, size_t countField, const std::vector<FileKey>& keys) {
    put32(body, countField, static_cast<uint32_t>(keys.size()));
    if (keys.empty()) return;
    size_t at = alignedEnd(body);
    for (size_t k = 0; k < keys.size(); ++k) {
        for (size_t w = 0; w < keys[k].size(); ++w)
            put32(body, at + 36 * k + 4 * w, keys[k][w]);
    }
    put64(body, offsetField, at);
}

void putBytes(Bytes& body, size_t offset, const uint8_t* data, size_t size) {
    if (body.size() < offset + size) body.resize(offset + size, 0);
    std::memcpy(body.data() + offset, data, size);
}

void putFloats(Bytes& body, size_t offset, const float* values, size_t count) {
    for (size_t i = 0; i < count; ++i)
        putF32(body, offset + 4 * i, values[i]);
}

void placeStaticSlice(Bytes& body, const MeshPlan& plan) {
    using namespace static_field;
    size_t at = alignedEnd(body);
    body.resize(at + kHeaderBytes, 0);
    put64(body, mesh_field::kStaticSliceOffset, at);
    put32(body, at + kVertexCount, static_cast<uint32_t>(plan.vertexCount));
    put32(body, at + kPointCount, static_cast<uint32_t>(plan.pointCount));
    put32(body, at + kTriangleCount, static_cast<uint32_t>(plan.triangleCount));
    put32(body, at + kPointExtraCount, static_cast<uint32_t>(plan.pointExtraCount));
    put32(body, at + kVectorCount, static_cast<uint32_t>(plan.vectorCount));
    put32(body, at + kPairCount, static_cast<uint32_t>(plan.pairCount));
    const std::pair<size_t, const Bytes*> arrays[] = {
        {kTriangleTriples, &plan.triangleTriples}, {kTriangleQuads, &plan.triangleQuads},
        {kVectorTable, &plan.vectorTable},         {kPairTable, &plan.pairTable},
        {kTriangleBits, &plan.triangleBits},       {kTriangleWords, &plan.triangleWords},
        {kCornerBits, &plan.cornerBits}};
    for (const auto& [field, data] : arrays)
        put64(body, at + field, place(body, at, *data));
}

void placeMeshSlices(Bytes& body, const std::vector<MeshSlicePlan>& slices) {
    using namespace mesh_slice_field;
    put32(body, mesh_field::kTimeSliceCount, static_cast<uint32_t>(slices.size()));
    size_t previous = 0;
    for (const MeshSlicePlan& slice : slices) {
        size_t at = alignedEnd(body);
        body.resize(at + kHeaderBytes, 0);
        if (previous == 0) {
            put64(body, mesh_field::kTimeSlicesOffset, at);
        } else {
            put64(body, previous + kNextSliceDistance, at - previous);
        }
        put32(body, at + kParamA, static_cast<uint32_t>(slice.paramA));
        put32(body, at + kParamB, static_cast<uint32_t>(slice.paramB));
        put64(body, at + kPositions, place(body, at, slice.positions));
        put64(body, at + kPoints, place(body, at, slice.points));
        put64(body, at + kPointExtras, place(body, at, slice.pointExtras));
        previous = at;
    }
    // The last slice still tells how long it is.
    if (previous != 0) put64(body, previous + kNextSliceDistance, alignedEnd(body) - previous);
}

Bytes cloudBody(const CloudPlan& plan, bool fur) {
    using namespace cloud_field;
    Bytes body(fur ? kFurHeaderBytes : kSpriteHeaderBytes, 0);
    put32(body, kTimeSliceCount, static_cast<uint32_t>(plan.timeSlices.size()));
    put32(body, kElementCount, static_cast<uint32_t>(plan.elementCount));
    put32(body, 36, plan.word36);
    put32(body, kMorePartsFollow, plan.morePartsFollow ? 1 : 0);
    put32(body, 44, static_cast<uint32_t>(plan.word44));
    put32(body, 48, static_cast<uint32_t>(plan.word48));
    put32(body, 52, static_cast<uint32_t>(plan.word52));
    put32(body, 56, plan.word56);
    put32(body, 60, plan.word60);
    putFloats(body, 64, plan.floats64.data(), plan.floats64.size());
    if (fur) {
        putBytes(body, 88, plan.furBlock88.data(), plan.furBlock88.size());
        put32(body, 136, plan.furWord136);
    }
    putText(body, fur ? kFurName : kSpriteName, kNameField, plan.name);
    putText(body, fur ? kFurSecondName : kSpriteSecondName, kNameField, plan.secondName);
    placeKeys(body, kKeysOffset, kKeyCount, plan.keys);

    size_t previous = 0;
    for (const CloudSlicePlan& slice : plan.timeSlices) {
        size_t at = alignedEnd(body);
        body.resize(at + kSliceHeaderBytes, 0);
        if (previous == 0) {
            put64(body, kTimeSlicesOffset, at);
        } else {
            put64(body, previous + kNextSliceDistance, at - previous);
        }
        put32(body, at + kParamA, static_cast<uint32_t>(slice.paramA));
        put32(body, at + kParamB, static_cast<uint32_t>(slice.paramB));
        put64(body, at + kElements, place(body, at, slice.elements));
        previous = at;
    }
    if (previous != 0) put64(body, previous + kNextSliceDistance, alignedEnd(body) - previous);
    return body;
}

void appendWord(Bytes& bytes, uint32_t value) {
    put32(bytes, bytes.size(), value);
}

void appendFloat(std::vector<float>& values, float x, float y, float z) {
    values.push_back(x);
    values.push_back(y);
    values.push_back(z);
}

} // namespace

uint32_t get32(const Bytes& bytes, size_t offset) {
    uint32_t value = 0;
    for (int i = 3; i >= 0; --i)
        value = value << 8 | bytes.at(offset + i);
    return value;
}

uint64_t get64(const Bytes& bytes, size_t offset) {
    return uint64_t(get32(bytes, offset)) | uint64_t(get32(bytes, offset + 4)) << 32;
}

Bytes meshBody(const MeshPlan& plan) {
    using namespace mesh_field;
    Bytes body(kHeaderBytes, 0);
    put32(body, 36, plan.word36);
    put32(body, kMorePartsFollow, plan.morePartsFollow ? 1 : 0);
    put32(body, 48, static_cast<uint32_t>(plan.word48));
    put32(body, 52, static_cast<uint32_t>(plan.word52));
    put32(body, 56, static_cast<uint32_t>(plan.word56));
    put32(body, 60, plan.word60);
    put32(body, 64, plan.word64);
    put32(body, 68, plan.word68);
    putFloats(body, 72, plan.floats72.data(), plan.floats72.size());
    putBytes(body, 96, plan.block96.data(), plan.block96.size());
    put32(body, 144, plan.word144);
    putText(body, kName, kNameField, plan.name);
    putText(body, kSecondName, kNameField, plan.secondName);
    placeKeys(body, kKeysOffset, kKeyCount, plan.keys);
    if (plan.withStaticSlice) placeStaticSlice(body, plan);
    placeMeshSlices(body, plan.timeSlices);
    return body;
}

MeshPlan gridMesh(const std::string& name, uint32_t columns, uint32_t rows, uint32_t materials) {
    MeshPlan plan;
    plan.name = name;
    const uint32_t triangles = 2 * columns * rows;
    const uint32_t stride = columns + 1;
    const uint32_t vertices = stride * (rows + 1);
    plan.triangleCount = static_cast<int32_t>(triangles);
    plan.vertexCount = static_cast<int32_t>(vertices);
    plan.vectorCount = static_cast<int32_t>(vertices);
    plan.triangleTriples.reserve(size_t(triangles) * 12);
    plan.triangleQuads.reserve(size_t(triangles) * 16);
    plan.triangleWords.reserve(size_t(triangles) * 4);
    const uint32_t rowsPerMaterial = std::max<uint32_t>(1, (rows + materials - 1) / std::max<uint32_t>(1, materials));
    for (uint32_t row = 0; row < rows; ++row) {
        for (uint32_t column = 0; column < columns; ++column) {
            uint32_t v = row * stride + column;
            uint32_t corners[2][3] = {{v, v + 1, v + stride}, {v + 1, v + stride + 1, v + stride}};
            for (auto& corner : corners) {
                uint32_t triangle = static_cast<uint32_t>(plan.triangleWords.size() / 4);
                for (uint32_t index : corner)
                    appendWord(plan.triangleTriples, index);
                for (uint32_t index : corner)
                    appendWord(plan.triangleQuads, index); // the vectors share the vertex numbering
                appendWord(plan.triangleQuads, row / rowsPerMaterial);
                appendWord(plan.triangleWords, triangle & 7);
            }
        }
    }
    plan.triangleBits.assign(((size_t(triangles) + 31) >> 5) * 4, 0xFF);
    plan.cornerBits.assign(((size_t(triangles) * 3 + 31) >> 5) * 4, 0x49);
    MeshSlicePlan slice;
    slice.positions.reserve(size_t(vertices) * 3);
    std::vector<float> normals;
    normals.reserve(size_t(vertices) * 3);
    for (uint32_t row = 0; row <= rows; ++row) {
        for (uint32_t column = 0; column <= columns; ++column) {
            float height = static_cast<float>((row * 7 + column * 3) % 16) * 0.0625f;
            appendFloat(slice.positions, static_cast<float>(column), static_cast<float>(row), height);
            appendFloat(normals, 0.0f, 0.0f, 1.0f);
        }
    }
    plan.vectorTable.resize(normals.size() * sizeof(float));
    std::memcpy(plan.vectorTable.data(), normals.data(), plan.vectorTable.size());
    plan.timeSlices.push_back(std::move(slice));
    return plan;
}

Bytes furBody(const CloudPlan& plan) {
    return cloudBody(plan, true);
}

Bytes spriteBody(const CloudPlan& plan) {
    return cloudBody(plan, false);
}

Bytes furElement(uint32_t seed, uint32_t materialWord) {
    Bytes element(kFurElementBytes);
    for (size_t i = 0; i < element.size(); ++i)
        element[i] = static_cast<uint8_t>(seed * 31 + i);
    put32(element, 84, materialWord);
    return element;
}

Bytes spriteElement(uint32_t seed, uint32_t materialId) {
    Bytes element(kSpriteElementBytes);
    for (size_t i = 0; i < element.size(); ++i)
        element[i] = static_cast<uint8_t>(seed * 17 + i);
    put32(element, 28, materialId);
    return element;
}

} // namespace scene_writer

// ChunkTriangleMesh: one part of a model per chunk, with its static slice of topology and its
// time slices of positions.
#include "scene/geometry_parts.h"
#include "scene/geometry_readers.h"
#include "scene/scene_text.h"
#include "scene/track_keys.h"

#include <climits>
#include <cstring>

using namespace geometry_parts;
using TRDF_Load::PointElement;
using TRDF_Load::StaticSliceT;
using TRDF_Load::TimeSliceT;
using TRDF_Load::TriangleMesh;

namespace {

// ---- Body layout -------------------------------------------------------------------------------

// Mesh header; bytes 0 to 7 are reserved.
constexpr uint64_t kStaticSliceOffset = 8, kTimeSlicesOffset = 16, kKeysOffset = 24, kKeyCount = 32;
constexpr uint64_t kValue2C = 36, kTimeSliceCount = 40, kMorePartsFollow = 44;
constexpr uint64_t kValue30 = 48, kValue34 = 52, kValue38 = 56, kValue3C = 60, kValue40 = 64, kValue44 = 68;
constexpr uint64_t kFloats50 = 72, kBlock68 = 96, kValue98 = 144, kName = 148, kSecondName = 276;
constexpr uint64_t kMeshHeaderBytes = kSecondName + kNameFieldBytes;

// Static slice; its offsets count from its own start.
constexpr uint64_t kTriangleTriples = 8, kTriangleQuads = 16, kVectorTable = 24, kPairTable = 32;
constexpr uint64_t kTriangleBits = 40, kTriangleWords = 48, kCornerBits = 56;
constexpr uint64_t kVertexCount = 64, kPointCount = 68, kTriangleCount = 72, kPointExtraCount = 76;
constexpr uint64_t kVectorCount = 80, kPairCount = 84, kStaticSliceBytes = 88;

// Time slice; its offsets count from its own start.
constexpr uint64_t kNextSliceDistance = 0, kSliceParamA = 8, kSliceParamB = 12;
constexpr uint64_t kPositions = 16, kPoints = 24, kPointExtras = 32, kTimeSliceBytes = 40;

constexpr uint64_t kFilePositionBytes = 12;
constexpr uint64_t kPositionBytes = 16;
constexpr uint64_t kExtraBytes = 16;

// ---- Static slice ------------------------------------------------------------------------------

// The format counts the bit arrays' sizes in signed 32 bits; a count whose bits do not fit
// there describes no array that the format can hold.
bool bitArrayBytes(uint64_t bits, uint64_t& bytes) {
    if (bits > uint64_t(INT32_MAX) - 31) return false;
    bytes = ((bits + 31) >> 5) * 4;
    return true;
}

struct ArrayJob {
    void** array;
    uint64_t offsetField;
    bool wanted;
    uint64_t bytes;
};

// Checks the source, charges the budget, allocates through the slice's slot and copies.
// An allocation that fails leaves that pointer null and lets the others go on.
void fillArray(SceneStatus& status, StaticSliceT& slice, ByteSpan body, uint64_t at, const ArrayJob& job,
               ArrayBudget& budget) {
    uint64_t offset = body.u64(at + job.offsetField);
    if (!spans(body, at, offset, job.bytes) || !budget.takeBacked(job.bytes))
        return fail(status, SceneInvalid);
    if (!budget.copies()) return;
    void* block = slice.Allocate(job.bytes);
    if (!block) return fail(status, SceneOutOfMemory);
    if (job.bytes) std::memcpy(block, body.data + at + offset, job.bytes);
    *job.array = block;
}

void buildStaticSlice(SceneStatus& status, TriangleMesh& mesh, ByteSpan body, uint64_t at,
                      ArrayBudget& budget) {
    if (!spans(body, at, 0, kStaticSliceBytes)) return fail(status, SceneInvalid);
    int32_t vertexCount = body.i32(at + kVertexCount), pointCount = body.i32(at + kPointCount);
    int32_t triangleCount = body.i32(at + kTriangleCount), pointExtraCount = body.i32(at + kPointExtraCount);
    int32_t vectorCount = body.i32(at + kVectorCount), pairCount = body.i32(at + kPairCount);
    if ((vertexCount | pointCount | triangleCount | pointExtraCount | vectorCount | pairCount) < 0) {
        return fail(status, SceneInvalid);
    }
    uint64_t triangleBitBytes = 0, cornerBitBytes = 0;
    if (!bitArrayBytes(uint64_t(triangleCount), triangleBitBytes) ||
        !bitArrayBytes(uint64_t(triangleCount) * 3, cornerBitBytes)) {
        return fail(status, SceneInvalid);
    }

    StaticSliceT* slice = StaticSliceT::create();
    if (!slice) return fail(status, SceneOutOfMemory);
    mesh.staticSlice = slice;
    slice->vertexCount = vertexCount;
    slice->triangleCount = triangleCount;
    slice->pointCount = pointCount;
    slice->pointExtraCount = pointExtraCount;
    slice->vectorCount = vectorCount;
    slice->pairCount = pairCount;

    auto present = [&](uint64_t field) { return body.u64(at + field) != 0; };
    const uint64_t triangles = uint64_t(triangleCount);
    const ArrayJob jobs[] = {
        {reinterpret_cast<void**>(&slice->triangleTriples), kTriangleTriples,
         triangleCount != 0 && present(kTriangleTriples), triangles * 12},
        {reinterpret_cast<void**>(&slice->triangleQuads), kTriangleQuads,
         triangleCount != 0 && present(kTriangleQuads), triangles * 16},
        {&slice->vectorTable, kVectorTable, vectorCount != 0 && present(kVectorTable), uint64_t(vectorCount) * 12},
        {&slice->pairTable, kPairTable, pairCount != 0 && present(kPairTable), uint64_t(pairCount) * 8},
        {reinterpret_cast<void**>(&slice->triangleBits), kTriangleBits, present(kTriangleBits), triangleBitBytes},
        {reinterpret_cast<void**>(&slice->cornerBits), kCornerBits, present(kCornerBits), cornerBitBytes},
        {reinterpret_cast<void**>(&slice->triangleWords), kTriangleWords,
         present(kTriangleWords) && triangleCount != 0, triangles * 4},
    };
    for (const ArrayJob& job : jobs) {
        if (job.wanted) fillArray(status, *slice, body, at, job, budget);
        if (status == SceneInvalid) return;
    }
}

// ---- Time slices -------------------------------------------------------------------------------

// The counts that size a time slice's arrays, from the static slice (checked not negative).
struct SliceShape {
    uint64_t vertexCount = 0, pointCount = 0, pointExtraCount = 0;
};

// Three floats of the file become x, y, z, 1.0 at the start of each destination element.
void widenPositions(uint8_t* dest, size_t destStride, const uint8_t* source, uint64_t count) {
    const float one = 1.0f;
    for (uint64_t i = 0; i < count; ++i) {
        uint8_t* element = dest + i * destStride;
        std::memcpy(element, source + i * kFilePositionBytes, kFilePositionBytes);
        std::memcpy(element + kFilePositionBytes, &one, sizeof one);
    }
}

void fillPositions(SceneStatus& status, TimeSliceT& slice, ByteSpan body, uint64_t at, uint64_t count,
                   ArrayBudget& budget) {
    uint64_t offset = body.u64(at + kPositions);
    if (count == 0 || offset == 0) return;
    uint64_t bytes = count * kPositionBytes;
    if (!spans(body, at, offset, count * kFilePositionBytes) || !budget.takeBacked(bytes)) {
        return fail(status, SceneInvalid);
    }
    if (!budget.copies()) return;
    void* block = slice.Allocate(bytes);
    if (!block) return fail(status, SceneOutOfMemory);
    widenPositions(static_cast<uint8_t*>(block), kPositionBytes, body.data + at + offset, count);
    slice.positions = static_cast<float*>(block);
}

// The point array exists whenever there are points, zeroed where the body gives nothing.
void fillPoints(SceneStatus& status, TimeSliceT& slice, ByteSpan body, uint64_t at, const SliceShape& shape,
                ArrayBudget& budget) {
    const uint64_t count = shape.pointCount;
    if (count == 0) return;
    uint64_t pointsOffset = body.u64(at + kPoints), extrasOffset = body.u64(at + kPointExtras);
    // An element has room for eight extras; more would spill into the next element.
    const uint64_t extras = extrasOffset != 0 ? shape.pointExtraCount : 0;
    if (extras > uint64_t(TRDF_Load::kMaxPointExtras)) return fail(status, SceneInvalid);
    uint64_t bytes = count * sizeof(PointElement);
    const bool backed = pointsOffset != 0 || extras != 0;
    if ((pointsOffset != 0 && !spans(body, at, pointsOffset, count * kFilePositionBytes)) ||
        (extras != 0 && !spans(body, at, extrasOffset, count * extras * kExtraBytes)) ||
        !(backed ? budget.takeBacked(bytes) : budget.takeUnbacked(bytes))) {
        return fail(status, SceneInvalid);
    }
    if (!budget.copies()) return;
    auto* points = static_cast<PointElement*>(slice.Allocate(bytes));
    if (!points) return fail(status, SceneOutOfMemory);
    std::memset(points, 0, bytes);
    slice.points = points;
    if (pointsOffset != 0) {
        widenPositions(reinterpret_cast<uint8_t*>(points), sizeof(PointElement), body.data + at + pointsOffset,
                       count);
    }
    if (extras != 0) {
        const uint8_t* source = body.data + at + extrasOffset;
        for (uint64_t i = 0; i < count; ++i)
            std::memcpy(points[i].extras, source + i * extras * kExtraBytes, extras * kExtraBytes);
    }
}

void buildTimeSlices(SceneStatus& status, TriangleMesh& mesh, ByteSpan body, uint64_t at, int32_t count,
                     ArrayBudget& budget) {
    // Without a static slice there are no counts, and so no arrays.
    SliceShape shape;
    if (const StaticSliceT* counts = mesh.staticSlice) {
        shape = {uint64_t(counts->vertexCount), uint64_t(counts->pointCount), uint64_t(counts->pointExtraCount)};
    }
    TimeSliceT** link = &mesh.timeSlices;
    for (int32_t turn = 0; turn < count && status == SceneOk; ++turn) {
        if (!spans(body, at, 0, kTimeSliceBytes)) return fail(status, SceneInvalid);
        TimeSliceT* slice = TimeSliceT::create();
        if (!slice) return fail(status, SceneOutOfMemory);
        *link = slice;
        link = &slice->next;
        slice->sliceParamA = body.i32(at + kSliceParamA);
        slice->sliceParamB = body.i32(at + kSliceParamB);
        fillPositions(status, *slice, body, at, shape.vertexCount, budget);
        if (status == SceneOk) fillPoints(status, *slice, body, at, shape, budget);
        if (turn + 1 == count) break;
        // Slices stand one behind the other: each next one starts past this one's header.
        uint64_t distance = body.u64(at + kNextSliceDistance);
        if (distance < kTimeSliceBytes || !spans(body, at, distance, 0)) return fail(status, SceneInvalid);
        at += distance;
    }
}

// ---- One part ----------------------------------------------------------------------------------

void copyHeader(TriangleMesh& mesh, ByteSpan body) {
    mesh.value2C = body.u32(kValue2C);
    mesh.value30 = body.i32(kValue30);
    mesh.value34 = body.i32(kValue34);
    mesh.value38 = body.i32(kValue38);
    mesh.value3C = body.u32(kValue3C);
    mesh.value40 = body.u32(kValue40);
    mesh.value44 = body.u32(kValue44);
    body.copy(mesh.floats50, kFloats50, sizeof mesh.floats50);
    body.copy(mesh.block68, kBlock68, sizeof mesh.block68);
    mesh.value98 = body.u32(kValue98);
}

TriangleMesh* buildPart(ByteSpan body, ArrayBudget& budget, SceneStatus& status) {
    if (body.size < kMeshHeaderBytes) {
        fail(status, SceneInvalid);
        return nullptr;
    }
    TriangleMesh* mesh = TriangleMesh::create();
    if (!mesh) {
        fail(status, SceneOutOfMemory);
        return nullptr;
    }
    copyHeader(*mesh, body);
    // Both names are converted even when the first fails; the part stays for the caller.
    bool converted = convertNameField(mesh->name, body, kName);
    if (!convertNameField(mesh->secondName, body, kSecondName)) converted = false;
    if (!converted) fail(status, SceneInvalid);
    mesh->secondNameHash = hashName(body, kSecondName);
    mesh->nameHash = hashName(body, kName);

    if (status == SceneOk) {
        status = buildTrack(mesh->keys, mesh->keyCount, body, body.u64(kKeysOffset), body.u32(kKeyCount));
    }
    uint64_t staticSliceOffset = body.u64(kStaticSliceOffset);
    if (status == SceneOk && staticSliceOffset != 0) {
        buildStaticSlice(status, *mesh, body, staticSliceOffset, budget);
    }
    uint64_t timeSlicesOffset = body.u64(kTimeSlicesOffset);
    int32_t timeSliceCount = body.i32(kTimeSliceCount);
    if (status == SceneOk && timeSlicesOffset != 0 && timeSliceCount != 0) {
        buildTimeSlices(status, *mesh, body, timeSlicesOffset, timeSliceCount, budget);
    }
    return mesh;
}

} // namespace

SceneStatus readTriangleMesh(SceneFileReader& reader, TriangleMesh*& head, uint64_t& offset, ModelArrays arrays) {
    return readModelRun(reader, ChunkTriangleMesh, kMorePartsFollow, head, offset,
                        arrays == ModelArrays::Copied, buildPart);
}

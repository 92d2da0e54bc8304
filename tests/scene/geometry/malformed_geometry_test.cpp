// Bodies whose offsets and counts lead outside themselves, or ask for far more array memory
// than their bytes could fill: every one ends in SceneInvalid, and whatever part was built
// goes back with the chain. The bodies are well-formed ones broken in a single field.
#include "scene/geometry_parts.h"
#include "tests/scene/geometry/geometry_test_support.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>
#include <utility>
#include <vector>

using namespace scene_writer;
using namespace static_field;

namespace {

enum Kind { kMesh, kFurKind, kSpriteKind };
const char* const kKindNames[] = {"mesh", "fur", "sprites"};
const uint32_t kChunkTypes[] = {kTriangleMesh, kFur, kSprites};
const size_t kNameFields[][2] = {{mesh_field::kName, mesh_field::kSecondName},
                                 {cloud_field::kFurName, cloud_field::kFurSecondName},
                                 {cloud_field::kSpriteName, cloud_field::kSpriteSecondName}};

Bytes cloudBody(Kind kind, const CloudPlan& plan) {
    return kind == kFurKind ? furBody(plan) : spriteBody(plan);
}

// Every array present, two keys and two time slices; the body ends with the last array of
// the last slice, so that cutting any byte off takes something the reader needs.
Bytes wellFormed(Kind kind, bool morePartsFollow = false) {
    if (kind == kMesh) {
        MeshPlan plan;
        plan.morePartsFollow = morePartsFollow;
        plan.keys = {FileKey{}, FileKey{}};
        plan.vertexCount = plan.pointCount = plan.triangleCount = 2;
        plan.pointExtraCount = plan.vectorCount = plan.pairCount = 2;
        plan.triangleTriples = plan.vectorTable = Bytes(24, 1);
        plan.triangleQuads = Bytes(32, 2);
        plan.pairTable = Bytes(16, 3);
        plan.triangleWords = Bytes(8, 3);
        plan.triangleBits = plan.cornerBits = Bytes(4, 4);
        MeshSlicePlan slice{1, 2, std::vector<float>(6, 1.0f), std::vector<float>(6, 2.0f), Bytes(64, 8)};
        plan.timeSlices = {slice, slice};
        return meshBody(plan);
    }
    CloudPlan plan;
    plan.morePartsFollow = morePartsFollow;
    plan.keys = {FileKey{}, FileKey{}};
    plan.elementCount = 2;
    plan.timeSlices.resize(2);
    for (auto& slice : plan.timeSlices) {
        for (uint32_t e = 0; e < 2; ++e)
            append(slice.elements, kind == kFurKind ? furElement(e, e) : spriteElement(e, e));
    }
    return cloudBody(kind, plan);
}

// The header and nothing else.
Bytes headerOnly(Kind kind) {
    MeshPlan mesh;
    mesh.withStaticSlice = false;
    return kind == kMesh ? meshBody(mesh) : cloudBody(kind, CloudPlan{});
}

struct Outcome {
    SceneStatus status;
    size_t parts;
};

template <class Part, class Read> Outcome readFirstModel(const Bytes& file, Read read, ModelArrays arrays) {
    GeometryScene scene(file);
    Chain<Part> chain;
    uint64_t offset = 0;
    SceneStatus status = read(scene.reader, chain.head, offset, arrays);
    return {status, chain.length()};
}

// Reads the first model of a file of these bodies and releases it; nothing may stay allocated.
Outcome readModel(Kind kind, std::initializer_list<Bytes> bodies, size_t cutFileBy = 0) {
    scene_writer::SceneFile file;
    for (const Bytes& body : bodies)
        file.add(storedChunk(kChunkTypes[kind], body));
    Bytes bytes = file.build();
    bytes.resize(bytes.size() - cutFileBy);
    const LiveMemory before = liveMemory();
    auto read = [&](ModelArrays arrays) {
        return kind == kMesh      ? readFirstModel<TRDF_Load::TriangleMesh>(bytes, readTriangleMesh, arrays)
               : kind == kFurKind ? readFirstModel<TRDF_Load::FurMesh>(bytes, readFur, arrays)
                                  : readFirstModel<TRDF_Load::SprMesh>(bytes, readSprites, arrays);
    };
    const Outcome outcome = read(ModelArrays::Copied);
    // A read that only checks the arrays must refuse the same bodies at the same part.
    const Outcome checked = read(ModelArrays::CheckedOnly);
    EXPECT_EQ(checked.status, outcome.status) << "checked only";
    EXPECT_EQ(checked.parts, outcome.parts) << "checked only";
    EXPECT_TRUE(liveMemory() == before) << "the chain was not released whole";
    return outcome;
}

// ---- Broken fields -----------------------------------------------------------------------------

size_t sliceAt(Kind kind, const Bytes& body, int index) {
    size_t at = get64(body, kind == kMesh ? mesh_field::kTimeSlicesOffset : cloud_field::kTimeSlicesOffset);
    for (int i = 0; i < index; ++i)
        at += get64(body, at); // every kind's slice begins with the distance to the next
    return at;
}
size_t staticAt(const Bytes& body) {
    return get64(body, mesh_field::kStaticSliceOffset);
}
// Makes the offset at `field`, which counts from `base`, lead to `target`.
void aim(Bytes& body, size_t field, size_t base, uint64_t target) {
    put64(body, field, target - base);
}

using Base = std::function<size_t(const Bytes&)>;
struct Row {
    std::string what;
    std::function<void(Bytes&)> breakIt;
    size_t parts = 1; // parts made before the failure shows
};

// The offset at base + field leads to the body's end, one byte short of its data's room, and
// so far that adding it to its base, or the data's length to it, wraps around.
void addOffsetRows(std::vector<Row>& rows, const std::string& what, Base base, size_t field) {
    rows.push_back({what + " at the end", [=](Bytes& b) { aim(b, base(b) + field, base(b), b.size()); }});
    rows.push_back({what + " one byte short", [=](Bytes& b) { aim(b, base(b) + field, base(b), b.size() - 1); }});
    rows.push_back({what + " wrapping", [=](Bytes& b) {
                        put64(b, base(b) + field, base(b) > 8 ? 8 - uint64_t(base(b)) : ~uint64_t(0) - 7);
                    }});
}

// Counts a little or far too large. One more than the real count still finds room behind every
// array but the body's last, so the small ones are given only for those.
void addCountRows(std::vector<Row>& rows, const std::string& what, Base at, std::vector<uint32_t> values) {
    for (uint32_t value : values)
        rows.push_back({what + " " + std::to_string(int32_t(value)), [=](Bytes& b) { put32(b, at(b), value); }});
}

std::vector<Row> rowsFor(Kind kind) {
    const bool mesh = kind == kMesh;
    auto fixed = [](size_t offset) -> Base { return [offset](const Bytes&) { return offset; }; };
    auto slice = [kind](int index) -> Base { return [=](const Bytes& b) { return sliceAt(kind, b, index); }; };
    auto inStatic = [](size_t field) -> Base { return [field](const Bytes& b) { return staticAt(b) + field; }; };
    std::vector<Row> rows;
    addOffsetRows(rows, "keys", fixed(0), mesh ? mesh_field::kKeysOffset : cloud_field::kKeysOffset);
    addCountRows(rows, "keyCount", fixed(mesh ? mesh_field::kKeyCount : cloud_field::kKeyCount), {0xFFFFFFFF});
    addOffsetRows(rows, "time slices", fixed(0), mesh ? mesh_field::kTimeSlicesOffset : cloud_field::kTimeSlicesOffset);
    addCountRows(rows, "timeSliceCount", fixed(mesh ? mesh_field::kTimeSliceCount : cloud_field::kTimeSliceCount),
                 {3, INT32_MAX});
    // A distance that does not move past the slice header would walk in place.
    for (uint64_t distance : {uint64_t(0), uint64_t(8), uint64_t(1) << 40, ~uint64_t(0)}) {
        rows.push_back({"next slice distance " + std::to_string(distance),
                        [=](Bytes& b) { put64(b, sliceAt(kind, b, 0), distance); }});
    }
    for (int index : {0, 1}) {
        const std::string name = "slice " + std::to_string(index);
        if (!mesh) addOffsetRows(rows, name + " elements", slice(index), cloud_field::kElements);
        if (!mesh) continue;
        addOffsetRows(rows, name + " positions", slice(index), mesh_slice_field::kPositions);
        addOffsetRows(rows, name + " points", slice(index), mesh_slice_field::kPoints);
        addOffsetRows(rows, name + " point extras", slice(index), mesh_slice_field::kPointExtras);
    }
    for (size_t field : kNameFields[kind]) {
        rows.push_back({"unterminated name at " + std::to_string(field),
                        [=](Bytes& b) { std::fill(b.begin() + field, b.begin() + field + kNameField, 'n'); }});
    }
    if (!mesh) {
        addCountRows(rows, "elementCount", fixed(cloud_field::kElementCount), {3, INT32_MAX});
        // A negative count is refused with the header, before a part is made.
        rows.push_back({"elementCount -1", [](Bytes& b) { put32(b, cloud_field::kElementCount, ~0u); }, 0});
        return rows;
    }
    addOffsetRows(rows, "static slice", fixed(0), mesh_field::kStaticSliceOffset);
    for (size_t field :
         {kTriangleTriples, kTriangleQuads, kVectorTable, kPairTable, kTriangleBits, kTriangleWords, kCornerBits})
        addOffsetRows(rows, "static array " + std::to_string(field), staticAt, field);
    for (size_t field : {kTriangleCount, kVertexCount, kVectorCount, kPairCount})
        addCountRows(rows, "static count " + std::to_string(field), inStatic(field), {INT32_MAX, 0xFFFFFFFF});
    addCountRows(rows, "pointCount", inStatic(kPointCount), {3, INT32_MAX, 0xFFFFFFFF});
    addCountRows(rows, "pointExtraCount", inStatic(kPointExtraCount), {3, INT32_MAX, 0xFFFFFFFF});
    // An element has room for eight extras; a ninth would be written into the next element,
    // even with all of them in the body.
    rows.push_back({"nine extras a point", [=](Bytes& b) {
                        put32(b, staticAt(b) + kPointExtraCount, 9);
                        const size_t extras = b.size();
                        b.resize(extras + 2 * 9 * 16, 0x5A);
                        for (int index : {0, 1})
                            aim(b, slice(index)(b) + mesh_slice_field::kPointExtras, slice(index)(b), extras);
                    }});
    // Points that the body does not give are zeroed arrays: their count alone decides the size.
    rows.push_back({"points counted with none behind them", [=](Bytes& b) {
                        put32(b, staticAt(b) + kPointCount, INT32_MAX);
                        for (int index : {0, 1}) {
                            put64(b, slice(index)(b) + mesh_slice_field::kPoints, 0);
                            put64(b, slice(index)(b) + mesh_slice_field::kPointExtras, 0);
                        }
                    }});
    return rows;
}

TEST(MalformedGeometry, EveryFieldLeadingOutsideTheBodyIsInvalid) {
    for (Kind kind : {kMesh, kFurKind, kSpriteKind}) {
        SCOPED_TRACE(kKindNames[kind]);
        ASSERT_EQ(readModel(kind, {wellFormed(kind)}).status, SceneOk);
        for (const Row& row : rowsFor(kind)) {
            SCOPED_TRACE(row.what);
            Bytes body = wellFormed(kind);
            row.breakIt(body);
            ASSERT_NE(body, wellFormed(kind));
            Outcome alone = readModel(kind, {body});
            EXPECT_EQ(alone.status, SceneInvalid);
            EXPECT_EQ(alone.parts, row.parts);
            // Behind a good part that says more follow: both stay in the chain to be released.
            Outcome behind = readModel(kind, {wellFormed(kind, true), body});
            EXPECT_EQ(behind.status, SceneInvalid);
            EXPECT_EQ(behind.parts, 1 + row.parts);
        }
    }
}

TEST(MalformedGeometry, CutBodiesAndCutFiles) {
    for (Kind kind : {kMesh, kFurKind, kSpriteKind}) {
        SCOPED_TRACE(kKindNames[kind]);
        // A body of its header alone, cut into; then the whole body cut at every length from
        // the header's end on.
        const Bytes header = headerOnly(kind), body = wellFormed(kind);
        ASSERT_EQ(readModel(kind, {header}).status, SceneOk);
        std::vector<std::pair<const Bytes*, size_t>> cuts;
        for (size_t cut = 0; cut < header.size(); cut += cut + 8 < header.size() ? 8 : 1)
            cuts.push_back({&header, cut});
        for (size_t cut = header.size(); cut < body.size(); ++cut)
            cuts.push_back({&body, cut});
        for (const auto& [whole, cut] : cuts)
            EXPECT_EQ(readModel(kind, {Bytes(whole->begin(), whole->begin() + cut)}).status, SceneInvalid) << cut;
        // The chunk declares the whole body, but the file ends inside it.
        for (size_t missing : {size_t(1), body.size() / 2, body.size() - 1}) {
            Outcome outcome = readModel(kind, {body}, missing);
            EXPECT_TRUE(outcome.status != SceneOk && outcome.status != SceneEndOfChunks) << missing;
            EXPECT_EQ(outcome.parts, 0u) << missing;
        }
    }
}

// With no triangles, a given bit array offset still gets a block, of size 0: at the body's
// very end it is there, one byte beyond it is outside.
TEST(MalformedGeometry, ZeroSizeBitArraysAtTheEdgeOfTheBody) {
    const Bytes body = meshBody(MeshPlan{}); // all counts 0; the static slice is the body's end
    ASSERT_EQ(staticAt(body) + kHeaderBytes, body.size());
    for (size_t field : {kTriangleBits, kCornerBits}) {
        for (uint64_t beyond : {0, 1}) {
            SCOPED_TRACE(testing::Message() << field << " + " << beyond);
            Bytes broken = body;
            aim(broken, staticAt(body) + field, staticAt(body), body.size() + beyond);
            const LiveMemory before = liveMemory();
            {
                GeometryScene scene(sceneOf({storedChunk(kTriangleMesh, broken)}));
                Chain<TRDF_Load::TriangleMesh> chain;
                uint64_t offset = 0;
                EXPECT_EQ(readTriangleMesh(scene.reader, chain.head, offset), beyond ? SceneInvalid : SceneOk);
                ASSERT_NE(chain.head, nullptr);
                const auto* slice = chain.head->staticSlice;
                EXPECT_EQ((field == kTriangleBits ? slice->triangleBits : slice->cornerBits) != nullptr, beyond == 0);
            }
            EXPECT_TRUE(liveMemory() == before);
        }
    }
}

// `count` slices whose arrays all copy the same bytes, which stand once behind the last slice
// header: a small body that describes `count` times its own size in arrays.
Bytes sharedSourceBody(Kind kind, int count) {
    Bytes body;
    size_t field = cloud_field::kElements;
    if (kind == kMesh) {
        MeshPlan plan;
        plan.vertexCount = 4096;
        plan.timeSlices.resize(count);
        plan.timeSlices.back().positions.assign(4096 * 3, 0.5f);
        body = meshBody(plan);
        field = mesh_slice_field::kPositions;
    } else {
        CloudPlan plan;
        plan.elementCount = 1024;
        plan.timeSlices.resize(count);
        for (uint32_t e = 0; e < 1024; ++e)
            append(plan.timeSlices.back().elements, kind == kFurKind ? furElement(e, e) : spriteElement(e, e));
        body = cloudBody(kind, plan);
    }
    const size_t last = sliceAt(kind, body, count - 1);
    const uint64_t source = last + get64(body, last + field);
    for (int index = 0; index + 1 < count; ++index)
        aim(body, sliceAt(kind, body, index) + field, sliceAt(kind, body, index), source);
    return body;
}

TEST(MalformedGeometry, SharedSourceBytesCannotMultiplyArrayMemory) {
    using geometry_parts::ArrayBudget;
    for (Kind kind : {kMesh, kFurKind, kSpriteKind}) {
        SCOPED_TRACE(kKindNames[kind]);
        // A few slices sharing their bytes are within reason.
        EXPECT_EQ(readModel(kind, {sharedSourceBody(kind, 4)}).status, SceneOk);
        // Enough of them to need more than the body can earn.
        const uint64_t perSlice = kind == kMesh ? 4096 * 16 : kind == kFurKind ? 1024 * 112 : 1024 * 32;
        const int count = 600;
        const Bytes body = sharedSourceBody(kind, count);
        ASSERT_LT(body.size() * ArrayBudget::kDecodedFactor, perSlice * count / 4);
        EXPECT_EQ(readModel(kind, {body}).status, SceneInvalid);
    }
}

} // namespace

// A triangle mesh part as the engine sees it after reading: header fields, names and their
// hashes, keys, the static slice's counts and arrays, and time slices with widened positions.
#include "scene/track_keys.h"
#include "tests/scene/geometry/geometry_test_support.h"

#include <gtest/gtest.h>

#include <vector>

using namespace scene_writer;
using TRDF_Load::StaticSliceT;
using TRDF_Load::TimeSliceT;
using TRDF_Load::TriangleMesh;

namespace {

Bytes patterned(size_t size, uint8_t seed) {
    Bytes bytes(size);
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<uint8_t>(seed + 7 * i);
    return bytes;
}

std::vector<float> floats(size_t count, float start) {
    std::vector<float> values(count);
    for (size_t i = 0; i < count; ++i)
        values[i] = start + 0.25f * static_cast<float>(i);
    return values;
}

// Every field and every array of a part set to something that tells where it came from.
MeshPlan fullPlan() {
    MeshPlan plan;
    plan.name = "Teapot";
    plan.secondName = "lid";
    plan.keys = {FileKey{1, 2, 3, 4, 5, 6, 7, 8, 9}, FileKey{11, 12, 13, 14, 15, 16, 17, 18, 19}};
    plan.word36 = 0x2C2C2C2C;
    plan.word48 = -7;
    plan.word52 = 0x34;
    plan.word56 = -9;
    plan.word60 = 0x3C;
    plan.word64 = 0x40;
    plan.word68 = 0x44;
    plan.floats72 = {0.5f, 1.5f, 2.5f, -1.0f, -2.0f, -3.0f};
    for (size_t i = 0; i < plan.block96.size(); ++i)
        plan.block96[i] = static_cast<uint8_t>(0x80 + i);
    plan.word144 = 0x98989898;

    plan.vertexCount = 4;
    plan.pointCount = 2;
    plan.triangleCount = 3;
    plan.pointExtraCount = 2;
    plan.vectorCount = 5;
    plan.pairCount = 2;
    plan.triangleTriples = patterned(3 * 12, 1);
    plan.triangleQuads = patterned(3 * 16, 2);
    for (uint32_t t = 0; t < 3; ++t)
        put32(plan.triangleQuads, 16 * t + 12, t < 2 ? 7 : 9);
    plan.vectorTable = patterned(5 * 12, 3);
    plan.pairTable = patterned(2 * 8, 4);
    plan.triangleBits = patterned(4, 5);
    plan.triangleWords = patterned(3 * 4, 6);
    plan.cornerBits = patterned(4, 7);

    MeshSlicePlan first;
    first.paramA = 1;
    first.paramB = -2;
    first.positions = floats(4 * 3, 10.0f);
    first.points = floats(2 * 3, 20.0f);
    first.pointExtras = patterned(2 * 2 * 16, 8);
    MeshSlicePlan second;
    second.paramA = 3;
    second.paramB = 4;
    second.positions = floats(4 * 3, 30.0f);
    plan.timeSlices = {first, second};
    return plan;
}

void expectBytes(const void* array, const Bytes& expected) {
    ASSERT_NE(array, nullptr);
    EXPECT_TRUE(aligned64(array));
    EXPECT_EQ(std::memcmp(array, expected.data(), expected.size()), 0);
}

void expectWidened(const float* elements, size_t stride, const std::vector<float>& file) {
    ASSERT_NE(elements, nullptr);
    for (size_t i = 0; i < file.size() / 3; ++i) {
        const float* e = elements + i * stride;
        EXPECT_EQ(e[0], file[3 * i]) << i;
        EXPECT_EQ(e[1], file[3 * i + 1]) << i;
        EXPECT_EQ(e[2], file[3 * i + 2]) << i;
        EXPECT_EQ(e[3], 1.0f) << i;
    }
}

// Reads the first model of a file holding one mesh chunk with this body.
struct ReadMesh {
    explicit ReadMesh(const Bytes& body, bool packed = false)
        : scene(sceneOf({packed ? zstdChunk(kTriangleMesh, body) : storedChunk(kTriangleMesh, body)})) {
        status = readTriangleMesh(scene.reader, chain.head, offset);
    }
    GeometryScene scene;
    Chain<TriangleMesh> chain;
    uint64_t offset = 0;
    SceneStatus status;
};

TEST(MeshReader, HeaderNamesHashesAndKeys) {
    for (bool packed : {false, true}) {
        SCOPED_TRACE(packed);
        const MeshPlan plan = fullPlan();
        ReadMesh read(meshBody(plan), packed);
        ASSERT_EQ(read.status, SceneOk);
        const TriangleMesh* mesh = read.chain.head;
        ASSERT_NE(mesh, nullptr);
        EXPECT_EQ(mesh->next, nullptr);
        EXPECT_EQ(mesh->modelNode, nullptr);

        const struct {
            size_t objectOffset;
            uint32_t value;
        } words[] = {{0x28, 2},          {0x2C, 0x2C2C2C2C}, {0x30, uint32_t(-7)}, {0x34, 0x34},
                     {0x38, uint32_t(-9)}, {0x3C, 0x3C},       {0x40, 0x40},         {0x44, 0x44},
                     {0x98, 0x98989898}};
        for (const auto& w : words)
            EXPECT_EQ(wordAt(mesh, w.objectOffset), w.value) << std::hex << w.objectOffset;
        EXPECT_EQ(std::memcmp(mesh->floats50, plan.floats72.data(), sizeof mesh->floats50), 0);
        EXPECT_EQ(std::memcmp(mesh->block68, plan.block96.data(), sizeof mesh->block68), 0);

        EXPECT_EQ(wideText(mesh->name, kNameChars), u"Teapot");
        EXPECT_EQ(wideText(mesh->secondName, kNameChars), u"lid");
        EXPECT_EQ(mesh->nameHash, hashOf("Teapot"));
        EXPECT_EQ(mesh->secondNameHash, hashOf("lid"));

        ASSERT_NE(mesh->keys, nullptr);
        EXPECT_EQ(trackLength(mesh->keys), 2u);
        for (size_t k = 0; k < 2; ++k) {
            for (size_t w = 0; w < 9; ++w)
                EXPECT_EQ(mesh->keys[k].words[kTrackKeyMemoryOffsets[w] / 4], plan.keys[k][w]) << k << " " << w;
        }
    }
}

TEST(MeshReader, StaticSliceCountsAndArrays) {
    const MeshPlan plan = fullPlan();
    ReadMesh read(meshBody(plan));
    ASSERT_EQ(read.status, SceneOk);
    const StaticSliceT* slice = read.chain.head->staticSlice;
    ASSERT_NE(slice, nullptr);
    // The object has the triangle count before the point count; the body the other way round.
    const struct {
        size_t objectOffset;
        int32_t value;
    } counts[] = {{0x40, 4}, {0x44, 3}, {0x48, 2}, {0x4C, 2}, {0x50, 5}, {0x54, 2}};
    for (const auto& c : counts)
        EXPECT_EQ(wordAt(slice, c.objectOffset), uint32_t(c.value)) << std::hex << c.objectOffset;

    expectBytes(slice->triangleTriples, plan.triangleTriples);
    expectBytes(slice->triangleQuads, plan.triangleQuads);
    expectBytes(slice->vectorTable, plan.vectorTable);
    expectBytes(slice->pairTable, plan.pairTable);
    expectBytes(slice->triangleBits, plan.triangleBits);
    expectBytes(slice->triangleWords, plan.triangleWords);
    expectBytes(slice->cornerBits, plan.cornerBits);
    EXPECT_EQ(slice->triangleQuads[0].materialId, 7u);
    EXPECT_EQ(slice->triangleQuads[1].materialId, 7u);
    EXPECT_EQ(slice->triangleQuads[2].materialId, 9u);
}

TEST(MeshReader, TimeSlicesWidenPositionsAndPoints) {
    const MeshPlan plan = fullPlan();
    ReadMesh read(meshBody(plan));
    ASSERT_EQ(read.status, SceneOk);
    const TimeSliceT* first = read.chain.head->timeSlices;
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->sliceParamA, 1);
    EXPECT_EQ(first->sliceParamB, -2);
    EXPECT_TRUE(aligned64(first->positions));
    expectWidened(first->positions, 4, plan.timeSlices[0].positions);
    ASSERT_NE(first->points, nullptr);
    EXPECT_TRUE(aligned64(first->points));
    expectWidened(first->points[0].position, sizeof(TRDF_Load::PointElement) / 4, plan.timeSlices[0].points);
    const Bytes& extras = plan.timeSlices[0].pointExtras;
    for (size_t point = 0; point < 2; ++point) {
        // Two extras each, densely packed in the file; the other six places stay zero.
        EXPECT_EQ(std::memcmp(first->points[point].extras, extras.data() + point * 32, 32), 0) << point;
        for (size_t j = 2; j < 8; ++j)
            EXPECT_EQ(std::count(first->points[point].extras[j], first->points[point].extras[j] + 16, 0), 16);
    }
    EXPECT_EQ(first->engineArray, nullptr);

    const TimeSliceT* second = first->next;
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->next, nullptr);
    EXPECT_EQ(second->sliceParamA, 3);
    EXPECT_EQ(second->sliceParamB, 4);
    expectWidened(second->positions, 4, plan.timeSlices[1].positions);
    // Points are counted but the slice gives none: the array is there, all zero.
    ASSERT_NE(second->points, nullptr);
    const uint8_t* bytes = reinterpret_cast<const uint8_t*>(second->points);
    EXPECT_EQ(std::count(bytes, bytes + 2 * sizeof(TRDF_Load::PointElement), 0),
              ptrdiff_t(2 * sizeof(TRDF_Load::PointElement)));
}

TEST(MeshReader, ManyPositionsWidenExactly) {
    MeshPlan plan;
    plan.vertexCount = 1003; // not a multiple of four
    MeshSlicePlan slice;
    slice.positions = floats(1003 * 3, -100.0f);
    plan.timeSlices = {slice};
    ReadMesh read(meshBody(plan));
    ASSERT_EQ(read.status, SceneOk);
    expectWidened(read.chain.head->timeSlices->positions, 4, slice.positions);
}

TEST(MeshReader, BitArraysTakeTheirRoundedSizes) {
    // The corner bits are the body's last bytes: one byte more would lie outside it.
    for (int32_t triangles : {1, 31, 32, 33, 100}) {
        SCOPED_TRACE(triangles);
        MeshPlan plan;
        plan.triangleCount = triangles;
        plan.triangleBits = patterned((size_t(triangles + 31) >> 5) * 4, 1);
        plan.cornerBits = patterned((size_t(triangles * 3 + 31) >> 5) * 4, 2);
        ReadMesh read(meshBody(plan));
        ASSERT_EQ(read.status, SceneOk);
        const StaticSliceT* slice = read.chain.head->staticSlice;
        expectBytes(slice->triangleBits, plan.triangleBits);
        expectBytes(slice->cornerBits, plan.cornerBits);
        EXPECT_EQ(slice->triangleTriples, nullptr);
        EXPECT_EQ(slice->triangleWords, nullptr);
    }
}

TEST(MeshReader, ZeroCountsGiveEmptyOrNoArrays) {
    MeshPlan plan;
    plan.timeSlices = {MeshSlicePlan{}};
    Bytes body = meshBody(plan);
    // Every array offset of the static slice is present, pointing at the slice's end, and
    // the time slice names positions and points as well; all counts are zero.
    const size_t at = get64(body, mesh_field::kStaticSliceOffset);
    for (size_t field = static_field::kTriangleTriples; field <= static_field::kCornerBits; field += 8)
        put64(body, at + field, static_field::kHeaderBytes);
    const size_t sliceAt = get64(body, mesh_field::kTimeSlicesOffset);
    put64(body, sliceAt + mesh_slice_field::kPositions, mesh_slice_field::kHeaderBytes);
    put64(body, sliceAt + mesh_slice_field::kPoints, mesh_slice_field::kHeaderBytes);

    LiveMemory before = liveMemory();
    {
        ReadMesh read(body);
        ASSERT_EQ(read.status, SceneOk);
        const StaticSliceT* slice = read.chain.head->staticSlice;
        // The bit arrays depend on their offset alone: blocks of size 0.
        EXPECT_NE(slice->triangleBits, nullptr);
        EXPECT_NE(slice->cornerBits, nullptr);
        EXPECT_EQ(slice->triangleTriples, nullptr);
        EXPECT_EQ(slice->triangleQuads, nullptr);
        EXPECT_EQ(slice->vectorTable, nullptr);
        EXPECT_EQ(slice->pairTable, nullptr);
        EXPECT_EQ(slice->triangleWords, nullptr);
        const TimeSliceT* time = read.chain.head->timeSlices;
        ASSERT_NE(time, nullptr);
        EXPECT_EQ(time->positions, nullptr);
        EXPECT_EQ(time->points, nullptr);
    }
    EXPECT_TRUE(liveMemory() == before);
}

TEST(MeshReader, AbsentSlices) {
    MeshPlan plan;
    plan.withStaticSlice = false;
    MeshSlicePlan slice;
    slice.positions = floats(3, 1.0f); // nothing counts them without a static slice
    plan.timeSlices = {slice, slice};
    ReadMesh read(meshBody(plan));
    ASSERT_EQ(read.status, SceneOk);
    EXPECT_EQ(read.chain.head->staticSlice, nullptr);
    ASSERT_NE(read.chain.head->timeSlices, nullptr);
    EXPECT_EQ(read.chain.head->timeSlices->positions, nullptr);
    ASSERT_NE(read.chain.head->timeSlices->next, nullptr);

    // A slice count of 0 reads no slice, however the offset stands; so does offset 0.
    for (auto breakIt : {+[](Bytes& b) { put32(b, mesh_field::kTimeSliceCount, 0); },
                         +[](Bytes& b) { put64(b, mesh_field::kTimeSlicesOffset, 0); }}) {
        Bytes body = meshBody(plan);
        breakIt(body);
        ReadMesh none(body);
        ASSERT_EQ(none.status, SceneOk);
        EXPECT_EQ(none.chain.head->timeSlices, nullptr);
    }
}

TEST(MeshReader, HashesSeeTheNarrowBytes) {
    const struct {
        std::string name;
        std::u16string wide;
    } cases[] = {{"Teapot", u"Teapot"}, {"teapot", u"teapot"}, {"", u""}, {"caf\xE9", u"caf\u00E9"}};
    std::vector<uint32_t> hashes;
    for (const auto& c : cases) {
        MeshPlan plan;
        plan.name = c.name;
        plan.secondName = c.name + "2";
        ReadMesh read(meshBody(plan));
        ASSERT_EQ(read.status, SceneOk);
        EXPECT_EQ(wideText(read.chain.head->name, kNameChars), c.wide);
        EXPECT_EQ(read.chain.head->nameHash, hashOf(c.name));
        EXPECT_EQ(read.chain.head->secondNameHash, hashOf(c.name + "2"));
        hashes.push_back(read.chain.head->nameHash);
    }
    EXPECT_NE(hashes[0], hashes[1]); // names that differ only in case
}

TEST(MeshReader, LongestNameFits) {
    MeshPlan plan;
    plan.name = std::string(63, 'n');
    ReadMesh fits(meshBody(plan));
    EXPECT_EQ(fits.status, SceneOk);
    EXPECT_EQ(wideText(fits.chain.head->name, kNameChars).size(), 63u);

    plan.name = std::string(64, 'n');
    ReadMesh tooLong(meshBody(plan));
    EXPECT_EQ(tooLong.status, SceneInvalid);
    // The part stays in the chain for the caller to release, with its hash all the same.
    ASSERT_NE(tooLong.chain.head, nullptr);
    EXPECT_EQ(tooLong.chain.head->nameHash, hashOf(plan.name));
    EXPECT_EQ(tooLong.chain.head->staticSlice, nullptr);
}

} // namespace

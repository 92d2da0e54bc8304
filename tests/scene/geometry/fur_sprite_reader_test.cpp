// Fur and sprite parts as the engine sees them after reading: header fields at their object
// offsets, names and their hashes, keys, and time slices with their element arrays.
#include "scene/track_keys.h"
#include "tests/scene/geometry/geometry_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

using namespace scene_writer;

namespace {

// A run of `words` 32-bit words copied from the body to the object.
struct WordRun {
    size_t bodyOffset, objectOffset, words;
};

struct FurKind {
    using Part = TRDF_Load::FurMesh;
    static constexpr uint32_t kType = kFur;
    static constexpr size_t kName = cloud_field::kFurName, kFileElement = kFurElementBytes, kMemoryElement = 0x70;
    static constexpr WordRun kHeader[] = {{28, 0x18, 1}, {32, 0x5C, 1}, {36, 0x60, 1}, {44, 0x88, 2},  {52, 0x94, 1},
                                          {56, 0x64, 1}, {60, 0x90, 1}, {64, 0x70, 6}, {88, 0x28, 12}, {136, 0x58, 1}};
    static Bytes body(const CloudPlan& plan) { return furBody(plan); }
    static Bytes element(uint32_t seed, uint32_t word) { return furElement(seed, word); }
    static uint32_t materialId(const TRDF_Load::FurElement& element) { return element.materialId(); }
    static uint32_t expectedMaterialId(uint32_t word) { return word & 0x00FFFFFFu; }
    static void expectRecordedBytes(const TRDF_Load::TimeSliceF&, uint64_t) {} // the fur slice keeps no size
    static constexpr auto read = readFur;
};

struct SpriteKind {
    using Part = TRDF_Load::SprMesh;
    static constexpr uint32_t kType = kSprites;
    static constexpr size_t kName = cloud_field::kSpriteName, kFileElement = kSpriteElementBytes;
    static constexpr size_t kMemoryElement = kSpriteElementBytes;
    static constexpr WordRun kHeader[] = {{28, 0x28, 3}, {44, 0x58, 2}, {52, 0x64, 1},
                                          {56, 0x34, 1}, {60, 0x60, 1}, {64, 0x40, 6}};
    static Bytes body(const CloudPlan& plan) { return spriteBody(plan); }
    static Bytes element(uint32_t seed, uint32_t word) { return spriteElement(seed, word); }
    static uint32_t materialId(const TRDF_Load::SpriteElement& element) { return element.materialId; }
    static uint32_t expectedMaterialId(uint32_t word) { return word; }
    static void expectRecordedBytes(const TRDF_Load::TimeSliceS& slice, uint64_t bytes) {
        EXPECT_EQ(slice.elementsBytes, bytes);
    }
    static constexpr auto read = readSprites;
};

template <class Kind> class CloudReader : public ::testing::Test {
  protected:
    // Reads the first model of a file holding one chunk with this body, releasing the last.
    SceneStatus read(const Bytes& body) {
        chain.release();
        scene = std::make_unique<GeometryScene>(sceneOf({storedChunk(Kind::kType, body)}));
        uint64_t offset = 0;
        return Kind::read(scene->reader, chain.head, offset, ModelArrays::Copied);
    }
    // Slice s holds `elements` elements, the material word of element e having a high byte set.
    static uint32_t materialWord(int32_t s, int32_t e) { return 0xAB000000u | uint32_t(0x100 * s + e); }
    static CloudPlan planWithSlices(int32_t slices, int32_t elements) {
        CloudPlan plan;
        plan.elementCount = elements;
        plan.timeSlices.resize(slices);
        for (int32_t s = 0; s < slices; ++s) {
            plan.timeSlices[s].paramA = 10 * s + 1;
            plan.timeSlices[s].paramB = -(10 * s + 2);
            for (int32_t e = 0; e < elements; ++e)
                append(plan.timeSlices[s].elements, Kind::element(uint32_t(s * 16 + e), materialWord(s, e)));
        }
        return plan;
    }

    std::unique_ptr<GeometryScene> scene;
    Chain<typename Kind::Part> chain;
};

using Kinds = ::testing::Types<FurKind, SpriteKind>;
TYPED_TEST_SUITE(CloudReader, Kinds);

TYPED_TEST(CloudReader, HeaderWordsLandAtTheirObjectOffsets) {
    CloudPlan plan;
    plan.elementCount = 7;
    plan.keys = {FileKey{}, FileKey{}};
    Bytes body = TypeParam::body(plan);
    // Every copied word but the two counts gets a value of its own, so that a mix-up shows.
    for (const WordRun& run : TypeParam::kHeader) {
        for (size_t at = std::max<size_t>(run.bodyOffset, 36); at < run.bodyOffset + 4 * run.words; at += 4)
            put32(body, at, 0xC0DE0000u + uint32_t(at));
    }
    ASSERT_EQ(this->read(body), SceneOk);
    const auto* part = this->chain.head;
    for (const WordRun& run : TypeParam::kHeader) {
        for (size_t w = 0; w < run.words; ++w)
            EXPECT_EQ(wordAt(part, run.objectOffset + 4 * w), get32(body, run.bodyOffset + 4 * w)) << run.bodyOffset;
    }
    EXPECT_EQ(part->elementCount, 7);
    EXPECT_EQ(part->keyCount, 2u);
    EXPECT_EQ(part->modelNode, nullptr);
    EXPECT_EQ(part->timeSlices, nullptr);
}

TYPED_TEST(CloudReader, NamesHashesAndKeys) {
    CloudPlan plan;
    plan.name = "Mane";
    plan.secondName = "mane";
    plan.keys = {FileKey{1, 2, 3, 4, 5, 6, 7, 8, 9}, FileKey{11, 12, 13, 14, 15, 16, 17, 18, 19}};
    const Bytes body = TypeParam::body(plan);
    ASSERT_EQ(body.at(TypeParam::kName), 'M'); // the kind's own place for the name
    ASSERT_EQ(this->read(body), SceneOk);
    const auto* part = this->chain.head;
    EXPECT_EQ(wideText(part->name, kNameChars), u"Mane");
    EXPECT_EQ(wideText(part->secondName, kNameChars), u"mane");
    EXPECT_EQ(part->nameHash, hashOf("Mane"));
    EXPECT_EQ(part->secondNameHash, hashOf("mane"));
    EXPECT_NE(part->nameHash, part->secondNameHash); // the hash sees the narrow bytes, case and all

    ASSERT_NE(part->keys, nullptr);
    EXPECT_EQ(trackLength(part->keys), 2u);
    for (size_t k = 0; k < 2; ++k) {
        for (size_t w = 0; w < 9; ++w)
            EXPECT_EQ(part->keys[k].words[kTrackKeyMemoryOffsets[w] / 4], plan.keys[k][w]) << k << " " << w;
    }
}

TYPED_TEST(CloudReader, TimeSlicesCopyTheirElements) {
    const CloudPlan plan = this->planWithSlices(3, 5);
    ASSERT_EQ(this->read(TypeParam::body(plan)), SceneOk);
    int32_t s = 0;
    for (const auto* slice = this->chain.head->timeSlices; slice; slice = slice->next, ++s) {
        SCOPED_TRACE(s);
        ASSERT_LT(s, 3);
        EXPECT_EQ(slice->sliceParamA, plan.timeSlices[s].paramA);
        EXPECT_EQ(slice->sliceParamB, plan.timeSlices[s].paramB);
        ASSERT_NE(slice->elements, nullptr);
        EXPECT_TRUE(aligned64(slice->elements));
        TypeParam::expectRecordedBytes(*slice, 5 * TypeParam::kMemoryElement);
        const uint8_t* memory = reinterpret_cast<const uint8_t*>(slice->elements);
        for (int32_t e = 0; e < 5; ++e) {
            // Each file element lands at the start of its memory element, flag byte and all.
            const uint8_t* file = plan.timeSlices[s].elements.data() + e * TypeParam::kFileElement;
            EXPECT_EQ(std::memcmp(memory + e * TypeParam::kMemoryElement, file, TypeParam::kFileElement), 0) << e;
            const uint32_t word = this->materialWord(s, e);
            EXPECT_EQ(TypeParam::materialId(slice->elements[e]), TypeParam::expectedMaterialId(word)) << e;
        }
    }
    EXPECT_EQ(s, 3);
}

TYPED_TEST(CloudReader, ZeroCountsAndAbsentSlices) {
    // Elements in the body, but none counted: slices without arrays.
    CloudPlan plan = this->planWithSlices(2, 1);
    plan.elementCount = 0;
    ASSERT_EQ(this->read(TypeParam::body(plan)), SceneOk);
    ASSERT_NE(this->chain.head->timeSlices, nullptr);
    ASSERT_NE(this->chain.head->timeSlices->next, nullptr);
    for (const auto* slice = this->chain.head->timeSlices; slice; slice = slice->next) {
        EXPECT_EQ(slice->elements, nullptr);
        TypeParam::expectRecordedBytes(*slice, 0);
    }

    // Elements counted, but the first slice names none: only the second has an array.
    Bytes body = TypeParam::body(this->planWithSlices(2, 1));
    put64(body, get64(body, cloud_field::kTimeSlicesOffset) + cloud_field::kElements, 0);
    ASSERT_EQ(this->read(body), SceneOk);
    EXPECT_EQ(this->chain.head->timeSlices->elements, nullptr);
    EXPECT_NE(this->chain.head->timeSlices->next->elements, nullptr);

    // A slice count of 0 reads no slice, however the offset stands; so does offset 0.
    for (bool countIsZero : {true, false}) {
        body = TypeParam::body(this->planWithSlices(2, 1));
        countIsZero ? put32(body, cloud_field::kTimeSliceCount, 0) : put64(body, cloud_field::kTimeSlicesOffset, 0);
        ASSERT_EQ(this->read(body), SceneOk);
        EXPECT_EQ(this->chain.head->timeSlices, nullptr);
    }
}

} // namespace

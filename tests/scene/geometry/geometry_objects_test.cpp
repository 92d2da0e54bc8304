// The geometry objects on their own, as the engine handles them: slice arrays from the slots,
// Clear and ClearKeys, the deleting destructors, and the release of whole chains.
#include "memory/pool.h"
#include "scene/track_keys.h"
#include "tests/scene/geometry/geometry_test_support.h"

#include <gtest/gtest.h>

#include <map>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

using namespace TRDF_Load;

namespace {

// ---- Objects holding something in every place that can hold something -------------------------

// Calls `visit` on every array pointer of the slice, in the order its Clear frees them.
template <class Visit> void eachArray(StaticSliceT& s, Visit visit) {
    visit(s.triangleTriples);
    visit(s.triangleQuads);
    visit(s.vectorTable);
    visit(s.pairTable);
    visit(s.triangleBits);
    visit(s.triangleWords);
    visit(s.cornerBits);
}
template <class Visit> void eachArray(TimeSliceT& t, Visit visit) {
    visit(t.positions);
    visit(t.points);
    visit(t.engineArray);
}
template <class Slice, class Visit> void eachArray(Slice& slice, Visit visit) { // fur and sprites
    visit(slice.elements);
}

void* allocate(TimeSliceS& slice, size_t size) {
    return slice.Allocate(size, &slice.elementsBytes);
}
template <class Slice> void* allocate(Slice& slice, size_t size) {
    return slice.Allocate(size);
}
template <class T> void hold(T*& array, void* block) {
    array = static_cast<T*>(block);
}

template <class Slice> size_t fill(Slice& slice) {
    size_t arrays = 0;
    eachArray(slice, [&](auto*& array) {
        hold(array, allocate(slice, 48));
        ++arrays;
    });
    return arrays;
}
template <class Part> void fillPart(Part& part) {
    using Slice = std::remove_pointer_t<decltype(part.timeSlices)>;
    part.keys = allocateTrack(3);
    part.keyCount = 3;
    part.timeSlices = Slice::create();
    fill(*part.timeSlices);
    part.timeSlices->next = Slice::create();
    fill(*part.timeSlices->next);
}
void fill(TriangleMesh& mesh) {
    fillPart(mesh);
    mesh.staticSlice = StaticSliceT::create();
    fill(*mesh.staticSlice);
}
void fill(FurMesh& fur) {
    fillPart(fur);
}
void fill(SprMesh& sprites) {
    fillPart(sprites);
}

template <class Part> Part* chainOf(int parts) {
    Part* head = nullptr;
    for (int i = 0; i < parts; ++i) {
        Part* part = Part::create();
        fill(*part);
        part->next = head;
        head = part;
    }
    return head;
}

template <class Part> class PartObjects : public ::testing::Test {};
using PartKinds = ::testing::Types<TriangleMesh, FurMesh, SprMesh>;
TYPED_TEST_SUITE(PartObjects, PartKinds);

TYPED_TEST(PartObjects, ReleaseOfTheHeadFreesTheWholeChain) {
    const LiveMemory before = liveMemory();
    TypeParam* head = chainOf<TypeParam>(3);
    ASSERT_GE(liveMemory().sliceArrays, before.sliceArrays + 6); // there is something to free
    head->Release();
    EXPECT_TRUE(liveMemory() == before);
}

TYPED_TEST(PartObjects, ClearKeysFreesTheTrackOnce) {
    TypeParam* part = chainOf<TypeParam>(1);
    const uint64_t blocks = liveMemory().poolBlocks;
    for (int call = 0; call < 2; ++call) {
        part->ClearKeys();
        EXPECT_EQ(part->keys, nullptr);
        EXPECT_EQ(part->keyCount, 0u);
        EXPECT_EQ(liveMemory().poolBlocks, blocks - 1);
    }
    part->Release();
}

// ---- Slices ------------------------------------------------------------------------------------

template <class Slice> void checkSlice() {
    Slice* slice = Slice::create();
    Slice* other = Slice::create();
    const uint64_t base = liveSliceArrays();
    for (size_t size : {0, 1, 63, 64, 65, 4099}) {
        SCOPED_TRACE(size);
        void* block = allocate(*slice, size);
        ASSERT_NE(block, nullptr);
        EXPECT_TRUE(aligned64(block));
        std::memset(block, 0xA5, size); // all of it is the caller's to write
        EXPECT_EQ(liveSliceArrays(), base + 1);
        // Arrays change hands: another slice frees it.
        eachArray(*other, [&](auto*& array) { hold(array, std::exchange(block, nullptr)); });
        other->Clear();
        EXPECT_EQ(liveSliceArrays(), base);
    }
    EXPECT_EQ(allocate(*slice, SIZE_MAX), nullptr);

    // Clear frees every array and nulls it; a second Clear finds nothing to free.
    const size_t filled = fill(*slice); // made before they are counted, whatever the argument order
    EXPECT_EQ(liveSliceArrays(), base + filled);
    for (int call = 0; call < 2; ++call) {
        EXPECT_EQ(slice->Clear(), 0);
        EXPECT_EQ(liveSliceArrays(), base);
        eachArray(*slice, [](auto* array) { EXPECT_EQ(array, nullptr); });
        if constexpr (std::is_same_v<Slice, TimeSliceS>) {
            EXPECT_EQ(slice->elementsBytes, 0u);
        }
    }
    slice->Release();
    other->Release();
}

TEST(GeometryObjects, SliceArraysAlignedWholeAndCleared) {
    checkSlice<StaticSliceT>();
    checkSlice<TimeSliceT>();
    checkSlice<TimeSliceF>();
    checkSlice<TimeSliceS>();
}

#if TAVI_SANITIZER_BLOCKS
// The engine reads arrays by the counts it was given; under the sanitizers a read one byte past
// an array must be reported, small or page-sized, rounded or not.
TEST(GeometryObjectsDeathTest, AReadPastAnArrayIsReported) {
    for (size_t size : {size_t(100), size_t(128), size_t(3) << 20}) {
        SCOPED_TRACE(size);
        StaticSliceT* slice = StaticSliceT::create();
        auto* array = static_cast<volatile uint8_t*>(slice->Allocate(size));
        ASSERT_NE(array, nullptr);
        array[size - 1] = 1;
        EXPECT_DEATH(static_cast<void>(array[size]), "AddressSanitizer");
        slice->Free(const_cast<uint8_t*>(array));
        slice->Release();
    }
}
#endif

// ---- Deleting destructors and construction -----------------------------------------------------

template <class T> void checkDestroy() {
    for (uint32_t flags : {0u, 1u, 2u, 3u}) {
        SCOPED_TRACE(flags);
        const LiveMemory before = liveMemory();
        T* object = T::create();
        fill(*object);
        EXPECT_EQ(object->destroy(flags), object);
        // What the object holds goes either way; its own block only when bit 0 asks.
        EXPECT_EQ(liveMemory().sliceArrays, before.sliceArrays);
        EXPECT_EQ(liveMemory().poolBlocks, before.poolBlocks + ((flags & 1) ? 0 : 1));
        if (!(flags & 1)) poolFree(poolInstance(), object);
    }
}

TEST(GeometryObjects, DeletingDestructorsFreeTheObjectOnlyWithBitZero) {
    checkDestroy<TriangleMesh>();
    checkDestroy<StaticSliceT>();
    checkDestroy<TimeSliceT>();
    checkDestroy<FurMesh>();
    checkDestroy<TimeSliceF>();
    checkDestroy<SprMesh>();
    checkDestroy<TimeSliceS>();
}

// Pool memory comes back dirty: every word behind the table pointer is the constructor's to
// set, to 0 unless the engine expects another initial value.
template <class T> void checkInitialWords(const std::map<size_t, uint32_t>& initial) {
    alignas(64) uint8_t storage[sizeof(T)];
    std::memset(storage, 0xCD, sizeof storage);
    T* object = new (storage) T();
    for (size_t at = 8; at < sizeof(T); at += 4) {
        auto expected = initial.find(at);
        EXPECT_EQ(wordAt(object, at), expected == initial.end() ? 0u : expected->second) << std::hex << at;
    }
    object->destroy(0);
}

TEST(GeometryObjects, ConstructorsSetEveryWordOnDirtyMemory) {
    const uint32_t one = 0x3F800000, minusOne = 0xFFFFFFFF;
    checkInitialWords<TriangleMesh>(
        {{0x30, minusOne}, {0x38, minusOne}, {0x44, 1}, {0x50, one}, {0x54, one}, {0x58, one}});
    checkInitialWords<FurMesh>({{0x88, minusOne}, {0x8C, minusOne}, {0x90, 1}, {0x70, one}, {0x74, one}, {0x78, one}});
    checkInitialWords<SprMesh>({{0x58, minusOne}, {0x5C, minusOne}, {0x60, 1}, {0x40, one}, {0x44, one}, {0x48, one}});
    checkInitialWords<StaticSliceT>({});
    checkInitialWords<TimeSliceT>({});
    checkInitialWords<TimeSliceF>({});
    checkInitialWords<TimeSliceS>({});
}

} // namespace

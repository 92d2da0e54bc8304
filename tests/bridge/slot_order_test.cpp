// The boundary is binary: every operation must sit in its slot of the virtual table.
#include "bridge/bridge_objects.h"
#include "bridge/name_interface.h"
#include "bridge/render_callback.h"
#include "bridge/tracer.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

// Under the Itanium ABI a pointer to a virtual member holds 1 + the slot's byte offset.
template <class Member>
size_t slotOf(Member member) {
    static_assert(sizeof(Member) == 2 * sizeof(void*));
    uintptr_t raw[2];
    std::memcpy(raw, &member, sizeof raw);
    EXPECT_EQ(raw[0] & 1, 1u) << "not a virtual member";
    return (raw[0] - 1) / sizeof(void*);
}

TEST(SlotOrder, Tracer) {
    using T = ITaviTracer;
    EXPECT_EQ(slotOf(&T::initialise), 0u);
    EXPECT_EQ(slotOf(&T::reserved1), 1u);
    EXPECT_EQ(slotOf(&T::reserved4), 4u);
    EXPECT_EQ(slotOf(&T::shutdown), 5u);
    EXPECT_EQ(slotOf(&T::beginScene), 6u);
    EXPECT_EQ(slotOf(&T::addTextureFolder), 7u);
    EXPECT_EQ(slotOf(&T::addMaterial), 8u);
    EXPECT_EQ(slotOf(&T::addTexMap), 9u);
    EXPECT_EQ(slotOf(&T::addTextureData), 10u);
    EXPECT_EQ(slotOf(&T::addTextureFile), 11u);
    EXPECT_EQ(slotOf(&T::endLights), 12u);
    EXPECT_EQ(slotOf(&T::addTriangleMeshes), 13u);
    EXPECT_EQ(slotOf(&T::addFur), 14u);
    EXPECT_EQ(slotOf(&T::addSprites), 15u);
    EXPECT_EQ(slotOf(&T::endScene), 16u);
    EXPECT_EQ(slotOf(&T::reserved17), 17u);
    EXPECT_EQ(slotOf(&T::reserved18), 18u);
    EXPECT_EQ(slotOf(&T::addLight), 19u);
    EXPECT_EQ(slotOf(&T::addCamera), 20u);
    EXPECT_EQ(slotOf(&T::endGeometry), 21u);
    EXPECT_EQ(slotOf(&T::render), 22u);
}

TEST(SlotOrder, RenderCallback) {
    using C = ITaviRenderCallback;
    EXPECT_EQ(slotOf(&C::onProgress), 0u);
    EXPECT_EQ(slotOf(&C::peekCommand), 1u);
    EXPECT_EQ(slotOf(&C::queryZero), 2u);
    EXPECT_EQ(slotOf(&C::peekViewState), 3u);
    EXPECT_EQ(slotOf(&C::queryInteractive), 4u);
    EXPECT_EQ(slotOf(&C::notifyStart), 5u);
    EXPECT_EQ(slotOf(&C::notifySceneReady), 6u);
    EXPECT_EQ(slotOf(&C::notifyPass), 7u);
    EXPECT_EQ(slotOf(&C::notifyStop), 8u);
    EXPECT_EQ(slotOf(&C::queryPreview), 9u);
    EXPECT_EQ(slotOf(&C::queryAbort), 10u);
    EXPECT_EQ(slotOf(&C::notifyImage), 11u);
    EXPECT_EQ(slotOf(&C::filterValue), 12u);
    EXPECT_EQ(slotOf(&C::defaultValue), 13u);
    EXPECT_EQ(slotOf(&C::acceptSave), 14u);
    EXPECT_EQ(slotOf(&C::acceptOutput), 15u);
    EXPECT_EQ(slotOf(&C::reportError), 16u);
    EXPECT_EQ(slotOf(&C::reportWarning), 17u);
    EXPECT_EQ(slotOf(&C::reportInfo), 18u);
}

TEST(SlotOrder, NameInterface) {
    using N = ITaviNameInterface;
    EXPECT_EQ(slotOf(&N::GetTextureId), 0u);
    EXPECT_EQ(slotOf(&N::GetTextureName), 1u);
    EXPECT_EQ(slotOf(&N::GetTexMapId), 2u);
    EXPECT_EQ(slotOf(&N::GetTexMapName), 3u);
    EXPECT_EQ(slotOf(&N::GetMaterialId), 4u);
    EXPECT_EQ(slotOf(&N::GetMaterialName), 5u);
    EXPECT_EQ(slotOf(&N::GetModelId), 6u);
    EXPECT_EQ(slotOf(&N::GetModelName), 7u);
    EXPECT_EQ(slotOf(&N::destroy), 8u);
}

TEST(SlotOrder, BridgeObjects) {
    EXPECT_EQ(slotOf(&bridgeCamera::Release), 0u);
    EXPECT_EQ(slotOf(&bridgeCamera::destroy), 1u);
    EXPECT_EQ(slotOf(&bridgeLight::Release), 0u);
    EXPECT_EQ(slotOf(&bridgeLight::destroy), 1u);
    EXPECT_EQ(slotOf(&bridgeTriangleMesh::ClearKeys), 2u);
    EXPECT_EQ(slotOf(&bridgeFurMesh::ClearKeys), 2u);
    EXPECT_EQ(slotOf(&bridgeSprMesh::destroy), 1u);
    EXPECT_EQ(slotOf(&bridgeSprMesh::ClearKeys), 2u);
    EXPECT_EQ(slotOf(&bridgeStaticSlice::Allocate), 0u);
    EXPECT_EQ(slotOf(&bridgeStaticSlice::Free), 1u);
    EXPECT_EQ(slotOf(&bridgeStaticSlice::Release), 2u);
    EXPECT_EQ(slotOf(&bridgeStaticSlice::Clear), 3u);
    EXPECT_EQ(slotOf(&bridgeStaticSlice::destroy), 4u);
    EXPECT_EQ(slotOf(&bridgeTimeSlice::destroy), 4u);
    EXPECT_EQ(slotOf(&bridgeFurTimeSlice::Clear), 3u);
    EXPECT_EQ(slotOf(&bridgeSprTimeSlice::Allocate), 0u);
    EXPECT_EQ(slotOf(&bridgeSprTimeSlice::Free), 1u);
    EXPECT_EQ(slotOf(&bridgeSprTimeSlice::destroy), 4u);
    EXPECT_EQ(slotOf(&IPhxCache::destroy), 0u);
    EXPECT_EQ(slotOf(&IPhxCache::GetChannel), 1u);
    EXPECT_EQ(slotOf(&IPhxCache::HasChannel), 2u);
    EXPECT_EQ(slotOf(&IPhxCache::GetGridSize), 3u);
    EXPECT_EQ(slotOf(&IPhxCache::GetTransform), 4u);
    EXPECT_EQ(slotOf(&IPhxCache::reserved7), 7u);
    EXPECT_EQ(slotOf(&IPhxCache::Release), 8u);
}

} // namespace

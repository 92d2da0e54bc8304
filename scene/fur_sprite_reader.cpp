// ChunkFur and ChunkSprites: parts of models whose time slices each hold one array of fixed
// records. Both bodies begin with the same header.
#include "scene/geometry_parts.h"
#include "scene/geometry_readers.h"
#include "scene/scene_text.h"
#include "scene/track_keys.h"

#include <cstring>

using namespace geometry_parts;
using TRDF_Load::FurElement;
using TRDF_Load::FurMesh;
using TRDF_Load::SpriteElement;
using TRDF_Load::SprMesh;
using TRDF_Load::TimeSliceF;
using TRDF_Load::TimeSliceS;

namespace {

// ---- Body layout -------------------------------------------------------------------------------

// The shared header; bytes 0 to 7 are reserved.
constexpr uint64_t kTimeSlicesOffset = 8, kKeysOffset = 16, kTimeSliceCount = 24, kElementCount = 28;
constexpr uint64_t kKeyCount = 32, kWord36 = 36, kMorePartsFollow = 40, kWord44 = 44, kWord48 = 48;
constexpr uint64_t kWord52 = 52, kWord56 = 56, kWord60 = 60, kFloats64 = 64;

// Fur continues.
constexpr uint64_t kFurBlock88 = 88, kFurWord136 = 136, kFurName = 140, kFurSecondName = 268;
constexpr uint64_t kFurHeaderBytes = kFurSecondName + kNameFieldBytes;

// Sprites continue.
constexpr uint64_t kSpriteName = 88, kSpriteSecondName = 216;
constexpr uint64_t kSpriteHeaderBytes = kSpriteSecondName + kNameFieldBytes;

// Time slice; its offsets count from its own start.
constexpr uint64_t kNextSliceDistance = 0, kSliceParamA = 8, kSliceParamB = 12, kElements = 16;
constexpr uint64_t kTimeSliceBytes = 24;

constexpr uint64_t kSpriteElementBytes = sizeof(SpriteElement);

// ---- Element arrays ----------------------------------------------------------------------------

// The 100 file bytes of each element land at the start of a 112-byte element, so that every
// element sits on a 16-byte boundary; the material word is among them, flag byte and all.
bool fillFurElements(TimeSliceF& slice, const uint8_t* source, uint64_t count, uint64_t bytes) {
    auto* elements = static_cast<FurElement*>(slice.Allocate(bytes));
    if (!elements) return false;
    for (uint64_t i = 0; i < count; ++i)
        std::memcpy(&elements[i], source + i * TRDF_Load::kFurElementFileBytes, TRDF_Load::kFurElementFileBytes);
    slice.elements = elements;
    return true;
}

bool fillSpriteElements(TimeSliceS& slice, const uint8_t* source, uint64_t, uint64_t bytes) {
    void* elements = slice.Allocate(bytes, &slice.elementsBytes);
    if (!elements) return false;
    std::memcpy(elements, source, bytes);
    slice.elements = static_cast<SpriteElement*>(elements);
    return true;
}

// ---- Time slices -------------------------------------------------------------------------------

// Walks `count` slices from `at`. A slice whose array cannot be allocated is still linked
// and the walk moves on; the status ends it at the next turn.
template <class Slice, class Fill>
void buildTimeSlices(SceneStatus& status, Slice*& first, ByteSpan body, uint64_t at, int32_t count,
                     uint64_t elementCount, uint64_t fileElementBytes, uint64_t memoryElementBytes,
                     ArrayBudget& budget, Fill fill) {
    Slice** link = &first;
    for (int32_t turn = 0; turn < count && status == SceneOk; ++turn) {
        if (!spans(body, at, 0, kTimeSliceBytes)) return fail(status, SceneInvalid);
        Slice* slice = Slice::create();
        if (!slice) return fail(status, SceneOutOfMemory);
        *link = slice;
        link = &slice->next;
        slice->sliceParamA = body.i32(at + kSliceParamA);
        slice->sliceParamB = body.i32(at + kSliceParamB);
        uint64_t elements = body.u64(at + kElements);
        if (elementCount != 0 && elements != 0) {
            uint64_t bytes = elementCount * memoryElementBytes;
            if (!spans(body, at, elements, elementCount * fileElementBytes) || !budget.takeBacked(bytes)) {
                return fail(status, SceneInvalid);
            }
            if (budget.copies() && !fill(*slice, body.data + at + elements, elementCount, bytes)) {
                fail(status, SceneOutOfMemory);
            }
        }
        if (turn + 1 == count) break;
        // Slices stand one behind the other: each next one starts past this one's header.
        uint64_t distance = body.u64(at + kNextSliceDistance);
        if (distance < kTimeSliceBytes || !spans(body, at, distance, 0)) return fail(status, SceneInvalid);
        at += distance;
    }
}

// ---- One part ----------------------------------------------------------------------------------

// Names, hashes and keys, the same for both kinds. Both names are converted even when the
// first fails; the part stays in the chain for the caller to release.
template <class Part>
void fillNamesAndKeys(SceneStatus& status, Part& part, ByteSpan body, uint64_t name, uint64_t secondName) {
    bool converted = convertNameField(part.name, body, name);
    if (!convertNameField(part.secondName, body, secondName)) converted = false;
    if (!converted) fail(status, SceneInvalid);
    part.secondNameHash = hashName(body, secondName);
    part.nameHash = hashName(body, name);
    if (status == SceneOk) {
        status = buildTrack(part.keys, part.keyCount, body, body.u64(kKeysOffset), body.u32(kKeyCount));
    }
}

template <class Part> Part* createPart(SceneStatus& status, ByteSpan body, uint64_t headerBytes) {
    if (body.size < headerBytes || body.i32(kElementCount) < 0) {
        fail(status, SceneInvalid);
        return nullptr;
    }
    Part* part = Part::create();
    if (!part) fail(status, SceneOutOfMemory);
    return part;
}

bool wantsTimeSlices(SceneStatus status, ByteSpan body) {
    return status == SceneOk && body.u64(kTimeSlicesOffset) != 0 && body.i32(kTimeSliceCount) != 0;
}

FurMesh* buildFur(ByteSpan body, ArrayBudget& budget, SceneStatus& status) {
    FurMesh* fur = createPart<FurMesh>(status, body, kFurHeaderBytes);
    if (!fur) return nullptr;
    fur->elementCount = body.i32(kElementCount);
    fur->value60 = body.u32(kWord36);
    fur->value88 = body.i32(kWord44);
    fur->value8C = body.i32(kWord48);
    fur->value94 = body.i32(kWord52);
    fur->value64 = body.u32(kWord56);
    fur->value90 = body.u32(kWord60);
    body.copy(fur->floats70, kFloats64, sizeof fur->floats70);
    body.copy(fur->block28, kFurBlock88, sizeof fur->block28);
    fur->value58 = body.u32(kFurWord136);
    fillNamesAndKeys(status, *fur, body, kFurName, kFurSecondName);
    if (wantsTimeSlices(status, body)) {
        buildTimeSlices(status, fur->timeSlices, body, body.u64(kTimeSlicesOffset), body.i32(kTimeSliceCount),
                        uint64_t(fur->elementCount), TRDF_Load::kFurElementFileBytes, sizeof(FurElement),
                        budget, fillFurElements);
    }
    return fur;
}

SprMesh* buildSprites(ByteSpan body, ArrayBudget& budget, SceneStatus& status) {
    SprMesh* sprites = createPart<SprMesh>(status, body, kSpriteHeaderBytes);
    if (!sprites) return nullptr;
    sprites->elementCount = body.i32(kElementCount);
    sprites->value30 = body.u32(kWord36);
    sprites->value58 = body.i32(kWord44);
    sprites->value5C = body.i32(kWord48);
    sprites->value64 = body.i32(kWord52);
    sprites->value34 = body.u32(kWord56);
    sprites->value60 = body.u32(kWord60);
    body.copy(sprites->floats40, kFloats64, sizeof sprites->floats40);
    fillNamesAndKeys(status, *sprites, body, kSpriteName, kSpriteSecondName);
    if (wantsTimeSlices(status, body)) {
        buildTimeSlices(status, sprites->timeSlices, body, body.u64(kTimeSlicesOffset),
                        body.i32(kTimeSliceCount), uint64_t(sprites->elementCount), kSpriteElementBytes,
                        kSpriteElementBytes, budget, fillSpriteElements);
    }
    return sprites;
}

} // namespace

SceneStatus readFur(SceneFileReader& reader, FurMesh*& head, uint64_t& offset, ModelArrays arrays) {
    return readModelRun(reader, ChunkFur, kMorePartsFollow, head, offset, arrays == ModelArrays::Copied,
                        buildFur);
}

SceneStatus readSprites(SceneFileReader& reader, SprMesh*& head, uint64_t& offset, ModelArrays arrays) {
    return readModelRun(reader, ChunkSprites, kMorePartsFollow, head, offset, arrays == ModelArrays::Copied,
                        buildSprites);
}

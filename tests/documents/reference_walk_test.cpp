// The reference walk over every material and texmap type: the names it asks for, in order.
#include "documents/field_table.h"
#include "documents/material_document.h"
#include "documents/materials/material_types.h"
#include "documents/texmap_document.h"
#include "documents/texmaps/texmap_types.h"
#include "tests/documents/document_test_support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace documents_test {
namespace {

template <class T> void put(uint8_t* record, size_t offset, T value) {
    std::memcpy(record + offset, &value, sizeof value);
}

// Every word of the body holds its own offset, so that a reference names the place it was read
// from. The lists keep two entries each, placed apart so that skipped entries show.
void fillByOffset(uint8_t* record, size_t size, size_t bodyOffset) {
    for (size_t offset = bodyOffset; offset + 4 <= size; offset += 4)
        put<int32_t>(record, offset, static_cast<int32_t>(offset));
}

void shortenMaterialLists(int32_t type, uint8_t* record) {
    if (type == 11) put<int32_t>(record, 268, 2); // MIX: NumChildren
}

void shortenTexMapLists(int32_t type, uint8_t* record) {
    if (type == 7) put<int32_t>(record, 0x108, 2); // COMPOSITE: NumLayers
    if (type == 17) {                             // SELECTMAP: the ids of the eight maps
        for (uint32_t entry = 0; entry < 8; ++entry)
            put<int32_t>(record, 0x5B8 + 4 * entry, entry == 2 || entry == 5 ? int32_t(0x700 + entry) : -1);
    }
    if (type == 22) { // AO: two model lists of 64 handles
        std::memset(record + 0x168, 0, 2 * 64 * 8);
        put<uint64_t>(record, 0x168 + 3 * 8, 33);
        put<uint64_t>(record, 0x168 + 9 * 8, 99);
        put<uint64_t>(record, 0x368, 1);
    }
}

std::vector<std::string> visitedCalls(const TypeDescriptor& table, const uint8_t* record, size_t size) {
    std::vector<std::string> calls;
    forEachReference(table, record, size, [&](ReferenceKind kind, int32_t id) {
        switch (kind) {
        case ReferenceKind::Texture: calls.push_back("TextureName " + std::to_string(id)); break;
        case ReferenceKind::TexMap: calls.push_back("TexMapName " + std::to_string(id)); break;
        case ReferenceKind::Material: calls.push_back("MaterialName " + std::to_string(id)); break;
        case ReferenceKind::Model: calls.push_back("ModelName"); break;
        }
    });
    return calls;
}

TEST(ReferenceWalk, VisitsWhatTheDocumentWalkAsksForInTheSameOrder) {
    for (const TypeDescriptor* const* table = allMaterialTypes(); *table; ++table) {
        SCOPED_TRACE("material type " + std::to_string((*table)->type));
        auto record = std::make_unique<MaterialRecord>();
        uint8_t* bytes = reinterpret_cast<uint8_t*>(record.get());
        fillByOffset(bytes, sizeof(MaterialRecord), 268);
        record->type = (*table)->type;
        shortenMaterialLists(record->type, bytes);
        RecordingNames names;
        WalkMaterialReferences(record.get(), &names);
        EXPECT_EQ(visitedCalls(**table, bytes, sizeof(MaterialRecord)), names.calls);
    }
    for (const TypeDescriptor* const* table = allTexMapTypes(); *table; ++table) {
        SCOPED_TRACE("texmap type " + std::to_string((*table)->type));
        auto record = std::make_unique<TexMapRecord>();
        uint8_t* bytes = reinterpret_cast<uint8_t*>(record.get());
        fillByOffset(bytes, sizeof(TexMapRecord), 0x108);
        record->type = (*table)->type;
        shortenTexMapLists(record->type, bytes);
        RecordingNames names;
        WalkTexMapReferences(record.get(), &names);
        EXPECT_EQ(visitedCalls(**table, bytes, sizeof(TexMapRecord)), names.calls);
    }
}

} // namespace
} // namespace documents_test

// The reference walk over every material and texmap type: the names it asks for, in order. The
// expectations were taken from the walk that built each record's whole document and dropped it,
// which the walk over the reference fields replaced; they hold the order that the engine sees
// dependent items arrive in.
#include "documents/material_document.h"
#include "documents/materials/material_types.h"
#include "documents/texmap_document.h"
#include "documents/texmaps/texmap_types.h"
#include "tests/documents/document_test_support.h"

#include <gtest/gtest.h>

#include <cstdio>
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
    if (type == 17) {                              // SELECTMAP: the ids of the eight maps
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

// The calls as "map 0x108" (GetTexMapName), "mtl 268" (GetMaterialName), "tex" (GetTextureName)
// and "model" (GetModelName), with ids in the base of the kind's tables.
std::string callsText(const std::vector<std::string>& calls, bool hex) {
    std::string text;
    for (const std::string& call : calls) {
        if (!text.empty()) text += ", ";
        if (call == "ModelName") {
            text += "model";
            continue;
        }
        const size_t space = call.find(' ');
        const std::string operation = call.substr(0, space);
        const long id = std::stol(call.substr(space + 1));
        char number[32];
        std::snprintf(number, sizeof number, hex ? "%#lx" : "%ld", id);
        text += (operation == "TexMapName"     ? "map "
                 : operation == "MaterialName" ? "mtl "
                                               : "tex ") +
                std::string(number);
    }
    return text;
}

struct Expected {
    int32_t type;
    const char* calls;
};

const Expected kMaterialWalks[] = {
    {1, "map 396, map 720, map 852, map 1368, map 1500, map 1824, map 1956, map 2088, map 2220, "
        "map 2224, map 2356, map 2680, map 2812, map 2944, map 3076, map 3208, map 3532, map 3664, "
        "map 3924, map 4248, map 4828, map 4960, map 5284, map 6056, map 6188"},
    {2, "mtl 268, mtl 272, map 404"},
    {3, "mtl 268, mtl 272"},
    {4, "map 272, map 284, map 292, map 300, map 308, map 352, map 356, map 360, map 1148, "
        "map 1420, map 1424, map 1708, map 1700, map 2828, map 2832, map 2836, map 3624, map 1988, "
        "map 2260, map 2268, map 2252, map 2552, map 320, map 3904, map 4692, map 4972, map 5252, "
        "map 5532, map 5536, map 5540, map 7700, map 7984, map 8252, map 8268, map 6340, map 6344, "
        "map 6348, map 7164, map 7168, map 8532, map 8548, map 8824, map 9092, map 9380, map 9676, "
        "map 328, map 9948, map 9972, map 9996, map 10016, map 10036, map 10044, map 11344, "
        "map 11356, map 11620, map 11648, map 11652, map 11952, map 11956, map 12232, map 12236, "
        "map 12516, map 12524, map 12800, map 12804, map 13080"},
    {5, "map 280, map 288, map 296"},
    {6, "map 292, map 296, map 312"},
    {7, "map 292, map 296, map 312, map 1092"},
    {8, "map 284, map 288"},
    {10, "map 268, map 272, mtl 280"},
    {11, "map 276, mtl 284, map 292, mtl 300, map 308"},
    {12, "map 280"},
    {13, "map 288, map 280, map 308, map 304, map 332, map 328, map 368, map 380, map 352, map 400"},
    {14, "map 268, mtl 272"},
    {15, "map 268, mtl 276"},
    {16, "mtl 268, mtl 272"},
    {17, "map 340, map 328, map 344, map 332, map 348, map 336, map 352, map 356"},
    {18, "map 280, map 304, map 300, map 328, map 324, map 348, map 368, map 380, map 388, map 396, "
         "map 404, map 408, mtl 400"},
    {19, "map 288, map 280, map 308, map 304, map 332, map 328, map 368, map 380, map 352, map 400, "
         "map 1960"},
    {20, "map 340, map 328, map 344, map 332, map 348, map 336, map 352, map 356, map 1672"},
    {21, "map 280, map 304, map 300, map 328, map 324, map 348, map 368, map 380, map 388, map 396, "
         "map 1968, map 404, map 408, mtl 400"},
    {22, "map 268, map 272, mtl 296"},
    {23, "map 280, map 300, map 320, map 340, map 360, map 368, mtl 376"},
    {24, "map 404, map 408, map 412, map 568, map 572, map 576, map 732, map 736, map 740, map 904, "
         "map 908, map 912, map 916, map 920, map 924, map 1092, map 1096, map 1100, map 1104, "
         "map 1108, map 1112, map 1256, map 1260, map 1264, map 1420, map 1424, map 1428, map 1584, "
         "map 1588, map 1592, map 1732, map 1736, map 1740, map 2392, map 2396, map 2400, map 3052, "
         "map 3056, map 3060, map 3200, map 3204, map 3208, map 3860, map 3864, map 3868, map 4024, "
         "map 4028, map 4032, map 4172, map 4176, map 4180, map 4320, map 4324, map 4328, mtl 4332"},
    {25, "map 280, map 300, map 436, map 324, map 356, map 360, map 364, map 400, map 408, map 428, "
         "mtl 448, mtl 2892"},
    {26, "map 268, mtl 288, mtl 292, mtl 296"},
    {28, "mtl 268"},
    {29, "mtl 268, mtl 276, mtl 284, mtl 292, mtl 300, mtl 308"},
    {30, "map 540, map 544, map 820, map 824, map 1104, map 1112, map 1388, map 1392, map 1668, "
         "map 5248, map 5512, map 5776, map 1952, map 1956, map 2232, map 2236, map 2512, map 2516, "
         "map 2536, map 2540, map 2544, map 3348, map 3352, map 1676, map 4144, map 4148, map 4424, "
         "map 4704, map 4980, map 5784"},
    {31, "map 296, map 300, map 292, map 852, map 1116, mtl 1120, map 1124"},
    {32, "mtl 272"},
};

const Expected kTexMapWalks[] = {
    {1, "tex 0x5b8"},
    {2, "tex 0x108"},
    {3, "map 0x108, map 0x10c, map 0x110"},
    {4, "map 0x108, map 0x10c"},
    {5, "map 0x114, map 0x11c, map 0xa0c, map 0xa14, map 0xb34, map 0xb2c, map 0xb3c, map 0xb44, "
        "map 0xb70, map 0xb74"},
    {6, "map 0x108, map 0x10c, map 0x110"},
    {7, "map 0x110, map 0x114, map 0x140, map 0x144"},
    {8, "map 0x5b8, map 0x5bc, map 0x5f0, map 0x5fc, map 0x600, map 0x610, map 0x618, map 0x620, "
        "map 0x628, map 0x630"},
    {9, "map 0x108"},
    {10, "map 0x108, map 0x10c"},
    {11, "map 0x108, map 0x10c, map 0x110, map 0x114"},
    {12, "map 0x114, map 0x128"},
    {13, "map 0x5dc, map 0x5e4, map 0x5e8"},
    {14, "map 0x5b8, map 0x5bc, map 0x5c0, map 0x5c4"},
    {15, "map 0x5b8, map 0x5bc, map 0x5c0, map 0x5c4"},
    {17, "map 0x658, map 0x702, map 0x705"},
    {18, ""},
    {19, "map 0x108"},
    {20, "map 0x108, map 0x10c, map 0x110, map 0x114, map 0x118, map 0x11c"},
    {21, "map 0x108"},
    {22, "map 0x108, map 0x10c, map 0x110, map 0x114, model, model, model"},
    {23, "map 0x108, map 0x110, map 0x10c, map 0x114"},
    {24, "map 0x108, map 0x10c, map 0x110"},
    {25, "map 0x108, map 0x10c"},
    {26, "map 0x108"},
    {27, "map 0x128, map 0x12c, map 0x14c"},
};

bool registered(const TypeDescriptor* const* tables, int32_t type) {
    for (; *tables; ++tables)
        if ((*tables)->type == type) return true;
    return false;
}

size_t count(const TypeDescriptor* const* tables) {
    size_t n = 0;
    while (tables[n])
        ++n;
    return n;
}

template <class Record, size_t N>
void expectWalks(const Expected (&walks)[N], const TypeDescriptor* const* tables, size_t bodyOffset,
                 void (*shortenLists)(int32_t, uint8_t*), void (*walk)(const Record*, ITaviNameInterface*),
                 bool hex) {
    ASSERT_EQ(N, count(tables)) << "every table has its expectation";
    for (const Expected& expected : walks) {
        SCOPED_TRACE("type " + std::to_string(expected.type));
        ASSERT_TRUE(registered(tables, expected.type));
        auto record = std::make_unique<Record>();
        uint8_t* bytes = reinterpret_cast<uint8_t*>(record.get());
        fillByOffset(bytes, sizeof(Record), bodyOffset);
        record->type = expected.type;
        shortenLists(expected.type, bytes);
        RecordingNames names;
        walk(record.get(), &names);
        EXPECT_EQ(callsText(names.calls, hex), expected.calls);
    }
}

TEST(ReferenceWalk, EveryMaterialTypeAsksInTableOrder) {
    expectWalks<MaterialRecord>(kMaterialWalks, allMaterialTypes(), kMaterialFieldsOffset,
                                shortenMaterialLists, WalkMaterialReferences, false);
}

TEST(ReferenceWalk, EveryTexMapTypeAsksInTableOrder) {
    expectWalks<TexMapRecord>(kTexMapWalks, allTexMapTypes(), kTexMapPlainFieldsOffset, shortenTexMapLists,
                              WalkTexMapReferences, true);
}

} // namespace
} // namespace documents_test

// The layouts of the selectors and wrappers, as their tables give them.
#include "tests/texmap_families/texmap_rows.h"

namespace texmap_test {

namespace {

// ---- SELECTMAP's list --------------------------------------------------------------------------

constexpr uint32_t kSelectIds = 0x5B8;
constexpr uint32_t kSelectColors = 0x5D8;
constexpr uint32_t kSelectProbabilities = 0x638;
constexpr uint32_t kUsedEntries[] = {0, 3, 7};

bool used(uint32_t entry) {
    for (uint32_t e : kUsedEntries) {
        if (e == entry) return true;
    }
    return false;
}

void fillSelect(uint8_t* record, RecordingNames* names) {
    for (uint32_t entry = 0; entry < 8; ++entry) {
        const uint32_t id = kSelectIds + 4 * entry;
        if (used(entry)) {
            fillValue(record + id, Kind::Map, id, 0, 0, names);
        } else {
            const int32_t none = -1;
            std::memcpy(record + id, &none, 4);
        }
        fillValue(record + kSelectColors + 12 * entry, Kind::Color, kSelectColors + 12 * entry, 0, 0, names);
        fillValue(record + kSelectProbabilities + 4 * entry, Kind::Float, kSelectProbabilities + 4 * entry, 0, 0,
                  names);
    }
}

// Entries without a map are not written, so their colours and probabilities don't come back.
void selectAfterRoundTrip(uint8_t* record) {
    for (uint32_t entry = 0; entry < 8; ++entry) {
        if (used(entry)) continue;
        std::memset(record + kSelectColors + 12 * entry, 0, 12);
        std::memset(record + kSelectProbabilities + 4 * entry, 0, 4);
    }
}

void missingSelect(uint8_t* record) {
    const int32_t none = -1;
    for (uint32_t entry = 0; entry < 8; ++entry)
        std::memcpy(record + kSelectIds + 4 * entry, &none, 4);
}

// Documents carry a Model element ahead of their Map entries, and only what stands behind it
// counts; the walk's own document has none.
void insertModel(pugi::xml_document& doc) {
    doc.child("TaviTexMap").child("SpecificParameters").child("Maps").prepend_child("Model");
}

Layout selectLayout() {
    Layout layout{17,
                  "SELECTMAP",
                  true,
                  0x661,
                  {rowMap("MaskMap", 0x658), rowInt("NumSamples", 0x65C), rowBool("SelectSingle", 0x660),
                   rowCustom("Maps", kSelectIds, 0xA0)},
                  {"MaskMap"}};
    for (uint32_t entry : kUsedEntries)
        layout.walk.push_back("TexMapName " + std::to_string(kSelectIds + 4 * entry));
    layout.fillCustom = fillSelect;
    layout.afterRoundTrip = selectAfterRoundTrip;
    layout.missingCustom = missingSelect;
    layout.prepareReadBack = insertModel;
    return layout;
}

// ---- NORMALMAP ---------------------------------------------------------------------------------

Layout normalMapLayout() {
    Layout layout{23, "NORMALMAP", false, 0x140, {}};
    struct Key {
        const char* name;
        Kind kind;
        uint32_t primary, secondary;
    };
    const Key keys[] = {
        {"Map", Kind::Map, 0x108, 0x10C},          {"MapHeight", Kind::Map, 0x110, 0x114},
        {"WeightHeight", Kind::Float, 0x118, 0x11C}, {"WeightMips", Kind::Float, 0x120, 0x124},
        {"WeightSpot", Kind::Float, 0x128, 0x12C},   {"Gamma", Kind::Float, 0x130, 0x134},
        {"NormalMap", Kind::Bool, 0x138, 0x139},     {"FlipX", Kind::Bool, 0x13A, 0x13D},
        {"FlipY", Kind::Bool, 0x13B, 0x13E},         {"SwapXY", Kind::Bool, 0x13C, 0x13F},
    };
    for (const char* section : {"Primary", "Secondary"}) {
        const bool primary = section[0] == 'P';
        for (const Key& key : keys) {
            layout.rows.push_back(
                {std::string(section) + "/" + key.name, key.kind, primary ? key.primary : key.secondary, 0, {}, true});
        }
    }
    layout.walk = {"Primary/Map", "Primary/MapHeight", "Secondary/Map", "Secondary/MapHeight"};
    layout.elements = {"Primary", "Secondary"};
    return layout;
}

} // namespace

std::vector<Layout> selectorLayouts() {
    std::vector<Layout> layouts;
    layouts.push_back({9, "OUTPUT", false, 0x52C, {rowMap("Map", 0x108), rowOutput("ColorOutput", 0x10C)}, {"Map"}});
    layouts.push_back({15,
                       "TRIPLANAR",
                       true,
                       0x622,
                       {rowMap("Map1", 0x5B8), rowColor("Color1", 0x5C8), rowMap("Map2", 0x5BC),
                        rowColor("Color2", 0x5D4), rowMap("Map3", 0x5C0), rowColor("Color3", 0x5E0),
                        rowMap("MapBlur", 0x5C4), rowFloat("Blur", 0x5EC), rowBool("UseReferenceMatrix", 0x620),
                        rowMatrix("ReferenceMatrix", 0x5F0), rowBool("RotateBasis", 0x621)},
                       {"Map1", "Map2", "Map3", "MapBlur"}});
    layouts.push_back(selectLayout());
    layouts.push_back({19, "CACHE", false, 0x10D, {rowMap("Map", 0x108), rowBool("UseCache", 0x10C)}, {"Map"}});
    layouts.push_back({20,
                       "RAYSWITCH",
                       false,
                       0x16C,
                       {rowMap("MapDiffuse", 0x108), rowMap("MapDirect", 0x10C), rowMap("MapGI", 0x110),
                        rowMap("MapReflection", 0x114), rowMap("MapTransmission", 0x118), rowMap("MapShadow", 0x11C),
                        rowColor("ColorDiffuse", 0x120), rowColor("ColorDirect", 0x12C), rowColor("ColorGI", 0x138),
                        rowColor("ColorReflection", 0x144), rowColor("ColorTransmission", 0x150),
                        rowColor("ColorShadow", 0x15C), rowEnum("Type", 0x168, {"FIRST", "LAST", "SINGLE"})},
                       {"MapDiffuse", "MapDirect", "MapGI", "MapReflection", "MapTransmission", "MapShadow"}});
    layouts.push_back(normalMapLayout());
    layouts.push_back({25,
                       "UVWSET",
                       false,
                       0x114,
                       {rowMap("MapA", 0x108), rowMap("MapB", 0x10C), rowInt("Channel", 0x110)},
                       {"MapA", "MapB"}});
    layouts.push_back({26,
                       "RETILE",
                       false,
                       0x125,
                       {rowMap("MapA", 0x108), rowBool("Enable", 0x124), rowFloat("Size", 0x10C),
                        rowFloat("Angle", 0x110), rowFloat("Pivot", 0x114), rowFloat("Contrast", 0x118),
                        rowInt("Seed", 0x11C), rowInt("Type", 0x120)},
                       {"MapA"}});
    return layouts;
}

} // namespace texmap_test

// Mixing and switching materials: the rows of their tables, and the two lists.
#include "tests/material_families/family_cases.h"

namespace families_test {
namespace {

const char* const kSpace[] = {"", "WORLD", "LOCAL", nullptr};
const char* const kNormalization[] = {"NONE", "NORMALIZE", "PROGRESSIVE", "BACKPROGRESSIVE", nullptr};
const char* const kDisplace[] = {"BASE", "MIX", "ADD", "NONE", nullptr};
const char* const kSelection[] = {"FIRST", "LAST", "SINGLE", nullptr};

// ---- MIX: 16 children of 16 bytes from byte 284, NumChildren at 268 ----------------------------

size_t mixInUse(const uint8_t* record) {
    const int32_t count = load<int32_t>(record, 268);
    return count < 0 ? 0 : count > 16 ? 16 : static_cast<size_t>(count);
}

void fillMix(uint8_t* record, int seed) {
    store<int32_t>(record, 268, seed == 0 ? 5 : 16);
    for (int32_t i = 0; i < 16; ++i) {
        const size_t at = 284 + 16 * static_cast<size_t>(i);
        store<int32_t>(record, at, 3500 + i + 20 * seed);
        store<float>(record, at + 4, 0.5f + static_cast<float>(i));
        store<int32_t>(record, at + 8, 2500 + i + 20 * seed);
        store<float>(record, at + 12, 10.25f + static_cast<float>(i) + static_cast<float>(seed));
    }
}

// The entries beyond NumChildren are not written, so a zeroed record keeps them zero.
void mixAfterRoundTrip(const uint8_t* original, uint8_t* expected) {
    for (size_t i = mixInUse(original); i < 16; ++i)
        std::memset(expected + 284 + 16 * i, 0, 16);
}

void mixAfterMissing(uint8_t*) {} // no Child element: every entry keeps what it held

void mixWalk(const uint8_t* record, std::vector<std::string>& calls) {
    for (size_t i = 0; i < mixInUse(record); ++i) {
        calls.push_back("MaterialName " + std::to_string(load<int32_t>(record, 284 + 16 * i)));
        calls.push_back("TexMapName " + std::to_string(load<int32_t>(record, 292 + 16 * i)));
    }
}

const ListHooks kMixHooks{fillMix, mixAfterRoundTrip, mixAfterMissing, mixWalk, mixInUse};

// ---- State switch: 4 patterns of 12 bytes from byte 280 ----------------------------------------

void fillPatterns(uint8_t* record, int seed) {
    for (int32_t i = 0; i < 4; ++i) {
        const size_t at = 280 + 12 * static_cast<size_t>(i);
        store<int32_t>(record, at, 40 + i + 10 * seed);
        store<int32_t>(record, at + 4, (i + seed) % 2);
        store<int32_t>(record, at + 8, 3900 + i);
    }
}

// A pattern's material is no key: the zeroed record keeps its zeros. The type has no word, so
// the written root's `type` is empty, and the empty word reads as number 0.
void patternsAfterRoundTrip(const uint8_t*, uint8_t* expected) {
    for (size_t i = 0; i < 4; ++i)
        store<int32_t>(expected, 280 + 12 * i + 8, 0);
    store<int32_t>(expected, 0, 0);
}

// Without Pattern elements every entry becomes no states, no flag, no material.
void patternsAfterMissing(uint8_t* expected) {
    for (size_t i = 0; i < 4; ++i) {
        store<int32_t>(expected, 280 + 12 * i, 0);
        store<int32_t>(expected, 280 + 12 * i + 4, 0);
        store<int32_t>(expected, 280 + 12 * i + 8, -1);
    }
}

void patternsWalk(const uint8_t*, std::vector<std::string>&) {}

size_t patternElements(const uint8_t*) {
    return 4;
}

const ListHooks kPatternHooks{fillPatterns, patternsAfterRoundTrip, patternsAfterMissing, patternsWalk,
                              patternElements};

} // namespace

std::vector<TypeCase> mixingCases() {
    return {
        {2,
         "BLEND_SIDED",
         408,
         {
             {"FrontMaterial", K::MaterialRef, 268},
             {"BackMaterial", K::MaterialRef, 272},
             {"TranslucencySpline", K::Spline, 276, 4},
             {"TranslucencyMap", K::TexMapRef, 404},
         }},
        {3,
         "TOP_BOTTOM",
         536,
         {
             {"TopMaterial", K::MaterialRef, 268},
             {"BottomMaterial", K::MaterialRef, 272},
             {"BlendSpline", K::Spline, 276, 4},
             {"PositionSpline", K::Spline, 404, 4},
             {"CoordType", K::Enum, 532, 0, kSpace},
         }},
        {16,
         "TWOSIDED",
         276,
         {
             {"FrontMaterial", K::MaterialRef, 268},
             {"BackMaterial", K::MaterialRef, 272},
         }},
        {11,
         "MIX",
         550,
         {
             {"NumChildren", K::Int, 268},
             {"NormalizationType", K::Enum, 272, 0, kNormalization},
             {"DisplaceType", K::Enum, 280, 0, kDisplace},
             {"GlobalMask", K::TexMapRef, 276},
             {"UseMaskAsChoice", K::Bool, 549},
             {"UseCurve", K::Bool, 548},
             {"Upper", K::Float, 540},
             {"Lower", K::Float, 544},
             {"Child", K::Custom, 284, 256},
         },
         &kMixHooks},
        {14,
         "CUTOUT",
         284,
         {
             {"MaskMap", K::TexMapRef, 268},
             {"MaskValue", K::Float, 276},
             {"FlyThroughValue", K::Float, 280},
             {"Material", K::MaterialRef, 272},
         }},
        {29,
         "RAYSWITCH",
         325,
         {
             {"MaterialDiffuse", K::MaterialRef, 268},
             {"WeightDiffuse", K::Float, 272},
             {"MaterialDirect", K::MaterialRef, 276},
             {"WeightDirect", K::Float, 280},
             {"MaterialGI", K::MaterialRef, 284},
             {"WeightGI", K::Float, 288},
             {"MaterialReflection", K::MaterialRef, 292},
             {"WeightReflection", K::Float, 296},
             {"MaterialTransmission", K::MaterialRef, 300},
             {"WeightTransmission", K::Float, 304},
             {"MaterialShadow", K::MaterialRef, 308},
             {"WeightShadow", K::Float, 312},
             {"NoShadow", K::Bool, 324},
             {"Type", K::Enum, 316, 0, kSelection},
             {"DisplaceSource", K::Int, 320},
         }},
        {28,
         "MTLPROXY",
         272,
         {
             {"Material", K::MaterialRef, 268},
         }},
        {32,
         nullptr,
         328,
         {
             {"States", K::Int, 268},
             {"NestedPriority", K::Int, 276},
             {"DefaultMaterial", K::MaterialRef, 272},
             {"Pattern", K::Custom, 280, 48},
         },
         &kPatternHooks},
    };
}

} // namespace families_test

#include "documents/texmaps/texmap_types.h"

#include "documents/texmaps/families.h"

namespace {

// One line per type table, added by the family files. The null entry ends the list.
const TypeDescriptor* const kTexMapTypes[] = {
    &kImageTexMap,
    &kSimpleImageTexMap,
    &kBlendTexMap,
    &kMathTexMap,
    &kColorCorrectionTexMap,
    &kMathBlendTexMap,
    &kCompositeTexMap,
    &kNoiseTexMap,
    &kOutputTexMap,
    &kRgbMultiplyTexMap,
    &kRgbTintTexMap,
    &kShuffleTexMap,
    &kColorTexMap,
    &kGradientTexMap,
    &kTriplanarTexMap,
    &kSelectMapTexMap,
    &kOceanSurfaceTexMap,
    &kCacheTexMap,
    &kRaySwitchTexMap,
    &kWireframeTexMap,
    &kAoTexMap,
    &kNormalMapTexMap,
    &kFalloffTexMap,
    &kUvwSetTexMap,
    &kRetileTexMap,
    &kSunTexMap,
    nullptr,
};

} // namespace

const TypeDescriptor* findTexMapType(int32_t type) {
    for (const TypeDescriptor* const* entry = kTexMapTypes; *entry; ++entry) {
        if ((*entry)->type == type) return *entry;
    }
    return nullptr;
}

const TypeDescriptor* const* allTexMapTypes() {
    return kTexMapTypes;
}

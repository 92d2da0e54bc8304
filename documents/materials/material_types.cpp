#include "documents/materials/material_types.h"

namespace {

// One line per type table, added by the family files. The null entry ends the list.
const TypeDescriptor* const kMaterialTypes[] = {
    nullptr,
};

} // namespace

const TypeDescriptor* findMaterialType(int32_t type) {
    for (const TypeDescriptor* const* entry = kMaterialTypes; *entry; ++entry) {
        if ((*entry)->type == type) return *entry;
    }
    return nullptr;
}

const TypeDescriptor* const* allMaterialTypes() {
    return kMaterialTypes;
}

#include "documents/texmaps/texmap_types.h"

namespace {

// One line per type table, added by the family files. The null entry ends the list.
const TypeDescriptor* const kTexMapTypes[] = {
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

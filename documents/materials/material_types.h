// The registry of material field tables: one place that knows every material type that has a
// table. Each family file defines its TypeDescriptors and adds them to the list in
// material_types.cpp; nothing else changes when a family arrives.
#pragma once
#include "documents/field_table.h"

#include <cstddef>
#include <cstdint>

// The table of a material type, or null when the number has none (yet).
const TypeDescriptor* findMaterialType(int32_t type);

// Every registered table, for checks that go over all of them. Ends with a null entry.
const TypeDescriptor* const* allMaterialTypes();

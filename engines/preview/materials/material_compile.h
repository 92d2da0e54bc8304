// Turns a material record into its compiled form, type by type, reading every value through the
// keys of the type's field table.
#pragma once
#include "engines/preview/materials/compiled_material.h"
#include "engines/preview/materials/material_set.h"
#include "scene/records.h"

namespace preview {

struct CompileResult {
    CompiledMaterial material;
    bool supported = true;   // false: the material stands in for a type the engine can't render
    bool nonFinite = false;  // a value was not finite and was replaced by its default
};

// `temperature` may be null: colour temperatures then leave colours as they are.
CompileResult compileMaterial(const MaterialRecord& record, TemperatureColor temperature);

} // namespace preview

// Turns a texmap record into a node by the keys of its type's field table.
#pragma once
#include "engines/preview/shading.h"
#include "engines/preview/texmaps/texmap_node.h"
#include "scene/records.h"

namespace preview {

// A type this engine does not evaluate gives a node without body, and a warning naming it.
TexMapNode compileTexMap(const TexMapRecord& record, const WarningSink& warn);

} // namespace preview

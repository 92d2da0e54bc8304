// TaviMaterial and TaviTexMap documents of every material and texmap of a build, written
// through the client's own field tables: <folder>/materials/<name>.xml and
// <folder>/texmaps/<name>.xml, the names the client looks for with -materials and -texmaps.
#pragma once
#include "tools/builder/imported_model.h"

#include <string>

namespace builder {

// False with `error` naming the file that could not be written.
bool writeDocuments(const ImportedModel& model, const std::string& folder, std::string& error);

} // namespace builder

// References between records: read by the field tables, named through the registries.
#include "common/unicode.h"
#include "tools/inspector/survey.h"

namespace inspector {

namespace {

// Models are named by the documents, not referred to by id; the survey has no ids of theirs.
const char* referenceKind(ReferenceKind kind) {
    switch (kind) {
    case ReferenceKind::TexMap: return "texmap";
    case ReferenceKind::Material: return "material";
    case ReferenceKind::Texture: return "texture";
    case ReferenceKind::Model: return nullptr;
    }
    return nullptr;
}

void resolve(Reference& reference, const Survey& survey) {
    if (reference.kind == "texture") reference.name = survey.textures.nameOf(reference.id);
    if (reference.kind == "texmap") reference.name = survey.texMaps.nameOf(reference.id);
    if (reference.kind == "material") reference.name = survey.materials.nameOf(reference.id);
}

void resolveAll(std::vector<Reference>& references, const Survey& survey) {
    for (Reference& reference : references)
        resolve(reference, survey);
}

} // namespace

Reference unresolved(const char* key, const char* kind, int32_t id) {
    Reference reference;
    reference.key = key;
    reference.kind = kind;
    reference.id = id;
    return reference;
}

std::vector<Reference> tableReferences(const TypeDescriptor* type, const uint8_t* record, size_t recordBytes) {
    std::vector<Reference> found;
    if (!type) return found;
    // Row by row, so that each reference keeps the key it stands under.
    for (size_t i = 0; i < type->fieldCount; ++i) {
        const FieldDescriptor& row = type->fields[i];
        forEachReference(&row, 1, record, recordBytes, [&](ReferenceKind kind, int32_t id) {
            const char* name = referenceKind(kind);
            if (name && id != -1) found.push_back(unresolved(row.key, name, id));
        });
    }
    return found;
}

void resolveReferences(Inventory& inventory, const Survey& survey) {
    for (RecordInfo& record : inventory.texMaps)
        resolveAll(record.references, survey);
    for (RecordInfo& record : inventory.materials)
        resolveAll(record.references, survey);
    for (CameraInfo& camera : inventory.cameras)
        resolveAll(camera.references, survey);
    for (LightInfo& light : inventory.lights)
        resolveAll(light.references, survey);
    for (ModelInfo& model : inventory.models)
        resolveAll(model.materials, survey);
    if (inventory.settings && inventory.settings->startingMedium) resolve(*inventory.settings->startingMedium, survey);
}

// ---- Registries --------------------------------------------------------------------------------

NameRegistry::Outcome NameRegistry::add(const std::u16string& name, int32_t id) {
    // An empty name is never found, so each record without one is a record of its own.
    if (!name.empty()) {
        auto known = idsByName_.find(name);
        if (known != idsByName_.end()) return known->second == id ? Outcome::Known : Outcome::Clash;
        idsByName_.emplace(name, id);
    }
    namesById_.emplace(id, name);
    return Outcome::Added;
}

std::optional<std::string> NameRegistry::nameOf(int32_t id) const {
    auto found = namesById_.find(id);
    if (found == namesById_.end()) return std::nullopt;
    return utf16ToUtf8(found->second);
}

std::u16string wideTextOf(const char16_t* field, size_t capacity) {
    size_t length = 0;
    while (length < capacity && field[length])
        ++length;
    return std::u16string(field, length);
}

std::string textOf(const char16_t* field, size_t capacity) { return utf16ToUtf8(wideTextOf(field, capacity)); }

} // namespace inspector

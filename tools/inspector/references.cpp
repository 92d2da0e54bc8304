// References between records: read by the field tables, named through the registries.
#include "bridge/name_interface.h"
#include "common/unicode.h"
#include "scene/byte_span.h"
#include "tools/inspector/survey.h"

namespace inspector {

namespace {

// Repeated elements (a mix's children, a list of layers) keep their references in code of their
// own. The table's writer asks the name interface for each of them, so a writer without a
// document, handed this recorder, tells which ids the element refers to.
class ReferenceRecorder final : public ITaviNameInterface {
  public:
    ReferenceRecorder(const char* key, std::vector<Reference>& found) : key_(key), found_(found) {}

    int32_t* GetTextureId(int32_t* result, const char16_t*) override { return none(result); }
    const char16_t* GetTextureName(int32_t id) override { return note("texture", id); }
    int32_t* GetTexMapId(int32_t* result, const char16_t*) override { return none(result); }
    const char16_t* GetTexMapName(int32_t id) override { return note("texmap", id); }
    int32_t* GetMaterialId(int32_t* result, const char16_t*) override { return none(result); }
    const char16_t* GetMaterialName(int32_t id) override { return note("material", id); }
    uint64_t GetModelId(const char16_t*) override { return 0; }
    const char16_t* GetModelName() override { return u""; }
    void* destroy(uint32_t) override { return nullptr; }

  private:
    static int32_t* none(int32_t* result) {
        *result = -1;
        return result;
    }
    const char16_t* note(const char* kind, int32_t id) {
        if (id != -1) found_.push_back(unresolved(key_, kind, id));
        return u"";
    }

    const char* key_;
    std::vector<Reference>& found_;
};

const char* referenceKind(FieldKind kind) {
    switch (kind) {
    case FieldKind::TexMapRef: return "texmap";
    case FieldKind::MaterialRef: return "material";
    case FieldKind::TextureRef: return "texture";
    default: return nullptr;
    }
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
    const ByteSpan bytes{record, recordBytes};
    for (size_t i = 0; i < type->fieldCount; ++i) {
        const FieldDescriptor& row = type->fields[i];
        // The client's reference walk leaves these rows out as well.
        if (row.flags & kFieldReadOnly) continue;
        if (row.kind == FieldKind::Custom) {
            ReferenceRecorder recorder(row.key, found);
            writeField(row, pugi::xml_node(), record, recordBytes, &recorder);
            continue;
        }
        const char* kind = referenceKind(row.kind);
        if (!kind || !bytes.holds(row.offset, sizeof(int32_t))) continue;
        const int32_t id = bytes.i32(row.offset);
        if (id != -1) found.push_back(unresolved(row.key, kind, id));
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

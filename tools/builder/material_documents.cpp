#include "tools/builder/material_documents.h"

#include "bridge/name_interface.h"
#include "documents/material_document.h"
#include "documents/texmap_document.h"
#include "scene/scene_text.h"
#include "tools/builder/material_records.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <pugixml.hpp>

namespace builder {

namespace fs = std::filesystem;

namespace {

std::u16string wide(const std::string& ascii) {
    return std::u16string(ascii.begin(), ascii.end());
}

// Names by id, as the documents write references: texture i and texmap i share the name of
// the texture, material i is surface i.
class BuildNames final : public ITaviNameInterface {
  public:
    explicit BuildNames(const ImportedModel& model) {
        for (const TextureSource& texture : model.textures) textures_.push_back(wide(texture.name));
        for (const Surface& surface : model.surfaces) materials_.push_back(wide(surface.name));
    }
    int32_t* GetTextureId(int32_t* result, const char16_t*) override { return &(*result = -1); }
    const char16_t* GetTextureName(int32_t id) override { return nameOf(textures_, id); }
    int32_t* GetTexMapId(int32_t* result, const char16_t*) override { return &(*result = -1); }
    const char16_t* GetTexMapName(int32_t id) override { return nameOf(textures_, id); }
    int32_t* GetMaterialId(int32_t* result, const char16_t*) override { return &(*result = -1); }
    const char16_t* GetMaterialName(int32_t id) override { return nameOf(materials_, id); }
    uint64_t GetModelId(const char16_t*) override { return 0; }
    const char16_t* GetModelName() override { return u""; }
    void* destroy(uint32_t) override { return nullptr; }

  private:
    static const char16_t* nameOf(const std::vector<std::u16string>& names, int32_t id) {
        return id >= 0 && static_cast<size_t>(id) < names.size() ? names[static_cast<size_t>(id)].c_str() : u"";
    }
    std::vector<std::u16string> textures_, materials_;
};

// The record as the client holds it after reading the chunk: the name, narrow in the chunk,
// made wide in place.
template <class Record> Record recordOf(const std::vector<uint8_t>& body) {
    Record record{};
    std::memcpy(&record, body.data(), std::min(body.size(), sizeof record));
    fixRecordText(record.Name, sizeof record.Name);
    return record;
}

bool save(const pugi::xml_document& doc, const fs::path& path, std::string& error) {
    if (doc.save_file(path.c_str(), "  ", pugi::format_default, pugi::encoding_utf8)) return true;
    error = "cannot write " + path.string();
    return false;
}

} // namespace

bool writeDocuments(const ImportedModel& model, const std::string& folder, std::string& error) {
    const fs::path materials = fs::path(folder) / "materials", texmaps = fs::path(folder) / "texmaps";
    std::error_code made;
    fs::create_directories(materials, made);
    fs::create_directories(texmaps, made);
    BuildNames names(model);
    for (size_t t = 0; t < model.textures.size(); ++t) {
        const auto record = recordOf<TexMapRecord>(textureMapRecord(model.textures[t], static_cast<int32_t>(t)));
        pugi::xml_document doc;
        BuildTexMapDocument(&record, &names, &doc);
        if (!save(doc, texmaps / (model.textures[t].name + ".xml"), error)) return false;
    }
    for (size_t m = 0; m < model.surfaces.size(); ++m) {
        const auto record = recordOf<MaterialRecord>(materialRecord(model.surfaces[m], static_cast<int32_t>(m)));
        pugi::xml_document doc;
        BuildMaterialDocument(&record, &names, &doc);
        if (!save(doc, materials / (model.surfaces[m].name + ".xml"), error)) return false;
    }
    return true;
}

} // namespace builder

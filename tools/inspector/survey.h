// The sweeps of an inspection: each walks the chain with one of the client's typed readers, in
// the order of the client's load, and adds what it reads to the inventory.
#pragma once
#include "documents/field_table.h"
#include "scene/scene_file_reader.h"
#include "tools/inspector/inventory.h"

#include <cstddef>
#include <map>
#include <string>

namespace inspector {

// One kind's records by name and by id, registered as the client registers them.
class NameRegistry {
  public:
    enum class Outcome { Added, Known, Clash };
    // Known: the name is there under the same id, and the record adds nothing. Clash: the
    // name is there under another id, which breaks the scene.
    Outcome add(const std::u16string& name, int32_t id);
    std::optional<std::string> nameOf(int32_t id) const;

  private:
    std::map<std::u16string, int32_t> idsByName_;
    std::map<int32_t, std::u16string> namesById_;
};

struct Survey {
    explicit Survey(Inventory& found) : inventory(found) {}

    SceneFileReader reader;
    Inventory& inventory;
    NameRegistry textures, texMaps, materials;
    // The client's messages when a record stopped the load on its own account.
    std::vector<std::string> stopMessages;
};

// Text of a record's wide field of `capacity` characters, which need not be terminated.
std::u16string wideTextOf(const char16_t* field, size_t capacity);
std::string textOf(const char16_t* field, size_t capacity);

// A reference whose name is filled in once every registry is complete.
Reference unresolved(const char* key, const char* kind, int32_t id);
// Every reference a texmap or material record makes through its type's table, in table order;
// -1 means none and is left out.
std::vector<Reference> tableReferences(const TypeDescriptor* type, const uint8_t* record, size_t recordBytes);
// Gives every reference in the inventory the name of the record it names.
void resolveReferences(Inventory& inventory, const Survey& survey);

SceneStatus surveyTextures(Survey& survey);
SceneStatus surveyTexMaps(Survey& survey);
SceneStatus surveyMaterials(Survey& survey);
SceneStatus surveySettings(Survey& survey);
SceneStatus surveyCameras(Survey& survey);
SceneStatus surveyLights(Survey& survey);
// Names every model with its arrays checked but not built, as the client does before anything
// reaches the engine; then reads each model whole to count what it holds.
SceneStatus checkModels(Survey& survey);
SceneStatus surveyModels(Survey& survey);

// The chain from the first chunk, each body fetched to learn its decoded size. Stops at the
// first link or body that cannot be read.
void listChain(const std::u16string& path, Inventory& inventory);

} // namespace inspector

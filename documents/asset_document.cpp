#include "documents/asset_document.h"

#include "bridge/name_interface.h"
#include "documents/xml_value_codec.h"

#include <cstring>

namespace {

constexpr char kSpecificSection[] = "SpecificParameters";

int32_t typeOf(const uint8_t* record) {
    int32_t type;
    std::memcpy(&type, record, sizeof type);
    return type;
}

bool withoutFields(const AssetFrame& frame, int32_t type) {
    return frame.withoutFields && frame.withoutFields(type);
}

// A type's fields take the part of the record that its image covers.
size_t usableLength(const AssetFrame& frame, const TypeDescriptor& table) {
    return table.imageLength < frame.recordSize ? table.imageLength : frame.recordSize;
}

void askName(ITaviNameInterface& names, ReferenceKind kind, int32_t id) {
    switch (kind) {
    case ReferenceKind::Texture:
        names.GetTextureName(id);
        break;
    case ReferenceKind::TexMap:
        names.GetTexMapName(id);
        break;
    case ReferenceKind::Material:
        names.GetMaterialName(id);
        break;
    case ReferenceKind::Model:
        names.GetModelName();
        break;
    }
}

} // namespace

// ---- Reading -----------------------------------------------------------------------------------

AssetDocument::AssetDocument(const AssetFrame& frame, const char16_t* path) : frame_(frame) {
    loaded_ = XmlOpenDocument(doc_, path, frame.rootWord, &root_);
}

int32_t AssetDocument::type() const {
    int32_t type = 0;
    if (loaded_) XmlReadEnumAttribute(root_, "type", &type, frame_.typeWords);
    return type;
}

bool AssetDocument::read(uint8_t* record, ITaviNameInterface* names) const {
    const int32_t type = typeOf(record);
    if (withoutFields(frame_, type)) return true;
    const TypeDescriptor* table = frame_.tableOf(type);
    return table && readWithTable(*table, record, names);
}

bool AssetDocument::readWithTable(const TypeDescriptor& table, uint8_t* record,
                                  ITaviNameInterface* names) const {
    if (!loaded_) return false;
    const size_t length = usableLength(frame_, table);
    readAssetHead(frame_, root_, record);
    if (table.mapped) readFields(frame_.blocks, frame_.blockCount, root_, record, length, names);
    readFields(table.fields, table.fieldCount, root_.child(kSpecificSection), record, length, names);
    if (table.resultTextureOffset == 0) return true;
    if (table.resultTextureOffset + sizeof(int32_t) > length) return false;
    int32_t texture = -1;
    std::memcpy(&texture, record + table.resultTextureOffset, sizeof texture);
    return texture != -1;
}

void readAssetHead(const AssetFrame& frame, pugi::xml_node root, uint8_t* record) {
    int32_t type = typeOf(record);
    XmlReadEnumAttribute(root, "type", &type, frame.typeWords);
    std::memcpy(record, &type, sizeof type);
    readFields(frame.head, frame.headCount, root, record, frame.recordSize, nullptr);
}

// ---- Writing -----------------------------------------------------------------------------------

void writeAssetHead(const AssetFrame& frame, pugi::xml_node root, const uint8_t* record) {
    XmlWriteEnumAttribute(root, "type", typeOf(record), frame.typeWords);
    writeFields(frame.head, frame.headCount, root, record, frame.recordSize, nullptr);
}

void buildAssetDocument(const AssetFrame& frame, const TypeDescriptor& table, const uint8_t* record,
                        ITaviNameInterface* names, pugi::xml_document* doc) {
    doc->reset();
    const size_t length = usableLength(frame, table);
    pugi::xml_node root = doc->append_child(frame.rootWord);
    writeAssetHead(frame, root, record);
    if (table.mapped) writeFields(frame.blocks, frame.blockCount, root, record, length, names);
    writeFields(table.fields, table.fieldCount, root.append_child(kSpecificSection), record, length, names);
}

bool buildAssetDocument(const AssetFrame& frame, const uint8_t* record, ITaviNameInterface* names,
                        pugi::xml_document* doc) {
    doc->reset();
    const TypeDescriptor* table = frame.tableOf(typeOf(record));
    if (!table) return false;
    buildAssetDocument(frame, *table, record, names, doc);
    return true;
}

// ---- Walking -----------------------------------------------------------------------------------

void walkAssetReferences(const AssetFrame& frame, const uint8_t* record, ITaviNameInterface* names) {
    const int32_t type = typeOf(record);
    if (!names || withoutFields(frame, type)) return;
    const TypeDescriptor* table = frame.tableOf(type);
    if (!table) return;
    const auto ask = [names](ReferenceKind kind, int32_t id) { askName(*names, kind, id); };
    // In the order of the built document: the head, the shared blocks, the type's keys.
    forEachReference(frame.head, frame.headCount, record, frame.recordSize, ask);
    const size_t length = usableLength(frame, *table);
    if (table->mapped) forEachReference(frame.blocks, frame.blockCount, record, length, ask);
    forEachReference(table->fields, table->fieldCount, record, length, ask);
}

// The inspection as one JSON object, for scripts: the text report's content, every chunk
// included.
#include "tools/inspector/inventory.h"
#include "tools/inspector/json_writer.h"

namespace inspector {

namespace {

void writeVec3(JsonWriter& json, const Vec3& v) {
    json.beginArray().value(v[0]).value(v[1]).value(v[2]).endArray();
}

void writeReferences(JsonWriter& json, const char* key, const std::vector<Reference>& references) {
    json.key(key).beginArray();
    for (const Reference& reference : references) {
        json.beginObject().key("key").value(reference.key).key("kind").value(reference.kind);
        json.key("id").value(reference.id).key("name");
        reference.name ? json.value(*reference.name) : json.null();
        json.key("missing").value(!reference.name).endObject();
    }
    json.endArray();
}

void writeCounts(JsonWriter& json, const Inventory& inventory) {
    json.key("counts").beginObject();
    json.key("chunks").value(uint64_t(inventory.chunks.size()));
    json.key("textures").value(uint64_t(inventory.textures.size()));
    json.key("texmaps").value(uint64_t(inventory.texMaps.size()));
    json.key("materials").value(uint64_t(inventory.materials.size()));
    json.key("cameras").value(uint64_t(inventory.cameras.size()));
    json.key("lights").value(uint64_t(inventory.lights.size()));
    json.key("models").value(uint64_t(inventory.models.size()));
    json.key("triangles").value(elementCount(inventory, ModelKind::Mesh));
    json.key("curves").value(elementCount(inventory, ModelKind::Fur));
    json.key("discs").value(elementCount(inventory, ModelKind::Sprites));
    json.key("chunksByType").beginObject();
    for (const KindCount& count : chunkCounts(inventory))
        json.key(count.kind).value(uint64_t(count.count));
    json.endObject().endObject();
}

void writeChunks(JsonWriter& json, const Inventory& inventory) {
    json.key("chunks").beginArray();
    for (const ChunkEntry& chunk : inventory.chunks) {
        json.beginObject().key("offset").value(chunk.offset);
        json.key("type").value(chunkTypeName(chunk.type)).key("typeNumber").value(chunk.type);
        json.key("version").value(chunk.version).key("compression").value(compressionName(chunk.compression));
        json.key("storedSize").value(chunk.storedSize).key("decodedSize");
        chunk.decodedSize ? json.value(*chunk.decodedSize) : json.null();
        json.key("next").value(chunk.next).endObject();
    }
    json.endArray();
}

void writeSettings(JsonWriter& json, const std::optional<SettingsInfo>& settings) {
    json.key("settings");
    if (!settings) {
        json.null();
        return;
    }
    const SettingsInfo& s = *settings;
    json.beginObject();
    json.key("imageSize").beginArray().value(s.imageWidth).value(s.imageHeight).endArray();
    json.key("region").beginArray().value(s.regionX).value(s.regionY).value(s.regionWidth).value(s.regionHeight);
    json.endArray().key("passes").value(s.passes).key("threads").value(s.threads);
    json.key("outputPath").value(s.outputPath).key("outputName").value(s.outputName);
    json.key("jpeg").value(s.jpeg).key("tiff").value(s.tiff).key("exr").value(s.exr);
    json.key("toneOperator").value(s.toneOperatorWord).key("toneOperatorNumber").value(s.toneOperator);
    json.key("aovChannels").value(s.aovChannels);
    writeReferences(json, "references", s.startingMedium ? std::vector<Reference>{*s.startingMedium}
                                                         : std::vector<Reference>{});
    json.endObject();
}

void writeTextures(JsonWriter& json, const std::vector<TextureInfo>& textures) {
    json.key("textures").beginArray();
    for (const TextureInfo& t : textures) {
        json.beginObject().key("id").value(t.id).key("name").value(t.name);
        json.key("embedded").value(t.embedded);
        if (t.embedded) {
            json.key("width").value(t.width).key("height").value(t.height).key("pixelType").value(t.pixelType);
        } else {
            json.key("path").value(t.path);
        }
        json.endObject();
    }
    json.endArray();
}

void writeRecords(JsonWriter& json, const char* key, const std::vector<RecordInfo>& records) {
    json.key(key).beginArray();
    for (const RecordInfo& r : records) {
        json.beginObject().key("id").value(r.id).key("name").value(r.name);
        json.key("type").value(r.typeWord).key("typeNumber").value(r.type);
        writeReferences(json, "references", r.references);
        if (r.volumeGrid) {
            json.key("volumeGrid").beginArray();
            for (uint32_t size : *r.volumeGrid)
                json.value(size);
            json.endArray();
        }
        json.endObject();
    }
    json.endArray();
}

void writeCameras(JsonWriter& json, const std::vector<CameraInfo>& cameras) {
    json.key("cameras").beginArray();
    for (const CameraInfo& c : cameras) {
        json.beginObject().key("role").value(c.role).key("type").value(c.typeWord).key("typeNumber").value(c.type);
        json.key("position");
        writeVec3(json, c.position);
        json.key("target");
        writeVec3(json, c.target);
        json.key("positionKeys").value(c.positionKeys).key("targetKeys").value(c.targetKeys);
        writeReferences(json, "references", c.references);
        json.endObject();
    }
    json.endArray();
}

void writeLights(JsonWriter& json, const std::vector<LightInfo>& lights) {
    json.key("lights").beginArray();
    for (const LightInfo& l : lights) {
        json.beginObject().key("name").value(l.name).key("type").value(l.type).key("kind").value(l.kind);
        json.key("enabled").value(l.enabled).key("position");
        writeVec3(json, l.position);
        json.key("positionKeys").value(l.positionKeys);
        json.key("intensity").value(l.intensity).key("multiplier").value(l.multiplier);
        writeReferences(json, "references", l.references);
        json.endObject();
    }
    json.endArray();
}

void writeModels(JsonWriter& json, const std::vector<ModelInfo>& models) {
    json.key("models").beginArray();
    for (const ModelInfo& m : models) {
        json.beginObject().key("name").value(m.name).key("kind").value(modelKindName(m.kind));
        json.key("parts").value(m.parts).key("timeSlices").value(m.timeSlices);
        json.key("elements").value(m.elements);
        writeReferences(json, "materials", m.materials);
        json.endObject();
    }
    json.endArray();
}

} // namespace

std::string jsonReport(const Inspection& inspection) {
    const Verdict& verdict = inspection.verdict;
    JsonWriter json;
    json.beginObject().key("valid").value(verdict.accepted()).key("status").value(statusName(verdict.status));
    json.key("messages").beginArray();
    for (const std::string& message : verdict.messages)
        json.value(message);
    json.endArray();
    if (verdict.accepted()) {
        const Inventory& inventory = inspection.inventory;
        json.key("fileSize").value(inventory.fileSize).key("formatVersion").value(inventory.formatVersion);
        writeCounts(json, inventory);
        writeSettings(json, inventory.settings);
        writeTextures(json, inventory.textures);
        writeRecords(json, "texmaps", inventory.texMaps);
        writeRecords(json, "materials", inventory.materials);
        writeCameras(json, inventory.cameras);
        writeLights(json, inventory.lights);
        writeModels(json, inventory.models);
        writeChunks(json, inventory);
    }
    json.endObject();
    return json.text() + "\n";
}

} // namespace inspector

// The recording engine: answers every operation of the boundary, writes one line per call
// to recording.log beside the module, and acts as recording.script beside the module says.
#include "bridge/tracer.h"
#include "common/unicode.h"
#include "engines/recording/recording_script.h"
#include "scene/fur_sprite_objects.h"
#include "scene/geometry_objects.h"
#include "scene/records.h"
#include "scene/temp_objects.h"

#include <chrono>
#include <cstring>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

namespace {

template <class T>
T fieldAt(const void* record, size_t offset) {
    T value;
    std::memcpy(&value, static_cast<const char*>(record) + offset, sizeof value);
    return value;
}

// Wide text in a fixed field: stops at the terminator or at the end of the field.
std::string textAt(const void* record, size_t offset, size_t capacity) {
    std::u16string text;
    for (size_t i = 0; i < capacity; ++i) {
        char16_t c = fieldAt<char16_t>(record, offset + 2 * i);
        if (!c) break;
        text += c;
    }
    return "\"" + utf16ToUtf8(text) + "\"";
}

std::string wide(const char16_t* text) { return "\"" + (text ? utf16ToUtf8(text) : std::string()) + "\""; }

struct SettingsField {
    const char* name;
    size_t offset;
    size_t textCapacity; // 0 for a 32-bit integer
};

// The settings that the client itself decides on.
const SettingsField kSettingsFields[] = {
    {"MaxIterations", 0x8, 0},       {"frame", 0x296C, 0},           {"fps", 0x2970, 0},
    {"ToneOperator", 0x70D0, 0},     {"ImageSizeX", 0x84B0, 0},      {"ImageSizeY", 0x84B4, 0},
    {"RegionX", 0x84B8, 0},          {"RegionY", 0x84BC, 0},         {"RegionSizeX", 0x84C0, 0},
    {"RegionSizeY", 0x84C4, 0},      {"OutputPath", 0x84C8, 384},    {"OutputName", 0x87C8, 64},
    {"SaveJPEG", 0x8B48, 0},         {"SaveTIFF", 0x8B4C, 0},        {"SaveEXR", 0x8B50, 0},
    {"MaxThreads", 0x8B64, 0},       {"NotCheckMaxThreads", 0x8B6C, 0}, {"NoAffinityMask", 0x8B70, 0},
    {"AffinityShift", 0x8B74, 0},    {"flag8B88", 0x8B88, 0},        {"flag8B98", 0x8B98, 0},
    {"flag8BA0", 0x8BA0, 0},         {"CachePath", 0x9234, 384},     {"StartingVolumetricMaterial", 0x9844, 0},
};

std::string formatFloats(const float* values, int count) {
    std::ostringstream out;
    for (int i = 0; i < count; ++i) out << (i ? "," : "") << values[i];
    return out.str();
}

// One model as the engine received it: its parts, their sizes, and the distinct material words
// of its elements in the order they first appear.
struct ModelLine {
    std::vector<std::string> names;
    std::vector<std::string> counts;
    std::vector<uint32_t> materials;
    std::string firstPosition;

    void addPart(const char16_t* name, int32_t count) {
        names.push_back(textAt(name, 0, kNameChars));
        counts.push_back(std::to_string(count));
    }
    void addMaterial(uint32_t word) {
        for (uint32_t seen : materials)
            if (seen == word) return;
        materials.push_back(word);
    }
    std::string text(const char* countKey) const {
        std::ostringstream out;
        out << "parts=" << names.size() << " names=" << join(names) << ' ' << countKey << '=' << join(counts)
            << " materials=";
        for (size_t i = 0; i < materials.size(); ++i) out << (i ? "," : "") << materials[i];
        if (!firstPosition.empty()) out << " firstPosition=" << firstPosition;
        return out.str();
    }
    static std::string join(const std::vector<std::string>& parts) {
        std::string out;
        for (size_t i = 0; i < parts.size(); ++i) out += (i ? "," : "") + parts[i];
        return out;
    }
};

// The grid of a volumetric material's cache and which of its channels are present.
std::string volumeCache(const MaterialRecord& material) {
    if (material.type != kVolumeMaterialType) return "";
    IPhxCache* cache;
    std::memcpy(&cache, reinterpret_cast<const uint8_t*>(&material) + kVolumeCacheOffset, sizeof cache);
    if (!cache) return " cache=none";
    uint32_t grid[3];
    cache->GetGridSize(grid);
    std::ostringstream out;
    out << " cache=" << grid[0] << "x" << grid[1] << "x" << grid[2] << " channels=";
    bool first = true;
    for (int32_t channel = 0; channel < 26; ++channel)
        if (cache->HasChannel(channel)) {
            out << (first ? "" : ",") << channel;
            first = false;
        }
    return out.str();
}

// A fur or sprite model: every element of every time slice gives its material word.
template <class Part, class Word> std::string cloudLine(const Part* head, Word word) {
    ModelLine line;
    for (const Part* part = head; part; part = part->next) {
        line.addPart(part->name, part->elementCount);
        for (const auto* slice = part->timeSlices; slice; slice = slice->next)
            if (slice->elements)
                for (int32_t i = 0; i < part->elementCount; ++i) line.addMaterial(word(slice->elements[i]));
    }
    return line.text("elements");
}

class RecordingEngine final : public ITaviTracer {
  public:
    int32_t initialise(const char16_t* libraryPath) override {
        std::string path = libraryPath ? utf16ToUtf8(libraryPath) : std::string();
        // The client passes the path as its platform spells it: with backslashes on Windows.
        size_t slash = path.find_last_of("/\\");
        folder_ = slash == std::string::npos ? "." : path.substr(0, slash);
        script_ = readRecordingScript(folder_ + "/recording.script");
        // Binary, so that lines end in a line feed alone on every platform.
        log_.open(folder_ + "/recording.log", std::ios::app | std::ios::binary);
        return record("initialise", "module=" + wide(libraryPath));
    }
    int32_t reserved1() override { return record("reserved1", ""); }
    int32_t reserved2() override { return record("reserved2", ""); }
    int32_t reserved3() override { return record("reserved3", ""); }
    int32_t reserved4() override { return record("reserved4", ""); }
    int32_t shutdown(ITaviRenderCallback*) override { return record("shutdown", ""); }

    int32_t beginScene(SettingsRecord* settings, ITaviRenderCallback*, int32_t zero) override {
        std::ostringstream fields;
        for (const SettingsField& f : kSettingsFields) {
            fields << ' ' << f.name << '=';
            if (f.textCapacity) fields << textAt(settings, f.offset, f.textCapacity);
            else fields << fieldAt<int32_t>(settings, f.offset);
        }
        return record("beginScene", "zero=" + std::to_string(zero) + fields.str());
    }
    int32_t addTextureFolder(const char16_t* folder) override {
        return record("addTextureFolder", "path=" + wide(folder));
    }
    int32_t addMaterial(MaterialRecord* material) override {
        return record("addMaterial", header(material, 12) + volumeCache(*material));
    }
    int32_t addTexMap(TexMapRecord* texmap) override { return record("addTexMap", header(texmap, 8)); }
    int32_t addTextureData(TextureDataRecord* texture, ITaviRenderCallback*) override {
        return record("addTextureData", "id=" + std::to_string(texture->id) + " name=" +
                                            textAt(texture->name, 0, kNameChars) + " width=" +
                                            std::to_string(texture->width) + " height=" +
                                            std::to_string(texture->height) + " pixelType=" +
                                            std::to_string(texture->pixelType));
    }
    int32_t addTextureFile(TextureFileRecord* texture, ITaviRenderCallback*) override {
        return record("addTextureFile", "id=" + std::to_string(texture->id) + " name=" +
                                            textAt(texture->name, 0, kNameChars) + " path=" +
                                            textAt(texture->path, 0, kPathChars));
    }
    int32_t endLights() override { return record("endLights", ""); }
    int32_t addTriangleMeshes(bridgeTriangleMesh* head, ITaviRenderCallback*) override {
        ModelLine line;
        for (auto* part = static_cast<TRDF_Load::TriangleMesh*>(head); part; part = part->next) {
            const TRDF_Load::StaticSliceT* slice = part->staticSlice;
            line.addPart(part->name, slice ? slice->triangleCount : 0);
            if (slice && slice->triangleQuads)
                for (int32_t i = 0; i < slice->triangleCount; ++i) line.addMaterial(slice->triangleQuads[i].materialId);
            if (part->timeSlices && part->timeSlices->positions && line.firstPosition.empty()) {
                const float* p = part->timeSlices->positions;
                line.firstPosition = formatFloats(p, 4);
            }
        }
        return record("addTriangleMeshes", line.text("triangles"));
    }
    int32_t addFur(bridgeFurMesh* head, ITaviRenderCallback*) override {
        return record("addFur", cloudLine(static_cast<TRDF_Load::FurMesh*>(head),
                                          [](const auto& element) { return element.materialWord; }));
    }
    int32_t addSprites(bridgeSprMesh* head, ITaviRenderCallback*) override {
        return record("addSprites", cloudLine(static_cast<TRDF_Load::SprMesh*>(head),
                                              [](const auto& element) { return element.materialId; }));
    }
    int32_t endScene(ITaviRenderCallback*) override { return record("endScene", ""); }
    int32_t reserved17() override { return record("reserved17", ""); }
    int32_t reserved18() override { return record("reserved18", ""); }
    int32_t addLight(bridgeLight* object) override {
        const TempLight& light = *static_cast<TempLight*>(object);
        return record("addLight", "type=" + std::to_string(light.light.type) + " name=" +
                                      textAt(light.lightName, 0, kNameChars) +
                                      " texMap=" + std::to_string(light.light.texMap));
    }
    int32_t addCamera(bridgeCamera* object) override {
        const TempCamera& camera = *static_cast<TempCamera*>(object);
        std::ostringstream fields;
        fields << "role=" << camera.cameraRole << " type=" << camera.camera.type
               << " file=" << textAt(camera.cameraFile, 0, kNameChars) << " Aspect=" << camera.camera.Aspect
               << " DistortionMap=" << camera.camera.DistortionMap << " ApertureMap=" << camera.camera.ApertureMap
               << " tracks=" << camera.trackACount << "," << camera.trackBCount << "," << camera.trackCCount;
        return record("addCamera", fields.str());
    }
    int32_t endGeometry() override { return record("endGeometry", ""); }

    int32_t render(ITaviRenderCallback* callback) override {
        int32_t level = record("render", "");
        for (const RenderAction& action : script_.renderActions) perform(action, callback);
        return level;
    }

  private:
    static std::string header(const void* record, size_t nameOffset) {
        return "type=" + std::to_string(fieldAt<int32_t>(record, 0)) +
               " id=" + std::to_string(fieldAt<int32_t>(record, 4)) + " name=" + textAt(record, nameOffset, 64);
    }

    int32_t record(const std::string& operation, const std::string& details) {
        log_ << operation;
        if (!details.empty()) log_ << ' ' << details;
        log_ << '\n' << std::flush;
        return script_.resultOf(operation);
    }

    void perform(const RenderAction& action, ITaviRenderCallback* callback) {
        std::u16string text = utf8ToUtf16(action.text);
        switch (action.kind) {
        case RenderAction::Kind::Progress: {
            ProgressInfo info{action.fraction, action.stage, 0, action.passes};
            callback->onProgress(&info);
            break;
        }
        case RenderAction::Kind::Error: callback->reportError(text.c_str(), 0); break;
        case RenderAction::Kind::Warning: callback->reportWarning(text.c_str(), 0); break;
        case RenderAction::Kind::Info: callback->reportInfo(text.c_str()); break;
        case RenderAction::Kind::Sleep:
            std::this_thread::sleep_for(std::chrono::milliseconds(action.milliseconds));
            break;
        }
    }

    std::string folder_;
    std::ofstream log_;
    RecordingScript script_;
};

RecordingEngine gEngine;

} // namespace

extern "C" {
TAVI_ENGINE_EXPORT ITaviTracer* pTaviTracer = &gEngine;
}

// The inspection for a person at a terminal: a summary, then one line a record.
#include "tools/inspector/inventory.h"

#include <cstdarg>
#include <cstdio>

namespace inspector {

namespace {

class Lines {
  public:
    void add(const char* format, ...) __attribute__((format(printf, 2, 3))) {
        va_list args, again;
        va_start(args, format);
        va_copy(again, args);
        const int length = std::vsnprintf(nullptr, 0, format, args);
        va_end(args);
        if (length > 0) {
            std::string line(size_t(length) + 1, '\0');
            std::vsnprintf(line.data(), line.size(), format, again);
            line.pop_back();
            text_ += line;
        }
        va_end(again);
        text_ += '\n';
    }
    void heading(const char* title, size_t count) {
        if (count) add("\n%s", title);
    }
    const std::string& text() const { return text_; }

  private:
    std::string text_;
};

// "1 part", "2 parts".
std::string counted(uint64_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

std::string vec3(const Vec3& v) {
    char text[96];
    std::snprintf(text, sizeof text, "(%g, %g, %g)", v[0], v[1], v[2]);
    return text;
}

std::string referenceText(const Reference& reference) {
    std::string target = reference.name ? quoted(*reference.name) : "missing";
    return reference.key + " -> " + reference.kind + " #" + std::to_string(reference.id) + " " + target;
}

std::string referencesText(const std::vector<Reference>& references) {
    std::string text;
    for (const Reference& reference : references)
        text += (text.empty() ? "" : ", ") + referenceText(reference);
    return text;
}

// What the engine reads in each pixel type of an embedded texture.
const char* pixelTypeText(int32_t type) {
    static const char* const kTexts[] = {"RGBA 8-bit", "RGBA 16-bit", "RGBA half", "RGBA float",
                                         "grey 8-bit", "grey 16-bit", "grey half", "grey float"};
    return type >= 0 && type < int32_t(std::size(kTexts)) ? kTexts[type] : "unknown";
}

void summary(Lines& out, const Inventory& inventory) {
    uint64_t stored = 0, decoded = 0;
    size_t framed = 0;
    for (const ChunkEntry& chunk : inventory.chunks) {
        stored += chunk.storedSize;
        decoded += chunk.decodedSize.value_or(0);
        framed += chunk.compression == 1;
    }
    out.add("file: %llu bytes, format %u, %zu chunks (%zu zstd, %zu stored), bodies %llu bytes stored, %llu decoded",
            (unsigned long long)inventory.fileSize, inventory.formatVersion, inventory.chunks.size(), framed,
            inventory.chunks.size() - framed, (unsigned long long)stored, (unsigned long long)decoded);
    std::string kinds;
    for (const KindCount& count : chunkCounts(inventory))
        kinds += (kinds.empty() ? "" : ", ") + std::string(count.kind) + " " + std::to_string(count.count);
    out.add("chunks by type: %s", kinds.c_str());
    out.add("records: %s, %s, %s, %s, %s, %s (%s, %s, %s)", counted(inventory.textures.size(), "texture").c_str(),
            counted(inventory.texMaps.size(), "texmap").c_str(), counted(inventory.materials.size(), "material").c_str(),
            counted(inventory.cameras.size(), "camera").c_str(), counted(inventory.lights.size(), "light").c_str(),
            counted(inventory.models.size(), "model").c_str(),
            counted(elementCount(inventory, ModelKind::Mesh), "triangle").c_str(),
            counted(elementCount(inventory, ModelKind::Fur), "curve").c_str(),
            counted(elementCount(inventory, ModelKind::Sprites), "disc").c_str());
}

void chunkTable(Lines& out, const Inventory& inventory) {
    out.heading("chunks", inventory.chunks.size());
    if (inventory.chunks.empty()) return;
    out.add("  %10s  %-13s %7s  %-6s  %10s  %10s  %10s", "offset", "type", "version", "packed", "stored", "decoded",
            "next");
    for (const ChunkEntry& c : inventory.chunks) {
        const std::string decoded = c.decodedSize ? std::to_string(*c.decodedSize) : "?";
        out.add("  %10llu  %-13s %7u  %-6s  %10llu  %10s  %10llu", (unsigned long long)c.offset,
                chunkTypeName(c.type), c.version, compressionName(c.compression), (unsigned long long)c.storedSize,
                decoded.c_str(), (unsigned long long)c.next);
    }
}

void settings(Lines& out, const SettingsInfo& s) {
    out.add("\nsettings");
    std::string region = "whole image";
    if (s.regionWidth || s.regionHeight || s.regionX || s.regionY) {
        region = std::to_string(s.regionWidth) + " x " + std::to_string(s.regionHeight) + " at " +
                 std::to_string(s.regionX) + ", " + std::to_string(s.regionY);
    }
    const std::string threads = s.threads > 0 ? std::to_string(s.threads) : "all processors";
    out.add("  image %d x %d, region %s, %d passes, threads %s", s.imageWidth, s.imageHeight, region.c_str(),
            s.passes, threads.c_str());
    std::string formats;
    for (auto [on, name] : {std::pair{s.jpeg, "JPEG"}, std::pair{s.tiff, "TIFF"}, std::pair{s.exr, "EXR"}})
        if (on) formats += (formats.empty() ? "" : ", ") + std::string(name);
    const std::string tone = s.toneOperatorWord.empty() ? std::to_string(s.toneOperator) : s.toneOperatorWord;
    out.add("  output %s name %s (%s), tone operator %s, %d AOV channels", quoted(s.outputPath).c_str(),
            quoted(s.outputName).c_str(), formats.empty() ? "no format" : formats.c_str(), tone.c_str(),
            s.aovChannels);
    if (s.startingMedium) out.add("  %s", referenceText(*s.startingMedium).c_str());
}

void textures(Lines& out, const std::vector<TextureInfo>& textures) {
    out.heading("textures", textures.size());
    for (const TextureInfo& t : textures) {
        if (t.embedded) {
            out.add("  #%d %s  embedded %d x %d, pixel type %d (%s)", t.id, quoted(t.name).c_str(), t.width,
                    t.height, t.pixelType, pixelTypeText(t.pixelType));
        } else {
            out.add("  #%d %s  file %s", t.id, quoted(t.name).c_str(), quoted(t.path).c_str());
        }
    }
}

void records(Lines& out, const char* title, const std::vector<RecordInfo>& records) {
    out.heading(title, records.size());
    for (const RecordInfo& r : records) {
        const std::string type = r.typeWord.empty() ? "type " + std::to_string(r.type) : r.typeWord;
        std::string line = "  #" + std::to_string(r.id) + " " + quoted(r.name) + "  " + type;
        if (!r.references.empty()) line += "  " + referencesText(r.references);
        if (r.volumeGrid) {
            const auto& g = *r.volumeGrid;
            line += "  volume cache " + std::to_string(g[0]) + " x " + std::to_string(g[1]) + " x " +
                    std::to_string(g[2]);
        }
        out.add("%s", line.c_str());
    }
}

void cameras(Lines& out, const std::vector<CameraInfo>& cameras) {
    out.heading("cameras", cameras.size());
    for (const CameraInfo& c : cameras) {
        const std::string type = c.typeWord.empty() ? "type " + std::to_string(c.type) : c.typeWord;
        std::string line = "  role " + std::to_string(c.role) + (c.role == 0 ? " (renders)" : "") + "  " + type +
                           "  at " + vec3(c.position) + " looking at " + vec3(c.target);
        if (!c.references.empty()) line += "  " + referencesText(c.references);
        out.add("%s", line.c_str());
    }
}

void lights(Lines& out, const std::vector<LightInfo>& lights) {
    out.heading("lights", lights.size());
    for (const LightInfo& l : lights) {
        const std::string kind = l.kind.empty() ? "" : " " + l.kind;
        std::string line = "  " + quoted(l.name) + "  type " + std::to_string(l.type) + kind +
                           (l.enabled ? "" : " (off)") + "  at " + vec3(l.position);
        char power[64];
        std::snprintf(power, sizeof power, "  intensity %g x %g", l.intensity, l.multiplier);
        line += power;
        if (!l.references.empty()) line += "  " + referencesText(l.references);
        out.add("%s", line.c_str());
    }
}

void models(Lines& out, const std::vector<ModelInfo>& models) {
    static const char* const kElementNouns[] = {"triangle", "curve", "disc"};
    out.heading("models", models.size());
    for (const ModelInfo& m : models) {
        std::string materials;
        for (const Reference& material : m.materials)
            materials += (materials.empty() ? "" : ", ") +
                         (material.name ? quoted(*material.name) : "#" + std::to_string(material.id) + " missing");
        out.add("  %s  %s, %s, %s, materials %s", quoted(m.name).c_str(), modelKindName(m.kind),
                counted(m.parts, "part").c_str(), counted(m.elements, kElementNouns[int(m.kind)]).c_str(),
                materials.empty() ? "none" : materials.c_str());
    }
}

} // namespace

std::string textReport(const Inspection& inspection, bool listChunks) {
    Lines out;
    if (!inspection.verdict.accepted()) {
        for (const std::string& message : inspection.verdict.messages)
            out.add("%s", message.c_str());
        return out.text();
    }
    const Inventory& inventory = inspection.inventory;
    summary(out, inventory);
    if (inventory.settings) settings(out, *inventory.settings);
    textures(out, inventory.textures);
    records(out, "texmaps", inventory.texMaps);
    records(out, "materials", inventory.materials);
    cameras(out, inventory.cameras);
    lights(out, inventory.lights);
    models(out, inventory.models);
    if (listChunks) chunkTable(out, inventory);
    return out.text();
}

} // namespace inspector

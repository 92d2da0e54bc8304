// The chunk chain as it stands in the file, one entry a link.
#include "scene/chunk_scan.h"
#include "tools/inspector/survey.h"

#include <map>
#include <string_view>

namespace inspector {

const char* chunkTypeName(uint32_t type) {
    switch (type) {
    case ChunkSettings: return "settings";
    case ChunkCamera: return "camera";
    case ChunkCameraPath: return "camera path";
    case ChunkTexMap: return "texmap";
    case ChunkMaterial: return "material";
    case ChunkTriangleMesh: return "triangle mesh";
    case ChunkSprites: return "sprites";
    case ChunkFur: return "fur";
    case ChunkLight: return "light";
    case ChunkLightPath: return "light path";
    case ChunkTextureFile: return "texture file";
    case ChunkTextureData: return "texture data";
    case ChunkPhxData: return "volume cache";
    default: return "unknown";
    }
}

// Only 1 is a frame; the reader takes every other value as stored bytes.
const char* compressionName(uint32_t compression) { return compression == 1 ? "zstd" : "stored"; }

std::vector<KindCount> chunkCounts(const Inventory& inventory) {
    std::map<uint32_t, size_t> byType;
    size_t unknown = 0;
    for (const ChunkEntry& chunk : inventory.chunks) {
        if (std::string_view(chunkTypeName(chunk.type)) == "unknown")
            ++unknown;
        else
            ++byType[chunk.type];
    }
    std::vector<KindCount> counts;
    for (const auto& [type, count] : byType)
        counts.push_back({chunkTypeName(type), count});
    if (unknown) counts.push_back({"unknown", unknown});
    return counts;
}

void listChain(const std::u16string& path, Inventory& inventory) {
    SceneFileReader reader;
    if (reader.open(path.c_str()) != SceneOk) return;
    inventory.formatVersion = reader.header.formatVersion;
    inventory.fileSize = reader.fileSize;
    // The reader refuses a link it has followed before, so the walk ends on any chain.
    for (uint64_t offset = 0;;) {
        if (reader.nextChunk(offset) != SceneOk) return;
        ChunkEntry entry;
        entry.offset = offset;
        entry.type = reader.chunk.chunkType;
        entry.version = reader.chunk.chunkVersion;
        entry.compression = reader.chunk.compression;
        entry.storedSize = reader.chunk.storedSize;
        entry.next = reader.chunk.nextChunkOffset;
        ChunkBody body;
        const bool fetched = body.fetch(reader) == SceneOk;
        if (fetched) entry.decodedSize = body.bytes().size;
        inventory.chunks.push_back(entry);
        offset = entry.next;
        if (!fetched || offset == 0 || offset >= reader.fileSize) return;
    }
}

} // namespace inspector

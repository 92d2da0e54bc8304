// The textures of a scene: files and scene-carried pixels behind OpenImageIO's shared texture
// system (one cache, mip-maps made on first use, filtered lookups from any thread).
#pragma once
#include "engines/preview/shading.h"
#include "scene/records.h"

#include <cstdint>
#include <memory>
#include <string>

namespace preview {

enum class TextureWrap { Black, Clamp, Periodic, Mirror };

// One filtered lookup. (s, t) is OpenImageIO's convention: t = 0 is the image's top row.
struct TextureQuery {
    float s = 0, t = 0;
    float dsdx = 0, dtdx = 0, dsdy = 0, dtdy = 0;
    TextureWrap swrap = TextureWrap::Clamp, twrap = TextureWrap::Clamp;
    // Data, not colour: sRGB-encoded images are not linearised (normal maps).
    bool raw = false;
};

class TextureStore {
  public:
    TextureStore();
    ~TextureStore();
    TextureStore(const TextureStore&) = delete;
    TextureStore& operator=(const TextureStore&) = delete;

    void addFolder(const std::string& utf8Folder);
    void addFile(const TextureFileRecord& record, const WarningSink& warn);
    void addData(const TextureDataRecord& record, const WarningSink& warn);

    // Linear RGB at the query; `fallback` for an unknown id or a texture that cannot be read.
    Color lookup(int32_t textureId, const TextureQuery& query, Color fallback) const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace preview

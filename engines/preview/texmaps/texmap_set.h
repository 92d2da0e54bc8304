// Texture maps and textures as the engine keeps them: compiled from each record during
// add, textures opened through OpenImageIO's texture system (mip-mapped, cached), and
// evaluated per hit from every render thread. Texture coordinates have v up: (0, 1) is the
// top-left corner of an image, its first row.
#pragma once
#include "engines/preview/shading.h"
#include "scene/records.h"

#include <memory>
#include <string>

namespace preview {

class TexMapSet final : public TexMapLookup {
  public:
    TexMapSet();
    ~TexMapSet();
    TexMapSet(const TexMapSet&) = delete;
    TexMapSet& operator=(const TexMapSet&) = delete;

    // Folders in which a texture file's relative path, then its file name, is also looked for,
    // in the order given. Only textures added later are looked for in them.
    void addFolder(const std::string& utf8Folder);
    // A texture whose pixels live in a file: found and its header read now, its pixels when
    // first looked up; one warning naming a file that cannot be found or read.
    void addTextureFile(const TextureFileRecord& record, const WarningSink& warn);
    // A texture whose pixels the scene carries; copied now.
    void addTextureData(const TextureDataRecord& record, const WarningSink& warn);
    // A texmap of any type; a type it cannot evaluate gives its neutral value, one warning per type.
    void add(const TexMapRecord& record, const WarningSink& warn);
    // After every texmap is in: resolves references between maps; cycles and unknown ids
    // become the neutral value, reported once.
    void finish(const WarningSink& warn);

    Color color(int32_t texMapId, const ShadingContext& at, Color fallback) const override;
    float scalar(int32_t texMapId, const ShadingContext& at, float fallback) const override;
    Vec3 normal(int32_t texMapId, const ShadingContext& at) const override;

    // The environment as a texmap sees it: `direction` as the lookup (for sky lights that use
    // a map). Latitude-longitude, +Y up: u = 0.5 + atan2(d.x, -d.z) / 2pi, v = 1 - acos(d.y) / pi,
    // so -Z sees the image's middle column and +Y its top row.
    Color environment(int32_t texMapId, const Vec3& direction, Color fallback) const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace preview

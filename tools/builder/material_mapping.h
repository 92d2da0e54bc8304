// Materials of the model file turned into the types the preview engine renders, and the images
// they use into texture records.
//
//   metallic-roughness materials (glTF and any file with a metallic or roughness factor)
//       -> PHYSICAL: base colour and map, metalness, roughness, IOR, transmission, clear coat,
//          emission with its strength and map
//   the others, by what their parameters say (OBJ/MTL, Collada, FBX, ...):
//       opacity below 1                                -> ROUGHDIELECTRIC (Ni, Ns, Tf)
//       emission at least as bright as the diffuse     -> LAMBERTIANEMISSION (Ke)
//       specular brighter than the diffuse, above 0.2  -> ROUGHCONDUCTOR (Ks, Ns)
//       otherwise                                      -> DIFFUSE (Kd, map_Kd, both sides)
#pragma once
#include "tools/builder/imported_model.h"
#include "tools/builder/record_names.h"

#include <assimp/material.h>
#include <assimp/scene.h>

#include <map>
#include <string>
#include <vector>

namespace builder {

// The images materials use, each once, in the order they are first met.
class TextureTable {
  public:
    // `modelFolder` resolves the file's relative paths; paths are written relative to
    // `sceneFolder`, where embedded images go as <sceneStem>_texture<N>.<format>.
    TextureTable(const aiScene& scene, std::string modelFolder, std::string sceneFolder, std::string sceneStem);
    // The index of the first texture of `type`, -1 for none or one that cannot be used.
    int32_t find(const aiMaterial& material, aiTextureType type, std::vector<std::string>& notes);
    std::vector<TextureSource> take() { return std::move(textures_); }

  private:
    int32_t embedded(const aiTexture& texture, size_t index, std::vector<std::string>& notes);
    int32_t external(const std::string& path, std::vector<std::string>& notes);
    int32_t add(TextureSource source, const std::string& nameSource);

    const aiScene& scene_;
    std::string modelFolder_, sceneFolder_, sceneStem_;
    std::vector<TextureSource> textures_;
    std::map<std::string, int32_t> byPath_;
    RecordNames names_;
};

// The surface of one material; `names` gives it its unique name.
Surface mapSurface(const aiMaterial& material, size_t index, TextureTable& textures, RecordNames& names,
                   std::vector<std::string>& notes);

} // namespace builder

#include "tools/builder/material_mapping.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>

namespace builder {

namespace fs = std::filesystem;

namespace {

float luminance(const Vec3& c) {
    return 0.2126f * c[0] + 0.7152f * c[1] + 0.0722f * c[2];
}

float largest(const Vec3& c) {
    return std::max({c[0], c[1], c[2]});
}

bool readColour(const aiMaterial& material, const char* key, unsigned type, unsigned index, Vec3& colour) {
    aiColor4D value;
    if (aiGetMaterialColor(&material, key, type, index, &value) != AI_SUCCESS) return false;
    colour = {value.r, value.g, value.b};
    return true;
}

bool readReal(const aiMaterial& material, const char* key, unsigned type, unsigned index, float& value) {
    ai_real read;
    if (aiGetMaterialFloat(&material, key, type, index, &read) != AI_SUCCESS) return false;
    value = static_cast<float>(read);
    return true;
}

// A Phong exponent as the roughness whose GGX alpha (roughness squared) has about the same lobe.
float roughnessOfExponent(float exponent) {
    const float alpha = std::sqrt(2 / (std::max(exponent, 0.0f) + 2));
    return std::clamp(std::sqrt(alpha), 0.02f, 1.0f);
}

bool isMetallicRoughness(const aiMaterial& material) {
    float unused;
    int model = 0;
    if (aiGetMaterialInteger(&material, AI_MATKEY_SHADING_MODEL, &model) == AI_SUCCESS &&
        model == aiShadingMode_PBR_BRDF)
        return true;
    return readReal(material, AI_MATKEY_METALLIC_FACTOR, unused) || readReal(material, AI_MATKEY_ROUGHNESS_FACTOR, unused);
}

std::string lowerExtension(const char* hint) {
    std::string extension;
    for (const char* c = hint; *c && extension.size() < sizeof(aiTexture::achFormatHint); ++c)
        extension += static_cast<char>(std::tolower(static_cast<unsigned char>(*c)));
    return extension.empty() ? "bin" : extension;
}

void physicalSurface(const aiMaterial& material, Surface& surface) {
    surface.kind = SurfaceKind::Physical;
    if (!readColour(material, AI_MATKEY_BASE_COLOR, surface.colour))
        readColour(material, AI_MATKEY_COLOR_DIFFUSE, surface.colour);
    readReal(material, AI_MATKEY_METALLIC_FACTOR, surface.metallic);
    readReal(material, AI_MATKEY_ROUGHNESS_FACTOR, surface.roughness);
    float ior = 0;
    if (readReal(material, AI_MATKEY_REFRACTI, ior) && ior >= 1) surface.ior = ior;
    readReal(material, AI_MATKEY_TRANSMISSION_FACTOR, surface.transmission);
    readReal(material, AI_MATKEY_CLEARCOAT_FACTOR, surface.coat);
    readReal(material, AI_MATKEY_CLEARCOAT_ROUGHNESS_FACTOR, surface.coatRoughness);
    readColour(material, AI_MATKEY_COLOR_EMISSIVE, surface.emission);
    readReal(material, AI_MATKEY_EMISSIVE_INTENSITY, surface.emissionStrength);
}

void classicSurface(const aiMaterial& material, Surface& surface) {
    Vec3 diffuse{0.8f, 0.8f, 0.8f}, specular{0, 0, 0}, emission{0, 0, 0}, tint{0, 0, 0};
    readColour(material, AI_MATKEY_COLOR_DIFFUSE, diffuse);
    readColour(material, AI_MATKEY_COLOR_SPECULAR, specular);
    readColour(material, AI_MATKEY_COLOR_EMISSIVE, emission);
    readColour(material, AI_MATKEY_COLOR_TRANSPARENT, tint);
    float opacity = 1, exponent = -1, ior = 0;
    readReal(material, AI_MATKEY_OPACITY, opacity);
    const bool shiny = readReal(material, AI_MATKEY_SHININESS, exponent);
    readReal(material, AI_MATKEY_REFRACTI, ior);
    if (shiny) surface.roughness = roughnessOfExponent(exponent);

    if (opacity < 0.99f) {
        surface.kind = SurfaceKind::RoughDielectric;
        surface.colour = largest(tint) > 0 ? tint : Vec3{1, 1, 1};
        surface.ior = ior > 1 ? ior : 1.5f;
        if (!shiny) surface.roughness = 0.02f;
    } else if (largest(emission) > 0.01f && luminance(emission) >= luminance(diffuse)) {
        surface.kind = SurfaceKind::Emitter;
        surface.emission = emission;
    } else if (luminance(specular) > luminance(diffuse) && luminance(specular) > 0.2f) {
        surface.kind = SurfaceKind::RoughConductor;
        surface.colour = specular;
    } else {
        surface.kind = SurfaceKind::Diffuse;
        surface.colour = diffuse;
    }
}

} // namespace

// ---- Textures ----------------------------------------------------------------------------------

TextureTable::TextureTable(const aiScene& scene, std::string modelFolder, std::string sceneFolder,
                           std::string sceneStem)
    : scene_(scene), modelFolder_(std::move(modelFolder)), sceneFolder_(std::move(sceneFolder)),
      sceneStem_(std::move(sceneStem)) {}

int32_t TextureTable::find(const aiMaterial& material, aiTextureType type, std::vector<std::string>& notes) {
    aiString path;
    if (material.GetTextureCount(type) == 0 || material.GetTexture(type, 0, &path) != AI_SUCCESS) return -1;
    const std::string text = path.C_Str();
    if (text.empty()) return -1;
    if (const aiTexture* texture = scene_.GetEmbeddedTexture(path.C_Str())) {
        const auto* begin = scene_.mTextures;
        const size_t index = static_cast<size_t>(std::find(begin, begin + scene_.mNumTextures, texture) - begin);
        return embedded(*texture, index, notes);
    }
    return external(text, notes);
}

int32_t TextureTable::embedded(const aiTexture& texture, size_t index, std::vector<std::string>& notes) {
    const std::string file = sceneStem_ + "_texture" + std::to_string(index) + "." + lowerExtension(texture.achFormatHint);
    if (auto found = byPath_.find(file); found != byPath_.end()) return found->second;
    // Only compressed images (PNG, JPEG, ...) are carried as they are; raw texel arrays are rare.
    if (texture.mHeight != 0) {
        notes.push_back("embedded texture " + std::to_string(index) + " holds raw texels and is left out");
        return -1;
    }
    TextureSource source;
    source.sceneRelPath = file;
    const auto* bytes = reinterpret_cast<const uint8_t*>(texture.pcData);
    source.embeddedBytes.assign(bytes, bytes + texture.mWidth);
    return add(std::move(source), texture.mFilename.length ? texture.mFilename.C_Str() : file);
}

int32_t TextureTable::external(const std::string& path, std::vector<std::string>& notes) {
    std::string generic = path;
    std::replace(generic.begin(), generic.end(), '\\', '/');
    fs::path file = fs::path(generic);
    // A path of another machine ("D:/work/wood.jpg") names nothing here.
    const bool foreign = generic.size() > 1 && generic[1] == ':';
    if (file.is_relative() && !foreign) file = fs::path(modelFolder_) / file;
    file = fs::absolute(file).lexically_normal();
    std::error_code error;
    std::string scenePath;
    const fs::path beside = fs::absolute(fs::path(modelFolder_) / file.filename()).lexically_normal();
    // Models often travel with their images beside them whatever the path says.
    if (!fs::exists(file, error) && fs::exists(beside, error)) file = beside;
    if (fs::exists(file, error)) {
        const fs::path relative = file.lexically_relative(fs::absolute(sceneFolder_).lexically_normal());
        scenePath = relative.empty() ? file.generic_string() : relative.generic_string();
    } else {
        // The file name alone, which the engine looks for in the client's -textures folders.
        notes.push_back("texture file not found: " + generic);
        scenePath = file.filename().generic_string();
    }
    if (auto found = byPath_.find(scenePath); found != byPath_.end()) return found->second;
    TextureSource source;
    source.sceneRelPath = scenePath;
    return add(std::move(source), file.stem().string());
}

int32_t TextureTable::add(TextureSource source, const std::string& nameSource) {
    const auto id = static_cast<int32_t>(textures_.size());
    source.name = names_.take(fs::path(nameSource).stem().string(), "texture " + std::to_string(id));
    byPath_[source.sceneRelPath] = id;
    textures_.push_back(std::move(source));
    return id;
}

// ---- Materials ---------------------------------------------------------------------------------

Surface mapSurface(const aiMaterial& material, size_t index, TextureTable& textures, RecordNames& names,
                   std::vector<std::string>& notes) {
    Surface surface;
    surface.name = names.take(material.GetName().C_Str(), "material " + std::to_string(index));
    if (isMetallicRoughness(material)) {
        physicalSurface(material, surface);
        surface.colourTexture = textures.find(material, aiTextureType_BASE_COLOR, notes);
        if (surface.colourTexture < 0) surface.colourTexture = textures.find(material, aiTextureType_DIFFUSE, notes);
        surface.emissionTexture = textures.find(material, aiTextureType_EMISSIVE, notes);
    } else {
        classicSurface(material, surface);
        if (surface.kind == SurfaceKind::Diffuse)
            surface.colourTexture = textures.find(material, aiTextureType_DIFFUSE, notes);
        if (surface.kind == SurfaceKind::Emitter)
            surface.emissionTexture = textures.find(material, aiTextureType_EMISSIVE, notes);
    }
    return surface;
}

} // namespace builder

#include "engines/preview/texmaps/texture_store.h"

#include "common/unicode.h"
#include "engines/preview/texmaps/memory_image.h"

#include <OpenImageIO/color.h>
#include <OpenImageIO/imagecache.h>
#include <OpenImageIO/texture.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <system_error>
#include <unordered_map>
#include <vector>

namespace preview {

namespace fs = std::filesystem;

namespace {

struct Texture {
    OIIO::ustring name;
    OIIO::TextureSystem::TextureHandle* handle = nullptr;
    bool srgb = false;
    std::unique_ptr<MemoryImage> pixels; // for texture data records
};

template <size_t N> std::string textOf(const char16_t (&field)[N]) {
    return utf16ToUtf8(std::u16string(field, std::find(field, field + N, u'\0')));
}

bool isRegularFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

// Integer images are taken as sRGB-encoded unless the file says it is linear; half and float
// images are linear.
bool encodedAsSrgb(const OIIO::ImageSpec& header) {
    if (header.format.is_floating_point()) return false;
    const std::string space = header.get_string_attribute("oiio:ColorSpace");
    return !OIIO::Strutil::iequals(space, "linear") && !OIIO::Strutil::iequals(space, "scene_linear");
}

OIIO::TextureOpt::Wrap oiioWrap(TextureWrap wrap) {
    switch (wrap) {
    case TextureWrap::Black: return OIIO::TextureOpt::WrapBlack;
    case TextureWrap::Clamp: return OIIO::TextureOpt::WrapClamp;
    case TextureWrap::Periodic: return OIIO::TextureOpt::WrapPeriodic;
    case TextureWrap::Mirror: return OIIO::TextureOpt::WrapMirror;
    }
    return OIIO::TextureOpt::WrapClamp;
}

} // namespace

struct TextureStore::Impl {
    OIIO::TextureSystem* system = nullptr;
    std::vector<fs::path> folders;
    std::unordered_map<int32_t, Texture> textures;

    // The path as given when it names a file; otherwise, folder by folder, the relative path and
    // then the file name alone. Scenes written elsewhere may separate with backslashes.
    fs::path locate(const std::string& given) const {
        std::string portable = given;
        std::replace(portable.begin(), portable.end(), '\\', '/');
        const fs::path path(portable);
        if (isRegularFile(path)) return path;
        for (const fs::path& folder : folders) {
            if (path.is_relative() && isRegularFile(folder / path)) return folder / path;
            if (path.has_filename() && isRegularFile(folder / path.filename())) return folder / path.filename();
        }
        return {};
    }

    // Opens the image's header through the texture system; false when it cannot be read.
    bool admit(int32_t id, Texture texture) {
        OIIO::TextureSystem::Perthread* thread = system->get_perthread_info();
        texture.handle = system->get_texture_handle(texture.name, thread);
        OIIO::ImageSpec header;
        if (!texture.handle || !system->get_imagespec(texture.handle, thread, 0, header)) {
            (void)system->geterror(); // the warning says it; don't let errors pile up
            return false;
        }
        if (!texture.pixels) texture.srgb = encodedAsSrgb(header);
        const auto earlier = textures.find(id);
        if (earlier != textures.end() && earlier->second.name != texture.name)
            system->invalidate(earlier->second.name, true);
        textures[id] = std::move(texture);
        return true;
    }
};

TextureStore::TextureStore() : impl_(std::make_unique<Impl>()) {
    // The process-wide texture system: OpenImageIO 2.4 frees a private one with a delete of
    // the wrong size, which the address sanitizer rightly rejects.
    impl_->system = OIIO::TextureSystem::create(true);
    impl_->system->attribute("automip", 1);
    impl_->system->attribute("gray_to_rgb", 1);
}

// The cache outlives the set: its files are closed and their tiles dropped, so that a file
// changed between renders is read anew and no reader keeps a pointer into freed pixels.
TextureStore::~TextureStore() {
    for (const auto& [id, texture] : impl_->textures)
        impl_->system->invalidate(texture.name, true);
}

void TextureStore::addFolder(const std::string& utf8Folder) {
    if (!utf8Folder.empty()) impl_->folders.emplace_back(utf8Folder);
}

void TextureStore::addFile(const TextureFileRecord& record, const WarningSink& warn) {
    const std::string given = textOf(record.path);
    const fs::path found = impl_->locate(given);
    Texture texture;
    texture.name = OIIO::ustring(found.string());
    if (found.empty() || !impl_->admit(record.id, std::move(texture))) warn("texture file cannot be read: " + given);
}

void TextureStore::addData(const TextureDataRecord& record, const WarningSink& warn) {
    if (!knownPixelType(record.pixelType)) {
        warn("unsupported texture pixel type " + std::to_string(record.pixelType));
        return;
    }
    Texture texture;
    texture.pixels = MemoryImage::fromRecord(record);
    if (!texture.pixels) {
        warn("texture data without usable pixels: " + textOf(record.name));
        return;
    }
    texture.srgb = texture.pixels->srgb();
    // Unique in the process, since the cache is shared: a name is never registered twice.
    static std::atomic<uint64_t> serial{0};
    texture.name = OIIO::ustring("texture-data:" + std::to_string(serial++) + ":" + std::to_string(record.id));
    const OIIO::ImageSpec config = texture.pixels->readerConfig();
    OIIO::ImageCache* cache = impl_->system->imagecache();
    if (!cache->add_file(texture.name, MemoryImage::readerCreator(), &config, true) ||
        !impl_->admit(record.id, std::move(texture))) {
        (void)cache->geterror();
        warn("texture data without usable pixels: " + textOf(record.name));
    }
}

Color TextureStore::lookup(int32_t textureId, const TextureQuery& query, Color fallback) const {
    const auto found = impl_->textures.find(textureId);
    if (found == impl_->textures.end()) return fallback;
    const Texture& texture = found->second;
    OIIO::TextureOpt options;
    options.swrap = oiioWrap(query.swrap);
    options.twrap = oiioWrap(query.twrap);
    // Bilinear within a level: the smart bicubic default blurs the texels of a magnified image.
    options.interpmode = OIIO::TextureOpt::InterpBilinear;
    float rgb[3] = {0, 0, 0};
    OIIO::TextureSystem::Perthread* thread = impl_->system->get_perthread_info();
    if (!impl_->system->texture(texture.handle, thread, options, query.s, query.t, query.dsdx, query.dtdx,
                                query.dsdy, query.dtdy, 3, rgb))
        return fallback;
    if (texture.srgb && !query.raw) {
        for (float& channel : rgb)
            channel = OIIO::sRGB_to_linear(channel);
    }
    return {rgb[0], rgb[1], rgb[2]};
}

} // namespace preview

#include "engines/preview/texmaps/memory_image.h"

#include <climits>
#include <cstring>

namespace preview {

namespace {

struct PixelLayout {
    int channels;
    OIIO::TypeDesc format;
};

// Texture data records tell only the byte size of each pixel type; these are the layouts behind
// the sizes: RGBA and grey in 8-bit, 16-bit, half and float.
bool pixelLayout(int32_t pixelType, PixelLayout* layout) {
    switch (pixelType) {
    case 0: *layout = {4, OIIO::TypeDesc::UINT8}; return true;
    case 1: *layout = {4, OIIO::TypeDesc::UINT16}; return true;
    case 2: *layout = {4, OIIO::TypeDesc::HALF}; return true;
    case 3: *layout = {4, OIIO::TypeDesc::FLOAT}; return true;
    case 4: *layout = {1, OIIO::TypeDesc::UINT8}; return true;
    case 5: *layout = {1, OIIO::TypeDesc::UINT16}; return true;
    case 6: *layout = {1, OIIO::TypeDesc::HALF}; return true;
    case 7: *layout = {1, OIIO::TypeDesc::FLOAT}; return true;
    default: return false;
    }
}

constexpr char kImageAttribute[] = "preview:memoryimage";

// A reader over a MemoryImage that its configuration names. It owns nothing: the texture set
// keeps the image alive as long as the texture system that reads it.
class MemoryImageInput final : public OIIO::ImageInput {
  public:
    const char* format_name() const override { return "preview-memory"; }
    bool open(const std::string&, OIIO::ImageSpec&) override { return false; }
    bool open(const std::string&, OIIO::ImageSpec& newspec, const OIIO::ImageSpec& config) override {
        const OIIO::ParamValue* param = config.find_attribute(kImageAttribute, OIIO::TypeDesc::PTR);
        if (!param) return false;
        image_ = *static_cast<const MemoryImage* const*>(param->data());
        if (!image_) return false;
        m_spec = image_->header();
        newspec = m_spec;
        return true;
    }
    bool read_native_scanline(int subimage, int miplevel, int y, int, void* data) override {
        if (!image_ || subimage != 0 || miplevel != 0 || y < 0 || y >= m_spec.height) return false;
        std::memcpy(data, image_->row(y), m_spec.scanline_bytes());
        return true;
    }
    bool close() override {
        image_ = nullptr;
        return true;
    }

  private:
    const MemoryImage* image_ = nullptr;
};

OIIO::ImageInput* createMemoryImageInput() { return new MemoryImageInput; }

} // namespace

bool knownPixelType(int32_t pixelType) {
    PixelLayout layout;
    return pixelLayout(pixelType, &layout);
}

std::unique_ptr<MemoryImage> MemoryImage::fromRecord(const TextureDataRecord& record) {
    PixelLayout layout;
    if (!pixelLayout(record.pixelType, &layout) || record.width <= 0 || record.height <= 0 || !record.pixels)
        return nullptr;
    // The scene reader sized the pixel block with 32-bit arithmetic; a product past that range
    // means the block is not the image's size.
    const uint64_t bytes = uint64_t(record.width) * uint64_t(record.height) * layout.channels * layout.format.size();
    if (bytes > uint64_t(INT32_MAX)) return nullptr;
    auto image = std::make_unique<MemoryImage>();
    image->header_ = OIIO::ImageSpec(record.width, record.height, layout.channels, layout.format);
    image->srgb_ = layout.format == OIIO::TypeDesc::UINT8 || layout.format == OIIO::TypeDesc::UINT16;
    image->pixels_.assign(record.pixels, record.pixels + image->header_.image_bytes());
    return image;
}

OIIO::ImageSpec MemoryImage::readerConfig() const {
    OIIO::ImageSpec config;
    const MemoryImage* self = this;
    config.attribute(kImageAttribute, OIIO::TypeDesc::PTR, &self);
    return config;
}

OIIO::ImageInput::Creator MemoryImage::readerCreator() { return createMemoryImageInput; }

} // namespace preview

// Pixels that the scene carries, served to OpenImageIO's texture system as if they were a file,
// so that they are mip-mapped, cached and filtered exactly like texture files.
#pragma once
#include "scene/records.h"

#include <OpenImageIO/imageio.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace preview {

class MemoryImage {
  public:
    // Copies the record's pixels; null for a pixel type this engine does not know, or a record
    // whose size and pixels don't make an image.
    static std::unique_ptr<MemoryImage> fromRecord(const TextureDataRecord& record);

    const OIIO::ImageSpec& header() const { return header_; }
    const uint8_t* row(int y) const { return pixels_.data() + static_cast<size_t>(y) * header_.scanline_bytes(); }
    // Whether the pixel values are sRGB-encoded rather than linear.
    bool srgb() const { return srgb_; }

    // The configuration that `add_file` hands to the reader, so that it finds this image.
    OIIO::ImageSpec readerConfig() const;
    // The creator to give `add_file`: its readers take the image from their configuration.
    static OIIO::ImageInput::Creator readerCreator();

  private:
    OIIO::ImageSpec header_;
    std::vector<uint8_t> pixels_;
    bool srgb_ = false;
};

// Whether a pixel type of texture data records is one that `MemoryImage` reads.
bool knownPixelType(int32_t pixelType);

} // namespace preview

#include "engines/preview/output/image_output.h"
#include "common/unicode.h"
#include "engines/preview/output/tone_map.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>

namespace preview {

namespace fs = std::filesystem;
using OIIO::ImageOutput;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

namespace {

constexpr const char* kJpegCompression = "jpeg:95";
const std::vector<std::string> kExrChannels = {"R",        "G",   "B",   "albedo.R", "albedo.G",
                                               "albedo.B", "N.X", "N.Y", "N.Z",      "Z"};

// A record's text may fill its whole array without a terminator.
template <size_t N> std::string recordText(const char16_t (&text)[N]) {
    return utf16ToUtf8(std::u16string(text, std::find(text, text + N, u'\0')));
}

std::string frameSuffix(int32_t frame) {
    char suffix[16];
    std::snprintf(suffix, sizeof suffix, ".%04d", int(frame));
    return suffix;
}

// Fills one row of the file's channels, as floats, for image row y.
using RowFiller = std::function<void(int32_t y, std::vector<float>& row)>;

struct FileJob {
    const char* extension;
    const char* format; // OpenImageIO's name: the temporary name's extension does not tell it
    ImageSpec header;
    RowFiller fillRow;
};

// Writes the rows to `temporary`; empty on success, otherwise the error text.
std::string writeRows(const FileJob& job, const fs::path& temporary) {
    auto out = ImageOutput::create(job.format);
    if (!out) return OIIO::geterror();
    if (!out->open(temporary.u8string(), job.header)) return out->geterror();
    std::vector<float> row(size_t(job.header.width) * size_t(job.header.nchannels));
    for (int32_t y = 0; y < job.header.height; ++y) {
        job.fillRow(y, row);
        if (!out->write_scanline(y, 0, TypeDesc::FLOAT, row.data())) {
            std::string error = out->geterror();
            out->close();
            return error;
        }
    }
    if (!out->close()) return out->geterror();
    return {};
}

WrittenImage writeFile(const FileJob& job, const fs::path& folder, const std::string& baseName,
                       const std::string& folderError) {
    fs::path target = folder / fs::u8path(baseName + job.extension);
    WrittenImage result{target.u8string(), false, folderError};
    if (!folderError.empty()) return result;
    fs::path temporary = target;
    temporary += ".tmp";
    result.error = writeRows(job, temporary);
    std::error_code code;
    if (result.error.empty()) {
        fs::rename(temporary, target, code);
        if (code) result.error = "cannot rename " + temporary.u8string() + ": " + code.message();
    }
    result.ok = result.error.empty();
    if (!result.ok) fs::remove(temporary, code);
    return result;
}

// Empty on success, otherwise the error text.
std::string makeFolder(const fs::path& folder) {
    if (folder.empty()) return {};
    std::error_code code;
    fs::create_directories(folder, code);
    if (code) return "cannot create the folder " + folder.u8string() + ": " + code.message();
    return {};
}

ImageSpec imageSpec(const Film& film, TypeDesc format, const std::vector<std::string>& channels) {
    ImageSpec header(film.imageWidth(), film.imageHeight(), int(channels.size()), format);
    header.channelnames = channels;
    // Writers stamp the current time when no DateTime is given; an empty one writes none, so
    // the same film gives the same bytes.
    header.attribute("DateTime", "");
    return header;
}

// The row's region pixels go through `pixel`, which writes the pixel's channels; the rest is 0.
template <typename PixelWriter>
void fillRegionRow(const Film& film, int32_t y, std::vector<float>& row, int channels, PixelWriter pixel) {
    std::fill(row.begin(), row.end(), 0.0f);
    const PixelRect& region = film.region();
    if (y < region.y || y >= region.y + region.height) return;
    for (int32_t x = region.x; x < region.x + region.width; ++x)
        pixel(x, &row[size_t(x) * size_t(channels)]);
}

FileJob displayJob(const char* extension, const char* format, const Film& film, const ToneMapper& tone) {
    FileJob job{extension, format, imageSpec(film, TypeDesc::UINT8, {"R", "G", "B"}), {}};
    job.fillRow = [&film, &tone](int32_t y, std::vector<float>& row) {
        fillRegionRow(film, y, row, 3, [&](int32_t x, float* out) {
            Color c = tone(film.radiance(x, y));
            out[0] = c.x, out[1] = c.y, out[2] = c.z;
        });
    };
    return job;
}

FileJob exrJob(const Film& film) {
    FileJob job{".exr", "openexr", imageSpec(film, TypeDesc::HALF, kExrChannels), {}};
    job.fillRow = [&film](int32_t y, std::vector<float>& row) {
        fillRegionRow(film, y, row, int(kExrChannels.size()), [&](int32_t x, float* out) {
            Color c = film.radiance(x, y), a = film.albedo(x, y);
            Vec3 n = film.normal(x, y);
            const float values[] = {c.x, c.y, c.z, a.x, a.y, a.z, n.x, n.y, n.z, film.depth(x, y)};
            std::copy(std::begin(values), std::end(values), out);
        });
    };
    return job;
}

} // namespace

OutputPlan planOutput(const SettingsRecord& settings, bool animated) {
    OutputPlan plan;
    plan.folder = recordText(settings.OutputPath);
    plan.baseName = recordText(settings.OutputName);
    if (plan.baseName.empty()) plan.baseName = kDefaultOutputName;
    if (animated) plan.baseName += frameSuffix(settings.FrameNumber);
    plan.jpeg = settings.SaveJPEG != 0;
    plan.tiff = settings.SaveTIFF != 0;
    plan.exr = settings.SaveEXR != 0;
    if (!plan.jpeg && !plan.tiff && !plan.exr) plan.jpeg = true;
    plan.tone = settings.ToneOperator;
    return plan;
}

std::vector<WrittenImage> writeImages(const OutputPlan& plan, const Film& film) {
    const fs::path folder = fs::u8path(plan.folder);
    const std::string folderError = makeFolder(folder);
    const ToneMapper tone(plan.tone);
    std::vector<FileJob> jobs;
    if (plan.jpeg) {
        jobs.push_back(displayJob(".jpg", "jpeg", film, tone));
        jobs.back().header.attribute("Compression", kJpegCompression);
        // Full-resolution colour: renders have sharp coloured edges that 4:2:0 smears.
        jobs.back().header.attribute("jpeg:subsampling", "4:4:4");
    }
    if (plan.tiff) jobs.push_back(displayJob(".tif", "tiff", film, tone));
    if (plan.exr) jobs.push_back(exrJob(film));

    std::vector<WrittenImage> written;
    for (const FileJob& job : jobs)
        written.push_back(writeFile(job, folder, plan.baseName, folderError));
    return written;
}

} // namespace preview

#include "engines/preview/output/image_output.h"
#include "engines/preview/output/tone_map.h"

#include <OpenImageIO/imagebuf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>

namespace preview {
namespace {

namespace fs = std::filesystem;

template <size_t N> void setText(char16_t (&field)[N], const std::u16string& text) {
    std::fill(std::begin(field), std::end(field), u'\0');
    std::copy_n(text.begin(), std::min(text.size(), N), field);
}

TEST(PlanOutput, NamesAndFormats) {
    struct Case {
        const char* name;
        std::u16string outputName;
        bool animated;
        int32_t frame;
        uint32_t jpeg, tiff, exr;
        std::string expectedName;
        bool expectJpeg, expectTiff, expectExr;
    };
    const std::u16string fullName(64, u'n');
    const Case cases[] = {
        {"still", u"beauty", false, 7, 0, 1, 0, "beauty", false, true, false},
        {"animated", u"beauty", true, 7, 0, 0, 1, "beauty.0007", false, false, true},
        {"animated, frame beyond four digits", u"shot", true, 123456, 1, 0, 0, "shot.123456", true, false,
         false},
        {"animated, frame 0", u"shot", true, 0, 1, 1, 1, "shot.0000", true, true, true},
        {"no format asked for gives JPEG", u"beauty", false, 0, 0, 0, 0, "beauty", true, false, false},
        {"any non-zero flag counts", u"beauty", false, 0, 0, 2, 0, "beauty", false, true, false},
        {"empty name", u"", false, 0, 1, 0, 0, kDefaultOutputName, true, false, false},
        {"UTF-16 name becomes UTF-8", u"b\u00e9auty\u6f22", false, 0, 1, 0, 0,
         "b\xc3\xa9"
         "auty\xe6\xbc\xa2",
         true, false, false},
        {"name filling its whole field", fullName, false, 0, 1, 0, 0, std::string(64, 'n'), true, false,
         false},
    };
    for (const Case& c : cases) {
        auto settings = std::make_unique<SettingsRecord>();
        setText(settings->OutputPath, u"renders/caf\u00e9");
        setText(settings->OutputName, c.outputName);
        settings->FrameNumber = c.frame;
        settings->SaveJPEG = c.jpeg, settings->SaveTIFF = c.tiff, settings->SaveEXR = c.exr;
        settings->ToneOperator.OperatorType = 3;
        settings->ToneOperator.Gamma = 1.8f;
        OutputPlan plan = planOutput(*settings, c.animated);
        EXPECT_EQ(plan.folder, "renders/caf\xc3\xa9") << c.name;
        EXPECT_EQ(plan.baseName, c.expectedName) << c.name;
        EXPECT_EQ(plan.jpeg, c.expectJpeg) << c.name;
        EXPECT_EQ(plan.tiff, c.expectTiff) << c.name;
        EXPECT_EQ(plan.exr, c.expectExr) << c.name;
        EXPECT_EQ(plan.tone.OperatorType, 3u) << c.name;
        EXPECT_EQ(plan.tone.Gamma, 1.8f) << c.name;
    }
}

// A folder of its own for each test, removed afterwards.
class WriteImages : public testing::Test {
  protected:
    void SetUp() override {
        const auto* info = testing::UnitTest::GetInstance()->current_test_info();
        folder_ = fs::temp_directory_path() /
                  ("preview_output_" + std::to_string(std::random_device{}()) + "_" + info->name());
        fs::remove_all(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }

    OutputPlan plan(const std::string& subfolder, bool jpeg, bool tiff, bool exr) const {
        OutputPlan p;
        p.folder = (folder_ / subfolder).u8string();
        p.baseName = "frame.0003";
        p.jpeg = jpeg, p.tiff = tiff, p.exr = exr;
        p.tone.OperatorType = 1;
        p.tone.ApplyGamma = 1;
        p.tone.Gamma = 2.2f;
        return p;
    }

    fs::path folder_;
};

constexpr int32_t kWidth = 24, kHeight = 16;
constexpr PixelRect kRegion{5, 3, 10, 6};

Color radianceAt(int x, int y) {
    return Color(0.1f * float(x), 0.2f * float(y), 2.5f);
}

Film testFilm() {
    Film film(kWidth, kHeight, kRegion, true);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            film.add(x, y, radianceAt(x, y), Color(0.25f, 0.5f, 0.75f), Vec3(0, 0.6f, -0.8f), float(x + y));
    film.setPasses(1);
    return film;
}

std::string fileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

OIIO::ImageBuf readBack(const std::string& path) {
    OIIO::ImageBuf image(path);
    EXPECT_TRUE(image.read(0, 0, true, OIIO::TypeDesc::FLOAT)) << path << ": " << image.geterror();
    return image;
}

std::vector<float> pixelAt(const OIIO::ImageBuf& image, int x, int y) {
    std::vector<float> pixel(size_t(image.nchannels()));
    image.getpixel(x, y, pixel.data(), image.nchannels());
    return pixel;
}

TEST_F(WriteImages, EveryFormatWithItsNameSizeAndChannels) {
    const Film film = testFilm();
    const auto written = writeImages(plan("new/deeper", true, true, true), film);
    ASSERT_EQ(written.size(), 3u);
    const fs::path base = folder_ / "new" / "deeper";
    struct Expected {
        fs::path path;
        int channels;
    };
    const Expected expected[] = {
        {base / "frame.0003.jpg", 3}, {base / "frame.0003.tif", 3}, {base / "frame.0003.exr", 10}};
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(written[i].ok) << written[i].path << ": " << written[i].error;
        EXPECT_EQ(written[i].path, expected[i].path.u8string());
        OIIO::ImageBuf image = readBack(written[i].path);
        EXPECT_EQ(image.nativespec().width, kWidth) << written[i].path;
        EXPECT_EQ(image.nativespec().height, kHeight) << written[i].path;
        EXPECT_EQ(image.nchannels(), expected[i].channels) << written[i].path;
        EXPECT_FALSE(image.nativespec().find_attribute("DateTime")) << written[i].path << " carries a time stamp";
    }
    // Only the three files: every temporary was renamed away.
    EXPECT_EQ(std::distance(fs::directory_iterator(base), fs::directory_iterator()), 3);
}

TEST_F(WriteImages, ExrHoldsTheLinearLayersByName) {
    const Film film = testFilm();
    const auto written = writeImages(plan("", false, false, true), film);
    ASSERT_EQ(written.size(), 1u);
    ASSERT_TRUE(written[0].ok) << written[0].error;
    OIIO::ImageBuf image = readBack(written[0].path);
    const std::vector<std::string> names = {"R",        "G",   "B",   "albedo.R", "albedo.G",
                                            "albedo.B", "N.X", "N.Y", "N.Z",      "Z"};
    std::vector<int> channel;
    for (const std::string& name : names) {
        channel.push_back(image.nativespec().channelindex(name));
        ASSERT_GE(channel.back(), 0) << "no channel " << name;
    }
    EXPECT_EQ(image.nativespec().format, OIIO::TypeDesc::HALF);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const bool inside = kRegion.contains(x, y);
            const Color c = radianceAt(x, y);
            const float expected[] = {c.x, c.y, c.z, 0.25f, 0.5f, 0.75f, 0, 0.6f, -0.8f, float(x + y)};
            const std::vector<float> pixel = pixelAt(image, x, y);
            for (size_t i = 0; i < names.size(); ++i) {
                float want = inside ? expected[i] : 0.0f;
                // Half floats keep 11 significant bits.
                ASSERT_NEAR(pixel[size_t(channel[i])], want, std::abs(want) * 1e-3f + 1e-6f)
                    << names[i] << " at " << x << "," << y;
            }
        }
}

TEST_F(WriteImages, DisplayFormatsAreToneMappedAndBlackOutsideTheRegion) {
    const Film film = testFilm();
    const OutputPlan p = plan("", true, true, false);
    const auto written = writeImages(p, film);
    ASSERT_EQ(written.size(), 2u);
    const ToneMapper tone(p.tone);
    // JPEG is lossy within its 8x8 blocks: a block across the region's border rings, the others
    // stay within a step or two. TIFF is exact up to rounding.
    auto crossesBorder = [](int x, int y) {
        const int bx = x / 8 * 8, by = y / 8 * 8;
        bool anyInside = false, anyOutside = false;
        for (int j = by; j < by + 8; ++j)
            for (int i = bx; i < bx + 8; ++i)
                (kRegion.contains(i, j) ? anyInside : anyOutside) = true;
        return anyInside && anyOutside;
    };
    struct Format {
        const WrittenImage& file;
        float tolerance, borderTolerance; // in 8-bit steps
    };
    const Format formats[] = {{written[0], 2, 16}, {written[1], 0.5f, 0.5f}};
    for (const Format& f : formats) {
        ASSERT_TRUE(f.file.ok) << f.file.error;
        OIIO::ImageBuf image = readBack(f.file.path);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) {
                const std::vector<float> pixel = pixelAt(image, x, y);
                const Color want = kRegion.contains(x, y) ? tone(radianceAt(x, y)) : Color(0);
                const float tolerance = crossesBorder(x, y) ? f.borderTolerance : f.tolerance;
                for (int i = 0; i < 3; ++i)
                    ASSERT_NEAR(pixel[size_t(i)] * 255, want[i] * 255, tolerance)
                        << f.file.path << " channel " << i << " at " << x << "," << y;
            }
    }
}

TEST_F(WriteImages, SameFilmSameBytesAndRewritesReplace) {
    const Film film = testFilm();
    const auto first = writeImages(plan("a", true, true, true), film);
    const auto second = writeImages(plan("b", true, true, true), film);
    ASSERT_EQ(first.size(), 3u);
    ASSERT_EQ(second.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        ASSERT_TRUE(first[i].ok && second[i].ok) << first[i].error << second[i].error;
        const std::string bytes = fileBytes(first[i].path);
        EXPECT_FALSE(bytes.empty());
        EXPECT_EQ(bytes, fileBytes(second[i].path)) << first[i].path;
    }

    // A later save of a brighter film replaces the file in place.
    Film brighter(kWidth, kHeight, kRegion, true);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            brighter.add(x, y, Color(7), Color(1), Vec3(0, 1, 0), 1);
    const auto again = writeImages(plan("a", false, false, true), brighter);
    ASSERT_TRUE(again[0].ok) << again[0].error;
    EXPECT_EQ(pixelAt(readBack(again[0].path), kRegion.x, kRegion.y)[0], 7.0f);
}

TEST_F(WriteImages, FailuresAreReported) {
    fs::create_directories(folder_);
    std::ofstream(folder_ / "plain_file") << "not a folder";
    struct Case {
        const char* name;
        std::string subfolder;
        Film film;
    };
    const Case cases[] = {
        {"folder under a file", "plain_file/sub", testFilm()},
        {"image of no pixels", "empty", Film(0, 0, {}, true)},
    };
    for (const Case& c : cases) {
        const auto written = writeImages(plan(c.subfolder, true, true, true), c.film);
        ASSERT_EQ(written.size(), 3u) << c.name;
        for (const WrittenImage& w : written) {
            EXPECT_FALSE(w.ok) << c.name << ": " << w.path;
            EXPECT_FALSE(w.error.empty()) << c.name << ": " << w.path;
            EXPECT_FALSE(fs::exists(w.path)) << c.name << ": " << w.path;
            EXPECT_FALSE(fs::exists(w.path + ".tmp")) << c.name << ": " << w.path;
        }
    }
}

} // namespace
} // namespace preview

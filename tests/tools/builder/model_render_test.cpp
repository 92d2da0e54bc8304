// Real models of the assimp test set, built by tavi-build, read by tavi-inspect and rendered by
// the client with the preview engine: the pictures are there, match the references that were
// checked by eye, and follow a material document that the user edited.
#include "tests/tools/builder/builder_test_support.h"

#include "common/unicode.h"
#include "tests/support/client_sandbox.h"
#include "tools/inspector/inventory.h"

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;

struct Picture {
    int width = 0, height = 0;
    std::vector<float> rgb;

    float mean(int channel, int x0, int y0, int x1, int y1) const {
        double sum = 0;
        for (int y = y0; y < y1; ++y)
            for (int x = x0; x < x1; ++x) sum += rgb[3 * (size_t(y) * width + x) + channel];
        return static_cast<float>(sum / (double(x1 - x0) * (y1 - y0)));
    }
    float mean(int channel) const { return mean(channel, 0, 0, width, height); }
};

Picture readPicture(const std::string& path) {
    Picture picture;
    auto input = OIIO::ImageInput::open(path);
    if (!input) return picture;
    const OIIO::ImageSpec size = input->spec_dimensions(0);
    if (size.nchannels < 3) return picture;
    picture.width = size.width;
    picture.height = size.height;
    picture.rgb.resize(size_t(picture.width) * picture.height * 3);
    if (!input->read_image(0, 0, 0, 3, OIIO::TypeDesc::FLOAT, picture.rgb.data())) picture.rgb.clear();
    return picture;
}

// Builds `model` at a small size into `folder`, renders it there, and returns the EXR.
Picture buildAndRender(const std::string& model, const TempFolder& folder, int passes,
                       const std::vector<std::string>& extraArguments = {}, ClientRun* run = nullptr) {
    builder::BuildOptions options = quietOptions(model, folder.file("scene.tavi"));
    options.width = 48;
    options.height = 36;
    options.passes = passes;
    options.saveJpeg = false;
    options.saveExr = true;
    options.outputName = "picture";
    options.documentsFolder = folder.file("documents");
    builder::BuildReport report;
    std::string error;
    if (!builder::buildScene(options, report, error)) {
        ADD_FAILURE() << error;
        return {};
    }
    ClientSandbox sandbox(previewEnginePath());
    // Texture paths are relative to the scene's folder, which the user names with -textures.
    std::vector<std::string> arguments = {"-scene", folder.file("scene.tavi"), "-outputpath", folder.file("out"),
                                          "-textures", folder.path() + "/"};
    arguments.insert(arguments.end(), extraArguments.begin(), extraArguments.end());
    const ClientRun result = sandbox.run(arguments);
    if (run) *run = result;
    EXPECT_LE(result.exitStatus, 1) << result.output;
    return readPicture(folder.file("out/picture.exr"));
}

struct ModelCase {
    const char* file;
    size_t models, triangles, materials, textures;
};

// Counts from the files themselves (see model_build_test.cpp).
const ModelCase kModels[] = {
    {"glTF2/BoxTextured-glTF-Binary/BoxTextured.glb", 1, 12, 2, 1},
    {"OBJ/spider.obj", 19, 1368, 6, 5},
    {"PLY/cube.ply", 1, 12, 1, 0},
    {"Collada/duck.dae", 1, 4212, 1, 1},
};

TEST(ModelRender, InspectsWithTheSourcesCountsAndRendersAPicture) {
    for (const ModelCase& c : kModels) {
        SCOPED_TRACE(c.file);
        const std::string input = testModel(c.file);
        if (input.empty()) GTEST_SKIP() << "assimp-testmodels not installed";
        TempFolder folder;
        const Picture picture = buildAndRender(input, folder, 4);

        const inspector::Inspection inspection = inspector::inspectScene(utf8ToUtf16(folder.file("scene.tavi")));
        ASSERT_TRUE(inspection.verdict.accepted());
        EXPECT_EQ(inspection.inventory.models.size(), c.models);
        EXPECT_EQ(inspector::elementCount(inspection.inventory, inspector::ModelKind::Mesh), c.triangles);
        EXPECT_EQ(inspection.inventory.materials.size(), c.materials);
        EXPECT_EQ(inspection.inventory.textures.size(), c.textures);

        ASSERT_EQ(picture.width, 48);
        ASSERT_EQ(picture.height, 36);
        // A file with a light of its own gets no sky, so the background may be black: the model
        // must show in a fair share of the pixels.
        size_t lit = 0;
        for (size_t i = 0; i < picture.rgb.size(); i += 3)
            lit += picture.rgb[i] + picture.rgb[i + 1] + picture.rgb[i + 2] > 0.01f;
        EXPECT_GT(lit, picture.rgb.size() / 3 / 50) << "a picture, not black";
    }
}

// One model of each format, rendered at 48 x 36 with 128 samples a pixel, against a picture of
// the same scene that was looked at and found right (tests/data/reference/*.exr). Each block of
// 8 x 6 pixels must agree within 6 % + 0.01 in every channel: samples differ between compilers
// once a path's arithmetic does, and 6000 samples a block keep the noise well inside that.
// TAVI_WRITE_REFERENCES=1 writes the pictures instead, to be looked at before they are kept.
TEST(ModelRender, MatchesThePictureCheckedByEye) {
    const char* const models[][2] = {
        {"glTF2/BoxTextured-glTF-Binary/BoxTextured.glb", "box_textured_gltf"},
        {"OBJ/spider.obj", "spider_obj"},
        {"PLY/cube.ply", "cube_ply"},
    };
    const bool write = std::getenv("TAVI_WRITE_REFERENCES") != nullptr;
    for (const auto& model : models) {
        SCOPED_TRACE(model[0]);
        const std::string input = testModel(model[0]);
        if (input.empty()) GTEST_SKIP() << "assimp-testmodels not installed";
        TempFolder folder;
        const Picture picture = buildAndRender(input, folder, 128);
        ASSERT_FALSE(picture.rgb.empty());
        const std::string reference = std::string(TAVI_REFERENCE_IMAGES) + "/" + model[1] + ".exr";
        if (write) {
            fs::copy_file(folder.file("out/picture.exr"), reference, fs::copy_options::overwrite_existing);
            continue;
        }
        const Picture expected = readPicture(reference);
        ASSERT_EQ(expected.width, picture.width) << reference;
        ASSERT_EQ(expected.height, picture.height) << reference;
        for (int y = 0; y < picture.height; y += 6)
            for (int x = 0; x < picture.width; x += 8)
                for (int channel = 0; channel < 3; ++channel) {
                    const float got = picture.mean(channel, x, y, x + 8, y + 6);
                    const float want = expected.mean(channel, x, y, x + 8, y + 6);
                    EXPECT_NEAR(got, want, 0.06f * std::max(got, want) + 0.01f)
                        << "block at " << x << "," << y << " channel " << channel;
                }
    }
}

std::string readText(const std::string& path) {
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The user's path: build with --documents, edit a material's document, render with -materials.
TEST(ModelRender, AnEditedMaterialDocumentChangesThePicture) {
    const std::string input = testModel("OBJ/box.obj");
    if (input.empty()) GTEST_SKIP() << "assimp-testmodels not installed";
    TempFolder folder;
    const Picture before = buildAndRender(input, folder, 16);
    ASSERT_FALSE(before.rgb.empty());
    // The box stands in the middle of the frame, framed by tavi-build's default view, under a
    // blue sky: what changes is the colour there.
    auto redness = [](const Picture& p) { return p.mean(0, 18, 12, 30, 24) / p.mean(2, 18, 12, 30, 24); };

    // Every material's front turns red.
    const std::string grey = "<FrontColor R=\"0.600000024\" G=\"0.600000024\" B=\"0.600000024\" />";
    int edited = 0;
    for (const auto& entry : fs::directory_iterator(folder.file("documents/materials"))) {
        std::string text = readText(entry.path().string());
        const size_t at = text.find(grey);
        if (at == std::string::npos) continue;
        text.replace(at, grey.size(), "<FrontColor R=\"0.9\" G=\"0.05\" B=\"0.05\" />");
        writeText(entry.path().string(), text);
        ++edited;
    }
    ASSERT_GT(edited, 0) << "the documents hold the box's grey";

    ClientSandbox sandbox(previewEnginePath());
    const ClientRun run = sandbox.run({"-scene", folder.file("scene.tavi"), "-outputpath", folder.file("edited"),
                                       "-materials", folder.file("documents/materials/")});
    EXPECT_LE(run.exitStatus, 1) << run.output;
    const Picture after = readPicture(folder.file("edited/picture.exr"));
    ASSERT_FALSE(after.rgb.empty()) << run.output;
    EXPECT_GT(redness(after), 3 * redness(before)) << "the box is red now";
}

} // namespace

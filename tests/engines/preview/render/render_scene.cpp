#include "tests/engines/preview/render/render_scene.h"

#include "scene/records.h"

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imageio.h>

#include <cstddef>

namespace preview_test {

using namespace scene_writer;

Rgb Image::at(int x, int y) const {
    const float* p = &rgb[3 * (size_t(y) * width + x)];
    return {p[0], p[1], p[2]};
}

Rgb Image::mean(int x0, int y0, int x1, int y1) const {
    double r = 0, g = 0, b = 0;
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x) {
            const Rgb c = at(x, y);
            r += c.r, g += c.g, b += c.b;
        }
    const double n = double(x1 - x0) * (y1 - y0);
    return {float(r / n), float(g / n), float(b / n)};
}

Image readExr(const std::string& path) {
    Image image;
    OIIO::ImageBuf file(path);
    if (!file.read(0, 0, true, OIIO::TypeDesc::FLOAT)) return image;
    const OIIO::ImageSpec& header = file.nativespec();
    std::vector<float> all(size_t(header.width) * header.height * header.nchannels);
    if (!file.get_pixels(OIIO::ROI::All(), OIIO::TypeDesc::FLOAT, all.data())) return image;
    const int r = header.channelindex("R"), g = header.channelindex("G"), b = header.channelindex("B");
    if (r < 0 || g < 0 || b < 0) return image;
    image.width = header.width;
    image.height = header.height;
    image.rgb.resize(size_t(header.width) * header.height * 3);
    for (size_t i = 0; i < size_t(header.width) * header.height; ++i) {
        image.rgb[3 * i] = all[i * header.nchannels + r];
        image.rgb[3 * i + 1] = all[i * header.nchannels + g];
        image.rgb[3 * i + 2] = all[i * header.nchannels + b];
    }
    return image;
}

RenderScene::RenderScene(int width, int height, int passes) {
    settings.imageSizeX = width;
    settings.imageSizeY = height;
    settings.maxIterations = passes;
    settings.saveJpeg = false;
    settings.saveExr = true;
    settings.outputName = "frame";
    settings.startingVolumetricMaterial = -1;
}

void RenderScene::camera(const Bytes& image, const CameraPathPlan& path) {
    chunks_.push_back(zstdChunk(kCamera, image));
    chunks_.push_back(storedChunk(kCameraPath, cameraPathBody(path)));
}

void RenderScene::light(const LightPlan& plan) {
    chunks_.push_back(zstdChunk(kLight, lightImage(plan), lightVersion(plan.type)));
    chunks_.push_back(storedChunk(kLightPath, lightPathBody(lightPath(plan))));
}

void RenderScene::material(const RecordBuilder& material) { chunks_.push_back(zstdChunk(kMaterial, material.body())); }
void RenderScene::texMap(const RecordBuilder& texmap) { chunks_.push_back(zstdChunk(kTexMap, texmap.body())); }
void RenderScene::texture(const TextureDataPlan& texture) {
    chunks_.push_back(zstdChunk(kTextureData, textureDataBody(texture)));
}
void RenderScene::mesh(const MeshPlan& mesh) { chunks_.push_back(zstdChunk(kTriangleMesh, meshBody(mesh))); }
void RenderScene::fur(const CloudPlan& fur) { chunks_.push_back(zstdChunk(kFur, furBody(fur))); }
void RenderScene::sprites(const CloudPlan& sprites) { chunks_.push_back(zstdChunk(kSprites, spriteBody(sprites))); }

ClientRun RenderScene::render(ClientSandbox& sandbox, Image* image) const {
    SceneFile file;
    Bytes body = settingsBody(settings);
    put32(body, offsetof(SettingsRecord, MaxDepth), static_cast<uint32_t>(maxDepth));
    put32(body, offsetof(SettingsRecord, RussianRouletteStartDepth), static_cast<uint32_t>(rouletteStartDepth));
    file.add(zstdChunk(kSettings, body));
    for (const Chunk& chunk : chunks_) file.add(chunk);
    const std::string scenePath = sandbox.path("scene.tavi");
    file.write(scenePath);
    const ClientRun run = sandbox.run({"-scene", scenePath, "-outputpath", sandbox.path("out")});
    if (image) *image = readExr(sandbox.path("out/" + settings.outputName + ".exr"));
    return run;
}

} // namespace preview_test

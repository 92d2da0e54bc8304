// Scenes for the preview engine's end-to-end tests: written by the scene writer, rendered by the
// real client with the preview engine beside it, the EXR read back.
#pragma once
#include "tests/support/client_sandbox.h"
#include "tools/scene_writer/preview_builders.h"

#include <string>
#include <vector>

namespace preview_test {

struct Rgb {
    float r = 0, g = 0, b = 0;
};

struct Image {
    int width = 0, height = 0;
    std::vector<float> rgb; // three floats a pixel, rows from the top

    bool empty() const { return rgb.empty(); }
    Rgb at(int x, int y) const;
    // The mean over the pixels [x0, x1) x [y0, y1).
    Rgb mean(int x0, int y0, int x1, int y1) const;
};

// Reads R, G, B of an EXR by channel name; an empty image when it can't.
Image readExr(const std::string& path);

class RenderScene {
  public:
    RenderScene(int width, int height, int passes);

    scene_writer::SettingsPlan settings;
    int32_t maxDepth = 10;
    int32_t rouletteStartDepth = 10;

    void camera(const scene_writer::Bytes& image, const scene_writer::CameraPathPlan& path);
    void light(const scene_writer::LightPlan& plan);
    void material(const scene_writer::RecordBuilder& material);
    void texMap(const scene_writer::RecordBuilder& texmap);
    void texture(const scene_writer::TextureDataPlan& texture);
    void mesh(const scene_writer::MeshPlan& mesh);
    void fur(const scene_writer::CloudPlan& fur);
    void sprites(const scene_writer::CloudPlan& sprites);

    // Renders in a fresh sandbox; `image` gets the EXR (settings.saveExr is set).
    ClientRun render(ClientSandbox& sandbox, Image* image) const;

  private:
    std::vector<scene_writer::Chunk> chunks_;
};

} // namespace preview_test

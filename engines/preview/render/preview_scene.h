// Everything the engine keeps between beginScene and render, and the render itself: the parts
// (materials, maps, lights, geometry, camera) filled by the add... calls, then built, rendered
// and written out by render().
#pragma once
#include "engines/preview/materials/material_set.h"
#include "engines/preview/render/camera.h"
#include "engines/preview/render/lights.h"
#include "engines/preview/render/scene_geometry.h"
#include "engines/preview/render/warnings.h"
#include "engines/preview/texmaps/texmap_set.h"
#include "scene/records.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

class ITaviRenderCallback;
class TempCamera;
class TempLight;

namespace preview {

class PreviewScene {
  public:
    PreviewScene();
    // The settings of the run; materials and maps may arrive before them, everything else after.
    void begin(const SettingsRecord& settings);

    WarningLog& warnings() { return warnings_; }
    MaterialSet& materials() { return materials_; }
    TexMapSet& maps() { return maps_; }
    SceneGeometry& geometry() { return geometry_; }

    void addCamera(const TempCamera& camera);
    void addLight(const TempLight& light);

    // Builds what the render needs, renders every pass and writes the images; a status level.
    int32_t render(ITaviRenderCallback* callback);
    // The images written by the last render, UTF-8.
    const std::vector<std::string>& written() const { return written_; }

  private:
    std::unique_ptr<SettingsRecord> settings_;
    double seconds_ = 0;
    WarningLog warnings_;
    MaterialSet materials_;
    TexMapSet maps_;
    LightSet lights_;
    SceneGeometry geometry_;
    std::optional<Camera> camera_;
    bool animated_ = false;
    std::vector<std::string> written_;
};

} // namespace preview

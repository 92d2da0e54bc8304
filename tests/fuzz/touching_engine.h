// An engine that lives in the fuzzer's own process: it answers every operation with "all
// well" and reads every byte that the boundary hands it, records and geometry arrays over the
// lengths their counts give, so that the address sanitizer sees a short array or a stale
// pointer where a real engine would fall over it.
#pragma once
#include "bridge/tracer.h"

#include <cstddef>
#include <cstdint>

class TouchingEngine final : public ITaviTracer {
  public:
    int32_t initialise(const char16_t* libraryPath) override;
    int32_t reserved1() override { return 0; }
    int32_t reserved2() override { return 0; }
    int32_t reserved3() override { return 0; }
    int32_t reserved4() override { return 0; }
    int32_t shutdown(ITaviRenderCallback* callback) override;
    int32_t beginScene(SettingsRecord* settings, ITaviRenderCallback* callback, int32_t zero) override;
    int32_t addTextureFolder(const char16_t* folder) override;
    int32_t addMaterial(MaterialRecord* material) override;
    int32_t addTexMap(TexMapRecord* texmap) override;
    int32_t addTextureData(TextureDataRecord* texture, ITaviRenderCallback* callback) override;
    int32_t addTextureFile(TextureFileRecord* texture, ITaviRenderCallback* callback) override;
    int32_t endLights() override { return 0; }
    int32_t addTriangleMeshes(bridgeTriangleMesh* head, ITaviRenderCallback* callback) override;
    int32_t addFur(bridgeFurMesh* head, ITaviRenderCallback* callback) override;
    int32_t addSprites(bridgeSprMesh* head, ITaviRenderCallback* callback) override;
    int32_t endScene(ITaviRenderCallback* callback) override;
    int32_t reserved17() override { return 0; }
    int32_t reserved18() override { return 0; }
    int32_t addLight(bridgeLight* light) override;
    int32_t addCamera(bridgeCamera* camera) override;
    int32_t endGeometry() override { return 0; }
    int32_t render(ITaviRenderCallback* callback) override;

    // Calls received, for the targets' own checks.
    uint32_t materialsAdded = 0;
    uint32_t texmapsAdded = 0;

  private:
    void touch(const void* bytes, uint64_t length);
    void touchText(const char16_t* text);

    uint64_t sum_ = 0;
};

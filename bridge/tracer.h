// The engine object behind the module's exported `pTaviTracer`.
#pragma once
#include "bridge/bridge_objects.h"
#include "bridge/render_callback.h"

#include <cstdint>

struct SettingsRecord;
struct MaterialRecord;
struct TexMapRecord;
struct TextureDataRecord;
struct TextureFileRecord;

// Every operation answers with a status level: 0 all well, 1 warnings, 2 errors,
// 3 unusable scene, 4 out of memory. Slot order is part of the binary boundary.
// The reserved slots are never called by the client, but their places must be kept.
class ITaviTracer {
  public:
    virtual int32_t initialise(const char16_t* libraryPath) = 0;                              // 0
    virtual int32_t reserved1() = 0;                                                           // 1
    virtual int32_t reserved2() = 0;                                                           // 2
    virtual int32_t reserved3() = 0;                                                           // 3
    virtual int32_t reserved4() = 0;                                                           // 4
    virtual int32_t shutdown(ITaviRenderCallback* callback) = 0;                              // 5
    virtual int32_t beginScene(SettingsRecord* settings, ITaviRenderCallback* callback, int32_t zero) = 0; // 6
    virtual int32_t addTextureFolder(const char16_t* folder) = 0;                             // 7
    virtual int32_t addMaterial(MaterialRecord* material) = 0;                                // 8
    virtual int32_t addTexMap(TexMapRecord* texmap) = 0;                                      // 9
    virtual int32_t addTextureData(TextureDataRecord* texture, ITaviRenderCallback* callback) = 0; // 10
    virtual int32_t addTextureFile(TextureFileRecord* texture, ITaviRenderCallback* callback) = 0; // 11
    virtual int32_t endLights() = 0;                                                           // 12
    virtual int32_t addTriangleMeshes(bridgeTriangleMesh* head, ITaviRenderCallback* callback) = 0; // 13
    virtual int32_t addFur(bridgeFurMesh* head, ITaviRenderCallback* callback) = 0;           // 14
    virtual int32_t addSprites(bridgeSprMesh* head, ITaviRenderCallback* callback) = 0;       // 15
    virtual int32_t endScene(ITaviRenderCallback* callback) = 0;                              // 16
    virtual int32_t reserved17() = 0;                                                          // 17
    virtual int32_t reserved18() = 0;                                                          // 18
    virtual int32_t addLight(bridgeLight* light) = 0;                                         // 19
    virtual int32_t addCamera(bridgeCamera* camera) = 0;                                      // 20
    virtual int32_t endGeometry() = 0;                                                         // 21
    virtual int32_t render(ITaviRenderCallback* callback) = 0;                                // 22

  protected:
    ~ITaviTracer() = default;
};

// Name of the data symbol that an engine module exports with C linkage:
//   extern "C" { TAVI_ENGINE_EXPORT ITaviTracer* pTaviTracer = &theEngine; }
#define TAVI_TRACER_SYMBOL "pTaviTracer"

#if defined(_WIN32)
#define TAVI_ENGINE_EXPORT __declspec(dllexport)
#else
#define TAVI_ENGINE_EXPORT __attribute__((visibility("default")))
#endif

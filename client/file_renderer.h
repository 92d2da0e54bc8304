// The one object that carries a run: both callback interfaces of the engine, the engine
// module itself, the run's status and the texts of its errors and warnings.
#pragma once
#include "bridge/name_interface.h"
#include "bridge/render_callback.h"
#include "bridge/tracer.h"
#include "client/client_options.h"
#include "client/name_table.h"
#include "client/registry_entries.h"
#include "platform/module.h"
#include "scene/temp_objects.h"

#include <cstdint>
#include <string>

// Status levels, kept as the worst so far.
enum StatusLevel : int32_t {
    StatusOk = 0,
    StatusWarnings = 1,
    StatusErrors = 2,
    StatusUnusable = 3,
    StatusOutOfMemory = 4,
};

// Marks that the progress bar has to be begun again.
constexpr int32_t kStageRestart = static_cast<int32_t>(0x80000001u);

extern double gRunStartSeconds;
extern double gRenderStartSeconds;
extern int64_t gLastTitleSecond;

double elapsedSeconds();

class FileRenderer final : public ITaviNameInterface, public ITaviRenderCallback {
  public:
    explicit FileRenderer(ClientOptions* options);
    ~FileRenderer();
    FileRenderer(const FileRenderer&) = delete;
    FileRenderer& operator=(const FileRenderer&) = delete;

    int32_t loadScene();
    void releaseRecords();
    // Runs the engine over the loaded scene and returns the final level.
    int32_t renderLoaded(int32_t loadResult);
    void raiseStatus(int32_t level) {
        if (level > status) status = level;
    }

    // ITaviNameInterface
    int32_t* GetTextureId(int32_t* result, const char16_t* name) override;
    const char16_t* GetTextureName(int32_t id) override;
    int32_t* GetTexMapId(int32_t* result, const char16_t* name) override;
    const char16_t* GetTexMapName(int32_t id) override;
    int32_t* GetMaterialId(int32_t* result, const char16_t* name) override;
    const char16_t* GetMaterialName(int32_t id) override;
    uint64_t GetModelId(const char16_t* name) override;
    const char16_t* GetModelName() override;
    void* destroy(uint32_t flags) override;

    // ITaviRenderCallback
    bool onProgress(const ProgressInfo* info) override;
    bool peekCommand(int32_t* command) override;
    int32_t queryZero() override;
    bool peekViewState(ViewState* state) override;
    bool queryInteractive() override;
    void notifyStart() override {}
    void notifySceneReady() override {}
    void notifyPass() override {}
    void notifyStop() override {}
    bool queryPreview() override;
    bool queryAbort() override;
    void notifyImage() override {}
    Value16* filterValue(Value16* result, const Value16* source) override;
    Value16* defaultValue(Value16* result) override;
    bool acceptSave() override;
    bool acceptOutput() override;
    void reportError(const char16_t* text, int64_t code) override;
    void reportWarning(const char16_t* text, int64_t code) override;
    void reportInfo(const char16_t* text) override;

    // Registries. The lookup-only forms never create and never touch a folder.
    int32_t findOrCreateTexture(const char16_t* name, bool lookupOnly);
    int32_t findOrCreateTexMap(const char16_t* name, bool lookupOnly);
    int32_t findOrCreateMaterial(const char16_t* name, bool lookupOnly);

    ClientOptions* options;
    NameTable textureNames, texmapNames, materialNames, modelNames;
    NameTable textureIds, texmapIds, materialIds;
    TextureFileEntry* textureFiles = nullptr;
    TextureDataEntry* textureData = nullptr;
    TexMapEntry* texmapRecords = nullptr;
    MaterialEntry* materialRecords = nullptr;
    ModelNameRecord* modelRecords = nullptr;
    IdCounter nextTextureId{0};
    IdCounter nextTexmapId{0};
    IdCounter nextMaterialId{0};
    // Names whose documents are being read to create them, innermost first. Such an item is
    // registered only once its document is read, so a document that names itself, or a ring
    // of documents naming each other, is caught here rather than read again without end.
    struct Creation {
        const char16_t* name;
        const void* kind;
        const Creation* outer;
    };
    const Creation* creating = nullptr;
    TempCamera tempCamera;
    platform::ModuleHandle library = nullptr;
    ITaviTracer* tracer = nullptr;
    bool resolving = false;
    bool rendering = false;
    bool messageShown = false;
    int32_t status = StatusOk;
    int32_t lastStage = kStageRestart;
    int32_t starsPrinted = 0;
    std::u16string errorText;
    std::u16string warningText;

    // The registry node of a texture map or material by name, without creating one.
    template <class Kind>
    typename Kind::Entry* findAsset(const char16_t* name);

  private:
    TextureEntryHead* findTexture(const char16_t* name) const;

    void beginMessageLine();
    void reportMessage(std::u16string& target, const char16_t* text);
    void beginProgressFrame(int32_t stage, double now);
    void updateRenderTitle(const ProgressInfo& info, double now);
};

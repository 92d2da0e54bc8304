// An engine module built by clang for the Microsoft C++ ABI, the one that Windows compilers other
// than MinGW's use, with no C or C++ runtime: nothing runs before the client's first call, so all
// state is static and constant-initialised. It renders nothing. It records the calls that arrive
// and, during `render`, asks every callback of the client and reports what it found through the
// client's own report calls, so that a run shows whether the boundary holds across the two ABIs.
#include "bridge/tracer.h"

// The compiler refers to this symbol from any code that uses floating point; the C runtime
// normally defines it.
extern "C" int _fltused = 0;

namespace {

// ---------------------------------------------------------------- text without a runtime

template <size_t Capacity> class Text {
  public:
    void append(const char16_t* text) {
        for (; *text; ++text) {
            if (length_ + 1 == Capacity) {
                cut_ = true;
                return;
            }
            units_[length_++] = *text;
        }
    }
    void clear() { length_ = 0; }
    bool cut() const { return cut_; }
    const char16_t* c_str() {
        units_[length_] = 0;
        return units_;
    }

  private:
    char16_t units_[Capacity] = {};
    size_t length_ = 0;
    bool cut_ = false;
};

// ---------------------------------------------------------------- the client's callbacks

// What a client that renders to files answers; the calls that answer nothing must at least land
// in their own slots, where a wrong slot would take the run down.
bool quietCommand(ITaviRenderCallback& client) {
    int32_t command = 7;
    return !client.peekCommand(&command) && command == 0;
}

bool fixedViewState(ITaviRenderCallback& client) {
    ViewState state{{1, 1, 1, 1}};
    const uint32_t minusTen = 0xC1200000u;
    return !client.peekViewState(&state) && state.words[0] == 0 && state.words[1] == 0x00FF0101u &&
           state.words[2] == minusTen && state.words[3] == minusTen;
}

bool sameValue(ITaviRenderCallback& client) {
    Value16 source, result;
    for (uint8_t i = 0; i < 16; ++i) {
        source.bytes[i] = uint8_t(i * 7 + 1);
        result.bytes[i] = 0xEE;
    }
    if (client.filterValue(&result, &source) != &result) return false;
    for (uint8_t i = 0; i < 16; ++i)
        if (result.bytes[i] != source.bytes[i]) return false;
    return true;
}

bool zeroValue(ITaviRenderCallback& client) {
    Value16 result;
    for (uint8_t& byte : result.bytes) byte = 0xEE;
    if (client.defaultValue(&result) != &result) return false;
    for (uint8_t byte : result.bytes)
        if (byte != 0) return false;
    return true;
}

bool silentNotices(ITaviRenderCallback& client) {
    client.notifyStart();
    client.notifySceneReady();
    client.notifyPass();
    client.notifyStop();
    client.notifyImage();
    return true;
}

struct CallbackCheck {
    const char16_t* failure;
    bool (*answersAsSpecified)(ITaviRenderCallback&);
};

const CallbackCheck kCallbackChecks[] = {
    {u"MSVC ABI engine: peekCommand answered otherwise than a file client", quietCommand},
    {u"MSVC ABI engine: queryZero answered otherwise than a file client",
     [](ITaviRenderCallback& c) { return c.queryZero() == 0; }},
    {u"MSVC ABI engine: peekViewState answered otherwise than a file client", fixedViewState},
    {u"MSVC ABI engine: queryInteractive answered otherwise than a file client",
     [](ITaviRenderCallback& c) { return !c.queryInteractive(); }},
    {u"MSVC ABI engine: queryPreview answered otherwise than a file client",
     [](ITaviRenderCallback& c) { return !c.queryPreview(); }},
    {u"MSVC ABI engine: queryAbort answered otherwise than a file client",
     [](ITaviRenderCallback& c) { return !c.queryAbort(); }},
    {u"MSVC ABI engine: filterValue answered otherwise than a file client", sameValue},
    {u"MSVC ABI engine: defaultValue answered otherwise than a file client", zeroValue},
    {u"MSVC ABI engine: acceptSave answered otherwise than a file client",
     [](ITaviRenderCallback& c) { return c.acceptSave(); }},
    {u"MSVC ABI engine: acceptOutput answered otherwise than a file client",
     [](ITaviRenderCallback& c) { return c.acceptOutput(); }},
    {u"MSVC ABI engine: a notice went astray", silentNotices},
};

// Both stages of the progress bar; the client answers each report with "go on".
bool progressAccepted(ITaviRenderCallback& client) {
    const ProgressInfo statistics{0.5f, 0, 0, 0};
    const ProgressInfo rendering{1.0f, 1, 0, 1};
    const bool first = client.onProgress(&statistics);
    const bool second = client.onProgress(&rendering);
    return first && second;
}

// ---------------------------------------------------------------- the engine

class MsvcAbiEngine final : public ITaviTracer {
  public:
    int32_t initialise(const char16_t* libraryPath) override {
        arrived(u"initialise");
        module_.clear();
        module_.append(u"MSVC ABI engine: module ");
        module_.append(libraryPath);
        return 0;
    }
    int32_t reserved1() override { return arrived(u"reserved1"); }
    int32_t reserved2() override { return arrived(u"reserved2"); }
    int32_t reserved3() override { return arrived(u"reserved3"); }
    int32_t reserved4() override { return arrived(u"reserved4"); }
    int32_t shutdown(ITaviRenderCallback* client) override {
        arrived(u"shutdown");
        report_.clear();
        report_.append(u"MSVC ABI engine: calls");
        report_.append(calls_.c_str());
        if (calls_.cut()) report_.append(u" ...");
        client->reportInfo(report_.c_str());
        return 0;
    }
    int32_t beginScene(SettingsRecord*, ITaviRenderCallback*, int32_t) override { return arrived(u"beginScene"); }
    int32_t addTextureFolder(const char16_t*) override { return arrived(u"addTextureFolder"); }
    int32_t addMaterial(MaterialRecord*) override { return arrived(u"addMaterial"); }
    int32_t addTexMap(TexMapRecord*) override { return arrived(u"addTexMap"); }
    int32_t addTextureData(TextureDataRecord*, ITaviRenderCallback*) override { return arrived(u"addTextureData"); }
    int32_t addTextureFile(TextureFileRecord*, ITaviRenderCallback*) override { return arrived(u"addTextureFile"); }
    int32_t endLights() override { return arrived(u"endLights"); }
    int32_t addTriangleMeshes(bridgeTriangleMesh*, ITaviRenderCallback*) override {
        return arrived(u"addTriangleMeshes");
    }
    int32_t addFur(bridgeFurMesh*, ITaviRenderCallback*) override { return arrived(u"addFur"); }
    int32_t addSprites(bridgeSprMesh*, ITaviRenderCallback*) override { return arrived(u"addSprites"); }
    int32_t endScene(ITaviRenderCallback*) override { return arrived(u"endScene"); }
    int32_t reserved17() override { return arrived(u"reserved17"); }
    int32_t reserved18() override { return arrived(u"reserved18"); }
    int32_t addLight(bridgeLight*) override { return arrived(u"addLight"); }
    int32_t addCamera(bridgeCamera*) override { return arrived(u"addCamera"); }
    int32_t endGeometry() override { return arrived(u"endGeometry"); }

    int32_t render(ITaviRenderCallback* client) override {
        arrived(u"render");
        int32_t level = 0;
        for (const CallbackCheck& check : kCallbackChecks) {
            if (check.answersAsSpecified(*client)) continue;
            client->reportError(check.failure, 0);
            level = 2;
        }
        if (!progressAccepted(*client)) {
            client->reportError(u"MSVC ABI engine: the client refused the progress", 0);
            level = 2;
        }
        client->reportInfo(module_.c_str());
        client->reportWarning(u"MSVC ABI engine: no image rendered", 0);
        return level;
    }

  private:
    int32_t arrived(const char16_t* operation) {
        calls_.append(u" ");
        calls_.append(operation);
        return 0;
    }

    Text<1024> module_;
    Text<8192> calls_;
    Text<8192> report_;
};

// A dynamic initialiser would never run: there is no runtime to call it.
[[clang::require_constant_initialization]] MsvcAbiEngine gEngine;

} // namespace

extern "C" {
TAVI_ENGINE_EXPORT ITaviTracer* pTaviTracer = &gEngine;
}

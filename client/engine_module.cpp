#include "client/engine_module.h"

#include "client/messages.h"
#include "common/wide_format.h"

namespace {

constexpr size_t kModulePathCapacity = 1024;
// A module path this long leaves no room for the engine's name in the original buffers.
constexpr size_t kModulePathLimit = 384;
constexpr char16_t kEngineName[] = u"TaviTracerAVX";

size_t boundedLength(const char16_t* text, size_t limit) {
    size_t n = 0;
    while (n < limit && text[n]) ++n;
    return n;
}

bool isPathSeparator(char16_t c) { return c == u'/' || c == u':' || c == u'\\'; }

void replaceFileName(char16_t* path, size_t length) {
    size_t index = length;
    while (index > 0 && !isPathSeparator(path[index - 1])) --index;
    std::u16string name = formatWide(u"%ls%ls", kEngineName, platform::kModuleSuffix);
    copyBounded(path + index, kModulePathCapacity - index, name.c_str());
}

} // namespace

EngineModule::~EngineModule() { platform::unloadModule(library_); }

bool EngineModule::start(MessageLog& log) {
    char16_t path[kModulePathCapacity];
    platform::executablePath(path, kModulePathCapacity);
    size_t length = boundedLength(path, kModulePathLimit);
    if (length >= kModulePathLimit) return false;
    replaceFileName(path, length);
    library_ = platform::loadModule(path);
    if (!library_) {
        log.error(messages::kLibraryNotFound);
        return false;
    }
    void* symbol = platform::findSymbol(library_, TAVI_TRACER_SYMBOL);
    tracer_ = symbol ? *static_cast<ITaviTracer**>(symbol) : nullptr;
    if (!tracer_) {
        log.error(messages::kInvalidLibrary);
        return false;
    }
    tracer_->initialise(path);
    return true;
}

void EngineModule::shutdown(MessageLog& log, ITaviRenderCallback* callback) {
    if (!tracer_) return;
    log.info(messages::kClosingRenderer);
    tracer_->shutdown(callback);
    tracer_ = nullptr;
}

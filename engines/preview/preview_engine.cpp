// The preview engine module: the one tracer object it exports.
#include "engines/preview/render/preview_tracer.h"

namespace {

class ModuleTracer final : public preview::PreviewTracer {};

ModuleTracer gEngine;

} // namespace

extern "C" {
TAVI_ENGINE_EXPORT ITaviTracer* pTaviTracer = &gEngine;
}

// The engine module, sought in the executable's own folder, and the tracer it exports.
#pragma once
#include "bridge/render_callback.h"
#include "bridge/tracer.h"
#include "client/message_log.h"
#include "platform/module.h"

class EngineModule {
  public:
    EngineModule() = default;
    ~EngineModule();
    EngineModule(const EngineModule&) = delete;
    EngineModule& operator=(const EngineModule&) = delete;

    // Loads and initialises the engine; false when there is none to use, the reason logged
    // where the user is told one.
    bool start(MessageLog& log);
    // An engine already in the process, for driving the client without a module.
    void attach(ITaviTracer* tracer) { tracer_ = tracer; }
    // Lets a started engine close down; the module itself stays loaded until destruction.
    void shutdown(MessageLog& log, ITaviRenderCallback* callback);

    ITaviTracer* tracer() const { return tracer_; }

  private:
    platform::ModuleHandle library_ = nullptr;
    ITaviTracer* tracer_ = nullptr;
};

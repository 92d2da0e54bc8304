// The engine's problems, counted by kind, so that a scene with a million bad triangles gives
// one warning that says how many, not a million.
#pragma once
#include "engines/preview/shading.h"

#include <map>
#include <mutex>
#include <string>

class ITaviRenderCallback;

namespace preview {

class WarningLog {
  public:
    void note(const std::string& kind, int count = 1);
    WarningSink sink() {
        return [this](const std::string& kind) { note(kind); };
    }
    // Hands every kind noted since the last call to `callback` (one reportWarning each, with its
    // count when above one) and forgets them; true when there were any.
    bool flush(ITaviRenderCallback* callback);
    // How many notes were taken since the log began, flushed ones included.
    size_t noted() const;

  private:
    mutable std::mutex mutex_;
    std::map<std::string, int> counts_; // ordered, so the reports come in a stable order
    size_t noted_ = 0;
};

} // namespace preview

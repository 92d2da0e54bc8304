#include "engines/preview/render/warnings.h"

#include "bridge/render_callback.h"
#include "common/unicode.h"

namespace preview {

void WarningLog::note(const std::string& kind, int count) {
    if (count <= 0) return;
    std::lock_guard<std::mutex> lock(mutex_);
    counts_[kind] += count;
    noted_ += static_cast<size_t>(count);
}

size_t WarningLog::noted() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return noted_;
}

bool WarningLog::flush(ITaviRenderCallback* callback) {
    std::map<std::string, int> counts;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        counts.swap(counts_);
    }
    if (callback)
        for (const auto& [kind, count] : counts) {
            std::string text = "Preview engine: " + kind;
            if (count > 1) text += " (" + std::to_string(count) + " times)";
            callback->reportWarning(utf8ToUtf16(text).c_str(), 0);
        }
    return !counts.empty();
}

} // namespace preview

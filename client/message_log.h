// What went wrong in a run: the worst status level so far and the texts of the errors and
// warnings, which the final report repeats. Every message is also shown as it comes.
#pragma once
#include "client/progress_display.h"

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

class MessageLog {
  public:
    // Messages during rendering interrupt `progress`.
    explicit MessageLog(ProgressDisplay& progress) : progress_(progress) {}

    void raise(int32_t level) {
        if (level > level_) level_ = level;
    }
    // Forgets the levels of an earlier load.
    void resetLevel() { level_ = StatusOk; }
    int32_t level() const { return level_; }

    // The text is the format: engines rely on "%%" printing as one percent sign.
    void error(const char16_t* text) { collect(errors_, text); }
    void warning(const char16_t* text) { collect(warnings_, text); }
    // Shown as it stands, and not kept.
    void info(const char16_t* text);
    // An error that costs the run at least `level`.
    void fail(const char16_t* text, int32_t level) {
        error(text);
        raise(level);
    }

    const std::u16string& errors() const { return errors_; }
    const std::u16string& warnings() const { return warnings_; }

  private:
    void collect(std::u16string& target, const char16_t* text);

    ProgressDisplay& progress_;
    int32_t level_ = StatusOk;
    std::u16string errors_;
    std::u16string warnings_;
};

// The progress bar and the console title while the engine renders, with the clock they read.
// Messages printed meanwhile break the bar; the next progress call draws a fresh frame.
#pragma once
#include "bridge/render_callback.h"

#include <cstdint>
#include <string>

// Marks that the progress bar has to be begun again.
constexpr int32_t kStageRestart = static_cast<int32_t>(0x80000001u);

// Seconds on the performance counter (or, without one, the tick count) since its first reading.
class RunClock {
  public:
    double now();

  private:
    int64_t base_ = 0;
    int64_t frequency_ = 0;
};

class ProgressDisplay {
  public:
    // The titles name the scene; `scenePath` must outlive the display.
    explicit ProgressDisplay(const std::u16string& scenePath) : scenePath_(scenePath) {}

    // "elapsed" in the title counts from here.
    void startRun() { runStart_ = clock_.now(); }
    // Progress is shown only between these two.
    void beginRendering();
    void endRendering();
    void show(const ProgressInfo& info);

    // Around every message: it must not share the bar's line, and the bar is drawn anew after it.
    void beforeMessage();
    void afterMessage();

    bool rendering() const { return rendering_; }
    int32_t stage() const { return lastStage_; }
    bool messageShown() const { return messageShown_; }
    // When the current rendering stage began; the remaining time extrapolates from it.
    double renderStart() const { return renderStart_; }

  private:
    void beginFrame(int32_t stage, double now);
    void updateTitle(const ProgressInfo& info, double now);

    const std::u16string& scenePath_;
    RunClock clock_;
    double runStart_ = 0;
    double renderStart_ = 0;
    int64_t lastTitleSecond_ = 0;
    bool rendering_ = false;
    bool messageShown_ = false;
    int32_t lastStage_ = kStageRestart;
    int32_t starsPrinted_ = 0;
};

#include "client/progress_display.h"

#include "client/console.h"
#include "client/messages.h"
#include "platform/clock.h"
#include "platform/console.h"

#include <cmath>

namespace {

void setTitle(const std::u16string& title) { platform::setConsoleTitle(title.c_str()); }

struct ClockTime {
    int64_t hours, minutes, seconds;
};

ClockTime splitSeconds(int64_t total) { return {total / 3600, total % 3600 / 60, total % 60}; }

// A broken engine may send any fraction; the bar never grows past its frame.
int32_t percentOf(float fraction) {
    if (fraction == 1.0f) return 100;
    float percent = fraction * 100.0f;
    if (!(percent > 0.0f)) return 0;
    return percent >= 100.0f ? 100 : static_cast<int32_t>(percent);
}

constexpr char16_t kBarFrame[] =
    u"[                                                                                                    ]\n ";
static_assert(sizeof kBarFrame / sizeof kBarFrame[0] == 1 + 100 + 1 + 1 + 1 + 1);

int64_t readTicks() {
    int64_t ticks;
    return platform::readCounter(&ticks) ? ticks : static_cast<int64_t>(platform::tickCount());
}

} // namespace

double RunClock::now() {
    if (frequency_ == 0) {
        int64_t base, frequency;
        if (platform::readCounter(&base) && platform::counterFrequency(&frequency) && frequency > 0) {
            base_ = base;
            frequency_ = frequency;
        } else {
            base_ = platform::tickCount();
            frequency_ = 1000;
        }
    }
    return static_cast<double>(readTicks() - base_) / static_cast<double>(frequency_);
}

void ProgressDisplay::beginRendering() {
    rendering_ = true;
    messageShown_ = false;
}

void ProgressDisplay::endRendering() {
    consolePrint(u"\n");
    rendering_ = false;
}

void ProgressDisplay::beforeMessage() {
    if (rendering_ && !messageShown_) consolePrint(u"\n");
}

void ProgressDisplay::afterMessage() {
    messageShown_ = true;
    lastStage_ = kStageRestart;
}

void ProgressDisplay::beginFrame(int32_t stage, double now) {
    int32_t previous = lastStage_;
    lastStage_ = stage;
    messageShown_ = false;
    consolePrint(u"\n");
    if (stage >= 1) {
        consolePrint(messages::kRendering);
        // Coming back from a message is no new rendering stage.
        if (previous != kStageRestart) renderStart_ = now;
    } else {
        consolePrint(messages::kStatistics);
        setTitle(formatWide(messages::kEstimatingTitle, scenePath_));
    }
    consolePrint(kBarFrame);
    starsPrinted_ = 0;
}

// "elapsed" counts from the start of the run, "left" extrapolates the rendering stage alone.
void ProgressDisplay::updateTitle(const ProgressInfo& info, double now) {
    int64_t seconds = static_cast<int64_t>(now - runStart_);
    if (seconds == lastTitleSecond_ || !(info.fraction > 0.0f)) return;
    lastTitleSecond_ = seconds;
    double renderSeconds = now - renderStart_;
    double left = static_cast<double>(1.0f - info.fraction) * renderSeconds / info.fraction;
    ClockTime elapsed = splitSeconds(seconds);
    ClockTime remaining =
        splitSeconds(std::isfinite(left) && std::fabs(left) < 9.2e18 ? static_cast<int64_t>(left) : 0);
    setTitle(formatWide(messages::kRenderTitle, static_cast<double>(info.fraction * 100.0f), info.passes,
                        elapsed.hours, elapsed.minutes, elapsed.seconds, remaining.hours, remaining.minutes,
                        remaining.seconds, scenePath_));
}

void ProgressDisplay::show(const ProgressInfo& info) {
    if (!rendering_) return;
    double now = clock_.now();
    if (info.stage != lastStage_) beginFrame(info.stage, now);
    int32_t percent = percentOf(info.fraction);
    std::u16string stars;
    for (; starsPrinted_ < percent; ++starsPrinted_) stars += u'*';
    if (!stars.empty()) writeConsole(stars);
    if (lastStage_ == 1) updateTitle(info, now);
}

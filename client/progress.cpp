// The progress bar and the console title while the engine renders.
#include "client/console.h"
#include "client/file_renderer.h"
#include "client/messages.h"
#include "platform/clock.h"
#include "platform/console.h"

#include <cmath>

double gRunStartSeconds = 0;
double gRenderStartSeconds = 0;
int64_t gLastTitleSecond = 0;

namespace {

int64_t gCounterBase = 0;
int64_t gCounterFrequency = 0;

int64_t readTicks() {
    int64_t ticks;
    return platform::readCounter(&ticks) ? ticks : static_cast<int64_t>(platform::tickCount());
}

void setTitle(const std::u16string& title) { platform::setConsoleTitle(title.c_str()); }

struct Clock {
    int64_t hours, minutes, seconds;
};

Clock splitSeconds(int64_t total) { return {total / 3600, total % 3600 / 60, total % 60}; }

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

} // namespace

double elapsedSeconds() {
    if (gCounterFrequency == 0) {
        int64_t base, frequency;
        if (platform::readCounter(&base) && platform::counterFrequency(&frequency) && frequency > 0) {
            gCounterBase = base;
            gCounterFrequency = frequency;
        } else {
            gCounterBase = platform::tickCount();
            gCounterFrequency = 1000;
        }
    }
    return static_cast<double>(readTicks() - gCounterBase) / static_cast<double>(gCounterFrequency);
}

void FileRenderer::beginProgressFrame(int32_t stage, double now) {
    int32_t previous = lastStage;
    lastStage = stage;
    messageShown = false;
    consolePrint(u"\n");
    if (stage >= 1) {
        consolePrint(messages::kRendering);
        // Coming back from a message is no new rendering stage.
        if (previous != kStageRestart) gRenderStartSeconds = now;
    } else {
        consolePrint(messages::kStatistics);
        setTitle(formatWide(messages::kEstimatingTitle, options->scenePath));
    }
    consolePrint(kBarFrame);
    starsPrinted = 0;
}

// "elapsed" counts from the start of the run, "left" extrapolates the rendering stage alone.
void FileRenderer::updateRenderTitle(const ProgressInfo& info, double now) {
    int64_t seconds = static_cast<int64_t>(now - gRunStartSeconds);
    if (seconds == gLastTitleSecond || !(info.fraction > 0.0f)) return;
    gLastTitleSecond = seconds;
    double renderSeconds = now - gRenderStartSeconds;
    double left = static_cast<double>(1.0f - info.fraction) * renderSeconds / info.fraction;
    Clock elapsed = splitSeconds(seconds);
    Clock remaining = splitSeconds(std::isfinite(left) && std::fabs(left) < 9.2e18 ? static_cast<int64_t>(left) : 0);
    setTitle(formatWide(messages::kRenderTitle, static_cast<double>(info.fraction * 100.0f), info.passes,
                        elapsed.hours, elapsed.minutes, elapsed.seconds, remaining.hours, remaining.minutes,
                        remaining.seconds, options->scenePath));
}

bool FileRenderer::onProgress(const ProgressInfo* info) {
    if (!rendering) return true;
    double now = elapsedSeconds();
    if (info->stage != lastStage) beginProgressFrame(info->stage, now);
    int32_t percent = percentOf(info->fraction);
    std::u16string stars;
    for (; starsPrinted < percent; ++starsPrinted) stars += u'*';
    if (!stars.empty()) writeConsole(stars);
    if (lastStage == 1) updateRenderTitle(*info, now);
    return true;
}

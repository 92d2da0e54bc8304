// The progress bar and the message log, driven the way an engine drives them, and the
// callbacks that answer that nothing is going on.
#include "client/file_renderer.h"
#include "client/message_log.h"
#include "client/progress_display.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

const std::string kFrame = "[" + std::string(100, ' ') + "]\n ";

std::string stars(int n) { return std::string(n, '*'); }

class Progress : public testing::Test {
  protected:
    void SetUp() override { display.beginRendering(); }

    std::string progress(int32_t stage, float fraction, int32_t passes = 0) {
        ProgressInfo info{fraction, stage, 0, passes};
        testing::internal::CaptureStdout();
        display.show(info);
        return testing::internal::GetCapturedStdout();
    }

    template <class Call>
    std::string printed(Call call) {
        testing::internal::CaptureStdout();
        call();
        return testing::internal::GetCapturedStdout();
    }

    std::u16string scenePath = u"scene.tavi";
    ProgressDisplay display{scenePath};
    MessageLog log{display};
};

TEST_F(Progress, StarsFollowThePercentOfTheStage) {
    struct Step {
        int32_t stage;
        float fraction;
        std::string output;
    } steps[] = {
        {0, 0.0f, "\nCalculate statistics ...\n" + kFrame},
        {0, 0.25f, stars(25)},
        {0, 0.1f, ""}, // a fraction that falls back prints nothing
        {0, 0.999f, stars(74)},
        {0, 1.0f, stars(1)},
        {1, 0.0f, "\nRendering ...\n" + kFrame},
        {1, 0.5f, stars(50)},
        {2, 0.07f, "\nRendering ...\n" + kFrame + stars(7)},
        {2, -0.5f, ""},
        {2, 7.0f, stars(93)}, // never past the frame
    };
    for (const Step& s : steps) EXPECT_EQ(progress(s.stage, s.fraction), s.output) << s.stage << " " << s.fraction;
}

TEST_F(Progress, NothingOutsideRendering) {
    testing::internal::CaptureStdout();
    display.endRendering();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\n");
    EXPECT_EQ(progress(1, 0.5f), "");
    EXPECT_EQ(display.stage(), kStageRestart);
}

TEST_F(Progress, RenderStartIsTakenOnlyFromAStageChange) {
    progress(1, 0.1f); // straight from the restart mark
    EXPECT_EQ(display.renderStart(), 0.0);
    progress(0, 0.1f);
    progress(1, 0.1f);
    EXPECT_GT(display.renderStart(), 0.0);
    const double start = display.renderStart();
    printed([&] { log.warning(u"w"); });
    progress(1, 0.2f); // back from a message: the same rendering stage
    EXPECT_EQ(display.renderStart(), start);
}

TEST_F(Progress, AMessageBreaksTheBarAndTheNextCallRedrawsIt) {
    progress(1, 0.0f);
    progress(1, 0.3f);
    EXPECT_EQ(printed([&] { log.warning(u"Warning: low memory"); }), "\nWarning: low memory\n");
    // A second message starts on a line of its own already.
    EXPECT_EQ(printed([&] { log.error(u"Error: lost"); }), "Error: lost\n");
    EXPECT_EQ(progress(1, 0.4f), "\nRendering ...\n" + kFrame + stars(40));
    EXPECT_EQ(log.warnings(), u"Warning: low memory\n");
    EXPECT_EQ(log.errors(), u"Error: lost\n");
}

TEST_F(Progress, ErrorTextsAreFormatsButInfoIsLiteral) {
    display.endRendering();
    struct Case {
        void (MessageLog::*report)(const char16_t*);
        const std::u16string& (MessageLog::*collected)() const;
    } cases[] = {{&MessageLog::error, &MessageLog::errors}, {&MessageLog::warning, &MessageLog::warnings}};
    for (const Case& c : cases) {
        EXPECT_EQ(printed([&] { (log.*c.report)(u"100%% done, %s"); }), "100% done, \n");
        EXPECT_EQ((log.*c.collected)(), u"100%% done, %s\n");
    }
    EXPECT_EQ(printed([&] { log.info(u"100%% done"); }), "100%% done\n");
    EXPECT_EQ(display.stage(), kStageRestart);
    EXPECT_TRUE(display.messageShown());
}

TEST_F(Progress, TheLogKeepsTheWorstLevel) {
    const int32_t steps[] = {StatusWarnings, StatusOk, StatusOutOfMemory, StatusErrors};
    const int32_t kept[] = {StatusWarnings, StatusWarnings, StatusOutOfMemory, StatusOutOfMemory};
    for (size_t i = 0; i < std::size(steps); ++i) {
        log.raise(steps[i]);
        EXPECT_EQ(log.level(), kept[i]) << i;
    }
    printed([&] { log.fail(u"Error: broken", StatusErrors); });
    EXPECT_EQ(log.level(), StatusOutOfMemory);
    EXPECT_EQ(log.errors(), u"Error: broken\n");
    log.resetLevel();
    EXPECT_EQ(log.level(), StatusOk);
}

TEST(FileRenderer, InertCallbacksAnswerAsTheEngineExpects) {
    ClientOptions options;
    FileRenderer renderer{options};
    int32_t command = 7;
    EXPECT_FALSE(renderer.peekCommand(&command));
    EXPECT_EQ(command, 0);
    ViewState state{{1, 2, 3, 4}};
    EXPECT_FALSE(renderer.peekViewState(&state));
    float minusTen = -10.0f;
    uint32_t bits;
    std::memcpy(&bits, &minusTen, 4);
    EXPECT_EQ(state.words[0], 0u);
    EXPECT_EQ(state.words[1], 0x00FF0101u);
    EXPECT_EQ(state.words[2], bits);
    EXPECT_EQ(state.words[3], bits);
    Value16 source, result;
    for (int i = 0; i < 16; ++i) source.bytes[i] = static_cast<uint8_t>(i + 1);
    EXPECT_EQ(renderer.filterValue(&result, &source), &result);
    EXPECT_EQ(std::memcmp(result.bytes, source.bytes, 16), 0);
    EXPECT_EQ(renderer.defaultValue(&result), &result);
    EXPECT_EQ(result.bytes[0] | result.bytes[15], 0);
    EXPECT_EQ(renderer.queryZero(), 0);
    EXPECT_FALSE(renderer.queryInteractive());
    EXPECT_FALSE(renderer.queryPreview());
    EXPECT_FALSE(renderer.queryAbort());
    EXPECT_TRUE(renderer.acceptSave());
    EXPECT_TRUE(renderer.acceptOutput());
    EXPECT_EQ(std::u16string(renderer.GetModelName()), u"");
}

} // namespace

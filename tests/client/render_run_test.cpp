// The real executable through a whole run: the render, the progress on the console, the
// title on a terminal, the closing report and the exit status.
#include "scene/records.h"
#include "scene/scene_file_reader.h"
#include "tests/support/client_sandbox.h"
#include "tools/scene_writer/record_builders.h"
#include "tools/scene_writer/scene_writer.h"

#include <gtest/gtest.h>

namespace {

const std::string kClosingRow = std::string(100, '#') + "\n";
const std::string kFrame = "[" + std::string(100, ' ') + "]\n ";

std::string stars(int n) { return std::string(n, '*'); }

std::string afterBanner(const std::string& output) {
    size_t end = output.find("\n\n");
    return end == std::string::npos ? output : output.substr(end + 2);
}

std::string writeScene(const ClientSandbox& sandbox) {
    scene_writer::Bytes settings = scene_writer::settingsBody({});
    scene_writer::put32(settings, offsetof(SettingsRecord, ToneOperator.OperatorType), 2); // ACES: no warning
    scene_writer::SceneFile file;
    file.add(scene_writer::zstdChunk(ChunkSettings, settings));
    std::string path = sandbox.path("scene.tavi");
    EXPECT_TRUE(file.write(path));
    return path;
}

TEST(RenderRun, ReportAndExitStatusFollowTheWorstLevel) {
    struct Case {
        std::string name;
        std::string script;
        int exitStatus;
        std::string output;
    } cases[] = {
        {"progress through both stages",
         "progress 0 0.5 0\nprogress 1 1.0 16\n", 0,
         "\nCalculate statistics ...\n" + kFrame + stars(50) + "\nRendering ...\n" + kFrame + stars(100) +
             "\nClosing renderer ...\n" + kClosingRow + "Rendering finished without errors.\n"},
        {"a warning breaks the bar; warnings alone end well",
         "progress 1 0.3 2\nwarning Warning: 50%% of the lights are off\nprogress 1 0.6 4\n", 0,
         "\nRendering ...\n" + kFrame + stars(30) + "\nWarning: 50% of the lights are off\n\nRendering ...\n" +
             kFrame + stars(60) + "\nClosing renderer ...\n" + kClosingRow + "Rendering finished without errors.\n"},
        {"info is printed literally and not reported",
         "info 100%% sure\n", 0,
         "\n100%% sure\n\nClosing renderer ...\n" + kClosingRow + "Rendering finished without errors.\n"},
        {"render answers with warnings",
         "result render 1\nwarning W1\n", 1,
         "\nW1\n\nClosing renderer ...\n" + kClosingRow + "The errors and problems:\n\n\nW1\n"},
        {"render answers with errors",
         "result render 2\nerror E1\nwarning W1\nerror E2\n", 255,
         "\nE1\nW1\nE2\n\nClosing renderer ...\n" + kClosingRow +
             "Rendering failed!\n\nThe errors and problems:\n\nE1\nE2\n\nW1\n"},
        {"render answers out of memory",
         "result render 4\n", 255,
         "\nClosing renderer ...\n" + kClosingRow + "Rendering failed!\n\nThe errors and problems:\n\n\n"},
    };
    for (const Case& c : cases) {
        ClientSandbox sandbox(recordingEnginePath());
        std::string scene = writeScene(sandbox);
        sandbox.writeEngineScript(c.script);
        ClientRun run = sandbox.run({"-scene", scene});
        EXPECT_EQ(run.exitStatus, c.exitStatus) << c.name;
        EXPECT_EQ(afterBanner(run.output), c.output) << c.name;
        std::vector<std::string> log = sandbox.engineLog();
        ASSERT_GE(log.size(), 3u) << c.name;
        EXPECT_EQ(log[log.size() - 2], "render") << c.name;
        EXPECT_EQ(log.back(), "shutdown") << c.name;
    }
}

std::string withoutCarriageReturns(std::string text) {
    std::string out;
    for (char c : text)
        if (c != '\r') out += c;
    return out;
}

TEST(RenderRun, OnATerminalTheTitleFollowsTheRender) {
    ClientSandbox sandbox(recordingEnginePath());
    std::string scene = writeScene(sandbox);
    // The title changes at most once a second, so the engine waits before its second call.
    sandbox.writeEngineScript("progress 0 0.5 0\nprogress 1 0.0 0\nsleep 1100\nprogress 1 0.5 8\n");
    ClientRun run = sandbox.run({"-scene", scene}, true);
    std::string output = withoutCarriageReturns(run.output);
    EXPECT_EQ(run.exitStatus, 0);
    auto title = [](const std::string& text) { return "\033]0;" + text + "\007"; };
    size_t preparing = output.find(title("TaviClient [preparing...]: " + scene));
    size_t estimating = output.find(title("TaviClient [estimating...]: " + scene));
    size_t done = output.find(title("TaviClient 50.0% done [8 passes, 0:00:01 elapsed, 0:00:01 left]: " + scene));
    EXPECT_NE(preparing, std::string::npos) << output;
    EXPECT_NE(estimating, std::string::npos) << output;
    EXPECT_NE(done, std::string::npos) << output;
    EXPECT_LT(preparing, estimating);
    EXPECT_LT(estimating, done);
    EXPECT_EQ(output.find("\033]0;TaviClient 0.0%"), std::string::npos) << "no title at fraction 0";
}

TEST(RenderRun, WithoutATerminalNoTitleIsWritten) {
    ClientSandbox sandbox(recordingEnginePath());
    std::string scene = writeScene(sandbox);
    sandbox.writeEngineScript("progress 0 0.5 0\n");
    ClientRun run = sandbox.run({"-scene", scene});
    EXPECT_EQ(run.output.find('\033'), std::string::npos);
}

} // namespace

// What the Windows client hands the system besides its console text: the engine's messages on
// the debugger channel and the console title, seen through wine's trace of the calls that carry
// them. Wine shows each OutputDebugString on its "seh" channel and each SetConsoleTitleW on its
// "console" channel, one line a call, the text quoted with escapes (a line feed as \n).
#include "tests/client/test_scene.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

// The quoted text of every trace line of `call`, in order.
std::vector<std::string> tracedTexts(const std::string& trace, const std::string& call) {
    std::vector<std::string> texts;
    std::istringstream lines(trace);
    for (std::string line; std::getline(lines, line);) {
        size_t at = line.find(call + " ");
        if (at != std::string::npos) texts.push_back(line.substr(at + call.size() + 1));
    }
    return texts;
}

TEST(WindowsSystemChannels, EngineMessagesReachTheDebuggerAndTheTitleTheConsole) {
    if (!underWine()) GTEST_SKIP() << "the debugger channel and the title are Windows' own";
    ClientSandbox sandbox(recordingEnginePath());
    TestScene scene;
    std::string path = scene.write(sandbox);
    sandbox.writeEngineScript("progress 0 0.5 0\nwarning W1\ninfo all lights on\nerror E1\n");
    ClientRun run = sandbox.runTracingWine({"-scene", path}, "-all,warn+seh,trace+console");
    EXPECT_EQ(run.exitStatus, 0);
    // Warnings and errors go as their report lines, an info line and its line feed one by one,
    // and so does the client's own closing line.
    EXPECT_EQ(tracedTexts(run.wineTrace, ":OutputDebugStringA"),
              (std::vector<std::string>{R"("W1\n")", R"("all lights on")", R"("\n")", R"("E1\n")",
                                        R"("Closing renderer ...")", R"("\n")"}))
        << run.wineTrace;
    EXPECT_EQ(tracedTexts(run.wineTrace, ":SetConsoleTitleW"),
              (std::vector<std::string>{"L\"TaviClient [preparing...]: " + path + "\"",
                                        "L\"TaviClient [estimating...]: " + path + "\""}))
        << run.wineTrace;
}

} // namespace

// The real executable from its command line to its exit status, before any scene is read.
#include "tests/support/client_sandbox.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

const std::string kBanner = "Standalone client for Tavi Renderer.\n"
                            "Made by the Tavi Renderer team.\n"
                            "Version 1.5.60, 30 May 2024\n"
                            "Contact: tavi-renderer@users.invalid\n\n";
const std::string kClosingRow = std::string(100, '#') + "\n";

bool startsWith(const std::string& text, const std::string& prefix) { return text.rfind(prefix, 0) == 0; }

TEST(CommandLineRun, WithoutArgumentsPrintsBannerAndUsage) {
    ClientSandbox sandbox(recordingEnginePath());
    ClientRun run = sandbox.run({});
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_TRUE(startsWith(run.output, kBanner + "Command line arguments:\n")) << run.output;
    EXPECT_TRUE(sandbox.engineLog().empty());
}

TEST(CommandLineRun, ExitStatusAndOutputOfEachEarlyEnd) {
    struct Case {
        std::vector<std::string> arguments;
        int exitStatus;
        std::string afterBanner;
    } cases[] = {
        {{"-version"}, 0, kBanner},
        {{"-bogus"}, 255, "Error: unknown option specified, aborting!\n"},
        {{"-size", "0", "100"}, 255, "Error: wrong image size specified, aborting!\n"},
        {{"-region", "0", "0", "0", "10"}, 255, "Error: wrong image size specified, aborting!\n"},
        {{"-numpasses", "12a"}, 255, "Error: wrong numpasses value specified, aborting!\n"},
        {{"-scene", "a", "-scene", "b", "-help"}, 255, "Error: the scene path specified twice, aborting!\n"},
    };
    ClientSandbox sandbox(recordingEnginePath());
    for (const Case& c : cases) {
        ClientRun run = sandbox.run(c.arguments);
        EXPECT_EQ(run.exitStatus, c.exitStatus) << c.arguments[0];
        EXPECT_EQ(run.output, kBanner + c.afterBanner) << c.arguments[0];
    }
    ClientRun help = sandbox.run({"-help", "-bogus"});
    EXPECT_EQ(help.exitStatus, 0);
    EXPECT_TRUE(startsWith(help.output, kBanner + "Command line arguments:\n"));
    // Nothing was constructed, so the engine was never loaded.
    EXPECT_TRUE(sandbox.engineLog().empty());
}

TEST(CommandLineRun, MissingOrInvalidEngineModule) {
    struct Case {
        std::string engine;
        std::string message;
    } cases[] = {
        {"", "Error: Tavi Tracer AVX library not found!\n"},
        {invalidEnginePath(), "Error: Invalid Tavi Tracer AVX library!\n"},
    };
    for (const Case& c : cases) {
        ClientSandbox sandbox(c.engine);
        ClientRun run = sandbox.run({"-scene", "missing.tavi"});
        EXPECT_EQ(run.exitStatus, 255);
        // No report follows: the run ends before the scene.
        EXPECT_EQ(run.output, kBanner + c.message);
    }
}

TEST(CommandLineRun, ExecutablePathOf384CharactersEndsSilently) {
    ClientSandbox sandbox(recordingEnginePath());
    // The limit counts the path the client is given by its system (under wine a drive letter and
    // backslashes), all in ASCII here, so one byte is one unit.
    auto clientLength = [](const std::string& folder) {
        return clientSpelling(folder + "/" + clientFileName()).size();
    };
    auto folderFor = [&](size_t total) {
        std::string folder = sandbox.folder();
        size_t missing = total - clientLength(folder);
        while (missing > 0) {
            size_t part = std::min<size_t>(missing - 1, 200);
            if (missing - 1 - part == 0 || part == 0) part = missing - 1;
            folder += "/" + std::string(part, 'd');
            missing -= part + 1;
        }
        std::filesystem::create_directories(folder);
        std::filesystem::copy_file(recordingEnginePath(), folder + "/" + engineModuleName());
        return folder;
    };
    std::string longFolder = folderFor(384);
    ASSERT_EQ(clientLength(longFolder), 384u);
    ClientRun tooLong = runClientCopy(longFolder, {"-scene", "missing.tavi"});
    EXPECT_EQ(tooLong.exitStatus, 255);
    EXPECT_EQ(tooLong.output, kBanner);

    std::string fittingFolder = folderFor(383);
    ASSERT_EQ(clientLength(fittingFolder), 383u);
    ClientRun fits = runClientCopy(fittingFolder, {"-scene", "missing.tavi"});
    EXPECT_EQ(fits.exitStatus, 255);
    EXPECT_NE(fits.output.find("Error: IO error.\n"), std::string::npos) << fits.output;
}

TEST(CommandLineRun, UnreadableSceneIsReportedAndNotRendered) {
    ClientSandbox sandbox(recordingEnginePath());
    ClientRun run = sandbox.run({"-scene", sandbox.path("missing.tavi")});
    EXPECT_EQ(run.exitStatus, 255);
    EXPECT_EQ(run.output, kBanner +
                              "Error: IO error.\n"
                              "Rendering not started because of errors or warnings.\n"
                              "Closing renderer ...\n" +
                              kClosingRow +
                              "Rendering failed!\n\n"
                              "The errors and problems:\n\n"
                              "Error: IO error.\n"
                              "\n");
    std::vector<std::string> log = sandbox.engineLog();
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0], "initialise module=\"" + sandbox.clientPath(engineModuleName()) + "\"");
    EXPECT_EQ(log[1], "shutdown");
}

} // namespace

#include "client/client_options.h"
#include "common/unicode.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace {

struct Parsed {
    ParseOutcome outcome;
    std::string output;
    ClientOptions options;
};

Parsed parse(std::initializer_list<const char*> arguments) {
    std::vector<std::u16string> wide{u"TaviClient"};
    for (const char* a : arguments) wide.push_back(utf8ToUtf16(a));
    std::vector<const char16_t*> argv;
    for (const std::u16string& a : wide) argv.push_back(a.c_str());
    Parsed parsed{ParseOutcome::Run, "", ClientOptions{}};
    resetClientOptions(parsed.options);
    testing::internal::CaptureStdout();
    parsed.outcome = parseCommandLine(static_cast<int>(argv.size()), argv.data(), parsed.options);
    parsed.output = testing::internal::GetCapturedStdout();
    return parsed;
}

std::string narrow(const std::u16string& text) { return utf16ToUtf8(text); }

TEST(ParseUnsigned, DigitsBlanksAndWrapping) {
    struct Case {
        const char16_t* text;
        bool ok;
        uint32_t value;
    } cases[] = {
        {u"0", true, 0},
        {u"12", true, 12},
        {u"  \t42", true, 42},
        {u"", true, 0},
        {u"   ", true, 0},
        {u"4294967295", true, 4294967295u},
        {u"4294967296", true, 0},
        {u"12a", false, 12},
        {u"12 ", false, 12},
        {u"-1", false, 0},
        {u"+1", false, 0},
        {u"1 2", false, 1},
    };
    for (const Case& c : cases) {
        uint32_t value = 7;
        EXPECT_EQ(parseUnsigned(c.text, value), c.ok) << narrow(c.text);
        EXPECT_EQ(value, c.value) << narrow(c.text);
    }
}

TEST(CommandLine, FailuresPrintTheirMessage) {
    struct Case {
        std::initializer_list<const char*> arguments;
        const char* message;
    } cases[] = {
        {{"-bogus"}, "Error: unknown option specified, aborting!\n"},
        {{"scene.bin"}, "Error: unknown option specified, aborting!\n"},
        {{"/scene", "x"}, "Error: unknown option specified, aborting!\n"},
        {{"-scene=x"}, "Error: unknown option specified, aborting!\n"},
        {{"-scen", "x"}, "Error: unknown option specified, aborting!\n"},
        {{"-scene", "a", "-scene", "b"}, "Error: the scene path specified twice, aborting!\n"},
        {{"-scene"}, "Error: no scene path specified, aborting!\n"},
        {{"-settings", "a", "-settings", "b"}, "Error: the settings file specified twice, aborting!\n"},
        {{"-settings"}, "Error: no settings file specified, aborting!\n"},
        {{"-camera", "a", "-CAMERA", "b"}, "Error: the camera file specified twice, aborting!\n"},
        {{"-camera"}, "Error: no camera file specified, aborting!\n"},
        {{"-materials", "a", "-materials", "b"}, "Error: the materials path specified twice, aborting!\n"},
        {{"-materials"}, "Error: no materials path specified, aborting!\n"},
        {{"-texmaps", "a", "-texmaps", "b"}, "Error: the texmaps path specified twice, aborting!\n"},
        {{"-texmaps"}, "Error: no texmaps path specified, aborting!\n"},
        {{"-textures"}, "Error: no textures path specified, aborting!\n"},
        {{"-outputpath", "a", "-output", "b"}, "Error: the output path specified twice, aborting!\n"},
        {{"-output"}, "Error: no output path specified, aborting!\n"},
        {{"-outputname", "a", "-name", "b"}, "Error: the output name specified twice, aborting!\n"},
        {{"-name"}, "Error: no output name specified, aborting!\n"},
        {{"-cachepath", "a", "-cache", "b"}, "Error: the cache path specified twice, aborting!\n"},
        {{"-cache"}, "Error: no cache path specified, aborting!\n"},
        {{"-size", "100"}, "Error: no image size specified, aborting!\n"},
        {{"-size", "0", "100"}, "Error: wrong image size specified, aborting!\n"},
        {{"-size", "100", "-1"}, "Error: wrong image size specified, aborting!\n"},
        {{"-size", "4294967295", "10"}, "Error: wrong image size specified, aborting!\n"},
        {{"-region", "1", "2", "3"}, "Error: no region size specified, aborting!\n"},
        {{"-region", "0", "0", "0", "10"}, "Error: wrong image size specified, aborting!\n"},
        {{"-region", "x", "0", "10", "10"}, "Error: wrong image size specified, aborting!\n"},
        {{"-window", "1", "2", "3"}, "Error: no window size specified, aborting!\n"},
        {{"-window", "1", "2", "3", "z"}, "Error: wrong image size specified, aborting!\n"},
        {{"-window", "4294967295", "0", "5", "5"}, "Error: wrong image size specified, aborting!\n"},
        {{"-numpasses"}, "Error: no numpasses value specified, aborting!\n"},
        {{"-numpasses", "12a"}, "Error: wrong numpasses value specified, aborting!\n"},
        {{"-affinitystart"}, "Error: no affinity value specified, aborting!\n"},
        {{"-affinityshift", "-3"}, "Error: wrong affinity value specified, aborting!\n"},
        {{"-maxthreads"}, "Error: no numthreads value specified, aborting!\n"},
        {{"-numthreads", "four"}, "Error: wrong numthreads value specified, aborting!\n"},
        {{"-frame"}, "Error: no frame value specified, aborting!\n"},
        {{"-frame", "1.5"}, "Error: wrong frame value specified, aborting!\n"},
        {{"-fps"}, "Error: no fps value specified, aborting!\n"},
        {{"-fps", "25 "}, "Error: wrong fps value specified, aborting!\n"},
        // A failure left of -help wins; -help stops the parse before what follows it.
        {{"-scene", "a", "-scene", "b", "-help"}, "Error: the scene path specified twice, aborting!\n"},
    };
    for (const Case& c : cases) {
        Parsed parsed = parse(c.arguments);
        std::string line;
        for (const char* a : c.arguments) line += std::string(a) + " ";
        EXPECT_EQ(parsed.outcome, ParseOutcome::ExitFailure) << line;
        EXPECT_EQ(parsed.output, c.message) << line;
    }
}

TEST(CommandLine, HelpAndVersionStopTheParse) {
    Parsed help = parse({"-help", "-bogus"});
    EXPECT_EQ(help.outcome, ParseOutcome::ExitSuccess);
    EXPECT_EQ(help.output.rfind("Command line arguments:\n", 0), 0u);
    EXPECT_EQ(help.output.back(), '\n');

    Parsed version = parse({"-scene", "x", "-VERSION", "-scene", "y"});
    EXPECT_EQ(version.outcome, ParseOutcome::ExitSuccess);
    EXPECT_EQ(version.output.rfind("Standalone client for Tavi Renderer.\n", 0), 0u);
    EXPECT_NE(version.output.find("Version 1.5.60, 30 May 2024\n"), std::string::npos);
    EXPECT_EQ(narrow(version.options.scenePath), "x");
}

TEST(CommandLine, UsageNeverMentionsTheHiddenAliases) {
    std::string usage = parse({"-help"}).output;
    for (const char* hidden : {"-window", "-tif ", "-noaffinitymask", "-affinityshift", "-affinitystart",
                               "-maxthreads"})
        EXPECT_EQ(usage.find(hidden), std::string::npos) << hidden;
    EXPECT_NE(usage.find("-scene"), std::string::npos);
}

TEST(CommandLine, ValuesAndAliases) {
    Parsed p = parse({"-SCENE", "X.bin", "-ignorewarnings", "-Jpeg", "-tif", "-noaffinitymask", "-size", "  100",
                      "200", "-region", "10", "20", "30", "40", "-numpasses", "", "-affinitystart", "3",
                      "-maxthreads", "8", "-frame", "4294967295", "-fps", "25", "-name", "image", "-settings", "s.xml",
                      "-camera", "c.xml"});
    ASSERT_EQ(p.outcome, ParseOutcome::Run) << p.output;
    EXPECT_EQ(p.output, "");
    const ClientOptions& o = p.options;
    EXPECT_EQ(narrow(o.scenePath), "X.bin");
    EXPECT_EQ(o.ignoreWarnings, 1);
    EXPECT_EQ(o.saveJpeg, 1);
    EXPECT_EQ(o.saveTiff, 1);
    EXPECT_EQ(o.noAffinity, 1);
    EXPECT_EQ(o.imageSizeX, 100);
    EXPECT_EQ(o.imageSizeY, 200);
    EXPECT_EQ(o.regionX, 10);
    EXPECT_EQ(o.regionY, 20);
    EXPECT_EQ(o.regionSizeX, 30);
    EXPECT_EQ(o.regionSizeY, 40);
    EXPECT_EQ(o.numPasses, 0);
    EXPECT_EQ(o.affinity, 3);
    EXPECT_EQ(o.numThreads, 8);
    EXPECT_EQ(o.frame, -1);
    EXPECT_EQ(o.fps, 25);
    EXPECT_EQ(narrow(o.outputName), "image");
    EXPECT_EQ(narrow(o.settingsFile), "s.xml");
    EXPECT_EQ(narrow(o.cameraFile), "c.xml");
}

TEST(CommandLine, RepeatsOfNumbersAndFlags) {
    Parsed p = parse({"-numpasses", "5", "-numpasses", "7", "-jpeg", "-jpeg", "-region", "1", "1", "5", "5",
                      "-window", "100", "200", "50", "60"});
    ASSERT_EQ(p.outcome, ParseOutcome::Run) << p.output;
    EXPECT_EQ(p.options.numPasses, 7);
    EXPECT_EQ(p.options.regionX, 50);
    EXPECT_EQ(p.options.regionY, 60);
    EXPECT_EQ(p.options.regionSizeX, 51);
    EXPECT_EQ(p.options.regionSizeY, 141);
}

TEST(CommandLine, EmptyPathDoesNotCountAsGiven) {
    Parsed p = parse({"-scene", "", "-scene", "x", "-materials", "", "-materials", "m"});
    ASSERT_EQ(p.outcome, ParseOutcome::Run) << p.output;
    EXPECT_EQ(narrow(p.options.scenePath), "x");
    EXPECT_EQ(narrow(p.options.materialsPath), "m/");
}

TEST(CommandLine, FolderRule) {
    struct Case {
        const char* option;
        const char* value;
        const char* stored;
        std::u16string ClientOptions::*field;
    } cases[] = {
        {"-materials", "d:/m", "d:/m/", &ClientOptions::materialsPath},
        {"-materials", "d:\\m\\", "d:\\m\\", &ClientOptions::materialsPath},
        {"-materials", "", "", &ClientOptions::materialsPath},
        {"-texmaps", "t/", "t/", &ClientOptions::texmapsPath},
        {"-outputpath", "out", "out/", &ClientOptions::outputPath},
        {"-cache", "c", "c/", &ClientOptions::cachePath},
        {"-scene", "s/", "s/", &ClientOptions::scenePath},
        {"-outputname", "n", "n", &ClientOptions::outputName},
    };
    for (const Case& c : cases) {
        Parsed p = parse({c.option, c.value});
        ASSERT_EQ(p.outcome, ParseOutcome::Run) << c.option;
        EXPECT_EQ(narrow(p.options.*(c.field)), c.stored) << c.option << " " << c.value;
    }
}

TEST(CommandLine, TexturesTestTheSlotNamedByTheArgumentPosition) {
    // The value at argv[2] is tested against the length of slot 2, which is empty: a separator
    // that is already there gets a second one.
    Parsed p = parse({"-textures", "a/", "-textures", "b", "-textures", ""});
    ASSERT_EQ(p.outcome, ParseOutcome::Run);
    EXPECT_EQ(p.options.texturePathCount, 3);
    EXPECT_EQ(narrow(p.options.texturePaths[0]), "a//");
    EXPECT_EQ(narrow(p.options.texturePaths[1]), "b/");
    EXPECT_EQ(narrow(p.options.texturePaths[2]), "");

    // The slot numbered by the position is always beyond the filled ones, except from
    // position 16 on, where it stands for the path fields behind the array: argv[16] tests
    // outputPath, "ab/", so unit 2 of the value decides.
    Parsed r = parse({"-outputpath", "ab", "-numpasses", "1", "-numpasses", "1", "-numpasses", "1", "-numpasses",
                      "1", "-numpasses", "1", "-numpasses", "1", "-textures", "zz/z"});
    ASSERT_EQ(r.outcome, ParseOutcome::Run);
    EXPECT_EQ(narrow(r.options.texturePaths[0]), "zz/z");
    Parsed t = parse({"-outputpath", "ab", "-numpasses", "1", "-numpasses", "1", "-numpasses", "1", "-numpasses",
                      "1", "-numpasses", "1", "-numpasses", "1", "-textures", "zzz/"});
    ASSERT_EQ(t.outcome, ParseOutcome::Run);
    EXPECT_EQ(narrow(t.options.texturePaths[0]), "zzz//");
}

TEST(CommandLine, SeventeenthTexturesIsTooManyEvenWithoutValue) {
    std::vector<std::string> args;
    for (int i = 0; i < 16; ++i) {
        args.push_back("-textures");
        args.push_back("t" + std::to_string(i));
    }
    std::vector<std::u16string> wide{u"TaviClient"};
    for (const std::string& a : args) wide.push_back(utf8ToUtf16(a));
    wide.push_back(u"-textures");
    std::vector<const char16_t*> argv;
    for (const std::u16string& a : wide) argv.push_back(a.c_str());
    ClientOptions options;
    testing::internal::CaptureStdout();
    ParseOutcome outcome = parseCommandLine(static_cast<int>(argv.size()), argv.data(), options);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Error: too many texmaps path specified, aborting!\n");
    EXPECT_EQ(outcome, ParseOutcome::ExitFailure);
    EXPECT_EQ(options.texturePathCount, 16);
}

TEST(CommandLine, ResetTouchesOnlyItsFields) {
    ClientOptions o;
    o.scenePath = u"s";
    o.texturePaths[15] = u"t";
    o.texturePathCount = 3;
    o.imageSizeX = 5;
    o.regionSizeY = 6;
    o.ignoreWarnings = 1;
    o.numPasses = o.frame = o.fps = o.numThreads = o.noAffinity = o.affinity = 9;
    o.saveJpeg = o.saveTiff = 1;
    resetClientOptions(o);
    EXPECT_TRUE(o.scenePath.empty());
    EXPECT_TRUE(o.texturePaths[15].empty());
    EXPECT_EQ(o.texturePathCount, 3);
    EXPECT_EQ(o.imageSizeX, 5);
    EXPECT_EQ(o.regionSizeY, 6);
    EXPECT_EQ(o.ignoreWarnings, 1);
    EXPECT_EQ(o.numPasses, -1);
    EXPECT_EQ(o.frame, -1);
    EXPECT_EQ(o.fps, -1);
    EXPECT_EQ(o.numThreads, -1);
    EXPECT_EQ(o.noAffinity, -1);
    EXPECT_EQ(o.affinity, -1);
    EXPECT_EQ(o.saveJpeg, 0);
    EXPECT_EQ(o.saveTiff, 0);
}

} // namespace

// What crosses to the engine while a scene loads, as the recording engine saw it.
#include "tests/client/test_scene.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace {


TEST(LoadSequence, OnlyWhatIsReferencedReachesTheEngineInTheFixedOrder) {
    ClientSandbox sandbox(recordingEnginePath());
    TestScene scene;
    scene.add(sw::kTextureFile, sw::textureFileBody({}));
    scene.add(sw::kTexMap, sw::texMapBody(5, 7, "distortion"));
    scene.add(sw::kTexMap, sw::texMapBody(5, 8, "unused map"));
    scene.add(sw::kTexMap, sw::texMapBody(5, 9, "light map"));
    scene.add(sw::kMaterial, sw::materialBody(7, 3, 0, "volume"));
    scene.add(sw::kMaterial, sw::materialBody(7, 4, 0, "unused material"));
    sw::put32(scene.settings, offsetof(SettingsRecord, StartingVolumetricMaterial), 3);
    scene.addCamera(0, 7);
    scene.addLight(9);
    std::string path = scene.write(sandbox);
    ClientRun run = sandbox.run({"-scene", path, "-textures", "t1", "-textures", "t2/"});
    EXPECT_EQ(run.exitStatus, 0) << run.output;
    std::vector<std::string> log = sandbox.engineLog();
    EXPECT_EQ(operations(log),
              (std::vector<std::string>{"initialise", "addMaterial", "beginScene", "addTextureFolder",
                                        "addTextureFolder", "addTexMap", "addCamera", "addTexMap", "addLight",
                                        "endLights", "endGeometry", "endScene", "render", "shutdown"}));
    EXPECT_EQ(field(log, "addMaterial", "name"), "\"volume\"");
    EXPECT_EQ(field(log, "addMaterial", "id"), "3");
    EXPECT_EQ(log[3], "addTextureFolder path=\"t1/\"");
    EXPECT_EQ(log[4], "addTextureFolder path=\"t2//\"");
    EXPECT_EQ(log[5], "addTexMap type=5 id=7 name=\"distortion\"");
    EXPECT_EQ(log[7], "addTexMap type=5 id=9 name=\"light map\"");
    EXPECT_EQ(field(log, "addCamera", "DistortionMap"), "7");
}

TEST(LoadSequence, CommandLineOverridesTheSettings) {
    struct Case {
        std::string name;
        std::vector<std::string> arguments;
        std::vector<std::pair<size_t, uint32_t>> sceneFields;
        std::vector<std::string> expected; // key=value pieces of the beginScene line
        std::vector<std::string> warnings;
    } cases[] = {
        {"numbers and paths",
         {"-numpasses", "0", "-numthreads", "3", "-affinity", "2", "-noaffinity", "-frame", "12", "-fps", "30",
          "-outputpath", "out", "-name", "shot", "-cache", "c"},
         {},
         {"MaxIterations=0", "MaxThreads=3", "NotCheckMaxThreads=1", "AffinityShift=2", "NoAffinityMask=1",
          "frame=12", "fps=30", "OutputPath=\"out/\"", "OutputName=\"shot\"", "CachePath=\"c/\"", "flag8B98=1",
          "flag8B88=0", "flag8BA0=0"},
         {}},
        {"size and region; a region of zeros becomes the image",
         {"-size", "800", "600"},
         {},
         {"ImageSizeX=800", "ImageSizeY=600", "RegionX=0", "RegionSizeX=800", "RegionSizeY=600"},
         {}},
        {"a region given on the command line",
         {"-window", "30", "40", "10", "20"},
         {},
         {"RegionX=10", "RegionY=20", "RegionSizeX=21", "RegionSizeY=21"},
         {}},
        {"no format at all forces all three",
         {},
         {{offsetof(SettingsRecord, SaveJPEG), 0}},
         {"SaveJPEG=1", "SaveTIFF=1", "SaveEXR=1"},
         {"Warning: Forcing Jpeg, TIFF and EXR!\n"}},
        {"-tiff adds a format, so nothing is forced",
         {"-tiff"},
         {{offsetof(SettingsRecord, SaveJPEG), 0}},
         {"SaveJPEG=0", "SaveTIFF=1", "SaveEXR=0"},
         {}},
        {"the external tone operator becomes ACES",
         {},
         {{offsetof(SettingsRecord, ToneOperator.OperatorType), 0}},
         {"ToneOperator=2"},
         {"Warning: the external tonemap operator specified! Switched to ACES.\n"}},
        {"options left out keep the scene's values",
         {"-numpasses", "4294967295"},
         {{offsetof(SettingsRecord, MaxIterations), 77}, {offsetof(SettingsRecord, FrameNumber), 5}},
         {"MaxIterations=77", "frame=5", "ImageSizeX=640", "flag8B98=1"},
         {}},
    };
    for (const Case& c : cases) {
        ClientSandbox sandbox(recordingEnginePath());
        TestScene scene;
        for (auto [offset, value] : c.sceneFields) sw::put32(scene.settings, offset, value);
        std::vector<std::string> arguments{"-scene", scene.write(sandbox)};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        ClientRun run = sandbox.run(arguments);
        std::vector<std::string> log = sandbox.engineLog();
        std::string beginScene;
        for (const std::string& line : log)
            if (line.rfind("beginScene ", 0) == 0) beginScene = line + " ";
        for (const std::string& piece : c.expected) EXPECT_TRUE(contains(beginScene, " " + piece + " ")) << c.name << ": " << piece << "\n" << beginScene;
        for (const std::string& warning : c.warnings) EXPECT_TRUE(contains(run.output, warning)) << c.name;
        if (c.warnings.empty()) {
            EXPECT_FALSE(contains(run.output, "Warning")) << c.name << "\n" << run.output;
        }
        EXPECT_EQ(run.exitStatus, 0) << c.name << "\n" << run.output;
    }
}

TEST(LoadSequence, FailuresEndTheLoad) {
    struct Case {
        std::string name;
        std::string engineScript;
        std::vector<std::string> arguments;
        int exitStatus;
        std::vector<std::string> printed;
        std::vector<std::string> calls;
    } cases[] = {
        {"beginScene answering 2 stops every further call", "result beginScene 2\n", {}, 255,
         {"Rendering not started because of errors or warnings.\n"}, {"initialise", "beginScene", "shutdown"}},
        {"a warning level with -ignorewarnings loads to the end and still never renders",
         "result beginScene 1\n", {"-ignorewarnings"}, 1,
         {"Closing renderer ...\n" + std::string(100, '#') + "\nThe errors and problems:\n\n\n"},
         {"initialise", "beginScene", "addCamera", "endLights", "endGeometry", "endScene", "shutdown"}},
        {"a warning level without the switch is reported", "result endScene 1\n", {}, 1,
         {"Rendering not started because of errors or warnings.\n"},
         {"initialise", "beginScene", "addCamera", "endLights", "endGeometry", "endScene", "shutdown"}},
        {"a settings document that cannot be read", "", {"-settings", "missing.xml"}, 255,
         {"Error: the custom settings specified, but the file could not be loaded.\nError: invalid scene file.\n"},
         {"initialise", "shutdown"}},
        {"a camera document that cannot be read stops the load at beginScene", "", {"-camera", "missing.xml"},
         255, {"Error: XML camera file specified, but is not found.\n"}, {"initialise", "beginScene", "shutdown"}},
    };
    for (const Case& c : cases) {
        ClientSandbox sandbox(recordingEnginePath());
        TestScene scene;
        scene.addCamera(0);
        std::vector<std::string> arguments{"-scene", scene.write(sandbox)};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        sandbox.writeEngineScript(c.engineScript);
        ClientRun run = sandbox.run(arguments);
        EXPECT_EQ(run.exitStatus, c.exitStatus) << c.name << "\n" << run.output;
        for (const std::string& text : c.printed) EXPECT_TRUE(contains(run.output, text)) << c.name << "\n" << run.output;
        EXPECT_EQ(operations(sandbox.engineLog()), c.calls) << c.name;
    }
}

TEST(LoadSequence, DuplicateNames) {
    struct Case {
        std::string name;
        uint32_t chunkType;
        sw::Bytes first, second;
        std::string message;
    } cases[] = {
        {"texture files", sw::kTextureFile, sw::textureFileBody({0, 0, 1, "brick", "a.png"}),
         sw::textureFileBody({0, 0, 2, "brick", "b.png"}), "Error: two textures with same name brick, but different ID detected.\n"},
        {"texmaps", sw::kTexMap, sw::texMapBody(5, 1, "wood"), sw::texMapBody(5, 2, "wood"),
         "Error: two texmaps with same name wood, but different ID detected.\n"},
        {"materials", sw::kMaterial, sw::materialBody(7, 1, 0, "steel"), sw::materialBody(7, 5, 0, "steel"),
         "Error: two materials with same name steel, but different ID detected.\n"},
    };
    for (const Case& c : cases) {
        {
            ClientSandbox sandbox(recordingEnginePath());
            TestScene scene;
            scene.add(c.chunkType, c.first);
            scene.add(c.chunkType, c.second);
            ClientRun run = sandbox.run({"-scene", scene.write(sandbox)});
            EXPECT_EQ(run.exitStatus, 255) << c.name;
            EXPECT_TRUE(contains(run.output, c.message + "Error: invalid scene file.\n")) << c.name << run.output;
            EXPECT_EQ(operations(sandbox.engineLog()), (std::vector<std::string>{"initialise", "shutdown"}));
        }
        {
            // The same name under the same id is the same record.
            ClientSandbox sandbox(recordingEnginePath());
            TestScene scene;
            scene.add(c.chunkType, c.first);
            scene.add(c.chunkType, c.first);
            ClientRun run = sandbox.run({"-scene", scene.write(sandbox)});
            EXPECT_EQ(run.exitStatus, 0) << c.name << run.output;
        }
    }
}

TEST(LoadSequence, NamesDifferingInCaseAreTwoRecords) {
    ClientSandbox sandbox(recordingEnginePath());
    TestScene scene;
    scene.add(sw::kTexMap, sw::texMapBody(5, 1, "wood"));
    scene.add(sw::kTexMap, sw::texMapBody(5, 2, "WOOD"));
    scene.addCamera(0, 2);
    scene.addLight(1);
    ClientRun run = sandbox.run({"-scene", scene.write(sandbox)});
    EXPECT_EQ(run.exitStatus, 0) << run.output;
    std::vector<std::string> texmaps;
    for (const std::string& line : sandbox.engineLog())
        if (line.rfind("addTexMap", 0) == 0) texmaps.push_back(line);
    EXPECT_EQ(texmaps, (std::vector<std::string>{"addTexMap type=5 id=2 name=\"WOOD\"",
                                                 "addTexMap type=5 id=1 name=\"wood\""}));
}

TEST(LoadSequence, CameraDocumentGoesIntoEveryRenderCameraAndTheLastWins) {
    ClientSandbox sandbox(recordingEnginePath());
    TestScene scene;
    scene.addCamera(0);
    scene.addCamera(1);
    scene.addCamera(0);
    sandbox.writeFile("camera.xml",
                      "<TaviCamera type=\"PERSPECTIVE\"><Common><Aspect value=\"2.5\"/></Common></TaviCamera>");
    ClientRun run = sandbox.run({"-scene", scene.write(sandbox), "-camera", sandbox.path("camera.xml")});
    EXPECT_EQ(run.exitStatus, 0) << run.output;
    std::vector<std::string> cameras;
    for (const std::string& line : sandbox.engineLog())
        if (line.rfind("addCamera", 0) == 0) cameras.push_back(line + " ");
    ASSERT_EQ(cameras.size(), 3u);
    EXPECT_TRUE(contains(cameras[0], "role=0 type=1 ") && contains(cameras[0], " Aspect=2.5 ")) << cameras[0];
    EXPECT_FALSE(contains(cameras[1], " Aspect=2.5 ")) << cameras[1];
    EXPECT_TRUE(contains(cameras[2], "role=0 type=1 ") && contains(cameras[2], " Aspect=2.5 ")) << cameras[2];
}

} // namespace

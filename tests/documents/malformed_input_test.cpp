// Malformed documents and table files: every cut of a valid file and random text either fail
// cleanly or read, and a failure leaves what it must. Run under the sanitizers, this is also the
// check that nothing reads or writes out of bounds on the way.
#include "documents/camera_document.h"
#include "documents/settings_document.h"
#include "documents/spectrum_table.h"

#include "tests/documents/settings_test_support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>

using namespace settings_test;

namespace {

const std::string kSettings =
    "<?xml version=\"1.0\"?><TaviSettings><Output><OutputPath value=\"out\"/><SaveJPEG "
    "value=\"true\"/></Output>"
    "<Colors><XYZtoRGB value=\"file\"/><XYZtoRGB_filename value=\"missing.csv\"/><TextureChannels>"
    "<MaxTextureChannels value=\"2\"/><Channel id=\"1\"><Segment id=\"3\" ts=\"0.5\" ve=\"2\"/></Channel>"
    "</TextureChannels></Colors><Tracing><StartingVolumetricMaterial name=\"Smoke\"/></Tracing>"
    "<ToneOperator><CurveSplineR><Segment id=\"1\" ts=\"0\"/></CurveSplineR><LUTPath "
    "value=\"l.cube\"/></ToneOperator>"
    "<AOV><Channels><Channel name=\"a\" type=\"RAW\"><IncludeID value=\"3\" "
    "sun=\"1\"/></Channel></Channels></AOV>"
    "</TaviSettings>";

const std::string kCamera = "<TaviCamera type=\"PERSPECTIVE\"><Common><Aspect "
                            "value=\"1.5\"/><FocusDistance><Segment id=\"0\" ts=\"0\"/>"
                            "</FocusDistance><Shutter><Shape><Segment id=\"7\" "
                            "te=\"2\"/></Shape></Shutter><Aperture><Map name=\"m\"/>"
                            "</Aperture><Stereo><StereoFocus "
                            "value=\"2\"/></Stereo></Common><Perspective><FovX><Segment id=\"3\"/></FovX>"
                            "<LensShiftX value=\"0.1\"/></Perspective></TaviCamera>";

// Every cut, from the empty file on, and a file that isn't there.
TEST(MalformedInput, EveryCutOfASettingsDocument) {
    TempFolder folder;
    RecordingNames names;
    auto record = std::make_unique<SettingsRecord>();
    auto before = std::make_unique<SettingsRecord>();
    for (size_t length = 0; length <= kSettings.size() + 1; ++length) {
        std::memset(record.get(), 0x5A, sizeof *record);
        std::memcpy(before.get(), record.get(), sizeof *record);
        const std::u16string path = length > kSettings.size()
                                        ? folder.pathOf("missing.xml")
                                        : folder.write("cut.xml", kSettings.substr(0, length));
        if (!ApplySettingsDocument(record.get(), path.c_str(), &names)) {
            ASSERT_EQ(std::memcmp(record.get(), before.get(), sizeof *record), 0) << "cut at " << length;
        } else {
            ASSERT_GE(record->NumChannels, 0);
            ASSERT_LE(record->NumChannels, 32);
            ASSERT_GE(record->MaxTextureChannels, 0) << "cut at " << length;
        }
    }
}

// The cuts go round the five projections, so that every reader meets them.
TEST(MalformedInput, EveryCutOfACameraDocument) {
    TempFolder folder;
    for (size_t length = 0; length <= kCamera.size() + 1; ++length) {
        CameraRecord camera;
        std::memset(&camera, 0x5A, sizeof camera);
        camera.type = static_cast<int32_t>(1 + length % 5);
        const CameraRecord before = camera;
        RecordingNames names;
        const std::u16string path = length > kCamera.size()
                                        ? folder.pathOf("missing.xml")
                                        : folder.write("cut.xml", kCamera.substr(0, length));
        if (!ReadCameraDocument(&camera, path.c_str(), &names)) {
            ASSERT_EQ(std::memcmp(&camera, &before, sizeof camera), 0) << "cut at " << length;
            ASSERT_TRUE(names.calls.empty()) << "cut at " << length;
        }
    }
}

TEST(MalformedInput, RandomSpectrumFilesFailIntoAZeroTable) {
    TempFolder folder;
    std::unique_ptr<float[][4]> storage(new float[kSpectrumEntries][4]);
    auto& table = *reinterpret_cast<float(*)[kSpectrumEntries][4]>(storage.get());
    std::mt19937 random(20240611);
    const std::string alphabet = "0123456789012345678901234567890123456789.,,,,+-eE \n\r\tx";
    int succeeded = 0;
    for (int round = 0; round < 300; ++round) {
        std::string text;
        const size_t length = random() % 200;
        for (size_t i = 0; i < length; ++i)
            text += alphabet[random() % alphabet.size()];
        // Every third file is made of whole records with random noise in one place, so that the
        // success path is walked too.
        if (round % 3 == 0) text = "1,2,3,4\n5.5 , -6e-1,7,8\n" + text.substr(0, random() % 3);
        for (auto& entry : table)
            entry[0] = entry[1] = entry[2] = entry[3] = -1.0f;
        if (ReadSpectrumTable(table, folder.write("random.csv", text).c_str())) {
            ++succeeded;
            continue;
        }
        for (size_t i = 0; i < kSpectrumEntries; ++i) {
            for (int j = 0; j < 4; ++j)
                ASSERT_EQ(table[i][j], 0.0f) << "round " << round;
        }
    }
    EXPECT_GT(succeeded, 0);
}

} // namespace

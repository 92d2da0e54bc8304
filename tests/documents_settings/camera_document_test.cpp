#include "documents/camera_document.h"

#include "common/unicode.h"

#include "scene/temp_objects.h"
#include "tests/documents_settings/settings_test_support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

using namespace settings_test;

namespace {

constexpr uint8_t kFill = 0xA5;
constexpr size_t kBaseBytes = 764;

CameraRecord filledCamera(int32_t type) {
    CameraRecord camera;
    std::memset(&camera, kFill, sizeof camera);
    camera.type = type;
    return camera;
}

using Reader = bool (*)(CameraRecord*, const char16_t*, ITaviNameInterface*);

enum class Kind { Float, Bool, Int, Enum, Spline4, Spline8, Color, TexMap };

// One key as the document text gives it, and where it must land.
struct Key {
    const char* key;
    Kind kind;
    uint32_t offset;
};

uint32_t widthOf(Kind kind) {
    switch (kind) {
    case Kind::Bool:
        return 1;
    case Kind::Spline4:
        return 128;
    case Kind::Spline8:
        return 256;
    case Kind::Color:
        return 12;
    default:
        return 4;
    }
}

// A value per key index that no other key shares.
float valueFor(size_t index) {
    return 10.5f + static_cast<float>(index);
}
std::string mapName(size_t index) {
    return "map" + std::to_string(index);
}

// Two segments, 0 and 2, so that 1 and 3 must come out unused.
std::string splineText(float base) {
    auto segment = [&](int id, float shift) {
        std::string text = "<Segment id=\"" + std::to_string(id) + "\"";
        const char* names[] = {"ts", "t1", "t2", "te", "vs", "v1", "v2", "ve"};
        for (int i = 0; i < 8; ++i)
            text += std::string(" ") + names[i] + "=\"" + std::to_string(base + shift + i) + "\"";
        return text + "/>";
    };
    return segment(0, 0) + segment(2, 100);
}

std::string keyText(const Key& key, size_t index) {
    const std::string name = key.key;
    const std::string value = std::to_string(valueFor(index));
    switch (key.kind) {
    case Kind::Float:
        return "<" + name + " value=\"" + value + "\"/>";
    case Kind::Int:
        return "<" + name + " value=\"" + std::to_string(100 + index) + "\"/>";
    case Kind::Bool:
        return "<" + name + " value=\"" + (index % 2 ? "true" : "false") + "\"/>";
    case Kind::Enum:
        return "<" + name + " value=\"" + "equisolid\"/>"; // the only projection enum
    case Kind::Spline4:
    case Kind::Spline8:
        return "<" + name + ">" + splineText(valueFor(index)) + "</" + name + ">";
    case Kind::Color:
        return "<" + name + " R=\"" + value + "\" G=\"" + std::to_string(valueFor(index) + 0.25f) +
               "\" B=\"" + std::to_string(valueFor(index) + 0.5f) + "\"/>";
    case Kind::TexMap:
        return "<" + name + " name=\"" + mapName(index) + "\"/>";
    }
    return "";
}

void expectKey(const CameraRecord& camera, const Key& key, size_t index, const TableNames& names) {
    SCOPED_TRACE(key.key);
    const float value = valueFor(index);
    switch (key.kind) {
    case Kind::Float:
        EXPECT_EQ(floatAt(camera, key.offset), value);
        break;
    case Kind::Int:
        EXPECT_EQ(intAt(camera, key.offset), static_cast<int32_t>(100 + index));
        break;
    case Kind::Bool:
        EXPECT_EQ(byteAt(camera, key.offset), index % 2 ? 1 : 0);
        break;
    case Kind::Enum:
        EXPECT_EQ(intAt(camera, key.offset), 3);
        break;
    case Kind::Spline4:
    case Kind::Spline8: {
        const size_t segments = key.kind == Kind::Spline4 ? 4 : 8;
        for (size_t i = 0; i < 8; ++i) {
            EXPECT_EQ(floatAt(camera, key.offset + 4 * i), value + i) << "segment 0, float " << i;
            EXPECT_EQ(floatAt(camera, key.offset + 64 + 4 * i), value + 100 + i) << "segment 2, float " << i;
        }
        for (size_t s : {size_t(1), size_t(3)}) {
            EXPECT_EQ(floatAt(camera, key.offset + 32 * s), 1.0f) << "segment " << s << " ts";
            EXPECT_EQ(floatAt(camera, key.offset + 32 * s + 12), 0.0f) << "segment " << s << " te";
            EXPECT_EQ(byteAt(camera, key.offset + 32 * s + 4), kFill) << "segment " << s << " keeps t1";
        }
        if (segments == 8) {
            EXPECT_EQ(floatAt(camera, key.offset + 32 * 7), 1.0f);
        }
        break;
    }
    case Kind::Color:
        EXPECT_EQ(floatAt(camera, key.offset), value);
        EXPECT_EQ(floatAt(camera, key.offset + 4), value + 0.25f);
        EXPECT_EQ(floatAt(camera, key.offset + 8), value + 0.5f);
        break;
    case Kind::TexMap:
        EXPECT_EQ(intAt(camera, key.offset), names.texMaps.at(utf8ToUtf16(mapName(index))));
        break;
    }
}

// Every byte that no key of `keys` covers in [from, to) still holds the fill.
void expectUntouchedBesides(const CameraRecord& camera, const std::vector<Key>& keys, size_t from,
                            size_t to) {
    std::set<size_t> covered;
    for (const Key& key : keys) {
        for (size_t i = 0; i < widthOf(key.kind); ++i)
            covered.insert(key.offset + i);
    }
    for (size_t offset = from; offset < to; ++offset) {
        if (!covered.count(offset)) {
            EXPECT_EQ(byteAt(camera, offset), kFill) << "byte " << offset << " changed";
        }
    }
}

struct KindCase {
    int32_t type;
    const char* word;
    const char* section;
    Reader reader;
    uint32_t imageLength;
    std::vector<Key> keys;
};

const std::vector<KindCase> kKinds = {
    {1,
     "PERSPECTIVE",
     "Perspective",
     ReadCameraPerspective,
     1160,
     {{"LensShiftX", Kind::Float, 1148},
      {"LensShiftY", Kind::Float, 1152},
      {"FocalCurvature", Kind::Float, 1156},
      {"FocalLength", Kind::Spline4, 764},
      {"Zoom", Kind::Spline4, 1020},
      {"FovX", Kind::Spline4, 892}}},
    {2,
     "FISHEYE",
     "FishEye",
     ReadCameraFishEye,
     1036,
     {{"FocalCurvature", Kind::Float, 1020},
      {"MappingType", Kind::Enum, 1024},
      {"K1", Kind::Float, 1028},
      {"K2", Kind::Float, 1032},
      {"FocalLength", Kind::Spline4, 764},
      {"Zoom", Kind::Spline4, 892}}},
    {3,
     "ORTHO",
     "Ortho",
     ReadCameraOrtho,
     1028,
     {{"Width", Kind::Float, 764},
      {"Infinity", Kind::Bool, 1024},
      {"FocalLength", Kind::Spline4, 768},
      {"Zoom", Kind::Spline4, 896}}},
    {4,
     "CYLINDER",
     "Cylinder",
     ReadCameraCylinder,
     1040,
     {{"FovX", Kind::Float, 764},
      {"FovY", Kind::Float, 768},
      {"Height", Kind::Float, 772},
      {"LensShiftY", Kind::Float, 776},
      {"ProjectFromCenterPoint", Kind::Bool, 1036},
      {"FocalLength", Kind::Spline4, 780},
      {"Zoom", Kind::Spline4, 908}}},
    {5,
     "SPHERICAL",
     "Spherical",
     ReadCameraSpherical,
     1032,
     {{"FovX", Kind::Float, 1020},
      {"FovY", Kind::Float, 1024},
      {"Hemisphere", Kind::Bool, 1028},
      {"FocalLength", Kind::Spline4, 764},
      {"Zoom", Kind::Spline4, 892}}},
};

std::string sectionText(const char* section, const std::vector<Key>& keys) {
    std::string text = std::string("<") + section + ">";
    for (size_t i = 0; i < keys.size(); ++i)
        text += keyText(keys[i], i);
    return text + "</" + section + ">";
}

TEST(CameraDocument, EachProjectionReadsItsKeysIntoItsLayout) {
    TempFolder folder;
    for (const KindCase& kind : kKinds) {
        SCOPED_TRACE(kind.section);
        const std::string document = std::string("<TaviCamera type=\"") + kind.word + "\">" +
                                     sectionText(kind.section, kind.keys) + "</TaviCamera>";
        CameraRecord camera = filledCamera(kind.type);
        TableNames names;
        ASSERT_TRUE(kind.reader(&camera, folder.write("camera.xml", document).c_str(), &names));
        EXPECT_EQ(camera.type, kind.type);
        for (size_t i = 0; i < kind.keys.size(); ++i)
            expectKey(camera, kind.keys[i], i, names);
        expectUntouchedBesides(camera, kind.keys, kBaseBytes, sizeof camera);
    }
}

TEST(CameraDocument, LoaderPicksTheReaderByTheRecordsType) {
    TempFolder folder;
    // All five sections in one document: only the one of the record's type may be read.
    std::string body;
    for (const KindCase& kind : kKinds)
        body += sectionText(kind.section, kind.keys);
    for (const KindCase& kind : kKinds) {
        SCOPED_TRACE(kind.section);
        const std::string document =
            std::string("<TaviCamera type=\"") + kind.word + "\">" + body + "</TaviCamera>";
        CameraRecord camera = filledCamera(kind.type);
        TableNames names;
        ASSERT_TRUE(ReadCameraDocument(&camera, folder.write("camera.xml", document).c_str(), &names));
        for (size_t i = 0; i < kind.keys.size(); ++i)
            expectKey(camera, kind.keys[i], i, names);
        expectUntouchedBesides(camera, kind.keys, kBaseBytes, sizeof camera);
    }
}

TEST(CameraDocument, TypesOutsideOneToFiveFailAndLeaveTheRecord) {
    TempFolder folder;
    const std::u16string path = folder.write(
        "camera.xml", "<TaviCamera type=\"PERSPECTIVE\"><Common><Aspect value=\"2\"/></Common></TaviCamera>");
    for (int32_t type : {0, 6, 7, -1, 0x7FFFFFFF}) {
        CameraRecord camera = filledCamera(type);
        const CameraRecord before = camera;
        TableNames names;
        EXPECT_FALSE(ReadCameraDocument(&camera, path.c_str(), &names)) << type;
        EXPECT_EQ(std::memcmp(&camera, &before, sizeof camera), 0) << type;
        EXPECT_TRUE(names.calls.empty());
    }
}

const std::vector<Key> kCommonKeys = {
    {"SensorSize", Kind::Float, 4},       {"Aspect", Kind::Float, 8},
    {"FocusDistance", Kind::Spline4, 12}, {"NearPlane", Kind::Float, 140},
    {"FarPlane", Kind::Float, 144},       {"Distortion", Kind::Float, 580},
    {"DistortionMap", Kind::TexMap, 584}, {"BackgroundColor", Kind::Color, 604},
    {"WhiteBalanceK", Kind::Float, 588},  {"WhiteBalanceRGB", Kind::Color, 592},
    {"Exposure", Kind::Float, 616},       {"EV100", Kind::Float, 620},
};
const std::vector<Key> kShutterKeys = {
    {"TimeS", Kind::Float, 148},        {"TimeE", Kind::Float, 152},    {"UseCustomShutter", Kind::Bool, 761},
    {"Shape", Kind::Spline8, 156},      {"Normalize", Kind::Bool, 760}, {"ShutterTailS", Kind::Float, 412},
    {"ShutterTailE", Kind::Float, 416},
};
const std::vector<Key> kApertureKeys = {
    {"Map", Kind::TexMap, 420},           {"NumBlades", Kind::Int, 424},
    {"Fnumber", Kind::Spline4, 428},      {"BladeCurvature", Kind::Float, 556},
    {"Rotation", Kind::Float, 560},       {"AspectRatio", Kind::Float, 564},
    {"CenterBias", Kind::Float, 568},     {"CatEyeDiameter", Kind::Float, 572},
    {"CatEyeDistance", Kind::Float, 576},
};

TEST(CameraDocument, CommonSectionsReadEveryKey) {
    TempFolder folder;
    TableNames names;
    names.texMaps[u"map6"] = 46;
    names.texMaps[u"map30"] = 70;
    std::string common;
    for (size_t i = 0; i < kCommonKeys.size(); ++i)
        common += keyText(kCommonKeys[i], i);
    std::string shutter = "<Shutter>", aperture = "<Aperture>";
    // Indices go on from the common keys so that every value is its own.
    for (size_t i = 0; i < kShutterKeys.size(); ++i)
        shutter += keyText(kShutterKeys[i], 20 + i);
    for (size_t i = 0; i < kApertureKeys.size(); ++i)
        aperture += keyText(kApertureKeys[i], 30 + i);
    const std::string document =
        "<TaviCamera type=\"ortho\"><Common>" + common + shutter + "</Shutter>" + aperture +
        "</Aperture><Stereo><StereoType value=\"axis_shift\"/><StereoBase value=\"0.065\"/>"
        "</Stereo></Common></TaviCamera>";
    CameraRecord camera = filledCamera(1);
    ASSERT_TRUE(ReadCameraPerspective(&camera, folder.write("camera.xml", document).c_str(), &names));

    EXPECT_EQ(camera.type, 3) << "the type word compares without regard to case";
    for (size_t i = 0; i < kCommonKeys.size(); ++i)
        expectKey(camera, kCommonKeys[i], i, names);
    for (size_t i = 0; i < kShutterKeys.size(); ++i)
        expectKey(camera, kShutterKeys[i], 20 + i, names);
    for (size_t i = 0; i < kApertureKeys.size(); ++i)
        expectKey(camera, kApertureKeys[i], 30 + i, names);
    EXPECT_EQ(intAt(camera, 624), 3);
    EXPECT_EQ(floatAt(camera, 628), 0.065f);

    std::vector<Key> all = kCommonKeys;
    all.insert(all.end(), kShutterKeys.begin(), kShutterKeys.end());
    all.insert(all.end(), kApertureKeys.begin(), kApertureKeys.end());
    all.push_back({"type", Kind::Int, 0});
    all.push_back({"StereoType", Kind::Int, 624});
    all.push_back({"StereoBase", Kind::Float, 628});
    // The Perspective section is absent: its three splines are marked unused, nothing else moves.
    all.push_back({"FocalLength", Kind::Spline4, 764});
    all.push_back({"FovX", Kind::Spline4, 892});
    all.push_back({"Zoom", Kind::Spline4, 1020});
    expectUntouchedBesides(camera, all, 0, sizeof camera);
    // The references were asked for in table order.
    const std::vector<std::string> expected = {"TexMapId map6", "TexMapId map30"};
    EXPECT_EQ(names.calls, expected);
}

TEST(CameraDocument, PerspectiveWithoutItsSectionMarksTheSplinesUnusedAndKeepsTheFloats) {
    TempFolder folder;
    CameraRecord camera = filledCamera(1);
    TableNames names;
    const std::string document =
        "<TaviCamera type=\"PERSPECTIVE\"><Common><Aspect value=\"1.5\"/></Common></TaviCamera>";
    ASSERT_TRUE(ReadCameraPerspective(&camera, folder.write("camera.xml", document).c_str(), &names));
    EXPECT_EQ(floatAt(camera, 8), 1.5f);
    for (uint32_t spline : {764u, 892u, 1020u}) {
        for (uint32_t segment = 0; segment < 4; ++segment) {
            EXPECT_EQ(floatAt(camera, spline + 32 * segment), 1.0f);
            EXPECT_EQ(floatAt(camera, spline + 32 * segment + 12), 0.0f);
            EXPECT_EQ(byteAt(camera, spline + 32 * segment + 16), kFill);
        }
    }
    for (uint32_t offset = 1148; offset < 1160; ++offset)
        EXPECT_EQ(byteAt(camera, offset), kFill) << offset;
}

TEST(CameraDocument, TypeAttributeRules) {
    TempFolder folder;
    struct Case {
        const char* root;
        int32_t before;
        int32_t after;
    };
    const Case cases[] = {
        {"<TaviCamera>", 1, 0},                    // absent: the empty word, type 0
        {"<TaviCamera type=\"\">", 1, 0},          // empty: the same word
        {"<TaviCamera type=\"BOGUS\">", 2, 2},     // unknown: the field is not written
        {"<TaviCamera type=\"Spherical\">", 2, 5}, // any case
        {"<TaviCamera type=\"CYLINDER\">", 3, 4},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.root);
        CameraRecord camera = filledCamera(c.before);
        TableNames names;
        const std::string document = std::string(c.root) + "</TaviCamera>";
        ASSERT_TRUE(ReadCameraDocument(&camera, folder.write("camera.xml", document).c_str(), &names));
        EXPECT_EQ(camera.type, c.after);
    }
    EXPECT_EQ(LookUpCameraType(nullptr), 0);
    EXPECT_EQ(LookUpCameraType("fisheye"), 2);
    EXPECT_EQ(LookUpCameraType("FISH"), kCameraTypeUnknown);
}

TEST(CameraDocument, SectionFollowsTheOldTypeWhenTheDocumentNamesAnother) {
    TempFolder folder;
    CameraRecord camera = filledCamera(2);
    TableNames names;
    const std::string document = "<TaviCamera type=\"ORTHO\"><FishEye><K1 value=\"0.25\"/></FishEye>"
                                 "<Ortho><Width value=\"9\"/></Ortho></TaviCamera>";
    ASSERT_TRUE(ReadCameraDocument(&camera, folder.write("camera.xml", document).c_str(), &names));
    EXPECT_EQ(camera.type, 3);
    EXPECT_EQ(floatAt(camera, 1028), 0.25f);
    // Ortho's Width would land here; the fish-eye layout has its focal length spline, now unused.
    EXPECT_EQ(floatAt(camera, 764), 1.0f);
}

TEST(CameraDocument, StereoFocusWinsOverStereoBase) {
    TempFolder folder;
    struct Case {
        const char* stereo;
        float expected;
    };
    const Case cases[] = {
        {"<StereoBase value=\"1\"/><StereoFocus value=\"2\"/>", 2.0f},
        {"<StereoFocus value=\"2\"/><StereoBase value=\"1\"/>", 2.0f},
        {"<StereoBase value=\"1\"/>", 1.0f},
        {"<StereoFocus value=\"3\"/>", 3.0f},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.stereo);
        CameraRecord camera = filledCamera(5);
        TableNames names;
        const std::string document =
            std::string("<TaviCamera><Common><Stereo>") + c.stereo + "</Stereo></Common></TaviCamera>";
        ASSERT_TRUE(ReadCameraDocument(&camera, folder.write("camera.xml", document).c_str(), &names));
        EXPECT_EQ(floatAt(camera, 628), c.expected);
        // The field behind keeps what the scene gave.
        EXPECT_EQ(byteAt(camera, 632), kFill);
        EXPECT_EQ(intAt(camera, 624), 0) << "a missing StereoType is the empty word";
    }
}

TEST(CameraDocument, OtherRootReadsAsEmptyDocument) {
    TempFolder folder;
    CameraRecord camera = filledCamera(4);
    const CameraRecord before = camera;
    TableNames names;
    const std::string document =
        "<TaviCamra type=\"ORTHO\"><Common><Aspect value=\"3\"/></Common></TaviCamra>";
    ASSERT_TRUE(ReadCameraDocument(&camera, folder.write("camera.xml", document).c_str(), &names));
    EXPECT_EQ(camera.type, 0);
    EXPECT_EQ(std::memcmp(reinterpret_cast<const uint8_t*>(&camera) + 4,
                          reinterpret_cast<const uint8_t*>(&before) + 4, 8),
              0)
        << "numbers stay";
    EXPECT_EQ(camera.DistortionMap, -1);
    EXPECT_EQ(camera.ApertureMap, -1);
    EXPECT_EQ(floatAt(camera, 12), 1.0f);
    EXPECT_EQ(floatAt(camera, 156 + 7 * 32), 1.0f) << "the shutter shape's last segment is unused";
    const std::vector<std::string> expected = {"TexMapId ", "TexMapId "};
    EXPECT_EQ(names.calls, expected);
}

TEST(CameraDocument, UnreadableFilesFailAndLeaveTheRecord) {
    TempFolder folder;
    const std::u16string broken = folder.write("broken.xml", "<TaviCamera><Common>");
    const std::u16string missing = folder.pathOf("missing.xml");
    for (const std::u16string& path : {broken, missing}) {
        for (const KindCase& kind : kKinds) {
            CameraRecord camera = filledCamera(kind.type);
            const CameraRecord before = camera;
            TableNames names;
            EXPECT_FALSE(kind.reader(&camera, path.c_str(), &names)) << kind.section;
            EXPECT_EQ(std::memcmp(&camera, &before, sizeof camera), 0) << kind.section;
            EXPECT_TRUE(names.calls.empty());
        }
    }
}

TEST(CameraDocument, AppliesToTheSceneCamerasRecord) {
    TempFolder folder;
    TempCamera camera;
    camera.camera.type = 3;
    camera.cameraRole = 0;
    TableNames names;
    names.texMaps[u"Bokeh"] = 12;
    const std::string document =
        "<TaviCamera type=\"ORTHO\"><Common><Aperture><Map name=\"Bokeh\"/></Aperture>"
        "</Common><Ortho><Width value=\"4.5\"/><Infinity value=\"yes\"/></Ortho></TaviCamera>";
    ASSERT_TRUE(ApplyCameraDocument(&camera, folder.write("camera.xml", document).c_str(), &names));
    EXPECT_EQ(camera.camera.ApertureMap, 12);
    EXPECT_EQ(camera.camera.DistortionMap, -1);
    EXPECT_EQ(floatAt(camera.camera, 764), 4.5f);
    EXPECT_EQ(byteAt(camera.camera, 1024), 1);
    EXPECT_EQ(camera.cameraRole, 0);
    EXPECT_FALSE(ApplyCameraDocument(nullptr, folder.pathOf("camera.xml").c_str(), &names));
}

} // namespace

// Camera documents: the shared part under Common, then the section of the record's projection.
// The five projections lay their fields over the same bytes from 764 on, so each test of a
// section also checks that no other byte moved.
#include "documents/camera_document.h"

#include "scene/temp_objects.h"
#include "tests/documents/settings_test_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace settings_test;

namespace {

constexpr size_t kBaseBytes = 764;

CameraRecord filledCamera(int32_t type) {
    CameraRecord camera;
    std::memset(&camera, kFill, sizeof camera);
    camera.type = type;
    return camera;
}

enum class Kind { Float, Int, Bool, Enum, Spline, Color, Map };

// One key as the document gives it, and where it lands.
struct Key {
    const char* key;
    Kind kind;
    uint32_t offset;
    uint32_t segments = 4;
    uint32_t width() const {
        return kind == Kind::Spline ? 32 * segments : kind == Kind::Color ? 12 : kind == Kind::Bool ? 1 : 4;
    }
};

// Key number `i` gets values that no other key has; its map is named so that its id is 1000 + i.
std::string keyText(const Key& key, size_t i, RecordingNames& names) {
    const std::string name = key.key, v = std::to_string(10 + i);
    switch (key.kind) {
    case Kind::Spline: {
        // Segment 0 only, so that the others must come out unused.
        std::string segment = "<Segment id='0'";
        int k = 0;
        for (const char* attribute : {"ts", "t1", "t2", "te", "vs", "v1", "v2", "ve"})
            segment += std::string(" ") + attribute + "='" + std::to_string(10 + i + k++) + "'";
        return "<" + name + ">" + segment + "/></" + name + ">";
    }
    case Kind::Color:
        return "<" + name + " R='" + v + "' G='" + v + ".25' B='" + v + ".5'/>";
    case Kind::Map:
        names.define(static_cast<int32_t>(1000 + i), utf8ToUtf16("map" + v));
        return "<" + name + " name='map" + v + "'/>";
    case Kind::Bool:
        return "<" + name + " value='" + (i % 2 ? "true" : "false") + "'/>";
    case Kind::Enum:
        return "<" + name + " value='equisolid'/>"; // the one enum of the projections
    default:
        return "<" + name + " value='" + v + "'/>";
    }
}

void expectKey(const CameraRecord& camera, const Key& key, size_t i) {
    SCOPED_TRACE(key.key);
    const float v = 10.0f + static_cast<float>(i);
    switch (key.kind) {
    case Kind::Float:
        EXPECT_EQ(floatAt(camera, key.offset), v);
        break;
    case Kind::Int:
        EXPECT_EQ(intAt(camera, key.offset), static_cast<int32_t>(10 + i));
        break;
    case Kind::Bool:
        EXPECT_EQ(byteAt(camera, key.offset), i % 2);
        break;
    case Kind::Enum:
        EXPECT_EQ(intAt(camera, key.offset), 3);
        break;
    case Kind::Map:
        EXPECT_EQ(intAt(camera, key.offset), static_cast<int32_t>(1000 + i));
        break;
    case Kind::Color:
        EXPECT_EQ(floatAt(camera, key.offset), v);
        EXPECT_EQ(floatAt(camera, key.offset + 4), v + 0.25f);
        EXPECT_EQ(floatAt(camera, key.offset + 8), v + 0.5f);
        break;
    case Kind::Spline:
        for (uint32_t k = 0; k < 8; ++k)
            EXPECT_EQ(floatAt(camera, key.offset + 4 * k), v + static_cast<float>(k)) << k;
        for (uint32_t s = 1; s < key.segments; ++s) {
            EXPECT_EQ(floatAt(camera, key.offset + 32 * s), 1.0f) << "segment " << s << " is unused";
            EXPECT_EQ(floatAt(camera, key.offset + 32 * s + 12), 0.0f) << "segment " << s << " is unused";
            EXPECT_EQ(byteAt(camera, key.offset + 32 * s + 4), kFill) << "segment " << s << " keeps t1";
        }
    }
}

// The first byte from `from` on that no key covers and that lost the fill; npos when none did.
size_t firstTouched(const CameraRecord& camera, const std::vector<Key>& keys, size_t from) {
    std::vector<bool> covered(sizeof camera);
    for (const Key& key : keys)
        std::fill(covered.begin() + key.offset, covered.begin() + key.offset + key.width(), true);
    for (size_t b = from; b < sizeof camera; ++b) {
        if (!covered[b] && byteAt(camera, b) != kFill) return b;
    }
    return std::string::npos;
}

std::string sectionText(const std::string& section, const std::vector<Key>& keys, size_t first,
                        RecordingNames& names) {
    std::string text = "<" + section + ">";
    for (size_t i = 0; i < keys.size(); ++i)
        text += keyText(keys[i], first + i, names);
    return text + "</" + section + ">";
}

struct Projection {
    int32_t type;
    const char* word;
    const char* section; // not the type word: FISHEYE's section is FishEye
    std::vector<Key> keys;
};

// clang-format off
const std::vector<Projection> kProjections = {
    {1, "PERSPECTIVE", "Perspective",
     {{"LensShiftX", Kind::Float, 1148}, {"LensShiftY", Kind::Float, 1152},
      {"FocalCurvature", Kind::Float, 1156}, {"FocalLength", Kind::Spline, 764}, {"Zoom", Kind::Spline, 1020},
      {"FovX", Kind::Spline, 892}}},
    {2, "FISHEYE", "FishEye",
     {{"FocalCurvature", Kind::Float, 1020}, {"MappingType", Kind::Enum, 1024}, {"K1", Kind::Float, 1028},
      {"K2", Kind::Float, 1032}, {"FocalLength", Kind::Spline, 764}, {"Zoom", Kind::Spline, 892}}},
    {3, "ORTHO", "Ortho",
     {{"Width", Kind::Float, 764}, {"Infinity", Kind::Bool, 1024}, {"FocalLength", Kind::Spline, 768},
      {"Zoom", Kind::Spline, 896}}},
    {4, "CYLINDER", "Cylinder",
     {{"FovX", Kind::Float, 764}, {"FovY", Kind::Float, 768}, {"Height", Kind::Float, 772},
      {"LensShiftY", Kind::Float, 776}, {"ProjectFromCenterPoint", Kind::Bool, 1036},
      {"FocalLength", Kind::Spline, 780}, {"Zoom", Kind::Spline, 908}}},
    {5, "SPHERICAL", "Spherical",
     {{"FovX", Kind::Float, 1020}, {"FovY", Kind::Float, 1024}, {"Hemisphere", Kind::Bool, 1028},
      {"FocalLength", Kind::Spline, 764}, {"Zoom", Kind::Spline, 892}}},
};
// clang-format on

// All five sections stand in one document; only the one of the record's type may be read.
TEST(CameraDocument, EachProjectionReadsOnlyItsOwnSectionOverTheSharedBytes) {
    TempFolder folder;
    RecordingNames names;
    std::string body;
    for (const Projection& projection : kProjections)
        body += sectionText(projection.section, projection.keys, 0, names);
    for (const Projection& projection : kProjections) {
        SCOPED_TRACE(projection.section);
        const std::string document =
            std::string("<TaviCamera type='") + projection.word + "'>" + body + "</TaviCamera>";
        CameraRecord camera = filledCamera(projection.type);
        ASSERT_TRUE(ReadCameraDocument(&camera, folder.write("camera.xml", document).c_str(), &names));
        EXPECT_EQ(camera.type, projection.type);
        for (size_t i = 0; i < projection.keys.size(); ++i)
            expectKey(camera, projection.keys[i], i);
        EXPECT_EQ(firstTouched(camera, projection.keys, kBaseBytes), std::string::npos);
    }
}

TEST(CameraDocument, CommonSectionsReadTheirKeysAndTouchNothingElse) {
    // clang-format off
    const std::vector<Key> common = {
        {"Aspect", Kind::Float, 8}, {"FocusDistance", Kind::Spline, 12}, {"FarPlane", Kind::Float, 144},
        {"DistortionMap", Kind::Map, 584}, {"BackgroundColor", Kind::Color, 604},
        {"WhiteBalanceK", Kind::Float, 588}, {"EV100", Kind::Float, 620}};
    const std::vector<Key> shutter = {
        {"TimeE", Kind::Float, 152}, {"UseCustomShutter", Kind::Bool, 761}, {"Normalize", Kind::Bool, 760},
        {"Shape", Kind::Spline, 156, 8}, {"ShutterTailE", Kind::Float, 416}};
    const std::vector<Key> aperture = {
        {"Map", Kind::Map, 420}, {"NumBlades", Kind::Int, 424}, {"Fnumber", Kind::Spline, 428},
        {"CatEyeDistance", Kind::Float, 576}};
    // clang-format on
    TempFolder folder;
    RecordingNames names;
    std::string text = "<TaviCamera type='ortho'><Common>";
    for (size_t i = 0; i < common.size(); ++i)
        text += keyText(common[i], i, names);
    text +=
        sectionText("Shutter", shutter, 20, names) + sectionText("Aperture", aperture, 30, names) +
        "<Stereo><StereoType value='axis_shift'/><StereoBase value='0.065'/></Stereo></Common></TaviCamera>";
    CameraRecord camera = filledCamera(1);
    ASSERT_TRUE(ReadCameraPerspective(&camera, folder.write("camera.xml", text).c_str(), &names));

    EXPECT_EQ(camera.type, 3) << "the type word compares without regard to case";
    std::vector<Key> all = {
        {"type", Kind::Int, 0}, {"StereoType", Kind::Int, 624}, {"StereoBase", Kind::Float, 628}};
    const auto check = [&](const std::vector<Key>& keys, size_t first) {
        for (size_t i = 0; i < keys.size(); ++i)
            expectKey(camera, keys[i], first + i);
        all.insert(all.end(), keys.begin(), keys.end());
    };
    check(common, 0);
    check(shutter, 20);
    check(aperture, 30);
    EXPECT_EQ(intAt(camera, 624), 3);
    EXPECT_EQ(floatAt(camera, 628), 0.065f);
    // The Perspective section is absent: its splines are marked unused and nothing else moves.
    for (uint32_t segment = 764; segment < 1148; segment += 32) {
        EXPECT_EQ(floatAt(camera, segment), 1.0f) << segment;
        EXPECT_EQ(floatAt(camera, segment + 12), 0.0f) << segment;
        all.push_back({"ts", Kind::Float, segment});
        all.push_back({"te", Kind::Float, segment + 12});
    }
    EXPECT_EQ(firstTouched(camera, all, 0), std::string::npos);
    const std::vector<std::string> references = {"TexMapId map13", "TexMapId map40"};
    EXPECT_EQ(names.calls, references) << "asked for in table order";
}

TEST(CameraDocument, TypeWordsAndTypesWithoutAReader) {
    TempFolder folder;
    const std::pair<const char*, std::pair<int32_t, int32_t>> cases[] = {
        {"<TaviCamera>", {1, 0}},                  // absent: the empty word, type 0
        {"<TaviCamera type=''>", {1, 0}},          // empty: the same word
        {"<TaviCamera type='BOGUS'>", {2, 2}},     // unknown: the field is not written
        {"<TaviCamera type='Spherical'>", {2, 5}}, // any case
        {"<TaviCamera type='CYLINDER'>", {3, 4}},
    };
    for (const auto& [root, types] : cases) {
        SCOPED_TRACE(root);
        CameraRecord camera = filledCamera(types.first);
        RecordingNames names;
        const std::u16string path = folder.write("camera.xml", std::string(root) + "</TaviCamera>");
        ASSERT_TRUE(ReadCameraDocument(&camera, path.c_str(), &names));
        EXPECT_EQ(camera.type, types.second);
    }
    EXPECT_EQ(LookUpCameraType(nullptr), 0);
    EXPECT_EQ(LookUpCameraType("fisheye"), 2);
    EXPECT_EQ(LookUpCameraType("FISH"), kCameraTypeUnknown);

    const std::u16string path =
        folder.write("camera.xml", "<TaviCamera type='PERSPECTIVE'><Common/></TaviCamera>");
    for (int32_t type : {0, 6, -1, 0x7FFFFFFF}) {
        CameraRecord camera = filledCamera(type);
        const CameraRecord before = camera;
        RecordingNames names;
        EXPECT_FALSE(ReadCameraDocument(&camera, path.c_str(), &names)) << type;
        EXPECT_EQ(std::memcmp(&camera, &before, sizeof camera), 0) << type;
        EXPECT_TRUE(names.calls.empty()) << type;
    }
}

TEST(CameraDocument, SectionFollowsTheOldTypeWhenTheDocumentNamesAnother) {
    TempFolder folder;
    CameraRecord camera = filledCamera(2);
    RecordingNames names;
    const std::string document = "<TaviCamera type='ORTHO'><FishEye><K1 value='0.25'/></FishEye>"
                                 "<Ortho><Width value='9'/></Ortho></TaviCamera>";
    ASSERT_TRUE(ReadCameraDocument(&camera, folder.write("camera.xml", document).c_str(), &names));
    EXPECT_EQ(camera.type, 3);
    EXPECT_EQ(floatAt(camera, 1028), 0.25f);
    // Ortho's Width would land here; in the fish-eye layout it is the focal length, now unused.
    EXPECT_EQ(floatAt(camera, 764), 1.0f);
}

TEST(CameraDocument, StereoFocusWinsOverStereoBase) {
    TempFolder folder;
    const std::pair<const char*, float> cases[] = {
        {"<StereoBase value='1'/><StereoFocus value='2'/>", 2.0f},
        {"<StereoFocus value='2'/><StereoBase value='1'/>", 2.0f},
        {"<StereoBase value='1'/>", 1.0f},
        {"<StereoFocus value='3'/>", 3.0f},
    };
    for (const auto& [stereo, expected] : cases) {
        SCOPED_TRACE(stereo);
        CameraRecord camera = filledCamera(5);
        RecordingNames names;
        const std::string document =
            std::string("<TaviCamera><Common><Stereo>") + stereo + "</Stereo></Common></TaviCamera>";
        ASSERT_TRUE(ReadCameraDocument(&camera, folder.write("camera.xml", document).c_str(), &names));
        EXPECT_EQ(floatAt(camera, 628), expected);
        EXPECT_EQ(byteAt(camera, 632), kFill) << "the field behind keeps what the scene gave";
        EXPECT_EQ(intAt(camera, 624), 0) << "a missing StereoType is the empty word";
    }
}

TEST(CameraDocument, AnotherRootReadsAsADocumentWithoutKeys) {
    TempFolder folder;
    CameraRecord camera = filledCamera(4);
    RecordingNames names;
    const std::string document = "<TaviCamra type='ORTHO'><Common><Aspect value='3'/></Common></TaviCamra>";
    ASSERT_TRUE(ReadCameraDocument(&camera, folder.write("camera.xml", document).c_str(), &names));
    EXPECT_EQ(camera.type, 0);
    EXPECT_EQ(wordAt(camera, 8), kFillWord) << "numbers stay";
    EXPECT_EQ(camera.DistortionMap, -1);
    EXPECT_EQ(camera.ApertureMap, -1);
    EXPECT_EQ(floatAt(camera, 12), 1.0f) << "splines are unused";
    EXPECT_EQ(floatAt(camera, 156 + 7 * 32), 1.0f) << "all eight segments of the shutter shape";
    EXPECT_EQ(floatAt(camera, 780 + 3 * 32), 1.0f) << "and the cylinder's own";
    EXPECT_EQ(names.calls, std::vector<std::string>({"TexMapId ", "TexMapId "}));
}

TEST(CameraDocument, AppliesToTheSceneCamerasRecord) {
    TempFolder folder;
    TempCamera camera;
    camera.camera.type = 3;
    camera.cameraRole = 0;
    RecordingNames names;
    names.define(12, u"Bokeh");
    const std::string document =
        "<TaviCamera type='ORTHO'><Common><Aperture><Map name='Bokeh'/></Aperture>"
        "</Common><Ortho><Width value='4.5'/><Infinity value='yes'/></Ortho></TaviCamera>";
    ASSERT_TRUE(ApplyCameraDocument(&camera, folder.write("camera.xml", document).c_str(), &names));
    EXPECT_EQ(camera.camera.ApertureMap, 12);
    EXPECT_EQ(camera.camera.DistortionMap, -1);
    EXPECT_EQ(floatAt(camera.camera, 764), 4.5f);
    EXPECT_EQ(byteAt(camera.camera, 1024), 1);
    EXPECT_EQ(camera.cameraRole, 0);
    EXPECT_FALSE(ApplyCameraDocument(nullptr, folder.pathOf("camera.xml").c_str(), &names));
}

} // namespace

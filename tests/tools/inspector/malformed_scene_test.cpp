// Files the client refuses: the inspector refuses them too, with the client's own messages.
#include "client/messages.h"
#include "common/wide_format.h"
#include "tests/support/hostile_scenes.h"
#include "tests/tools/inspector/scene_files.h"
#include "tools/scene_writer/record_builders.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using inspector::Inspection;

std::string text(const char16_t* message) { return utf16ToUtf8(message); }

sw::Bytes settings() { return sw::settingsBody({}); }

// A scene the client loads, changed by `damage` before it is written.
sw::Bytes sceneWith(const std::function<void(sw::SceneFile&)>& damage) {
    sw::SceneFile file;
    file.add(sw::storedChunk(sw::kSettings, settings()));
    file.add(sw::storedChunk(sw::kMaterial, sw::materialBody(7, 1, 0, "plain")));
    damage(file);
    return file.build();
}

TEST(MalformedScene, RefusedWithTheClientsMessages) {
    const std::string invalid = text(messages::kInvalidScene);
    const struct Case {
        const char* what;
        std::function<void(sw::SceneFile&)> damage;
        std::vector<std::string> messages;
    } cases[] = {
        {"the magic", [](sw::SceneFile& f) { f.magic = "not a scene file"; }, {invalid}},
        {"a newer format", [](sw::SceneFile& f) { f.formatVersion = 104; }, {text(messages::kUnknownVersion)}},
        {"no header check", [](sw::SceneFile& f) { f.headerCheck = 0; }, {invalid}},
        {"no settings", [](sw::SceneFile& f) { f.layout = {1}, f.chain = {1}; }, {invalid}},
        {"a material of another version", [](sw::SceneFile& f) { f[1].version = 99; },
         {text(messages::kUnknownVersion)}},
        {"a body past the end of the file", [](sw::SceneFile& f) { f[1].storedSize = 1u << 30; },
         {text(messages::kIoError)}},
        {"a light without its path",
         [](sw::SceneFile& f) {
             f.add(sw::storedChunk(sw::kLight, sw::lightBody(5), sw::lightVersion(5)));
             f.add(sw::storedChunk(sw::kTextureFile, sw::textureFileBody({})));
         },
         {invalid}},
        {"two textures of one name",
         [](sw::SceneFile& f) {
             f.add(sw::storedChunk(sw::kTextureFile, sw::textureFileBody({0, 0, 1, "wood", "a.png"})));
             f.add(sw::storedChunk(sw::kTextureFile, sw::textureFileBody({0, 0, 2, "wood", "b.png"})));
         },
         {utf16ToUtf8(formatWide(messages::kDuplicateTexture, u"wood")), invalid}},
        {"two materials of one name",
         [](sw::SceneFile& f) { f.add(sw::storedChunk(sw::kMaterial, sw::materialBody(7, 2, 0, "plain"))); },
         {utf16ToUtf8(formatWide(messages::kDuplicateMaterial, u"plain")), invalid}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const Inspection inspection = inspectBytes(sceneWith(c.damage), "damaged");
        EXPECT_FALSE(inspection.verdict.accepted());
        EXPECT_EQ(inspection.verdict.messages, c.messages);
        EXPECT_EQ(inspector::textReport(inspection, false), c.messages.front() + "\n" +
                                                                (c.messages.size() > 1 ? c.messages[1] + "\n" : ""));
    }
}

TEST(MalformedScene, ARecordKnownUnderItsOwnIdIsNoClash) {
    const Inspection inspection = inspectBytes(
        sceneWith([](sw::SceneFile& f) { f.add(sw::storedChunk(sw::kMaterial, sw::materialBody(7, 1, 0, "plain"))); }),
        "same");
    EXPECT_TRUE(inspection.verdict.accepted());
    EXPECT_EQ(inspection.inventory.materials.size(), 1u);
}

TEST(MalformedScene, AMissingFileIsAnIoError) {
    const Inspection inspection = inspector::inspectScene(u"/nonexistent/scene.tavi");
    EXPECT_EQ(inspection.verdict.messages, std::vector<std::string>{text(messages::kIoError)});
}

// The scenes of the client's hardening, through the same readers: each ends with the first
// error the client reports, or, where the client has none, with the inspector's own.
TEST(MalformedScene, HostileScenesEndWithTheClientsMessage) {
    for (const hostile_scenes::HostileScene& c : hostile_scenes::kHostileScenes) {
        SCOPED_TRACE(c.what);
        const Inspection inspection = inspectBytes(c.scene(settings()), "hostile");
        ASSERT_FALSE(inspection.verdict.accepted());
        if (*c.message) {
            EXPECT_EQ(inspection.verdict.messages.front(), c.message);
        } else {
            EXPECT_EQ(inspection.verdict.status, SceneOutOfMemory);
        }
    }
}

} // namespace

// Scenes made to cost far more than their size: each ends promptly and in little memory, with
// the message its damage deserves.
#include "tests/client/test_scene.h"
#include "tests/support/hostile_scenes.h"

#include <gtest/gtest.h>

#include <iostream>

namespace {

// What a run may hold resident: the plain client stays far below it; the sanitizers' shadow
// memory and quarantine need room of their own.
#if defined(__SANITIZE_ADDRESS__)
constexpr uint64_t kResidentLimitKiB = 768u << 10;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr uint64_t kResidentLimitKiB = 768u << 10;
#else
constexpr uint64_t kResidentLimitKiB = 256u << 10;
#endif
#else
constexpr uint64_t kResidentLimitKiB = 256u << 10;
#endif

TEST(HostileScene, EndsPromptlyInLittleMemoryWithItsMessage) {
    for (const hostile_scenes::HostileScene& c : hostile_scenes::kHostileScenes) {
        SCOPED_TRACE(c.what);
        ClientSandbox sandbox(recordingEnginePath());
        const sw::Bytes bytes = c.scene(TestScene::quietSettings());
        ASSERT_LT(bytes.size(), 4u << 20);
        ASSERT_TRUE(sw::writeBytes(sandbox.path("scene.tavi"), bytes));
        ClientRun run = sandbox.run({"-scene", sandbox.path("scene.tavi")});
        std::cout << c.what << ": " << bytes.size() << " bytes, " << run.wallSeconds << " s, "
                  << run.peakResidentKiB / 1024 << " MiB resident\n";
        EXPECT_EQ(run.exitStatus, 255) << run.output;
        EXPECT_LT(run.peakResidentKiB, kResidentLimitKiB);
        if (*c.message) {
            EXPECT_TRUE(contains(run.output, std::string(c.message) + "\n")) << run.output;
        }
        EXPECT_TRUE(contains(run.output, "Rendering failed!")) << run.output;
    }
}

} // namespace

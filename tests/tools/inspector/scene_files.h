// Scene files for the inspector's tests: written by the scene writer into the test's own folder.
#pragma once
#include "common/unicode.h"
#include "tools/inspector/inventory.h"
#include "tools/scene_writer/scene_writer.h"

#include <gtest/gtest.h>

#include <string>
#include <unistd.h>

namespace sw = scene_writer;

// Writes `bytes` under a name of this process and returns the path; tests run side by side.
inline std::string writeTestScene(const sw::Bytes& bytes, const std::string& name) {
    const std::string path = ::testing::TempDir() + "inspector_" + std::to_string(getpid()) + "_" + name + ".tavi";
    EXPECT_TRUE(sw::writeBytes(path, bytes)) << path;
    return path;
}

inline inspector::Inspection inspectBytes(const sw::Bytes& bytes, const std::string& name) {
    return inspector::inspectScene(utf8ToUtf16(writeTestScene(bytes, name)));
}

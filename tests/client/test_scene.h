// Scenes and engine logs for the end-to-end tests of the load.
#pragma once
#include "scene/records.h"
#include "tests/support/client_sandbox.h"
#include "tools/scene_writer/record_builders.h"
#include "tools/scene_writer/scene_writer.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace sw = scene_writer;

// A scene whose settings give no warnings of their own.
struct TestScene {
    sw::SceneFile file;
    sw::Bytes settings = quietSettings();

    static sw::Bytes quietSettings() {
        sw::Bytes s = sw::settingsBody({});
        sw::put32(s, offsetof(SettingsRecord, ToneOperator.OperatorType), 2);
        sw::put32(s, offsetof(SettingsRecord, StartingVolumetricMaterial), static_cast<uint32_t>(-1));
        return s;
    }
    void add(uint32_t type, const sw::Bytes& body, uint32_t version = 100) {
        file.add(sw::storedChunk(type, body, version));
    }
    void addCamera(int32_t role, int32_t distortionMap = -1) {
        sw::Bytes camera = sw::cameraBody(1);
        sw::put32(camera, offsetof(CameraRecord, DistortionMap), static_cast<uint32_t>(distortionMap));
        sw::put32(camera, offsetof(CameraRecord, ApertureMap), static_cast<uint32_t>(-1));
        add(sw::kCamera, camera);
        sw::CameraPathPlan path;
        path.role = role;
        add(sw::kCameraPath, sw::cameraPathBody(path));
    }
    void addLight(int32_t texMap) {
        sw::Bytes light = sw::lightBody(5);
        sw::put32(light, offsetof(LightRecord, texMap), static_cast<uint32_t>(texMap));
        add(sw::kLight, light, sw::lightVersion(5));
        add(sw::kLightPath, sw::lightPathBody({}));
    }
    std::string write(const ClientSandbox& sandbox) {
        file.add(sw::storedChunk(sw::kSettings, settings));
        std::string path = sandbox.path("scene.tavi");
        EXPECT_TRUE(file.write(path));
        return path;
    }
};

inline std::string field(const std::vector<std::string>& log, const std::string& operation, const std::string& key) {
    for (const std::string& line : log) {
        if (line.rfind(operation + " ", 0) != 0) continue;
        size_t at = line.find(" " + key + "=");
        if (at == std::string::npos) return "";
        size_t start = at + key.size() + 2;
        size_t end = line[start] == '"' ? line.find('"', start + 1) + 1 : line.find(' ', start);
        return line.substr(start, end == std::string::npos ? std::string::npos : end - start);
    }
    return "<no " + operation + ">";
}

inline std::vector<std::string> operations(const std::vector<std::string>& log) {
    std::vector<std::string> names;
    for (const std::string& line : log) names.push_back(line.substr(0, line.find(' ')));
    return names;
}

inline bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

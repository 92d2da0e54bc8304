#include "tests/tools/builder/builder_test_support.h"

#include "scene/scene_readers.h"
#include "tests/support/client_sandbox.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

TempFolder::TempFolder() {
    std::string pattern = (fs::temp_directory_path() / "tavi-build-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
    path_ = pattern;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::vector<std::string> TempFolder::entries(const std::string& below) const {
    std::vector<std::string> names;
    const fs::path folder = below.empty() ? fs::path(path_) : fs::path(path_) / below;
    std::error_code missing;
    for (const auto& entry : fs::directory_iterator(folder, missing)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string testModel(const std::string& relative) {
    const std::string path = std::string(ASSIMP_MODELS) + "/" + relative;
    return fs::exists(path) ? path : std::string();
}

std::vector<uint8_t> readBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void writeText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

builder::BuildOptions quietOptions(const std::string& input, const std::string& output) {
    builder::BuildOptions options;
    options.input = input;
    options.output = output;
    options.progress = false;
    return options;
}

namespace {

std::string narrow(const char16_t* text, size_t capacity) {
    std::string out;
    for (size_t i = 0; i < capacity && text[i]; ++i) out += static_cast<char>(text[i]);
    return out;
}

// Integers of a comma-separated log value.
std::vector<size_t> numbersOf(const std::string& list) {
    std::vector<size_t> numbers;
    std::stringstream stream(list);
    for (std::string item; std::getline(stream, item, ',');) numbers.push_back(std::stoul(item));
    return numbers;
}

std::string valueOf(const std::string& line, const std::string& key) {
    const size_t at = line.find(" " + key + "=");
    if (at == std::string::npos) return {};
    const size_t start = at + key.size() + 2;
    return line.substr(start, line.find(' ', start) - start);
}

} // namespace

SceneRecords readRecords(const std::string& scenePath) {
    SceneRecords records;
    SceneFileReader reader;
    const std::u16string path(scenePath.begin(), scenePath.end());
    if (reader.open(path.c_str()) != SceneOk) return records;
    uint64_t offset = 0;
    for (MaterialRecord material{}; readMaterial(reader, material, offset) == SceneOk; material = {}) {
        records.materialTypes.push_back(material.type);
        records.materialNames.push_back(narrow(material.Name, kNameChars));
        releaseMaterial(material);
        if (offset == 0) break;
    }
    offset = 0;
    for (TexMapRecord texMap{}; readTexMap(reader, texMap, offset) == SceneOk;) {
        ++records.texMaps;
        if (offset == 0) break;
    }
    offset = 0;
    for (TextureFileRecord file{}; readTextureFile(reader, file, offset) == SceneOk;) {
        ++records.textureFiles;
        records.texturePaths.push_back(narrow(file.path, kPathChars));
        if (offset == 0) break;
    }
    records.readable = true;
    return records;
}

ClientLoad loadThroughClient(const std::string& scenePath) {
    ClientSandbox sandbox(recordingEnginePath());
    const ClientRun run = sandbox.run({"-scene", scenePath});
    ClientLoad load;
    load.exitStatus = run.exitStatus;
    load.output = run.output;
    for (const std::string& line : sandbox.engineLog()) {
        if (line.rfind("addTriangleMeshes ", 0) == 0) {
            ++load.models;
            load.parts += std::stoul(valueOf(line, "parts"));
            for (size_t triangles : numbersOf(valueOf(line, "triangles"))) load.triangles += triangles;
        }
        if (line.rfind("addLight ", 0) == 0) ++load.lights;
        if (line.rfind("addCamera ", 0) == 0) ++load.cameras;
    }
    return load;
}

// Builds scenes from models into temporary folders and reads them back: the records through
// the client's scene readers, the models through the client and the recording engine.
#pragma once
#include "tools/builder/build_options.h"
#include "tools/builder/scene_build.h"

#include <cstdint>
#include <string>
#include <vector>

// A folder that lives as long as the object.
class TempFolder {
  public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    // The names of the entries, sorted.
    std::vector<std::string> entries(const std::string& below = "") const;

  private:
    std::string path_;
};

// A model of the assimp test set; empty when the set is not installed.
std::string testModel(const std::string& relative);
std::vector<uint8_t> readBytes(const std::string& path);
void writeText(const std::string& path, const std::string& text);

// Options that build `input` into `output` without progress on stderr.
builder::BuildOptions quietOptions(const std::string& input, const std::string& output);

// The records of a scene file, read as the client reads them.
struct SceneRecords {
    std::vector<int32_t> materialTypes; // in file order
    std::vector<std::string> materialNames;
    size_t texMaps = 0, textureFiles = 0;
    std::vector<std::string> texturePaths;
    bool readable = false;
};
SceneRecords readRecords(const std::string& scenePath);

// What the recording engine was given when the client loaded the scene.
struct ClientLoad {
    int exitStatus = -1;
    std::string output;
    size_t models = 0, parts = 0, triangles = 0;
    size_t lights = 0, cameras = 0;
};
ClientLoad loadThroughClient(const std::string& scenePath);

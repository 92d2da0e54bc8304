// The reports: JSON that parses and says what the inventory says, text that names what matters,
// and the executable's exit status.
#include "tests/tools/inspector/scene_files.h"
#include "tools/inspector/json_writer.h"
#include "tools/scene_writer/preview_builders.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <sys/wait.h>

namespace {

using namespace inspector;

// ---- A small JSON reader, strict enough to refuse what a JSON parser would ---------------------

struct Json {
    enum class Kind { Null, Bool, Number, String, Array, Object } kind = Kind::Null;
    double number = 0;
    std::string text;
    std::vector<Json> items;
    std::map<std::string, Json> members;

    const Json& operator[](const std::string& key) const {
        static const Json none;
        auto found = members.find(key);
        return found == members.end() ? none : found->second;
    }
};

class JsonReader {
  public:
    explicit JsonReader(const std::string& text) : text_(text) {}
    // False when the text is not exactly one JSON value (whitespace around allowed).
    bool read(Json& out) {
        bool ok = value(out);
        skip();
        return ok && at_ == text_.size();
    }

  private:
    void skip() {
        while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_])))
            ++at_;
    }
    bool take(char c) {
        skip();
        if (at_ < text_.size() && text_[at_] == c) return ++at_, true;
        return false;
    }
    bool word(const char* w) {
        const std::string s(w);
        if (text_.compare(at_, s.size(), s) != 0) return false;
        at_ += s.size();
        return true;
    }
    bool string(std::string& out) {
        if (!take('"')) return false;
        while (at_ < text_.size() && text_[at_] != '"') {
            const unsigned char c = static_cast<unsigned char>(text_[at_++]);
            if (c < 0x20) return false;
            if (c != '\\') {
                out += char(c);
                continue;
            }
            if (at_ >= text_.size()) return false;
            const char e = text_[at_++];
            const std::string simple = "\"\\/bfnrt", meant = "\"\\/\b\f\n\r\t";
            if (simple.find(e) != std::string::npos) {
                out += meant[simple.find(e)];
            } else if (e == 'u' && at_ + 4 <= text_.size()) {
                out += char(std::stoi(text_.substr(at_, 4), nullptr, 16)); // the writer escapes only < 0x20
                at_ += 4;
            } else {
                return false;
            }
        }
        return take('"');
    }
    bool value(Json& out) {
        skip();
        if (at_ >= text_.size()) return false;
        const char c = text_[at_];
        if (c == '{') {
            out.kind = Json::Kind::Object;
            ++at_;
            if (take('}')) return true;
            do {
                std::string key;
                Json member;
                if (!string(key) || !take(':') || !value(member)) return false;
                out.members[key] = member;
            } while (take(','));
            return take('}');
        }
        if (c == '[') {
            out.kind = Json::Kind::Array;
            ++at_;
            if (take(']')) return true;
            do {
                out.items.emplace_back();
                if (!value(out.items.back())) return false;
            } while (take(','));
            return take(']');
        }
        if (c == '"') return out.kind = Json::Kind::String, string(out.text);
        if (word("true") || word("false")) return out.kind = Json::Kind::Bool, out.number = c == 't', true;
        if (word("null")) return true;
        size_t used = 0;
        try {
            out.number = std::stod(text_.substr(at_), &used);
        } catch (...) {
            return false;
        }
        at_ += used;
        out.kind = Json::Kind::Number;
        return used > 0;
    }

    const std::string& text_;
    size_t at_ = 0;
};

sw::Bytes smallScene() {
    sw::SceneFile file;
    file.add(sw::zstdChunk(sw::kSettings, sw::settingsBody({})));
    file.add(sw::storedChunk(sw::kMaterial, sw::MaterialBuilder("DIFFUSE", 3, "quote \" and\ttab")
                                                .texMap("FrontMap", 8)
                                                .body()));
    file.add(sw::zstdChunk(sw::kTriangleMesh, sw::meshBody(sw::boxMesh("box", {0, 0, 0}, {1, 1, 1}, 3))));
    file.add(sw::storedChunk(sw::kCamera, sw::perspectiveCamera(50)));
    file.add(sw::storedChunk(sw::kCameraPath, sw::cameraPathBody(sw::lookAt({0, 1, 5}, {0, 0, 0}))));
    return file.build();
}

TEST(JsonWriter, EscapesWhatJsonMustEscape) {
    const struct {
        std::string in, out;
    } cases[] = {
        {"plain", "\"plain\""},
        {"a\"b\\c", "\"a\\\"b\\\\c\""},
        {"line\nfeed\ttab", "\"line\\nfeed\\ttab\""},
        {std::string("\x01\x1f", 2), "\"\\u0001\\u001f\""},
        {"\xc3\xa9t\xc3\xa9", "\"\xc3\xa9t\xc3\xa9\""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(jsonString(c.in), c.out);
    JsonWriter json;
    json.beginObject().key("n").value(std::nan("")).key("list").beginArray().value(1).value(true);
    json.value(0.4f).value(1.0f / 3).endArray();
    EXPECT_EQ(json.endObject().text(), "{\"n\":null,\"list\":[1,true,0.4,0.33333334]}");
}

TEST(JsonReport, ParsesAndCarriesTheInventory) {
    const Inspection inspection = inspectBytes(smallScene(), "small");
    ASSERT_TRUE(inspection.verdict.accepted());
    const std::string report = jsonReport(inspection);
    Json root;
    ASSERT_TRUE(JsonReader(report).read(root)) << report;
    EXPECT_EQ(root["valid"].number, 1);
    const Inventory& found = inspection.inventory;
    const struct {
        const char* key;
        size_t expected;
    } counts[] = {{"chunks", found.chunks.size()},       {"textures", found.textures.size()},
                  {"texmaps", found.texMaps.size()},     {"materials", found.materials.size()},
                  {"cameras", found.cameras.size()},     {"lights", found.lights.size()},
                  {"models", found.models.size()},       {"triangles", 12}};
    for (const auto& c : counts)
        EXPECT_EQ(root["counts"][c.key].number, double(c.expected)) << c.key;
    EXPECT_EQ(root["chunks"].items.size(), found.chunks.size());
    EXPECT_EQ(root["counts"]["chunksByType"]["camera path"].number, 1);

    const Json& material = root["materials"].items.at(0);
    EXPECT_EQ(material["name"].text, "quote \" and\ttab");
    EXPECT_EQ(material["type"].text, "DIFFUSE");
    const Json& reference = material["references"].items.at(0);
    EXPECT_EQ(reference["key"].text, "FrontMap");
    EXPECT_EQ(reference["missing"].number, 1);
    EXPECT_EQ(reference["name"].kind, Json::Kind::Null);
    EXPECT_EQ(root["models"].items.at(0)["materials"].items.at(0)["name"].text, "quote \" and\ttab");
    EXPECT_EQ(root["cameras"].items.at(0)["position"].items.at(2).number, 5);
}

TEST(JsonReport, ARefusedSceneCarriesTheMessage) {
    Inspection refused;
    refused.verdict.status = SceneInvalid;
    refused.verdict.messages = {"Error: invalid scene file."};
    Json root;
    ASSERT_TRUE(JsonReader(jsonReport(refused)).read(root));
    EXPECT_EQ(root["valid"].number, 0);
    EXPECT_EQ(root["status"].text, "invalid");
    EXPECT_EQ(root["messages"].items.at(0).text, "Error: invalid scene file.");
    EXPECT_EQ(root["materials"].kind, Json::Kind::Null);
}

TEST(TextReport, NamesWhatMatters) {
    const Inspection inspection = inspectBytes(smallScene(), "small");
    const std::string plain = textReport(inspection, false);
    const std::string listed = textReport(inspection, true);
    for (const char* part : {"5 chunks", "1 material, 1 camera, 0 lights, 1 model (12 triangles",
                             "image 640 x 480, region whole image, 256 passes",
                             "FrontMap -> texmap #8 missing", "PERSPECTIVE  at (0, 1, 5) looking at (0, 0, 0)",
                             "\"box\"  mesh, 1 part, 12 triangles, materials \"quote \" and\ttab\""}) {
        EXPECT_NE(plain.find(part), std::string::npos) << part << "\n" << plain;
    }
    // The chunk table comes only with --chunks, after the rest: a blank line, its title, its
    // heading and one row a chunk.
    ASSERT_EQ(listed.rfind(plain, 0), 0u) << listed;
    const std::string table = listed.substr(plain.size());
    EXPECT_EQ(size_t(std::count(table.begin(), table.end(), '\n')), 3 + inspection.inventory.chunks.size()) << table;
    EXPECT_NE(table.find("camera path"), std::string::npos) << table;
}

struct ToolRun {
    int status = -1;
    std::string output;
};

ToolRun runInspector(const std::string& arguments) {
    ToolRun run;
    const std::string command = std::string(TAVI_INSPECT_EXECUTABLE) + " " + arguments + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return run;
    char buffer[4096];
    for (size_t got; (got = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        run.output.append(buffer, got);
    const int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

TEST(Executable, ExitStatusAndOutput) {
    const std::string good = writeTestScene(smallScene(), "good");
    sw::SceneFile broken;
    broken.formatVersion = 104;
    const std::string bad = writeTestScene(broken.build(), "bad");
    const struct {
        std::string arguments;
        int status;
        std::string start; // how the output begins
    } cases[] = {
        {good, kExitAccepted, "file: "},
        {"--json " + good, kExitAccepted, "{\"valid\":true"},
        {"--chunks " + good, kExitAccepted, "file: "},
        {bad, kExitRejected, "Error: unknown version of scene file.\n"},
        {"--json " + bad, kExitRejected, "{\"valid\":false,\"status\":\"unknown version\""},
        {"", kExitUsage, "usage: tavi-inspect"},
        {"--colour " + good, kExitUsage, "usage: tavi-inspect"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        const ToolRun run = runInspector(c.arguments);
        EXPECT_EQ(run.status, c.status);
        EXPECT_EQ(run.output.rfind(c.start, 0), 0u) << run.output;
    }
}

} // namespace

// Material and texmap documents resolved through the real client, against a bare pugixml parse
// of the same files in the same run.
//
// 10,000 material documents cycle through every material type that a document can name, each
// with every key of its type, as the types' own writers put them out. A third of them name a
// texmap document of their own in their first texmap reference; those cycle through every texmap
// type, again with every key. A scene holds the 10,000 materials under the documents' names,
// all used by one mesh, so that the client resolves every one of them.
//
// The client runs beside the recording engine, once with the two document folders and once
// without; the difference of the two is the documents' share of the load. The bare parse is
// pugi::xml_document::load_file over the same files. Both are processor time (user and system),
// which other work on a busy machine disturbs far less than it does the clock, the least of
// several rounds; they are given per document, with their ratio. Target: a ratio of at most 1.5.
// Last, the documents' own work without the client around it, to tell it from the registry's.
#include "bench/support/child_process.h"
#include "bridge/name_interface.h"
#include "documents/material_document.h"
#include "documents/materials/material_types.h"
#include "documents/texmap_document.h"
#include "documents/texmaps/texmap_types.h"
#include "scene/records.h"
#include "tools/scene_writer/geometry_builders.h"
#include "tools/scene_writer/record_builders.h"
#include "tools/scene_writer/scene_writer.h"

#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;
namespace sw = scene_writer;

namespace {

using bench::readText;
using bench::runProcess;

constexpr int kMaterials = 10000;
constexpr int kNamingEvery = 3;
constexpr int kRounds = 9;

[[noreturn]] void die(const std::string& why) {
    std::fprintf(stderr, "documents_bench: %s\n", why.c_str());
    std::exit(1);
}

std::string numbered(char prefix, int index) {
    char name[16];
    std::snprintf(name, sizeof name, "%c%05d", prefix, index);
    return name;
}

// ---- Records with every key set -----------------------------------------------------------------

template <class T> void put(uint8_t* record, size_t offset, const T& value) {
    std::memcpy(record + offset, &value, sizeof value);
}

// Two segments in use, the others marked unused, as an edited curve would have them.
void fillSpline(SplineSegment* segments, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const bool used = i < 2;
        segments[i] = {
            used ? 0.5f * i : 1.0f, 0.1f, 0.2f, used ? 0.5f * (i + 1) : 0.0f, 0.25f, 0.5f, 0.75f, 1.0f};
    }
}

void fillColorSpline(ColorSplineSegment* segments) {
    for (size_t i = 0; i < kColorSplineSegments; ++i) {
        ColorSplineSegment& s = segments[i];
        s = {};
        s.ts = i < 2 ? 0.5f * i : 1.0f;
        s.te = i < 2 ? 0.5f * (i + 1) : 0.0f;
        for (size_t c = 0; c < 3; ++c) {
            s.t1[c] = s.t2[c] = 0.3f;
            s.vs[c] = s.v1[c] = s.v2[c] = s.ve[c] = 0.6f;
        }
    }
}

Matrix3x4 someMatrix() {
    return {{{1, 0, 0, 0.25f}, {0, 1, 0, 0.5f}, {0, 0, 1, 0.75f}}};
}

void fillCoordGen(CoordGen* block) {
    *block = {};
    block->CoordinateMatrix = someMatrix();
    block->OutsideColor = {0.1f, 0.2f, 0.3f, 1, 0, 0, 0, 0};
    block->Blur = 1.0f;
    block->CoordGenType = 1;
    block->Noise.Amplitude = block->Noise.Scale = {1, 1, 1};
    block->Noise.Levels = 3;
    block->Noise.OctaveAmplitude = block->Noise.OctaveSize = 0.5f;
}

void fillColorOutput(ColorOutput* block) {
    *block = {};
    block->RgbMul = block->AlphaMul = 1.0f;
    block->LumR = 0.2126f, block->LumG = 0.7152f, block->LumB = 0.0722f;
    for (SplineSegment* spline : {block->SplineR, block->SplineG, block->SplineB, block->SplineA})
        fillSpline(spline, 8);
}

// Every row of the table gets a value that its writer puts out in full; the first texmap
// reference names `texMap` (-1: none), every other reference is unset. Lists stay empty.
void fillRecord(const TypeDescriptor& table, uint8_t* record, size_t size, int32_t texMap) {
    bool texMapNamed = false;
    for (size_t i = 0; i < table.fieldCount; ++i) {
        const FieldDescriptor& field = table.fields[i];
        if (!fieldFits(field, static_cast<uint32_t>(size))) continue;
        uint8_t* at = record + field.offset;
        switch (field.kind) {
        case FieldKind::Int:
        case FieldKind::UInt:
            put<int32_t>(record, field.offset, 3);
            break;
        case FieldKind::Int16:
            put<int16_t>(record, field.offset, 3);
            break;
        case FieldKind::Float:
            put<float>(record, field.offset, 0.8f);
            break;
        case FieldKind::Bool:
            *at = 1;
            break;
        case FieldKind::String: {
            const char16_t text[] = u"textures/wood.png";
            std::memcpy(at, text, std::min<size_t>(sizeof text, field.width));
            break;
        }
        case FieldKind::Enum:
            put<int32_t>(record, field.offset, XmlWordCount(field.words) > 1 ? 1 : 0);
            break;
        case FieldKind::Color:
            put(record, field.offset, ColorRGB{0.8f, 0.5f, 0.25f});
            break;
        case FieldKind::ColorEx:
            put(record, field.offset, ColorEx{0.8f, 0.5f, 0.25f, 1, 0, 0, 0, 0});
            break;
        case FieldKind::Matrix:
            put(record, field.offset, someMatrix());
            break;
        case FieldKind::Spline: {
            std::vector<SplineSegment> segments(field.segments);
            fillSpline(segments.data(), segments.size());
            std::memcpy(at, segments.data(), field.width);
            break;
        }
        case FieldKind::ColorSpline: {
            ColorSplineSegment segments[kColorSplineSegments];
            fillColorSpline(segments);
            std::memcpy(at, segments, sizeof segments);
            break;
        }
        case FieldKind::TexMapRef:
            put<int32_t>(record, field.offset, texMapNamed ? -1 : texMap);
            texMapNamed = true;
            break;
        case FieldKind::MaterialRef:
        case FieldKind::TextureRef:
            put<int32_t>(record, field.offset, -1);
            break;
        case FieldKind::CoordGen: {
            CoordGen block;
            fillCoordGen(&block);
            put(record, field.offset, block);
            break;
        }
        case FieldKind::ColorOutput: {
            ColorOutput block;
            fillColorOutput(&block);
            put(record, field.offset, block);
            break;
        }
        case FieldKind::Section:
        case FieldKind::Custom:
            break;
        }
    }
}

bool namesTexMap(const TypeDescriptor& table) {
    for (size_t i = 0; i < table.fieldCount; ++i)
        if (table.fields[i].kind == FieldKind::TexMapRef) return true;
    return false;
}

// What the writers ask while they put references out: texmap ids are the numbers of the texmap
// documents, nothing else is named.
class DocumentNames final : public ITaviNameInterface {
  public:
    int32_t* GetTextureId(int32_t* result, const char16_t*) override { return none(result); }
    const char16_t* GetTextureName(int32_t) override { return u""; }
    int32_t* GetTexMapId(int32_t* result, const char16_t*) override { return none(result); }
    const char16_t* GetTexMapName(int32_t id) override {
        if (id < 0) return u"";
        const std::string name = numbered('t', id);
        texMapName_.assign(name.begin(), name.end());
        return texMapName_.c_str();
    }
    int32_t* GetMaterialId(int32_t* result, const char16_t*) override { return none(result); }
    const char16_t* GetMaterialName(int32_t) override { return u""; }
    uint64_t GetModelId(const char16_t*) override { return 0; }
    const char16_t* GetModelName() override { return u""; }
    void* destroy(uint32_t) override { return nullptr; }

  private:
    static int32_t* none(int32_t* result) {
        *result = -1;
        return result;
    }
    std::u16string texMapName_;
};

// Material types a document can select, and the texmap types, each with its table.
std::vector<const TypeDescriptor*> namedTables(const TypeDescriptor* const* all) {
    std::vector<const TypeDescriptor*> tables;
    for (; *all; ++all)
        if ((*all)->word && (*all)->word[0]) tables.push_back(*all);
    return tables;
}

void save(const pugi::xml_document& doc, const fs::path& path, std::vector<fs::path>& written) {
    if (!doc.save_file(path.c_str())) die("cannot write " + path.string());
    written.push_back(path);
}

struct Documents {
    std::vector<fs::path> materials, texMaps;
};

Documents writeDocuments(const fs::path& folder) {
    const std::vector<const TypeDescriptor*> materialTables = namedTables(allMaterialTypes());
    const std::vector<const TypeDescriptor*> texMapTables = namedTables(allTexMapTypes());
    fs::create_directories(folder / "materials");
    fs::create_directories(folder / "texmaps");
    DocumentNames names;
    Documents documents;
    int32_t texMaps = 0;
    bool due = false; // a type without texmap references hands its turn to the next material
    for (int i = 0; i < kMaterials; ++i) {
        const TypeDescriptor& table = *materialTables[static_cast<size_t>(i) % materialTables.size()];
        due = due || i % kNamingEvery == 0;
        const bool naming = due && namesTexMap(table);
        due = due && !naming;
        auto material = std::make_unique<MaterialRecord>();
        material->type = table.type;
        const std::string name = numbered('m', i);
        std::copy(name.begin(), name.end(), material->Name);
        fillRecord(table, reinterpret_cast<uint8_t*>(material.get()), sizeof(MaterialRecord),
                   naming ? texMaps : -1);
        pugi::xml_document doc;
        BuildMaterialDocument(material.get(), &names, &doc);
        save(doc, folder / "materials" / (name + ".xml"), documents.materials);
        if (!naming) continue;

        const TypeDescriptor& mapTable = *texMapTables[static_cast<size_t>(texMaps) % texMapTables.size()];
        auto texMap = std::make_unique<TexMapRecord>();
        texMap->type = mapTable.type;
        const std::string mapName = numbered('t', texMaps);
        std::copy(mapName.begin(), mapName.end(), texMap->Name);
        uint8_t* bytes = reinterpret_cast<uint8_t*>(texMap.get());
        if (mapTable.mapped) {
            fillCoordGen(reinterpret_cast<CoordGen*>(bytes + kTexMapCoordGenOffset));
            fillColorOutput(reinterpret_cast<ColorOutput*>(bytes + kTexMapColorOutputOffset));
        }
        fillRecord(mapTable, bytes, sizeof(TexMapRecord), -1);
        pugi::xml_document mapDoc;
        BuildTexMapDocument(texMap.get(), &names, &mapDoc);
        save(mapDoc, folder / "texmaps" / (mapName + ".xml"), documents.texMaps);
        ++texMaps;
    }
    return documents;
}

// ---- The scene ----------------------------------------------------------------------------------

// The materials under the documents' names, as the scene would hold them before any document,
// and one mesh whose rows use them in turn. The records are cut to their heads (the rest reads
// as zeros): the client passes over the scene file in many sweeps, and 10,000 full records would
// make that the bulk of the load.
void writeScene(const fs::path& path) {
    sw::SceneFile file;
    for (int i = 0; i < kMaterials; ++i) {
        const sw::Bytes head = sw::materialBody(7, i, 0, numbered('m', i), kMaterialFieldsOffset);
        file.add(sw::storedChunk(sw::kMaterial, head));
    }
    file.add(
        sw::storedChunk(sw::kTriangleMesh, sw::meshBody(sw::gridMesh("mesh", 1, kMaterials, kMaterials))));
    sw::Bytes settings = sw::settingsBody({});
    sw::put32(settings, offsetof(SettingsRecord, ToneOperator.OperatorType), 2);
    sw::put32(settings, offsetof(SettingsRecord, StartingVolumetricMaterial), static_cast<uint32_t>(-1));
    file.add(sw::storedChunk(sw::kSettings, settings));
    if (!file.write(path.string())) die("cannot write " + path.string());
}

// ---- Running the client -------------------------------------------------------------------------


// The build folder holds bin/TaviClient and engines/recording/TaviTracerAVX.so; this program
// sits in it at bench/documents.
fs::path buildFolder() {
    const fs::path here = fs::read_symlink("/proc/self/exe").parent_path();
    for (fs::path folder = here; !folder.empty(); folder = folder.parent_path()) {
        if (fs::exists(folder / "bin/TaviClient") &&
            fs::exists(folder / "engines/recording/TaviTracerAVX.so"))
            return folder;
        if (folder == folder.root_path()) break;
    }
    die("no bin/TaviClient with engines/recording/TaviTracerAVX.so above " + here.string());
}

size_t countLines(const std::string& text, const std::string& prefix) {
    size_t count = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.rfind(prefix, 0) == 0) ++count;
    return count;
}

// Processor seconds of one whole run of the client; checks that every material, and with the folders every
// texmap document, reached the engine.
double timeClient(const fs::path& folder, bool withDocuments, size_t texMaps) {
    std::vector<std::string> arguments = {(folder / "TaviClient").string(), "-scene",
                                          (folder / "scene.tavi").string()};
    if (withDocuments) {
        for (const char* option : {"-materials", "-texmaps"}) {
            arguments.push_back(option);
            arguments.push_back((folder / (option + 1)).string());
        }
    }
    const fs::path log = folder / "recording.log", output = folder / "client.out";
    fs::remove(log);
    double cpuSeconds = 0;
    const int status = runProcess(arguments, output, &cpuSeconds);
    if (status != 0) die("the client exited with " + std::to_string(status) + ":\n" + readText(output));
    const std::string calls = readText(log);
    const size_t materials = countLines(calls, "addMaterial "), maps = countLines(calls, "addTexMap ");
    if (materials != kMaterials || maps != (withDocuments ? texMaps : 0))
        die("the engine received " + std::to_string(materials) + " materials and " + std::to_string(maps) +
            " texmaps");
    return cpuSeconds;
}

double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

// Processor seconds of a load_file of every document. pugixml refuses the documents that hold a key
// beginning with a digit ("3D"), having parsed them up to that key; `refused` counts them.
double timeBareParse(const Documents& documents, size_t* refused) {
    *refused = 0;
    const double start = threadSeconds();
    for (const std::vector<fs::path>* files : {&documents.materials, &documents.texMaps}) {
        for (const fs::path& file : *files) {
            pugi::xml_document doc;
            if (!doc.load_file(file.c_str())) ++*refused;
        }
    }
    return threadSeconds() - start;
}

// Processor seconds of what the registry does with each document, in this process and without
// the registry: open and parse it once, detect its type, read it over a record and walk its
// references, against a name interface that knows no name. What the client spends beyond this
// goes to the registry and the engine.
double timeDocumentsAlone(const Documents& documents) {
    DocumentNames names;
    auto material = std::make_unique<MaterialRecord>();
    auto texMap = std::make_unique<TexMapRecord>();
    const double start = threadSeconds();
    for (const fs::path& file : documents.materials) {
        const std::u16string path = file.u16string();
        const MaterialDocument document(path.c_str());
        if ((material->type = document.type())) document.read(material.get(), &names);
        WalkMaterialReferences(material.get(), &names);
    }
    for (const fs::path& file : documents.texMaps) {
        const std::u16string path = file.u16string();
        const TexMapDocument document(path.c_str());
        if ((texMap->type = document.type())) document.read(texMap.get(), &names);
        WalkTexMapReferences(texMap.get(), &names);
    }
    return threadSeconds() - start;
}

} // namespace

// With a folder as its argument, the scene, the documents and the client stay there after the
// run, for a profiler.
int main(int argc, char** argv) {
    const fs::path build = buildFolder();
    const bool keep = argc > 1;
    const fs::path folder =
        keep ? fs::path(argv[1])
             : fs::temp_directory_path() / ("tavi-documents-bench-" + std::to_string(getpid()));
    fs::remove_all(folder);
    fs::create_directories(folder);
    const auto overwrite = fs::copy_options::overwrite_existing;
    fs::copy_file(build / "bin/TaviClient", folder / "TaviClient", overwrite);
    fs::copy_file(build / "engines/recording/TaviTracerAVX.so", folder / "TaviTracerAVX.so", overwrite);

    const Documents documents = writeDocuments(folder);
    writeScene(folder / "scene.tavi");
    const size_t count = documents.materials.size() + documents.texMaps.size();
    uintmax_t bytes = 0;
    for (const std::vector<fs::path>* files : {&documents.materials, &documents.texMaps})
        for (const fs::path& file : *files)
            bytes += fs::file_size(file);

    // Other work on the machine only ever adds processor time (a shared core, cold caches), and
    // the longer run collects more of it; the least of several rounds, taken in turn, comes
    // closest to what the work itself costs.
    double without = 1e30, with = 1e30, bare = 1e30, alone = 1e30;
    size_t refused = 0;
    for (int round = 0; round < kRounds; ++round) {
        without = std::min(without, timeClient(folder, false, documents.texMaps.size()));
        with = std::min(with, timeClient(folder, true, documents.texMaps.size()));
        bare = std::min(bare, timeBareParse(documents, &refused));
        alone = std::min(alone, timeDocumentsAlone(documents));
    }
    const double share = with - without;
    std::printf("%zu material and %zu texmap documents, %.1f KiB a document on average; least of %d rounds\n",
                documents.materials.size(), documents.texMaps.size(), bytes / 1024.0 / count, kRounds);
    std::printf("client load without documents: %8.1f ms of processor time\n", without * 1e3);
    std::printf("client load with documents:    %8.1f ms of processor time\n", with * 1e3);
    std::printf("documents' share of the load:  %8.1f us a document\n", share / count * 1e6);
    std::printf("bare pugixml parse:            %8.1f us a document (%zu refused part way: a key begins with "
                "a digit)\n",
                bare / count * 1e6, refused);
    std::printf("ratio: %.2f (target: at most 1.5)\n", share / bare);
    std::printf("the documents alone, in process: %.1f us a document, %.2f of the bare parse\n",
                alone / count * 1e6, alone / bare);
    if (!keep) fs::remove_all(folder);
    return 0;
}

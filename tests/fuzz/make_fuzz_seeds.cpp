// Writes the seed corpora and most dictionaries of the fuzz targets into one folder:
//   <out>/seeds/<target>/...   seeds, one file each
//   <out>/dict/<target>.dict   the words and byte patterns the target's reader looks for
// Scenes come from the test scene writer; material and texmap documents from the documents'
// own writers over every field table. The camera and settings dictionaries are drawn from
// their readers' tables by the build (tests/fuzz/CMakeLists.txt), since those tables are not
// public.
#include "bridge/name_interface.h"
#include "documents/field_table.h"
#include "documents/material_document.h"
#include "documents/materials/material_types.h"
#include "documents/texmap_blocks.h"
#include "documents/texmap_document.h"
#include "documents/texmaps/texmap_types.h"
#include "documents/xml_value_codec.h"
#include "scene/records.h"
#include "tools/scene_writer/geometry_builders.h"
#include "tools/scene_writer/preview_builders.h"
#include "tools/scene_writer/record_builders.h"

#include <pugixml.hpp>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using namespace scene_writer;
namespace fs = std::filesystem;

namespace {

// ---- Output ------------------------------------------------------------------------------------

fs::path gOut;
bool gFailed = false;

void writeFile(const fs::path& path, const std::string& bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out.good()) {
        std::fprintf(stderr, "make_fuzz_seeds: cannot write %s\n", path.c_str());
        gFailed = true;
    }
}

void writeSeed(const char* target, const std::string& name, const std::string& bytes) {
    writeFile(gOut / "seeds" / target / name, bytes);
}

void writeSeed(const char* target, const std::string& name, const Bytes& bytes) {
    writeSeed(target, name, std::string(bytes.begin(), bytes.end()));
}

std::string documentText(const pugi::xml_document& doc) {
    std::ostringstream out;
    doc.save(out, "  ");
    return out.str();
}

// Dictionary entries in libFuzzer's format: one quoted value a line, bytes outside printable
// ASCII (and the quote and backslash) escaped.
class Dictionary {
  public:
    void add(const std::string& value) {
        if (!value.empty()) values_.insert(value);
    }
    void addWord(const char* word) {
        if (word) add(word);
    }
    void addWords(WordTable words) {
        for (; words && *words; ++words)
            addWord(*words);
    }
    void addLittleEndian(uint64_t value, int bytes) {
        std::string text;
        for (int i = 0; i < bytes; ++i)
            text.push_back(static_cast<char>(value >> (8 * i)));
        add(text);
    }
    // Element and attribute names, and attribute values that are words, of a whole document.
    void addNamesOf(const pugi::xml_node& node) {
        for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
            if (child.type() != pugi::node_element) continue;
            add(child.name());
            add(std::string("<") + child.name());
            for (pugi::xml_attribute attribute : child.attributes()) {
                add(attribute.name());
                if (isWord(attribute.value())) add(attribute.value());
            }
            addNamesOf(child);
        }
    }
    void write(const char* target) const {
        std::string text;
        for (const std::string& value : values_) {
            text += '"';
            for (unsigned char c : value) {
                if (c < 0x20 || c >= 0x7F || c == '"' || c == '\\') {
                    char escaped[8];
                    std::snprintf(escaped, sizeof escaped, "\\x%02X", c);
                    text += escaped;
                } else {
                    text += static_cast<char>(c);
                }
            }
            text += "\"\n";
        }
        writeFile(gOut / "dict" / (std::string(target) + ".dict"), text);
    }

  private:
    static bool isWord(const char* text) {
        if (!*text) return false;
        for (; *text; ++text)
            if (!std::isalpha(static_cast<unsigned char>(*text)) && *text != '_') return false;
        return true;
    }
    std::set<std::string> values_;
};

void addXmlSyntax(Dictionary& dictionary) {
    for (const char* token : {"<?xml version=\"1.0\"?>",
                              "<",
                              "</",
                              "/>",
                              ">",
                              "=\"",
                              "\"",
                              "<!--",
                              "-->",
                              "<![CDATA[",
                              "]]>",
                              "&amp;",
                              "&#",
                              "\xEF\xBB\xBF",
                              "true",
                              "false",
                              "-1",
                              "1e+",
                              "0x",
                              "nan",
                              "inf"})
        dictionary.add(token);
}

// ---- Scenes --------------------------------------------------------------------------------------

// Small arrays, so that the whole file stays a few kilobytes and mutations stay cheap.
Bytes furElements(uint32_t count) {
    Bytes elements;
    for (uint32_t i = 0; i < count; ++i)
        append(elements, furElement(i + 1, i % 2));
    return elements;
}

Bytes spriteElements(uint32_t count) {
    Bytes elements;
    for (uint32_t i = 0; i < count; ++i)
        append(elements, spriteElement(i + 1, i % 2));
    return elements;
}

CloudPlan cloud(const std::string& name, uint32_t elements, bool fur, size_t slices = 1) {
    CloudPlan plan;
    plan.name = name;
    plan.elementCount = static_cast<int32_t>(elements);
    plan.keys = {FileKey{0, 0, 0x3F800000, 0, 0, 0, 0, 0, 0}};
    for (size_t i = 0; i < slices; ++i)
        plan.timeSlices.push_back({0, 0, fur ? furElements(elements) : spriteElements(elements)});
    return plan;
}

PhxDataPlan smallVolume() {
    PhxDataPlan plan;
    plan.gridX = plan.gridY = plan.gridZ = 2;
    plan.channelOffsets[0] = 0;
    plan.channelOffsets[3] = 32;
    plan.channelData = Bytes(64, 0x3F);
    return plan;
}

SettingsPlan smallSettings() {
    SettingsPlan plan;
    plan.imageSizeX = 32;
    plan.imageSizeY = 24;
    plan.aovNames = {"albedo"};
    plan.startingVolumetricMaterial = -1;
    plan.toneOperator = 2;
    return plan;
}

using MakeChunk = Chunk (*)(uint32_t type, const Bytes& body, uint32_t version);
Chunk stored(uint32_t type, const Bytes& body, uint32_t version) {
    return storedChunk(type, body, version);
}
Chunk packed(uint32_t type, const Bytes& body, uint32_t version) {
    return zstdChunk(type, body, version);
}

// Every kind of chunk once, the small ones through `small`, the large images always packed.
SceneFile everyChunk(MakeChunk small) {
    SceneFile scene;
    TextureFilePlan file;
    file.id = 0;
    scene.add(small(kTextureFile, textureFileBody(file), 100));
    TextureDataPlan data;
    data.id = 1;
    data.pixels = Bytes(16, 0x80);
    scene.add(small(kTextureData, textureDataBody(data), 100));
    scene.add(packed(kTexMap, texMapBody(1, 0, "imageMap"), 100));
    scene.add(packed(kTexMap, texMapBody(2, 1, "secondMap"), 100));
    scene.add(packed(kMaterial, materialBody(1, 0, 0, "surface"), 100));
    scene.add(packed(kMaterial, materialBody(kVolumeMaterialType, 1, 1, "smoke"), 100));
    scene.add(small(kPhxData, phxDataBody(smallVolume()), 100));
    scene.add(packed(kSettings, settingsBody(smallSettings()), 100));
    CameraPathPlan cameraPath;
    cameraPath.role = 0;
    cameraPath.trackA = {FileKey{0, 0, 0x3F800000, 0, 0, 0x40A00000, 0, 0, 0}};
    cameraPath.trackB = cameraPath.trackA;
    scene.add(packed(kCamera, cameraBody(1), 100));
    scene.add(small(kCameraPath, cameraPathBody(cameraPath), 100));
    LightPathPlan lightPath;
    lightPath.track = {FileKey{0, 0, 0x3F800000, 0, 0, 0, 0, 0, 0}};
    scene.add(packed(kLight, lightBody(4), lightVersion(4)));
    scene.add(small(kLightPath, lightPathBody(lightPath), 100));
    scene.add(small(kTriangleMesh, meshBody(gridMesh("ground", 2, 2, 2)), 100));
    scene.add(small(kFur, furBody(cloud("hair", 2, true)), 100));
    scene.add(small(kSprites, spriteBody(cloud("sparks", 2, false)), 100));
    return scene;
}

// A scene as the preview engine reads it, lit and seen, with every kind of model.
SceneFile litScene() {
    SceneFile scene;
    scene.add(packed(kSettings, settingsBody(smallSettings()), 100));
    scene.add(packed(kCamera, perspectiveCamera(50), 100));
    scene.add(stored(kCameraPath, cameraPathBody(lookAt({0, 1, 3}, {0, 0, 0})), 100));
    TextureDataPlan texture;
    texture.width = texture.height = 2;
    texture.pixels = Bytes(16, 200);
    scene.add(packed(kTextureData, textureDataBody(texture), 100));
    scene.add(packed(kTexMap, TexMapBuilder("IMAGE", 0, "image").texture("Texture", 0).body(), 100));
    scene.add(packed(kMaterial, MaterialBuilder("DIFFUSE", 0, "matte").texMap("FrontMap", 0).body(), 100));
    scene.add(packed(kMaterial,
                     MaterialBuilder("ROUGHDIELECTRIC", 1, "glass").real("IOR/IOR_Value", 1.5f).body(), 100));
    scene.add(packed(kMaterial, MaterialBuilder("LAMBERTIANEMISSION", 2, "lamp").real("IntensityValue", 3).body(),
                     100));
    for (int32_t type : {4, 9, 3}) {
        LightPlan light;
        light.type = type;
        light.position = {0, 2, 0};
        scene.add(packed(kLight, lightImage(light), lightVersion(type)));
        scene.add(stored(kLightPath, lightPathBody(lightPath(light)), 100));
    }
    scene.add(packed(kTriangleMesh, meshBody(sphereMesh("ball", {0, 0.5f, 0}, 0.5f, 6, 8, 1)), 100));
    scene.add(packed(kTriangleMesh, meshBody(quadMesh("floor", {-2, 0, 2}, {4, 0, 0}, {0, 0, -4}, 0)), 100));
    scene.add(packed(kTriangleMesh, meshBody(quadMesh("panel", {-0.5f, 1.9f, -0.5f}, {1, 0, 0}, {0, 0, 1}, 2)), 100));
    scene.add(packed(kFur, furBody(cloudModel("hair", {furCurve({Vec4f{0, 0, 0, 0.01f}, Vec4f{0, 0.3f, 0, 0.01f},
                                                                Vec4f{0.1f, 0.6f, 0, 0.01f}, Vec4f{0.2f, 0.8f, 0, 0.01f}},
                                                               0)})),
                     100));
    scene.add(packed(kSprites, spriteBody(cloudModel("dots", {spriteDisc({1, 0.2f, 0}, {0, 0, 1}, 0.2f, 0)})), 100));
    return scene;
}

void writeSceneSeeds(const char* target) {
    writeSeed(target, "every_chunk_packed.tavi", everyChunk(packed).build());
    writeSeed(target, "every_chunk_stored.tavi", everyChunk(stored).build());

    // The chain in reverse of the file's order, with filler between the chunks.
    SceneFile reordered = everyChunk(packed);
    for (size_t i = reordered.size(); i-- > 0;)
        reordered.chain.push_back(i);
    reordered.gapBytes = 16;
    writeSeed(target, "chain_reversed.tavi", reordered.build());

    // Models of several parts and time slices, one after another.
    SceneFile models;
    models.add(packed(kSettings, settingsBody(smallSettings()), 100));
    MeshPlan first = gridMesh("part", 1, 2, 3);
    first.morePartsFollow = true;
    first.keys = {FileKey{1, 2, 3, 4, 5, 6, 7, 8, 9}};
    first.timeSlices.push_back(first.timeSlices.front());
    models.add(stored(kTriangleMesh, meshBody(first), 100));
    models.add(stored(kTriangleMesh, meshBody(gridMesh("part", 1, 1)), 100));
    models.add(stored(kTriangleMesh, meshBody(gridMesh("other", 1, 1)), 100));
    CloudPlan fur = cloud("fur", 3, true, 2);
    fur.morePartsFollow = true;
    models.add(stored(kFur, furBody(fur), 100));
    models.add(stored(kFur, furBody(cloud("fur", 1, true)), 100));
    models.add(stored(kSprites, spriteBody(cloud("sprites", 3, false, 2)), 100));
    writeSeed(target, "multi_part_models.tavi", models.build());

    // Every projection and every light type there is an image for.
    SceneFile views;
    views.add(packed(kSettings, settingsBody(smallSettings()), 100));
    for (int32_t type = 1; type <= 5; ++type) {
        CameraPathPlan path;
        path.role = type == 1 ? 0 : 1;
        path.cameraFile = "camera" + std::to_string(type);
        views.add(packed(kCamera, cameraBody(type), 100));
        views.add(stored(kCameraPath, cameraPathBody(path), 100));
    }
    for (int32_t type = 0; type < 10; ++type) {
        if (!lightImageBytes(type)) continue;
        LightPathPlan path;
        path.name = "light" + std::to_string(type);
        views.add(packed(kLight, lightBody(type), lightVersion(type)));
        views.add(stored(kLightPath, lightPathBody(path), 100));
    }
    writeSeed(target, "cameras_and_lights.tavi", views.build());

    SceneFile settingsOnly;
    settingsOnly.add(packed(kSettings, settingsBody(smallSettings()), 100));
    writeSeed(target, "settings_only.tavi", settingsOnly.build());
    writeSeed(target, "no_chunks.tavi", SceneFile().build());
    writeSeed(target, "lit_scene.tavi", litScene().build());
}

void writeSceneDictionary(const char* target) {
    Dictionary dictionary;
    SceneFile header;
    dictionary.add(header.magic);
    dictionary.addLittleEndian(header.formatVersion, 4);
    // The chunk header's first four words: version, type, compression and header size.
    for (uint32_t type = kSettings; type <= kPhxData; ++type) {
        std::vector<uint32_t> versions = {100};
        if (type == kLight)
            for (int32_t light = 0; light < 10; ++light)
                if (lightVersion(light) != 100) versions.push_back(lightVersion(light));
        for (uint32_t version : versions) {
            for (uint32_t compression : {0u, 1u}) {
                Bytes head;
                put32(head, 0, version);
                put32(head, 4, type);
                put32(head, 8, compression);
                put32(head, 12, 32);
                dictionary.add(std::string(head.begin(), head.end()));
            }
        }
        dictionary.addLittleEndian(type, 4);
    }
    const Bytes frame = zstdFrame(Bytes(4, 0));
    dictionary.add(std::string(frame.begin(), frame.begin() + 4));
    const Bytes skippable = skippableFrame(0);
    dictionary.add(std::string(skippable.begin(), skippable.begin() + 4));
    dictionary.addLittleEndian(~uint64_t(0), 8);
    dictionary.addLittleEndian(~uint64_t(0), 4);
    dictionary.addLittleEndian(0x3F800000, 4); // 1.0f
    dictionary.addLittleEndian(0x7FFFFFFF, 4);
    dictionary.addLittleEndian(0x80000000, 4);
    dictionary.write(target);
}

// ---- Material and texmap documents --------------------------------------------------------------

// Names for the ids that the writers ask about; every reference gets the same few names. None
// is the name under which the targets ask for the document itself: a document that names
// itself recurses without end in the registry, which would end every run of the target.
class SeedNames final : public ITaviNameInterface {
  public:
    int32_t* GetTextureId(int32_t* result, const char16_t*) override { return &(*result = 0); }
    const char16_t* GetTextureName(int32_t) override { return u"texture.png"; }
    int32_t* GetTexMapId(int32_t* result, const char16_t*) override { return &(*result = 0); }
    const char16_t* GetTexMapName(int32_t) override { return u"map"; }
    int32_t* GetMaterialId(int32_t* result, const char16_t*) override { return &(*result = 0); }
    const char16_t* GetMaterialName(int32_t) override { return u"other"; }
    uint64_t GetModelId(const char16_t*) override { return 0; }
    const char16_t* GetModelName() override { return u"model"; }
    void* destroy(uint32_t) override { return this; }
};

// Gives the plain fields of a table values a zeroed record lacks: counts of two, so that the
// repeated elements are written, set bools, and a half in every float.
void fillFields(const TypeDescriptor& table, uint8_t* record) {
    const int32_t two = 2;
    const float half = 0.5f;
    for (size_t i = 0; i < table.fieldCount; ++i) {
        const FieldDescriptor& field = table.fields[i];
        switch (field.kind) {
        case FieldKind::Int:
        case FieldKind::UInt:
            std::memcpy(record + field.offset, &two, sizeof two);
            break;
        case FieldKind::Float:
            std::memcpy(record + field.offset, &half, sizeof half);
            break;
        case FieldKind::Bool:
            record[field.offset] = 1;
            break;
        default:
            break;
        }
    }
}

void addTableWords(Dictionary& dictionary, const TypeDescriptor& table) {
    dictionary.addWord(table.word);
    for (size_t i = 0; i < table.fieldCount; ++i) {
        const FieldDescriptor& field = table.fields[i];
        std::string key = field.key;
        for (size_t start = 0; start <= key.size();) {
            const size_t end = key.find('/', start);
            dictionary.add(key.substr(start, end - start));
            if (end == std::string::npos) break;
            start = end + 1;
        }
        if (field.kind == FieldKind::Enum) dictionary.addWords(field.words);
    }
}

template <class Record, class Build>
void writeDocumentSeeds(const char* target, const TypeDescriptor* const* tables,
                        std::initializer_list<WordTable> kindWords, Build build) {
    Dictionary dictionary;
    addXmlSyntax(dictionary);
    for (WordTable words : kindWords)
        dictionary.addWords(words);
    SeedNames names;
    for (const TypeDescriptor* const* entry = tables; *entry; ++entry) {
        const TypeDescriptor& table = **entry;
        addTableWords(dictionary, table);
        // A type without a word cannot be named by a document.
        if (!table.word || !*table.word) continue;
        for (bool filled : {false, true}) {
            auto record = std::make_unique<Record>();
            std::memset(record.get(), 0, sizeof(Record));
            record->type = table.type;
            std::memcpy(record->Name, u"seed", sizeof u"seed");
            if (filled) fillFields(table, reinterpret_cast<uint8_t*>(record.get()));
            pugi::xml_document doc;
            if (!build(record.get(), &names, &doc)) continue;
            dictionary.addNamesOf(doc);
            writeSeed(target, std::string(table.word) + (filled ? "_filled" : "") + ".xml",
                      documentText(doc));
        }
    }
    dictionary.write(target);
}

void writeMaterialSeeds() {
    writeDocumentSeeds<MaterialRecord>(
        "material_document", allMaterialTypes(), {kMaterialTypeWords},
        [](const MaterialRecord* record, ITaviNameInterface* names, pugi::xml_document* doc) {
            return BuildMaterialDocument(record, names, doc);
        });
    // A blend of two children written by hand, with the case and spacing a person might use.
    writeSeed(
        "material_document", "mix_by_hand.xml",
        "<TaviMaterial type=\"mix\">\n <Common><Name value=\"seed\"/></Common>\n <SpecificParameters>"
        "<NumChildren value=\"2\"/><Child id=\"0\"><Material name=\"other\"/><Weight value=\"1\"/></Child>"
        "<Child id=\"1\"><Material name=\"second\"/><WeightMap name=\"map\"/></Child>"
        "</SpecificParameters></TaviMaterial>\n");
}

void writeTexMapSeeds() {
    writeDocumentSeeds<TexMapRecord>(
        "texmap_document", allTexMapTypes(), {kTexMapTypeWords, kCoordGenTypeWords},
        [](const TexMapRecord* record, ITaviNameInterface* names, pugi::xml_document* doc) {
            return BuildTexMapDocument(record, names, doc);
        });
}

// ---- Camera and settings documents --------------------------------------------------------------

pugi::xml_node child(pugi::xml_node parent, const char* name) {
    return parent.append_child(name);
}

void value(pugi::xml_node parent, const char* key, const char* text) {
    parent.append_child(key).append_attribute("value") = text;
}

void spline(pugi::xml_node parent, const char* key, size_t count) {
    std::vector<SplineSegment> segments(count, SplineSegment{1, 0, 0, 0, 0, 0, 0, 0});
    segments[0] = SplineSegment{0, 0.25f, 0.75f, 1, 1, 1, 1, 1};
    XmlWriteSpline(parent, key, segments.data(), count);
}

void writeCameraSeeds() {
    const char* const words[] = {"PERSPECTIVE", "FISHEYE", "ORTHO", "CYLINDER", "SPHERICAL"};
    const char* const sections[] = {"Perspective", "FishEye", "Ortho", "Cylinder", "Spherical"};
    for (int i = 0; i < 5; ++i) {
        pugi::xml_document doc;
        pugi::xml_node root = child(doc, "TaviCamera");
        root.append_attribute("type") = words[i];
        pugi::xml_node common = child(root, "Common");
        value(common, "SensorSize", "36");
        value(common, "Aspect", "1.5");
        spline(common, "FocusDistance", 4);
        child(common, "DistortionMap").append_attribute("name") = "map";
        const ColorRGB grey{0.5f, 0.5f, 0.5f};
        XmlWriteColor(common, "BackgroundColor", &grey);
        pugi::xml_node shutter = child(common, "Shutter");
        value(shutter, "TimeS", "0");
        value(shutter, "UseCustomShutter", "true");
        spline(shutter, "Shape", 8);
        pugi::xml_node aperture = child(common, "Aperture");
        child(aperture, "Map").append_attribute("name") = "bokeh";
        value(aperture, "NumBlades", "6");
        spline(aperture, "Fnumber", 4);
        pugi::xml_node stereo = child(common, "Stereo");
        value(stereo, "StereoType", "PARALLEL");
        value(stereo, "StereoBase", "0.065");
        pugi::xml_node own = child(root, sections[i]);
        spline(own, "FocalLength", 4);
        spline(own, "Zoom", 4);
        value(own, "FovX", "45");
        value(own, "MappingType", "EQUISOLID");
        value(own, "Infinity", "true");
        writeSeed("camera_document", std::string(words[i]) + ".xml", documentText(doc));
    }
    writeSeed("camera_document", "no_root.xml", "<?xml version=\"1.0\"?><Other/>");
}

void writeSettingsSeeds() {
    pugi::xml_document doc;
    pugi::xml_node root = child(doc, "TaviSettings");
    pugi::xml_node region = child(root, "RenderRegion");
    value(region, "ImageSizeX", "64");
    value(region, "ImageSizeY", "48");
    pugi::xml_node output = child(root, "Output");
    value(output, "OutputName", "frame");
    value(output, "SaveJPEG", "true");
    pugi::xml_node quality = child(root, "Quality");
    value(quality, "MaxIterations", "4");
    value(quality, "EnableCaustics", "false");
    value(child(root, "Adaptation"), "PathAdaptation", "true");
    value(child(root, "Sampling"), "ReconstructionFilter", "MITCHELL");
    value(child(root, "NoiseFiltration"), "NoiseFilterType", "INTEL");
    pugi::xml_node colors = child(root, "Colors");
    value(colors, "XYZtoRGB", "file");
    value(colors, "XYZtoRGB_filename", "missing_spectrum.csv");
    pugi::xml_node channels = child(colors, "TextureChannels");
    value(channels, "MaxTextureChannels", "2");
    pugi::xml_node channel = child(channels, "Channel");
    channel.append_attribute("id") = "1";
    pugi::xml_node segment = child(channel, "Segment");
    segment.append_attribute("id") = "0";
    segment.append_attribute("ts") = "0";
    segment.append_attribute("te") = "1";
    pugi::xml_node tracing = child(root, "Tracing");
    value(tracing, "Integrator", "BIDIR");
    child(tracing, "StartingVolumetricMaterial").append_attribute("name") = "smoke";
    value(child(root, "Textures"), "TextureFilter", "ELLIPSE");
    value(child(root, "System"), "MaxThreads", "2");
    pugi::xml_node tone = child(root, "ToneOperator");
    value(tone, "OperatorType", "FILMIC");
    value(tone, "ApplyCurvesRGB", "true");
    spline(tone, "CurveSplineR", 32);
    value(tone, "LUTPath", "look.cube");
    pugi::xml_node aov = child(root, "AOV");
    pugi::xml_node aovChannels = child(aov, "Channels");
    pugi::xml_node first = child(aovChannels, "Channel");
    first.append_attribute("name") = "albedo";
    first.append_attribute("type") = "ALBEDO";
    pugi::xml_node include = child(first, "IncludeID");
    include.append_attribute("value") = "3";
    include.append_attribute("id7") = "true";
    include.append_attribute("sky") = "true";
    child(aovChannels, "Channel");
    writeSeed("settings_document", "every_section.xml", documentText(doc));
    writeSeed("settings_document", "empty_root.xml", "<TaviSettings/>");
}

// ---- Spectrum tables ------------------------------------------------------------------------------

void writeSpectrumSeeds() {
    writeSeed("spectrum_table", "three_records.csv",
              "380, 0.0014, 0.0000, 0.0065\n385,0.0022,0.0001,0.0105\r\n390 , 4.2e-3 , +1.2E-4 , .0201\n");
    writeSeed("spectrum_table", "one_record.csv", "-1.5e+2,1,2,3");
    Dictionary dictionary;
    for (const char* token : {",", " ", "\n", "\r\n", "\t", ".", "-", "+", "e-", "e+", "E-", "E+", "0.",
                              "1e+38", "1e-45", "99999999"})
        dictionary.add(token);
    dictionary.write("spectrum_table");
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_fuzz_seeds <output folder>\n");
        return 2;
    }
    gOut = argv[1];
    // Both scene targets read the same files: the load alone, and the load into the preview engine.
    for (const char* target : {"scene_load", "preview_scene"}) {
        writeSceneSeeds(target);
        writeSceneDictionary(target);
    }
    writeMaterialSeeds();
    writeTexMapSeeds();
    writeCameraSeeds();
    writeSettingsSeeds();
    writeSpectrumSeeds();
    return gFailed ? 1 : 0;
}

#include "tools/scene_writer/preview_builders.h"

#include "documents/camera_document.h"
#include "documents/materials/material_types.h"
#include "documents/texmap_blocks.h"
#include "documents/texmap_document.h"
#include "documents/texmaps/texmap_types.h"
#include "scene/record_defaults.h"
#include "scene/record_images.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace scene_writer {

namespace {

constexpr float kPi = 3.14159265358979f;
constexpr uint32_t kNoNormal = 0xFFFFFFFF;

template <class T> void store(Bytes& image, size_t offset, const T& value) {
    if (image.size() < offset + sizeof value) image.resize(offset + sizeof value, 0);
    std::memcpy(image.data() + offset, &value, sizeof value);
}

template <class T> T load(const Bytes& image, size_t offset) {
    T value;
    std::memcpy(&value, image.data() + offset, sizeof value);
    return value;
}

uint32_t bitsOf(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

template <class T> Bytes bytesOf(const std::vector<T>& values) {
    Bytes bytes(values.size() * sizeof(T));
    if (!bytes.empty()) std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

Vec3f add(const Vec3f& a, const Vec3f& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

Vec3f cross(const Vec3f& a, const Vec3f& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vec3f normalised(const Vec3f& v) {
    float length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    if (length == 0) return v;
    return {v[0] / length, v[1] / length, v[2] / length};
}

// The arrays of a mesh under construction, in the form triangleMesh takes.
struct MeshArrays {
    std::vector<float> positions, normals, uvs;
    std::vector<uint32_t> indices, materialIds;

    uint32_t vertex(const Vec3f& p, const Vec3f& n, float u, float v) {
        positions.insert(positions.end(), p.begin(), p.end());
        normals.insert(normals.end(), n.begin(), n.end());
        uvs.insert(uvs.end(), {u, v});
        return static_cast<uint32_t>(positions.size() / 3 - 1);
    }
    void triangle(uint32_t a, uint32_t b, uint32_t c, uint32_t materialId) {
        indices.insert(indices.end(), {a, b, c});
        materialIds.push_back(materialId);
    }
    void quad(const Vec3f& corner, const Vec3f& edgeU, const Vec3f& edgeV, uint32_t materialId) {
        const Vec3f n = normalised(cross(edgeU, edgeV));
        uint32_t a = vertex(corner, n, 0, 0);
        uint32_t b = vertex(add(corner, edgeU), n, 1, 0);
        uint32_t c = vertex(add(add(corner, edgeU), edgeV), n, 1, 1);
        uint32_t d = vertex(add(corner, edgeV), n, 0, 1);
        triangle(a, b, c, materialId);
        triangle(a, c, d, materialId);
    }
    MeshPlan plan(const std::string& name) const {
        return triangleMesh(name, positions, indices, materialIds, normals, uvs);
    }
};

void requireArray(bool holds, const char* what) {
    if (!holds) throw std::invalid_argument(std::string("triangleMesh: ") + what);
}

const TypeDescriptor& typeByWord(const TypeDescriptor* const* all, const char* word, const char* kind) {
    for (; *all; ++all) {
        if ((*all)->word && std::strcmp((*all)->word, word) == 0) return **all;
    }
    throw std::invalid_argument(std::string("no ") + kind + " type " + word);
}

const TypeDescriptor& typeByNumber(const TypeDescriptor* type, int32_t number, const char* kind) {
    if (!type) throw std::invalid_argument(std::string("no ") + kind + " type " + std::to_string(number));
    return *type;
}

// The image as a document without keys leaves it: references -1, splines unset.
Bytes withoutDocumentKeys(const TypeDescriptor& type, Bytes image) {
    readFields(type.fields, type.fieldCount, pugi::xml_node(), image.data(), image.size(), nullptr);
    return image;
}

const FieldDescriptor* cameraRow(const Bytes& camera, const char* key) {
    const TypeDescriptor common = CameraCommonTable();
    if (const FieldDescriptor* row = findRow(common, key)) return row;
    return findRow(CameraProjectionTable(load<int32_t>(camera, 0)), key);
}

} // namespace

// ---- Track keys --------------------------------------------------------------------------------

FileKey trackKey(float x, float y, float z, int32_t milliseconds, float scale, bool hold) {
    FileKey key{};
    key[0] = hold ? 1 : 0;
    key[2] = bitsOf(x);
    key[3] = bitsOf(y);
    key[4] = bitsOf(z);
    key[7] = bitsOf(scale);
    key[8] = static_cast<uint32_t>(milliseconds);
    return key;
}

// ---- Splines -----------------------------------------------------------------------------------

void putConstantSpline(Bytes& image, size_t offset, uint32_t segments, float value) {
    std::vector<SplineSegment> spline(segments);
    setConstantSpline(spline.data(), spline.size(), value);
    for (uint32_t i = 0; i < segments; ++i)
        store(image, offset + i * sizeof(SplineSegment), spline[i]);
}

void putSwitchedOffSpline(Bytes& image, size_t offset, uint32_t segments) {
    std::vector<SplineSegment> spline(segments);
    switchOffSpline(spline.data(), spline.size());
    for (uint32_t i = 0; i < segments; ++i)
        store(image, offset + i * sizeof(SplineSegment), spline[i]);
}

void putConstantColorSpline(Bytes& image, size_t offset, const ColorRGB& colour) {
    // The scalar constant's abscissas, shared by the three channels.
    SplineSegment span[1];
    setConstantSpline(span, 1, 0);
    ColorSplineSegment segments[kColorSplineSegments] = {};
    ColorSplineSegment& first = segments[0];
    first.ts = span[0].ts;
    first.te = span[0].te;
    const float channels[3] = {colour.R, colour.G, colour.B};
    for (int c = 0; c < 3; ++c) {
        first.t1[c] = span[0].t1;
        first.t2[c] = span[0].t2;
        first.vs[c] = first.v1[c] = first.v2[c] = first.ve[c] = channels[c];
    }
    for (size_t i = 1; i < kColorSplineSegments; ++i)
        segments[i].ts = 1;
    for (size_t i = 0; i < kColorSplineSegments; ++i)
        store(image, offset + i * sizeof(ColorSplineSegment), segments[i]);
}

// ---- Triangle meshes ---------------------------------------------------------------------------

MeshPlan triangleMesh(const std::string& name, const std::vector<float>& positions,
                      const std::vector<uint32_t>& indices, const std::vector<uint32_t>& materialIds,
                      const std::vector<float>& normals, const std::vector<float>& uvs) {
    const size_t vertices = positions.size() / 3;
    const size_t triangles = indices.size() / 3;
    requireArray(positions.size() % 3 == 0, "positions are x, y, z per vertex");
    requireArray(indices.size() % 3 == 0, "indices are three a triangle");
    requireArray(materialIds.size() == triangles, "one material id a triangle");
    requireArray(normals.empty() || normals.size() == positions.size(), "one normal a vertex");
    requireArray(uvs.empty() || uvs.size() == 2 * vertices, "one uv a vertex");

    MeshPlan plan;
    plan.name = name;
    plan.vertexCount = static_cast<int32_t>(vertices);
    plan.triangleCount = static_cast<int32_t>(triangles);
    plan.vectorCount = normals.empty() ? 0 : static_cast<int32_t>(vertices);
    plan.pairCount = uvs.empty() ? 0 : static_cast<int32_t>(vertices);
    plan.triangleTriples = bytesOf(indices);
    std::vector<uint32_t> quads;
    quads.reserve(4 * triangles);
    for (size_t t = 0; t < triangles; ++t) {
        for (size_t corner = 0; corner < 3; ++corner)
            quads.push_back(normals.empty() ? kNoNormal : indices[3 * t + corner]);
        quads.push_back(materialIds[t]);
    }
    plan.triangleQuads = bytesOf(quads);
    plan.vectorTable = bytesOf(normals);
    plan.pairTable = bytesOf(uvs);
    MeshSlicePlan slice;
    slice.positions = positions;
    plan.timeSlices.push_back(std::move(slice));
    return plan;
}

MeshPlan quadMesh(const std::string& name, const Vec3f& corner, const Vec3f& edgeU, const Vec3f& edgeV,
                  uint32_t materialId) {
    MeshArrays mesh;
    mesh.quad(corner, edgeU, edgeV, materialId);
    return mesh.plan(name);
}

MeshPlan boxMesh(const std::string& name, const Vec3f& lower, const Vec3f& upper, uint32_t materialId) {
    const float dx = upper[0] - lower[0], dy = upper[1] - lower[1], dz = upper[2] - lower[2];
    const float lx = lower[0], ly = lower[1], lz = lower[2];
    const float ux = upper[0], uy = upper[1], uz = upper[2];
    MeshArrays mesh;
    // Each face's edgeU x edgeV points out of the box.
    mesh.quad({ux, ly, uz}, {0, 0, -dz}, {0, dy, 0}, materialId); // +X
    mesh.quad({lx, ly, lz}, {0, 0, dz}, {0, dy, 0}, materialId);  // -X
    mesh.quad({lx, uy, uz}, {dx, 0, 0}, {0, 0, -dz}, materialId); // +Y
    mesh.quad({lx, ly, lz}, {dx, 0, 0}, {0, 0, dz}, materialId);  // -Y
    mesh.quad({lx, ly, uz}, {dx, 0, 0}, {0, dy, 0}, materialId);  // +Z
    mesh.quad({ux, ly, lz}, {-dx, 0, 0}, {0, dy, 0}, materialId); // -Z
    return mesh.plan(name);
}

MeshPlan sphereMesh(const std::string& name, const Vec3f& centre, float radius, uint32_t rings,
                    uint32_t segments, uint32_t materialId) {
    if (rings < 2 || segments < 3) throw std::invalid_argument("sphereMesh: at least 2 rings and 3 segments");
    MeshArrays mesh;
    // Rings of segments + 1 vertices: the seam is doubled so that u runs from 0 to 1.
    for (uint32_t ring = 0; ring <= rings; ++ring) {
        const float v = static_cast<float>(ring) / static_cast<float>(rings);
        const float polar = kPi * v;
        for (uint32_t segment = 0; segment <= segments; ++segment) {
            const float u = static_cast<float>(segment) / static_cast<float>(segments);
            const float azimuth = 2 * kPi * u;
            const Vec3f n{std::sin(polar) * std::cos(azimuth), -std::cos(polar), -std::sin(polar) * std::sin(azimuth)};
            const Vec3f p{centre[0] + radius * n[0], centre[1] + radius * n[1], centre[2] + radius * n[2]};
            mesh.vertex(p, n, u, v);
        }
    }
    const uint32_t stride = segments + 1;
    for (uint32_t ring = 0; ring < rings; ++ring) {
        for (uint32_t segment = 0; segment < segments; ++segment) {
            const uint32_t a = ring * stride + segment, b = a + 1, c = b + stride, d = a + stride;
            // The pole rows would give triangles with two corners in one place.
            if (ring != 0) mesh.triangle(a, b, c, materialId);
            if (ring + 1 != rings) mesh.triangle(a, c, d, materialId);
        }
    }
    return mesh.plan(name);
}

// ---- Materials and texmaps by key --------------------------------------------------------------

const FieldDescriptor* findRow(const TypeDescriptor& type, const char* key) {
    for (size_t i = 0; i < type.fieldCount; ++i) {
        if (std::strcmp(type.fields[i].key, key) == 0) return &type.fields[i];
    }
    return nullptr;
}

const TypeDescriptor& materialType(const char* word) {
    return typeByWord(allMaterialTypes(), word, "material");
}

const TypeDescriptor& texMapType(const char* word) {
    return typeByWord(allTexMapTypes(), word, "texmap");
}

RecordBuilder::RecordBuilder(const TypeDescriptor& type, Bytes image) : image_(std::move(image)), type_(&type) {}

void RecordBuilder::clearDocumentKeys() {
    image_ = withoutDocumentKeys(*type_, std::move(image_));
}

const FieldDescriptor& RecordBuilder::row(const char* key, std::initializer_list<FieldKind> kinds) const {
    const FieldDescriptor* field = findRow(*type_, key);
    const std::string where = std::string(type_->word ? type_->word : "type") + " key " + key;
    if (!field) throw std::invalid_argument("no " + where);
    if (std::find(kinds.begin(), kinds.end(), field->kind) == kinds.end())
        throw std::invalid_argument("wrong kind of value for " + where);
    return *field;
}

RecordBuilder& RecordBuilder::real(const char* key, float value) {
    const FieldDescriptor& field = row(key, {FieldKind::Float, FieldKind::Spline});
    if (field.kind == FieldKind::Spline) {
        putConstantSpline(image_, field.offset, field.segments, value);
    } else {
        store(image_, field.offset, value);
    }
    return *this;
}

RecordBuilder& RecordBuilder::integer(const char* key, int32_t value) {
    const FieldDescriptor& field =
        row(key, {FieldKind::Int, FieldKind::UInt, FieldKind::Int16, FieldKind::Enum});
    if (field.kind == FieldKind::Int16) {
        store(image_, field.offset, static_cast<int16_t>(value));
    } else {
        store(image_, field.offset, value);
    }
    return *this;
}

RecordBuilder& RecordBuilder::word(const char* key, const char* value) {
    const FieldDescriptor& field = row(key, {FieldKind::Enum});
    const int32_t index = XmlFindWord(field.words, value);
    if (index < 0) throw std::invalid_argument(std::string("no word ") + value + " for key " + key);
    store(image_, field.offset, index);
    return *this;
}

RecordBuilder& RecordBuilder::flag(const char* key, bool value) {
    store(image_, row(key, {FieldKind::Bool}).offset, static_cast<uint8_t>(value ? 1 : 0));
    return *this;
}

RecordBuilder& RecordBuilder::color(const char* key, ColorRGB value) {
    const FieldDescriptor& field = row(key, {FieldKind::Color, FieldKind::ColorEx});
    if (field.kind == FieldKind::ColorEx) {
        ColorEx extended = load<ColorEx>(image_, field.offset);
        extended.R = value.R;
        extended.G = value.G;
        extended.B = value.B;
        extended.W = 1;
        store(image_, field.offset, extended);
    } else {
        store(image_, field.offset, value);
    }
    return *this;
}

RecordBuilder& RecordBuilder::texMap(const char* key, int32_t id) {
    store(image_, row(key, {FieldKind::TexMapRef}).offset, id);
    return *this;
}

RecordBuilder& RecordBuilder::material(const char* key, int32_t id) {
    store(image_, row(key, {FieldKind::MaterialRef}).offset, id);
    return *this;
}

RecordBuilder& RecordBuilder::texture(const char* key, int32_t id) {
    store(image_, row(key, {FieldKind::TextureRef}).offset, id);
    return *this;
}

MaterialBuilder::MaterialBuilder(const char* typeWord, int32_t id, const std::string& name, int32_t aovId)
    : MaterialBuilder(materialType(typeWord).type, id, name, aovId) {}

MaterialBuilder::MaterialBuilder(int32_t type, int32_t id, const std::string& name, int32_t aovId)
    : RecordBuilder(typeByNumber(findMaterialType(type), type, "material"), materialBody(type, id, aovId, name)) {
    clearDocumentKeys();
}

TexMapBuilder::TexMapBuilder(const char* typeWord, int32_t id, const std::string& name)
    : TexMapBuilder(texMapType(typeWord).type, id, name) {}

TexMapBuilder::TexMapBuilder(int32_t type, int32_t id, const std::string& name)
    : RecordBuilder(typeByNumber(findTexMapType(type), type, "texmap"), texMapBody(type, id, name)) {
    clearDocumentKeys();
    if (!this->type().mapped) return;
    CoordGen coordinates = load<CoordGen>(image_, kTexMapCoordGenOffset);
    for (int row = 0; row < 3; ++row)
        coordinates.CoordinateMatrix.m[row][row] = 1;
    coordinates.CoordGenType = 0; // explicit: the UV channel
    coordinates.CoordinateChannel = 0;
    std::fill(std::begin(coordinates.CoordinateEnTile), std::end(coordinates.CoordinateEnTile), 1);
    UpdateCoordGenFlags(&coordinates);
    store(image_, kTexMapCoordGenOffset, coordinates);

    ColorOutput output = load<ColorOutput>(image_, kTexMapColorOutputOffset);
    output.RgbMul = 1;
    output.AlphaMul = 1;
    store(image_, kTexMapColorOutputOffset, output);
}

TexMapBuilder& TexMapBuilder::tiling(float u, float v) {
    if (!type().mapped) throw std::invalid_argument("tiling: not a mapped texmap type");
    CoordGen coordinates = load<CoordGen>(image_, kTexMapCoordGenOffset);
    coordinates.CoordinateMatrix.m[0][0] = u;
    coordinates.CoordinateMatrix.m[1][1] = v;
    UpdateCoordGenFlags(&coordinates);
    store(image_, kTexMapCoordGenOffset, coordinates);
    return *this;
}

// ---- Cameras -----------------------------------------------------------------------------------

Bytes cameraImage(int32_t type) {
    const TypeDescriptor projection = CameraProjectionTable(type);
    if (!projection.fields) throw std::invalid_argument("cameraImage: no projection " + std::to_string(type));
    CameraRecord record;
    initCameraRecord(record);
    record.type = type;
    record.SensorSize = 36;
    record.Aspect = 0;   // the image's
    record.Exposure = 0; // stops
    Bytes image(cameraImageBytes(type));
    std::memcpy(image.data(), &record, image.size());
    return withoutDocumentKeys(projection, std::move(image));
}

Bytes perspectiveCamera(float fovXDegrees) {
    Bytes camera = cameraImage(1);
    const float sensor = load<float>(camera, offsetof(CameraRecord, SensorSize));
    setCameraValue(camera, "FovX", fovXDegrees);
    setCameraValue(camera, "FocalLength", 0.5f * sensor / std::tan(0.5f * fovXDegrees * kPi / 180));
    setCameraValue(camera, "Zoom", 1);
    return camera;
}

Bytes orthographicCamera(float width) {
    Bytes camera = cameraImage(3);
    setCameraValue(camera, "Width", width);
    return camera;
}

void setCameraValue(Bytes& camera, const char* key, float value) {
    const FieldDescriptor* field = cameraRow(camera, key);
    if (!field) throw std::invalid_argument(std::string("no camera key ") + key);
    if (field->kind == FieldKind::Spline) {
        putConstantSpline(camera, field->offset, field->segments, value);
    } else if (field->kind == FieldKind::Float) {
        store(camera, field->offset, value);
    } else {
        throw std::invalid_argument(std::string("camera key ") + key + " holds no number");
    }
}

CameraPathPlan lookAt(const Vec3f& eye, const Vec3f& target, const Vec3f& up) {
    CameraPathPlan plan;
    plan.role = 0;
    plan.target = target;
    plan.trackA = {trackKey(eye)};
    plan.trackB = {trackKey(target)};
    plan.trackC = {trackKey(up)};
    return plan;
}

// ---- Lights ------------------------------------------------------------------------------------

Bytes lightImage(const LightPlan& plan) {
    const size_t length = lightImageBytes(plan.type);
    if (length == 0) throw std::invalid_argument("lightImage: no light type " + std::to_string(plan.type));
    LightRecord record;
    initLightRecord(record);
    record.type = plan.type;
    record.value4 = plan.enabled ? 1 : 0;
    record.texMap = plan.texMap;
    const float values[9] = {plan.direction[0], plan.direction[1], plan.direction[2],
                             plan.up[0],        plan.up[1],        plan.up[2],
                             plan.width,        plan.height,       plan.sunDiameterDegrees};
    std::copy(std::begin(values), std::end(values), record.values1556);
    Bytes image(length, 0);
    std::memcpy(image.data(), &record, std::min(length, sizeof record));

    putConstantSpline(image, offsetof(LightRecord, spline8), 4, plan.intensity);
    putConstantColorSpline(image, offsetof(LightRecord, colorSpline136), plan.colour);
    // No second colour: this engine doesn't render one.
    for (size_t i = 0; i < kColorSplineSegments; ++i) {
        ColorSplineSegment off{};
        off.ts = 1;
        store(image, offsetof(LightRecord, colorSpline456) + i * sizeof off, off);
    }
    putConstantSpline(image, offsetof(LightRecord, spline776), 4, plan.temperature);
    putConstantSpline(image, offsetof(LightRecord, spline904), 4, plan.multiplier);
    if (plan.radius > 0) putConstantSpline(image, offsetof(LightRecord, spline1032), 4, plan.radius);
    putConstantSpline(image, offsetof(LightRecord, spline1160), 4, plan.spotCone);
    putConstantSpline(image, offsetof(LightRecord, spline1288), 4, plan.spotInnerCone);
    if (plan.type == 4) store(image, kLightSecondTexMapOffset, int32_t(-1));
    if (plan.type == 8) putText(image, lightTextOffset(8), 0x300, plan.environmentFile);
    return image;
}

LightPathPlan lightPath(const LightPlan& plan) {
    LightPathPlan path;
    path.name = plan.name;
    path.track = {trackKey(plan.position)};
    return path;
}

// ---- Fur and sprites ---------------------------------------------------------------------------

Bytes furCurve(const std::array<Vec4f, 4>& points, uint32_t materialId) {
    Bytes element(kFurElementBytes);
    for (size_t p = 0; p < 4; ++p)
        for (size_t c = 0; c < 4; ++c) putF32(element, 16 * p + 4 * c, points[p][c]);
    put32(element, 84, materialId & 0x00FFFFFFu);
    return element;
}

Bytes spriteDisc(const Vec3f& centre, const Vec3f& normal, float radius, uint32_t materialId) {
    Bytes element(kSpriteElementBytes);
    for (size_t c = 0; c < 3; ++c) {
        putF32(element, 4 * c, centre[c]);
        putF32(element, 12 + 4 * c, normal[c]);
    }
    putF32(element, 24, radius);
    put32(element, 28, materialId);
    return element;
}

CloudPlan cloudModel(const std::string& name, const std::vector<Bytes>& elements) {
    CloudPlan plan;
    plan.name = name;
    plan.elementCount = static_cast<int32_t>(elements.size());
    CloudSlicePlan slice;
    for (const Bytes& element : elements) append(slice.elements, element);
    plan.timeSlices.push_back(slice);
    return plan;
}

} // namespace scene_writer

#include "engines/preview/render/scene_geometry.h"

#include "engines/preview/render/tracks.h"
#include "scene/fur_sprite_objects.h"
#include "scene/geometry_objects.h"

#include <cstring>

namespace preview {

namespace {

constexpr uint32_t kNoNormal = 0xFFFFFFFFu;

// Where a model stands: the header's scale and translation, then the track's.
struct Placement {
    Vec3 scale{1}, offset{0};
    float trackScale = 1;
    Vec3 trackOffset{0};

    Vec3 point(const Vec3& p) const { return (p * scale + offset) * trackScale + trackOffset; }
    // Normals follow the inverse transpose, which for a diagonal scale is a division.
    Vec3 normal(const Vec3& n) const { return normalize(n / (scale * trackScale)); }
};

Placement placement(const float header[6], const TrackKey* keys, uint32_t keyCount, double seconds,
                    bool* animated, WarningLog& warnings) {
    Placement where;
    const Vec3 scale{header[0], header[1], header[2]};
    const Vec3 offset{header[3], header[4], header[5]};
    if (isFinite(scale) && isFinite(offset) && scale.x != 0 && scale.y != 0 && scale.z != 0) {
        where.scale = scale;
        where.offset = offset;
    } else {
        warnings.note("models with a non-finite or zero scale, placed unscaled");
    }
    int dropped = 0;
    const Track track(keys, keyCount, &dropped);
    warnings.note("track keys with non-finite values, dropped", dropped);
    if (track.size() > 1) *animated = true;
    const TrackSample sample = track.at(seconds, TrackSample{});
    if (sample.scale != 0) where.trackScale = sample.scale;
    where.trackOffset = sample.value;
    return where;
}

// The slice of the render time: the last whose time is at or before it, else the first.
template <class Slice> const Slice* sliceAt(const Slice* first, double seconds, bool* animated) {
    const double ms = seconds * 1000.0;
    const Slice* chosen = nullptr;
    int count = 0;
    for (const Slice* slice = first; slice && count < (1 << 20); slice = slice->next, ++count)
        if (slice->sliceParamA <= ms && (!chosen || slice->sliceParamA >= chosen->sliceParamA)) chosen = slice;
    if (count > 1) *animated = true;
    return chosen ? chosen : first;
}

Vec3 loadVec3(const void* at) {
    float v[3];
    std::memcpy(v, at, sizeof v);
    return {v[0], v[1], v[2]};
}

bool degenerate(const Vec3& a, const Vec3& b, const Vec3& c) {
    const Vec3 n = cross(b - a, c - a);
    return !(dot(n, n) > 0) || !isFinite(n);
}

// One part of a triangle mesh, checked triangle by triangle.
bool copyMeshPart(const TRDF_Load::TriangleMesh& part, double seconds, bool* animated, WarningLog& warnings,
                  TriangleMeshData* out) {
    const TRDF_Load::StaticSliceT* topology = part.staticSlice;
    const TRDF_Load::TimeSliceT* slice = sliceAt(part.timeSlices, seconds, animated);
    if (!topology || topology->triangleCount <= 0 || !topology->triangleTriples || !slice || !slice->positions ||
        topology->vertexCount <= 0) {
        warnings.note("mesh parts without triangles or positions, skipped");
        return false;
    }
    const Placement where = placement(part.floats50, part.keys, part.keyCount, seconds, animated, warnings);
    const uint32_t vertexCount = static_cast<uint32_t>(topology->vertexCount);
    out->positions.resize(vertexCount);
    std::vector<bool> finite(vertexCount);
    for (uint32_t v = 0; v < vertexCount; ++v) {
        const Vec3 p = loadVec3(slice->positions + 4 * size_t(v));
        finite[v] = isFinite(p);
        out->positions[v] = finite[v] ? where.point(p) : Vec3(0);
    }
    const bool withUvs = topology->pairTable && topology->pairCount == topology->vertexCount;
    if (topology->pairTable && !withUvs) warnings.note("UV tables whose size is not the vertex count, ignored");
    if (withUvs) {
        out->uvs.resize(2 * size_t(vertexCount));
        std::memcpy(out->uvs.data(), topology->pairTable, out->uvs.size() * sizeof(float));
        for (float& value : out->uvs)
            if (!std::isfinite(value)) value = 0;
    }
    const bool withNormals = topology->vectorTable && topology->vectorCount > 0 && topology->triangleQuads;
    const uint32_t vectorCount = withNormals ? static_cast<uint32_t>(topology->vectorCount) : 0;
    const auto* normals = static_cast<const uint8_t*>(topology->vectorTable);

    int outOfRange = 0, notFinite = 0, flat = 0, badNormals = 0;
    for (int32_t t = 0; t < topology->triangleCount; ++t) {
        uint32_t corner[3];
        std::memcpy(corner, topology->triangleTriples + 3 * size_t(t), sizeof corner);
        if (corner[0] >= vertexCount || corner[1] >= vertexCount || corner[2] >= vertexCount) {
            ++outOfRange;
            continue;
        }
        if (!finite[corner[0]] || !finite[corner[1]] || !finite[corner[2]]) {
            ++notFinite;
            continue;
        }
        const Vec3 &a = out->positions[corner[0]], &b = out->positions[corner[1]], &c = out->positions[corner[2]];
        if (degenerate(a, b, c)) {
            ++flat;
            continue;
        }
        out->indices.insert(out->indices.end(), corner, corner + 3);
        out->materials.push_back(topology->triangleQuads ? static_cast<int32_t>(topology->triangleQuads[t].materialId)
                                                         : 0);
        if (!withNormals) continue;
        const Vec3 geometric = normalize(cross(b - a, c - a));
        for (int k = 0; k < 3; ++k) {
            const uint32_t index = topology->triangleQuads[t].words[k];
            Vec3 n = geometric;
            if (index != kNoNormal) {
                const Vec3 stored = index < vectorCount ? loadVec3(normals + 12 * size_t(index)) : Vec3(0);
                if (isFinite(stored) && dot(stored, stored) > 0) n = where.normal(stored);
                else ++badNormals;
            }
            out->cornerNormals.push_back(n);
        }
    }
    warnings.note("triangles with a vertex index out of range, skipped", outOfRange);
    warnings.note("triangles with a non-finite vertex, skipped", notFinite);
    warnings.note("degenerate triangles, skipped", flat);
    warnings.note("shading normals out of range or not finite, replaced by the face's", badNormals);
    if (out->materials.empty()) return false;
    // A mesh whose every normal is the face's own gains nothing from interpolation.
    if (withNormals && out->cornerNormals.size() != out->indices.size()) out->cornerNormals.clear();
    return true;
}

} // namespace

void SceneGeometry::addTriangleMeshes(const TRDF_Load::TriangleMesh* head, WarningLog& warnings) {
    for (const TRDF_Load::TriangleMesh* part = head; part; part = part->next) {
        TriangleMeshData mesh;
        if (copyMeshPart(*part, seconds_, &animated_, warnings, &mesh)) addMesh(std::move(mesh));
    }
}

void SceneGeometry::addFur(const TRDF_Load::FurMesh* head, WarningLog& warnings) {
    for (const TRDF_Load::FurMesh* part = head; part; part = part->next) {
        const TRDF_Load::TimeSliceF* slice = sliceAt(part->timeSlices, seconds_, &animated_);
        if (!slice || !slice->elements || part->elementCount <= 0) {
            warnings.note("fur parts without elements, skipped");
            continue;
        }
        const Placement where = placement(part->floats70, part->keys, part->keyCount, seconds_, &animated_, warnings);
        const float radiusScale = std::abs(where.trackScale) * maxComponent(vmax(where.scale, -where.scale));
        CurveSetData set;
        int bad = 0;
        for (int32_t i = 0; i < part->elementCount; ++i) {
            const TRDF_Load::FurElement& element = slice->elements[i];
            float control[16];
            std::memcpy(control, element.vectors, sizeof control);
            bool ok = true;
            for (int k = 0; k < 4 && ok; ++k) {
                const Vec3 p = where.point({control[4 * k], control[4 * k + 1], control[4 * k + 2]});
                const float r = control[4 * k + 3] * radiusScale;
                ok = isFinite(p) && std::isfinite(r) && r >= 0;
                control[4 * k] = p.x, control[4 * k + 1] = p.y, control[4 * k + 2] = p.z, control[4 * k + 3] = r;
            }
            if (!ok) {
                ++bad;
                continue;
            }
            set.controlPoints.insert(set.controlPoints.end(), control, control + 16);
            set.materials.push_back(static_cast<int32_t>(element.materialId()));
        }
        warnings.note("fur curves with non-finite points or negative radii, skipped", bad);
        if (!set.materials.empty()) curves_.push_back(std::move(set));
    }
}

void SceneGeometry::addSprites(const TRDF_Load::SprMesh* head, WarningLog& warnings) {
    for (const TRDF_Load::SprMesh* part = head; part; part = part->next) {
        const TRDF_Load::TimeSliceS* slice = sliceAt(part->timeSlices, seconds_, &animated_);
        if (!slice || !slice->elements || part->elementCount <= 0 ||
            slice->elementsBytes < uint64_t(part->elementCount) * sizeof(TRDF_Load::SpriteElement)) {
            warnings.note("sprite parts without elements, skipped");
            continue;
        }
        const Placement where = placement(part->floats40, part->keys, part->keyCount, seconds_, &animated_, warnings);
        const float radiusScale = std::abs(where.trackScale) * maxComponent(vmax(where.scale, -where.scale));
        DiscSetData set;
        int bad = 0;
        for (int32_t i = 0; i < part->elementCount; ++i) {
            const TRDF_Load::SpriteElement& element = slice->elements[i];
            float values[7];
            std::memcpy(values, element.data, sizeof values);
            const Vec3 center = where.point({values[0], values[1], values[2]});
            Vec3 normal{values[3], values[4], values[5]};
            const float radius = values[6] * radiusScale;
            if (!isFinite(center) || !isFinite(normal) || !(radius > 0) || !std::isfinite(radius)) {
                ++bad;
                continue;
            }
            normal = dot(normal, normal) > 0 ? where.normal(normal) : Vec3(0, 1, 0);
            set.centers.insert(set.centers.end(), {center.x, center.y, center.z, radius});
            set.normals.push_back(normal);
            set.materials.push_back(static_cast<int32_t>(element.materialId));
        }
        warnings.note("sprites with non-finite values or no size, skipped", bad);
        if (!set.materials.empty()) discs_.push_back(std::move(set));
    }
}

size_t SceneGeometry::addMesh(TriangleMeshData mesh) {
    // Worked out once here rather than at every hit, where a square root is a long wait.
    mesh.faceNormals.resize(mesh.triangleCount());
    for (size_t t = 0; t < mesh.triangleCount(); ++t) {
        const uint32_t* corner = &mesh.indices[3 * t];
        const Vec3& p0 = mesh.positions[corner[0]];
        mesh.faceNormals[t] = normalize(cross(mesh.positions[corner[1]] - p0, mesh.positions[corner[2]] - p0));
    }
    meshes_.push_back(std::move(mesh));
    return meshes_.size() - 1;
}

size_t SceneGeometry::addDiscs(DiscSetData discs) {
    discs_.push_back(std::move(discs));
    return discs_.size() - 1;
}

} // namespace preview

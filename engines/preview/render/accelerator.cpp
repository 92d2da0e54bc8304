#include "engines/preview/render/accelerator.h"

#include <emmintrin.h>
#include <xmmintrin.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace preview {

namespace {

void reportDeviceError(void* user, RTCError, const char* text) {
    static_cast<WarningLog*>(user)->note(std::string("ray tracing kernel: ") + (text ? text : "error"));
}

template <class T> T* newBuffer(RTCGeometry geometry, RTCBufferType type, RTCFormat format, size_t count) {
    return static_cast<T*>(rtcSetNewGeometryBuffer(geometry, type, 0, format, sizeof(T), count));
}

// Embree reads a ray as three 16-byte vectors (origin and tnear, direction and time, tfar to
// flags). Each is written with one store so that the read is served from the store; twelve
// 4-byte stores would stall it at every query.
void setRay(RTCRay& ray, const Vec3& origin, const Vec3& direction, float farthest) {
    _mm_storeu_ps(&ray.org_x, _mm_setr_ps(origin.x, origin.y, origin.z, 0.0f));
    _mm_storeu_ps(&ray.dir_x, _mm_setr_ps(direction.x, direction.y, direction.z, 0.0f));
    int32_t farthestBits;
    std::memcpy(&farthestBits, &farthest, sizeof farthestBits);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(&ray.tfar), _mm_setr_epi32(farthestBits, -1, 0, 0));
}

struct Float4 {
    float x, y, z, w;
};
struct Float3 {
    float x, y, z;
};

} // namespace

Accelerator::Accelerator(WarningLog& warnings) : warnings_(warnings) {
    device_ = rtcNewDevice(nullptr);
    if (device_) rtcSetDeviceErrorFunction(device_, reportDeviceError, &warnings_);
}

Accelerator::~Accelerator() {
    if (scene_) rtcReleaseScene(scene_);
    if (device_) rtcReleaseDevice(device_);
}

bool Accelerator::build(const SceneGeometry& geometry) {
    if (!device_) return false;
    if (scene_) rtcReleaseScene(scene_);
    entries_.clear();
    scene_ = rtcNewScene(device_);
    rtcSetSceneBuildQuality(scene_, RTC_BUILD_QUALITY_HIGH);
    auto attach = [&](RTCGeometry object, PrimitiveKind kind, size_t set) {
        rtcCommitGeometry(object);
        const unsigned id = rtcAttachGeometry(scene_, object);
        rtcReleaseGeometry(object);
        if (entries_.size() <= id) entries_.resize(id + 1);
        entries_[id] = {kind, static_cast<uint32_t>(set)};
    };
    for (size_t m = 0; m < geometry.meshes().size(); ++m) {
        const TriangleMeshData& mesh = geometry.meshes()[m];
        if (mesh.triangleCount() == 0) continue;
        RTCGeometry object = rtcNewGeometry(device_, RTC_GEOMETRY_TYPE_TRIANGLE);
        auto* vertices = newBuffer<Float3>(object, RTC_BUFFER_TYPE_VERTEX, RTC_FORMAT_FLOAT3, mesh.positions.size());
        auto* indices = newBuffer<uint32_t[3]>(object, RTC_BUFFER_TYPE_INDEX, RTC_FORMAT_UINT3, mesh.triangleCount());
        if (!vertices || !indices) {
            rtcReleaseGeometry(object);
            return false;
        }
        for (size_t v = 0; v < mesh.positions.size(); ++v)
            vertices[v] = {mesh.positions[v].x, mesh.positions[v].y, mesh.positions[v].z};
        std::memcpy(indices, mesh.indices.data(), mesh.indices.size() * sizeof(uint32_t));
        attach(object, PrimitiveKind::Triangle, m);
    }
    for (size_t c = 0; c < geometry.curves().size(); ++c) {
        const CurveSetData& curves = geometry.curves()[c];
        const size_t count = curves.materials.size();
        RTCGeometry object = rtcNewGeometry(device_, RTC_GEOMETRY_TYPE_ROUND_BEZIER_CURVE);
        auto* points = newBuffer<Float4>(object, RTC_BUFFER_TYPE_VERTEX, RTC_FORMAT_FLOAT4, 4 * count);
        auto* starts = newBuffer<uint32_t>(object, RTC_BUFFER_TYPE_INDEX, RTC_FORMAT_UINT, count);
        if (!points || !starts) {
            rtcReleaseGeometry(object);
            return false;
        }
        std::memcpy(points, curves.controlPoints.data(), curves.controlPoints.size() * sizeof(float));
        for (size_t i = 0; i < count; ++i) starts[i] = static_cast<uint32_t>(4 * i);
        attach(object, PrimitiveKind::Curve, c);
    }
    for (size_t d = 0; d < geometry.discs().size(); ++d) {
        const DiscSetData& discs = geometry.discs()[d];
        const size_t count = discs.materials.size();
        RTCGeometry object = rtcNewGeometry(device_, RTC_GEOMETRY_TYPE_ORIENTED_DISC_POINT);
        auto* centers = newBuffer<Float4>(object, RTC_BUFFER_TYPE_VERTEX, RTC_FORMAT_FLOAT4, count);
        auto* normals = newBuffer<Float3>(object, RTC_BUFFER_TYPE_NORMAL, RTC_FORMAT_FLOAT3, count);
        if (!centers || !normals) {
            rtcReleaseGeometry(object);
            return false;
        }
        std::memcpy(centers, discs.centers.data(), discs.centers.size() * sizeof(float));
        for (size_t i = 0; i < count; ++i) normals[i] = {discs.normals[i].x, discs.normals[i].y, discs.normals[i].z};
        attach(object, PrimitiveKind::Disc, d);
    }
    rtcCommitScene(scene_);
    return rtcGetDeviceError(device_) == RTC_ERROR_NONE;
}

bool Accelerator::intersect(const Vec3& origin, const Vec3& direction, float farthest, Hit* hit) const {
    if (!scene_) return false;
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    RTCRayHit query;
    setRay(query.ray, origin, direction, farthest);
    query.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    rtcIntersect1(scene_, &context, &query);
    if (query.hit.geomID == RTC_INVALID_GEOMETRY_ID) return false;
    fill(query.hit.geomID, query.hit.primID, query.ray.tfar, query.hit.u, query.hit.v,
         Vec3(query.hit.Ng_x, query.hit.Ng_y, query.hit.Ng_z), hit);
    return true;
}

void Accelerator::intersectPacket(const Ray (&rays)[kPacket], const bool (&active)[kPacket], Hit (&hits)[kPacket],
                                  bool (&found)[kPacket]) const {
    std::fill(std::begin(found), std::end(found), false);
    if (!scene_) return;
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    context.flags = RTC_INTERSECT_CONTEXT_FLAG_COHERENT;
    alignas(32) int valid[kPacket];
    RTCRayHit8 query;
    for (int i = 0; i < kPacket; ++i) {
        valid[i] = active[i] ? -1 : 0;
        query.ray.org_x[i] = rays[i].origin.x;
        query.ray.org_y[i] = rays[i].origin.y;
        query.ray.org_z[i] = rays[i].origin.z;
        query.ray.tnear[i] = 0;
        query.ray.dir_x[i] = rays[i].direction.x;
        query.ray.dir_y[i] = rays[i].direction.y;
        query.ray.dir_z[i] = rays[i].direction.z;
        query.ray.time[i] = 0;
        query.ray.tfar[i] = std::numeric_limits<float>::infinity();
        query.ray.mask[i] = ~0u;
        query.ray.id[i] = 0;
        query.ray.flags[i] = 0;
        query.hit.geomID[i] = RTC_INVALID_GEOMETRY_ID;
    }
    rtcIntersect8(valid, scene_, &context, &query);
    for (int i = 0; i < kPacket; ++i) {
        found[i] = active[i] && query.hit.geomID[i] != RTC_INVALID_GEOMETRY_ID;
        if (found[i])
            fill(query.hit.geomID[i], query.hit.primID[i], query.ray.tfar[i], query.hit.u[i], query.hit.v[i],
                 Vec3(query.hit.Ng_x[i], query.hit.Ng_y[i], query.hit.Ng_z[i]), &hits[i]);
    }
}

void Accelerator::fill(unsigned geomID, unsigned primID, float distance, float u, float v, const Vec3& normal,
                       Hit* hit) const {
    const Entry& entry = entries_[geomID];
    hit->distance = distance;
    hit->kind = entry.kind;
    hit->set = entry.set;
    hit->prim = primID;
    hit->u = u;
    hit->v = v;
    hit->geometricNormal = normal;
}

bool Accelerator::occluded(const Vec3& origin, const Vec3& direction, float farthest) const {
    if (!scene_) return false;
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    RTCRay query;
    setRay(query, origin, direction, farthest);
    rtcOccluded1(scene_, &context, &query);
    return query.tfar < 0;
}

} // namespace preview

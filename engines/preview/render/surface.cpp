#include "engines/preview/render/surface.h"

namespace preview {

ShadingContext triangleContext(const TriangleMeshData& mesh, uint32_t prim, float b1, float b2, const Vec3& wo) {
    const uint32_t* corner = &mesh.indices[3 * size_t(prim)];
    const Vec3& p0 = mesh.positions[corner[0]];
    const Vec3& p1 = mesh.positions[corner[1]];
    const Vec3& p2 = mesh.positions[corner[2]];
    const float b0 = 1 - b1 - b2;
    ShadingContext at;
    at.position = p0 * b0 + p1 * b1 + p2 * b2;
    at.geometricNormal = mesh.faceNormals[prim];
    at.shadingNormal = at.geometricNormal;
    if (!mesh.cornerNormals.empty()) {
        const Vec3* n = &mesh.cornerNormals[3 * size_t(prim)];
        const Vec3 interpolated = n[0] * b0 + n[1] * b1 + n[2] * b2;
        if (dot(interpolated, interpolated) > 0) at.shadingNormal = normalize(interpolated);
        // A shading normal on the far side of the face would turn light leaks into black spots.
        if (dot(at.shadingNormal, at.geometricNormal) < 0) at.shadingNormal = -at.shadingNormal;
    }
    if (!mesh.uvs.empty()) {
        const float* uv0 = &mesh.uvs[2 * size_t(corner[0])];
        const float* uv1 = &mesh.uvs[2 * size_t(corner[1])];
        const float* uv2 = &mesh.uvs[2 * size_t(corner[2])];
        const float u = uv0[0] * b0 + uv1[0] * b1 + uv2[0] * b2;
        const float v = uv0[1] * b0 + uv1[1] * b1 + uv2[1] * b2;
        for (auto& channel : at.uv) {
            channel[0] = u;
            channel[1] = v;
        }
        // Tangents from the UV parametrisation, for bump and normal maps.
        const float du1 = uv1[0] - uv0[0], dv1 = uv1[1] - uv0[1];
        const float du2 = uv2[0] - uv0[0], dv2 = uv2[1] - uv0[1];
        const float determinant = du1 * dv2 - dv1 * du2;
        if (std::abs(determinant) > 1e-12f) {
            const float inverse = 1 / determinant;
            at.dpdu = ((p1 - p0) * dv2 - (p2 - p0) * dv1) * inverse;
            at.dpdv = ((p2 - p0) * du1 - (p1 - p0) * du2) * inverse;
        }
    }
    at.wo = wo;
    at.frontFacing = dot(at.geometricNormal, wo) > 0;
    return at;
}

float triangleArea(const TriangleMeshData& mesh, uint32_t prim) {
    const uint32_t* corner = &mesh.indices[3 * size_t(prim)];
    return 0.5f * length(cross(mesh.positions[corner[1]] - mesh.positions[corner[0]],
                               mesh.positions[corner[2]] - mesh.positions[corner[0]]));
}

} // namespace preview

#include "tools/builder/crease_normals.h"

#include <cmath>
#include <vector>

namespace builder {

namespace {

struct Vector {
    double x = 0, y = 0, z = 0;
    Vector operator+(const Vector& o) const { return {x + o.x, y + o.y, z + o.z}; }
    Vector operator-(const Vector& o) const { return {x - o.x, y - o.y, z - o.z}; }
    double dot(const Vector& o) const { return x * o.x + y * o.y + z * o.z; }
    Vector cross(const Vector& o) const { return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x}; }
    double length() const { return std::sqrt(dot(*this)); }
};

Vector vertex(const std::vector<float>& positions, uint32_t index) {
    return {positions[3 * size_t(index)], positions[3 * size_t(index) + 1], positions[3 * size_t(index) + 2]};
}

} // namespace

void giveCreaseNormals(ModelGeometry& model) {
    const size_t triangles = model.indices.size() / 3;
    const size_t vertices = model.positions.size() / 3;
    // Each face's normal scaled by twice its area, and the faces at each vertex.
    std::vector<Vector> faceNormal(triangles);
    std::vector<std::vector<uint32_t>> facesAt(vertices);
    for (size_t t = 0; t < triangles; ++t) {
        const uint32_t* corner = &model.indices[3 * t];
        const Vector a = vertex(model.positions, corner[0]);
        faceNormal[t] = (vertex(model.positions, corner[1]) - a).cross(vertex(model.positions, corner[2]) - a);
        for (int k = 0; k < 3; ++k) facesAt[corner[k]].push_back(static_cast<uint32_t>(t));
    }
    const double smooth = std::cos(kSmoothingDegrees * 3.14159265358979 / 180);

    ModelGeometry split;
    split.name = model.name;
    split.materialId = model.materialId;
    const bool withUvs = model.uvs.size() == 2 * vertices;
    for (size_t t = 0; t < triangles; ++t) {
        const double ownLength = faceNormal[t].length();
        for (int k = 0; k < 3; ++k) {
            const uint32_t v = model.indices[3 * t + k];
            Vector sum;
            for (uint32_t other : facesAt[v]) {
                const double otherLength = faceNormal[other].length();
                if (ownLength > 0 && otherLength > 0 &&
                    faceNormal[t].dot(faceNormal[other]) >= smooth * ownLength * otherLength)
                    sum = sum + faceNormal[other];
            }
            const double length = sum.length();
            const Vector unit = length > 0 ? Vector{sum.x / length, sum.y / length, sum.z / length} : Vector{0, 0, 1};
            split.positions.insert(split.positions.end(), &model.positions[3 * size_t(v)], &model.positions[3 * size_t(v)] + 3);
            split.normals.insert(split.normals.end(),
                                 {static_cast<float>(unit.x), static_cast<float>(unit.y), static_cast<float>(unit.z)});
            if (withUvs) split.uvs.insert(split.uvs.end(), &model.uvs[2 * size_t(v)], &model.uvs[2 * size_t(v)] + 2);
            split.indices.push_back(static_cast<uint32_t>(3 * t + k));
        }
    }
    model = std::move(split);
}

} // namespace builder

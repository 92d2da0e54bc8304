#include "engines/preview/render/lights.h"

#include "engines/preview/render/surface.h"
#include "engines/preview/turns.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cmath>

namespace preview {

namespace {

constexpr size_t kSkyTableWidth = 256, kSkyTableHeight = 128;

// Latitude-longitude: u turns around +Y starting behind -Z, v runs from straight up to straight down.
Vec3 directionAt(float u, float v) {
    const float phi = (u - 0.5f) * 2 * kPi, theta = v * kPi;
    return {std::sin(theta) * std::sin(phi), std::cos(theta), -std::sin(theta) * std::cos(phi)};
}

void latLong(const Vec3& d, float* u, float* v) {
    *u = 0.5f + std::atan2(d.x, -d.z) / (2 * kPi);
    *v = std::acos(std::clamp(d.y, -1.0f, 1.0f)) / kPi;
}

Vec3 coneDirection(const Vec3& axis, float cosMax, float u0, float u1) {
    const float cosTheta = 1 - u0 * (1 - cosMax);
    const float sinTheta = std::sqrt(std::max(0.0f, 1 - cosTheta * cosTheta));
    const SinCos phi = sinCosOfTurns(u1);
    return Frame::around(axis).toWorld({sinTheta * phi.cos, sinTheta * phi.sin, cosTheta});
}

float smoothStep(float edge0, float edge1, float x) {
    if (edge1 <= edge0) return x >= edge1 ? 1.0f : 0.0f;
    const float t = std::clamp((x - edge0) / (edge1 - edge0), 0.0f, 1.0f);
    return t * t * (3 - 2 * t);
}

float sunSolidAngle(const LightParams& light) { return 2 * kPi * (1 - light.cosSun); }

bool readImage(const std::string& path, size_t* width, size_t* height, std::vector<Color>* texels) {
    auto input = OIIO::ImageInput::open(path);
    if (!input) return false;
    const OIIO::ImageSpec header = input->spec_dimensions(0);
    if (header.width <= 0 || header.height <= 0 || header.nchannels <= 0) return false;
    *width = static_cast<size_t>(header.width);
    *height = static_cast<size_t>(header.height);
    const int channels = std::min(header.nchannels, 3);
    std::vector<float> pixels(*width * *height * channels);
    if (!input->read_image(0, 0, 0, channels, OIIO::TypeDesc::FLOAT, pixels.data())) return false;
    texels->resize(*width * *height);
    for (size_t i = 0; i < texels->size(); ++i) {
        const float* p = &pixels[i * channels];
        Color c = channels == 3 ? Color(p[0], p[1], p[2]) : Color(p[0]);
        (*texels)[i] = isFinite(c) ? vmax(c, Color(0)) : Color(0);
    }
    return true;
}

} // namespace

void LightSet::addShapes(SceneGeometry& geometry) {
    for (size_t i = 0; i < lights_.size(); ++i) {
        const LightParams& light = lights_[i];
        if (light.kind == LightKind::Rectangle) {
            const Vec3 across = normalize(cross(light.up, light.direction)) * (0.5f * light.width);
            const Vec3 along = light.up * (0.5f * light.height);
            TriangleMeshData mesh;
            mesh.positions = {light.position - across - along, light.position + across - along,
                              light.position + across + along, light.position - across + along};
            // Wound so that the faces' normals are the light's direction.
            const Vec3 n = cross(mesh.positions[1] - mesh.positions[0], mesh.positions[2] - mesh.positions[0]);
            mesh.indices = dot(n, light.direction) > 0 ? std::vector<uint32_t>{0, 1, 2, 0, 2, 3}
                                                       : std::vector<uint32_t>{0, 2, 1, 0, 3, 2};
            mesh.materials = {-1, -1};
            const size_t index = geometry.addMesh(std::move(mesh));
            meshLight_.resize(index + 1, -1);
            meshLight_[index] = static_cast<int32_t>(i);
        } else if (light.kind == LightKind::Disc) {
            DiscSetData disc;
            disc.centers = {light.position.x, light.position.y, light.position.z, light.width};
            disc.normals = {light.direction};
            disc.materials = {-1};
            const size_t index = geometry.addDiscs(std::move(disc));
            discLight_.resize(index + 1, -1);
            discLight_[index] = static_cast<int32_t>(i);
        }
    }
}

void LightSet::prepare(const SceneGeometry& geometry, const MaterialSet& materials, const TexMapSet& maps,
                       WarningLog& warnings) {
    geometry_ = &geometry;
    materials_ = &materials;
    maps_ = &maps;
    meshLight_.resize(geometry.meshes().size(), -1);
    discLight_.resize(geometry.discs().size(), -1);

    Vec3 low(1e30f), high(-1e30f);
    for (const TriangleMeshData& mesh : geometry.meshes())
        for (const Vec3& p : mesh.positions) {
            low = vmin(low, p);
            high = vmax(high, p);
        }
    sceneRadius_ = high.x >= low.x ? std::max(0.5f * length(high - low), 1e-3f) : 1.0f;
    const float disc = kPi * sceneRadius_ * sceneRadius_;

    std::vector<float> power;
    auto addEmitter = [&](Emitter emitter, float watts) {
        emitters_.push_back(emitter);
        power.push_back(watts);
    };
    for (size_t i = 0; i < lights_.size(); ++i) {
        const LightParams& light = lights_[i];
        const float y = luminance(light.emitted);
        const int32_t index = static_cast<int32_t>(i);
        switch (light.kind) {
        case LightKind::Point:
        case LightKind::Spot:
            addEmitter({Emitter::Shape::Delta, i, 0, index, 0}, 4 * kPi * y);
            break;
        case LightKind::Directional:
            addEmitter({Emitter::Shape::Delta, i, 0, index, 0}, disc * y);
            break;
        case LightKind::Sun:
            infinite_.push_back(emitters_.size());
            addEmitter({Emitter::Shape::Infinite, i, 0, index, 0}, disc * y);
            break;
        case LightKind::Sky:
        case LightKind::Environment: {
            Tabulated table;
            table.light = index;
            if (light.kind == LightKind::Environment) {
                if (!readImage(light.imagePath, &table.width, &table.height, &table.texels)) {
                    warnings.note("environment image cannot be read: " + light.imagePath);
                    break;
                }
                for (Color& texel : table.texels) texel *= light.emitted;
            } else if (light.texMap >= 0) {
                table.width = kSkyTableWidth;
                table.height = kSkyTableHeight;
                table.texels.resize(table.width * table.height);
                for (size_t row = 0; row < table.height; ++row)
                    for (size_t column = 0; column < table.width; ++column)
                        table.texels[row * table.width + column] =
                            light.emitted * maps.environment(light.texMap,
                                                             directionAt((column + 0.5f) / table.width,
                                                                         (row + 0.5f) / table.height),
                                                             Color(1));
            }
            float average = y;
            if (!table.texels.empty()) {
                std::vector<float> weights(table.texels.size());
                double sum = 0;
                for (size_t row = 0; row < table.height; ++row) {
                    const float sine = std::sin(kPi * (row + 0.5f) / table.height);
                    for (size_t column = 0; column < table.width; ++column) {
                        const size_t at = row * table.width + column;
                        weights[at] = luminance(table.texels[at]) * sine;
                        sum += weights[at];
                    }
                }
                table.distribution = Distribution2D(weights, table.width, table.height);
                average = static_cast<float>(sum / weights.size());
                tables_.push_back(std::move(table));
            }
            infinite_.push_back(emitters_.size());
            addEmitter({Emitter::Shape::Infinite, i, 0, index, 0}, disc * kPi * average);
            break;
        }
        case LightKind::Rectangle: {
            const float area = light.width * light.height;
            for (size_t m = 0; m < meshLight_.size(); ++m)
                if (meshLight_[m] == index) {
                    for (uint32_t t = 0; t < 2; ++t)
                        addEmitter({Emitter::Shape::Rectangle, m, t, index, 0.5f * area}, 0.5f * kPi * area * y);
                    triangleEmitter_.resize(meshLight_.size());
                    triangleEmitter_[m] = {static_cast<int32_t>(emitters_.size() - 2),
                                           static_cast<int32_t>(emitters_.size() - 1)};
                }
            break;
        }
        case LightKind::Disc: {
            const float area = kPi * light.width * light.width;
            for (size_t d = 0; d < discLight_.size(); ++d)
                if (discLight_[d] == index) addEmitter({Emitter::Shape::Disc, d, 0, index, area}, kPi * area * y);
            break;
        }
        }
    }

    // Triangles of emitting materials, each by its power at its centre.
    triangleEmitter_.resize(geometry.meshes().size());
    for (size_t m = 0; m < geometry.meshes().size(); ++m) {
        if (isLightMesh(m)) continue;
        const TriangleMeshData& mesh = geometry.meshes()[m];
        for (uint32_t t = 0; t < mesh.triangleCount(); ++t) {
            if (!materials.isEmissive(mesh.materials[t])) continue;
            ShadingContext at = triangleContext(mesh, t, 1.0f / 3, 1.0f / 3, Vec3(0, 0, 1));
            at.wo = at.geometricNormal;
            at.frontFacing = true;
            float y = luminance(materials.emission(mesh.materials[t], at, maps));
            if (!(y > 0)) {
                at.wo = -at.geometricNormal;
                at.frontFacing = false;
                y = luminance(materials.emission(mesh.materials[t], at, maps));
            }
            const float area = triangleArea(mesh, t);
            if (!(area > 0)) continue;
            if (triangleEmitter_[m].empty()) triangleEmitter_[m].assign(mesh.triangleCount(), -1);
            triangleEmitter_[m][t] = static_cast<int32_t>(emitters_.size());
            // A map may be dark at the centre and bright elsewhere: never rule a triangle out.
            addEmitter({Emitter::Shape::Triangle, m, t, -1, area}, kPi * area * std::max(y, 1e-3f));
        }
    }
    if (!emitters_.empty()) choice_ = Distribution1D(power);
}

bool LightSet::onlyDeltaLights() const {
    return std::all_of(emitters_.begin(), emitters_.end(),
                       [](const Emitter& emitter) { return emitter.shape == Emitter::Shape::Delta; });
}

bool LightSet::sample(const Vec3& point, float uChoice, float u0, float u1, LightSample* out) const {
    if (choice_.empty()) return false;
    float probability;
    const size_t index = choice_.sample(uChoice, &probability);
    if (!(probability > 0) || !sampleEmitter(index, point, u0, u1, out)) return false;
    out->pdf *= probability;
    return out->pdf > 0 && !isBlack(out->radiance);
}

Color LightSet::shapeRadiance(const LightParams& light, const Vec3& surfaceNormal, const Vec3& toward) const {
    return dot(surfaceNormal, toward) > 0 ? light.emitted : Color(0);
}

bool LightSet::sampleEmitter(size_t index, const Vec3& point, float u0, float u1, LightSample* out) const {
    const Emitter& emitter = emitters_[index];
    const LightParams* light = emitter.light >= 0 ? &lights_[emitter.light] : nullptr;
    auto towards = [&](const Vec3& target, const Vec3& normal, float area) {
        const Vec3 offset = target - point;
        const float squared = dot(offset, offset);
        if (!(squared > 0)) return false;
        out->distance = std::sqrt(squared);
        out->wi = offset / out->distance;
        const float cosine = std::abs(dot(normal, out->wi));
        if (cosine < 1e-7f) return false;
        out->pdf = squared / (cosine * area);
        return true;
    };
    out->delta = false;
    switch (emitter.shape) {
    case Emitter::Shape::Triangle:
    case Emitter::Shape::Rectangle: {
        const TriangleMeshData& mesh = geometry_->meshes()[emitter.set];
        // Uniform on the triangle: the first corner weighs 1 - sqrt(u0), the other two share the rest.
        const float root = std::sqrt(u0);
        const float second = u1 * root, third = root * (1 - u1);
        ShadingContext at = triangleContext(mesh, emitter.prim, second, third, Vec3(0, 0, 1));
        if (!towards(at.position, at.geometricNormal, emitter.area)) return false;
        at.wo = -out->wi;
        at.frontFacing = dot(at.geometricNormal, at.wo) > 0;
        out->radiance = light ? shapeRadiance(*light, at.geometricNormal, at.wo)
                              : materials_->emission(mesh.materials[emitter.prim], at, *maps_);
        return true;
    }
    case Emitter::Shape::Disc: {
        const float radius = light->width * std::sqrt(u0);
        const SinCos angle = sinCosOfTurns(u1);
        const Frame frame = Frame::around(light->direction);
        const Vec3 target = light->position + frame.toWorld({radius * angle.cos, radius * angle.sin, 0});
        if (!towards(target, light->direction, emitter.area)) return false;
        out->radiance = shapeRadiance(*light, light->direction, -out->wi);
        return true;
    }
    case Emitter::Shape::Delta: {
        out->delta = true;
        out->pdf = 1;
        if (light->kind == LightKind::Directional) {
            out->wi = -light->direction;
            out->distance = INFINITY;
            out->radiance = light->emitted;
            return true;
        }
        const Vec3 offset = light->position - point;
        const float squared = dot(offset, offset);
        if (!(squared > 0)) return false;
        // One division serves the direction, the distance and the inverse square.
        const float inverse = 1 / std::sqrt(squared);
        out->distance = squared * inverse;
        out->wi = offset * inverse;
        float falloff = 1;
        if (light->kind == LightKind::Spot)
            falloff = smoothStep(light->cosOuter, light->cosInner, dot(-out->wi, light->direction));
        out->radiance = light->emitted * (falloff * inverse * inverse);
        return true;
    }
    case Emitter::Shape::Infinite: {
        out->distance = INFINITY;
        if (light->kind == LightKind::Sun) {
            out->wi = coneDirection(-light->direction, light->cosSun, u0, u1);
        } else {
            const Tabulated* table = nullptr;
            for (const Tabulated& t : tables_)
                if (t.light == emitter.light) table = &t;
            if (table) {
                float u, v, density;
                table->distribution.sample(u0, u1, &u, &v, &density);
                out->wi = directionAt(u, v);
            } else {
                const float z = 1 - 2 * u0, r = std::sqrt(std::max(0.0f, 1 - z * z));
                const SinCos phi = sinCosOfTurns(u1);
                out->wi = {r * phi.cos, z, r * phi.sin};
            }
        }
        out->pdf = environmentPdf(index, out->wi);
        out->radiance = environmentOf(*light, out->wi);
        return out->pdf > 0;
    }
    }
    return false;
}

Color LightSet::environmentOf(const LightParams& light, const Vec3& direction) const {
    switch (light.kind) {
    case LightKind::Sun:
        return dot(direction, -light.direction) >= light.cosSun ? light.emitted / sunSolidAngle(light) : Color(0);
    case LightKind::Sky:
        return light.texMap >= 0 ? light.emitted * maps_->environment(light.texMap, direction, Color(1))
                                 : light.emitted;
    case LightKind::Environment: {
        for (const Tabulated& table : tables_) {
            if (&lights_[table.light] != &light) continue;
            float u, v;
            latLong(direction, &u, &v);
            const size_t column = std::min(static_cast<size_t>(std::max(u, 0.0f) * table.width), table.width - 1);
            const size_t row = std::min(static_cast<size_t>(std::max(v, 0.0f) * table.height), table.height - 1);
            return table.texels[row * table.width + column];
        }
        return Color(0);
    }
    default:
        return Color(0);
    }
}

float LightSet::environmentPdf(size_t emitter, const Vec3& direction) const {
    const LightParams& light = lights_[emitters_[emitter].light];
    if (light.kind == LightKind::Sun)
        return dot(direction, -light.direction) >= light.cosSun ? 1 / sunSolidAngle(light) : 0.0f;
    for (const Tabulated& table : tables_) {
        if (table.light != emitters_[emitter].light) continue;
        float u, v;
        latLong(direction, &u, &v);
        const float sine = std::sin(v * kPi);
        return sine > 0 ? table.distribution.density(u, v) / (2 * kPi * kPi * sine) : 0.0f;
    }
    return 1 / (4 * kPi);
}

Color LightSet::environment(const Vec3& direction, float* pdf) const {
    Color radiance(0);
    *pdf = 0;
    for (size_t index : infinite_) {
        radiance += environmentOf(lights_[emitters_[index].light], direction);
        *pdf += choice_.probability(index) * environmentPdf(index, direction);
    }
    return radiance;
}

Color LightSet::emittedByMesh(size_t mesh, uint32_t prim, const ShadingContext& at, const Vec3& origin,
                              float* pdf) const {
    *pdf = 0;
    const TriangleMeshData& data = geometry_->meshes()[mesh];
    const Color radiance = isLightMesh(mesh) ? shapeRadiance(lights_[meshLight_[mesh]], at.geometricNormal, at.wo)
                                             : materials_->emission(data.materials[prim], at, *maps_);
    if (mesh < triangleEmitter_.size() && prim < triangleEmitter_[mesh].size()) {
        const int32_t emitter = triangleEmitter_[mesh][prim];
        if (emitter >= 0) {
            const Vec3 offset = at.position - origin;
            const float cosine = std::abs(dot(at.geometricNormal, at.wo));
            if (cosine > 1e-7f)
                *pdf = choice_.probability(emitter) * dot(offset, offset) / (cosine * emitters_[emitter].area);
        }
    }
    return radiance;
}

Color LightSet::emittedByDisc(size_t discs, uint32_t, const ShadingContext& at, const Vec3& origin,
                              float* pdf) const {
    *pdf = 0;
    if (!isLightDiscs(discs)) return Color(0);
    const int32_t light = discLight_[discs];
    for (size_t e = 0; e < emitters_.size(); ++e) {
        if (emitters_[e].shape != Emitter::Shape::Disc || emitters_[e].set != discs) continue;
        const Vec3 offset = at.position - origin;
        const float cosine = std::abs(dot(lights_[light].direction, at.wo));
        if (cosine > 1e-7f) *pdf = choice_.probability(e) * dot(offset, offset) / (cosine * emitters_[e].area);
    }
    return shapeRadiance(lights_[light], lights_[light].direction, at.wo);
}

} // namespace preview

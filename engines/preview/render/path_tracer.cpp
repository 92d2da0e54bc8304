#include "engines/preview/render/path_tracer.h"

#include "engines/preview/render/surface.h"

#include <algorithm>
#include <cmath>

namespace preview {

namespace {

constexpr int kMaxPassThroughs = 64;

// What a ray met: where, and what the material there is.
struct Surface {
    ShadingContext at;
    int32_t material = -1;
    bool lightShape = false; // the shape of an area light: it emits and reflects nothing
};

Surface surfaceAt(const SceneView& scene, const Hit& hit, const Ray& ray) {
    const Vec3 wo = -ray.direction;
    // Triangles, nearly every hit, build the context in its place: a Surface made empty first
    // and then filled costs a string store over the whole of it.
    if (hit.kind == PrimitiveKind::Triangle) {
        const TriangleMeshData& mesh = scene.geometry.meshes()[hit.set];
        return {triangleContext(mesh, hit.prim, hit.u, hit.v, wo),
                mesh.materials[hit.prim], scene.lights.isLightMesh(hit.set)};
    }
    Surface surface;
    ShadingContext& at = surface.at;
    at.position = ray.origin + ray.direction * hit.distance;
    at.geometricNormal = normalize(hit.geometricNormal);
    at.shadingNormal = at.geometricNormal;
    for (auto& channel : at.uv) {
        channel[0] = hit.u;
        channel[1] = hit.v;
    }
    at.wo = wo;
    at.frontFacing = dot(at.geometricNormal, wo) > 0;
    if (hit.kind == PrimitiveKind::Curve) {
        surface.material = scene.geometry.curves()[hit.set].materials[hit.prim];
    } else {
        surface.material = scene.geometry.discs()[hit.set].materials[hit.prim];
        surface.lightShape = scene.lights.isLightDiscs(hit.set);
    }
    return surface;
}

// A point just off the surface on the side `direction` leaves to, so that the new ray does not
// meet the surface it starts from.
Vec3 offsetFrom(const ShadingContext& at, const Vec3& direction) {
    const Vec3& p = at.position;
    const float scale = 1e-4f * (1 + std::max({std::abs(p.x), std::abs(p.y), std::abs(p.z)}));
    const Vec3 side = dot(at.geometricNormal, direction) > 0 ? at.geometricNormal : -at.geometricNormal;
    return p + side * scale;
}

float powerHeuristic(float chosen, float other) {
    const float a = chosen * chosen, b = other * other;
    return a + b > 0 && std::isfinite(a + b) ? a / (a + b) : (std::isinf(chosen) ? 1.0f : 0.0f);
}

// How much of the light reaches `from` along `toward` over `distance`: 0 when something opaque
// is in the way, less than 1 through cut-out and null surfaces.
float transmittance(const SceneView& scene, const ShadingContext& from, const Vec3& toward, float distance,
                    uint32_t* rays) {
    Vec3 origin = offsetFrom(from, toward);
    ++*rays;
    float left = std::isinf(distance) ? INFINITY : distance * (1 - 1e-3f);
    if (!scene.anyPassable) return scene.accelerator.occluded(origin, toward, left) ? 0.0f : 1.0f;
    float carried = 1;
    for (int crossing = 0; crossing < kMaxPassThroughs; ++crossing) {
        Hit hit;
        if (crossing > 0) ++*rays;
        if (!scene.accelerator.intersect(origin, toward, left, &hit)) return carried;
        const Ray ray{origin, toward};
        const Surface surface = surfaceAt(scene, hit, ray);
        if (surface.lightShape || !scene.materials.mayPassRays(surface.material)) return 0;
        carried *= scene.materials.passThrough(surface.material, surface.at, scene.maps);
        if (!(carried > 0)) return 0;
        origin = offsetFrom(surface.at, toward);
        if (!std::isinf(left)) left -= hit.distance;
    }
    return 0;
}

// Light that reached the camera over more than one surface is capped, as the settings ask: a
// rare path that finds a small bright light through a glossy bounce would otherwise stand out
// as a white speck for hundreds of passes.
Color capped(const SceneView& scene, int bounce, const Color& contribution) {
    if (bounce == 0 || !(scene.clampIndirect > 0)) return contribution;
    const float largest = maxComponent(contribution);
    return largest > scene.clampIndirect ? contribution * (scene.clampIndirect / largest) : contribution;
}

} // namespace

PathSample tracePath(const SceneView& scene, Ray ray, const Hit* cameraHit, Sampler& sampler) {
    PathSample result;
    Color carried(1);
    float previousPdf = 0;
    bool previousDelta = true; // the camera ray counts as one: what it meets is seen directly
    Vec3 previousPoint = ray.origin;
    const Vec3 eye = ray.origin;
    int passThroughs = 0;
    for (int bounce = 0;;) {
        Hit hit;
        ++result.rays;
        bool met;
        if (bounce == 0 && passThroughs == 0) {
            // The camera ray was traced with its neighbours'.
            met = cameraHit != nullptr;
            if (met) hit = *cameraHit;
        } else {
            met = scene.accelerator.intersect(ray.origin, ray.direction, INFINITY, &hit);
        }
        if (!met) {
            float pdf = 0;
            const Color seen = scene.lights.environment(ray.direction, &pdf);
            const float weight = previousDelta ? 1.0f : powerHeuristic(previousPdf, pdf);
            result.radiance += capped(scene, bounce, carried * seen * weight);
            break;
        }
        Surface surface = surfaceAt(scene, hit, ray);
        ShadingContext& at = surface.at;

        // An emitter that the camera must not see lets camera rays by, as if it were not there.
        if (previousDelta && bounce == 0 && !surface.lightShape && !scene.materials.isCameraVisible(surface.material) &&
            passThroughs < kMaxPassThroughs) {
            ++passThroughs;
            ray.origin = offsetFrom(at, ray.direction);
            continue;
        }

        if (bounce == 0 && scene.layers) {
            result.depth = length(at.position - eye);
            result.normal = dot(at.shadingNormal, at.wo) >= 0 ? at.shadingNormal : -at.shadingNormal;
        }

        const bool emissive = !surface.lightShape && scene.materials.isEmissive(surface.material);
        if (surface.lightShape || (hit.kind == PrimitiveKind::Triangle && emissive)) {
            float pdf = 0;
            const Color emitted = hit.kind == PrimitiveKind::Disc
                                      ? scene.lights.emittedByDisc(hit.set, hit.prim, at, previousPoint, &pdf)
                                      : scene.lights.emittedByMesh(hit.set, hit.prim, at, previousPoint, &pdf);
            const float weight = previousDelta ? 1.0f : powerHeuristic(previousPdf, pdf);
            result.radiance += capped(scene, bounce, carried * emitted * weight);
        } else if (emissive) {
            // Emitting curves and discs are not light sources of their own: seen, never sampled.
            result.radiance += capped(scene, bounce, carried * scene.materials.emission(surface.material, at, scene.maps));
        }
        if (surface.lightShape || bounce >= scene.maxDepth) break;

        const Bsdf bsdf = scene.materials.bsdfAt(surface.material, at, scene.maps, sampler.next());
        if (bounce == 0 && scene.layers) result.albedo = bsdf.albedo();
        const BsdfView scattering(bsdf, at.wo);

        // Next-event estimation: one light sample, weighted against the BSDF's own choice.
        const float uChoice = sampler.next(), u0 = sampler.next(), u1 = sampler.next();
        if (!bsdf.isDelta()) {
            LightSample light;
            if (scene.lights.sample(at.position, uChoice, u0, u1, &light)) {
                float bsdfPdf = 0;
                const Color through = carried * scattering.evaluate(light.wi, &bsdfPdf);
                if (!isBlack(through)) {
                    const float visible = transmittance(scene, at, light.wi, light.distance, &result.rays);
                    if (visible > 0) {
                        const float weight = light.delta ? 1.0f : powerHeuristic(light.pdf, bsdfPdf);
                        result.radiance +=
                            capped(scene, bounce, through * light.radiance * (visible * weight / light.pdf));
                    }
                }
            }
        }
        // From the last surface a path scatters from, the next ray could only add the light it
        // meets: where all light comes from points and directions, it meets none.
        if (bounce + 1 >= scene.maxDepth && !scene.emissionMet) break;

        BsdfSample next;
        const float s0 = sampler.next(), s1 = sampler.next(), s2 = sampler.next();
        if (!scattering.sample(s0, s1, s2, &next) || !isFinite(next.weight)) break;
        carried *= next.weight;
        // A path can carry nothing on without having met a black surface: red light off a
        // green wall. Whatever it met next would add nothing.
        if (isBlack(carried)) break;
        previousPdf = next.pdf;
        previousDelta = next.delta;
        previousPoint = at.position;
        ray.origin = offsetFrom(at, next.wi);
        ray.direction = next.wi;
        ++bounce;

        if (bounce >= scene.rouletteStartDepth) {
            const float survive = std::min(0.95f, maxComponent(carried));
            if (sampler.next() >= survive) break;
            carried /= survive;
        }
    }
    return result;
}

} // namespace preview

// Lobes worked out once for a material must be the lobes its layers give at any hit; a layer
// that reads the hit must keep the material out of that shortcut.
#include "engines/preview/materials/surface_lobes.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace preview {
namespace {

class NoMaps final : public TexMapLookup {
  public:
    Color color(int32_t, const ShadingContext&, Color fallback) const override { return fallback; }
    float scalar(int32_t, const ShadingContext&, float fallback) const override { return fallback; }
    Vec3 normal(int32_t, const ShadingContext&) const override { return {0, 0, 1}; }
};

ShadingContext hit(const Vec3& wo, bool front) {
    ShadingContext at;
    at.geometricNormal = at.shadingNormal = Vec3(0, 0, 1);
    at.wo = normalize(wo);
    at.frontFacing = front;
    return at;
}

void expectSameLobe(const Lobe& a, const Lobe& b) {
    EXPECT_EQ(a.kind, b.kind);
    EXPECT_EQ(a.fresnel, b.fresnel);
    for (int c = 0; c < 3; ++c) {
        EXPECT_FLOAT_EQ(a.weight[c], b.weight[c]);
        EXPECT_FLOAT_EQ(a.transmission[c], b.transmission[c]);
        EXPECT_FLOAT_EQ(a.f0[c], b.f0[c]);
        EXPECT_FLOAT_EQ(a.edgeTint[c], b.edgeTint[c]);
    }
    EXPECT_FLOAT_EQ(a.eta, b.eta);
    EXPECT_FLOAT_EQ(a.alphaX, b.alphaX);
    EXPECT_FLOAT_EQ(a.alphaY, b.alphaY);
    EXPECT_EQ(a.thinWalled, b.thinWalled);
}

TEST(SurfaceLobes, FixedLobesAreTheLobesOfEveryHit) {
    struct Case {
        std::string name;
        std::function<void(SurfaceLayers&)> set;
        bool fixed;
    };
    const std::vector<Case> cases = {
        {"diffuse", [](SurfaceLayers& s) { s.diffuse.value = Color(0.7f, 0.2f, 0.1f); }, true},
        {"diffuse and translucent",
         [](SurfaceLayers& s) {
             s.diffuse.value = Color(0.8f);
             s.translucence.value = Color(0.6f);
         },
         true},
        {"rough metal",
         [](SurfaceLayers& s) {
             s.metalness.value = 1;
             s.conductor.value = Color(0.9f, 0.6f, 0.3f);
             s.roughness.value = 0.4f;
             s.anisotropy = 0.5f;
         },
         true},
        {"half metal over diffuse",
         [](SurfaceLayers& s) {
             s.metalness.value = 0.5f;
             s.conductor.value = Color(0.9f);
             s.diffuse.value = Color(0.5f);
         },
         true},
        {"solid glass",
         [](SurfaceLayers& s) {
             s.transmissionWeight.value = 1;
             s.transmission.value = Color(1);
             s.roughness.value = 0.3f;
         },
         true},
        {"specular over diffuse",
         [](SurfaceLayers& s) {
             s.diffuse.value = Color(0.5f);
             s.specular.value = Color(1);
         },
         false},
        {"coated",
         [](SurfaceLayers& s) {
             s.diffuse.value = Color(0.5f);
             s.coatWeight.value = 1;
         },
         false},
        {"thin sheet",
         [](SurfaceLayers& s) {
             s.transmissionWeight.value = 1;
             s.transmission.value = Color(1);
             s.roughness.value = 0.3f;
             s.thin = true;
         },
         false},
        {"back colour",
         [](SurfaceLayers& s) {
             s.diffuse.value = Color(0.5f);
             s.backDiffuse.value = Color(0.1f);
             s.hasBack = true;
         },
         true},
        {"mapped diffuse",
         [](SurfaceLayers& s) {
             s.diffuse.value = Color(0.5f);
             s.diffuse.map = 3;
         },
         false},
        {"mapped roughness",
         [](SurfaceLayers& s) {
             s.metalness.value = 1;
             s.conductor.value = Color(0.9f);
             s.roughness.value = 0.5f;
             s.roughness.map = 2;
         },
         false},
    };
    const std::vector<ShadingContext> hits = {hit({0, 0, 1}, true), hit({0.9f, 0, 0.2f}, true),
                                              hit({0.3f, 0.4f, -1}, false), hit({-0.2f, 0.1f, 0.05f}, true)};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        SurfaceLayers layers;
        c.set(layers);
        const auto fixed = fixedSurfaceLobes(layers);
        ASSERT_EQ(fixed.has_value(), c.fixed);
        if (!fixed) continue;
        ASSERT_FALSE(fixed->front.empty());
        for (const ShadingContext& at : hits) {
            Bsdf bsdf(at.shadingNormal, at.geometricNormal);
            addSurfaceLobes(layers, at, NoMaps(), &bsdf);
            const std::vector<Lobe>& lobes = fixed->on(at.frontFacing);
            ASSERT_EQ(bsdf.lobeCount(), static_cast<int>(lobes.size()));
            for (int i = 0; i < bsdf.lobeCount(); ++i) expectSameLobe(bsdf.lobe(i), lobes[i]);
        }
    }
}

} // namespace
} // namespace preview

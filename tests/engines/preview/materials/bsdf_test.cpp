// Lobes against what they must satisfy whatever their code: sampling agrees with evaluate,
// energy is conserved, Fresnel gives its textbook values, reflection is reciprocal, and light
// does not leak past the geometric surface.
#include "engines/preview/materials/bsdf.h"
#include "engines/preview/materials/microfacet.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace preview {
namespace {

const Vec3 kUp(0, 0, 1);

Vec3 direction(float cosTheta, float phi = 0.3f) {
    const float s = std::sqrt(std::max(0.0f, 1 - cosTheta * cosTheta));
    return {s * std::cos(phi), s * std::sin(phi), cosTheta};
}

Bsdf single(const Lobe& lobe, const Vec3& n = kUp) {
    Bsdf bsdf(n, n);
    bsdf.add(lobe);
    return bsdf;
}

Lobe lambert(Color albedo) {
    Lobe lobe;
    lobe.weight = albedo;
    return lobe;
}

Lobe ggx(LobeKind kind, float alphaX, float alphaY) {
    Lobe lobe;
    lobe.kind = kind;
    lobe.alphaX = alphaX;
    lobe.alphaY = alphaY;
    lobe.f0 = Color(1);
    lobe.edgeTint = Color(1);
    return lobe;
}

// Single scattering loses energy with roughness (GGX at alpha 0.3 keeps about 88% at normal
// incidence, at alpha 0.8 about 43%), never gains it.

// The mean of the sample weights: the share of light that the lobes scatter.
Color meanWeight(const Bsdf& bsdf, const Vec3& wo, int n, int* sampled = nullptr) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> u(0, 1);
    Color sum(0);
    int ok = 0;
    for (int i = 0; i < n; ++i) {
        BsdfSample s;
        if (!BsdfView(bsdf, wo).sample(u(rng), u(rng), u(rng), &s)) continue;
        sum += s.weight;
        ++ok;
    }
    if (sampled) *sampled = ok;
    return sum / float(n);
}

TEST(Bsdf, LambertScattersItsAlbedo) {
    const Color albedos[] = {Color(1), Color(0.5f), Color(0.2f, 0.6f, 0.9f)};
    const float cosines[] = {1.0f, 0.5f, 0.1f, -0.7f};
    for (const Color& albedo : albedos) {
        for (float c : cosines) {
            SCOPED_TRACE("albedo " + std::to_string(albedo.x) + " cos " + std::to_string(c));
            const Bsdf bsdf = single(lambert(albedo));
            const Color byWeights = meanWeight(bsdf, direction(c), 4000);
            // Independently of sampling: evaluate integrated over uniformly drawn directions.
            std::mt19937 rng(3);
            std::uniform_real_distribution<float> u(0, 1);
            Color byEvaluate(0);
            const int n = 200000;
            for (int i = 0; i < n; ++i) {
                const Vec3 wi = direction(1 - 2 * u(rng), 2 * kPi * u(rng));
                float pdf;
                byEvaluate += BsdfView(bsdf, direction(c)).evaluate(wi, &pdf) * (4 * kPi);
            }
            byEvaluate /= float(n);
            for (int k = 0; k < 3; ++k) {
                EXPECT_NEAR(byWeights[k], albedo[k], 1e-4f);
                EXPECT_NEAR(byEvaluate[k], albedo[k], 0.01f);
            }
        }
    }
}

struct PdfCase {
    const char* name;
    Lobe lobe;
};

std::vector<PdfCase> nonDeltaCases() {
    std::vector<PdfCase> cases = {
        {"lambert", lambert(Color(0.8f))},
        {"translucent", [] {
             Lobe l = lambert(Color(0.6f));
             l.kind = LobeKind::LambertTransmit;
             return l;
         }()},
    };
    for (float alpha : {0.02f, 0.2f, 0.7f}) {
        cases.push_back({"conductor", ggx(LobeKind::GgxConductor, alpha, alpha)});
        cases.push_back({"rough glass", ggx(LobeKind::GgxDielectric, alpha, alpha)});
    }
    cases.push_back({"anisotropic conductor", ggx(LobeKind::GgxConductor, 0.1f, 0.5f)});
    Lobe tinted = ggx(LobeKind::GgxDielectric, 0.3f, 0.3f);
    tinted.transmission = Color(0.2f, 0.5f, 0.9f);
    cases.push_back({"tinted rough glass", tinted});
    return cases;
}

TEST(Bsdf, SampledPdfIsEvaluatedPdf) {
    const float cosines[] = {0.95f, 0.5f, 0.15f, -0.4f, -0.9f};
    for (const PdfCase& c : nonDeltaCases()) {
        for (float cosO : cosines) {
            SCOPED_TRACE(std::string(c.name) + " alpha " + std::to_string(c.lobe.alphaX) + " cos " +
                         std::to_string(cosO));
            Bsdf bsdf = single(c.lobe);
            bsdf.add(lambert(Color(0.3f))); // a second lobe, so the combined pdf is exercised
            const Vec3 wo = direction(cosO, 1.1f);
            std::mt19937 rng(11);
            std::uniform_real_distribution<float> u(0, 1);
            int checked = 0;
            for (int i = 0; i < 300; ++i) {
                BsdfSample s;
                if (!BsdfView(bsdf, wo).sample(u(rng), u(rng), u(rng), &s)) continue;
                ASSERT_FALSE(s.delta);
                float pdf = 0;
                const Color value = BsdfView(bsdf, wo).evaluate(s.wi, &pdf);
                ASSERT_NEAR(pdf, s.pdf, 1e-3f * std::max(1.0f, s.pdf));
                for (int k = 0; k < 3; ++k)
                    ASSERT_NEAR(value[k] / pdf, s.weight[k], 1e-3f * std::max(1.0f, s.weight[k]));
                ++checked;
            }
            EXPECT_GT(checked, 200);
        }
    }
}

// The pdf is a density: over the sphere it integrates to the share of samples that succeed.
TEST(Bsdf, PdfIntegratesToAtMostOne) {
    for (const PdfCase& c : nonDeltaCases()) {
        for (float cosO : {0.9f, 0.3f}) {
            SCOPED_TRACE(std::string(c.name) + " alpha " + std::to_string(c.lobe.alphaX));
            if (c.lobe.alphaX < 0.1f && c.lobe.kind != LobeKind::Lambert) continue; // too peaked for this
            const Bsdf bsdf = single(c.lobe);
            std::mt19937 rng(5);
            std::uniform_real_distribution<float> u(0, 1);
            double integral = 0;
            const int n = 400000;
            for (int i = 0; i < n; ++i) {
                float pdf;
                BsdfView(bsdf, direction(cosO)).evaluate(direction(1 - 2 * u(rng), 2 * kPi * u(rng)), &pdf);
                integral += pdf * 4 * kPi;
            }
            integral /= n;
            int sampled = 0;
            meanWeight(bsdf, direction(cosO), 20000, &sampled);
            EXPECT_LT(integral, 1.03);
            EXPECT_NEAR(integral, sampled / 20000.0, 0.05);
        }
    }
}

TEST(Bsdf, WhiteConductorKeepsItsEnergy) {
    struct Case {
        float alpha;
        float atLeast;
    } cases[] = {{0.01f, 0.99f}, {0.05f, 0.98f}, {0.3f, 0.82f}, {0.8f, 0.4f}};
    for (const Case& c : cases) {
        for (float cosO : {1.0f, 0.6f, 0.2f}) {
            SCOPED_TRACE("alpha " + std::to_string(c.alpha) + " cos " + std::to_string(cosO));
            const Color e = meanWeight(single(ggx(LobeKind::GgxConductor, c.alpha, c.alpha)), direction(cosO), 40000);
            EXPECT_LE(e.x, 1.005f);
            if (cosO > 0.5f) {
                EXPECT_GE(e.x, c.atLeast);
            }
        }
    }
}

TEST(Bsdf, FresnelOfGlass) {
    EXPECT_NEAR(fresnelDielectric(1, 1.5f), 0.04f, 1e-5f);
    EXPECT_NEAR(fresnelDielectric(-1, 1.5f), 0.04f, 1e-5f); // the same from inside
    EXPECT_FLOAT_EQ(fresnelDielectric(-0.3f, 1.5f), 1.0f);  // past the critical angle inside
    EXPECT_NEAR(fresnelDielectric(0.0f, 1.5f), 1.0f, 1e-5f);
    // Reflectance rises towards grazing incidence.
    EXPECT_LT(fresnelDielectric(0.8f, 1.5f), fresnelDielectric(0.3f, 1.5f));
}

TEST(Bsdf, IdealGlassSplitsByFresnel) {
    Lobe glass;
    glass.kind = LobeKind::Dielectric;
    glass.eta = 1.5f;
    struct Case {
        float cosO;
        float reflected; // expected share
    } cases[] = {{1.0f, 0.04f}, {0.5f, fresnelDielectric(0.5f, 1.5f)}, {-1.0f, 0.04f}, {-0.3f, 1.0f}};
    for (const Case& c : cases) {
        SCOPED_TRACE("cos " + std::to_string(c.cosO));
        const Bsdf bsdf = single(glass);
        const Vec3 wo = direction(c.cosO, 0.4f);
        std::mt19937 rng(2);
        std::uniform_real_distribution<float> u(0, 1);
        int reflected = 0, n = 20000;
        Color energy(0);
        for (int i = 0; i < n; ++i) {
            BsdfSample s;
            ASSERT_TRUE(BsdfView(bsdf, wo).sample(u(rng), u(rng), u(rng), &s));
            ASSERT_TRUE(s.delta);
            energy += s.weight;
            if (!s.transmitted) {
                ++reflected;
                continue;
            }
            // Snell: the sines go as the indices, and the ray crosses to the other side.
            const float sinO = std::sqrt(1 - c.cosO * c.cosO);
            const float sinI = std::sqrt(std::max(0.0f, 1 - s.wi.z * s.wi.z));
            EXPECT_NEAR(sinI, c.cosO > 0 ? sinO / 1.5f : sinO * 1.5f, 1e-4f);
            EXPECT_LT(s.wi.z * wo.z, 0);
        }
        EXPECT_NEAR(float(reflected) / n, c.reflected, 0.006f);
        EXPECT_NEAR(energy.x / n, 1.0f, 1e-3f); // reflection and transmission carry it all
    }
    // Without transmission only the reflection is left: 4% at normal incidence.
    glass.transmission = Color(0);
    EXPECT_NEAR(meanWeight(single(glass), kUp, 100).y, 0.04f, 1e-5f);
}

TEST(Bsdf, RoughGlassKeepsAtMostItsEnergy) {
    for (float alpha : {0.05f, 0.3f, 0.7f}) {
        for (float cosO : {0.9f, 0.4f, -0.9f}) {
            SCOPED_TRACE("alpha " + std::to_string(alpha) + " cos " + std::to_string(cosO));
            const Color e = meanWeight(single(ggx(LobeKind::GgxDielectric, alpha, alpha)), direction(cosO), 40000);
            EXPECT_LE(e.x, 1.01f);
            EXPECT_GE(e.x, alpha < 0.5f ? 0.85f : 0.55f);
        }
    }
}

TEST(Bsdf, ReflectionIsReciprocal) {
    Lobe coat = ggx(LobeKind::GgxConductor, 0.2f, 0.2f);
    coat.fresnel = FresnelModel::Dielectric;
    Lobe tinted = ggx(LobeKind::GgxConductor, 0.4f, 0.1f);
    tinted.f0 = Color(0.9f, 0.6f, 0.3f);
    const PdfCase cases[] = {{"lambert", lambert(Color(0.7f))},
                             {"conductor", ggx(LobeKind::GgxConductor, 0.3f, 0.3f)},
                             {"tinted anisotropic conductor", tinted},
                             {"coat", coat},
                             {"rough glass reflection", ggx(LobeKind::GgxDielectric, 0.3f, 0.3f)}};
    const Vec3 pairs[][2] = {{direction(0.9f, 0.2f), direction(0.4f, 2.5f)},
                             {direction(0.3f, 1.0f), direction(0.7f, 4.0f)},
                             {direction(0.6f, 0.0f), direction(0.6f, 3.0f)}};
    for (const PdfCase& c : cases) {
        for (const auto& pair : pairs) {
            SCOPED_TRACE(c.name);
            const Bsdf bsdf = single(c.lobe);
            float pdf;
            const Color forward = BsdfView(bsdf, pair[0]).evaluate(pair[1], &pdf) / pair[1].z;
            const Color backward = BsdfView(bsdf, pair[1]).evaluate(pair[0], &pdf) / pair[0].z;
            ASSERT_GT(forward.x, 0);
            for (int k = 0; k < 3; ++k)
                EXPECT_NEAR(forward[k], backward[k], 1e-4f * std::max(1.0f, forward[k]));
        }
    }
}

// A shading normal tilted away from the geometric one must not let light through the surface.
TEST(Bsdf, NoLightThroughTheGeometricSurface) {
    const Vec3 shading = normalize(Vec3(0.5f, 0, 1));
    const Bsdf bsdf = [&] {
        Bsdf b(shading, kUp);
        b.add(lambert(Color(1)));
        return b;
    }();
    const Vec3 wo = direction(0.8f, 0);
    const Vec3 belowSurface = normalize(Vec3(1, 0, -0.1f)); // above the shading plane only
    ASSERT_GT(dot(belowSurface, shading), 0);
    float pdf = 1;
    EXPECT_TRUE(isBlack(BsdfView(bsdf, wo).evaluate(belowSurface, &pdf)));
    EXPECT_EQ(pdf, 0);
    std::mt19937 rng(9);
    std::uniform_real_distribution<float> u(0, 1);
    for (int i = 0; i < 2000; ++i) {
        BsdfSample s;
        if (BsdfView(bsdf, normalize(Vec3(1, 0, 0.2f))).sample(u(rng), u(rng), u(rng), &s)) {
            ASSERT_GT(s.wi.z, 0);
        }
    }
}

TEST(Bsdf, DeltaSamplesCarryTheirChoiceProbability) {
    Lobe mirror;
    mirror.kind = LobeKind::Mirror;
    mirror.f0 = mirror.edgeTint = Color(1);
    Lobe through;
    through.kind = LobeKind::Transparent;
    through.weight = Color(1);
    Bsdf bsdf(kUp, kUp);
    bsdf.add(mirror);
    bsdf.add(through);
    EXPECT_TRUE(bsdf.isDelta());
    const Vec3 wo = direction(0.7f);
    BsdfSample s;
    ASSERT_TRUE(BsdfView(bsdf, wo).sample(0.2f, 0.5f, 0.5f, &s));
    EXPECT_TRUE(s.delta);
    EXPECT_NEAR(s.pdf, 0.5f, 1e-6f);
    EXPECT_NEAR(s.weight.x, 2.0f, 1e-5f);
    EXPECT_NEAR(dot(s.wi, Vec3(-wo.x, -wo.y, wo.z)), 1.0f, 1e-5f);
    ASSERT_TRUE(BsdfView(bsdf, wo).sample(0.8f, 0.5f, 0.5f, &s));
    EXPECT_TRUE(s.transmitted);
    EXPECT_NEAR(dot(s.wi, -wo), 1.0f, 1e-6f);
    float pdf = 1;
    EXPECT_TRUE(isBlack(BsdfView(bsdf, wo).evaluate(s.wi, &pdf)));
    EXPECT_EQ(pdf, 0);
}

} // namespace
} // namespace preview

// The scattering function at one surface point: a few weighted lobes, built per hit from a
// compiled material and evaluated in the shading frame.
#pragma once
#include "engines/preview/vec3.h"

#include <cstdint>
#include <vector>

namespace preview {

enum class LobeKind : uint8_t {
    Lambert,         // albedo / pi
    LambertTransmit, // diffuse translucency through the surface
    Mirror,          // ideal reflection with a Fresnel colour (conductor or dielectric)
    Dielectric,      // ideal reflection and refraction by eta
    GgxConductor,    // microfacet reflection, GGX with visible-normal sampling
    GgxDielectric,   // microfacet reflection and refraction, GGX with visible-normal sampling
    Transparent,     // passes the ray straight on (cut-out, null material)
};

// How Mirror and GgxConductor lobes weigh their reflection by angle.
enum class FresnelModel : uint8_t {
    Tinted,     // f0 at normal incidence towards edgeTint at grazing (conductors)
    Dielectric, // the exact dielectric term of eta (coatings, specular layers)
};

struct Lobe {
    LobeKind kind = LobeKind::Lambert;
    FresnelModel fresnel = FresnelModel::Tinted;
    Color weight{1};              // multiplies the lobe's value; dielectrics: the reflected part
    Color transmission{1};        // dielectrics: multiplies the refracted part
    Color f0{0.04f};              // reflectance at normal incidence (conductors: the colour)
    Color edgeTint{1};            // conductors: reflectance at grazing incidence
    float eta = 1.5f;             // dielectrics: inside (behind the normal) over outside index
    float alphaX = 0, alphaY = 0; // GGX roughness (alpha = roughness^2)
    bool thinWalled = false;      // dielectrics: a sheet; light passes without bending
};

struct BsdfSample {
    Vec3 wi;       // world space, unit
    Color weight;  // value * |cos| / pdf
    float pdf = 0; // solid angle; for a delta lobe, the probability of choosing it
    bool delta = false;
    bool transmitted = false;
};

class Bsdf {
  public:
    static constexpr int kMaxLobes = 8;

    Bsdf() = default;
    // Both normals of unit length. The shading normal is turned to the geometric normal's side;
    // which side the ray came from is not assumed: every lobe scatters on both sides, and a
    // dielectric's wo side decides whether the ray enters (wo on the normal's side) or leaves.
    Bsdf(const Vec3& shadingNormal, const Vec3& geometricNormal);
    // As a new Bsdf of these normals, without lobes.
    void reset(const Vec3& shadingNormal, const Vec3& geometricNormal);

    // False when full or when the lobe's weights are not finite; the lobe is then dropped.
    bool add(const Lobe& lobe);
    // Lobes that a Bsdf accepted before, added as far as there is room without checking again.
    void addAccepted(const std::vector<Lobe>& lobes);
    int lobeCount() const { return count_; }
    const Lobe& lobe(int i) const { return lobes_[i].lobe; }
    void scaleAll(const Color& factor);

    // True when every lobe is a delta lobe (no light sampling helps).
    bool isDelta() const;
    // A colour for the albedo output: the diffuse and specular weights of the lobes.
    Color albedo() const;
    const Vec3& normal() const { return frame_.n; }

  private:
    friend class BsdfView;
    Frame frame_ = Frame::around(Vec3(0, 0, 1));
    Vec3 geometricNormal_{0, 0, 1};
    // Slots that are filled only as lobes are added: a Bsdf is made at every hit, and most use
    // one or two of its eight places.
    union Slot {
        Slot() {}
        Lobe lobe;
    };
    Slot lobes_[kMaxLobes];
    int count_ = 0;
};

// A Bsdf as seen from one direction: the shading-frame view of `wo` and each lobe's share of the
// samples depend on that direction alone, so a hit works them out once for its light sample and
// its next direction. The Bsdf must outlive the view.
class BsdfView {
  public:
    BsdfView(const Bsdf& bsdf, const Vec3& wo);

    // Value times |cos(wi, n)| for non-delta lobes, and the pdf of sampling wi.
    Color evaluate(const Vec3& wi, float* pdf) const;
    // Samples a direction with three uniform numbers; false when no direction results.
    bool sample(float u0, float u1, float u2, BsdfSample* out) const;

  private:
    // Both in the shading frame turned so that wo.z > 0 (the lobes' own view).
    Color evaluateLobes(const Vec3& wiLobe, float* pdf) const;
    Vec3 toLobe(Vec3 w) const {
        if (flipped_) w.z = -w.z;
        return w;
    }
    float eta(const Lobe& lobe) const { return flipped_ ? 1 / lobe.eta : lobe.eta; }

    const Bsdf& bsdf_;
    Vec3 woLobe_;
    bool flipped_ = false; // wo came from behind the shading normal: the ray leaves a dielectric
    bool grazing_ = false; // wo lies in the shading plane: nothing scatters
    float woGeometric_ = 0;
    float probabilities_[Bsdf::kMaxLobes]; // of sampling each lobe
    bool scatters_ = false;                // some lobe has a share
};

} // namespace preview

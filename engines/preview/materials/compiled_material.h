// A material as the engine keeps it after addMaterial: values copied out of the record by the
// keys of its type's table, ready to be combined with texture maps at each hit.
#pragma once
#include "engines/preview/materials/bsdf.h"
#include "engines/preview/vec3.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace preview {

// Stands for the neutral diffuse where a reference to another material could not be kept.
constexpr int32_t kNeutralMaterial = INT32_MIN;

struct TexturedColor {
    Color value{0};
    int32_t map = -1;      // a colour map that multiplies `value`
    int32_t scaleMap = -1; // a scalar map that multiplies it as well
};

struct TexturedScalar {
    float value = 0;
    int32_t map = -1; // multiplies `value`
};

// The layers that most surface types reduce to, from the top: an optional clear coat, then a
// conductor and a dielectric in the share of `metalness`; the dielectric refracts in the share
// of `transmissionWeight` and is otherwise a specular layer over a diffuse base.
struct SurfaceLayers {
    TexturedScalar coatWeight;
    TexturedColor coatColor{Color(1)}; // tints the coat's reflection
    TexturedColor coatTint{Color(1)};  // tints what lies beneath the coat
    TexturedScalar coatRoughness;
    float coatEta = 1.5f;

    TexturedScalar metalness;
    TexturedColor conductor;          // at normal incidence
    TexturedColor edge{Color(1)};     // at grazing incidence
    TexturedColor specular;           // the dielectric's reflection
    TexturedScalar transmissionWeight;
    TexturedColor transmission;       // tints refracted light
    TexturedColor diffuse;
    TexturedColor backDiffuse;        // on back faces, when `hasBack`
    bool hasBack = false;
    TexturedColor translucence;

    TexturedScalar roughness;
    bool roughnessIsGlossiness = false; // 1 - the value is the roughness
    float anisotropy = 0;               // -1..1: stretches alpha along the tangent
    float eta = 1.5f;
    bool thin = false;
};

struct EmissionLayer {
    bool present = false;
    TexturedColor color;
    TexturedScalar intensity{1};
    Color temperature{1}; // the black body's colour relative to 6500 K
    bool visible = true;  // seen by camera rays
};

enum class MaterialShape : uint8_t {
    Surface,    // SurfaceLayers alone
    Coating,    // the coat of SurfaceLayers over child 0
    Emitter,    // emission only, no scattering
    Mix,        // one child, chosen by weight
    Sided,      // child 0 on front faces, child 1 on back faces
    BlendSided, // as Sided, with `amount` of the other side's material
    Wrapper,    // child 0 with this material's normal and opacity changes
    Null,       // lets every ray through
    Neutral,    // the neutral diffuse
};

// The lobes a surface gives on its front faces and on its back faces.
struct SidedLobes {
    std::vector<Lobe> front, back;
    const std::vector<Lobe>& on(bool frontFacing) const { return frontFacing ? front : back; }
};

struct MixChild {
    int32_t material = -1;
    TexturedScalar weight;
    float mapMix = 1; // how much the weight map replaces the weight
};

struct CompiledMaterial {
    int32_t type = 0;
    MaterialShape shape = MaterialShape::Neutral;
    SurfaceLayers surface;
    EmissionLayer emission;
    std::vector<MixChild> children; // Mix: weighted; the others: their references in order
    bool normalizeMix = true;
    TexturedScalar amount; // BlendSided: the share of the other side's material

    // Changes any shape can carry.
    TexturedScalar opacity{1}; // 1 - the share of rays that pass straight on
    bool hasOpacity = false;
    int32_t bumpMap = -1;      // heights, scaled by bumpScale
    TexturedScalar bumpScale{1};
    int32_t normalMap = -1;    // tangent-space normals, x and y scaled by normalStrength
    float normalStrength = 1;

    // Surface: its lobes when they are the same at every hit on a side, so that a hit only
    // copies them.
    std::optional<SidedLobes> fixedLobes;

    // What the material and those it refers to can do, known once the set is finished, so that
    // a hit asks it without walking the references again.
    struct Reach {
        bool emissive = false, passable = false, hiddenFromCamera = false;
    } reach;
};

} // namespace preview

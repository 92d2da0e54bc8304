#include "engines/preview/materials/material_set.h"

#include "documents/materials/material_types.h"
#include "engines/preview/materials/material_compile.h"
#include "engines/preview/materials/shading_normal.h"
#include "engines/preview/materials/surface_lobes.h"

#include <map>
#include <set>

namespace preview {

namespace {

// Materials nest through references; deeper than this, a chain can only be a mistake that
// finish did not see (it was not called), and the neutral diffuse stands in.
constexpr int kMaxNesting = 16;

const char* const kReferenceWarning = "material reference to a missing material or a cycle";
const char* const kNonFiniteWarning = "material value not finite, replaced by its default";

float clamp01(float v) { return std::clamp(v, 0.0f, 1.0f); }

std::string typeName(int32_t type) {
    const TypeDescriptor* table = findMaterialType(type);
    return table && table->word ? table->word : std::to_string(type);
}

void setNeutral(const ShadingContext& at, Bsdf* bsdf) {
    bsdf->reset(at.shadingNormal, at.geometricNormal);
    Lobe lambert;
    lambert.weight = Color(0.5f);
    bsdf->add(lambert);
}

// The children's shares at a hit, and the factor that the chosen one's scattering takes: 1 when
// the weights are scaled to sum to 1, their sum when NONE lets them fall short.
struct MixShares {
    float share[16] = {};
    int count = 0;
    float sum = 0;
    float scale = 1;
};

MixShares mixShares(const CompiledMaterial& m, const ShadingContext& at, const TexMapLookup& maps) {
    MixShares shares;
    for (const MixChild& child : m.children) {
        if (shares.count == 16) break;
        float w = child.weight.value;
        if (child.weight.map >= 0) w = w + (maps.scalar(child.weight.map, at, w) - w) * child.mapMix;
        w = std::isfinite(w) ? std::max(0.0f, w) : 0.0f;
        shares.share[shares.count++] = w;
        shares.sum += w;
    }
    if (shares.sum > 0) {
        for (int i = 0; i < shares.count; ++i)
            shares.share[i] /= shares.sum;
    }
    shares.scale = !m.normalizeMix && shares.sum < 1 ? shares.sum : 1;
    return shares;
}

} // namespace

struct MaterialSet::Impl {
    TemperatureColor temperature = nullptr;
    std::map<int32_t, CompiledMaterial> materials;
    std::set<int32_t> reportedTypes;
    // After finish: the materials of ids 0 to size - 1 by index (ids are small and dense in
    // practice), and each material's reach worked out.
    std::vector<const CompiledMaterial*> byIndex;
    bool finished = false;

    const CompiledMaterial* find(int32_t id) const {
        if (id >= 0 && static_cast<size_t>(id) < byIndex.size()) return byIndex[static_cast<size_t>(id)];
        const auto it = materials.find(id);
        return it == materials.end() ? nullptr : &it->second;
    }
    CompiledMaterial::Reach reach(int32_t id) const;
    void index();

    // Builds in place: a Bsdf is large, and a copy at every level would cost more than the rest.
    void build(int32_t id, const ShadingContext& at, const TexMapLookup& maps, float u, int depth, Bsdf* out) const;
    // The same for a found material, at a hit whose shading normal it has already turned.
    void buildFound(const CompiledMaterial* m, const ShadingContext& at, const TexMapLookup& maps, float u, int depth,
                    Bsdf* out) const;
    Color emission(int32_t id, const ShadingContext& at, const TexMapLookup& maps, int depth) const;
    float passThrough(int32_t id, const ShadingContext& at, const TexMapLookup& maps, int depth) const;
    // Whether `test` holds for the material or any material it refers to.
    template <class Test> bool anyReached(int32_t id, const Test& test, int depth) const;
    void breakCycles(int32_t id, std::map<int32_t, int>& state, int* broken);
};

// ---- Scattering --------------------------------------------------------------------------------

void MaterialSet::Impl::build(int32_t id, const ShadingContext& at, const TexMapLookup& maps, float u, int depth,
                              Bsdf* out) const {
    const CompiledMaterial* m = find(id);
    if (!m || depth > kMaxNesting) {
        setNeutral(at, out);
        return;
    }
    if (m->bumpMap < 0 && m->normalMap < 0) {
        buildFound(m, at, maps, u, depth, out);
    } else {
        ShadingContext turned = at;
        turned.shadingNormal = modifiedNormal(*m, at, maps);
        buildFound(m, turned, maps, u, depth, out);
    }
}

void MaterialSet::Impl::buildFound(const CompiledMaterial* m, const ShadingContext& at, const TexMapLookup& maps,
                                   float u, int depth, Bsdf* out) const {
    const auto child = [&](size_t i) { return i < m->children.size() ? m->children[i].material : -1; };

    out->reset(at.shadingNormal, at.geometricNormal);
    switch (m->shape) {
    case MaterialShape::Surface:
        if (m->fixedLobes) out->addAccepted(m->fixedLobes->on(at.frontFacing));
        else addSurfaceLobes(m->surface, at, maps, out);
        break;
    case MaterialShape::Emitter: break;
    case MaterialShape::Null: {
        Lobe through;
        through.kind = LobeKind::Transparent;
        out->add(through);
        break;
    }
    case MaterialShape::Neutral: setNeutral(at, out); break;
    case MaterialShape::Coating: {
        const CoatAtHit coat = coatAt(m->surface, at, maps);
        build(child(0), at, maps, u, depth + 1, out);
        out->scaleAll(coat.beneath);
        if (coat.present) out->add(coat.lobe);
        break;
    }
    case MaterialShape::Wrapper: build(child(0), at, maps, u, depth + 1, out); break;
    case MaterialShape::Sided: build(child(at.frontFacing ? 0 : 1), at, maps, u, depth + 1, out); break;
    case MaterialShape::BlendSided: {
        // The other side's material shows through in the share `amount`, chosen by u.
        const float other = clamp01(evaluate(m->amount, at, maps));
        const bool useOther = u < other;
        const float rest = useOther ? u / other : (u - other) / (1 - other);
        build(child(at.frontFacing != useOther ? 0 : 1), at, maps, clamp01(rest), depth + 1, out);
        break;
    }
    case MaterialShape::Mix: {
        const MixShares shares = mixShares(*m, at, maps);
        if (!(shares.sum > 0)) break;
        float below = 0;
        int chosen = shares.count - 1;
        for (int i = 0; i < shares.count; ++i) {
            if (shares.share[i] > 0 && u < below + shares.share[i]) {
                chosen = i;
                break;
            }
            below += shares.share[i];
        }
        const float rest = shares.share[chosen] > 0 ? (u - below) / shares.share[chosen] : u;
        build(child(chosen), at, maps, std::clamp(rest, 0.0f, 0.99999994f), depth + 1, out);
        out->scaleAll(Color(shares.scale));
        break;
    }
    }
    if (m->hasOpacity) {
        const float opacity = clamp01(evaluate(m->opacity, at, maps));
        if (opacity < 1) {
            out->scaleAll(Color(opacity));
            Lobe through;
            through.kind = LobeKind::Transparent;
            through.weight = Color(1 - opacity);
            out->add(through);
        }
    }
}

// ---- Emission and pass-through -----------------------------------------------------------------

Color MaterialSet::Impl::emission(int32_t id, const ShadingContext& at, const TexMapLookup& maps, int depth) const {
    const CompiledMaterial* m = find(id);
    if (!m || depth > kMaxNesting) return Color(0);
    const auto child = [&](size_t i) { return i < m->children.size() ? m->children[i].material : -1; };
    Color out(0);
    if (m->emission.present && at.frontFacing) {
        const EmissionLayer& e = m->emission;
        out = evaluate(e.color, at, maps) * std::max(0.0f, evaluate(e.intensity, at, maps)) * e.temperature;
    }
    switch (m->shape) {
    case MaterialShape::Coating:
        out += emission(child(0), at, maps, depth + 1) * coatAt(m->surface, at, maps).beneath;
        break;
    case MaterialShape::Wrapper: out += emission(child(0), at, maps, depth + 1); break;
    case MaterialShape::Sided: out += emission(child(at.frontFacing ? 0 : 1), at, maps, depth + 1); break;
    case MaterialShape::BlendSided: {
        const float other = clamp01(evaluate(m->amount, at, maps));
        out += emission(child(at.frontFacing ? 0 : 1), at, maps, depth + 1) * (1 - other) +
               emission(child(at.frontFacing ? 1 : 0), at, maps, depth + 1) * other;
        break;
    }
    case MaterialShape::Mix: {
        const MixShares shares = mixShares(*m, at, maps);
        for (int i = 0; i < shares.count; ++i) {
            if (shares.share[i] > 0)
                out += emission(m->children[i].material, at, maps, depth + 1) * (shares.share[i] * shares.scale);
        }
        break;
    }
    case MaterialShape::Surface:
    case MaterialShape::Emitter:
    case MaterialShape::Null:
    case MaterialShape::Neutral: break;
    }
    if (m->hasOpacity) out *= clamp01(evaluate(m->opacity, at, maps));
    return isFinite(out) ? out : Color(0);
}

float MaterialSet::Impl::passThrough(int32_t id, const ShadingContext& at, const TexMapLookup& maps,
                                     int depth) const {
    const CompiledMaterial* m = find(id);
    if (!m || depth > kMaxNesting) return 0;
    const auto child = [&](size_t i) { return i < m->children.size() ? m->children[i].material : -1; };
    float pass = 0;
    switch (m->shape) {
    case MaterialShape::Null: pass = 1; break;
    case MaterialShape::Coating:
    case MaterialShape::Wrapper: pass = passThrough(child(0), at, maps, depth + 1); break;
    case MaterialShape::Sided: pass = passThrough(child(at.frontFacing ? 0 : 1), at, maps, depth + 1); break;
    case MaterialShape::BlendSided: {
        const float other = clamp01(evaluate(m->amount, at, maps));
        pass = passThrough(child(at.frontFacing ? 0 : 1), at, maps, depth + 1) * (1 - other) +
               passThrough(child(at.frontFacing ? 1 : 0), at, maps, depth + 1) * other;
        break;
    }
    case MaterialShape::Mix: {
        const MixShares shares = mixShares(*m, at, maps);
        for (int i = 0; i < shares.count; ++i) {
            if (shares.share[i] > 0)
                pass += passThrough(m->children[i].material, at, maps, depth + 1) * shares.share[i] * shares.scale;
        }
        break;
    }
    case MaterialShape::Surface:
    case MaterialShape::Emitter:
    case MaterialShape::Neutral: break;
    }
    if (m->hasOpacity) {
        const float opacity = clamp01(evaluate(m->opacity, at, maps));
        pass = 1 - opacity + opacity * pass;
    }
    return clamp01(pass);
}

template <class Test> bool MaterialSet::Impl::anyReached(int32_t id, const Test& test, int depth) const {
    const CompiledMaterial* m = find(id);
    if (!m || depth > kMaxNesting) return false;
    if (test(*m)) return true;
    for (const MixChild& child : m->children) {
        if (anyReached(child.material, test, depth + 1)) return true;
    }
    return false;
}

// ---- References --------------------------------------------------------------------------------

// Depth-first over references: a reference back to a material still on the path closes a cycle
// and is cut (0 unseen, 1 on the path, 2 done).
void MaterialSet::Impl::breakCycles(int32_t id, std::map<int32_t, int>& state, int* broken) {
    state[id] = 1;
    for (MixChild& child : materials[id].children) {
        if (!find(child.material)) continue;
        const int seen = state[child.material];
        if (seen == 1) {
            child.material = kNeutralMaterial;
            ++*broken;
        } else if (seen == 0) {
            breakCycles(child.material, state, broken);
        }
    }
    state[id] = 2;
}

// ---- The set -----------------------------------------------------------------------------------

MaterialSet::MaterialSet(TemperatureColor temperature) : impl_(std::make_unique<Impl>()) {
    impl_->temperature = temperature;
}

MaterialSet::~MaterialSet() = default;

void MaterialSet::add(const MaterialRecord& record, const WarningSink& warn) {
    CompileResult compiled = compileMaterial(record, impl_->temperature);
    if (!compiled.supported && impl_->reportedTypes.insert(record.type).second)
        warn("unsupported material type " + typeName(record.type));
    if (compiled.nonFinite) warn(kNonFiniteWarning);
    impl_->materials[record.id] = std::move(compiled.material);
}

void MaterialSet::finish(const WarningSink& warn) {
    int broken = 0;
    for (auto& [id, material] : impl_->materials) {
        for (MixChild& child : material.children) {
            // -1 is no reference at all; the shapes that need one use the neutral diffuse.
            if (child.material != -1 && child.material != kNeutralMaterial && !impl_->find(child.material)) {
                child.material = kNeutralMaterial;
                ++broken;
            }
        }
    }
    std::map<int32_t, int> state;
    for (const auto& entry : impl_->materials) {
        if (state[entry.first] == 0) impl_->breakCycles(entry.first, state, &broken);
    }
    if (broken > 0) warn(kReferenceWarning);
    impl_->index();
}

CompiledMaterial::Reach MaterialSet::Impl::reach(int32_t id) const {
    const CompiledMaterial* m = find(id);
    if (finished) return m ? m->reach : CompiledMaterial::Reach{};
    CompiledMaterial::Reach reach;
    reach.emissive = anyReached(id, [](const CompiledMaterial& c) {
        return c.emission.present && !isBlack(c.emission.color.value) && c.emission.intensity.value > 0;
    }, 0);
    reach.passable =
        anyReached(id, [](const CompiledMaterial& c) { return c.shape == MaterialShape::Null || c.hasOpacity; }, 0);
    reach.hiddenFromCamera = anyReached(
        id, [](const CompiledMaterial& c) { return c.shape == MaterialShape::Emitter && !c.emission.visible; }, 0);
    return reach;
}

void MaterialSet::Impl::index() {
    finished = false;
    for (auto& [id, material] : materials) material.reach = reach(id);
    constexpr int32_t kLargestIndexed = 1 << 20;
    byIndex.clear();
    for (const auto& [id, material] : materials)
        if (id >= 0 && id < kLargestIndexed && static_cast<size_t>(id) >= byIndex.size())
            byIndex.resize(static_cast<size_t>(id) + 1, nullptr);
    for (const auto& [id, material] : materials)
        if (id >= 0 && static_cast<size_t>(id) < byIndex.size()) byIndex[static_cast<size_t>(id)] = &material;
    finished = true;
}

Bsdf MaterialSet::bsdfAt(int32_t id, const ShadingContext& at, const TexMapLookup& maps, float u) const {
    Bsdf bsdf;
    impl_->build(id, at, maps, u, 0, &bsdf);
    return bsdf;
}

Color MaterialSet::emission(int32_t id, const ShadingContext& at, const TexMapLookup& maps) const {
    return impl_->emission(id, at, maps, 0);
}

bool MaterialSet::isEmissive(int32_t id) const { return impl_->reach(id).emissive; }

bool MaterialSet::isCameraVisible(int32_t id) const { return !impl_->reach(id).hiddenFromCamera; }

bool MaterialSet::mayPassRays(int32_t id) const { return impl_->reach(id).passable; }

float MaterialSet::passThrough(int32_t id, const ShadingContext& at, const TexMapLookup& maps) const {
    return impl_->passThrough(id, at, maps, 0);
}

} // namespace preview

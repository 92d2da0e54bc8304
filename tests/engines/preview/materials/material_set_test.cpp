// Material records written through their tables' keys compile to the lobes their keys describe;
// what the set can't render or can't trust is reported once and replaced.
#include "engines/preview/materials/material_set.h"

#include "documents/materials/material_types.h"
#include "engines/preview/record_view.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace preview {
namespace {

// A record as a document read would leave it: references -1, curves switched off, the rest 0.
// Values are then written at the offsets that the type's table gives for each key.
class RecordWriter {
  public:
    RecordWriter(int32_t type, int32_t id) {
        std::memset(&record_, 0, sizeof record_);
        record_.type = type;
        record_.id = id;
        const TypeDescriptor* table = findMaterialType(type);
        for (size_t i = 0; table && i < table->fieldCount; ++i) {
            const FieldDescriptor& row = table->fields[i];
            if (row.kind == FieldKind::TexMapRef || row.kind == FieldKind::MaterialRef) put(row.offset, int32_t(-1));
            if (row.kind == FieldKind::Spline) {
                for (uint32_t s = 0; s < row.segments; ++s)
                    put(row.offset + s * sizeof(SplineSegment), SplineSegment{1, 0, 0, 0, 0, 0, 0, 0});
            }
            if (row.kind == FieldKind::ColorSpline) {
                for (uint32_t s = 0; s < kColorSplineSegments; ++s)
                    put(row.offset + s * sizeof(ColorSplineSegment), ColorSplineSegment{1, 0, {}, {}, {}, {}, {}, {}});
            }
        }
    }
    RecordWriter& real(const char* key, float v) { return put(offset(key, FieldKind::Float), v); }
    RecordWriter& integer(const char* key, int32_t v) { return put(offset(key, FieldKind::Int), v); }
    RecordWriter& flag(const char* key, bool v) { return put(offset(key, FieldKind::Bool), uint8_t(v)); }
    RecordWriter& color(const char* key, Color c) {
        return put(offset(key, FieldKind::Color), ColorRGB{c.x, c.y, c.z});
    }
    RecordWriter& map(const char* key, int32_t id) { return put(offset(key, FieldKind::TexMapRef), id); }
    RecordWriter& material(const char* key, int32_t id) { return put(offset(key, FieldKind::MaterialRef), id); }
    RecordWriter& curve(const char* key, float v) {
        return put(offset(key, FieldKind::Spline), SplineSegment{0, 0, 0, 1, v, v, v, v});
    }
    RecordWriter& colorCurve(const char* key, Color c) {
        ColorSplineSegment s{};
        s.ts = 0;
        s.te = 1;
        for (float* v : {s.vs, s.v1, s.v2, s.ve}) {
            v[0] = c.x;
            v[1] = c.y;
            v[2] = c.z;
        }
        return put(offset(key, FieldKind::ColorSpline), s);
    }
    // MIX: its children, each entry laid out as the table's rows for a child say.
    RecordWriter& mixChildren(const std::vector<std::pair<int32_t, float>>& children) {
        integer("NumChildren", int32_t(children.size()));
        const uint32_t list = offset("Child", FieldKind::Custom);
        for (size_t i = 0; i < children.size(); ++i) {
            put(list + uint32_t(i) * 16, children[i].first);
            put(list + uint32_t(i) * 16 + 4, children[i].second);
            put(list + uint32_t(i) * 16 + 8, int32_t(-1));
            put(list + uint32_t(i) * 16 + 12, 1.0f);
        }
        return *this;
    }
    const MaterialRecord& record() const { return record_; }

  private:
    uint32_t offset(const char* key, FieldKind kind) {
        const FieldDescriptor* row = RecordView::material(record_).field(key);
        if (row && row->kind == kind) return row->offset;
        ADD_FAILURE() << "no " << key;
        return offsetof(MaterialRecord, Name); // harmless bytes

    }
    template <class T> RecordWriter& put(uint32_t at, const T& value) {
        std::memcpy(reinterpret_cast<uint8_t*>(&record_) + at, &value, sizeof value);
        return *this;
    }
    MaterialRecord record_;
};

// Maps by id: colour maps give their colour, scalar maps their value (or u when asked to be a
// slope), normal maps one fixed normal.
class FakeMaps final : public TexMapLookup {
  public:
    std::map<int32_t, Color> colors;
    std::map<int32_t, float> scalars;
    std::map<int32_t, float> slopes; // scalar = slope * u
    Vec3 tangentNormal{0, 0, 1};

    Color color(int32_t id, const ShadingContext&, Color fallback) const override {
        const auto it = colors.find(id);
        return it == colors.end() ? fallback : it->second;
    }
    float scalar(int32_t id, const ShadingContext& at, float fallback) const override {
        if (const auto s = slopes.find(id); s != slopes.end()) return s->second * at.uv[0][0];
        const auto it = scalars.find(id);
        return it == scalars.end() ? fallback : it->second;
    }
    Vec3 normal(int32_t, const ShadingContext&) const override { return tangentNormal; }
};

ShadingContext hitFacingUp(bool front = true) {
    ShadingContext at;
    at.geometricNormal = at.shadingNormal = Vec3(0, 0, 1);
    at.dpdu = Vec3(1, 0, 0);
    at.dpdv = Vec3(0, 1, 0);
    at.wo = front ? normalize(Vec3(0.3f, 0, 1)) : normalize(Vec3(0.3f, 0, -1));
    at.frontFacing = front;
    return at;
}

struct Fixture {
    MaterialSet set{[](float kelvin) { return kelvin < 6500 ? Color(1, 0.5f, 0.25f) : Color(1); }};
    std::vector<std::string> warnings;
    WarningSink warn = [this](const std::string& kind) { warnings.push_back(kind); };
    FakeMaps maps;

    void add(const RecordWriter& w) { set.add(w.record(), warn); }
    int count(const std::string& kind) const { return int(std::count(warnings.begin(), warnings.end(), kind)); }
};

void expectColor(const Color& actual, const Color& expected, float tolerance = 1e-5f) {
    for (int k = 0; k < 3; ++k)
        EXPECT_NEAR(actual[k], expected[k], tolerance) << "channel " << k;
}

constexpr int32_t kDiffuseType = 7, kMixType = 11, kCutoutType = 14;

TEST(MaterialSet, RecordsCompileToTheLobesTheirKeysGive) {
    struct Case {
        const char* name;
        RecordWriter record;
        LobeKind kind;
        Color weight;
        float alpha; // of the first lobe
    };
    Case cases[] = {
        {"diffuse colour", RecordWriter(kDiffuseType, 1).color("FrontColor", {0.2f, 0.4f, 0.6f}), LobeKind::Lambert,
         {0.2f, 0.4f, 0.6f}, 0},
        {"diffuse colour times its map", RecordWriter(kDiffuseType, 1).color("FrontColor", Color(0.8f)).map("FrontMap", 3),
         LobeKind::Lambert, {0.4f, 0.2f, 0.8f}, 0},
        {"rough conductor", RecordWriter(20, 1).color("Reflection/ReflectionColor", Color(0.9f)).real("Reflection/ReflectionWeight", 1)
             .color("Roughness/RoughnessVector", {0.5f, 0, 0}), LobeKind::GgxConductor, Color(1), 0.25f},
        {"smooth conductor is a mirror", RecordWriter(20, 1).color("Reflection/ReflectionColor", Color(0.9f))
             .real("Reflection/ReflectionWeight", 1), LobeKind::Mirror, Color(1), 0},
        {"ideal glass", RecordWriter(13, 1).color("Reflection/ReflectionColor", Color(1)).real("Reflection/ReflectionWeight", 1)
             .color("Transmission/TransmissionColor", Color(1)).real("Transmission/TransmissionValue", 1)
             .real("IOR/IOR_Value", 1.33f), LobeKind::Dielectric, Color(1), 0},
        {"null", RecordWriter(27, 1), LobeKind::Transparent, Color(1), 0},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(c.name);
        Fixture f;
        f.maps.colors[3] = {0.5f, 0.25f, 1};
        f.add(c.record);
        f.set.finish(f.warn);
        const Bsdf bsdf = f.set.bsdfAt(1, hitFacingUp(), f.maps, 0.5f);
        ASSERT_GE(bsdf.lobeCount(), 1);
        EXPECT_EQ(bsdf.lobe(0).kind, c.kind);
        expectColor(bsdf.lobe(0).weight, c.weight);
        EXPECT_NEAR(bsdf.lobe(0).alphaX, c.alpha, 1e-5f);
        EXPECT_TRUE(f.warnings.empty());
    }
}

TEST(MaterialSet, KeysReachTheLobesTheyDescribe) {
    Fixture f;
    f.add(RecordWriter(20, 1).color("Reflection/ReflectionColor", {0.9f, 0.6f, 0.3f}).real("Reflection/ReflectionWeight", 1)
              .color("Roughness/RoughnessVector", {0.3f, 0, 0}));
    f.add(RecordWriter(13, 2).color("Reflection/ReflectionColor", Color(1)).real("Reflection/ReflectionWeight", 1)
              .real("IOR/IOR_Value", 1.33f).flag("Thin", true));
    f.add(RecordWriter(1, 3).colorCurve("Base/BaseColor", {0.7f, 0.5f, 0.1f}).curve("Reflection/ReflectionMetalness", 1)
              .curve("Reflection/ReflectionRoughness", 0.5f));
    f.set.finish(f.warn);
    const Bsdf conductor = f.set.bsdfAt(1, hitFacingUp(), f.maps, 0.5f);
    expectColor(conductor.lobe(0).f0, {0.9f, 0.6f, 0.3f});
    EXPECT_NEAR(conductor.lobe(0).alphaY, 0.09f, 1e-5f);
    const Bsdf glass = f.set.bsdfAt(2, hitFacingUp(), f.maps, 0.5f);
    EXPECT_FLOAT_EQ(glass.lobe(0).eta, 1.33f);
    EXPECT_TRUE(glass.lobe(0).thinWalled);
    // A metal takes its colour from the base.
    const Bsdf metal = f.set.bsdfAt(3, hitFacingUp(), f.maps, 0.5f);
    ASSERT_EQ(metal.lobeCount(), 1);
    EXPECT_EQ(metal.lobe(0).kind, LobeKind::GgxConductor);
    expectColor(metal.lobe(0).f0, {0.7f, 0.5f, 0.1f});
}

TEST(MaterialSet, MixChoosesByWeight) {
    Fixture f;
    f.add(RecordWriter(kDiffuseType, 1).color("FrontColor", {1, 0, 0}));
    f.add(RecordWriter(kDiffuseType, 2).color("FrontColor", {0, 0, 1}));
    f.add(RecordWriter(kMixType, 3).mixChildren({{1, 1.0f}, {2, 3.0f}}));
    f.set.finish(f.warn);
    int red = 0;
    const int n = 1000;
    for (int i = 0; i < n; ++i) {
        const Bsdf bsdf = f.set.bsdfAt(3, hitFacingUp(), f.maps, (i + 0.5f) / n);
        ASSERT_EQ(bsdf.lobeCount(), 1);
        if (bsdf.lobe(0).weight.x > 0) ++red;
    }
    EXPECT_EQ(red, 250);
    EXPECT_TRUE(f.warnings.empty());
}

TEST(MaterialSet, CutoutLetsRaysThroughByItsMask) {
    struct Case {
        const char* name;
        RecordWriter record;
        float pass;
    } cases[] = {
        {"mask value", RecordWriter(kCutoutType, 2).material("Material", 1).real("MaskValue", 0.3f), 0.7f},
        {"mask map", RecordWriter(kCutoutType, 2).material("Material", 1).real("MaskValue", 0.3f).map("MaskMap", 5), 0.2f},
        {"opaque", RecordWriter(kCutoutType, 2).material("Material", 1).real("MaskValue", 1), 0},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(c.name);
        Fixture f;
        f.maps.scalars[5] = 0.8f;
        f.add(RecordWriter(kDiffuseType, 1).color("FrontColor", Color(0.5f)));
        f.add(c.record);
        f.set.finish(f.warn);
        EXPECT_TRUE(f.set.mayPassRays(2));
        EXPECT_FALSE(f.set.mayPassRays(1));
        EXPECT_NEAR(f.set.passThrough(2, hitFacingUp(), f.maps), c.pass, 1e-6f);
        // The path sees the same share as a straight-through lobe beside the scaled material.
        const Bsdf bsdf = f.set.bsdfAt(2, hitFacingUp(), f.maps, 0.5f);
        float through = 0;
        for (int i = 0; i < bsdf.lobeCount(); ++i) {
            if (bsdf.lobe(i).kind == LobeKind::Transparent) through += bsdf.lobe(i).weight.x;
            else EXPECT_NEAR(bsdf.lobe(i).weight.x, 0.5f * (1 - c.pass), 1e-6f);
        }
        EXPECT_NEAR(through, c.pass, 1e-6f);
    }
}

TEST(MaterialSet, EmitterEmitsOnItsFrontByItsKeys) {
    Fixture f;
    f.add(RecordWriter(5, 1).color("EmissionColor", {1, 0.5f, 1}).real("IntensityValue", 4).real("KelvinValue", 3000)
              .flag("Visible", false));
    f.add(RecordWriter(kDiffuseType, 2).color("FrontColor", Color(0.5f)));
    f.set.finish(f.warn);
    EXPECT_TRUE(f.set.isEmissive(1));
    EXPECT_FALSE(f.set.isEmissive(2));
    EXPECT_FALSE(f.set.isCameraVisible(1));
    expectColor(f.set.emission(1, hitFacingUp(), f.maps), {4, 1, 1});
    expectColor(f.set.emission(1, hitFacingUp(false), f.maps), Color(0));
    EXPECT_EQ(f.set.bsdfAt(1, hitFacingUp(), f.maps, 0.5f).lobeCount(), 0);
}

TEST(MaterialSet, SidesAndNormalsFollowTheirKeys) {
    Fixture f;
    f.add(RecordWriter(kDiffuseType, 1).color("FrontColor", {1, 0, 0}));
    f.add(RecordWriter(kDiffuseType, 2).color("FrontColor", {0, 1, 0}).color("BackColor", {0, 1, 0}));
    f.add(RecordWriter(16, 3).material("FrontMaterial", 1).material("BackMaterial", 2));
    f.add(RecordWriter(10, 4).material("Material", 1).map("BumpMap", 6).real("BumpHeightValue", 1));
    f.add(RecordWriter(15, 5).material("Material", 1).map("NormalMap", 7).real("ScaleValue", 1));
    f.maps.slopes[6] = 0.5f;                   // height rises along u
    f.maps.tangentNormal = Vec3(0.6f, 0, 0.8f); // leans towards +u
    f.set.finish(f.warn);
    EXPECT_GT(f.set.bsdfAt(3, hitFacingUp(true), f.maps, 0.5f).lobe(0).weight.x, 0);
    EXPECT_GT(f.set.bsdfAt(3, hitFacingUp(false), f.maps, 0.5f).lobe(0).weight.y, 0);
    // A height h = 0.5 u tilts the normal to (-0.5, 0, 1), normalised.
    const Vec3 bumped = f.set.bsdfAt(4, hitFacingUp(), f.maps, 0.5f).normal();
    EXPECT_NEAR(bumped.x, -0.5f / std::sqrt(1.25f), 1e-3f);
    EXPECT_NEAR(bumped.z, 1 / std::sqrt(1.25f), 1e-3f);
    const Vec3 mapped = f.set.bsdfAt(5, hitFacingUp(), f.maps, 0.5f).normal();
    EXPECT_NEAR(mapped.x, 0.6f, 1e-5f);
    EXPECT_NEAR(mapped.z, 0.8f, 1e-5f);
}

TEST(MaterialSet, UnsupportedTypesWarnOncePerType) {
    Fixture f;
    f.add(RecordWriter(23, 1)); // subsurface
    f.add(RecordWriter(23, 2));
    f.add(RecordWriter(9, 3)); // a number without a table
    f.add(RecordWriter(24, 4));
    f.set.finish(f.warn);
    EXPECT_EQ(f.count("unsupported material type SSS"), 1);
    EXPECT_EQ(f.count("unsupported material type 9"), 1);
    EXPECT_EQ(f.count("unsupported material type HAIR"), 1);
    EXPECT_EQ(f.warnings.size(), 3u);
    const Bsdf neutral = f.set.bsdfAt(2, hitFacingUp(), f.maps, 0.5f);
    ASSERT_EQ(neutral.lobeCount(), 1);
    expectColor(neutral.lobe(0).weight, Color(0.5f));
}

TEST(MaterialSet, BrokenReferencesBecomeNeutralDiffuse) {
    struct Case {
        const char* name;
        std::vector<RecordWriter> records;
    } cases[] = {
        {"mix cycle", {RecordWriter(kMixType, 1).mixChildren({{2, 1}}), RecordWriter(kMixType, 2).mixChildren({{1, 1}})}},
        {"self", {RecordWriter(16, 1).material("FrontMaterial", 1).material("BackMaterial", 1)}},
        {"missing", {RecordWriter(10, 1).material("Material", 42)}},
        {"bump cycle through two sides", {RecordWriter(10, 1).material("Material", 2),
                                          RecordWriter(16, 2).material("FrontMaterial", 1).material("BackMaterial", 1)}},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(c.name);
        Fixture f;
        for (const RecordWriter& r : c.records)
            f.add(r);
        f.set.finish(f.warn);
        EXPECT_EQ(f.count("material reference to a missing material or a cycle"), 1);
        EXPECT_EQ(f.warnings.size(), 1u);
        const Bsdf bsdf = f.set.bsdfAt(1, hitFacingUp(), f.maps, 0.5f);
        ASSERT_EQ(bsdf.lobeCount(), 1);
        expectColor(bsdf.lobe(0).weight, Color(0.5f));
        EXPECT_FALSE(f.set.isEmissive(1));
        EXPECT_FALSE(f.set.mayPassRays(1));
    }
}

// Without finish, the nesting limit alone must end the walk round a cycle.
TEST(MaterialSet, CycleWithoutFinishEnds) {
    Fixture f;
    f.add(RecordWriter(kMixType, 1).mixChildren({{2, 1}}));
    f.add(RecordWriter(kMixType, 2).mixChildren({{1, 1}}));
    EXPECT_EQ(f.set.bsdfAt(1, hitFacingUp(), f.maps, 0.5f).lobeCount(), 1);
    EXPECT_FALSE(f.set.isEmissive(1));
    EXPECT_EQ(f.set.passThrough(1, hitFacingUp(), f.maps), 0);
}

TEST(MaterialSet, NonFiniteValuesAreReplaced) {
    Fixture f;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    f.add(RecordWriter(kDiffuseType, 1).color("FrontColor", {nan, 0.5f, std::numeric_limits<float>::infinity()}));
    f.add(RecordWriter(20, 2).color("Reflection/ReflectionColor", Color(0.9f)).real("Reflection/ReflectionWeight", nan));
    f.set.finish(f.warn);
    EXPECT_EQ(f.count("material value not finite, replaced by its default"), 2);
    for (int32_t id : {1, 2}) {
        const Bsdf bsdf = f.set.bsdfAt(id, hitFacingUp(), f.maps, 0.5f);
        ASSERT_GE(bsdf.lobeCount(), 1);
        EXPECT_TRUE(isFinite(bsdf.lobe(0).weight) && isFinite(bsdf.lobe(0).f0));
        float pdf;
        EXPECT_TRUE(isFinite(BsdfView(bsdf, hitFacingUp().wo).evaluate(Vec3(0, 0.6f, 0.8f), &pdf)));
    }
}

} // namespace
} // namespace preview

// The registry of one kind of asset on its own: how adopted and created nodes meet, how ids go
// on, and what a name matches.
#include "client/asset_registry.h"
#include "client/registry.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace {

template <class Kind>
typename Kind::Entry* adoptable(const char16_t* name, int32_t id) {
    auto* entry = Registry<Kind>::newEntry();
    copyBounded(Kind::nameField(*entry), kNameChars, name);
    Kind::setId(*entry, id);
    return entry;
}

// Adopts and, where the node is not kept, gives it back as the scene load does.
template <class Kind>
Adoption adopt(Registry<Kind>& registry, const char16_t* name, int32_t id) {
    auto* entry = adoptable<Kind>(name, id);
    const Adoption adoption = registry.adopt(entry);
    if (adoption == Adoption::Known || adoption == Adoption::Clash) Registry<Kind>::discard(entry);
    return adoption;
}

TEST(Registry, AdoptionTellsTheSameRecordFromAClash) {
    struct Step {
        const char16_t* name;
        int32_t id;
        Adoption expected;
    } steps[] = {
        {u"Wood", 5, Adoption::Added},
        {u"Wood", 5, Adoption::Known},
        {u"Wood", 6, Adoption::Clash},
        {u"WOOD", 6, Adoption::Added}, // another case hashes apart: another record
        {u"Stone", 6, Adoption::Added},
        {u"Glass", -1, Adoption::Added},
        {u"Glass", 7, Adoption::Added}, // known under -1, the answer of a failed look-up
        {u"", 8, Adoption::Added},      // empty names are never looked up
        {u"", 8, Adoption::Added},
    };
    Registry<TexMapAssets> registry;
    for (const Step& s : steps) {
        EXPECT_EQ(adopt(registry, s.name, s.id), s.expected) << std::string(s.name, s.name + 5) << " " << s.id;
    }
    ASSERT_NE(registry.find(u"Stone"), nullptr);
    EXPECT_EQ(TexMapAssets::id(*registry.find(u"Stone")), 6);
    EXPECT_EQ(registry.withId(5), registry.find(u"Wood"));
    EXPECT_EQ(registry.withId(9), nullptr);
    EXPECT_EQ(registry.find(u"Woo"), nullptr);
}

TEST(Registry, CreatedIdsFollowTheAdoptedOnesAndWrapAtTheLimit) {
    struct Case {
        int32_t adopted;
        int32_t firstCreated;
    } cases[] = {{-5, 0}, {0, 1}, {41, 42}, {INT32_MAX, INT32_MIN}};
    for (const Case& c : cases) {
        Registry<MaterialAssets> registry;
        ASSERT_EQ(adopt(registry, u"adopted", c.adopted), Adoption::Added);
        EXPECT_EQ(registry.enter(registry.create(), u"first"), c.firstCreated) << c.adopted;
        EXPECT_EQ(registry.enter(registry.create(), u"second"),
                  static_cast<int32_t>(static_cast<uint32_t>(c.firstCreated) + 1u));
        EXPECT_EQ(MaterialAssets::id(*registry.find(u"first")), c.firstCreated);
        // A released registry hands out ids from below anything a file gives.
        registry.release();
        EXPECT_EQ(registry.enter(registry.create(), u"later"), -1);
    }
}

TEST(Registry, ALongNameIsFoundByItsKeyOnlyWhereTheKindKeysTheNameAsAsked) {
    const std::u16string longName(kNameChars + 10, u'n');
    const std::u16string stored(kNameChars - 1, u'n');

    Registry<TextureAssets> textures;
    const int32_t texture = textures.enter(textures.create(), longName.c_str());
    // The stored copy is shorter than the name asked, so neither finds the node by comparison.
    EXPECT_EQ(textures.find(longName.c_str()), nullptr);
    EXPECT_EQ(textures.find(stored.c_str()), nullptr);
    EXPECT_EQ(textures.withId(texture)->file.id, -1); // a created texture keeps -1 in its record

    Registry<TexMapAssets> texmaps;
    texmaps.enter(texmaps.create(), longName.c_str());
    EXPECT_NE(texmaps.find(stored.c_str()), nullptr);
}

} // namespace

// The reference walk: the writer asks the name interface for every reference of the record, one
// call per reference row, in the order of the type's table; a read asks back in the same order.
#include "documents/material_document.h"
#include "documents/materials/material_types.h"
#include "tests/material_families_b/families_b_test_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace families_b_test;

namespace {

std::u16string nameOfRow(size_t index) {
    std::u16string name = u"Asset";
    for (char c : std::to_string(index))
        name += static_cast<char16_t>(c);
    return name;
}

// A record whose references carry ids 5000 on in the order of the list, all else zero.
std::unique_ptr<MaterialRecord> referencingRecord(const TypeReferences& refs, RecordingNames* names) {
    auto record = recordOf(refs.type, 0);
    for (size_t i = 0; i < refs.count; ++i) {
        putAt<int32_t>(record.get(), refs.rows[i].offset, 5000 + static_cast<int32_t>(i));
        names->define(5000 + static_cast<int32_t>(i), nameOfRow(i));
    }
    return record;
}

std::vector<std::string> expectedNameCalls(const TypeReferences& refs) {
    std::vector<std::string> calls;
    for (size_t i = 0; i < refs.count; ++i) {
        calls.push_back(std::string(refs.rows[i].kind == Ref::Map ? "TexMapName " : "MaterialName ") +
                        std::to_string(5000 + i));
    }
    return calls;
}

TEST(ReferenceWalk, NameCallsFollowTheTableOrder) {
    for (const TypeReferences& refs : referencesByType()) {
        SCOPED_TRACE(refs.type);
        RecordingNames names;
        const auto record = referencingRecord(refs, &names);
        WalkMaterialReferences(record.get(), &names);
        EXPECT_EQ(names.calls, expectedNameCalls(refs));
        // The same calls when the document is kept for a look.
        RecordingNames built;
        referencingRecord(refs, &built);
        pugi::xml_document doc;
        ASSERT_TRUE(BuildMaterialDocument(record.get(), &built, &doc));
        EXPECT_EQ(built.calls, expectedNameCalls(refs));
    }
}

// Finds the element that a writer put under the key: the sections of the path as a reader
// finds them, then every element of the last name, since a key may stand twice.
std::vector<pugi::xml_node> elementsAt(pugi::xml_node section, const std::string& key) {
    size_t begin = 0;
    for (size_t slash = key.find('/'); slash != std::string::npos; slash = key.find('/', begin)) {
        section = section.child(key.substr(begin, slash - begin).c_str());
        begin = slash + 1;
    }
    const std::string leaf = key.substr(begin);
    std::vector<pugi::xml_node> found;
    for (pugi::xml_node child : section.children(leaf.c_str()))
        found.push_back(child);
    return found;
}

TEST(ReferenceWalk, EachReferenceIsWrittenUnderItsKeyByName) {
    for (const TypeReferences& refs : referencesByType()) {
        SCOPED_TRACE(refs.type);
        RecordingNames names;
        const auto record = referencingRecord(refs, &names);
        pugi::xml_document doc;
        ASSERT_TRUE(BuildMaterialDocument(record.get(), &names, &doc));
        const pugi::xml_node section = doc.child("TaviMaterial").child("SpecificParameters");
        for (size_t i = 0; i < refs.count; ++i) {
            const std::string expected = RecordingNames::narrow(nameOfRow(i).c_str());
            bool written = false;
            for (const pugi::xml_node& element : elementsAt(section, refs.rows[i].key))
                written = written || expected == element.attribute("name").value();
            EXPECT_TRUE(written) << refs.rows[i].key;
        }
    }
}

// A key that stands twice is read from its first element, for both rows; the hair material's
// reference follows an empty section of the same name and so is read as no name at all.
std::string nameReadFor(const TypeReferences& refs, size_t index) {
    if (refs.type == 24 && std::string(refs.rows[index].key) == "Material") return "";
    for (size_t earlier = 0; earlier < index; ++earlier) {
        if (std::string(refs.rows[earlier].key) == refs.rows[index].key)
            return RecordingNames::narrow(nameOfRow(earlier).c_str());
    }
    return RecordingNames::narrow(nameOfRow(index).c_str());
}

TEST(ReferenceWalk, AReadAsksForTheNamesInTheSameOrder) {
    for (const TypeReferences& refs : referencesByType()) {
        SCOPED_TRACE(refs.type);
        RecordingNames names;
        const auto record = referencingRecord(refs, &names);
        const std::string text = writtenDocument(*findMaterialType(refs.type), record.get(), &names);
        names.calls.clear();
        auto back = recordOf(refs.type, 0);
        ASSERT_TRUE(readDocumentText(text, back.get(), &names));
        std::vector<std::string> expected;
        for (size_t i = 0; i < refs.count; ++i) {
            expected.push_back((refs.rows[i].kind == Ref::Map ? "TexMapId " : "MaterialId ") +
                               nameReadFor(refs, i));
        }
        EXPECT_EQ(names.calls, expected);
    }
}

TEST(ReferenceWalk, UnsetReferencesAreAskedForAsWell) {
    for (const TypeReferences& refs : referencesByType()) {
        RecordingNames names;
        auto record = recordOf(refs.type, 0);
        for (size_t i = 0; i < refs.count; ++i)
            putAt<int32_t>(record.get(), refs.rows[i].offset, -1);
        WalkMaterialReferences(record.get(), &names);
        ASSERT_EQ(names.calls.size(), refs.count) << refs.type;
        for (size_t i = 0; i < refs.count; ++i)
            EXPECT_EQ(names.calls[i],
                      std::string(refs.rows[i].kind == Ref::Map ? "TexMapName" : "MaterialName") + " -1");
    }
}

} // namespace

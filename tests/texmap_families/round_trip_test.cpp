// Every type through its document and back: a record with a distinct value in every field is
// walked, its document read back into a zeroed record, and the two compared byte by byte. The
// same records show the order of the walk's and the reader's name calls, the elements of the
// document, and what a document without keys leaves behind.
#include "documents/texmap_document.h"
#include "tests/texmap_families/texmap_rows.h"

#include <gtest/gtest.h>

namespace texmap_test {
namespace {

std::vector<std::string> childNames(const pugi::xml_node& node) {
    std::vector<std::string> names;
    for (const pugi::xml_node& child : node.children())
        names.push_back(child.name());
    return names;
}

// The reader asks for each name that the walk gave, in the same order.
std::vector<std::string> asReadCalls(const std::vector<std::string>& walk) {
    std::vector<std::string> calls;
    for (const std::string& call : walk) {
        const size_t space = call.find(' ');
        const std::string operation = call.substr(0, space);
        const int32_t id = space == std::string::npos ? -1 : std::stoi(call.substr(space + 1));
        if (operation == "TexMapName") calls.push_back("TexMapId " + mapName(id));
        if (operation == "TextureName") calls.push_back("TextureId " + textureName(id));
        if (operation == "ModelName") calls.push_back("ModelId ");
    }
    return calls;
}

TEST(RoundTrip, EveryTypeComesBackFromItsOwnDocument) {
    for (const Layout& layout : allLayouts()) {
        SCOPED_TRACE(layout.word);
        TestNames names;
        auto original = filledRecord(layout, &names);
        pugi::xml_document doc;
        buildDocument(original.get(), &names, &doc);
        if (layout.prepareReadBack) layout.prepareReadBack(doc);
        auto back = zeroedRecord(layout.type);
        EXPECT_TRUE(readDocument(doc, back.get(), &names));

        if (layout.afterRoundTrip) layout.afterRoundTrip(bytesOf(original.get()));
        for (const Row& row : layout.rows) {
            if (!row.written) std::memset(bytesOf(original.get()) + row.offset, 0, 4);
        }
        EXPECT_EQ(firstDifference(layout, back.get(), original.get()), "");
    }
}

TEST(RoundTrip, TheWalkVisitsReferencesInTableOrderAndTheReaderFollows) {
    for (const Layout& layout : allLayouts()) {
        SCOPED_TRACE(layout.word);
        TestNames names;
        auto original = filledRecord(layout, &names);
        names.calls.clear();
        WalkTexMapReferences(original.get(), &names);
        EXPECT_EQ(names.calls, expectedWalk(layout));

        pugi::xml_document doc;
        buildDocument(original.get(), &names, &doc);
        if (layout.prepareReadBack) layout.prepareReadBack(doc);
        names.calls.clear();
        auto back = zeroedRecord(layout.type);
        readDocument(doc, back.get(), &names);
        EXPECT_EQ(names.calls, asReadCalls(expectedWalk(layout)));
    }
}

TEST(RoundTrip, TheDocumentHoldsTheKeysInTableOrder) {
    for (const Layout& layout : allLayouts()) {
        SCOPED_TRACE(layout.word);
        TestNames names;
        auto original = filledRecord(layout, &names);
        pugi::xml_document doc;
        buildDocument(original.get(), &names, &doc);
        const pugi::xml_node root = doc.child("TaviTexMap");
        EXPECT_STREQ(root.attribute("type").value(), layout.word.c_str());
        const std::vector<std::string> shape =
            layout.mapped ? std::vector<std::string>{"Common", "CoordGen", "ColorOutput", "SpecificParameters"}
                          : std::vector<std::string>{"Common", "SpecificParameters"};
        EXPECT_EQ(childNames(root), shape);

        std::vector<std::string> expected = layout.elements;
        if (expected.empty()) {
            for (const Row& row : layout.rows) {
                const std::string top = row.key.substr(0, row.key.find('/'));
                if (row.written && (expected.empty() || expected.back() != top)) expected.push_back(top);
            }
        }
        EXPECT_EQ(childNames(root.child("SpecificParameters")), expected);
    }
}

TEST(MissingKeys, ReferencesBecomeNoneStringsEmptySplinesUnusedAndTheRestStays) {
    for (const Layout& layout : allLayouts()) {
        SCOPED_TRACE(layout.word);
        TestNames names;
        auto record = filledRecord(layout, &names);
        auto expected = zeroedRecord(layout.type);
        std::memcpy(expected.get(), record.get(), sizeof(TexMapRecord));
        applyMissingKeys(layout, expected.get());
        const bool found = readDocumentText(documentWith(layout.word, ""), record.get(), &names);
        EXPECT_EQ(found, layout.type != 1 && layout.type != 2) << "only the image maps report a missing texture";
        EXPECT_EQ(firstDifference(layout, record.get(), expected.get()), "");
    }
}

TEST(MissingKeys, WithoutSpecificParametersTheSameHolds) {
    for (const Layout& layout : allLayouts()) {
        SCOPED_TRACE(layout.word);
        TestNames names;
        auto record = filledRecord(layout, &names);
        auto expected = zeroedRecord(layout.type);
        std::memcpy(expected.get(), record.get(), sizeof(TexMapRecord));
        applyMissingKeys(layout, expected.get());
        readDocumentText("<TaviTexMap type='" + layout.word + "'><Common><Name value='Probe'/></Common></TaviTexMap>",
                         record.get(), &names);
        EXPECT_EQ(firstDifference(layout, record.get(), expected.get()), "");
    }
}

} // namespace
} // namespace texmap_test

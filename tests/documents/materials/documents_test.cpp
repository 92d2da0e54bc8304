// Every registered table through the real dispatch, driven by its own rows: the reference walk,
// the written document read back, its shape, keys missing, documents that can't be read, and each
// key on its own.
#include "documents/material_document.h"
#include "documents/materials/material_types.h"
#include "documents/xml_value_codec.h"
#include "tests/documents/materials/material_test_support.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

namespace material_test {
namespace {

using K = FieldKind;

bool isReference(FieldKind kind) {
    return kind == K::TexMapRef || kind == K::MaterialRef;
}

// The name calls of the walk over the record, in table order.
std::vector<std::string> walkCalls(const TypeDescriptor& table, const MaterialRecord* record) {
    std::vector<std::string> calls;
    for (size_t i = 0; i < table.fieldCount; ++i) {
        const FieldDescriptor& field = table.fields[i];
        if (isReference(field.kind)) {
            calls.push_back((field.kind == K::TexMapRef ? "TexMapName " : "MaterialName ") +
                            std::to_string(load<int32_t>(record, field.offset)));
        }
        if (field.kind == K::Custom) listHooks(table.type).walk(record, calls);
    }
    return calls;
}

TEST(RoundTrip, TheWalkAsksForEveryReferenceAndTheWrittenDocumentReadsBack) {
    for (const TypeDescriptor* table : allTables()) {
        SCOPED_TRACE("type " + std::to_string(table->type));
        RecordingNames names;
        RecordPtr original = recordOf(table->type, 0);
        fillDistinct(*table, original.get(), names);
        WalkMaterialReferences(original.get(), &names);
        EXPECT_EQ(names.calls, walkCalls(*table, original.get()));
        EXPECT_FALSE(WriteMaterialDocument(original.get(), u"unused.xml", &names))
            << "writers report no success";
        const std::string text = writtenText(original.get(), names);

        // A key that stands twice is read from its first element for both rows; the reads ask
        // for the names in table order.
        RecordPtr expected = recordOf(table->type, 0);
        *expected = *original;
        if (!table->word) expected->type = 0; // the empty word reads as number 0
        std::vector<std::string> reads;
        for (size_t i = 0; i < table->fieldCount; ++i) {
            const FieldDescriptor& field = table->fields[i];
            const long source = sourceRow(*table, i);
            if (field.kind == K::Custom) {
                listHooks(table->type).afterRoundTrip(original.get(), expected.get());
                std::vector<std::string> listCalls;
                listHooks(table->type).walk(original.get(), listCalls);
                for (const std::string& call : listCalls)
                    reads.push_back(call.substr(0, call.find("Name ")) + "Id R" +
                                    call.substr(call.find(' ') + 1));
            }
            if (source == -1) {
                store<int32_t>(expected.get(), field.offset, -1);
            } else if (source != static_cast<long>(i)) {
                std::memcpy(bytesOf(expected.get()) + field.offset,
                            bytesOf(original.get()) + table->fields[source].offset, field.width);
            }
            if (isReference(field.kind)) {
                const std::string name =
                    source == -1
                        ? ""
                        : "R" + std::to_string(load<int32_t>(original.get(), table->fields[source].offset));
                reads.push_back((field.kind == K::TexMapRef ? "TexMapId " : "MaterialId ") + name);
            }
        }
        names.calls.clear();
        RecordPtr back = recordOf(table->type, 0);
        ASSERT_TRUE(readText(text, back.get(), names));
        EXPECT_EQ(firstDifference(*table, back.get(), expected.get()), "");
        EXPECT_EQ(names.calls, reads);
    }
}

// The names of the children of each section element, by the section's key ("" for
// SpecificParameters itself).
void collectChildren(const pugi::xml_node& element, const std::string& path,
                     const std::set<std::string>& sections,
                     std::map<std::string, std::vector<std::string>>& out) {
    std::vector<std::string>& names = out[path];
    for (const pugi::xml_node& child : element.children()) {
        names.push_back(child.name());
        const std::string key = path.empty() ? child.name() : path + "/" + child.name();
        if (sections.count(key)) collectChildren(child, key, sections, out);
    }
}

TEST(Shape, ElementsStandBelowTheirSectionsInTableOrder) {
    for (const TypeDescriptor* table : allTables()) {
        SCOPED_TRACE("type " + std::to_string(table->type));
        RecordingNames names;
        RecordPtr record = recordOf(table->type, 0);
        fillDistinct(*table, record.get(), names);
        // A section is appended once, where its first row stands; values are appended each time.
        std::set<std::string> sections;
        std::map<std::string, std::vector<std::string>> expected{{"", {}}};
        for (size_t i = 0; i < table->fieldCount; ++i) {
            const std::string key = table->fields[i].key;
            const size_t slash = key.rfind('/');
            const std::string parent = slash == std::string::npos ? "" : key.substr(0, slash);
            const std::string leaf = key.substr(slash + 1);
            if (table->fields[i].kind == K::Section) {
                expected[key];
                if (!sections.insert(key).second) continue;
            }
            const size_t copies =
                table->fields[i].kind == K::Custom ? listHooks(table->type).elements(record.get()) : 1;
            expected[parent].insert(expected[parent].end(), copies, leaf);
        }
        pugi::xml_document doc;
        ASSERT_TRUE(BuildMaterialDocument(record.get(), &names, &doc));
        const pugi::xml_node root = doc.child("TaviMaterial");
        EXPECT_EQ(root.attribute("type").value(), wordOf(*table));
        std::vector<std::string> top;
        for (const pugi::xml_node& child : root.children())
            top.push_back(child.name());
        EXPECT_EQ(top, (std::vector<std::string>{"Common", "SpecificParameters"}));
        std::map<std::string, std::vector<std::string>> written;
        collectChildren(root.child("SpecificParameters"), "", sections, written);
        EXPECT_EQ(written, expected);
    }
}

// What a read leaves of the record when the document has none of the type's keys.
RecordPtr afterMissingKeys(const TypeDescriptor& table, const MaterialRecord* before) {
    RecordPtr expected = recordOf(table.type, 0);
    *expected = *before;
    expected->AovID = 5;
    expected->Name[0] = 0; // a missing name clears its first and its last character
    expected->Name[kNameChars - 1] = 0;
    if (!table.word) expected->type = 0;
    for (size_t i = 0; i < table.fieldCount; ++i) {
        const FieldDescriptor& field = table.fields[i];
        switch (field.kind) {
        case K::TexMapRef:
        case K::MaterialRef:
            store<int32_t>(expected.get(), field.offset, -1);
            break;
        case K::String:
            store<char16_t>(expected.get(), field.offset, 0);
            store<char16_t>(expected.get(), field.offset + field.width - 2, 0);
            break;
        case K::Enum: // the empty word, where the table has one, matches the missing value
            for (int32_t word = 0; field.words[word]; ++word) {
                if (!field.words[word][0]) {
                    store<int32_t>(expected.get(), field.offset, word);
                    break;
                }
            }
            break;
        case K::Spline:
            for (uint32_t s = 0; s < field.segments; ++s) {
                store<float>(expected.get(), field.offset + s * sizeof(SplineSegment), 1.0f);
                store<float>(expected.get(), field.offset + s * sizeof(SplineSegment) + 12, 0.0f);
            }
            break;
        case K::ColorSpline:
            for (uint32_t s = 0; s < kColorSplineSegments; ++s) {
                store<float>(expected.get(), field.offset + s * sizeof(ColorSplineSegment), 1.0f);
                store<float>(expected.get(), field.offset + s * sizeof(ColorSplineSegment) + 4, 0.0f);
            }
            break;
        case K::Custom:
            listHooks(table.type).afterMissing(expected.get());
            break;
        default: // numbers, bools, colours and the other blocks keep their values
            break;
        }
    }
    return expected;
}

TEST(MissingKeys, ReferencesBecomeNoneTextsEmptySplinesUnusedAndNumbersStay) {
    const char* const bodies[] = {
        "<SpecificParameters/>",
        "",
        "<SpecificParameters><Unknown value='1'/><coating/><BASE/></SpecificParameters>",
        "<Specificparameters><Base><BaseWeightMap name='x'/></Base></Specificparameters>",
    };
    for (const TypeDescriptor* table : allTables()) {
        for (const char* body : bodies) {
            SCOPED_TRACE("type " + std::to_string(table->type) + " with " + body);
            RecordingNames names;
            RecordPtr record = recordOf(table->type, 0xA5);
            fillDistinct(*table, record.get(), names);
            const RecordPtr expected = afterMissingKeys(*table, record.get());
            names.calls.clear();
            ASSERT_TRUE(readText("<TaviMaterial type='" + wordOf(*table) +
                                     "'><Common><AovID value='5'/></Common>" + body + "</TaviMaterial>",
                                 record.get(), names));
            EXPECT_EQ(firstDifference(*table, record.get(), expected.get()), "");
            std::vector<std::string> asked;
            for (size_t i = 0; i < table->fieldCount; ++i) {
                if (isReference(table->fields[i].kind))
                    asked.push_back(table->fields[i].kind == K::TexMapRef ? "TexMapId " : "MaterialId ");
            }
            EXPECT_EQ(names.calls, asked) << "every reference is asked for, by the empty name";
            names.calls.clear();
            record->type = table->type; // the type without a word has read as 0
            WalkMaterialReferences(record.get(), &names);
            EXPECT_EQ(names.calls, walkCalls(*table, record.get())) << "the walk asks for unset ones too";
        }
    }
}

TEST(MissingKeys, ADocumentThatCantBeReadChangesNothing) {
    const std::string texts[] = {"", "<TaviMaterial type='UBER'><SpecificParameters>", "not a document"};
    for (const TypeDescriptor* table : allTables()) {
        for (const std::string& text : texts) {
            SCOPED_TRACE("type " + std::to_string(table->type) + ": " + text);
            RecordingNames names;
            RecordPtr record = recordOf(table->type, 0x3C);
            const RecordPtr before = recordOf(table->type, 0x3C);
            EXPECT_FALSE(readText(text, record.get(), names));
            EXPECT_EQ(firstDifference(*table, record.get(), before.get()), "");
            EXPECT_TRUE(names.calls.empty());
        }
    }
}

// A document with one key, written from a filled record, read over a record of a fill pattern:
// against a document without keys, only the bytes of that key's rows may change, and the row's own
// must. Rows on the bytes of another key are seen in the tests of repeated elements.
TEST(SingleKey, EachKeyLandsOnItsOwnBytesAndNowhereElse) {
    for (const TypeDescriptor* table : allTables()) {
        RecordingNames names;
        RecordPtr sample = recordOf(table->type, 0);
        fillDistinct(*table, sample.get(), names);
        RecordPtr without = recordOf(table->type, 0xA5);
        ASSERT_TRUE(readText(materialText(wordOf(*table), ""), without.get(), names));
        for (size_t i = 0; i < table->fieldCount; ++i) {
            const FieldDescriptor& field = table->fields[i];
            if (field.kind == K::Section || sharesBytes(*table, i)) continue;
            SCOPED_TRACE("type " + std::to_string(table->type) + " " + field.key);
            pugi::xml_document doc;
            pugi::xml_node root = doc.append_child("TaviMaterial");
            root.append_attribute("type").set_value(wordOf(*table).c_str());
            writeField(field, root.append_child("SpecificParameters"), bytesOf(sample.get()),
                       sizeof(MaterialRecord), &names);
            RecordPtr with = recordOf(table->type, 0xA5);
            ASSERT_TRUE(readText(documentText(doc), with.get(), names));
            bool landed = false;
            for (size_t byte = 0; byte < sizeof(MaterialRecord); ++byte) {
                if (bytesOf(with.get())[byte] == bytesOf(without.get())[byte]) continue;
                bool ofTheKey = false;
                for (size_t j = 0; j < table->fieldCount; ++j) {
                    const FieldDescriptor& row = table->fields[j];
                    if (std::strcmp(row.key, field.key) == 0 && byte >= row.offset &&
                        byte - row.offset < row.width)
                        ofTheKey = true;
                }
                ASSERT_TRUE(ofTheKey) << "byte " << byte << " changed";
                landed = landed || (byte >= field.offset && byte - field.offset < field.width);
            }
            EXPECT_TRUE(landed);
        }
    }
}

TEST(VolumeCache, ReadingAVolumetricDocumentLeavesTheCacheFlagAndSlotAlone) {
    RecordingNames names;
    RecordPtr original = recordOf(kVolumeMaterialType, 0);
    fillDistinct(*findMaterialType(kVolumeMaterialType), original.get(), names);
    RecordPtr record = recordOf(kVolumeMaterialType, 0xEE);
    ASSERT_TRUE(readText(writtenText(original.get(), names), record.get(), names));
    EXPECT_EQ(bytesOf(record.get())[kVolumeCacheFlagOffset], 0xEE);
    for (size_t byte = kVolumeCacheOffset; byte < sizeof(MaterialRecord); ++byte)
        ASSERT_EQ(bytesOf(record.get())[byte], 0xEE) << byte;
}

} // namespace
} // namespace material_test

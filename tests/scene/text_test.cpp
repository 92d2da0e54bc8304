// Narrow scene text to wide text: the checked conversion and the in-place fix-up.
#include "scene/scene_text.h"
#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

namespace {

TEST(SceneText, ConvertsByteForByteWithinTheCapacity) {
    struct Case {
        std::string text;
        size_t capacity;
        bool converts;
    };
    const Case cases[] = {
        {"", 64, true},
        {std::string(63, 'n'), 64, true},
        {std::string(64, 'n'), 64, false},
        {std::string(383, 'p'), 384, true},
        {std::string(384, 'p'), 384, false},
        {"\xE9t\xE9\x80\xFF", 64, true},
        {"ab", 3, true},
        {"abc", 3, false},
    };
    for (const Case& c : cases) {
        char16_t dest[400];
        std::fill(std::begin(dest), std::end(dest), u'#');
        std::string field = c.text + '\0';
        EXPECT_EQ(convertSceneString(dest, c.capacity, field.data(), field.size()), c.converts) << c.text;
        EXPECT_EQ(wideField(dest, c.capacity), c.converts ? wide(c.text) : u"") << c.text;
        EXPECT_EQ(dest[c.converts ? c.text.size() : 0], 0) << "terminated";
    }
}

TEST(SceneText, NullArgumentsAndTheFieldsEnd) {
    char16_t dest[4] = {u'x', u'x', u'x', u'x'};
    EXPECT_FALSE(convertSceneString(nullptr, 4, "a", 2));
    EXPECT_TRUE(convertSceneString(dest, 4, nullptr, 0));
    EXPECT_EQ(dest[0], 0);
    // No terminator inside the field: the field's end is the text's end.
    const char field[3] = {'a', 'b', 'c'};
    EXPECT_TRUE(convertSceneString(dest, 4, field, sizeof field));
    EXPECT_EQ(std::u16string(dest), u"abc");
    EXPECT_FALSE(convertSceneString(dest, 3, field, sizeof field));
}

TEST(SceneText, FixRecordTextConvertsInPlace) {
    struct Case {
        std::string text; // stored narrow at the start of the field
        size_t fieldBytes;
        std::u16string wide; // what the field holds afterwards, up to its end
        bool terminated;
    };
    const Case cases[] = {
        {std::string(63, 'a'), 128, std::u16string(63, u'a'), true},
        // 64 or more characters fill the field with no room left for a terminator.
        {std::string(64, 'b'), 128, std::u16string(64, u'b'), false},
        {std::string(128, 'd'), 128, std::u16string(64, u'd'), false},
        {std::string(383, 'e'), 0x300, std::u16string(383, u'e'), true},
        // 384 characters and the terminator are one too many for the conversion.
        {std::string(384, 'f'), 0x300, u"", true},
        {"\xC4\xD6", 128, u"\u00C4\u00D6", true},
    };
    for (const Case& c : cases) {
        Bytes field(c.fieldBytes + 8, 0x5A); // eight guard bytes behind the field
        std::fill(field.begin(), field.begin() + c.fieldBytes, 0);
        std::copy(c.text.begin(), c.text.begin() + std::min(c.text.size(), c.fieldBytes), field.begin());
        fixRecordText(field.data(), c.fieldBytes);
        const char16_t* text = reinterpret_cast<const char16_t*>(field.data());
        EXPECT_EQ(wideField(text, c.fieldBytes / 2), c.wide) << c.text.size();
        if (c.terminated) {
            EXPECT_EQ(text[c.wide.size()], 0) << c.text.size();
        }
        EXPECT_EQ(Bytes(field.begin() + c.fieldBytes, field.end()), Bytes(8, 0x5A)) << "wrote past the field";
    }
}

} // namespace

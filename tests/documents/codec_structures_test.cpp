// Colours, matrices and splines: the kinds with more than one attribute.
#include "documents/xml_value_codec.h"
#include "tests/documents/document_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

using documents_test::parse;
using documents_test::serialise;

namespace {

using Names = std::vector<std::string>;

Names attributeNames(const pugi::xml_node& element) {
    Names out;
    for (const pugi::xml_attribute& a : element.attributes())
        out.push_back(a.name());
    return out;
}

Names segmentIds(const pugi::xml_node& element) {
    Names ids;
    for (const pugi::xml_node& child : element.children())
        ids.push_back(child.attribute("id").value());
    return ids;
}

template <class T> bool sameBytes(const T& a, const T& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

TEST(ColorCodec, WritesChannelsInOrderAndRoundTrips) {
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("R");
    const ColorRGB color{0.1f, -2.0f, 1e30f};
    const ColorEx extended{1, 2, 3, 4, 5, 6, 7, 0.25f};
    XmlWriteColor(root, "C", &color);
    XmlWriteColorEx(root, "E", &extended);
    EXPECT_EQ(serialise(root.child("C")), "<C R=\"0.100000001\" G=\"-2\" B=\"1.00000002e+30\"/>");
    EXPECT_EQ(attributeNames(root.child("E")), (Names{"R", "G", "B", "W", "ER", "EG", "EB", "EW"}));
    ColorRGB c{};
    ColorEx e{};
    XmlReadColor(root, "C", &c);
    XmlReadColorEx(root, "E", &e);
    EXPECT_TRUE(sameBytes(c, color));
    EXPECT_TRUE(sameBytes(e, extended));
}

TEST(ColorCodec, EachMissingChannelKeepsItsValue) {
    pugi::xml_document doc;
    parse(doc, "<R><C R='0.5' B=''/><E G='2' EW='9' eg='4'/><c R='7'/></R>");
    ColorRGB c{1, 1, 1};
    XmlReadColor(doc.child("R"), "C", &c);
    EXPECT_TRUE(sameBytes(c, ColorRGB{0.5f, 1, 0})) << "an empty channel reads as 0";
    ColorRGB kept{3, 4, 5};
    XmlReadColor(doc.child("R"), "Missing", &kept);
    XmlReadColor(pugi::xml_node(), "C", &kept);
    EXPECT_TRUE(sameBytes(kept, ColorRGB{3, 4, 5}));
    ColorEx e{1, 1, 1, 1, 1, 1, 1, 1};
    XmlReadColorEx(doc.child("R"), "E", &e);
    EXPECT_TRUE(sameBytes(e, ColorEx{1, 2, 1, 1, 1, 1, 1, 9})) << "attribute names are exact: eg is not EG";
}

TEST(MatrixCodec, DocumentCarriesTheTranspose) {
    Matrix3x4 m{};
    for (int i = 0; i < 12; ++i)
        m.m[i / 4][i % 4] = static_cast<float>(i / 4 * 10 + i % 4);
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("R");
    XmlWriteMatrix(root, "M", &m);
    EXPECT_EQ(serialise(root.child("M")), "<M><Row0 m00=\"0\" m01=\"10\" m02=\"20\"/>"
                                          "<Row1 m10=\"1\" m11=\"11\" m12=\"21\"/>"
                                          "<Row2 m20=\"2\" m21=\"12\" m22=\"22\"/>"
                                          "<Row3 m30=\"3\" m31=\"13\" m32=\"23\"/></M>");
    Matrix3x4 back{};
    XmlReadMatrix(root, "M", &back);
    EXPECT_TRUE(sameBytes(back, m));

    // Reading places entries transposed and keeps what is missing; row names are exact.
    pugi::xml_document partial;
    parse(partial, "<R><M><Row0 m01='5'/><Row3 m30='1' m31='2' m32='3'/><row1 m10='9'/></M></R>");
    Matrix3x4 kept{};
    std::fill(&kept.m[0][0], &kept.m[0][0] + 12, -1.0f);
    XmlReadMatrix(partial.child("R"), "M", &kept);
    const float expected[12] = {-1, -1, -1, 1, 5, -1, -1, 2, -1, -1, -1, 3};
    EXPECT_EQ(std::memcmp(&kept, expected, sizeof expected), 0);
}

SplineSegment used(float base) {
    return {base, base + 0.1f, base + 0.2f, base + 1, 1, 2, 3, 4};
}
constexpr SplineSegment kUnused{1, 0, 0, 0, 0, 0, 0, 0};

TEST(SplineCodec, SkipsUnusedSegmentsButNeverTheFirst) {
    const struct {
        std::vector<SplineSegment> segments;
        Names ids;
    } cases[] = {
        {{used(0), kUnused, used(2), kUnused}, {"0", "2"}},
        {{kUnused, kUnused, kUnused, kUnused}, {"0"}},
        {{kUnused, kUnused, kUnused, used(3), kUnused, kUnused, kUnused, used(7)}, {"0", "3", "7"}},
        {{used(0), {2, 0, 0, 2, 0, 0, 0, 0}, kUnused, kUnused}, {"0", "1"}}, // ts equal to te is in use
    };
    for (const auto& c : cases) {
        pugi::xml_document doc;
        pugi::xml_node root = doc.append_child("R");
        XmlWriteSpline(root, "S", c.segments.data(), c.segments.size());
        EXPECT_EQ(segmentIds(root.child("S")), c.ids);
        std::vector<SplineSegment> back(c.segments.size(), used(9));
        XmlReadSpline(root, "S", back.data(), back.size());
        for (size_t i = 0; i < back.size(); ++i) {
            const bool skipped = i > 0 && c.segments[i].ts > c.segments[i].te;
            EXPECT_TRUE(skipped ? back[i].ts == 1 && back[i].te == 0 : sameBytes(back[i], c.segments[i]))
                << i;
        }
    }
    pugi::xml_document doc;
    const SplineSegment s = used(0.5f);
    XmlWriteSpline(doc.append_child("R"), "S", &s, 1);
    EXPECT_EQ(attributeNames(doc.child("R").child("S").child("Segment")),
              (Names{"id", "ts", "t1", "t2", "te", "vs", "v1", "v2", "ve"}));
}

TEST(SplineCodec, ReadMarksAllUnusedThenTakesSegmentsById) {
    pugi::xml_document doc;
    parse(doc, "<R><S>"
               // any case of Segment; attributes of other names pass by
               "<SEGMENT id='2' ts='0.5' te='0.75' v1='9' v2x='6' t='6'/>"
               "<Segment ID='1' ts='0' te='1'/>"             // but id is exact: skipped
               "<Segment ts='0' te='1'/>"                    // no id: skipped
               "<Segment id='' ts='0' te='1'/>"              // empty id: skipped
               "<Segment id='-1' ts='0' te='1'/>"
               "<Segment id='4' ts='0' te='1'/>" // not below the count
               "<Segmentx id='3' ts='0' te='1'/>"
               "<segment id='0x3' ts='0.25'/>" // ids follow the integer rule
               "<Segment id='2' vs='7'/>"      // same id again: attribute by attribute
               "</S></R>");
    SplineSegment s[4];
    std::fill(std::begin(s), std::end(s), SplineSegment{5, 5, 5, 5, 5, 5, 5, 5});
    XmlReadSpline(doc.child("R"), "S", s, 4);
    const SplineSegment expected[4] = {{1, 5, 5, 0, 5, 5, 5, 5},
                                       {1, 5, 5, 0, 5, 5, 5, 5},
                                       {0.5f, 5, 5, 0.75f, 7, 9, 5, 5},
                                       {0.25f, 5, 5, 0, 5, 5, 5, 5}};
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(sameBytes(s[i], expected[i])) << "segment " << i;
    // A missing spline ends up all unused; only the abscissas mark a segment unused.
    SplineSegment missing[8];
    std::fill(std::begin(missing), std::end(missing), used(0));
    XmlReadSpline(pugi::xml_node(), "S", missing, 8);
    for (const auto& segment : missing)
        EXPECT_TRUE(sameBytes(segment, SplineSegment{1, 0.1f, 0.2f, 0, 1, 2, 3, 4}));
}

TEST(ColorSplineCodec, WritesItsOwnAttributeOrderAndRoundTrips) {
    ColorSplineSegment s[4];
    for (int i = 0; i < 4; ++i) {
        float values[20];
        for (int f = 0; f < 20; ++f)
            values[f] = static_cast<float>(i * 100 + f) + 0.5f;
        std::memcpy(&s[i], values, sizeof values);
        s[i].te = s[i].ts + 1; // in use
    }
    s[1].ts = 3;
    s[1].te = 2; // unused, skipped
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("R");
    XmlWriteColorSpline(root, "C", s);
    EXPECT_EQ(segmentIds(root.child("C")), (Names{"0", "2", "3"}));
    EXPECT_EQ(attributeNames(root.child("C").child("Segment")),
              (Names{"id",  "ts",  "t1x", "t1y", "t1z", "t2x", "t2y", "t2z", "te",  "vsx", "vsy",
                     "vsz", "v1x", "v1y", "v1z", "v2x", "v2y", "v2z", "vex", "vey", "vez"}));
    EXPECT_STREQ(root.child("C").child("Segment").attribute("t1x").value(), "2.5");
    ColorSplineSegment back[4] = {};
    XmlReadColorSpline(root, "C", back);
    for (int i : {0, 2, 3})
        EXPECT_TRUE(sameBytes(back[i], s[i])) << i;
    EXPECT_EQ(back[1].ts, 1.0f);
    EXPECT_EQ(back[1].te, 0.0f);
}

} // namespace

// Colours, matrices and splines: the kinds with more than one attribute.
#include "documents/xml_value_codec.h"
#include "tests/documents/document_test_support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using documents_test::parse;
using documents_test::serialise;

namespace {

std::vector<std::string> attributeNames(const pugi::xml_node& element) {
    std::vector<std::string> out;
    for (const pugi::xml_attribute& a : element.attributes())
        out.push_back(a.name());
    return out;
}

// ---- Colours -----------------------------------------------------------------------------------

TEST(ColorCodec, WritesChannelsInOrderAndRoundTrips) {
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("R");
    const ColorRGB color{0.1f, -2.0f, 1e30f};
    const ColorEx extended{1, 2, 3, 4, 5, 6, 7, 0.25f};
    XmlWriteColor(root, "C", &color);
    XmlWriteColorEx(root, "E", &extended);
    EXPECT_EQ(serialise(root.child("C")), "<C R=\"0.100000001\" G=\"-2\" B=\"1.00000002e+30\"/>");
    EXPECT_EQ(attributeNames(root.child("E")),
              (std::vector<std::string>{"R", "G", "B", "W", "ER", "EG", "EB", "EW"}));
    ColorRGB c{};
    ColorEx e{};
    XmlReadColor(root, "C", &c);
    XmlReadColorEx(root, "E", &e);
    EXPECT_EQ(std::memcmp(&c, &color, sizeof c), 0);
    EXPECT_EQ(std::memcmp(&e, &extended, sizeof e), 0);
}

TEST(ColorCodec, EachMissingChannelKeepsItsValue) {
    pugi::xml_document doc;
    parse(doc, "<R><C R='0.5' B=''/><E G='2' EW='9' eg='4'/><c R='7'/></R>");
    ColorRGB c{1, 1, 1};
    XmlReadColor(doc.child("R"), "C", &c);
    EXPECT_EQ(c.R, 0.5f);
    EXPECT_EQ(c.G, 1.0f);
    EXPECT_EQ(c.B, 0.0f) << "an empty channel reads as 0";
    ColorRGB kept{3, 4, 5};
    XmlReadColor(doc.child("R"), "Missing", &kept);
    XmlReadColor(pugi::xml_node(), "C", &kept);
    EXPECT_EQ(kept.R, 3.0f);
    EXPECT_EQ(kept.B, 5.0f);
    ColorEx e{1, 1, 1, 1, 1, 1, 1, 1};
    XmlReadColorEx(doc.child("R"), "E", &e);
    const float expected[8] = {1, 2, 1, 1, 1, 1, 1, 9};
    EXPECT_EQ(std::memcmp(&e, expected, sizeof e), 0) << "attribute names are exact: eg is not EG";
}

// ---- Matrices ----------------------------------------------------------------------------------

TEST(MatrixCodec, DocumentCarriesTheTranspose) {
    Matrix3x4 m{};
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column)
            m.m[row][column] = static_cast<float>(row * 10 + column);
    }
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("R");
    XmlWriteMatrix(root, "M", &m);
    EXPECT_EQ(serialise(root.child("M")), "<M><Row0 m00=\"0\" m01=\"10\" m02=\"20\"/>"
                                          "<Row1 m10=\"1\" m11=\"11\" m12=\"21\"/>"
                                          "<Row2 m20=\"2\" m21=\"12\" m22=\"22\"/>"
                                          "<Row3 m30=\"3\" m31=\"13\" m32=\"23\"/></M>");
    Matrix3x4 back{};
    XmlReadMatrix(root, "M", &back);
    EXPECT_EQ(std::memcmp(&back, &m, sizeof m), 0);
}

TEST(MatrixCodec, ReadPlacesEntriesTransposedAndKeepsWhatIsMissing) {
    pugi::xml_document doc;
    parse(doc, "<R><M><Row0 m01='5'/><Row3 m30='1' m31='2' m32='3'/><row1 m10='9'/></M></R>");
    Matrix3x4 m{};
    for (float& v : m.m[0])
        v = -1;
    for (float& v : m.m[1])
        v = -1;
    for (float& v : m.m[2])
        v = -1;
    XmlReadMatrix(doc.child("R"), "M", &m);
    const float* flat = &m.m[0][0];
    for (int i = 0; i < 12; ++i) {
        float expected = -1;
        if (i == 4) expected = 5; // m01 is float 4
        if (i == 3) expected = 1; // Row3 is the fourth float of each stored row
        if (i == 7) expected = 2;
        if (i == 11) expected = 3;
        EXPECT_EQ(flat[i], expected) << "float " << i;
    }
}

// ---- Splines -----------------------------------------------------------------------------------

SplineSegment used(float base) {
    return {base, base + 0.1f, base + 0.2f, base + 1, 1, 2, 3, 4};
}
SplineSegment unused() {
    return {1, 0, 0, 0, 0, 0, 0, 0};
}

std::vector<std::string> segmentIds(const pugi::xml_node& element) {
    std::vector<std::string> ids;
    for (const pugi::xml_node& child : element.children())
        ids.push_back(child.attribute("id").value());
    return ids;
}

TEST(SplineCodec, SkipsUnusedSegmentsButNeverTheFirst) {
    struct Case {
        std::vector<SplineSegment> segments;
        std::vector<std::string> ids;
    } cases[] = {
        {{used(0), unused(), used(2), unused()}, {"0", "2"}},
        {{unused(), unused(), unused(), unused()}, {"0"}},
        {{used(0), used(1), used(2), used(3)}, {"0", "1", "2", "3"}},
        {{unused(), unused(), unused(), used(3), unused(), unused(), unused(), used(7)}, {"0", "3", "7"}},
        // ts equal to te is in use
        {{used(0), {2, 0, 0, 2, 0, 0, 0, 0}, unused(), unused()}, {"0", "1"}},
    };
    for (const Case& c : cases) {
        pugi::xml_document doc;
        pugi::xml_node root = doc.append_child("R");
        XmlWriteSpline(root, "S", c.segments.data(), c.segments.size());
        EXPECT_EQ(segmentIds(root.child("S")), c.ids);
        std::vector<SplineSegment> back(c.segments.size());
        XmlReadSpline(root, "S", back.data(), back.size());
        for (size_t i = 0; i < back.size(); ++i) {
            if (i > 0 && c.segments[i].ts > c.segments[i].te) {
                EXPECT_EQ(back[i].ts, 1.0f);
                EXPECT_EQ(back[i].te, 0.0f);
            } else {
                EXPECT_EQ(std::memcmp(&back[i], &c.segments[i], sizeof(SplineSegment)), 0) << i;
            }
        }
    }
}

TEST(SplineCodec, WritesAttributesInOrder) {
    pugi::xml_document doc;
    const SplineSegment s = used(0.5f);
    XmlWriteSpline(doc.append_child("R"), "S", &s, 1);
    EXPECT_EQ(attributeNames(doc.child("R").child("S").child("Segment")),
              (std::vector<std::string>{"id", "ts", "t1", "t2", "te", "vs", "v1", "v2", "ve"}));
}

TEST(SplineCodec, ReadMarksAllUnusedThenTakesSegmentsById) {
    pugi::xml_document doc;
    parse(doc, "<R><S>"
               "<SEGMENT id='2' ts='0.5' te='0.75' v1='9'/>" // any case of Segment
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
    for (int i = 0; i < 4; ++i)
        s[i] = {5, 5, 5, 5, 5, 5, 5, 5};
    XmlReadSpline(doc.child("R"), "S", s, 4);
    const SplineSegment expected[4] = {
        {1, 5, 5, 0, 5, 5, 5, 5},
        {1, 5, 5, 0, 5, 5, 5, 5},
        {0.5f, 5, 5, 0.75f, 7, 9, 5, 5},
        {0.25f, 5, 5, 0, 5, 5, 5, 5},
    };
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(std::memcmp(&s[i], &expected[i], sizeof s[i]), 0) << "segment " << i;
}

TEST(SplineCodec, MissingSplineEndsUpAllUnused) {
    SplineSegment s[8];
    for (auto& segment : s)
        segment = used(0);
    XmlReadSpline(pugi::xml_node(), "S", s, 8);
    for (const auto& segment : s) {
        EXPECT_EQ(segment.ts, 1.0f);
        EXPECT_EQ(segment.te, 0.0f);
        EXPECT_EQ(segment.t1, 0.1f) << "only the abscissas mark a segment unused";
        EXPECT_EQ(segment.ve, 4.0f);
    }
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
    EXPECT_EQ(segmentIds(root.child("C")), (std::vector<std::string>{"0", "2", "3"}));
    EXPECT_EQ(
        attributeNames(root.child("C").child("Segment")),
        (std::vector<std::string>{"id",  "ts",  "t1x", "t1y", "t1z", "t2x", "t2y", "t2z", "te",  "vsx", "vsy",
                                  "vsz", "v1x", "v1y", "v1z", "v2x", "v2y", "v2z", "vex", "vey", "vez"}));
    EXPECT_STREQ(root.child("C").child("Segment").attribute("te").value(), "1.5");
    EXPECT_STREQ(root.child("C").child("Segment").attribute("t1x").value(), "2.5");
    ColorSplineSegment back[4] = {};
    XmlReadColorSpline(root, "C", back);
    for (int i : {0, 2, 3})
        EXPECT_EQ(std::memcmp(&back[i], &s[i], sizeof s[i]), 0) << i;
    EXPECT_EQ(back[1].ts, 1.0f);
    EXPECT_EQ(back[1].te, 0.0f);
    EXPECT_EQ(back[1].ve[0], 0.0f);
}

TEST(ColorSplineCodec, AcceptsIdsZeroToThreeOnly) {
    pugi::xml_document doc;
    parse(doc, "<R><C><Segment id='4' ts='0' te='1'/><Segment id='3' ts='0' te='2' vez='6'/></C></R>");
    ColorSplineSegment s[4] = {};
    XmlReadColorSpline(doc.child("R"), "C", s);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(s[i].ts, 1.0f);
        EXPECT_EQ(s[i].te, 0.0f);
    }
    EXPECT_EQ(s[3].te, 2.0f);
    EXPECT_EQ(s[3].ve[2], 6.0f);
}

} // namespace

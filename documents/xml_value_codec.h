// How every kind of value is coded in the client's XML documents (materials, texmaps, camera,
// settings): one write and one read operation per kind.
//
// A value sits on an element of its own whose name is the key. Lookups compare element and
// attribute names exactly and take the first match; only the list elements (`Segment` here)
// compare without regard to ASCII case. Readers accept a null parent and then see every key as
// missing; a null key makes them read `parent` itself as the key's element, for a caller that
// has found it already. What a missing key does depends on the kind:
//   - int, uint, float, bool, colour, extended colour, matrix: the field keeps its value;
//   - string: the field is cleared;
//   - enum: the empty word of the table is looked up, so a table with an empty word yields its
//     index and a table without one leaves the field alone;
//   - spline: every segment is marked unused (ts 1, te 0), the other fields stay;
//   - reference: the name interface is asked for the empty name, which gives -1.
// Writers append to the parent; a null parent makes them do nothing but their calls on the
// name interface, which is the reason the reference walk uses them at all.
//
// The DOM is pugixml in UTF-8 mode; text crosses into the records as UTF-16 here.
#pragma once
#include "scene/records.h"

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>

class ITaviNameInterface;

// ---- Record-side value types -------------------------------------------------------------------

// A colour with its extended channels, in this order.
struct ColorEx {
    float R, G, B, W, ER, EG, EB, EW;
};
static_assert(sizeof(ColorEx) == 32);

// Three rows of four floats; column 3 is the translation. Documents carry the transpose: entry
// mRC of the document (R 0..3, C 0..2) is m[C][R] here.
struct Matrix3x4 {
    float m[3][4];
};
static_assert(sizeof(Matrix3x4) == 48);

// A table of enum words: ASCII words in index order, ended by a null entry. An empty word is a
// word like any other, and it is what a missing key looks up.
using WordTable = const char* const*;

constexpr size_t kColorSplineSegments = 4;

// ---- Opening a document ------------------------------------------------------------------------

// Loads the document at `path` (UTF-16) into `doc`, with pugixml's default options and encoding
// detection. False when the file can't be opened or doesn't parse; `doc` is then reset. On
// success `*root` is the first child of the document named `rootWord` (exactly), or a null
// node when there is none: the document still counts as loaded.
bool XmlOpenDocument(pugi::xml_document& doc, const char16_t* path, const char* rootWord,
                     pugi::xml_node* root);

// ---- Names -------------------------------------------------------------------------------------

// Exact name compare, in line: names are a few characters long, fewer than a call out costs.
inline bool XmlNameEquals(const char* a, const char* b) {
    while (*a && *a == *b) {
        ++a;
        ++b;
    }
    return *a == *b;
}
// Element name compare for the list elements: ASCII letters fold, everything else is exact.
bool XmlNameEqualsNoCase(const char* a, const char* b);
// First child element of `parent` named `name` without regard to ASCII case; null if none.
pugi::xml_node XmlChildNoCase(pugi::xml_node parent, const char* name);

// ---- Numbers and bools -------------------------------------------------------------------------

// Integers are read with pugixml's integer rule: optional sign, decimal or 0x hexadecimal,
// clamped to the i32 range. An unsigned field receives the bits of that i32.
void XmlWriteInt(pugi::xml_node parent, const char* key, const int32_t* field);
void XmlWriteInt(pugi::xml_node parent, const char* key, const int16_t* field);
void XmlWriteUInt(pugi::xml_node parent, const char* key, const uint32_t* field);
void XmlReadInt(pugi::xml_node parent, const char* key, int32_t* field);
void XmlReadInt(pugi::xml_node parent, const char* key, uint32_t* field);
// A 16-bit field keeps the low 16 bits of what was read.
void XmlReadInt(pugi::xml_node parent, const char* key, int16_t* field);

// Written as "%.*g" at precision 9 of the value widened to double, which restores every f32
// exactly. Read like wcstod (see XmlParseDouble) and narrowed to f32.
void XmlWriteFloat(pugi::xml_node parent, const char* key, const float* field);
void XmlReadFloat(pugi::xml_node parent, const char* key, float* field);

// Written as "true" or "false"; read by the first character alone: 1, T, t, Y, y are true,
// anything else, the empty text included, is false. The field is one byte, 0 or 1.
void XmlWriteBool(pugi::xml_node parent, const char* key, const uint8_t* field);
void XmlReadBool(pugi::xml_node parent, const char* key, uint8_t* field);

// The text forms of the number kinds, shared with readers that work on attributes directly.
// XmlFormatFloat writes at most 127 characters and a terminator into `out`.
void XmlFormatFloat(float value, char (&out)[128]);
// wcstod's rule: leading blanks, an optional sign, then a decimal number with optional exponent,
// "inf"/"infinity"/"nan"/"nan(...)" in any case, or a 0x hexadecimal float with optional p
// exponent. Trailing text is ignored; a text that doesn't begin with a number reads as 0.
// Out of range gives infinity or zero of the sign.
double XmlParseDouble(const char* text);
// The double as the nearest float, the way an IEEE narrowing rounds; beyond the float range it
// gives the largest float or infinity instead of the undefined cast.
float narrowToFloat(double value);
// The first-character bool rule.
bool XmlParseBool(const char* text);

// ---- Strings -----------------------------------------------------------------------------------

// `capacity` counts characters with the terminator. The read clears characters 0 and
// capacity - 1 first, then copies at most `capacity` characters of the text, terminator
// included, and terminates at capacity - 1. A missing key copies from the cleared buffer, so
// the field ends up empty. Characters after the terminator are left as they were.
void XmlWriteString(pugi::xml_node parent, const char* key, const char16_t* text);
void XmlReadString(pugi::xml_node parent, const char* key, char16_t* buffer, size_t capacity);

// ---- Enums -------------------------------------------------------------------------------------

// The write puts the word at the field's index; an index outside the table (the null end, or
// beyond) writes an empty value. The read compares the `value` text (empty if missing) with
// each word ignoring ASCII case; the first match is stored, no match leaves the field alone.
void XmlWriteEnum(pugi::xml_node parent, const char* key, const int32_t* field, WordTable words);
void XmlWriteEnum(pugi::xml_node parent, const char* key, const uint32_t* field, WordTable words);
void XmlReadEnum(pugi::xml_node parent, const char* key, int32_t* field, WordTable words);
void XmlReadEnum(pugi::xml_node parent, const char* key, uint32_t* field, WordTable words);
// The same rules for an enum held by an attribute of `element` itself (the `type` of a root).
void XmlWriteEnumAttribute(pugi::xml_node element, const char* attribute, int32_t index, WordTable words);
void XmlReadEnumAttribute(pugi::xml_node element, const char* attribute, int32_t* field, WordTable words);
// Index of `text` in `words` ignoring ASCII case, -1 if it isn't there.
int32_t XmlFindWord(WordTable words, const char* text);
// Number of words before the null end.
size_t XmlWordCount(WordTable words);

// ---- Colours and matrices ----------------------------------------------------------------------

// Attributes R, G, B (then W, ER, EG, EB, EW); a missing element or channel keeps its value.
void XmlWriteColor(pugi::xml_node parent, const char* key, const ColorRGB* field);
void XmlReadColor(pugi::xml_node parent, const char* key, ColorRGB* field);
void XmlWriteColorEx(pugi::xml_node parent, const char* key, const ColorEx* field);
void XmlReadColorEx(pugi::xml_node parent, const char* key, ColorEx* field);

// Children Row0..Row3 with attributes mR0, mR1, mR2; a missing row or entry keeps its value.
void XmlWriteMatrix(pugi::xml_node parent, const char* key, const Matrix3x4* field);
void XmlReadMatrix(pugi::xml_node parent, const char* key, Matrix3x4* field);

// ---- Splines -----------------------------------------------------------------------------------

// A segment is in use when ts <= te; segment 0 counts as present whatever it holds. The write
// puts one `Segment` child per present segment, with its index as attribute `id`, and skips
// the others without ending the walk. The read marks all `count` segments unused (ts 1, te 0,
// nothing else touched), then reads each `Segment` child (any case) whose `id` lies in
// 0..count-1 into that segment; a child without an `id`, with an empty or out-of-range one is
// skipped, and a missing attribute keeps the segment's value.
void XmlWriteSpline(pugi::xml_node parent, const char* key, const SplineSegment* segments, size_t count);
void XmlReadSpline(pugi::xml_node parent, const char* key, SplineSegment* segments, size_t count);
// The same on an element that is already at hand (a null element is allowed for the read).
void XmlWriteSplineElement(pugi::xml_node element, const SplineSegment* segments, size_t count);
void XmlReadSplineElement(pugi::xml_node element, SplineSegment* segments, size_t count);

// Colour splines always have kColorSplineSegments segments.
void XmlWriteColorSpline(pugi::xml_node parent, const char* key, const ColorSplineSegment* segments);
void XmlReadColorSpline(pugi::xml_node parent, const char* key, ColorSplineSegment* segments);
void XmlWriteColorSplineElement(pugi::xml_node element, const ColorSplineSegment* segments);
void XmlReadColorSplineElement(pugi::xml_node element, ColorSplineSegment* segments);

// ---- References --------------------------------------------------------------------------------

// Texmap and material references: attribute `name`. The write asks the name interface for the
// id's name even when it has nowhere to put it. The read always overwrites the id with what
// the name interface gives for the text (the empty text when the key is missing), so a missing
// reference becomes -1. Without a name interface the read stores -1.
void XmlWriteTexMapRef(pugi::xml_node parent, const char* key, const int32_t* field,
                       ITaviNameInterface* names);
void XmlReadTexMapRef(pugi::xml_node parent, const char* key, int32_t* field, ITaviNameInterface* names);
void XmlWriteMaterialRef(pugi::xml_node parent, const char* key, const int32_t* field,
                         ITaviNameInterface* names);
void XmlReadMaterialRef(pugi::xml_node parent, const char* key, int32_t* field, ITaviNameInterface* names);

// Texture references are coded differently: attribute `value`, and the name is cut to
// kNameChars - 1 characters before it is looked up.
void XmlWriteTextureRef(pugi::xml_node parent, const char* key, const int32_t* field,
                        ITaviNameInterface* names);
void XmlReadTextureRef(pugi::xml_node parent, const char* key, int32_t* field, ITaviNameInterface* names);

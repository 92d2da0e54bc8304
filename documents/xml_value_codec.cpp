#include "documents/xml_value_codec.h"

#include "bridge/name_interface.h"
#include "common/unicode.h"
#include "documents/xml_file.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>

namespace {

// ---- Small helpers -----------------------------------------------------------------------------

// Writers only ever append below an element: a null node or the document itself yields a null
// node, on which pugixml's setters do nothing.
pugi::xml_node appendElement(pugi::xml_node parent, const char* key) {
    if (parent.type() != pugi::node_element) return pugi::xml_node();
    return parent.append_child(key);
}

void setText(pugi::xml_attribute attribute, const char* text) {
    attribute.set_value(text ? text : "");
}

void appendFloatAttribute(pugi::xml_node element, const char* name, float value) {
    char text[128];
    XmlFormatFloat(value, text);
    setText(element.append_attribute(name), text);
}

void appendIntAttribute(pugi::xml_node element, const char* name, int64_t value) {
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text - 1, value);
    *result.ptr = '\0';
    setText(element.append_attribute(name), text);
}

// Reads a float attribute if it is there; a missing attribute leaves the value alone.
void readFloatAttribute(pugi::xml_node element, const char* name, float* value) {
    pugi::xml_attribute attribute = element.attribute(name);
    if (attribute) *value = narrowToFloat(XmlParseDouble(attribute.value()));
}

// The element of a key below `parent`; a null key stands for `parent` itself.
pugi::xml_node keyElement(pugi::xml_node parent, const char* key) {
    return key ? parent.child(key) : parent;
}

pugi::xml_attribute valueAttribute(pugi::xml_node parent, const char* key) {
    return keyElement(parent, key).attribute("value");
}

bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isHexDigit(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
char lowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// When the converter says "out of range", the only question left is whether the number is too
// big or too small. Its order of magnitude answers it: digits before the point (after leading
// zeros), or minus the zeros after the point, plus the exponent. Base 16 digits count four
// binary places against a binary exponent.
bool overflows(const char* p, const char* end, bool hex) {
    const auto digit = hex ? isHexDigit : isDigit;
    const long long placeWeight = hex ? 4 : 1;
    long long magnitude = 0;
    bool seenNonZero = false;
    while (p < end && *p == '0')
        ++p;
    while (p < end && digit(*p)) {
        magnitude += placeWeight;
        seenNonZero = true;
        ++p;
    }
    if (p < end && *p == '.') {
        ++p;
        while (!seenNonZero && p < end && *p == '0') {
            magnitude -= placeWeight;
            ++p;
        }
        while (p < end && digit(*p))
            ++p;
    }
    long long exponent = 0;
    if (p < end && lowerAscii(*p) == (hex ? 'p' : 'e')) {
        ++p;
        const bool negative = p < end && *p == '-';
        if (p < end && (*p == '-' || *p == '+')) ++p;
        // Clamped: a thousand million decimal places settle the question either way.
        while (p < end && isDigit(*p)) {
            if (exponent < 1000000000) exponent = exponent * 10 + (*p - '0');
            ++p;
        }
        if (negative) exponent = -exponent;
    }
    return magnitude + exponent > 0;
}

// Decimal text without an exponent, of digits that make an exact double, such as the writers
// put out ("0.100000001"): the digits as an integer and the power of ten of the fraction are
// both exact, so one division rounds to the nearest double exactly as the full conversion does.
// False for any other text, which is left to that conversion.
bool parsePlainDecimal(const char* p, double* value) {
    constexpr uint64_t kExactIntegers = uint64_t(1) << 53;
    static constexpr double kExactPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr size_t kLongestFraction = std::size(kExactPowersOfTen) - 1;
    uint64_t digits = 0;
    size_t count = 0, fraction = 0;
    bool point = false;
    for (;; ++p) {
        if (isDigit(*p)) {
            if (digits > kExactIntegers) return false;
            digits = digits * 10 + uint64_t(*p - '0');
            ++count;
            if (point) ++fraction;
        } else if (*p == '.' && !point) {
            point = true;
        } else {
            break;
        }
    }
    if (count == 0 || lowerAscii(*p) == 'e' || digits > kExactIntegers || fraction > kLongestFraction)
        return false;
    *value = double(digits) / kExactPowersOfTen[fraction];
    return true;
}

} // namespace

float narrowToFloat(double value) {
    constexpr double kMax = std::numeric_limits<float>::max();
    // Half an ulp above the largest float: from here on round-to-nearest gives infinity.
    const double overflowFrom = kMax + std::ldexp(1.0, 103);
    if (std::isfinite(value) && std::fabs(value) > kMax) {
        const float big = std::fabs(value) >= overflowFrom ? std::numeric_limits<float>::infinity()
                                                           : std::numeric_limits<float>::max();
        return value < 0 ? -big : big;
    }
    return static_cast<float>(value);
}

// ---- Opening a document ------------------------------------------------------------------------

bool XmlOpenDocument(pugi::xml_document& doc, const char16_t* path, const char* rootWord,
                     pugi::xml_node* root) {
    if (root) *root = pugi::xml_node();
    if (!path) return false;
    if (!loadXmlFile(doc, path)) {
        doc.reset();
        return false;
    }
    if (root) *root = doc.child(rootWord);
    return true;
}

// ---- Names -------------------------------------------------------------------------------------

bool XmlNameEqualsNoCase(const char* a, const char* b) {
    if (!a || !b) return false;
    for (; *a && *b; ++a, ++b) {
        if (lowerAscii(*a) != lowerAscii(*b)) return false;
    }
    return *a == *b;
}

pugi::xml_node XmlChildNoCase(pugi::xml_node parent, const char* name) {
    for (pugi::xml_node child = parent.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_element && XmlNameEqualsNoCase(child.name(), name)) return child;
    }
    return pugi::xml_node();
}

// ---- Numbers and bools -------------------------------------------------------------------------

void XmlFormatFloat(float value, char (&out)[128]) {
    const auto result =
        std::to_chars(out, out + sizeof out - 1, static_cast<double>(value), std::chars_format::general, 9);
    *result.ptr = '\0';
}

double XmlParseDouble(const char* text) {
    if (!text) return 0.0;
    const char* p = text;
    while (isBlank(*p))
        ++p;
    bool negative = false;
    if (*p == '+' || *p == '-') {
        negative = *p == '-';
        ++p;
    }
    // The converter below takes a sign of its own; a second one is no number.
    if (*p == '+' || *p == '-') return 0.0;
    const bool hex = p[0] == '0' && (p[1] == 'x' || p[1] == 'X') &&
                     (isHexDigit(p[2]) || (p[2] == '.' && isHexDigit(p[3])));
    double value = 0.0;
    if (!hex && parsePlainDecimal(p, &value)) return negative ? -value : value;
    const char* end = p + std::strlen(p);
    const char* digits = hex ? p + 2 : p;
    const auto result =
        std::from_chars(digits, end, value, hex ? std::chars_format::hex : std::chars_format::general);
    if (result.ec == std::errc::result_out_of_range) {
        value = overflows(digits, result.ptr, hex) ? std::numeric_limits<double>::infinity() : 0.0;
    } else if (result.ec != std::errc()) {
        return 0.0; // no number: a sign alone does not make it negative
    }
    return negative ? -value : value;
}

bool XmlParseBool(const char* text) {
    if (!text) return false;
    const char first = text[0];
    return first == '1' || first == 'T' || first == 't' || first == 'Y' || first == 'y';
}

void XmlWriteInt(pugi::xml_node parent, const char* key, const int32_t* field) {
    appendIntAttribute(appendElement(parent, key), "value", *field);
}

void XmlWriteInt(pugi::xml_node parent, const char* key, const int16_t* field) {
    appendIntAttribute(appendElement(parent, key), "value", *field);
}

void XmlWriteUInt(pugi::xml_node parent, const char* key, const uint32_t* field) {
    appendIntAttribute(appendElement(parent, key), "value", *field);
}

void XmlReadInt(pugi::xml_node parent, const char* key, int32_t* field) {
    pugi::xml_attribute attribute = valueAttribute(parent, key);
    if (attribute) *field = attribute.as_int();
}

void XmlReadInt(pugi::xml_node parent, const char* key, uint32_t* field) {
    int32_t value = static_cast<int32_t>(*field);
    XmlReadInt(parent, key, &value);
    *field = static_cast<uint32_t>(value);
}

void XmlReadInt(pugi::xml_node parent, const char* key, int16_t* field) {
    pugi::xml_attribute attribute = valueAttribute(parent, key);
    if (attribute)
        *field = static_cast<int16_t>(static_cast<uint16_t>(static_cast<uint32_t>(attribute.as_int())));
}

void XmlWriteFloat(pugi::xml_node parent, const char* key, const float* field) {
    appendFloatAttribute(appendElement(parent, key), "value", *field);
}

void XmlReadFloat(pugi::xml_node parent, const char* key, float* field) {
    readFloatAttribute(keyElement(parent, key), "value", field);
}

void XmlWriteBool(pugi::xml_node parent, const char* key, const uint8_t* field) {
    setText(appendElement(parent, key).append_attribute("value"), *field ? "true" : "false");
}

void XmlReadBool(pugi::xml_node parent, const char* key, uint8_t* field) {
    pugi::xml_attribute attribute = valueAttribute(parent, key);
    if (attribute) *field = XmlParseBool(attribute.value()) ? 1 : 0;
}

// ---- Strings -----------------------------------------------------------------------------------

void XmlWriteString(pugi::xml_node parent, const char* key, const char16_t* text) {
    pugi::xml_node element = appendElement(parent, key);
    if (!element) return;
    setText(element.append_attribute("value"), text ? utf16ToUtf8(text).c_str() : "");
}

void XmlReadString(pugi::xml_node parent, const char* key, char16_t* buffer, size_t capacity) {
    if (!buffer || capacity == 0) return;
    buffer[0] = 0;
    buffer[capacity - 1] = 0;
    pugi::xml_attribute attribute = valueAttribute(parent, key);
    // Without a value the source is the buffer itself, now empty: nothing more changes.
    if (!attribute) return;
    const std::u16string text = utf8ToUtf16(attribute.value());
    const size_t length = text.size() < capacity - 1 ? text.size() : capacity - 1;
    std::memcpy(buffer, text.data(), length * sizeof(char16_t));
    buffer[length] = 0;
}

// ---- Enums -------------------------------------------------------------------------------------

size_t XmlWordCount(WordTable words) {
    size_t count = 0;
    while (words && words[count])
        ++count;
    return count;
}

int32_t XmlFindWord(WordTable words, const char* text) {
    if (!words) return -1;
    for (size_t i = 0; words[i]; ++i) {
        if (XmlNameEqualsNoCase(words[i], text ? text : "")) return static_cast<int32_t>(i);
    }
    return -1;
}

namespace {
const char* wordAt(WordTable words, int64_t index) {
    // The table's null end, or anything past it, has no word to write.
    if (index < 0 || static_cast<uint64_t>(index) >= XmlWordCount(words)) return "";
    return words[index];
}
} // namespace

void XmlWriteEnum(pugi::xml_node parent, const char* key, const int32_t* field, WordTable words) {
    setText(appendElement(parent, key).append_attribute("value"), wordAt(words, *field));
}

void XmlWriteEnum(pugi::xml_node parent, const char* key, const uint32_t* field, WordTable words) {
    setText(appendElement(parent, key).append_attribute("value"), wordAt(words, *field));
}

void XmlReadEnum(pugi::xml_node parent, const char* key, int32_t* field, WordTable words) {
    const int32_t index = XmlFindWord(words, valueAttribute(parent, key).value());
    if (index >= 0) *field = index;
}

void XmlReadEnum(pugi::xml_node parent, const char* key, uint32_t* field, WordTable words) {
    const int32_t index = XmlFindWord(words, valueAttribute(parent, key).value());
    if (index >= 0) *field = static_cast<uint32_t>(index);
}

void XmlWriteEnumAttribute(pugi::xml_node element, const char* attribute, int32_t index, WordTable words) {
    if (element.type() != pugi::node_element) return;
    setText(element.append_attribute(attribute), wordAt(words, index));
}

void XmlReadEnumAttribute(pugi::xml_node element, const char* attribute, int32_t* field, WordTable words) {
    const int32_t index = XmlFindWord(words, element.attribute(attribute).value());
    if (index >= 0) *field = index;
}

// ---- Colours and matrices ----------------------------------------------------------------------

namespace {
const char* const kColorChannels[] = {"R", "G", "B", "W", "ER", "EG", "EB", "EW"};
const char* const kRowNames[] = {"Row0", "Row1", "Row2", "Row3"};
const char* const kEntryNames[4][3] = {
    {"m00", "m01", "m02"}, {"m10", "m11", "m12"}, {"m20", "m21", "m22"}, {"m30", "m31", "m32"}};

void writeChannels(pugi::xml_node parent, const char* key, const float* channels, size_t count) {
    pugi::xml_node element = appendElement(parent, key);
    if (!element) return;
    for (size_t i = 0; i < count; ++i)
        appendFloatAttribute(element, kColorChannels[i], channels[i]);
}

void readChannels(pugi::xml_node parent, const char* key, float* channels, size_t count) {
    pugi::xml_node element = keyElement(parent, key);
    if (!element) return;
    for (size_t i = 0; i < count; ++i)
        readFloatAttribute(element, kColorChannels[i], &channels[i]);
}
} // namespace

void XmlWriteColor(pugi::xml_node parent, const char* key, const ColorRGB* field) {
    const float channels[3] = {field->R, field->G, field->B};
    writeChannels(parent, key, channels, 3);
}

void XmlReadColor(pugi::xml_node parent, const char* key, ColorRGB* field) {
    float channels[3] = {field->R, field->G, field->B};
    readChannels(parent, key, channels, 3);
    *field = ColorRGB{channels[0], channels[1], channels[2]};
}

void XmlWriteColorEx(pugi::xml_node parent, const char* key, const ColorEx* field) {
    const float channels[8] = {field->R,  field->G,  field->B,  field->W,
                               field->ER, field->EG, field->EB, field->EW};
    writeChannels(parent, key, channels, 8);
}

void XmlReadColorEx(pugi::xml_node parent, const char* key, ColorEx* field) {
    float c[8] = {field->R, field->G, field->B, field->W, field->ER, field->EG, field->EB, field->EW};
    readChannels(parent, key, c, 8);
    *field = ColorEx{c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7]};
}

void XmlWriteMatrix(pugi::xml_node parent, const char* key, const Matrix3x4* field) {
    pugi::xml_node element = appendElement(parent, key);
    if (!element) return;
    for (int row = 0; row < 4; ++row) {
        pugi::xml_node rowElement = element.append_child(kRowNames[row]);
        for (int column = 0; column < 3; ++column) {
            appendFloatAttribute(rowElement, kEntryNames[row][column], field->m[column][row]);
        }
    }
}

void XmlReadMatrix(pugi::xml_node parent, const char* key, Matrix3x4* field) {
    pugi::xml_node element = keyElement(parent, key);
    if (!element) return;
    for (int row = 0; row < 4; ++row) {
        pugi::xml_node rowElement = element.child(kRowNames[row]);
        for (int column = 0; column < 3; ++column) {
            readFloatAttribute(rowElement, kEntryNames[row][column], &field->m[column][row]);
        }
    }
}

// ---- Splines -----------------------------------------------------------------------------------

namespace {
const char* const kSegmentWord = "Segment";

// The float attributes of one segment, in the order they are written, with the float index
// of each within the segment's storage.
struct SegmentAttribute {
    const char* name;
    size_t index;
};
const SegmentAttribute kSplineAttributes[] = {{"ts", 0}, {"t1", 1}, {"t2", 2}, {"te", 3},
                                              {"vs", 4}, {"v1", 5}, {"v2", 6}, {"ve", 7}};
const SegmentAttribute kColorSplineAttributes[] = {
    {"ts", 0},   {"t1x", 2},  {"t1y", 3},  {"t1z", 4},  {"t2x", 5},  {"t2y", 6},  {"t2z", 7},
    {"te", 1},   {"vsx", 8},  {"vsy", 9},  {"vsz", 10}, {"v1x", 11}, {"v1y", 12}, {"v1z", 13},
    {"v2x", 14}, {"v2y", 15}, {"v2z", 16}, {"vex", 17}, {"vey", 18}, {"vez", 19}};
static_assert(sizeof(ColorSplineSegment) == 20 * sizeof(float));
static_assert(sizeof(SplineSegment) == 8 * sizeof(float));

// Segments are handled as float arrays through memcpy so that one routine serves both forms.
template <class Segment, size_t N>
void writeSegments(pugi::xml_node element, const Segment* segments, size_t count,
                   const SegmentAttribute (&attributes)[N]) {
    for (size_t i = 0; i < count; ++i) {
        const Segment& segment = segments[i];
        if (i > 0 && segment.ts > segment.te) continue;
        float values[sizeof(Segment) / sizeof(float)];
        std::memcpy(values, &segment, sizeof values);
        pugi::xml_node child = appendElement(element, kSegmentWord);
        appendIntAttribute(child, "id", static_cast<int64_t>(i));
        for (const SegmentAttribute& attribute : attributes) {
            appendFloatAttribute(child, attribute.name, values[attribute.index]);
        }
    }
}

template <class Segment, size_t N>
void readSegments(pugi::xml_node element, Segment* segments, size_t count,
                  const SegmentAttribute (&attributes)[N]) {
    for (size_t i = 0; i < count; ++i) {
        segments[i].ts = 1.0f;
        segments[i].te = 0.0f;
    }
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
        if (child.type() != pugi::node_element || !XmlNameEqualsNoCase(child.name(), kSegmentWord)) continue;
        pugi::xml_attribute idAttribute = child.attribute("id");
        if (!idAttribute || idAttribute.value()[0] == '\0') continue;
        const int id = idAttribute.as_int();
        if (id < 0 || static_cast<size_t>(id) >= count) continue;
        float values[sizeof(Segment) / sizeof(float)];
        std::memcpy(values, &segments[id], sizeof values);
        // One pass over the attributes, in which the first of each name counts, as a lookup by
        // name would find it.
        bool taken[N] = {};
        for (pugi::xml_attribute attribute = child.first_attribute(); attribute;
             attribute = attribute.next_attribute()) {
            if (attribute == idAttribute) continue;
            for (size_t k = 0; k < N; ++k) {
                if (taken[k] || !XmlNameEquals(attribute.name(), attributes[k].name)) continue;
                taken[k] = true;
                values[attributes[k].index] = narrowToFloat(XmlParseDouble(attribute.value()));
                break;
            }
        }
        std::memcpy(&segments[id], values, sizeof values);
    }
}
} // namespace

void XmlWriteSplineElement(pugi::xml_node element, const SplineSegment* segments, size_t count) {
    writeSegments(element, segments, count, kSplineAttributes);
}

void XmlReadSplineElement(pugi::xml_node element, SplineSegment* segments, size_t count) {
    readSegments(element, segments, count, kSplineAttributes);
}

void XmlWriteSpline(pugi::xml_node parent, const char* key, const SplineSegment* segments, size_t count) {
    XmlWriteSplineElement(appendElement(parent, key), segments, count);
}

void XmlReadSpline(pugi::xml_node parent, const char* key, SplineSegment* segments, size_t count) {
    XmlReadSplineElement(keyElement(parent, key), segments, count);
}

void XmlWriteColorSplineElement(pugi::xml_node element, const ColorSplineSegment* segments) {
    writeSegments(element, segments, kColorSplineSegments, kColorSplineAttributes);
}

void XmlReadColorSplineElement(pugi::xml_node element, ColorSplineSegment* segments) {
    readSegments(element, segments, kColorSplineSegments, kColorSplineAttributes);
}

void XmlWriteColorSpline(pugi::xml_node parent, const char* key, const ColorSplineSegment* segments) {
    XmlWriteColorSplineElement(appendElement(parent, key), segments);
}

void XmlReadColorSpline(pugi::xml_node parent, const char* key, ColorSplineSegment* segments) {
    XmlReadColorSplineElement(keyElement(parent, key), segments);
}

// ---- References --------------------------------------------------------------------------------

namespace {
using NameOf = const char16_t* (ITaviNameInterface::*)(int32_t);
using IdOf = int32_t* (ITaviNameInterface::*)(int32_t*, const char16_t*);

// The element and its empty attribute come first, then the name call, which happens whether or
// not there was anywhere to append.
void writeReference(pugi::xml_node parent, const char* key, const char* attributeName, int32_t id,
                    ITaviNameInterface* names, NameOf nameOf) {
    pugi::xml_attribute attribute = appendElement(parent, key).append_attribute(attributeName);
    const char16_t* name = names ? (names->*nameOf)(id) : nullptr;
    if (attribute && name) setText(attribute, utf16ToUtf8(name).c_str());
}

int32_t lookUpId(const char16_t* name, ITaviNameInterface* names, IdOf idOf) {
    if (!names) return -1;
    int32_t result = -1;
    const int32_t* answer = (names->*idOf)(&result, name);
    return answer ? *answer : result;
}

void readReference(pugi::xml_node parent, const char* key, int32_t* field, ITaviNameInterface* names,
                   IdOf idOf) {
    const std::u16string name = utf8ToUtf16(keyElement(parent, key).attribute("name").value());
    *field = lookUpId(name.c_str(), names, idOf);
}
} // namespace

void XmlWriteTexMapRef(pugi::xml_node parent, const char* key, const int32_t* field,
                       ITaviNameInterface* names) {
    writeReference(parent, key, "name", *field, names, &ITaviNameInterface::GetTexMapName);
}

void XmlReadTexMapRef(pugi::xml_node parent, const char* key, int32_t* field, ITaviNameInterface* names) {
    readReference(parent, key, field, names, &ITaviNameInterface::GetTexMapId);
}

void XmlWriteMaterialRef(pugi::xml_node parent, const char* key, const int32_t* field,
                         ITaviNameInterface* names) {
    writeReference(parent, key, "name", *field, names, &ITaviNameInterface::GetMaterialName);
}

void XmlReadMaterialRef(pugi::xml_node parent, const char* key, int32_t* field, ITaviNameInterface* names) {
    readReference(parent, key, field, names, &ITaviNameInterface::GetMaterialId);
}

void XmlWriteTextureRef(pugi::xml_node parent, const char* key, const int32_t* field,
                        ITaviNameInterface* names) {
    writeReference(parent, key, "value", *field, names, &ITaviNameInterface::GetTextureName);
}

void XmlReadTextureRef(pugi::xml_node parent, const char* key, int32_t* field, ITaviNameInterface* names) {
    // The name goes through a buffer of a record name's size, so a longer one is looked up cut.
    char16_t name[kNameChars] = {};
    const std::u16string text = utf8ToUtf16(valueAttribute(parent, key).value());
    const size_t length = text.size() < kNameChars - 1 ? text.size() : kNameChars - 1;
    std::memcpy(name, text.data(), length * sizeof(char16_t));
    *field = lookUpId(name, names, &ITaviNameInterface::GetTextureId);
}

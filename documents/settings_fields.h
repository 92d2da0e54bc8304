// Field tables of the settings document: each section is a list of rows {key, kind, offset,
// width, words} in reading order, and one interpreter reads any of them over a block of bytes.
//
// The settings bools are why this is not the material interpreter: they are 32-bit, and a bool
// that a document leaves out does not keep the scene's value but repeats the bool read before
// it. One scratch byte carries that value through the whole pass (SettingsPass), so the reading
// order of the rows is part of the behaviour and must stay as the tables have it.
#pragma once
#include "documents/xml_value_codec.h"

#include <cstddef>
#include <cstdint>

class ITaviNameInterface;

enum class SettingKind : uint8_t {
    Int,         // i32; absent keeps the value
    Float,       // f32; absent keeps the value
    Enum,        // u32 index into `words`; absent or an unknown word keeps the value
    String,      // char16_t[width / 2]; absent clears it, a longer text is cut
    Bool,        // u32 0 or 1; present sets the scratch byte and the field, absent copies the scratch
    QuietBool,   // u32 0 or 1; present sets only the field, absent copies the scratch
    Switch,      // u32 0 or 1 of the tone operator; absent is 0
    Flag,        // one byte 0 or 1 of an AOV channel; absent keeps the value
    Color,       // ColorRGB; each missing channel keeps its value
    Curve,       // kCurveSegments segments and their derived bytes; absent leaves the slot alone
    MaterialRef, // i32 material id, attribute `name`; absent gives -1
};

constexpr uint32_t kCurveSegments = 32;
constexpr uint32_t kCurveDerivedBytes = 0x84;
constexpr uint32_t kCurveBytes = kCurveSegments * sizeof(SplineSegment) + kCurveDerivedBytes;
// The longest text field of the settings: a path.
constexpr uint32_t kSettingMaxChars = kPathChars;

struct SettingField {
    const char* key;
    SettingKind kind;
    uint32_t offset;
    uint32_t width; // bytes in the block
    WordTable words = nullptr;
};

// ---- Building rows -----------------------------------------------------------------------------

constexpr SettingField intSetting(const char* key, uint32_t offset) {
    return {key, SettingKind::Int, offset, 4};
}
constexpr SettingField floatSetting(const char* key, uint32_t offset) {
    return {key, SettingKind::Float, offset, 4};
}
constexpr SettingField enumSetting(const char* key, uint32_t offset, WordTable words) {
    return {key, SettingKind::Enum, offset, 4, words};
}
constexpr SettingField stringSetting(const char* key, uint32_t offset, uint32_t capacity) {
    return {key, SettingKind::String, offset, capacity * 2};
}
constexpr SettingField boolSetting(const char* key, uint32_t offset) {
    return {key, SettingKind::Bool, offset, 4};
}
constexpr SettingField quietBoolSetting(const char* key, uint32_t offset) {
    return {key, SettingKind::QuietBool, offset, 4};
}
constexpr SettingField switchSetting(const char* key, uint32_t offset) {
    return {key, SettingKind::Switch, offset, 4};
}
constexpr SettingField flagSetting(const char* key, uint32_t offset) {
    return {key, SettingKind::Flag, offset, 1};
}
constexpr SettingField colorSetting(const char* key, uint32_t offset) {
    return {key, SettingKind::Color, offset, sizeof(ColorRGB)};
}
constexpr SettingField curveSetting(const char* key, uint32_t offset) {
    return {key, SettingKind::Curve, offset, kCurveBytes};
}
constexpr SettingField materialSetting(const char* key, uint32_t offset) {
    return {key, SettingKind::MaterialRef, offset, 4};
}

// ---- Compile-time checks -----------------------------------------------------------------------

// A row is well formed when it has a key, its width suits its kind, it is aligned for its
// values, and it lies within `limit` bytes of the block.
constexpr bool settingFits(const SettingField& field, uint32_t limit) {
    if (!field.key || field.key[0] == '\0') return false;
    uint32_t alignment = 4;
    switch (field.kind) {
    case SettingKind::String:
        if (field.width < 2 || field.width % 2 != 0 || field.width / 2 > kSettingMaxChars) return false;
        alignment = 2;
        break;
    case SettingKind::Enum:
        if (!field.words || field.width != 4) return false;
        break;
    case SettingKind::Flag:
        if (field.width != 1) return false;
        alignment = 1;
        break;
    case SettingKind::Color:
        if (field.width != sizeof(ColorRGB)) return false;
        break;
    case SettingKind::Curve:
        if (field.width != kCurveBytes) return false;
        break;
    default:
        if (field.width != 4) return false;
        break;
    }
    if (field.offset % alignment != 0) return false;
    return field.offset <= limit && field.width <= limit - field.offset;
}

template <size_t N> constexpr bool settingsFit(const SettingField (&fields)[N], uint32_t limit) {
    for (size_t i = 0; i < N; ++i) {
        if (!settingFits(fields[i], limit)) return false;
    }
    return true;
}

// No two rows of a table write the same bytes: a table with an overlap has a wrong offset.
template <size_t N> constexpr bool settingsDisjoint(const SettingField (&fields)[N]) {
    for (size_t i = 0; i < N; ++i) {
        for (size_t j = i + 1; j < N; ++j) {
            const bool apart = fields[i].offset + fields[i].width <= fields[j].offset ||
                               fields[j].offset + fields[j].width <= fields[i].offset;
            if (!apart) return false;
        }
    }
    return true;
}

// ---- The interpreter ---------------------------------------------------------------------------

// What lives for one pass over a settings document.
struct SettingsPass {
    // The last bool read. Its value before the first bool is not given by the format; the pass
    // starts it at 0.
    uint8_t scratch = 0;
    ITaviNameInterface* names = nullptr;
};

// Reads every row of the table from below `section` (null allowed: every key is absent) into
// the block of `blockSize` bytes at `block`. A row that would not lie inside the block is
// passed by.
void readSettingFields(const SettingField* fields, size_t count, pugi::xml_node section, uint8_t* block,
                       size_t blockSize, SettingsPass& pass);

template <size_t N>
void readSettingFields(const SettingField (&fields)[N], pugi::xml_node section, uint8_t* block,
                       size_t blockSize, SettingsPass& pass) {
    readSettingFields(fields, N, section, block, blockSize, pass);
}

// The text of attribute `value` of the key's element when it is there and not empty, else null:
// the settings bools count an empty value as absent.
const char* settingBoolText(pugi::xml_node section, const char* key);

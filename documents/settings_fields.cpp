#include "documents/settings_fields.h"

#include <cstring>

namespace {

template <class T> T load(const uint8_t* at) {
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

template <class T> void store(uint8_t* at, const T& value) {
    std::memcpy(at, &value, sizeof value);
}

void readBool(const SettingField& field, pugi::xml_node section, uint8_t* at, SettingsPass& pass) {
    const char* text = settingBoolText(section, field.key);
    if (!text) {
        store<uint32_t>(at, pass.scratch);
        return;
    }
    const uint8_t value = XmlParseBool(text) ? 1 : 0;
    if (field.kind == SettingKind::Bool) pass.scratch = value;
    store<uint32_t>(at, value);
}

void readCurve(pugi::xml_node section, const char* key, uint8_t* at) {
    pugi::xml_node element = section.child(key);
    if (!element) return;
    SplineSegment segments[kCurveSegments];
    std::memcpy(segments, at, sizeof segments);
    XmlReadSplineElement(element, segments, kCurveSegments);
    std::memcpy(at, segments, sizeof segments);
    // The engine derives these bytes from the segments; whatever the scene held is stale now.
    std::memset(at + sizeof segments, 0, kCurveDerivedBytes);
}

void readField(const SettingField& field, pugi::xml_node section, uint8_t* at, SettingsPass& pass) {
    switch (field.kind) {
    case SettingKind::Int: {
        int32_t value = load<int32_t>(at);
        XmlReadInt(section, field.key, &value);
        store(at, value);
        break;
    }
    case SettingKind::Float: {
        float value = load<float>(at);
        XmlReadFloat(section, field.key, &value);
        store(at, value);
        break;
    }
    case SettingKind::Enum: {
        uint32_t value = load<uint32_t>(at);
        XmlReadEnum(section, field.key, &value, field.words);
        store(at, value);
        break;
    }
    case SettingKind::String: {
        char16_t text[kSettingMaxChars];
        const size_t capacity = field.width / sizeof(char16_t);
        std::memcpy(text, at, field.width);
        XmlReadString(section, field.key, text, capacity);
        std::memcpy(at, text, field.width);
        break;
    }
    case SettingKind::Bool:
    case SettingKind::QuietBool:
        readBool(field, section, at, pass);
        break;
    case SettingKind::Switch: {
        const char* text = settingBoolText(section, field.key);
        store<uint32_t>(at, text && XmlParseBool(text) ? 1 : 0);
        break;
    }
    case SettingKind::Flag: {
        uint8_t value = *at;
        XmlReadBool(section, field.key, &value);
        *at = value;
        break;
    }
    case SettingKind::Color: {
        ColorRGB value = load<ColorRGB>(at);
        XmlReadColor(section, field.key, &value);
        store(at, value);
        break;
    }
    case SettingKind::Curve:
        readCurve(section, field.key, at);
        break;
    case SettingKind::MaterialRef: {
        int32_t value = load<int32_t>(at);
        XmlReadMaterialRef(section, field.key, &value, pass.names);
        store(at, value);
        break;
    }
    }
}

} // namespace

const char* settingBoolText(pugi::xml_node section, const char* key) {
    pugi::xml_attribute attribute = section.child(key).attribute("value");
    if (!attribute || attribute.value()[0] == '\0') return nullptr;
    return attribute.value();
}

void readSettingFields(const SettingField* fields, size_t count, pugi::xml_node section, uint8_t* block,
                       size_t blockSize, SettingsPass& pass) {
    for (size_t i = 0; i < count; ++i) {
        const SettingField& field = fields[i];
        if (field.offset > blockSize || field.width > blockSize - field.offset) continue;
        // The tables are checked at compile time; this guards a text longer than the buffer.
        if (field.kind == SettingKind::String && field.width > kSettingMaxChars * sizeof(char16_t)) continue;
        readField(field, section, block + field.offset, pass);
    }
}

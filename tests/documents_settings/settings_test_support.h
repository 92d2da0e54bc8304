// Helpers of the settings and camera document tests: files written by the test itself, a name
// interface that answers from a table and records its calls, and access to record bytes by
// offset, which is how the documents address their fields.
#pragma once
#include "bridge/name_interface.h"

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace settings_test {

// A folder of its own for one test, removed with everything in it at the end.
class TempFolder {
  public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // Writes `bytes` to a file of that name and returns its path as the client passes paths.
    std::u16string write(const std::string& name, const std::string& bytes) const;
    std::u16string pathOf(const std::string& name) const;
    std::string narrowPathOf(const std::string& name) const { return folder + "/" + name; }

  private:
    std::string folder;
};

// Texmap and material names resolve through fixed tables; other names get fresh ids from 500
// on, the empty name gives -1. Every call is written down as "<operation> <argument>".
class TableNames : public ITaviNameInterface {
  public:
    std::vector<std::string> calls;
    std::map<std::u16string, int32_t> texMaps;
    std::map<std::u16string, int32_t> materials;

    int32_t* GetTextureId(int32_t* result, const char16_t* name) override;
    const char16_t* GetTextureName(int32_t id) override;
    int32_t* GetTexMapId(int32_t* result, const char16_t* name) override;
    const char16_t* GetTexMapName(int32_t id) override;
    int32_t* GetMaterialId(int32_t* result, const char16_t* name) override;
    const char16_t* GetMaterialName(int32_t id) override;
    uint64_t GetModelId(const char16_t* name) override;
    const char16_t* GetModelName() override;
    void* destroy(uint32_t) override { return this; }

  private:
    int32_t nextId = 500;
    int32_t* lookUp(const char* operation, std::map<std::u16string, int32_t>& table, int32_t* result,
                    const char16_t* name);
};

std::string narrow(const std::u16string& text);

// Values at byte offsets of any record.
template <class T> uint32_t wordAt(const T& record, size_t offset) {
    uint32_t word;
    std::memcpy(&word, reinterpret_cast<const uint8_t*>(&record) + offset, sizeof word);
    return word;
}
template <class T> int32_t intAt(const T& record, size_t offset) {
    return static_cast<int32_t>(wordAt(record, offset));
}
template <class T> float floatAt(const T& record, size_t offset) {
    float value;
    std::memcpy(&value, reinterpret_cast<const uint8_t*>(&record) + offset, sizeof value);
    return value;
}
template <class T> uint8_t byteAt(const T& record, size_t offset) {
    return reinterpret_cast<const uint8_t*>(&record)[offset];
}
template <class T> void setWord(T& record, size_t offset, uint32_t word) {
    std::memcpy(reinterpret_cast<uint8_t*>(&record) + offset, &word, sizeof word);
}
template <class T> void setFloat(T& record, size_t offset, float value) {
    std::memcpy(reinterpret_cast<uint8_t*>(&record) + offset, &value, sizeof value);
}
// The wide text at `offset`, up to its terminator or `capacity` characters, in UTF-8.
template <class T> std::string textAt(const T& record, size_t offset, size_t capacity) {
    std::u16string text;
    for (size_t i = 0; i < capacity; ++i) {
        char16_t unit;
        std::memcpy(&unit, reinterpret_cast<const uint8_t*>(&record) + offset + 2 * i, sizeof unit);
        if (unit == 0) break;
        text.push_back(unit);
    }
    return narrow(text);
}
template <class T> void setText(T& record, size_t offset, const std::u16string& text) {
    std::memcpy(reinterpret_cast<uint8_t*>(&record) + offset, text.c_str(),
                (text.size() + 1) * sizeof(char16_t));
}

uint32_t bitsOf(float value);

} // namespace settings_test

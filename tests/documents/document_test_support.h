// Helpers of the document tests: a name interface that records every call, documents parsed
// from text, and document files written by the test itself.
#pragma once
#include "bridge/name_interface.h"

#include <pugixml.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace documents_test {

// Answers names and ids from a small table and writes down every call, in order, as text such
// as "TexMapName 7" or "MaterialId Wood". Unknown names get fresh ids from 100 on; the empty
// name is -1 and id -1 the empty name, as the registries do.
class RecordingNames : public ITaviNameInterface {
  public:
    std::vector<std::string> calls;

    void define(int32_t id, const std::u16string& name) {
        nameOf[id] = name;
        idOf[name] = id;
    }

    int32_t* GetTextureId(int32_t* result, const char16_t* name) override {
        return idCall("TextureId", result, name);
    }
    const char16_t* GetTextureName(int32_t id) override { return nameCall("TextureName", id); }
    int32_t* GetTexMapId(int32_t* result, const char16_t* name) override {
        return idCall("TexMapId", result, name);
    }
    const char16_t* GetTexMapName(int32_t id) override { return nameCall("TexMapName", id); }
    int32_t* GetMaterialId(int32_t* result, const char16_t* name) override {
        return idCall("MaterialId", result, name);
    }
    const char16_t* GetMaterialName(int32_t id) override { return nameCall("MaterialName", id); }
    uint64_t GetModelId(const char16_t* name) override {
        calls.push_back("ModelId " + narrow(name));
        return 0;
    }
    const char16_t* GetModelName() override {
        calls.push_back("ModelName");
        return u"";
    }
    void* destroy(uint32_t) override { return this; }

    static std::string narrow(const char16_t* text);

  private:
    std::map<int32_t, std::u16string> nameOf;
    std::map<std::u16string, int32_t> idOf;
    int32_t nextId = 100;

    int32_t* idCall(const char* operation, int32_t* result, const char16_t* name);
    const char16_t* nameCall(const char* operation, int32_t id);
};

// Parses `text` into `doc` and fails the test if it doesn't parse.
void parse(pugi::xml_document& doc, const char* text);
// The document as text, without indentation, for comparisons.
std::string serialise(const pugi::xml_node& node);

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

  private:
    std::string folder;
};

// UTF-16 little-endian bytes with a byte order mark, from UTF-8 text.
std::string utf16LeWithBom(const std::string& utf8);

} // namespace documents_test

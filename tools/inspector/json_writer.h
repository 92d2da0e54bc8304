// A small writer of one JSON document: commas and escapes are its business, structure the
// caller's.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace inspector {

class JsonWriter {
  public:
    JsonWriter& beginObject() { return open('{'); }
    JsonWriter& endObject() { return close('}'); }
    JsonWriter& beginArray() { return open('['); }
    JsonWriter& endArray() { return close(']'); }
    // The key of the next value inside an object.
    JsonWriter& key(const std::string& name);

    JsonWriter& value(const std::string& text);
    JsonWriter& value(const char* text) { return value(std::string(text)); }
    JsonWriter& value(int64_t number);
    JsonWriter& value(int32_t number) { return value(int64_t(number)); }
    JsonWriter& value(uint32_t number) { return value(int64_t(number)); }
    JsonWriter& value(uint64_t number);
    // Not-a-number and the infinities have no JSON form and are written as null.
    JsonWriter& value(double number);
    // The shortest digits that read back as the same float.
    JsonWriter& value(float number);
    JsonWriter& value(bool flag);
    JsonWriter& null();

    const std::string& text() const { return out_; }

  private:
    JsonWriter& open(char bracket);
    JsonWriter& close(char bracket);
    void separate();

    std::string out_;
    // One entry per open bracket: whether it holds a value yet.
    std::vector<bool> filled_;
    bool afterKey_ = false;
};

// `text` as a JSON string literal, quotes included.
std::string jsonString(const std::string& text);

} // namespace inspector

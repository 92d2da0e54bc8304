#include "documents/texmaps/entry_lists.h"

#include "documents/xml_value_codec.h"

#include <cstring>

pugi::xml_node appendChildElement(pugi::xml_node parent, const char* name) {
    return parent.type() == pugi::node_element ? parent.append_child(name) : pugi::xml_node();
}

float readFloatAttribute(pugi::xml_node element, const char* name, float absent) {
    const pugi::xml_attribute attribute = element.attribute(name);
    return attribute ? narrowToFloat(XmlParseDouble(attribute.value())) : absent;
}

void appendFloatAttribute(pugi::xml_node element, const char* name, float value) {
    if (element.type() != pugi::node_element) return;
    char text[128];
    XmlFormatFloat(value, text);
    element.append_attribute(name).set_value(text);
}

bool readIdAttribute(pugi::xml_node element, int32_t* id) {
    const pugi::xml_attribute attribute = element.attribute("id");
    if (!attribute || attribute.value()[0] == '\0') return false;
    *id = attribute.as_int();
    return true;
}

void appendIdAttribute(pugi::xml_node element, int64_t id) {
    if (element.type() == pugi::node_element) element.append_attribute("id").set_value(static_cast<long long>(id));
}

bool isListItem(const pugi::xml_node& child, const char* name) {
    return child.type() == pugi::node_element && XmlNameEqualsNoCase(child.name(), name);
}

uint32_t readEntryList(pugi::xml_node parent, const EntryList& list, uint8_t* entries,
                       ITaviNameInterface* names) {
    std::memset(entries, 0, entryListBytes(list));
    uint32_t count = 0;
    for (pugi::xml_node child = parent.first_child(); child && count < list.capacity;
         child = child.next_sibling()) {
        if (!isListItem(child, list.element)) continue;
        uint8_t* entry = entries + static_cast<size_t>(count) * list.entryBytes;
        std::memset(entry, 0, list.entryBytes);
        readFields(list.fields, list.fieldCount, child, entry, list.entryBytes, names);
        ++count;
    }
    return count;
}

namespace {

int64_t entriesInUse(const EntryList& list, int64_t count) {
    if (count < 0) return 0;
    return count > list.capacity ? list.capacity : count;
}

} // namespace

void writeEntryList(pugi::xml_node parent, const EntryList& list, const uint8_t* entries, int64_t count,
                    ITaviNameInterface* names) {
    count = entriesInUse(list, count);
    for (int64_t i = 0; i < count; ++i) {
        pugi::xml_node element = appendChildElement(parent, list.element);
        appendIdAttribute(element, i);
        writeFields(list.fields, list.fieldCount, element, entries + static_cast<size_t>(i) * list.entryBytes,
                    list.entryBytes, names);
    }
}

void entryListReferences(const EntryList& list, const uint8_t* entries, int64_t count,
                         const ReferenceVisitor& visit) {
    count = entriesInUse(list, count);
    for (int64_t i = 0; i < count; ++i)
        forEachReference(list.fields, list.fieldCount, entries + static_cast<size_t>(i) * list.entryBytes,
                         list.entryBytes, visit);
}

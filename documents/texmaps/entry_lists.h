// Repeated elements of texmap documents: lists of entries that share one field table (layers,
// channels), and the attribute-level numbers that the lists carry besides their tables.
#pragma once
#include "documents/field_table.h"

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>

class ITaviNameInterface;

// A fixed array of entries in the record, one element per entry in the document.
struct EntryList {
    const char* element;           // each entry's element, matched without regard to ASCII case
    const FieldDescriptor* fields; // one entry's table; offsets within the entry
    size_t fieldCount;
    uint32_t entryBytes;
    uint32_t capacity;
};

constexpr uint32_t entryListBytes(const EntryList& list) {
    return list.entryBytes * list.capacity;
}

// Zeroes the whole array, then reads each child of `parent` named like the list's element, in
// document order, into the next entry (zeroed once more), up to the capacity. Position comes
// from the order alone; any `id` attribute is left unread. Returns how many entries were read.
uint32_t readEntryList(pugi::xml_node parent, const EntryList& list, uint8_t* entries,
                       ITaviNameInterface* names);

// Appends an element with attribute `id` for each of the first `count` entries (negative counts
// as none, more than the capacity as the capacity). Without an element to append to, only the
// name calls of the entries happen.
void writeEntryList(pugi::xml_node parent, const EntryList& list, const uint8_t* entries, int64_t count,
                    ITaviNameInterface* names);

// Visits the references of the first `count` entries, counted as the writer counts them.
void entryListReferences(const EntryList& list, const uint8_t* entries, int64_t count,
                         const ReferenceVisitor& visit);

// ---- Attribute-level values --------------------------------------------------------------------

// The child element `name` of `parent`, or a null node when `parent` is not an element.
pugi::xml_node appendChildElement(pugi::xml_node parent, const char* name);

// A float attribute in the codec's text form; an absent attribute reads as `absent`.
float readFloatAttribute(pugi::xml_node element, const char* name, float absent);
void appendFloatAttribute(pugi::xml_node element, const char* name, float value);

// An `id` attribute with text, read with the integer rule. False when absent or empty.
bool readIdAttribute(pugi::xml_node element, int32_t* id);
void appendIdAttribute(pugi::xml_node element, int64_t id);

// A child element is a list item when it is an element whose name matches, ignoring case.
bool isListItem(const pugi::xml_node& child, const char* name);

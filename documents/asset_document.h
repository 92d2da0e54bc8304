// The frame that material and texmap documents share, and the dispatches over a kind's type
// tables:
//
//   <Root type="WORD">
//     <Common> the head </Common>
//     the shared blocks, for texture maps of the mapped shape
//     <SpecificParameters> the type's keys </SpecificParameters>
//   </Root>
//
// The two kinds differ only in what their AssetFrame says; material_document.h and
// texmap_document.h give each kind its typed face.
#pragma once
#include "documents/field_table.h"

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>

class ITaviNameInterface;

struct AssetFrame {
    const char* rootWord;
    WordTable typeWords; // by type number; the root's `type` attribute
    size_t recordSize;
    // Rows below the root that every type reads and writes (Common/Name, ...), on the whole record.
    const FieldDescriptor* head;
    size_t headCount;
    // Rows below the root ahead of the type's keys, for tables of the mapped shape.
    const FieldDescriptor* blocks;
    size_t blockCount;
    // The table of a type number, null for a number without one.
    const TypeDescriptor* (*tableOf)(int32_t type);
    // Numbers whose documents hold nothing to read (materials 9 and 27): a read succeeds at once
    // and the walk names nothing. Null when a kind has none.
    bool (*withoutFields)(int32_t type);
};

// A document file parsed once: first asked for its type, then read over a record.
class AssetDocument {
  public:
    // A file that can't be read or parsed gives a document that names no type and reads nothing.
    AssetDocument(const AssetFrame& frame, const char16_t* path);
    AssetDocument(const AssetDocument&) = delete;
    AssetDocument& operator=(const AssetDocument&) = delete;

    // The number of the root's `type` word (any case); 0 without the kind's root, without the
    // attribute, for an unknown word and for a document that didn't load.
    int32_t type() const;
    // Reads the document over the record by the table of the record's `type`: the type, the
    // head, the shared blocks where the table is mapped, then the type's keys. A type without
    // fields succeeds untouched; a type without a table, and a document that didn't load, fail
    // untouched. A table with a result texture succeeds only when that texture is set.
    bool read(uint8_t* record, ITaviNameInterface* names) const;
    bool readWithTable(const TypeDescriptor& table, uint8_t* record, ITaviNameInterface* names) const;

  private:
    const AssetFrame& frame_;
    pugi::xml_document doc_;
    pugi::xml_node root_;
    bool loaded_ = false;
};

// The typed face of one kind.
template <class Record, const AssetFrame& Frame> class RecordDocument {
  public:
    explicit RecordDocument(const char16_t* path) : document_(Frame, path) {}
    int32_t type() const { return document_.type(); }
    bool read(Record* record, ITaviNameInterface* names) const {
        return document_.read(reinterpret_cast<uint8_t*>(record), names);
    }
    bool readWithTable(const TypeDescriptor& table, Record* record, ITaviNameInterface* names) const {
        return document_.readWithTable(table, reinterpret_cast<uint8_t*>(record), names);
    }

  private:
    AssetDocument document_;
};

// The root's `type` (an unknown word leaves it) and the head rows; a null root reads as all
// missing. The write puts the type's word (none outside the table) and the head.
void readAssetHead(const AssetFrame& frame, pugi::xml_node root, uint8_t* record);
void writeAssetHead(const AssetFrame& frame, pugi::xml_node root, const uint8_t* record);

// Builds the record's whole document into `doc`, for a document file or for checks that read it
// back. The second form picks the table by the record's type and leaves `doc` empty, returning
// false, for a type without one.
void buildAssetDocument(const AssetFrame& frame, const TypeDescriptor& table, const uint8_t* record,
                        ITaviNameInterface* names, pugi::xml_document* doc);
bool buildAssetDocument(const AssetFrame& frame, const uint8_t* record, ITaviNameInterface* names,
                        pugi::xml_document* doc);

// Asks `names` for every reference of the record, in the order in which the built document
// names them: what makes the referenced items reach the engine ahead of this one. An unknown
// type, or one without fields, asks nothing.
void walkAssetReferences(const AssetFrame& frame, const uint8_t* record, ITaviNameInterface* names);

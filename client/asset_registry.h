// Every asset of a run by name and by id: textures, texture maps, materials and the names of
// models. Scene adoption fills it first; from then on a look-up of an unknown name creates the
// item (from its document, where the options name a folder). Once resolution has begun,
// asking for the name of an id hands the item to the engine, exactly once and after
// everything it names.
#pragma once
#include "bridge/name_interface.h"
#include "bridge/render_callback.h"
#include "bridge/tracer.h"
#include "client/client_options.h"
#include "client/message_log.h"
#include "client/registry.h"

#include <cstdint>

class AssetRegistry;

struct TextureAssets {
    using Entry = TextureEntry;
    static constexpr bool kKeyedByAskedName = true;
    static const char16_t* name(const Entry& e) { return e.kind == TextureKind::Data ? e.data.name : e.file.name; }
    static char16_t* nameField(Entry& e) { return e.kind == TextureKind::Data ? e.data.name : e.file.name; }
    static int32_t id(const Entry& e) { return e.id; }
    static void setId(Entry& e, int32_t id) { e.id = id; }
    static Entry* newEntry() { return newZeroedEntry<Entry>(); }
    static Entry* newCreated();
    static void release(Entry& e);
    static bool handOver(AssetRegistry& assets, Entry& e);
};

template <class RecordType>
struct DocumentedAssets {
    using Record = RecordType;
    using Entry = DocumentedEntry<Record>;
    static constexpr bool kKeyedByAskedName = false;
    static const char16_t* name(const Entry& e) { return e.record ? e.record->Name : e.keptName; }
    static int32_t id(const Entry& e) { return e.record ? e.record->id : e.keptId; }
    // Only while the node holds its record: before it has been handed over.
    static char16_t* nameField(Entry& e) { return e.record->Name; }
    static void setId(Entry& e, int32_t id) { e.record->id = id; }
    static Entry* newEntry() { return newDocumentedEntry<Record>(false); }
    static Entry* newCreated();
    static void release(Entry& e);
    // False, with the error logged, when the item is met again while it is being handed over.
    static bool handOver(AssetRegistry& assets, Entry& e);
};
using TexMapAssets = DocumentedAssets<TexMapRecord>;
using MaterialAssets = DocumentedAssets<MaterialRecord>;

class AssetRegistry {
  public:
    // Documents read for the registry ask `names` for what they refer to; the engine is handed
    // `callback` with each texture.
    AssetRegistry(const ClientOptions& options, MessageLog& log, ITaviNameInterface& names,
                  ITaviRenderCallback& callback)
        : options_(options), log_(log), names_(names), callback_(callback) {}
    ~AssetRegistry() { release(); }
    AssetRegistry(const AssetRegistry&) = delete;
    AssetRegistry& operator=(const AssetRegistry&) = delete;

    // -1 for an empty name. The look-up-only forms never create and never touch a folder.
    int32_t textureId(const char16_t* name, bool lookupOnly = false);
    int32_t texmapId(const char16_t* name, bool lookupOnly = false);
    int32_t materialId(const char16_t* name, bool lookupOnly = false);

    // The empty text for -1 and unknown ids.
    const char16_t* textureName(int32_t id);
    const char16_t* texmapName(int32_t id);
    const char16_t* materialName(int32_t id);

    // Models are named for documents and engines to find; their handle is their node.
    void nameModel(const char16_t* name, void*& modelNode);
    // 0 for an empty or unknown name.
    uint64_t modelHandle(const char16_t* name) const;

    // Where the scene adopts what it reads.
    Registry<TextureAssets>& textures() { return textures_; }
    Registry<TexMapAssets>& texmaps() { return texmaps_; }
    Registry<MaterialAssets>& materials() { return materials_; }

    // From here on, asking for a name hands the item to `tracer`.
    void beginResolution(ITaviTracer* tracer) {
        tracer_ = tracer;
        resolving_ = true;
    }
    void endResolution() { resolving_ = false; }

    void release();

  private:
    friend struct TextureAssets;
    template <class Record>
    friend struct DocumentedAssets;

    // Names whose documents are being read to create them, innermost first. Such an item is
    // registered only once its document is read, so a document that names itself, or a ring
    // of documents naming each other, is caught here rather than read again without end.
    struct Creation {
        const char16_t* name;
        const void* kind;
        const Creation* outer;
    };

    template <class Kind>
    int32_t createFromDocument(Registry<Kind>& registry, const char16_t* name, bool lookupOnly);
    template <class Kind>
    const char16_t* resolve(Registry<Kind>& registry, int32_t id);
    template <class Kind>
    void readDocument(typename Kind::Entry& entry, const char16_t* name);
    void reportRecursion(const char16_t* format, const char16_t* name);

    const ClientOptions& options_;
    MessageLog& log_;
    ITaviNameInterface& names_;
    ITaviRenderCallback& callback_;
    ITaviTracer* tracer_ = nullptr;
    bool resolving_ = false;
    const Creation* creating_ = nullptr;
    Registry<TextureAssets> textures_;
    Registry<TexMapAssets> texmaps_;
    Registry<MaterialAssets> materials_;
    NameTable modelNames_;
    ModelNameRecord* models_ = nullptr;
};

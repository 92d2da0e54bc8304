#include "client/asset_registry.h"

#include "client/messages.h"
#include "documents/material_document.h"
#include "documents/texmap_document.h"
#include "scene/scene_readers.h"

#include <cstring>
#include <string>
#include <string_view>

namespace {

const char16_t kEmptyText[] = u"";

// What differs between texture maps and materials as documents make them and the engine
// takes them.
template <class Record>
struct Documents;

template <>
struct Documents<TexMapRecord> {
    static constexpr const char16_t* kRecursion = messages::kTexMapRecursion;
    static const std::u16string& folder(const ClientOptions& o) { return o.texmapsPath; }
    using Document = TexMapDocument;
    static void walk(TexMapRecord& record, ITaviNameInterface* names) { WalkTexMapReferences(&record, names); }
    static int32_t add(ITaviTracer* tracer, TexMapRecord& record) { return tracer->addTexMap(&record); }
};

template <>
struct Documents<MaterialRecord> {
    static constexpr const char16_t* kRecursion = messages::kMaterialRecursion;
    static const std::u16string& folder(const ClientOptions& o) { return o.materialsPath; }
    using Document = MaterialDocument;
    static void walk(MaterialRecord& record, ITaviNameInterface* names) { WalkMaterialReferences(&record, names); }
    static int32_t add(ITaviTracer* tracer, MaterialRecord& record) { return tracer->addMaterial(&record); }
};

// The volume cache of a material lives in the client only until the engine has taken it.
void releaseRecord(TexMapRecord&) {}
void releaseRecord(MaterialRecord& record) { releaseMaterial(record); }

} // namespace

namespace registry_names {

char16_t foldAscii(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; }

bool sameName(const char16_t* stored, size_t capacity, const char16_t* name) {
    size_t i = 0;
    for (; i < capacity && stored[i] && name[i]; ++i)
        if (foldAscii(stored[i]) != foldAscii(name[i])) return false;
    bool storedEnds = i == capacity || stored[i] == 0;
    return storedEnds && name[i] == 0;
}

} // namespace registry_names

using registry_names::isEmpty;

// ---------------------------------------------------------------- the kinds

TextureEntry* TextureAssets::newCreated() {
    Entry* entry = newEntry();
    entry->file.id = -1;
    return entry;
}

void TextureAssets::release(Entry& e) {
    if (e.kind == TextureKind::Data) releaseTextureData(e.data);
}

bool TextureAssets::handOver(AssetRegistry& assets, Entry& e) {
    ITaviRenderCallback* callback = &assets.callback_;
    assets.log_.raise(e.kind == TextureKind::Data ? assets.tracer_->addTextureData(&e.data, callback)
                                                  : assets.tracer_->addTextureFile(&e.file, callback));
    return true;
}

template <class Record>
DocumentedEntry<Record>* DocumentedAssets<Record>::newCreated() {
    Entry* entry = newDocumentedEntry<Record>(true);
    entry->record->id = -1;
    return entry;
}

template <class Record>
void DocumentedAssets<Record>::release(Entry& e) {
    if (!e.record) return;
    releaseRecord(*e.record);
    if (!e.recordApart) return;
    ::operator delete(e.record);
    e.record = nullptr;
}

// The engine has copied what it needs of the record; a record of its own block goes back, and
// the node goes on with its name and id. A name that fills its field without an end is read on
// into the record by whoever asks for it, so such a record stays.
template <class Record>
void keepNameAndId(DocumentedEntry<Record>& e) {
    const Record& record = *e.record;
    if (!e.recordApart || !std::char_traits<char16_t>::find(record.Name, kNameChars, u'\0')) return;
    std::memcpy(e.keptName, record.Name, sizeof record.Name);
    e.keptId = record.id;
    DocumentedAssets<Record>::release(e);
}

template <class Record>
bool DocumentedAssets<Record>::handOver(AssetRegistry& assets, Entry& e) {
    if (e.busy) {
        assets.reportRecursion(Documents<Record>::kRecursion, name(e));
        return false;
    }
    e.busy = 1;
    Record& record = *e.record;
    if (!e.documentTried) {
        assets.readDocument<DocumentedAssets>(e, record.Name);
        e.documentTried = 1;
    }
    Documents<Record>::walk(record, &assets.names_);
    assets.log_.raise(Documents<Record>::add(assets.tracer_, record));
    releaseRecord(record);
    keepNameAndId(e);
    e.busy = 0;
    return true;
}

template struct DocumentedAssets<TexMapRecord>;
template struct DocumentedAssets<MaterialRecord>;

// ---------------------------------------------------------------- creation

int32_t AssetRegistry::textureId(const char16_t* name, bool lookupOnly) {
    if (isEmpty(name)) return -1;
    if (const TextureEntry* found = textures_.find(name)) return found->id;
    if (lookupOnly) return -1;
    return textures_.enter(textures_.create(), name);
}

int32_t AssetRegistry::texmapId(const char16_t* name, bool lookupOnly) {
    return createFromDocument(texmaps_, name, lookupOnly);
}

int32_t AssetRegistry::materialId(const char16_t* name, bool lookupOnly) {
    return createFromDocument(materials_, name, lookupOnly);
}

void AssetRegistry::reportRecursion(const char16_t* format, const char16_t* name) {
    log_.fail(formatWide(format, name).c_str(), StatusErrors);
}

// A document of the item's name in the kind's folder replaces the record, type included.
template <class Kind>
void AssetRegistry::readDocument(typename Kind::Entry& entry, const char16_t* name) {
    using Source = Documents<typename Kind::Record>;
    const std::u16string& folder = Source::folder(options_);
    if (folder.empty()) return;
    // Parsed once: the type is detected from the document that is then read.
    const typename Source::Document document((folder + name + u".xml").c_str());
    if (int32_t type = document.type()) {
        entry.record->type = type;
        document.read(entry.record, &names_);
    }
}

template <class Kind>
int32_t AssetRegistry::createFromDocument(Registry<Kind>& registry, const char16_t* name, bool lookupOnly) {
    using Source = Documents<typename Kind::Record>;
    if (isEmpty(name)) return -1;
    if (const auto* found = registry.find(name)) return Kind::id(*found);
    if (lookupOnly) return -1;
    for (const Creation* outer = creating_; outer; outer = outer->outer) {
        if (outer->kind == &registry && std::u16string_view(outer->name) == name) {
            reportRecursion(Source::kRecursion, name);
            return -1;
        }
    }
    auto* entry = registry.create();
    // What the document refers to gets its id before the item itself.
    const Creation creation{name, &registry, creating_};
    creating_ = &creation;
    readDocument<Kind>(*entry, name);
    creating_ = creation.outer;
    entry->documentTried = 1;
    return registry.enter(entry, name);
}

// ---------------------------------------------------------------- resolution

template <class Kind>
const char16_t* AssetRegistry::resolve(Registry<Kind>& registry, int32_t id) {
    if (id == -1) return kEmptyText;
    auto* entry = registry.withId(id);
    if (!entry) return kEmptyText;
    if (!resolving_ || entry->handed) return Kind::name(*entry);
    if (!Kind::handOver(*this, *entry)) return kEmptyText;
    entry->handed = 1;
    return Kind::name(*entry);
}

const char16_t* AssetRegistry::textureName(int32_t id) { return resolve(textures_, id); }
const char16_t* AssetRegistry::texmapName(int32_t id) { return resolve(texmaps_, id); }
const char16_t* AssetRegistry::materialName(int32_t id) { return resolve(materials_, id); }

// ---------------------------------------------------------------- models

void AssetRegistry::nameModel(const char16_t* name, void*& modelNode) {
    auto* model = newZeroedEntry<ModelNameRecord>();
    model->next = models_;
    models_ = model;
    model->handle = reinterpret_cast<uint64_t>(model);
    modelNode = model;
    copyBounded(model->name, kNameChars, name);
    // A model that cannot be found by name still renders.
    modelNames_.insert(nameKey(model->name), model);
}

uint64_t AssetRegistry::modelHandle(const char16_t* name) const {
    if (isEmpty(name)) return 0;
    const uint64_t key = nameKey(name);
    for (NameTable::Entry* e = modelNames_.find(key); e; e = NameTable::next(e, key)) {
        auto* model = static_cast<ModelNameRecord*>(e->value);
        if (registry_names::sameName(model->name, kNameChars, name)) return model->handle;
    }
    return 0;
}

void AssetRegistry::release() {
    textures_.release();
    texmaps_.release();
    materials_.release();
    while (models_) {
        ModelNameRecord* next = models_->next;
        ::operator delete(models_);
        models_ = next;
    }
}

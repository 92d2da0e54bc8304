// The name registries behind ITaviNameInterface. Asking for the name of an id, once
// `resolving` is on, loads the item's document, resolves what it refers to and hands it to
// the engine, exactly once and dependents first; asking for the id of an unknown name
// creates the item.
#include "client/file_renderer.h"
#include "client/messages.h"
#include "common/hash.h"
#include "common/wide_format.h"
#include "documents/material_document.h"
#include "documents/texmap_document.h"
#include "scene/scene_readers.h"

#include <cstring>
#include <new>
#include <string_view>

namespace {

const char16_t kEmptyText[] = u"";

char16_t foldAscii(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; }

// Case-insensitive, but only among names of equal hash: in practice names differing in case
// make two records.
bool sameName(const char16_t* stored, size_t capacity, const char16_t* name) {
    size_t i = 0;
    for (; i < capacity && stored[i] && name[i]; ++i)
        if (foldAscii(stored[i]) != foldAscii(name[i])) return false;
    bool storedEnds = i == capacity || stored[i] == 0;
    return storedEnds && name[i] == 0;
}

bool isEmpty(const char16_t* name) { return !name || !name[0]; }

uint64_t idKey(int32_t id) { return static_cast<uint64_t>(static_cast<int64_t>(id)); }

std::u16string documentPath(const std::u16string& folder, const char16_t* name) {
    return folder + name + u".xml";
}

} // namespace

// ---------------------------------------------------------------- lookups

TextureEntryHead* FileRenderer::findTexture(const char16_t* name) const {
    uint64_t key = nameKey(name);
    for (NameTable::Entry* e = textureNames.find(key); e; e = NameTable::next(e, key)) {
        auto* head = static_cast<TextureEntryHead*>(e->value);
        if (sameName(textureName(head), kNameChars, name)) return head;
    }
    return nullptr;
}

template <class Kind>
typename Kind::Entry* FileRenderer::findAsset(const char16_t* name) {
    uint64_t key = nameKey(name);
    for (NameTable::Entry* e = Kind::names(*this).find(key); e; e = NameTable::next(e, key)) {
        auto* entry = static_cast<typename Kind::Entry*>(e->value);
        if (sameName(entry->record.Name, kNameChars, name)) return entry;
    }
    return nullptr;
}

// ---------------------------------------------------------------- texture maps and materials
// The two kinds resolve alike; only their folder, documents and engine operation differ.

namespace {

struct TexMapKind {
    using Entry = TexMapEntry;
    static constexpr char16_t kRecursion[] = u"Error: texmap %ls recurrently referenced by itself.";
    static const std::u16string& folder(const ClientOptions& o) { return o.texmapsPath; }
    static NameTable& names(FileRenderer& r) { return r.texmapNames; }
    static NameTable& ids(FileRenderer& r) { return r.texmapIds; }
    static Entry*& list(FileRenderer& r) { return r.texmapRecords; }
    static IdCounter& nextId(FileRenderer& r) { return r.nextTexmapId; }
    static int32_t detect(const char16_t* path) { return DetectTexMapType(path); }
    static void read(Entry& e, const char16_t* path, ITaviNameInterface* names) {
        ReadTexMapDocument(&e.record, path, names);
    }
    static void walk(Entry& e, ITaviNameInterface* names) { WalkTexMapReferences(&e.record, names); }
    static int32_t add(ITaviTracer* tracer, Entry& e) { return tracer->addTexMap(&e.record); }
    static void afterAdd(Entry&) {}
};

struct MaterialKind {
    using Entry = MaterialEntry;
    static constexpr char16_t kRecursion[] = u"Error: material %ls recurrently referenced by itself.";
    static const std::u16string& folder(const ClientOptions& o) { return o.materialsPath; }
    static NameTable& names(FileRenderer& r) { return r.materialNames; }
    static NameTable& ids(FileRenderer& r) { return r.materialIds; }
    static Entry*& list(FileRenderer& r) { return r.materialRecords; }
    static IdCounter& nextId(FileRenderer& r) { return r.nextMaterialId; }
    static int32_t detect(const char16_t* path) { return DetectMaterialType(path); }
    static void read(Entry& e, const char16_t* path, ITaviNameInterface* names) {
        ReadMaterialDocument(&e.record, path, names);
    }
    static void walk(Entry& e, ITaviNameInterface* names) { WalkMaterialReferences(&e.record, names); }
    static int32_t add(ITaviTracer* tracer, Entry& e) { return tracer->addMaterial(&e.record); }
    // The volume cache lives in the client only until the engine has taken the material.
    static void afterAdd(Entry& e) { releaseMaterial(e.record); }
};

// A document of the item's name in the kind's folder replaces the record, type included.
template <class Kind>
void readDocument(FileRenderer& r, typename Kind::Entry& entry, const char16_t* name) {
    const std::u16string& folder = Kind::folder(*r.options);
    if (folder.empty()) return;
    std::u16string path = documentPath(folder, name);
    if (int32_t type = Kind::detect(path.c_str())) {
        entry.record.type = type;
        Kind::read(entry, path.c_str(), &r);
    }
}

template <class Kind>
int32_t findOrCreateAsset(FileRenderer& r, const char16_t* name, bool lookupOnly) {
    if (isEmpty(name)) return -1;
    if (auto* found = r.findAsset<Kind>(name)) return found->record.id;
    if (lookupOnly) return -1;
    for (const FileRenderer::Creation* outer = r.creating; outer; outer = outer->outer) {
        if (outer->kind == Kind::kRecursion && std::u16string_view(outer->name) == name) {
            r.reportError(formatWide(Kind::kRecursion, name).c_str(), 0);
            r.raiseStatus(StatusErrors);
            return -1;
        }
    }
    auto* entry = newZeroedEntry<typename Kind::Entry>();
    entry->record.id = -1;
    entry->next = Kind::list(r);
    Kind::list(r) = entry;
    // What the document refers to gets its id before the item itself.
    const FileRenderer::Creation creation{name, Kind::kRecursion, r.creating};
    r.creating = &creation;
    readDocument<Kind>(r, *entry, name);
    r.creating = creation.outer;
    entry->documentTried = 1;
    entry->record.id = Kind::nextId(r).take();
    copyBounded(entry->record.Name, kNameChars, name);
    Kind::names(r).insert(nameKey(entry->record.Name), entry);
    Kind::ids(r).insert(idKey(entry->record.id), entry);
    return entry->record.id;
}

template <class Entry>
Entry* entryWithId(const NameTable& ids, int32_t id) {
    uint64_t key = static_cast<uint64_t>(static_cast<int64_t>(id));
    for (NameTable::Entry* e = ids.find(key); e; e = NameTable::next(e, key)) {
        auto* entry = static_cast<Entry*>(e->value);
        if (entry && entry->record.id == id) return entry;
    }
    return nullptr;
}


// Hands the item to the engine once, after everything it names.
template <class Kind>
const char16_t* resolveAsset(FileRenderer& r, int32_t id) {
    if (id == -1) return kEmptyText;
    auto* entry = entryWithId<typename Kind::Entry>(Kind::ids(r), id);
    if (!entry) return kEmptyText;
    if (!r.resolving || entry->handed) return entry->record.Name;
    if (entry->busy) {
        r.reportError(formatWide(Kind::kRecursion, entry->record.Name).c_str(), 0);
        r.raiseStatus(StatusErrors);
        return kEmptyText;
    }
    entry->busy = 1;
    if (!entry->documentTried) {
        readDocument<Kind>(r, *entry, entry->record.Name);
        entry->documentTried = 1;
    }
    Kind::walk(*entry, &r);
    r.raiseStatus(Kind::add(r.tracer, *entry));
    Kind::afterAdd(*entry);
    entry->handed = 1;
    entry->busy = 0;
    return entry->record.Name;
}

} // namespace

// ---------------------------------------------------------------- find or create

int32_t FileRenderer::findOrCreateTexture(const char16_t* name, bool lookupOnly) {
    if (isEmpty(name)) return -1;
    if (TextureEntryHead* found = findTexture(name)) return found->id;
    if (lookupOnly) return -1;
    auto* entry = newZeroedEntry<TextureFileEntry>();
    entry->kind = TextureKindFile;
    entry->record.id = -1;
    entry->next = textureFiles;
    textureFiles = entry;
    entry->id = nextTextureId.take();
    copyBounded(entry->record.name, kNameChars, name);
    // Keyed by the name as asked, not by the stored copy.
    textureNames.insert(nameKey(name), entry);
    textureIds.insert(idKey(entry->id), entry);
    return entry->id;
}

int32_t FileRenderer::findOrCreateTexMap(const char16_t* name, bool lookupOnly) {
    return findOrCreateAsset<TexMapKind>(*this, name, lookupOnly);
}

int32_t FileRenderer::findOrCreateMaterial(const char16_t* name, bool lookupOnly) {
    return findOrCreateAsset<MaterialKind>(*this, name, lookupOnly);
}

int32_t* FileRenderer::GetTextureId(int32_t* result, const char16_t* name) {
    *result = findOrCreateTexture(name, false);
    return result;
}

int32_t* FileRenderer::GetTexMapId(int32_t* result, const char16_t* name) {
    *result = findOrCreateTexMap(name, false);
    return result;
}

int32_t* FileRenderer::GetMaterialId(int32_t* result, const char16_t* name) {
    *result = findOrCreateMaterial(name, false);
    return result;
}

// ---------------------------------------------------------------- names of ids

const char16_t* FileRenderer::GetTextureName(int32_t id) {
    if (id == -1) return kEmptyText;
    uint64_t key = idKey(id);
    NameTable::Entry* e = textureIds.find(key);
    while (e && !e->value) e = NameTable::next(e, key);
    if (!e) return kEmptyText;
    auto* head = static_cast<TextureEntryHead*>(e->value);
    if (resolving && !head->handed) {
        if (head->kind == TextureKindData)
            raiseStatus(tracer->addTextureData(&reinterpret_cast<TextureDataEntry*>(head)->record, this));
        else
            raiseStatus(tracer->addTextureFile(&reinterpret_cast<TextureFileEntry*>(head)->record, this));
        head->handed = 1;
    }
    return textureName(head);
}

const char16_t* FileRenderer::GetTexMapName(int32_t id) { return resolveAsset<TexMapKind>(*this, id); }

const char16_t* FileRenderer::GetMaterialName(int32_t id) { return resolveAsset<MaterialKind>(*this, id); }

uint64_t FileRenderer::GetModelId(const char16_t* name) {
    if (isEmpty(name)) return 0;
    uint64_t key = nameKey(name);
    for (NameTable::Entry* e = modelNames.find(key); e; e = NameTable::next(e, key)) {
        auto* model = static_cast<ModelNameRecord*>(e->value);
        if (sameName(model->name, kNameChars, name)) return model->handle;
    }
    return 0;
}

const char16_t* FileRenderer::GetModelName() { return kEmptyText; }

// ---------------------------------------------------------------- release

template <class Entry, class Release>
static void releaseList(Entry*& head, Release release) {
    while (head) {
        Entry* next = head->next;
        release(*head);
        ::operator delete(head);
        head = next;
    }
}

void FileRenderer::releaseRecords() {
    releaseList(textureFiles, [](TextureFileEntry&) {});
    releaseList(textureData, [](TextureDataEntry& e) { releaseTextureData(e.record); });
    releaseList(texmapRecords, [](TexMapEntry&) {});
    releaseList(materialRecords, [](MaterialEntry& e) { releaseMaterial(e.record); });
    releaseList(modelRecords, [](ModelNameRecord&) {});
    nextTextureId = nextTexmapId = nextMaterialId = IdCounter(-1);
}

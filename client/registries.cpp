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

TexMapEntry* FileRenderer::findTexMap(const char16_t* name) const {
    uint64_t key = nameKey(name);
    for (NameTable::Entry* e = texmapNames.find(key); e; e = NameTable::next(e, key)) {
        auto* entry = static_cast<TexMapEntry*>(e->value);
        if (sameName(entry->record.Name, kNameChars, name)) return entry;
    }
    return nullptr;
}

MaterialEntry* FileRenderer::findMaterial(const char16_t* name) const {
    uint64_t key = nameKey(name);
    for (NameTable::Entry* e = materialNames.find(key); e; e = NameTable::next(e, key)) {
        auto* entry = static_cast<MaterialEntry*>(e->value);
        if (sameName(entry->record.Name, kNameChars, name)) return entry;
    }
    return nullptr;
}

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
    entry->id = nextTextureId++;
    copyBounded(entry->record.name, kNameChars, name);
    // Keyed by the name as asked, not by the stored copy.
    textureNames.insert(nameKey(name), entry);
    textureIds.insert(static_cast<uint64_t>(static_cast<int64_t>(entry->id)), entry);
    return entry->id;
}

int32_t FileRenderer::findOrCreateTexMap(const char16_t* name, bool lookupOnly) {
    if (isEmpty(name)) return -1;
    if (TexMapEntry* found = findTexMap(name)) return found->record.id;
    if (lookupOnly) return -1;
    auto* entry = newZeroedEntry<TexMapEntry>();
    entry->record.id = -1;
    entry->next = texmapRecords;
    texmapRecords = entry;
    if (!options->texmapsPath.empty()) {
        std::u16string path = documentPath(options->texmapsPath, name);
        if (int32_t type = DetectTexMapType(path.c_str())) {
            entry->record.type = type;
            ReadTexMapDocument(&entry->record, path.c_str(), this);
        }
    }
    entry->documentTried = 1;
    entry->record.id = nextTexmapId++;
    copyBounded(entry->record.Name, kNameChars, name);
    texmapNames.insert(nameKey(entry->record.Name), entry);
    texmapIds.insert(static_cast<uint64_t>(static_cast<int64_t>(entry->record.id)), entry);
    return entry->record.id;
}

int32_t FileRenderer::findOrCreateMaterial(const char16_t* name, bool lookupOnly) {
    if (isEmpty(name)) return -1;
    if (MaterialEntry* found = findMaterial(name)) return found->record.id;
    if (lookupOnly) return -1;
    auto* entry = newZeroedEntry<MaterialEntry>();
    entry->record.id = -1;
    entry->next = materialRecords;
    materialRecords = entry;
    if (!options->materialsPath.empty()) {
        std::u16string path = documentPath(options->materialsPath, name);
        if (int32_t type = DetectMaterialType(path.c_str())) {
            entry->record.type = type;
            ReadMaterialDocument(&entry->record, path.c_str(), this);
        }
    }
    entry->documentTried = 1;
    entry->record.id = nextMaterialId++;
    copyBounded(entry->record.Name, kNameChars, name);
    materialNames.insert(nameKey(entry->record.Name), entry);
    materialIds.insert(static_cast<uint64_t>(static_cast<int64_t>(entry->record.id)), entry);
    return entry->record.id;
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
    uint64_t key = static_cast<uint64_t>(static_cast<int64_t>(id));
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

template <class Entry>
static Entry* entryWithId(const NameTable& ids, int32_t id) {
    uint64_t key = static_cast<uint64_t>(static_cast<int64_t>(id));
    for (NameTable::Entry* e = ids.find(key); e; e = NameTable::next(e, key)) {
        auto* entry = static_cast<Entry*>(e->value);
        if (entry && entry->record.id == id) return entry;
    }
    return nullptr;
}

const char16_t* FileRenderer::GetTexMapName(int32_t id) {
    if (id == -1) return kEmptyText;
    TexMapEntry* entry = entryWithId<TexMapEntry>(texmapIds, id);
    if (!entry) return kEmptyText;
    if (!resolving || entry->handed) return entry->record.Name;
    if (entry->busy) {
        reportError(formatWide(u"Error: texmap %ls recurrently referenced by itself.", entry->record.Name).c_str(), 0);
        raiseStatus(StatusErrors);
        return kEmptyText;
    }
    entry->busy = 1;
    if (!entry->documentTried) {
        if (!options->texmapsPath.empty()) {
            std::u16string path = documentPath(options->texmapsPath, entry->record.Name);
            if (int32_t type = DetectTexMapType(path.c_str())) {
                entry->record.type = type;
                ReadTexMapDocument(&entry->record, path.c_str(), this);
            }
        }
        entry->documentTried = 1;
    }
    WalkTexMapReferences(&entry->record, this);
    raiseStatus(tracer->addTexMap(&entry->record));
    entry->handed = 1;
    entry->busy = 0;
    return entry->record.Name;
}

const char16_t* FileRenderer::GetMaterialName(int32_t id) {
    if (id == -1) return kEmptyText;
    MaterialEntry* entry = entryWithId<MaterialEntry>(materialIds, id);
    if (!entry) return kEmptyText;
    if (!resolving || entry->handed) return entry->record.Name;
    if (entry->busy) {
        reportError(formatWide(u"Error: material %ls recurrently referenced by itself.", entry->record.Name).c_str(),
                    0);
        raiseStatus(StatusErrors);
        return kEmptyText;
    }
    entry->busy = 1;
    if (!entry->documentTried) {
        if (!options->materialsPath.empty()) {
            std::u16string path = documentPath(options->materialsPath, entry->record.Name);
            if (int32_t type = DetectMaterialType(path.c_str())) {
                entry->record.type = type;
                ReadMaterialDocument(&entry->record, path.c_str(), this);
            }
        }
        entry->documentTried = 1;
    }
    WalkMaterialReferences(&entry->record, this);
    raiseStatus(tracer->addMaterial(&entry->record));
    // The volume cache lives in the client only until the engine has taken the material.
    releaseMaterial(entry->record);
    entry->handed = 1;
    entry->busy = 0;
    return entry->record.Name;
}

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
    nextTextureId = nextTexmapId = nextMaterialId = -1;
}

// Image maps: the two leaf types that look a texture up. Their texture reference is coded by
// attribute `value`, unlike map references, and their read reports whether it was found.
#include "documents/texmaps/families.h"

#include "documents/texmap_document.h"
#include "scene/records.h"

namespace {

constexpr FieldDescriptor kImageFields[] = {
    textureField("Texture", 0x5B8),
};
static_assert(fieldsEnd(kImageFields) == 0x5BC && fieldsFrom(kImageFields, kTexMapMappedFieldsOffset));

// The blur pair is read from a document but never written back: the walk has no use for it.
constexpr FieldDescriptor kSimpleImageFields[] = {
    textureField("Texture", 0x108),
    readOnly(floatField("Blur", 0x10C)),
    readOnly(floatField("BlurOffset", 0x110)),
};
static_assert(fieldsEnd(kSimpleImageFields) == 0x114 && fieldsFrom(kSimpleImageFields, kTexMapPlainFieldsOffset));

} // namespace

constexpr TypeDescriptor kImageTexMap =
    textureResult(mappedType(describeType(1, "IMAGE", fieldsEnd(kImageFields), kImageFields)), 0x5B8);
constexpr TypeDescriptor kSimpleImageTexMap =
    textureResult(describeType(2, "SIMPLEIMAGE", fieldsEnd(kSimpleImageFields), kSimpleImageFields), 0x108);

static_assert(typeFits(kImageTexMap, sizeof(TexMapRecord)) && typeFits(kSimpleImageTexMap, sizeof(TexMapRecord)));
static_assert(imageAgrees(kImageTexMap) && imageAgrees(kSimpleImageTexMap));

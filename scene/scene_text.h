// Narrow text of the scene file turned into the client's wide text.
//
// Scene text converts byte for byte: every byte becomes the UTF-16 unit of the same value.
// Only the length limits can make a conversion fail.
#pragma once
#include "scene/byte_span.h"

#include <cstddef>

// Converts the zero-terminated text in `source`, a field of `sourceBytes` bytes, into `dest`,
// a buffer of `capacity` characters. The field's end counts as the text's end. True when the
// text and its terminator fit; otherwise `dest` is left empty. A null `source` gives an empty,
// successful result; a null `dest` fails.
bool convertSceneString(char16_t* dest, size_t capacity, const char* source, size_t sourceBytes);
// The same over the field of `fieldBytes` bytes at `offset` of a chunk body, as far as the body
// holds it; a field wholly beyond the body converts to the empty text.
bool convertTextField(char16_t* dest, size_t capacity, ByteSpan body, uint64_t offset, uint64_t fieldBytes);
// A name field of a body: 128 narrow bytes, as wide text of at most 64 characters.
bool convertNameField(char16_t* dest, ByteSpan body, uint64_t offset);

// Text inside an image record is stored narrow in the very bytes where it will be wide.
// Converts it in place; the field is cleared first and then receives as many bytes of the wide
// text as it holds, so a long text is cut without a terminator. A text that will not convert
// leaves the field empty, silently.
void fixRecordText(void* field, size_t fieldBytes);

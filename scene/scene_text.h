// Narrow text of the scene file turned into the client's wide text.
//
// Scene text converts byte for byte: every byte becomes the UTF-16 unit of the same value.
// Only the length limits can make a conversion fail.
#pragma once
#include <cstddef>

// Converts the zero-terminated text in `source`, a field of `sourceBytes` bytes, into `dest`,
// a buffer of `capacity` characters. The field's end counts as the text's end. True when the
// text and its terminator fit; otherwise `dest` is left empty. A null `source` gives an empty,
// successful result; a null `dest` fails.
bool convertSceneString(char16_t* dest, size_t capacity, const char* source, size_t sourceBytes);

// Text inside an image record is stored narrow in the very bytes where it will be wide.
// Converts it in place; the field is cleared first and then receives as many bytes of the wide
// text as it holds, so a long text is cut without a terminator. A text that will not convert
// leaves the field empty, silently.
void fixRecordText(void* field, size_t fieldBytes);

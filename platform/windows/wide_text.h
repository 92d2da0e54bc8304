// The platform's text is UTF-16 like the client's: wchar_t and char16_t are the same units.
#pragma once

static_assert(sizeof(wchar_t) == sizeof(char16_t), "Windows' wide text is UTF-16");

namespace platform {

inline const wchar_t* asWide(const char16_t* text) { return reinterpret_cast<const wchar_t*>(text); }

} // namespace platform

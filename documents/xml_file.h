// Loading a document file into pugixml the way the documents' own writer expects it to read.
#pragma once
#include <pugixml.hpp>

// False when the file cannot be read or is not well-formed. UTF-8, UTF-16 and UTF-32 files
// (with or without a byte-order mark) and element names that begin with a digit are taken.
bool loadXmlFile(pugi::xml_document& doc, const char16_t* path);

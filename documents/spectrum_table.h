// The spectrum table file behind the settings key XYZtoRGB_filename: text records of four
// numbers, wavelength, x, y and z, separated by commas.
#pragma once
#include "scene/records.h"

#include <cstddef>

// The file's number format, which is not the C library's: blanks, an optional sign, decimal
// digits with an optional fraction, and an optional exponent that must carry its sign ("1e-3"
// is a number, "1e3" is not). The digits are summed in f32. At least one digit must stand before
// or after the point. On success the number is in `*value` and `*cursor` points behind it.
bool ParseFastFloat(const char** cursor, float* value);

// Zeroes the table, then fills it from the file at `path`: entry i holds x, y, z and the
// wavelength of the i-th record; records past kSpectrumEntries are parsed and dropped. True
// when the whole file was read and parsed; otherwise the table is left zeroed. An empty file
// and one of 0x7FFFFFFF bytes or more fail.
bool ReadSpectrumTable(float (&table)[kSpectrumEntries][4], const char16_t* path);

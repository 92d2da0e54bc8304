// Reading files by wide path.
#pragma once
#include <cstddef>
#include <cstdint>

namespace platform {

using FileHandle = intptr_t;
constexpr FileHandle kNoFile = -1;

// kNoFile when the file cannot be opened for reading.
FileHandle openForReading(const char16_t* path);
// The same, with the file's size as it is opened, for a reader that takes it whole: one call
// less than asking fileSize after. kNoFile, too, when the size can't be had.
FileHandle openForReading(const char16_t* path, uint64_t* size);
// Reads up to `length` bytes; false on an error. `bytesRead` tells how many arrived (0 at the end).
bool readFile(FileHandle file, void* buffer, size_t length, size_t* bytesRead);
// Reads at an absolute position without moving the position that readFile reads from, so
// another thread may use it on a handle that readFile is using at the same time.
bool readFileAt(FileHandle file, uint64_t offset, void* buffer, size_t length, size_t* bytesRead);
// Absolute position.
bool seekFile(FileHandle file, uint64_t offset);
bool fileSize(FileHandle file, uint64_t* size);
void closeFile(FileHandle file);

} // namespace platform

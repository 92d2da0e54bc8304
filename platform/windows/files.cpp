#include "platform/files.h"

#include "platform/windows/wide_text.h"

#include <windows.h>

#include <new>

namespace platform {

namespace {

// A handle of the system has one position, which a read at an offset moves as well. The
// position that readFile follows is therefore kept here, and every read names its offset,
// so that a read at an offset on another thread leaves it alone.
struct OpenFile {
    HANDLE handle;
    uint64_t position;
};

OpenFile* openFileOf(FileHandle file) { return reinterpret_cast<OpenFile*>(file); }

// One read of at most `length` bytes at `offset`; the end of the file reads as 0 bytes.
bool readOnceAt(HANDLE handle, uint64_t offset, char* out, DWORD length, DWORD* got) {
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(offset);
    at.OffsetHigh = static_cast<DWORD>(offset >> 32);
    *got = 0;
    if (ReadFile(handle, out, length, got, &at)) return true;
    return GetLastError() == ERROR_HANDLE_EOF;
}

bool readFully(HANDLE handle, uint64_t offset, void* buffer, size_t length, size_t* bytesRead) {
    constexpr size_t kLargestRead = size_t(1) << 30;
    char* out = static_cast<char*>(buffer);
    size_t total = 0;
    while (total < length) {
        const size_t missing = length - total;
        DWORD got = 0;
        if (!readOnceAt(handle, offset + total, out + total,
                        static_cast<DWORD>(missing < kLargestRead ? missing : kLargestRead), &got)) {
            *bytesRead = total;
            return false;
        }
        if (got == 0) break;
        total += got;
    }
    *bytesRead = total;
    return true;
}

} // namespace

FileHandle openForReading(const char16_t* path) {
    // A folder cannot be opened without backup semantics, so it is refused here as it should be.
    HANDLE handle = CreateFileW(asWide(path), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return kNoFile;
    OpenFile* file = new (std::nothrow) OpenFile{handle, 0};
    if (!file) {
        CloseHandle(handle);
        return kNoFile;
    }
    return reinterpret_cast<FileHandle>(file);
}

FileHandle openForReading(const char16_t* path, uint64_t* size) {
    const FileHandle file = openForReading(path);
    if (file != kNoFile && !fileSize(file, size)) {
        closeFile(file);
        return kNoFile;
    }
    return file;
}

bool readFile(FileHandle file, void* buffer, size_t length, size_t* bytesRead) {
    OpenFile* open = openFileOf(file);
    const bool ok = readFully(open->handle, open->position, buffer, length, bytesRead);
    open->position += *bytesRead;
    return ok;
}

bool readFileAt(FileHandle file, uint64_t offset, void* buffer, size_t length, size_t* bytesRead) {
    return readFully(openFileOf(file)->handle, offset, buffer, length, bytesRead);
}

bool seekFile(FileHandle file, uint64_t offset) {
    if (offset > uint64_t(INT64_MAX)) return false;
    openFileOf(file)->position = offset;
    return true;
}

bool fileSize(FileHandle file, uint64_t* size) {
    LARGE_INTEGER bytes;
    if (!GetFileSizeEx(openFileOf(file)->handle, &bytes)) return false;
    *size = static_cast<uint64_t>(bytes.QuadPart);
    return true;
}

void closeFile(FileHandle file) {
    if (file == kNoFile) return;
    OpenFile* open = openFileOf(file);
    CloseHandle(open->handle);
    delete open;
}

} // namespace platform

#include "platform/files.h"

#include "common/unicode.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

FileHandle openForReading(const char16_t* path, uint64_t* size) {
    int fd = open(utf16ToUtf8(path).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return kNoFile;
    struct stat info;
    if (fstat(fd, &info) != 0 || S_ISDIR(info.st_mode)) {
        close(fd);
        return kNoFile;
    }
    *size = static_cast<uint64_t>(info.st_size);
    return fd;
}

FileHandle openForReading(const char16_t* path) {
    uint64_t size = 0;
    return openForReading(path, &size);
}

namespace {

// Reads until `length` bytes have come or the file ends; `readAt(out, missing, done)` is one
// system call for the part that is still missing.
template <class ReadAt>
bool readFully(void* buffer, size_t length, size_t* bytesRead, ReadAt readAt) {
    size_t total = 0;
    char* out = static_cast<char*>(buffer);
    while (total < length) {
        ssize_t got = readAt(out + total, length - total, total);
        if (got < 0) {
            *bytesRead = total;
            return false;
        }
        if (got == 0) break;
        total += static_cast<size_t>(got);
    }
    *bytesRead = total;
    return true;
}

} // namespace

bool readFile(FileHandle file, void* buffer, size_t length, size_t* bytesRead) {
    return readFully(buffer, length, bytesRead, [&](char* out, size_t missing, size_t) {
        return read(static_cast<int>(file), out, missing);
    });
}

bool readFileAt(FileHandle file, uint64_t offset, void* buffer, size_t length, size_t* bytesRead) {
    return readFully(buffer, length, bytesRead, [&](char* out, size_t missing, size_t done) {
        return pread(static_cast<int>(file), out, missing, static_cast<off_t>(offset + done));
    });
}

bool seekFile(FileHandle file, uint64_t offset) {
    return lseek(static_cast<int>(file), static_cast<off_t>(offset), SEEK_SET) != static_cast<off_t>(-1);
}

bool fileSize(FileHandle file, uint64_t* size) {
    struct stat info;
    if (fstat(static_cast<int>(file), &info) != 0) return false;
    *size = static_cast<uint64_t>(info.st_size);
    return true;
}

void closeFile(FileHandle file) {
    if (file != kNoFile) close(static_cast<int>(file));
}

} // namespace platform

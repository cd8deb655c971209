// TextFile.h
//
// A text file read in blocks of any size. To read line by line, see lines.h. Line ends are translated only
// where the system's text mode does so.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tvxconv::fsutil {

class TextFile {
public:
    TextFile() = default;
    ~TextFile();  // closes
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;

    // Opens the plain file at `path` and closes the one that was open. Returns 0, or 1 if it cannot be
    // opened (a folder never can).
    int open(const std::string& path);

    // Reads up to `size` bytes into `buffer` and returns their number: 0 at the end of the file, if reading
    // fails, and if no file is open.
    std::size_t read(char* buffer, std::size_t size);

    // When the file was last changed, as known when it was opened; in seconds since 1970.
    std::int64_t modificationTime() const { return modificationTime_; }

    void close();

private:
    int descriptor_ = -1;
    std::int64_t modificationTime_ = 0;
};

}  // namespace tvxconv::fsutil

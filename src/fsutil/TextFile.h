// TextFile.h
//
// A text file read in blocks of any size, for readers that do not go by lines (those that do: lines.h).
// Nothing is translated except what the system's text mode translates.

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

    // Opens the plain file at `path`; a file that was open is closed first. Returns 0, or 1 when it cannot be
    // opened (a folder never can).
    int open(const std::string& path);

    // Reads up to `size` bytes into `buffer` and returns their number: 0 at the end of the file, when reading
    // fails and when no file is open.
    std::size_t read(char* buffer, std::size_t size);

    // When the file had last been changed as it was opened, in seconds since 1970.
    std::int64_t modificationTime() const { return modificationTime_; }

    void close();

private:
    int descriptor_ = -1;
    std::int64_t modificationTime_ = 0;
};

}  // namespace tvxconv::fsutil

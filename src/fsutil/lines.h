// lines.h
//
// The one place where text files are read and written line by line. A line is bytes with its line end, as a
// buffer of 1024 bytes returns it: at most 1023 bytes. A longer line comes in pieces, each a line to the
// caller. The last line of a file may have no line end. A NUL is a byte like any other. Line ends are
// translated only where the system's text mode does so.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/platform.h"

namespace tvxconv::fsutil {

class LineReader {
public:
    static constexpr std::size_t kMostBytes = 1023;

    LineReader() = default;
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    // Starts reading the plain file at `path`, or `text`, which must outlive the reading. Closes what was
    // being read before. open returns 0, or 1 if the file cannot be opened (a folder never can); then
    // next() returns no lines.
    int open(const std::string& path);
    void openMemory(std::string_view text);

    // The next line, valid until the next call. False at the end, and if reading failed.
    bool next(std::string_view& line);

    // Whether reading failed: then the lines so far are not the whole file.
    bool failed() const { return failed_; }

    // The number, from 1, of the line in the file that the last next() returned whole or in part.
    std::size_t lineNumber() const { return lineNumber_; }

    // The file being read: a writer refuses to write over it.
    const platform::FileStatus& fileStatus() const { return status_; }

    void close();

private:
    void reset();
    bool fill();

    int descriptor_ = -1;
    platform::FileStatus status_;
    std::unique_ptr<char[]> buffer_;
    std::size_t bufferSize_ = 0;
    std::string_view rest_;  // read but not yet returned
    bool ended_ = true;
    bool failed_ = false;
    bool lineComplete_ = true;
    std::size_t lineNumber_ = 0;
    std::uint64_t taken_ = 0;  // bytes, from the file
};

class LineWriter {
public:
    LineWriter() = default;
    // A file that has not been closed is abandoned.
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    // Makes or empties the file at `path`. Returns 0, or 1 if it cannot be opened or is the file that
    // `source` is reading.
    int open(const std::string& path, const LineReader* source = nullptr);

    // Starts a new file that replaces the one at `path`, if any, when it is closed complete. The new file
    // keeps the old one's permission bits; a symbolic link is followed. On failure the old file stays. (If
    // it cannot be replaced but can be written, as in a folder that takes no new names, the text is written
    // into it.) Returns 0, or 1 if the file or its folder may not be written.
    int openReplacement(const std::string& path);

    // Adds bytes unchanged.
    void write(std::string_view text);

    // Adds `text` with the line end of `oldLine`, which it replaces; "\n" if that had none.
    void writeInPlaceOf(std::string_view oldLine, std::string_view text);

    // Ends the file. Returns 0, or 1 if any write failed; the file is then removed, so that nobody takes a
    // part for the whole.
    int close();

    // Ends the file and removes it, because its content cannot be completed.
    void abandon();

private:
    void begin();
    int openInPlace(const std::string& path, const LineReader* source);
    void flush();

    int descriptor_ = -1;
    bool failed_ = false;
    bool keepsPart_ = false;  // an incomplete file is not removed
    std::string path_;
    std::string target_;  // the path that the finished file is moved to; empty if it stays
    std::string buffer_;
};

// The end of a line: "\r\n", "\n" or nothing.
std::string_view lineEndOf(std::string_view line);

// Whether the line begins with exactly the bytes of `key`, ignoring letter case. A longer word that begins
// with `key` counts too.
bool beginsWithKey(std::string_view line, std::string_view key);

// Scans the value of a line as "%*[^"]%*c%[^"]" does. Returns
//   1    and in `value` the text from the first quote to the next, or to the end of the line (with its line
//        end) if there is no other;
//   0    no value: it is empty, or the line begins with its quote;
//   EOF  the line ends before a value begins.
// `value` is empty unless 1 is returned.
int scanQuotedValue(std::string_view line, std::string& value);

}  // namespace tvxconv::fsutil

// lines.h
//
// The one place where text files are read and written line by line. A line is bytes with its line
// end, as a 1024-byte line buffer delivers it: at most 1023 bytes, so a longer line comes in pieces,
// each of them a line to the caller. The last line of a file may have no end. A NUL is a byte like
// any other. Nothing is translated but what the system's text mode does.

#pragma once

#include <cstddef>
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

    // Begins to read the plain file at `path`, or `text`, which must outlive the reading. What was
    // being read before is closed. open returns 0, or 1 when the file cannot be opened (a folder never
    // can); then next() delivers nothing.
    int open(const std::string& path);
    void openMemory(std::string_view text);

    // The next line, valid until the next call. False at the end, and where reading failed.
    bool next(std::string_view& line);

    // Whether reading failed: the lines so far are then not the whole file.
    bool failed() const { return failed_; }

    // The number of the line in the file, from 1, that the last next() delivered (a piece of).
    std::size_t lineNumber() const { return lineNumber_; }

    // Which file is being read: a writer refuses to write over it.
    const platform::FileStatus& fileStatus() const { return status_; }

    void close();

private:
    void reset();
    bool fill();

    int descriptor_ = -1;
    platform::FileStatus status_;
    std::unique_ptr<char[]> buffer_;
    std::size_t bufferSize_ = 0;
    std::string_view rest_;  // what has been read and not yet delivered
    bool ended_ = true;
    bool failed_ = false;
    bool lineComplete_ = true;
    std::size_t lineNumber_ = 0;
};

class LineWriter {
public:
    LineWriter() = default;
    // A file that has not been closed is abandoned.
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    // Makes or empties the file at `path`. Returns 0, or 1 when it cannot be opened or is the file that
    // `source` reads.
    int open(const std::string& path, const LineReader* source = nullptr);

    // Begins a file that takes the place of the one at `path`, if there is one, when it is closed as a whole.
    // The new file keeps the old one's permission bits; a symbolic link is followed. On failure the old file
    // stays. (Where it cannot be replaced but can be written, such as in a folder that takes no new names,
    // the text is written into it.) Returns 0, or 1 when the file or its folder may not be written.
    int openReplacement(const std::string& path);

    // Adds bytes as they are.
    void write(std::string_view text);

    // Adds `text` with the line end of `oldLine`, in whose place it stands; "\n" where that had none.
    void writeInPlaceOf(std::string_view oldLine, std::string_view text);

    // Ends the file. Returns 0, or 1 when any write failed; the file is then removed, so that nobody
    // takes a part for the whole.
    int close();

    // Ends the file and removes it, because what was to come could not be had.
    void abandon();

private:
    void begin();
    int openInPlace(const std::string& path, const LineReader* source);
    void flush();

    int descriptor_ = -1;
    bool failed_ = false;
    bool keepsPart_ = false;  // what could not be written as a whole is not removed
    std::string path_;
    std::string target_;  // the place that the file takes when it is whole; empty for its own
    std::string buffer_;
};

// The end of a line: "\r\n", "\n" or nothing.
std::string_view lineEndOf(std::string_view line);

// Whether the line begins with exactly the bytes of `key`, ignoring letter case. A longer word with the
// same beginning counts too.
bool beginsWithKey(std::string_view line, std::string_view key);

// The value of a line: what "%*[^"]%*c%[^"]" scans. Returns
//   1    the text from the first quote to the next, or to the end of the line (its end included) when
//        there is no other;
//   0    no value: an empty one, or a line that begins with its quote;
//   EOF  the line ends before a value begins.
// `value` is empty unless 1 is returned.
int scanQuotedValue(std::string_view line, std::string& value);

}  // namespace tvxconv::fsutil

#include "fsutil/lines.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "fsutil/files.h"
#include "fsutil/letterCase.h"

namespace tvxconv::fsutil {
namespace {

constexpr std::size_t kBufferSize = 64 * 1024;
constexpr unsigned kPermissions = 0666;  // minus the process's mask
constexpr std::size_t kLeastBuffer = 4 * LineReader::kMostBytes;

}  // namespace

LineReader::~LineReader() {
    close();
}

void LineReader::reset() {
    close();
    rest_ = {};
    ended_ = true;
    failed_ = false;
    lineComplete_ = true;
    lineNumber_ = 0;
    taken_ = 0;
}

int LineReader::open(const std::string& path) {
    reset();
    if (!isPathText(path)) return 1;
    if (platform::openForReading(path.c_str(), platform::FileMode::text, descriptor_, &status_) != 0) {
        return 1;
    }
    // Most files fit into the buffer whole; with room for one byte more, a single call finds the end.
    const auto fits = static_cast<std::size_t>(std::min<std::uint64_t>(status_.size, kBufferSize)) + 1;
    const std::size_t size = std::max(fits, kLeastBuffer);
    if (size > bufferSize_) {
        buffer_ = std::make_unique_for_overwrite<char[]>(size);
        bufferSize_ = size;
    }
    ended_ = false;
    return 0;
}

void LineReader::openMemory(std::string_view text) {
    reset();
    rest_ = text;
}

// Moves the unread bytes to the front of the buffer and reads more after them.
bool LineReader::fill() {
    if (ended_) return false;
    if (!rest_.empty()) std::memmove(buffer_.get(), rest_.data(), rest_.size());
    const std::size_t room = bufferSize_ - rest_.size();
    const std::int64_t got = platform::readSome(descriptor_, buffer_.get() + rest_.size(), room);
    failed_ = got < 0;
    const std::size_t added = failed_ ? 0 : static_cast<std::size_t>(got);
    taken_ += added;
    // Some file systems deliver less than was asked for in the middle of a file, too.
    ended_ = added == 0 || (added < room && taken_ >= status_.size);
    rest_ = {buffer_.get(), rest_.size() + added};
    return added > 0;
}

bool LineReader::next(std::string_view& line) {
    line = {};
    std::size_t end = std::string_view::npos;
    do {
        end = rest_.substr(0, kMostBytes).find('\n');
    } while (end == std::string_view::npos && rest_.size() < kMostBytes && fill());
    if (failed_ || rest_.empty()) return false;
    const std::size_t length = end != std::string_view::npos ? end + 1 : std::min(rest_.size(), kMostBytes);
    line = rest_.substr(0, length);
    rest_.remove_prefix(length);
    if (lineComplete_) ++lineNumber_;
    lineComplete_ = line.back() == '\n';
    return true;
}

void LineReader::close() {
    if (descriptor_ != -1) platform::closeFile(descriptor_);
    descriptor_ = -1;
    status_ = {};
    rest_ = {};
    ended_ = true;
}

LineWriter::~LineWriter() {
    try {
        abandon();   // a writer that was not closed did not finish
    } catch (...) {  // no memory to remove the file: it stays
    }
}

void LineWriter::begin() {
    close();
    failed_ = false;
    keepsPart_ = false;
    buffer_.clear();  // may hold text written while no file was open
}

int LineWriter::open(const std::string& path, const LineReader* source) {
    begin();
    return isPathText(path) ? openInPlace(path, source) : 1;
}

int LineWriter::openInPlace(const std::string& path, const LineReader* source) {
    const platform::FileStatus* guarded = source != nullptr ? &source->fileStatus() : nullptr;
    path_ = path;
    return platform::openForWriting(path.c_str(), platform::FileMode::text, kPermissions, guarded,
                                    descriptor_) == 0
               ? 0
               : 1;
}

int LineWriter::openReplacement(const std::string& path) {
    begin();
    if (!isPathText(path)) return 1;
    platform::FileStatus status;
    const int error = platform::getStatus(path.c_str(), status);
    const bool isThere = error != ENOENT;
    if (isThere && (error != 0 || status.kind != platform::FileKind::regular ||
                    platform::checkAccess(path.c_str(), kWritable) != 0)) {
        return 1;
    }
    const std::string place = isThere ? platform::followLinks(path) : path;
    const unsigned permissions = isThere ? status.permissions : kPermissions;
    const int opened = platform::openTemporaryBeside(place.c_str(), platform::FileMode::text, permissions,
                                                     path_, descriptor_);
    // A folder may refuse new names while a file in it can be written.
    const bool takesNoNames = opened == EACCES || opened == EPERM || opened == EROFS;
    if (opened != 0 && isThere && takesNoNames) {
        keepsPart_ = true;
        return openInPlace(place, nullptr);
    }
    if (opened != 0) return 1;
    if (isThere) platform::setPermissions(path_.c_str(), permissions);  // some may be masked
    target_ = place;
    return 0;
}

void LineWriter::write(std::string_view text) {
    buffer_.append(text);
    if (buffer_.size() >= kBufferSize) flush();
}

void LineWriter::writeInPlaceOf(std::string_view oldLine, std::string_view text) {
    write(text);
    const std::string_view end = lineEndOf(oldLine);
    write(end.empty() ? std::string_view("\n") : end);
}

void LineWriter::flush() {
    if (descriptor_ != -1 && !failed_ && !buffer_.empty()) {
        const auto size = static_cast<std::int64_t>(buffer_.size());
        failed_ = platform::writeSome(descriptor_, buffer_.data(), buffer_.size()) != size;
    }
    buffer_.clear();
}

int LineWriter::close() {
    if (descriptor_ == -1) return 0;
    flush();
    if (platform::closeFile(descriptor_) != 0) failed_ = true;
    descriptor_ = -1;
    const std::string target = std::exchange(target_, {});
    bool isDone = !failed_ && target.empty();
    if (!failed_ && !target.empty()) {
        const int error = platform::replaceFile(path_.c_str(), target.c_str());
        isDone = error == 0;
        // Some files can be written but not replaced: another user's in a shared folder with the sticky
        // bit, or one that is a mount point.
        const bool mayBeWritten = error == EACCES || error == EPERM || error == EBUSY;
        if (!isDone) failed_ = !mayBeWritten || copyFileContents(path_.c_str(), target.c_str()) != 0;
    }
    if (!isDone && !keepsPart_) platform::removeOpened(path_.c_str());
    return failed_ ? 1 : 0;
}

void LineWriter::abandon() {
    failed_ = true;
    close();
}

std::string_view lineEndOf(std::string_view line) {
    if (line.ends_with("\r\n")) return line.substr(line.size() - 2);
    if (line.ends_with("\n")) return line.substr(line.size() - 1);
    return {};
}

bool beginsWithKey(std::string_view line, std::string_view key) {
    return beginsWithIgnoringCase(line, key);
}

int scanQuotedValue(std::string_view line, std::string& value) {
    value.clear();
    const std::size_t open = line.find('"');
    if (line.empty() || open == std::string_view::npos || open + 1 == line.size()) {
        // The scanned pattern needs at least one byte before the quote.
        return !line.empty() && open == 0 ? 0 : EOF;
    }
    if (open == 0) return 0;
    const std::string_view text = line.substr(open + 1, line.find('"', open + 1) - open - 1);
    if (text.empty()) return 0;
    value = text;
    return 1;
}

}  // namespace tvxconv::fsutil

#include "fsutil/files.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <utility>
#include <vector>

#include "errors/errors.h"
#include "fsutil/letterCase.h"
#include "fsutil/paths.h"
#include "platform/platform.h"

namespace tvxconv::fsutil {
namespace {

constexpr std::size_t kCopyBlock = 8192;
constexpr unsigned kOwnerMayWrite = 0200;
constexpr int kFolderMode = 0777;

struct ListingNode {
    std::string name;
    ListingNode* next = nullptr;
};

bool isSeparator(char byte) {
    return byte == '/' || byte == '\\';
}

// Copies the rest of one open file to another: by a system call where that works, else in blocks. `size` is
// the size of the file when it was opened.
int copyOpenFiles(int from, int to, std::uint64_t size) {
    constexpr std::uint64_t kSystemStep = std::uint64_t{64} << 20;
    // Ask for one byte more than the file's size: getting fewer shows that the file ends there.
    for (std::uint64_t moved = 0; size != 0 && moved <= size;) {
        const std::uint64_t step = std::min(size + 1 - moved, kSystemStep);
        const std::int64_t got = platform::copySome(from, to, static_cast<std::size_t>(step));
        if (got < 0) return -1;
        if (got == 0) break;
        moved += static_cast<std::uint64_t>(got);
        if (moved == size && static_cast<std::uint64_t>(got) < step) return 0;
    }
    std::array<char, kCopyBlock> block;
    for (;;) {
        const std::int64_t got = platform::readSome(from, block.data(), block.size());
        if (got < 0) return -1;
        if (got == 0) return 0;
        if (platform::writeSome(to, block.data(), static_cast<std::size_t>(got)) != got) return -1;
    }
}

// A file opened for reading, closed when it goes out of scope.
struct SourceFile {
    int descriptor = -1;
    platform::FileStatus status;
    int error;  // the result of opening; must come last, as opening fills the other two

    explicit SourceFile(const char* path)
        : error(platform::openForReading(path, platform::FileMode::binary, descriptor, &status)) {}
    ~SourceFile() {
        if (descriptor != -1) platform::closeFile(descriptor);
    }
    SourceFile(const SourceFile&) = delete;
    SourceFile& operator=(const SourceFile&) = delete;
};

enum class Copied { whole, part, nothing };  // nothing: the destination is as it was

// Copies an open source. `isWritable` becomes true if the copy's owner may write to it. The source is
// opened first, so that a destination is never emptied for a file that cannot be read.
Copied copyContents(const SourceFile& source, const char* destination, bool& isWritable) {
    isWritable = false;
    if (source.descriptor == -1) return Copied::nothing;
    int to = -1;
    platform::FileStatus copyStatus;
    if (platform::openForWriting(destination, platform::FileMode::binary, source.status.permissions,
                                 &source.status, to, &copyStatus) != 0) {
        return Copied::nothing;
    }
    isWritable = (copyStatus.permissions & kOwnerMayWrite) != 0;
    bool isWhole = copyOpenFiles(source.descriptor, to, source.status.size) == 0;
    // Fails for another user's file that was there before. The copy is good without it.
    if (isWhole) platform::setChangeTime(to, source.status);
    if (platform::closeFile(to) != 0) isWhole = false;
    return isWhole ? Copied::whole : Copied::part;
}

// What becomes of a copy that fails half-way.
enum class Part { stays, isRemoved };

// copyFile for a source whose opening has been tried.
int copyOpened(const SourceFile& file, const std::string& source, const std::string& destination, Part part) {
    bool isWritable = false;
    const Copied copied = copyContents(file, destination.c_str(), isWritable);
    if (copied == Copied::whole) {
        // The process's mask may have removed the right to write. The conversions need not check: with such
        // a mask they could not fill the folders that they make.
        const bool isSure = isWritable && part == Part::isRemoved;
        return isSure || platform::makeWritable(destination.c_str()) == 0 ? 0 : 1;
    }
    if (copied == Copied::part && part == Part::isRemoved) platform::removeOpened(destination.c_str());
    return copied == Copied::nothing && isSameFile(source, destination) ? 0 : 1;
}

int copyFile(const std::string& source, const std::string& destination, Part part) {
    if (equalIgnoringCase(source, destination)) return 0;
    if (!isPathText(source) || !isPathText(destination)) return 1;
    return copyOpened(SourceFile(source.c_str()), source, destination, part);
}

// The process-wide record that nextDirectoryEntry hands out.
DirectoryEntry currentEntry;

}  // namespace

struct DirectoryListing {
    std::uint16_t count = 0;  // names handed out so far
    ListingNode* first = nullptr;
    ListingNode* cursor = nullptr;
};

int checkPath(const char* path, int typeMask, int accessMode) {
    if (typeMask != 0) {
        platform::FileStatus status;
        if (platform::getStatus(path, status) != 0) return -1;
        const int type = status.kind == platform::FileKind::folder    ? kFolderMask
                         : status.kind == platform::FileKind::regular ? kRegularFileMask
                                                                      : 0;
        if (type != typeMask) return -1;
    }
    return platform::checkAccess(path, accessMode) == 0 ? 0 : -1;
}

int makeDirectory(const char* path, int /*mode*/) {
    std::string trimmed = path;
    while (!trimmed.empty() && isSeparator(trimmed.back())) trimmed.pop_back();
    if (trimmed.empty()) return -1;
    return platform::makeFolder(trimmed.c_str()) == 0 ? 0 : -1;
}

int copyStream(const char* source, int descriptor) {
    const SourceFile file(source);
    platform::FileStatus target;
    // Appending a file to itself would never end.
    if (file.descriptor == -1 || platform::getStatus(descriptor, target) != 0) return -1;
    if (platform::isSameFile(file.status, target)) return -1;
    return copyOpenFiles(file.descriptor, descriptor, file.status.size);
}

int copyFileContents(const char* source, const char* destination) {
    bool isWritable = false;
    return copyContents(SourceFile(source), destination, isWritable) == Copied::whole ? 0 : -1;
}

DirectoryListing* openDirectoryListing(const char* path) {
    std::string folder = path;
    if (folder.size() > 1 && isSeparator(folder.back())) {
        folder.pop_back();
        if (platform::hasDriveLetters() && folder.back() == ':') folder += "\\.";
    } else if (platform::hasDriveLetters() && !folder.empty() && folder.back() == ':') {
        folder += '.';
    }
    std::vector<std::string> names;
    if (platform::listFolder(folder.c_str(), names) != 0) return nullptr;
    auto* listing = new (std::nothrow) DirectoryListing();
    if (listing == nullptr) return nullptr;
    ListingNode** end = &listing->first;
    for (std::string& name : names) {
        *end = new (std::nothrow) ListingNode{std::move(name), nullptr};
        if (*end == nullptr) {
            closeDirectoryListing(listing);
            return nullptr;
        }
        end = &(*end)->next;
    }
    listing->cursor = listing->first;
    return listing;
}

DirectoryEntry* nextDirectoryEntry(DirectoryListing* listing) {
    if (listing->cursor == nullptr) return nullptr;
    const ListingNode& node = *listing->cursor;
    currentEntry.number = static_cast<std::uint16_t>(listing->count + 1);
    currentEntry.recordLength = static_cast<std::uint16_t>(node.name.size());
    currentEntry.nameLength = currentEntry.recordLength;
    currentEntry.name = node.name.c_str();
    listing->cursor = node.next;
    ++listing->count;
    return &currentEntry;
}

int closeDirectoryListing(DirectoryListing* listing) {
    if (listing == nullptr) return 0;
    for (ListingNode* node = listing->first; node != nullptr;) {
        ListingNode* next = node->next;
        delete node;
        node = next;
    }
    delete listing;
    return 0;
}

bool isPathText(const std::string& path) {
    return path.find('\0') == std::string::npos;
}

int isDirectory(const std::string& path, bool& flag) {
    flag = isPathText(path) && checkPath(path.c_str(), kFolderMask, kReadable) == 0;
    return 0;
}

int isRegularFile(const std::string& path, bool& flag) {
    flag = isPathText(path) && checkPath(path.c_str(), kRegularFileMask, kReadable) == 0;
    return 0;
}

bool isPresentFile(const std::string& path) {
    bool flag = false;
    isRegularFile(path, flag);
    return flag;
}

bool isSameFile(const std::string& a, const std::string& b) {
    platform::FileStatus first;
    platform::FileStatus second;
    return platform::getStatus(a.c_str(), first) == 0 && platform::getStatus(b.c_str(), second) == 0 &&
           platform::isSameFile(first, second);
}

bool isLink(const std::string& path) {
    return platform::followLinks(path) != platform::pathOnDisk(path);
}

int ensureDirectory(const std::string& path) {
    if (!isPathText(path)) return 1;
    if (checkPath(path.c_str(), 0, kExists) != 0) return makeDirectory(path.c_str(), kFolderMode) < 0 ? 1 : 0;
    return checkPath(path.c_str(), 0, kWritable) == 0 ? 0 : 1;
}

int createDirectories(const std::string& path) {
    std::string folder;
    toForwardSlashes(path, folder);
    if (folder.size() >= platform::pathLimit()) return reportError(ERR_CREATE_DIRECTORY, folder);
    const auto makeMissing = [](const std::string& prefix) {
        bool isThere = false;
        isDirectory(prefix, isThere);
        if (isThere || ensureDirectory(prefix) == 0) return 0;
        return reportError(ERR_CREATE_DIRECTORY, prefix);
    };
    // The first component is a drive or the root, which exists.
    std::size_t slash = folder.find('/');
    while (slash != std::string::npos) {
        slash = folder.find('/', slash + 1);
        if (slash == std::string::npos) break;
        const int status = makeMissing(folder.substr(0, slash));
        if (status != 0) return status;
    }
    return makeMissing(folder);
}

int copyFile(const std::string& source, const std::string& destination) {
    return copyFile(source, destination, Part::stays);
}

int copyWholeFile(const std::string& source, const std::string& destination) {
    return copyFile(source, destination, Part::isRemoved);
}

int copyWholeFileIfPresent(const std::string& source, const std::string& destination, bool& isPresent) {
    isPresent = false;
    if (!isPathText(source) || equalIgnoringCase(source, destination)) {
        isPresent = isPresentFile(source);
        return 0;
    }
    const SourceFile file(source.c_str());
    // A file that exists but cannot be opened now (too many are open, say) is not absent.
    isPresent = file.descriptor != -1 || (file.error != ENOENT && isPresentFile(source));
    if (!isPresent) return 0;
    return isPathText(destination) ? copyOpened(file, source, destination, Part::isRemoved) : 1;
}

int deleteFile(const std::string& path) {
    return isPathText(path) && platform::removeFile(path.c_str()) == 0 ? 0 : 1;
}

int openDirectory(const std::string& path, DirectoryListing*& handle) {
    handle = isPathText(path) ? openDirectoryListing(path.c_str()) : nullptr;
    return handle == nullptr ? 1 : 0;
}

int readDirectory(DirectoryListing* handle, std::string& name) {
    name.clear();
    const DirectoryEntry* entry = nextDirectoryEntry(handle);
    if (entry == nullptr) return 1;
    name.assign(entry->name, entry->nameLength);
    return 0;
}

int closeDirectory(DirectoryListing* handle) {
    return closeDirectoryListing(handle);
}

}  // namespace tvxconv::fsutil

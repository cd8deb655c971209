#include "KeptFiles.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "fsutil/files.h"
#include "fsutil/paths.h"
#include "platform/platform.h"
#include "report.h"

namespace platform = tvxconv::platform;
namespace fsutil = tvxconv::fsutil;

namespace {

constexpr const char* kFolderName = "/tvxconv-old-files";

class OpenFile {
public:
    explicit OpenFile(const std::string& path) {
        platform::openForReading(path.c_str(), platform::FileMode::binary, descriptor_);
    }
    ~OpenFile() {
        if (descriptor_ != -1) platform::closeFile(descriptor_);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool isOpen() const { return descriptor_ != -1; }

    // Fills the block unless the file ends. Returns the bytes read, -1 on failure.
    std::int64_t read(char* block, std::size_t size) const {
        std::size_t filled = 0;
        while (filled < size) {
            const std::int64_t got = platform::readSome(descriptor_, block + filled, size - filled);
            if (got < 0) return -1;
            if (got == 0) break;
            filled += static_cast<std::size_t>(got);
        }
        return static_cast<std::int64_t>(filled);
    }

private:
    int descriptor_ = -1;
};

}  // namespace

KeptFiles::KeptFiles(const std::string& projectDir) : folder_(projectDir + kFolderName) {}

bool KeptFiles::isLeftOver(std::string& reason) const {
    if (fsutil::checkPath(folder_.c_str(), 0, fsutil::kExists) != 0) return false;
    reason =
        "the folder " + inQuotes(folder_) +
        " is there: another run works on this project, or one was cut off. If none is running, the folder "
        "holds the old files as they were (a number stands before each name): move back those that are "
        "missing or have been changed, the project file among them, remove the folder, and try again";
    return true;
}

bool KeptFiles::begin(std::string& reason) {
    if (isLeftOver(reason)) return false;
    if (platform::makeFolder(folder_.c_str()) == 0) return true;
    reason = "cannot make the folder " + inQuotes(folder_) +
             " to keep the old files in; check write permissions on the project's folder";
    return false;
}

bool KeptFiles::keep(const std::string& path, bool asCopy) {
    if (find(path) != nullptr) return true;
    auto& [memory, set] = *files_;
    char* const place = static_cast<char*>(memory.allocate(path.size(), 1));
    path.copy(place, path.size());
    const auto entry = set.insert({{place, path.size()}, set.size() + 1, asCopy}).first;
    const std::string kept = keptAs(*entry);
    if (!asCopy) entry->isCopy = platform::linkFile(path.c_str(), kept.c_str()) != 0;
    if (!entry->isCopy || fsutil::copyFile(path, kept) == 0) return true;
    set.erase(entry);
    return false;
}

const KeptFiles::Kept* KeptFiles::find(const std::string& path) const {
    const auto found = files_->set.find(Kept{path});
    return found == files_->set.end() ? nullptr : &*found;
}

// The number distinguishes files with one name in two folders.
std::string KeptFiles::keptAs(const Kept& file) const {
    std::string name;
    fsutil::fileNameOf(std::string(file.path), name);
    return folder_ + "/" + std::to_string(file.number) + "-" + name;
}

bool KeptFiles::putBack(const Kept& file) const {
    const std::string kept = keptAs(file);
    const std::string path(file.path);
    if (file.isCopy ? haveSameBytes(kept, path) : fsutil::isSameFile(kept, path)) return true;
    return platform::replaceFile(kept.c_str(), path.c_str()) == 0;
}

bool KeptFiles::putBack(const std::string& path) {
    const Kept* const file = find(path);
    return file == nullptr || putBack(*file);
}

bool KeptFiles::putBackAll(std::vector<std::string>& failed) {
    failed.clear();
    for (const Kept& file : files_->set) {
        if (!putBack(file)) failed.emplace_back(file.path);
    }
    std::sort(failed.begin(), failed.end());
    return failed.empty();
}

std::string KeptFiles::keptPath(const std::string& path) const {
    const Kept* const file = find(path);
    return file == nullptr ? std::string() : keptAs(*file);
}

std::string KeptFiles::oldPath(const std::string& path) const {
    const Kept* const file = find(path);
    return file == nullptr ? std::string() : std::string(file->path);
}

bool KeptFiles::release() {
    for (const Kept& file : files_->set) platform::removeFile(keptAs(file).c_str());
    files_ = std::make_unique<Files>();
    return platform::removeFolder(folder_.c_str()) == 0;
}

std::string lowerCased(const std::string& text) {
    std::string result;
    fsutil::toLowerCase(text, result);
    return result;
}

bool haveSameBytes(const std::string& a, const std::string& b) {
    constexpr std::size_t kBlock = std::size_t{64} * 1024;
    const OpenFile first(a);
    const OpenFile second(b);
    if (!first.isOpen() || !second.isOpen()) return false;
    const auto blocks = std::make_unique_for_overwrite<char[]>(2 * kBlock);
    char* const firstBlock = blocks.get();
    char* const secondBlock = firstBlock + kBlock;
    for (;;) {
        const std::int64_t got = first.read(firstBlock, kBlock);
        if (got < 0 || second.read(secondBlock, kBlock) != got) return false;
        const auto size = static_cast<std::size_t>(got);
        if (std::memcmp(firstBlock, secondBlock, size) != 0) return false;
        if (size < kBlock) return true;
    }
}

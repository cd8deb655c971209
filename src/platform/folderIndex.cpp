#include "platform/folderIndex.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <list>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/platform.h"

namespace tvxconv::platform {
namespace {

unsigned char foldCase(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return value >= 'A' && value <= 'Z' ? static_cast<unsigned char>(value + ('a' - 'A')) : value;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return foldCase(x) == foldCase(y); });
}

// The names of one folder, found ignoring case. One text holds them all, each with a NUL after it, and a
// hash table holds their positions: half the memory of a set of strings, which decides the peak memory of a
// conversion of 10,000 profiles.
class Names {
public:
    void add(std::string_view name) {
        if ((used_ + 1) * 3 > slots_.size() * 2) grow();
        place(static_cast<std::uint32_t>(names_.size()), name);
        names_.append(name);
        names_.push_back('\0');
    }

    void remove(std::string_view name) {
        std::uint32_t* const slot = slotOf(name);
        if (slot != nullptr) *slot = kRemoved;
    }

    bool has(std::string_view name) { return slotOf(name) != nullptr; }

    void find(std::string_view name, const std::string& folder, Spellings& result) const {
        for (std::size_t i = begin(name); slots_[i] != kFree; i = after(i)) {
            if (slots_[i] == kRemoved || !equalIgnoringCase(nameAt(slots_[i]), name)) continue;
            ++result.count;
            if (nameAt(slots_[i]) == name) {
                result.isThereAsAsked = true;
            } else {
                result.twin = folder;
                result.twin += nameAt(slots_[i]);
            }
        }
    }

private:
    static constexpr std::uint32_t kFree = 0xFFFFFFFF;
    static constexpr std::uint32_t kRemoved = 0xFFFFFFFE;

    std::string_view nameAt(std::uint32_t offset) const { return names_.data() + offset; }

    // The slot where the search for a name begins, and the slot after one.
    std::size_t begin(std::string_view name) const {
        std::uint64_t hash = 14695981039346656037U;
        for (const char byte : name) hash = (hash ^ foldCase(byte)) * 1099511628211U;
        return static_cast<std::size_t>(hash ^ (hash >> 32)) & (slots_.size() - 1);
    }
    std::size_t after(std::size_t slot) const { return (slot + 1) & (slots_.size() - 1); }

    // Null if there is no name in exactly this spelling.
    std::uint32_t* slotOf(std::string_view name) {
        for (std::size_t i = begin(name); slots_[i] != kFree; i = after(i)) {
            if (slots_[i] != kRemoved && nameAt(slots_[i]) == name) return &slots_[i];
        }
        return nullptr;
    }

    void place(std::uint32_t offset, std::string_view name) {
        std::size_t i = begin(name);
        while (slots_[i] != kFree) i = after(i);
        slots_[i] = offset;
        ++used_;
    }

    void grow() {
        std::vector<std::uint32_t> old(slots_.size() * 2, kFree);
        old.swap(slots_);
        used_ = 0;
        for (const std::uint32_t offset : old) {
            if (offset < kRemoved) place(offset, nameAt(offset));
        }
    }

    std::string names_;
    std::vector<std::uint32_t> slots_ = std::vector<std::uint32_t>(16, kFree);
    std::size_t used_ = 0;  // slots that are not free, removed ones included
};

// A folder under the path last used for it, with a slash at its end (empty for the current folder). Device
// and number tell whether two paths lead to one folder; the number is 0 until it is looked up.
struct Folder {
    std::string path;
    dev_t device = 0;
    ino_t number = 0;
    Names names;

    bool is(const struct stat& status) {
        struct stat own {};
        if (number == 0 && stat(path.c_str(), &own) == 0) {
            device = own.st_dev;
            number = own.st_ino;
        }
        return number == status.st_ino && device == status.st_dev;
    }
};

const char* asFolder(const std::string& prefix) {
    return prefix.empty() ? "./" : prefix.c_str();
}

class FolderIndex {
public:
    // The folder that `prefix` names, as spelled. Null, with the system's error, if it cannot be listed.
    const Folder* find(const std::string& prefix, int& error) {
        error = 0;
        if (const Folder* known = findKnown(prefix)) return known;
        const std::unique_ptr<DIR, int (*)(DIR*)> listing(opendir(asFolder(prefix)), closedir);
        struct stat status {};
        if (listing == nullptr || fstat(dirfd(listing.get()), &status) != 0) {
            error = errno;
            return nullptr;
        }
        for (auto folder = folders_.begin(); folder != folders_.end(); ++folder) {
            if (!folder->is(status)) continue;
            folder->path = prefix;
            return moveToFront(folder);
        }
        std::list<Folder> added(1);
        Folder& folder = added.front();
        folder.path = prefix;
        folder.device = status.st_dev;
        folder.number = status.st_ino;
        errno = 0;
        while (const dirent* entry = readdir(listing.get())) folder.names.add(entry->d_name);
        error = errno;
        if (error != 0) return nullptr;
        addFront(added);
        return &folder;
    }

    // Adds a folder that has just been made: it is empty.
    void addEmpty(const std::string& prefix) {
        std::list<Folder> added(1);
        added.front().path = prefix;
        for (const char* name : {".", ".."}) added.front().names.add(name);
        addFront(added);
    }

    Folder* findKnown(const std::string& prefix) {
        const auto found = std::find_if(folders_.begin(), folders_.end(),
                                        [&](const Folder& folder) { return folder.path == prefix; });
        return found == folders_.end() ? nullptr : moveToFront(found);
    }

    void forgetAll() noexcept { folders_.clear(); }

private:
    // Room for the folders of the current profile and schematic, their parents and the old ones. A limit,
    // so that many profiles do not fill the memory.
    static constexpr std::size_t kMostFolders = 32;

    void addFront(std::list<Folder>& added) {
        folders_.splice(folders_.begin(), added);
        if (folders_.size() > kMostFolders) folders_.pop_back();
    }

    Folder* moveToFront(std::list<Folder>::iterator folder) {
        folders_.splice(folders_.begin(), folders_, folder);
        return &folders_.front();
    }

    std::list<Folder> folders_;  // the one used last is first
};

FolderIndex* remembered = nullptr;

// Splits "/a/b" and "/a/b/" into "/a/" and "b"; "b" into "" and "b". The folder keeps its slash, so that
// both parts together are the path.
void splitPath(const std::string& path, std::string& folder, std::string& name) {
    std::size_t end = path.size();
    while (end > 1 && path[end - 1] == '/') --end;
    const std::size_t slash = path.rfind('/', end - 1);
    const std::size_t begin = slash == std::string::npos || end == 0 ? 0 : slash + 1;
    folder.assign(path, 0, begin);
    name.assign(path, begin, end - begin);
}

Spellings findIn(FolderIndex& index, const std::string& path);

// Finds the folder that `prefix` names (with a slash at its end, or empty): its path as spelled on disk,
// and its names; null if it may be entered but not listed. False if there is no such folder.
bool findFolder(FolderIndex& index, const std::string& prefix, std::string& actual, const Names*& names) {
    actual = prefix;
    names = nullptr;
    int error = 0;
    const Folder* folder = index.find(prefix, error);
    if (error == ENOENT && prefix.find_first_not_of('/') != std::string::npos) {
        actual = findIn(index, prefix).existing();
        if (actual.empty()) return false;
        folder = index.find(actual, error);
    }
    if (folder != nullptr) names = &folder->names;
    return error != ENOENT && error != ENOTDIR;
}

bool isThere(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0;
}

Spellings findIn(FolderIndex& index, const std::string& path) {
    Spellings result;
    std::string prefix;
    std::string name;
    splitPath(path, prefix, name);
    std::string folder;
    const Names* names = nullptr;
    if (name.empty() || !findFolder(index, prefix, folder, names)) return result;
    // Slashes at the end mean that the path must be a folder: keep them.
    const std::string slashes = path.substr(prefix.size() + name.size());
    result.hasFolder = true;
    result.asAsked = folder + name + slashes;
    if (names != nullptr) {
        names->find(name, folder, result);
        if (!result.twin.empty()) result.twin += slashes;
    } else {
        result.isThereAsAsked = isThere(folder + name);
        result.count = result.isThereAsAsked ? 1 : 0;
    }
    return result;
}

// The change has been made on disk and must not be missed: without memory to note it, the folders are read
// again instead.
template <class Change>
void noteChange(const std::string& path, Change change) noexcept {
    if (remembered == nullptr) return;
    try {
        std::string prefix;
        std::string name;
        splitPath(path, prefix, name);
        if (Folder* folder = remembered->findKnown(prefix)) change(folder->names, name);
    } catch (...) {
        remembered->forgetAll();
    }
}

}  // namespace

Spellings findSpellings(const std::string& path) {
    if (remembered != nullptr) {
        Spellings known = findIn(*remembered, path);
        // A call on the path as asked shows by itself whether the index is right.
        if (known.isThereAsAsked || known.twin.empty()) return known;
        if (!isThere(known.asAsked) && isThere(known.twin)) return known;
        remembered->forgetAll();
        return findIn(*remembered, path);
    }
    FolderIndex index;
    return findIn(index, path);
}

bool isFolderKnown(const std::string& path) {
    if (remembered == nullptr) return false;
    std::string prefix;
    std::string name;
    splitPath(path, prefix, name);
    return remembered->findKnown(prefix) != nullptr;
}

void noteMade(const std::string& path) noexcept {
    noteChange(path, [](Names& names, const std::string& name) {
        if (!names.has(name)) names.add(name);  // a dangling link was known already
    });
}

void noteMadeFolder(const std::string& path) noexcept {
    noteMade(path);
    if (remembered == nullptr) return;
    try {
        remembered->addEmpty(path.ends_with('/') ? path : path + "/");
    } catch (...) {
        remembered->forgetAll();
    }
}

void noteRemoved(const std::string& path) noexcept {
    noteChange(path, [](Names& names, const std::string& name) { names.remove(name); });
}

struct RememberedFolders::Index : FolderIndex {};

RememberedFolders::RememberedFolders() {
    if (remembered != nullptr) return;
    index_ = std::make_unique<Index>();
    remembered = index_.get();
}

RememberedFolders::~RememberedFolders() {
    if (index_ != nullptr) remembered = nullptr;
}

bool nameComesBefore(const std::string& a, const std::string& b) {
    const auto rank = [](const std::string& name) { return name == "." ? 0 : name == ".." ? 1 : 2; };
    if (rank(a) != rank(b)) return rank(a) < rank(b);
    const std::size_t shorter = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < shorter; ++i) {
        if (foldCase(a[i]) != foldCase(b[i])) return foldCase(a[i]) < foldCase(b[i]);
    }
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

}  // namespace tvxconv::platform

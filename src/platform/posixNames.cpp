#include "platform/posixNames.h"

#include <dirent.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <map>
#include <memory>
#include <new>
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
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (foldCase(a[i]) != foldCase(b[i])) return false;
    }
    return true;
}

std::int64_t nanoseconds(const timespec& time) {
    return time.tv_sec * std::int64_t{1000000000} + time.tv_nsec;
}

std::int64_t now() {
    timespec time{};
    clock_gettime(CLOCK_REALTIME, &time);
    return nanoseconds(time);
}

// The names of one folder, found by their folded form. Names lie end to end in one text, each closed
// by a NUL, and the table holds their places: about 1.5 times the length of the names in all.
class NameIndex {
public:
    void clear() {
        names_.clear();
        slots_.assign(16, kFree);
        used_ = 0;
        count_ = 0;
    }

    std::size_t count() const { return count_; }

    void add(std::string_view name) {
        if ((used_ + 1) * 3 > slots_.size() * 2) grow();
        place(static_cast<std::uint32_t>(names_.size()), hashOf(name));
        names_.append(name);
        names_.push_back('\0');
        ++count_;
    }

    void remove(std::string_view name) {
        for (std::size_t i = hashOf(name) & mask();; i = (i + 1) & mask()) {
            if (slots_[i] == kFree) return;
            if (slots_[i] != kRemoved && nameAt(slots_[i]) == name) {
                slots_[i] = kRemoved;
                --count_;
                return;
            }
        }
    }

    // How many names equal `name` ignoring case, whether one is spelled the same, and the last of the others.
    int find(std::string_view name, bool& asSpelled, std::string_view& other) const {
        int found = 0;
        asSpelled = false;
        for (std::size_t i = hashOf(name) & mask(); slots_[i] != kFree; i = (i + 1) & mask()) {
            if (slots_[i] == kRemoved) continue;
            const std::string_view candidate = nameAt(slots_[i]);
            if (!equalIgnoringCase(candidate, name)) continue;
            ++found;
            if (candidate == name) {
                asSpelled = true;
            } else {
                other = candidate;
            }
        }
        return found;
    }

private:
    static constexpr std::uint32_t kFree = 0xFFFFFFFF;
    static constexpr std::uint32_t kRemoved = 0xFFFFFFFE;

    static std::size_t hashOf(std::string_view name) {
        std::uint64_t hash = 14695981039346656037U;
        for (const char byte : name) hash = (hash ^ foldCase(byte)) * 1099511628211U;
        return static_cast<std::size_t>(hash ^ (hash >> 32));
    }

    std::size_t mask() const { return slots_.size() - 1; }

    std::string_view nameAt(std::uint32_t offset) const { return names_.data() + offset; }

    void place(std::uint32_t offset, std::size_t hash) {
        std::size_t i = hash & mask();
        while (slots_[i] != kFree) i = (i + 1) & mask();
        slots_[i] = offset;
        ++used_;
    }

    void grow() {
        const std::vector<std::uint32_t> old = std::exchange(slots_, {});
        slots_.assign(old.size() * 2, kFree);
        used_ = 0;
        for (const std::uint32_t offset : old) {
            if (offset < kRemoved) place(offset, hashOf(nameAt(offset)));
        }
    }

    std::string names_;
    std::vector<std::uint32_t> slots_ = std::vector<std::uint32_t>(16, kFree);
    std::size_t used_ = 0;  // slots that are not free, removed ones included
    std::size_t count_ = 0;
};

// Whether a modification time that has been asked for differs after every later change. Linux has kept
// that promise since 6.13 on these file systems; elsewhere two changes within one step of the clock can
// have one time. (A folder on a tmpfs takes over the time of a file that is removed from it.)
bool showsEveryChange(int folder) {
    static const bool isPromised = [] {
        utsname system{};
        int major = 0;
        int minor = 0;
        if (uname(&system) != 0 || std::sscanf(system.release, "%d.%d", &major, &minor) != 2) return false;
        return major > 6 || (major == 6 && minor >= 13);
    }();
    struct statfs status {};
    if (!isPromised || fstatfs(folder, &status) != 0) return false;
    const auto type = static_cast<unsigned long>(status.f_type);
    return type == EXT4_SUPER_MAGIC || type == XFS_SUPER_MAGIC || type == BTRFS_SUPER_MAGIC;
}

// A folder up to this size is read again without a second thought.
constexpr std::size_t kSmallFolder = 256;
// A change within this time after the last one may leave the modification time as it was: the clock
// of file times ticks in steps, on some file systems of whole seconds (2 where it is coarsest).
constexpr std::int64_t kClockStep = 20'000'000;
constexpr std::int64_t kCoarseClockStep = 2'100'000'000;
// When we have changed a folder, somebody else may have done so in the same moment, and the time of our
// change hides theirs. So long after the last reading the names count as complete all the same, and at
// least so many times the time that the reading took: a fiftieth of a run is spent on it at the most. Where
// the time does not show every change, that second rule is for large folders and the only one.
constexpr std::int64_t kOwnChangesPause = 50'000'000;
constexpr std::int64_t kReadingPause = 50;
constexpr std::size_t kMostFolders = 32;
constexpr std::size_t kDots = 2;  // the entries "." and ".." of an empty folder

struct KnownFolder {
    NameIndex names;
    std::int64_t modified = 0;  // the time of the folder's last change that the names belong to
    bool exact = false;         // every later change shows in the modification time
    bool settled = false;       // any change after the reading does
    bool changedByUs = false;   // since the reading
    std::int64_t readAt = 0;    // 0 until the names are all there
    std::int64_t readingTook = 0;
    std::uint64_t lastUse = 0;
};

using FolderId = std::pair<std::uint64_t, std::uint64_t>;

// A folder that exists: its path with a slash at its end (empty for the current folder), what the
// system says of it, and when it was asked.
struct Folder {
    std::string path;
    struct stat status {};
    std::int64_t askedAt = 0;
};

const char* asFolder(const std::string& prefix) {
    return prefix.empty() ? "./" : prefix.c_str();
}

// The folders asked about lately.
class KnownFolders {
public:
    // Null when the folder cannot be read.
    const NameIndex* namesOf(const Folder& place) {
        latest_ = place.path;
        KnownFolder& folder = remember(idOf(place.status));
        const std::int64_t modified = changeTime(place.status);
        if (isCurrent(folder, modified, place.askedAt)) return &folder.names;
        folder.readAt = 0;  // half an index, where the reading ends early, is none
        if (!read(asFolder(place.path), folder)) return nullptr;
        folder.modified = modified;
        folder.settled = trusts(folder) || isSettled(modified, place.askedAt);
        folder.changedByUs = false;
        folder.readAt = now();
        folder.readingTook = folder.readAt - place.askedAt;
        return &folder.names;
    }

    // Whether the folder of this path, as spelled, is the one that was asked for last.
    bool isLatest(const std::string& path) const {
        return !latest_.empty() && path.starts_with(latest_) &&
               path.find('/', latest_.size()) == std::string::npos;
    }

    // Small folders may be read anew instead: their modification time no longer fits.
    template <class Change>
    void noteChange(const std::string& prefix, Change change) {
        struct stat status {};
        if (stat(asFolder(prefix), &status) != 0) return;
        const auto found = folders_.find(idOf(status));
        if (found == folders_.end()) return;
        KnownFolder& folder = found->second;
        if (folder.readAt == 0) return;
        if (!folder.exact && folder.names.count() <= kSmallFolder) return;
        change(folder.names);
        folder.modified = changeTime(status);
        folder.settled = false;
        folder.changedByUs = true;
    }

    void drop(const std::string& prefix) {
        struct stat status {};
        if (stat(asFolder(prefix), &status) == 0) folders_.erase(idOf(status));
    }

    void forget() {
        folders_.clear();
        latest_.clear();
    }

private:
    static FolderId idOf(const struct stat& status) { return {status.st_dev, status.st_ino}; }

    // Moves with the modification time, but nobody can set it back: a program that unpacks or copies
    // files gives the folder its old modification time in the end.
    static std::int64_t changeTime(const struct stat& status) { return nanoseconds(status.st_ctim); }

    // An empty folder may be removed and made again, under the same number, within one step of the clock.
    static bool trusts(const KnownFolder& folder) { return folder.exact && folder.names.count() > kDots; }

    static bool isSettled(std::int64_t modified, std::int64_t askedAt) {
        const bool coarse = modified % 1'000'000'000 == 0;
        return modified + (coarse ? kCoarseClockStep : kClockStep) < askedAt;
    }

    static bool isCurrent(const KnownFolder& folder, std::int64_t modified, std::int64_t askedAt) {
        if (folder.readAt == 0 || folder.modified != modified) return false;
        if (folder.settled) return true;
        const std::int64_t age = askedAt - folder.readAt;
        if (!folder.changedByUs || age < 0) return false;
        const std::int64_t pause = kReadingPause * folder.readingTook;
        if (trusts(folder)) return age < std::max(kOwnChangesPause, pause);
        return folder.names.count() > kSmallFolder && age < pause;
    }

    static bool read(const char* path, KnownFolder& folder) {
        DIR* listing = opendir(path);
        if (listing == nullptr) return false;
        folder.exact = showsEveryChange(dirfd(listing));
        const std::unique_ptr<DIR, int (*)(DIR*)> closing(listing, closedir);
        folder.names.clear();
        errno = 0;
        while (const dirent* entry = readdir(listing)) folder.names.add(entry->d_name);
        return errno == 0;
    }

    KnownFolder& remember(const FolderId& id) {
        const auto found = folders_.find(id);
        if (found == folders_.end() && folders_.size() >= kMostFolders) {
            auto oldest = folders_.begin();
            for (auto i = folders_.begin(); i != folders_.end(); ++i) {
                if (i->second.lastUse < oldest->second.lastUse) oldest = i;
            }
            folders_.erase(oldest);
        }
        KnownFolder& folder = folders_[id];
        folder.lastUse = ++uses_;
        return folder;
    }

    std::map<FolderId, KnownFolder> folders_;
    std::string latest_;  // the path of the folder asked for last
    std::uint64_t uses_ = 0;
};

thread_local KnownFolders* ownFolders = nullptr;

KnownFolders& knownFolders() {
    static KnownFolders folders;
    return ownFolders != nullptr ? *ownFolders : folders;
}

// "/a/b" and "/a/b/" are "/a/" and "b"; "b" is "" and "b". The folder keeps its slash, so that the
// two put together again are the path.
void splitPath(const std::string& path, std::string& folder, std::string& name) {
    std::size_t end = path.size();
    while (end > 1 && path[end - 1] == '/') --end;
    const std::size_t slash = path.rfind('/', end - 1);
    const std::size_t begin = slash == std::string::npos || end == 0 ? 0 : slash + 1;
    folder.assign(path, 0, begin);
    name.assign(path, begin, end - begin);
}

// The folder that `prefix` (with a slash at its end, or empty) means.
bool findFolder(const std::string& prefix, Folder& folder) {
    folder.askedAt = now();
    folder.path = prefix;
    if (stat(asFolder(prefix), &folder.status) == 0) return S_ISDIR(folder.status.st_mode);
    if (errno != ENOENT || prefix.empty() || prefix == "/") return false;
    std::string name;
    std::string parentPath;
    splitPath(prefix, parentPath, name);
    Folder parent;
    if (!findFolder(parentPath, parent)) return false;
    const NameIndex* names = knownFolders().namesOf(parent);
    bool asSpelled = names == nullptr;  // what may not be listed may still be entered
    std::string_view other;
    const int found = names != nullptr ? names->find(name, asSpelled, other) : 0;
    if (!asSpelled && found != 1) return false;
    folder.path = parent.path;
    folder.path += asSpelled ? std::string_view(name) : other;
    folder.path += '/';
    folder.askedAt = now();
    return stat(folder.path.c_str(), &folder.status) == 0 && S_ISDIR(folder.status.st_mode);
}

// What the folder of a path holds under its last component.
struct Spellings {
    bool hasFolder = false;
    int count = 0;           // names equal ignoring case
    bool asSpelled = false;  // one of them is spelled as asked
    std::string folder;      // its actual path
    std::string name;        // the last component as asked
    std::string other;       // one that is spelled otherwise
    std::string slashes;     // behind the last component: they say that it is to be a folder

    std::string pathOf(const std::string& spelling) const { return folder + spelling + slashes; }
};

Spellings findSpellings(const std::string& path) {
    Spellings result;
    std::string prefix;
    splitPath(path, prefix, result.name);
    result.slashes.assign(path, prefix.size() + result.name.size());
    Folder folder;
    if (result.name.empty() || !findFolder(prefix, folder)) return result;
    result.hasFolder = true;
    result.folder = folder.path;
    if (const NameIndex* names = knownFolders().namesOf(folder)) {
        std::string_view other;
        result.count = names->find(result.name, result.asSpelled, other);
        result.other = other;
    } else {  // what may not be listed may still be entered
        struct stat status {};
        result.asSpelled = lstat((folder.path + result.name).c_str(), &status) == 0;
        result.count = result.asSpelled ? 1 : 0;
    }
    return result;
}

// The change is on disk and has to be answered for: where there is no memory to note it, the folders are
// read again instead.
template <class Change>
void noteChange(const std::string& actual, Change change) noexcept {
    try {
        std::string prefix;
        std::string name;
        splitPath(actual, prefix, name);
        knownFolders().noteChange(prefix, [&](NameIndex& names) { change(names, name); });
    } catch (...) {
        knownFolders().forget();
    }
}

}  // namespace

bool findOtherSpelling(const std::string& path, std::string& actual) {
    const Spellings found = findSpellings(path);
    if (!found.asSpelled && found.count != 1) return false;
    actual = found.pathOf(found.asSpelled ? found.name : found.other);
    return actual != path;
}

bool findPlaceForNew(const std::string& path, std::string& actual, bool* isNew) {
    const Spellings found = findSpellings(path);
    if (!found.hasFolder) return false;
    const bool isOther = !found.asSpelled && found.count == 1;
    actual = found.pathOf(isOther ? found.other : found.name);
    if (isNew != nullptr) *isNew = !found.asSpelled && !isOther;
    return true;
}

void forgetFolders() {
    knownFolders().forget();
}

int beginOwnFolders() {
    endOwnFolders();
    ownFolders = new (std::nothrow) KnownFolders();
    return ownFolders != nullptr ? 0 : ENOMEM;
}

void endOwnFolders() {
    delete std::exchange(ownFolders, nullptr);
}

bool isInFolderAskedLast(const std::string& path) {
    return knownFolders().isLatest(path);
}

int countSpellings(const std::string& path, std::string& actual) {
    const Spellings found = findSpellings(path);
    if (found.count == 1) actual = found.pathOf(found.asSpelled ? found.name : found.other);
    return found.count;
}

void noteMade(const std::string& actual) noexcept {
    noteChange(actual, [](NameIndex& names, const std::string& name) {
        names.remove(name);  // opening an entry that was a dangling link makes no second one
        names.add(name);
    });
}

void noteRemoved(const std::string& actual) noexcept {
    noteChange(actual, [](NameIndex& names, const std::string& name) { names.remove(name); });
}

void noteChangeUnseen(const std::string& actual) noexcept {
    try {
        std::string prefix;
        std::string name;
        splitPath(actual, prefix, name);
        knownFolders().drop(prefix);
    } catch (...) {
        knownFolders().forget();
    }
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

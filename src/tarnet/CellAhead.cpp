#include "tarnet/CellAhead.h"

#include <new>
#include <system_error>
#include <utility>

#include "converter/errors.h"
#include "converter/folderNames.h"
#include "fsutil/files.h"
#include "tarnet/views.h"

namespace tvxconv {
namespace {

constexpr int kFolderMode = 0777;

// Removes a folder with all in it. What cannot be removed stays.
void removeTree(const std::string& folder) {
    forEachName(folder, [&](const std::string& name) {
        if (name == "." || name == "..") return true;
        const std::string path = folder + "/" + name;
        if (fsutil::deleteFile(path) != 0) removeTree(path);
        return true;
    });
    fsutil::removeDirectory(folder);
}

}  // namespace

CellAhead::CellAhead(TarnetProjectConverter& owner) : converter_(nullptr) {
    converter_.copyExtensions() = owner.copyExtensions();
    converter_.cellExtensions() = owner.cellExtensions();
    converter_.profileExtensions() = owner.profileExtensions();
}

CellAhead::~CellAhead() {
    try {
        takeBack();
    } catch (...) {  // no memory to remove it: it stays, without a mark or with one
    }
    if (!thread_.joinable()) return;
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

bool CellAhead::isPossible() {
    return std::thread::hardware_concurrency() > 1;
}

bool CellAhead::begin(const std::string& oldView) {
    if (!canWork_) return false;
    fileNames_.clear();
    const int listed = forEachName(oldView, [&](const std::string& name) {
        fileNames_.push_back(name);
        return true;
    });
    if (listed != 0 || converter_.enterCell(oldView) != 0) return false;
    if (!thread_.joinable()) {
        try {
            thread_ = std::thread([this] { run(); });
        } catch (const std::system_error&) {
            canWork_ = false;
            return false;
        }
    }
    converter_.getDestinationDir(newView_);
    if (fsutil::makeDirectory(newView_.c_str(), kFolderMode) != 0) return false;
    {
        const std::lock_guard lock(mutex_);
        isWorking_ = true;
    }
    changed_.notify_all();
    isBegun_ = true;
    return true;
}

int CellAhead::accept() {
    wait();
    isBegun_ = false;
    if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
    for (const OwnErrors::Report& error : errors_) recordError(error.code, error.message);
    return status_;
}

void CellAhead::takeBack() {
    if (!isBegun_) return;
    wait();
    isBegun_ = false;
    // The mark first: what may be left of the view does not count as converted then.
    fsutil::deleteFile(newView_ + "/" + kViewMarker);
    removeTree(newView_);
}

void CellAhead::wait() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !isWorking_; });
}

void CellAhead::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isEnding_ || isWorking_; });
        if (!isWorking_) return;
        lock.unlock();
        convert();
        lock.lock();
        isWorking_ = false;
        changed_.notify_all();
    }
}

void CellAhead::convert() {
    const fsutil::OwnFolders folders;
    thrown_ = nullptr;
    try {
        const OwnErrors errors;
        if (!folders.isReady()) throw std::bad_alloc();
        status_ = converter_.fillNewView(fileNames_);
        errors_ = OwnErrors::take();
    } catch (...) {
        thrown_ = std::current_exception();
    }
}

}  // namespace tvxconv

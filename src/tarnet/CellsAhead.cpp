#include "tarnet/CellsAhead.h"

#include <algorithm>
#include <new>
#include <system_error>
#include <utility>

#include "converter/errors.h"
#include "converter/folderNames.h"
#include "fsutil/files.h"
#include "fsutil/paths.h"
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

CellsAhead::CellsAhead(TarnetProjectConverter& owner) : owner_(owner) {}

CellsAhead::~CellsAhead() {
    try {
        takeBack();
    } catch (...) {  // no memory to remove them: they stay, without a mark or with one
    }
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_all();
    for (Helper& helper : helpers_) {
        if (helper.thread.joinable()) helper.thread.join();
    }
}

bool CellsAhead::isPossible() {
    return std::thread::hardware_concurrency() > 1;
}

void CellsAhead::begin(const std::string& cellFolder) {
    Cell& cell = cells_.emplace_back();
    cell.folder = cellFolder;
    if (!isToBeConverted(cellFolder) || !haveHelpers() || !makeNewView(cell)) return;
    ++underWay_;
    {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(&cell);
        cell.isDone = false;
    }
    changed_.notify_all();
}

std::optional<int> CellsAhead::accept() {
    await(cells_.front());
    if (cells_.front().isOutOfTurn) {
        isGivenUp_ = true;
        takeBack();
    }
    const Cell cell = std::move(cells_.front());
    cells_.pop_front();
    if (takenBack_ != 0) --takenBack_;
    if (cell.newView.empty()) return std::nullopt;
    --underWay_;
    if (cell.thrown) std::rethrow_exception(cell.thrown);
    for (const OwnErrors::Report& error : cell.errors) recordError(error.code, error.message);
    return cell.status;
}

bool CellsAhead::takeBack() {
    if (underWay_ == 0) return false;
    {
        const std::lock_guard lock(mutex_);
        for (Cell* cell : waiting_) cell->isDone = true;
        waiting_.clear();
    }
    for (const Cell& cell : cells_) await(cell);
    // Also where the run has been interrupted: nobody would tell of what failed in these cells.
    const fsutil::AfterStop cleaning;
    for (Cell& cell : cells_) {
        if (cell.newView.empty()) continue;
        // The mark first: what may be left of the view does not count as converted then.
        fsutil::deleteFile(cell.newView + "/" + kViewMarker);
        removeTree(cell.newView);
        cell.newView.clear();
    }
    underWay_ = 0;
    takenBack_ = cells_.size();
    return true;
}

void CellsAhead::await(const Cell& cell) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return cell.isDone; });
}

// Starts the threads if there are none yet. False when there can be none.
bool CellsAhead::haveHelpers() {
    if (isGivenUp_) return false;
    if (!std::exchange(mayStartHelpers_, false)) return !helpers_.empty();
    const std::size_t count = std::min<std::size_t>(std::thread::hardware_concurrency(), kMostHelpers);
    while (helpers_.size() < count) {
        Helper& helper = helpers_.emplace_back();
        helper.converter.setOutOfTurn(true);
        helper.converter.copyExtensions() = owner_.copyExtensions();
        helper.converter.cellExtensions() = owner_.cellExtensions();
        helper.converter.profileExtensions() = owner_.profileExtensions();
        try {
            helper.thread = std::thread([this, &helper] { help(helper.converter); });
        } catch (const std::system_error&) {
            helpers_.pop_back();
            break;
        }
    }
    return !helpers_.empty();
}

// Makes the folder of a cell's new view and lists the old one. The owner's thread does it, so that of two
// names for one cell the first has it.
bool CellsAhead::makeNewView(Cell& cell) {
    const int listed = forEachName(oldViewOf(cell.folder), [&](const std::string& name) {
        cell.fileNames.push_back(name);
        return true;
    });
    // As the converter names it: a backslash separates, too.
    std::string newView;
    fsutil::toForwardSlashes(newViewOf(cell.folder), newView);
    if (listed != 0 || fsutil::makeDirectory(newView.c_str(), kFolderMode) != 0) return false;
    cell.newView = std::move(newView);
    return true;
}

void CellsAhead::help(TarnetProjectConverter& converter) {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isEnding_ || !waiting_.empty(); });
        if (waiting_.empty()) return;
        Cell& cell = *waiting_.front();
        waiting_.pop_front();
        lock.unlock();
        convert(converter, cell);
        lock.lock();
        cell.isDone = true;
        changed_.notify_all();
    }
}

void CellsAhead::convert(TarnetProjectConverter& converter, Cell& cell) {
    const fsutil::OwnFolders folders;
    try {
        const OwnErrors errors;
        if (!folders.isReady()) throw std::bad_alloc();
        converter.enterCell(oldViewOf(cell.folder));
        cell.status = converter.fillNewView(cell.fileNames);
        cell.errors = OwnErrors::take();
    } catch (const TarnetProjectConverter::OutOfTurn&) {
        cell.isOutOfTurn = true;
    } catch (...) {
        cell.thrown = std::current_exception();
    }
}

}  // namespace tvxconv

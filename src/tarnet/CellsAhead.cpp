#include "tarnet/CellsAhead.h"

#include <algorithm>
#include <utility>

#include "converter/errors.h"
#include "converter/folderNames.h"
#include "fsutil/files.h"
#include "fsutil/paths.h"
#include "platform/platform.h"
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
    } catch (...) {  // no memory to remove them: they stay, without a mark
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

bool CellsAhead::mayBegin() const {
    if (isGivenUp_ || underWay_ >= kMostAhead || cells_.size() >= kMostLookedAt) return false;
    return cells_.empty() || !cells_.back().awaitsItsTurn;
}

void CellsAhead::begin(const std::string& cellFolder) {
    Cell& cell = cells_.emplace_back();
    cell.folder = cellFolder;
    if (!isView(oldViewOf(cellFolder))) return;
    cell.awaitsItsTurn = !haveHelpers() || !makeNewView(cell);
    if (cell.awaitsItsTurn) return;
    ++underWay_;
    {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(&cell);
        cell.isDone = false;
    }
    changed_.notify_all();
}

bool CellsAhead::accept() {
    const Cell& cell = cells_.front();
    await(cell);
    const bool isBegun = !cell.newView.empty();
    const bool isConverted = isBegun && cell.isFilled && markNewView(cell);
    if (isConverted) {
        --underWay_;
    } else if (isBegun) {
        takeBack();
    }
    cells_.pop_front();
    return isConverted;
}

void CellsAhead::takeBack() {
    if (underWay_ == 0) return;
    {
        const std::lock_guard lock(mutex_);
        for (Cell* cell : waiting_) cell->isDone = true;
        waiting_.clear();
    }
    for (const Cell& cell : cells_) await(cell);
    for (Cell& cell : cells_) {
        if (cell.newView.empty()) continue;
        // Also where the run has been interrupted, or is just now. What is left all the same has no mark.
        const fsutil::AfterStop cleaning;
        removeTree(cell.newView);
        cell.newView.clear();
    }
    underWay_ = 0;
    isGivenUp_ = true;
}

void CellsAhead::await(const Cell& cell) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return cell.isDone; });
}

// Starts the threads if there are none yet. False when there can be none.
bool CellsAhead::haveHelpers() {
    if (!std::exchange(mayStartHelpers_, false)) return !helpers_.empty();
    const std::size_t count = std::min<std::size_t>(std::thread::hardware_concurrency(), kMostHelpers);
    while (helpers_.size() < count) {
        Helper& helper = helpers_.emplace_back();
        helper.converter.setOutOfTurn(true);
        helper.converter.copyExtensions() = owner_.copyExtensions();
        helper.converter.cellExtensions() = owner_.cellExtensions();
        helper.converter.profileExtensions() = owner_.profileExtensions();
        if (!platform::startThread(helper.thread, [this, &helper] { help(helper.converter); })) {
            helpers_.pop_back();
            break;
        }
    }
    return !helpers_.empty();
}

// Makes the folder of a cell's new view and lists the old one. The owner's thread does it, so that of two
// names for one cell the first has it.
bool CellsAhead::makeNewView(Cell& cell) {
    // Named as the converter names them: a backslash separates, too.
    std::string oldView;
    std::string newView;
    fsutil::toForwardSlashes(oldViewOf(cell.folder), oldView);
    fsutil::toForwardSlashes(newViewOf(cell.folder), newView);
    if (namesIn(oldView, cell.fileNames) != 0) return false;
    if (fsutil::makeDirectory(newView.c_str(), kFolderMode) != 0) return false;
    cell.newView = std::move(newView);
    return true;
}

// By the owner and in the cell's turn: what a run leaves that ends before does not count as converted.
bool CellsAhead::markNewView(const Cell& cell) {
    const AttemptErrors errors;
    return owner_.enterCell(oldViewOf(cell.folder)) == 0 && owner_.markNewView() == 0;
}

void CellsAhead::help(TarnetProjectConverter& converter) {
    const fsutil::OwnFolders folders;
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isEnding_ || !waiting_.empty(); });
        if (waiting_.empty()) return;
        Cell& cell = *waiting_.front();
        waiting_.pop_front();
        lock.unlock();
        const bool isFilled = folders.isReady() && fillNewView(converter, cell);
        lock.lock();
        cell.isFilled = isFilled;
        cell.isDone = true;
        changed_.notify_all();
    }
}

// Whether everything went well.
bool CellsAhead::fillNewView(TarnetProjectConverter& converter, const Cell& cell) {
    try {
        const AttemptErrors errors;
        if (converter.enterCell(oldViewOf(cell.folder)) != 0) return false;
        converter.fillNewView(cell.fileNames);
        return !errors.any();
    } catch (...) {  // it needs its turn, or memory ran out
        return false;
    }
}

}  // namespace tvxconv

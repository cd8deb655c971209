// CellsAhead.h
//
// Threads that convert the next cells of a library before their turn comes. Most of the time goes by inside
// the system's calls that make small files, and two threads get nearly twice as much done there.
//
// What comes of it is what one thread would do: a cell ahead is accepted, with its errors, when its turn
// comes, or taken back when the run has ended before. So only a cell whose new view is not there yet is
// converted ahead, and the new views are made in the order of the cells. Belongs to one thread, which does
// all calls.

#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "converter/errors.h"
#include "tarnet/TarnetProjectConverter.h"

namespace tvxconv {

class CellsAhead {
public:
    // Cells are converted by the lists of `owner`.
    explicit CellsAhead(TarnetProjectConverter& owner);
    // Cells that have not been accepted are taken back.
    ~CellsAhead();
    CellsAhead(const CellsAhead&) = delete;
    CellsAhead& operator=(const CellsAhead&) = delete;

    // Whether the system can do two things at a time.
    static bool isPossible();

    // Whether as many cells have begun as should before the first of them is accepted.
    // After some were taken back none should until these are accepted: their places count as theirs.
    bool isFull() const {
        return takenBack_ != 0 || underWay_ >= kMostAhead || cells_.size() >= kMostLookedAt;
    }

    // Begins with the cell of this folder. Nothing is done for it when there is no thread, it is not to be
    // converted, its old view cannot be listed, or the new one is there or cannot be made.
    void begin(const std::string& cellFolder);

    // The folder of the first cell that has begun and is not accepted; null when there is none.
    const std::string* first() const { return cells_.empty() ? nullptr : &cells_.front().folder; }

    // Waits for the first cell, records its errors, and returns its status; nothing when nothing was done for
    // it. It is accepted then. What the work on it threw (memory ran out) is thrown here.
    // A cell that names files in a new view has to see what is there in its turn. It and all later ones are
    // taken back then, and nothing is done for any cell from now on.
    std::optional<int> accept();

    // Makes all cells that have begun into ones for which nothing was done: their new views are removed.
    // False when there were none.
    bool takeBack();

private:
    struct Cell {
        std::string folder;
        std::string newView;  // empty: nothing is done
        std::vector<std::string> fileNames;
        bool isDone = true;
        bool isOutOfTurn = false;
        int status = 0;
        std::vector<OwnErrors::Report> errors;
        std::exception_ptr thrown;
    };
    struct Helper {
        TarnetProjectConverter converter{nullptr};
        std::thread thread;
    };

    static constexpr std::size_t kMostHelpers = 4;
    static constexpr std::size_t kMostAhead = 4 * kMostHelpers;
    static constexpr std::size_t kMostLookedAt = 256;

    void await(const Cell& cell);
    bool haveHelpers();
    static bool makeNewView(Cell& cell);
    void help(TarnetProjectConverter& converter);
    static void convert(TarnetProjectConverter& converter, Cell& cell);

    TarnetProjectConverter& owner_;
    std::list<Helper> helpers_;
    bool mayStartHelpers_ = true;
    bool isGivenUp_ = false;

    std::deque<Cell> cells_;     // begun and not accepted, in their order
    std::size_t underWay_ = 0;   // of those, with something done
    std::size_t takenBack_ = 0;  // the first so many had begun when cells were taken back

    std::mutex mutex_;  // guards the following, and isDone of a cell that has begun
    std::condition_variable changed_;
    std::deque<Cell*> waiting_;  // for a helper
    bool isEnding_ = false;
};

}  // namespace tvxconv

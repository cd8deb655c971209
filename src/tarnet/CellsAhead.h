// CellsAhead.h
//
// Threads that convert the next cells of a library before their turn comes. Most of the time goes by inside
// the system's calls that make small files, and two threads get nearly twice as much done there.
//
// What comes of it is what one thread would do: new views are made in the order of the cells and only where
// none is there, and one that is filled ahead gets its mark when its turn comes, if all went well. Where
// something failed - it may be for want of room that later cells have taken - all cells ahead are taken back,
// and the rest of the run is left to the one thread. Belongs to that thread, which does all calls.

#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tarnet/TarnetProjectConverter.h"

namespace tvxconv {

class CellsAhead {
public:
    // Cells are converted by the lists of `owner`, which outlives this.
    explicit CellsAhead(TarnetProjectConverter& owner);
    // Cells that have not been accepted are taken back.
    ~CellsAhead();
    CellsAhead(const CellsAhead&) = delete;
    CellsAhead& operator=(const CellsAhead&) = delete;

    // Whether the system can do two things at a time.
    static bool isPossible();

    // Whether a cell may be begun now.
    bool mayBegin() const;

    // Begins with the cell of this folder, whose new view has no mark, if it has the old view. None may be
    // begun after one that has to wait for its turn: its new view is there or cannot be made, or its old one
    // cannot be listed.
    void begin(const std::string& cellFolder);

    // The folder of the first cell that has begun and has not had its turn; null when there is none.
    const std::string* first() const { return cells_.empty() ? nullptr : &cells_.front().folder; }

    // The turn of the first cell: true when it is converted, with its mark, and the owner's fields tell of
    // it. False when nothing was done for it; also when something failed, and all is taken back.
    bool accept();

    // Removes the new views of all cells that have begun. If there were any, none may be begun from now on.
    void takeBack();

private:
    struct Cell {
        std::string folder;
        std::string newView;  // empty: nothing is done for it
        std::vector<std::string> fileNames;
        bool awaitsItsTurn = false;
        bool isDone = true;  // no thread is at it, and none will be
        bool isFilled = false;
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
    bool markNewView(const Cell& cell);
    void help(TarnetProjectConverter& converter);
    static bool fillNewView(TarnetProjectConverter& converter, const Cell& cell);

    TarnetProjectConverter& owner_;
    std::list<Helper> helpers_;
    bool mayStartHelpers_ = true;
    bool isGivenUp_ = false;

    std::deque<Cell> cells_;    // begun and not accepted, in their order
    std::size_t underWay_ = 0;  // of those, with a new view

    std::mutex mutex_;  // guards the following, and isDone of a cell that has begun
    std::condition_variable changed_;
    std::deque<Cell*> waiting_;  // for a helper
    bool isEnding_ = false;
};

}  // namespace tvxconv

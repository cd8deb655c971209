// CellAhead.h
//
// A second thread that converts the next cell of a library while its owner converts one. Most of the time
// goes by inside the system's calls that make small files, and two threads get nearly twice as much done
// there.
//
// What comes of it is what one thread would do: a cell ahead is accepted, with its errors, when its turn
// comes, or taken back when the run has ended before. So only a cell whose new view is not there yet is
// converted ahead. Belongs to one thread, which does all calls in turn: begin, then accept or takeBack.

#pragma once

#include <condition_variable>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "converter/errors.h"
#include "tarnet/TarnetProjectConverter.h"

namespace tvxconv {

class CellAhead {
public:
    // Cells are converted by the lists of `owner`.
    explicit CellAhead(TarnetProjectConverter& owner);
    // A cell that has not been accepted is taken back.
    ~CellAhead();
    CellAhead(const CellAhead&) = delete;
    CellAhead& operator=(const CellAhead&) = delete;

    // Whether the system can do two things at a time.
    static bool isPossible();

    // Begins to convert the cell whose old view is this folder. False, with nothing done, when there is no
    // second thread, the old view cannot be listed, or the new one is there or cannot be made.
    bool begin(const std::string& oldView);

    // Waits for the cell, records its errors, and returns its status. What the work on it threw
    // (memory ran out) is thrown here.
    int accept();

    // Waits for the cell and removes its new view.
    void takeBack();

private:
    void run();
    void convert();
    void wait();

    TarnetProjectConverter converter_;
    std::string newView_;
    std::vector<std::string> fileNames_;
    int status_ = 0;
    std::vector<OwnErrors::Report> errors_;
    std::exception_ptr thrown_;

    bool isBegun_ = false;  // and neither accepted nor taken back

    std::mutex mutex_;
    std::condition_variable changed_;
    bool isWorking_ = false;
    bool isEnding_ = false;
    std::thread thread_;
    bool canWork_ = true;
};

}  // namespace tvxconv

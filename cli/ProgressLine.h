// ProgressLine.h
//
// A line on standard error that shows the progress of a conversion, if standard error is a terminal.

#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

class ProgressLine {
public:
    // Shows `what` and the number of files written.
    explicit ProgressLine(const std::string& what);
    // Shows the text that `describe` makes, called in the line's own thread.
    explicit ProgressLine(std::function<std::string()> describe);
    // Removes the line.
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

private:
    void run();

    std::function<std::string()> describe_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool ended_ = false;
    std::thread thread_;
};

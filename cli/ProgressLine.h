// ProgressLine.h
//
// A line on standard error that tells how far a conversion has come while it runs, where that is a terminal.

#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

class ProgressLine {
public:
    // `what`, and how many files have been written.
    explicit ProgressLine(const std::string& what);
    // `describe` makes the text, in a thread of its own.
    explicit ProgressLine(std::function<std::string()> describe);
    // Takes the line away.
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

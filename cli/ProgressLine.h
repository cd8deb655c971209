// ProgressLine.h
//
// A line on standard error that counts files while a conversion runs, where that is a terminal.

#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

class ProgressLine {
public:
    explicit ProgressLine(const std::string& what);
    // Takes the line away.
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

private:
    void run();

    std::string what_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool ended_ = false;
    std::thread thread_;
};

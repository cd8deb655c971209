#include "ProgressLine.h"

#include <chrono>
#include <iostream>

#include "platform/platform.h"

namespace {

constexpr int kStandardError = 2;
constexpr std::chrono::milliseconds kPause{100};
constexpr const char* kClearLine = "\r\033[K";

}  // namespace

ProgressLine::ProgressLine(const std::string& what) : what_(what) {
    if (tvxconv::platform::isTerminal(kStandardError)) thread_ = std::thread([this] { run(); });
}

ProgressLine::~ProgressLine() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    wake_.notify_one();
    thread_.join();
    std::cerr << kClearLine << std::flush;
}

void ProgressLine::run() {
    std::unique_lock lock(mutex_);
    while (!wake_.wait_for(lock, kPause, [this] { return ended_; })) {
        std::cerr << kClearLine << what_ << ": " << tvxconv::platform::filesWritten() << " files"
                  << std::flush;
    }
}

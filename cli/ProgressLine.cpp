#include "ProgressLine.h"

#include <chrono>
#include <iostream>
#include <utility>

#include "platform/platform.h"

namespace {

constexpr int kStandardError = 2;
constexpr std::chrono::milliseconds kPause{100};
constexpr const char* kClearLine = "\r\033[K";

}  // namespace

ProgressLine::ProgressLine(const std::string& what)
    : ProgressLine(
          [what] { return what + ": " + std::to_string(tvxconv::platform::filesWritten()) + " files"; }) {}

ProgressLine::ProgressLine(std::function<std::string()> describe) : describe_(std::move(describe)) {
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
        std::cerr << kClearLine << describe_() << std::flush;
    }
}

#include "fsutil/CopyQueue.h"

#include <algorithm>
#include <utility>

#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "platform/platform.h"

namespace tvxconv::fsutil {

CopyQueue::~CopyQueue() {
    discard();
}

void CopyQueue::add(const std::string& folder, std::vector<FileCopy> copies) {
    if (copies.empty()) return;
    std::unique_lock lock(mutex_);
    if (isUnderWay(folder)) drain(lock);
    waiting_.push_back({folder, std::move(copies), added_++});
    if (waiting_.size() >= kBeforeHelp) startHelper();
    changed_.notify_all();
    if (waiting_.size() >= kMostWaiting) copyFirst(lock);
}

void CopyQueue::await(const std::string& folder, const std::string& destination) {
    std::unique_lock lock(mutex_);
    // Which of its files the helper has done by now is its own knowledge.
    bool isComing = helping_ && equalIgnoringCase(helpersFolder_, folder);
    for (const Batch& batch : waiting_) {
        if (isComing || !equalIgnoringCase(batch.folder, folder)) continue;
        isComing = std::any_of(batch.copies.begin(), batch.copies.end(), [&](const FileCopy& copy) {
            return equalIgnoringCase(copy.destination, destination);
        });
    }
    if (isComing) drain(lock);
}

std::vector<FileCopy> CopyQueue::finish() {
    {
        std::unique_lock lock(mutex_);
        drain(lock);
    }
    endHelper();
    std::vector<Failure> failures = std::exchange(failures_, {});
    if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
    std::stable_sort(failures.begin(), failures.end(),
                     [](const Failure& a, const Failure& b) { return a.batch < b.batch; });
    std::vector<FileCopy> copies;
    copies.reserve(failures.size());
    for (Failure& failure : failures) copies.push_back(std::move(failure.copy));
    return copies;
}

void CopyQueue::discard() {
    {
        const std::lock_guard lock(mutex_);
        waiting_.clear();
    }
    endHelper();
    failures_.clear();
    thrown_ = nullptr;
}

bool CopyQueue::isUnderWay(const std::string& folder) const {
    return (helping_ && equalIgnoringCase(helpersFolder_, folder)) ||
           std::any_of(waiting_.begin(), waiting_.end(),
                       [&](const Batch& batch) { return equalIgnoringCase(batch.folder, folder); });
}

// Copies until nothing is waiting, and waits for the helper.
void CopyQueue::drain(std::unique_lock<std::mutex>& lock) {
    while (!waiting_.empty()) copyFirst(lock);
    changed_.wait(lock, [this] { return !helping_; });
}

// Copies the files of the folder that has waited longest, without the lock meanwhile.
void CopyQueue::copyFirst(std::unique_lock<std::mutex>& lock) {
    Batch batch = std::move(waiting_.front());
    waiting_.pop_front();
    lock.unlock();
    std::exception_ptr thrown;
    for (FileCopy& copy : batch.copies) {
        try {
            if (copyFile(copy.source, copy.destination) == 0) continue;
            const std::lock_guard adding(mutex_);
            failures_.push_back({batch.number, std::move(copy)});
        } catch (...) {
            thrown = std::current_exception();
        }
    }
    lock.lock();
    if (thrown) thrown_ = thrown;
}

void CopyQueue::startHelper() {
    if (!std::exchange(helperIsWanted_, false) || std::thread::hardware_concurrency() < 2) return;
    // Without it the owner copies everything.
    platform::startThread(helper_, [this] { help(); });
}

void CopyQueue::help() {
    const OwnFolders folders;
    if (!folders.isReady()) return;
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return ending_ || !waiting_.empty(); });
        if (waiting_.empty()) break;
        helping_ = true;
        helpersFolder_.swap(waiting_.front().folder);
        copyFirst(lock);
        helping_ = false;
        changed_.notify_all();
    }
}

void CopyQueue::endHelper() {
    if (helper_.joinable()) {
        {
            const std::lock_guard lock(mutex_);
            ending_ = true;
        }
        changed_.notify_all();
        helper_.join();
    }
    ending_ = false;
    helperIsWanted_ = true;
}

}  // namespace tvxconv::fsutil

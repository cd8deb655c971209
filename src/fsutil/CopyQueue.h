// CopyQueue.h
//
// Copying files while the caller goes on with other work. Most of the time of a conversion goes by inside the
// system's calls that copy small files, and two threads get nearly twice as much done there as one. The
// files of one folder stay with one thread: two that make files in one folder hold each other up.
//
// A queue belongs to one thread, which adds to it and finishes it. A helper thread copies meanwhile, and so
// does the owner when much is waiting. For a few folders, or with one processor, there is no helper, and
// after finish there never is.

#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tvxconv::fsutil {

// One file to copy, by copyFile. The tag is the owner's own and comes back with a copy that failed.
struct FileCopy {
    std::string source;
    std::string destination;
    std::uint64_t tag = 0;
};

class CopyQueue {
public:
    CopyQueue() = default;
    // What is still waiting is not copied.
    ~CopyQueue();
    CopyQueue(const CopyQueue&) = delete;
    CopyQueue& operator=(const CopyQueue&) = delete;

    // Takes copies whose destinations lie in one folder, no two of them equal ignoring letter case. They are
    // made in their order, after all earlier ones of that folder. The sources must stay until finish returns.
    void add(const std::string& folder, std::vector<FileCopy> copies);

    // Makes sure that no copy to this place in the folder is still to come.
    void await(const std::string& folder, const std::string& destination);

    // Waits until everything added has been copied, and returns the copies that failed, in the order in
    // which they were added. What a copy threw (memory ran out) is thrown here.
    std::vector<FileCopy> finish();

    // Ends without copying what is waiting.
    void discard();

private:
    struct Batch {
        std::string folder;
        std::vector<FileCopy> copies;
        std::size_t number = 0;
    };
    struct Failure {
        std::size_t batch = 0;
        FileCopy copy;
    };

    // Folders that wait before a helper is started, and before the caller takes one itself.
    static constexpr std::size_t kBeforeHelp = 8;
    static constexpr std::size_t kMostWaiting = 16;

    bool isUnderWay(const std::string& folder) const;
    void drain(std::unique_lock<std::mutex>& lock);
    void copyFirst(std::unique_lock<std::mutex>& lock);
    void startHelper();
    void help();
    void endHelper();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Batch> waiting_;
    std::size_t added_ = 0;  // batches
    std::vector<Failure> failures_;
    std::exception_ptr thrown_;

    std::thread helper_;
    bool helperIsWanted_ = true;
    bool helping_ = false;
    std::string helpersFolder_;
    bool ending_ = false;
};

}  // namespace tvxconv::fsutil

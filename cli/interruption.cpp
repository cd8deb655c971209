#include "interruption.h"

#include <atomic>
#include <thread>

#include "platform/platform.h"

namespace platform = tvxconv::platform;

namespace {

// Set when the user asks the program to end. During the conversion this also stops its work on files.
// Afterwards the program restores the old files, which must not be stopped.
std::atomic<bool> interrupted{false};
enum class Work { other, converting, stopping, stopped };
std::atomic<Work> work{Work::other};

// May be called from a signal handler, on any thread.
void noteInterrupt() {
    interrupted = true;
    Work expected = Work::converting;
    if (!work.compare_exchange_strong(expected, Work::stopping)) return;
    platform::stopFiles();
    work = Work::stopped;
}

}  // namespace

void watchForInterrupts() {
    platform::onInterrupt(noteInterrupt);
}

bool wasInterrupted() {
    return interrupted;
}

Interruptible::Interruptible() {
    work = Work::converting;
    // The user may have asked before this.
    if (interrupted) noteInterrupt();
}

Interruptible::~Interruptible() {
    Work expected = Work::converting;
    if (!work.compare_exchange_strong(expected, Work::other)) {
        while (work != Work::stopped) std::this_thread::yield();
    }
    work = Work::other;
    platform::resumeFiles();
}

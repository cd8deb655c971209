#include "interruption.h"

#include <atomic>
#include <thread>

#include "platform/platform.h"

namespace platform = tvxconv::platform;

namespace {

// Set when the user asks the program to end. While the conversion runs, that also stops its work on
// files; afterwards the program sees to it that the old files are in order, which must not be cut short.
std::atomic<bool> interrupted{false};
enum class Work { other, converting, stopping, stopped };
std::atomic<Work> work{Work::other};

// May run in the midst of things, in any thread.
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
    // Asked to end before there was work to stop.
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

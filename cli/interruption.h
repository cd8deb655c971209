// interruption.h
//
// Handles the user's request to end the program: a running conversion stops its work on files and returns,
// but the cleaning up after it is not stopped.

#pragma once

// Starts watching for requests to end the program.
void watchForInterrupts();

// Whether there was one.
bool wasInterrupted();

// While the object exists, an interrupt stops the work on files.
class Interruptible {
public:
    Interruptible();
    ~Interruptible();
    Interruptible(const Interruptible&) = delete;
    Interruptible& operator=(const Interruptible&) = delete;
};

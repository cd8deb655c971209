// interruption.h
//
// What happens when the user asks the program to end: a conversion that runs stops its work on files and
// returns, and what has to be put in order afterwards is not cut short.

#pragma once

// From now on the program notices when it is asked to end.
void watchForInterrupts();

// Whether it has been.
bool wasInterrupted();

// Lets interrupts stop the work on files as long as the object lives.
class Interruptible {
public:
    Interruptible();
    ~Interruptible();
    Interruptible(const Interruptible&) = delete;
    Interruptible& operator=(const Interruptible&) = delete;
};

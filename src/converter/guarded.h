// guarded.h
//
// The last stop for exceptions: what the operations of the exported interfaces run inside.

#pragma once

namespace tvxconv {

// Runs an operation and returns its status; 1 where it throws, which only lack of memory makes it do.
template <class Operation>
int guarded(Operation operation) noexcept {
    try {
        return operation();
    } catch (...) {
        return 1;
    }
}

}  // namespace tvxconv

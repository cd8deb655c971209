// guarded.h
//
// The last stop for exceptions: the operations of the exported interfaces run inside it.

#pragma once

namespace tvxconv {

// Runs an operation and returns its status, or 1 if it throws, which happens only if memory runs out.
template <class Operation>
int guarded(Operation operation) noexcept {
    try {
        return operation();
    } catch (...) {
        return 1;
    }
}

}  // namespace tvxconv

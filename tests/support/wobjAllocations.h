// wobjAllocations.h
//
// Memory that runs out on demand, in the test program and in the libraries that it uses.

#pragma once

#include <cstddef>

namespace wobjtest {

enum class Failing { once, forGood };

// From now on the `number`-th allocation by operator new (the first is 1) throws std::bad_alloc; with
// Failing::forGood so do all after it.
void failAllocation(std::size_t number, Failing failing);

// Memory is there again. Whether an allocation has failed in the meantime.
bool endFailing();

}  // namespace wobjtest

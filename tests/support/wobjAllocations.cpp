#include "support/wobjAllocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t allocationsLeft = 0;  // 0: no failure is asked for
thread_local bool failingForGood = false;
thread_local bool hasFailed = false;

bool isToFail() {
    if (allocationsLeft == 0 || --allocationsLeft != 0) return false;
    if (failingForGood) allocationsLeft = 1;
    hasFailed = true;
    return true;
}

}  // namespace

namespace wobjtest {

void failAllocation(std::size_t number, Failing failing) {
    hasFailed = false;
    failingForGood = failing == Failing::forGood;
    allocationsLeft = number;
}

bool endFailing() {
    allocationsLeft = 0;
    return hasFailed;
}

}  // namespace wobjtest

// The forms for arrays come down to these. A sanitizer brings its own of the rest, so they stand here too.
void* operator new(std::size_t size) {
    void* memory = isToFail() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return isToFail() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

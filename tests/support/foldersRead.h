// foldersRead.h
//
// How often this process, with the libraries in it, has opened a folder to read its names. Not on Windows.

#pragma once

namespace tests {

int foldersRead();

template <class Operation>
int foldersReadDuring(Operation operation) {
    const int before = foldersRead();
    operation();
    return foldersRead() - before;
}

}  // namespace tests

// ProjectFile.h
//
// One project file in memory: read and checked as a whole, changed by the caller, written as a whole. The
// format is in tvx_wobj.h.

#pragma once

#include <memory>
#include <string>

#include "platform/platform.h"
#include "tvx_wobj/JsonTree.h"

namespace tvxconv::wobj {

class ProjectFile {
public:
    // Reads the file and checks the type of every value that this library knows. Returns 0, or non-zero
    // with `root` undefined. May throw std::bad_alloc.
    int read(const std::string& path);

    // Replaces the file that was read by `root`; a file that the user may not write is left alone, and a
    // symbolic link is followed. Returns 0, or non-zero with the file unchanged. May throw std::bad_alloc,
    // also with the file unchanged.
    int write() const;

    // The project. After `read`: an object whose members have the types that tvx_wobj.h shows.
    JsonValue root;

private:
    std::string path_;
    unsigned permissions_ = 0;
};

// The project in the file, for reading only, as ProjectFile::read reads it. The last one is kept (unless it
// is very large) and returned again while the file has the same bytes, so that several calls in a row parse
// the text once. Returns 0, or non-zero with `root` null. May throw std::bad_alloc.
int viewProject(const std::string& path, std::shared_ptr<const JsonValue>& root);

}  // namespace tvxconv::wobj

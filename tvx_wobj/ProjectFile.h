// ProjectFile.h
//
// One project file in memory: read and checked from end to end, changed by its user, put back in one
// piece. The form of the file is in tvx_wobj.h.

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

    // Puts `root` in the place of the file that was read; a file that the user may not write is left
    // alone, and a symbolic link is followed. Returns 0, or non-zero with the file as it was. May throw
    // std::bad_alloc, with the file as it was.
    int write() const;

    // The project. After `read`: an object whose members have the types that tvx_wobj.h shows.
    JsonValue root;

private:
    std::string path_;
    unsigned permissions_ = 0;
};

// The project in the file, to look at: what ProjectFile::read makes of it. The last one is remembered and
// handed out again (unless it is very large) while the file has the same bytes, so that a row of questions
// costs one reading of the text. Returns 0, or non-zero with `root` null. May throw std::bad_alloc.
int viewProject(const std::string& path, std::shared_ptr<const JsonValue>& root);

}  // namespace tvxconv::wobj

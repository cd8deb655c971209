// TestFolder.h
//
// What tests on files share: a folder that goes with the test, reading and writing of whole files, a
// tree as a table from path to content, a child without root's rights, and running a program.

#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace tests {

// A fresh empty folder, removed with the object. Names are relative to it, with "/".
class TestFolder {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string path(const std::string& name) const { return path_ + "/" + name; }

    // Makes missing folders on the way; writes the bytes as they are. Returns the absolute path.
    std::string write(const std::string& name, const std::string& text) const;
    std::string makeFolder(const std::string& name) const;
    // Fails the test and returns "" when there is no such file.
    std::string read(const std::string& name) const;
    bool exists(const std::string& name) const;

private:
    std::string path_;
};

// A whole file. On Windows, where text files end their lines with "\r\n", the first gives "\n" for it, so
// that one expectation serves all systems.
std::string readFile(const std::string& path);
// What readFile says of a file that holds this text.
std::string asRead(const std::string& text);
std::string readBytes(const std::string& path);
void writeFile(const std::string& path, const std::string& text);

// All below `folder`: a file by its relative path with its content, a folder by its path with a slash
// at its end and no content.
using Tree = std::map<std::string, std::string>;
Tree treeOf(const std::string& folder);
void writeTree(const std::string& folder, const Tree& tree);

// Makes the symbolic link `path`, which leads to `target`. On Windows, where only some users may do that, the
// test ends as skipped.
void makeLink(const std::filesystem::path& target, const std::filesystem::path& path);

// For what has no meaning on Windows: if (kOnWindows) GTEST_SKIP() << "the reason".
#ifdef _WIN32
constexpr bool kOnWindows = true;
#else
constexpr bool kOnWindows = false;
#endif

// What the system keeps of the permission bits of a file: all, or on Windows whether it is read-only.
unsigned keptPermissions(unsigned permissions);

// Every "from" in `text` replaced by "to".
std::string replaced(std::string text, const std::string& from, const std::string& to);

// Runs `body` in a child process that has given up root (user and group 65534); true when it returned
// true. What the child prints is printed.
bool succeedsWithoutRoot(bool (*body)(void* context), void* context);
template <class Body>
bool succeedsWithoutRoot(Body body) {
    return succeedsWithoutRoot([](void* context) { return (*static_cast<Body*>(context))(); }, &body);
}

// Runs a program to its end. `folder` is its current folder ("" for ours), `environment` holds
// "NAME=value" to add. The status is that of the exit, or 128 + the signal that ended it.
struct ProgramResult {
    int status = -1;
    std::string output;
    std::string errors;
};
ProgramResult runProgram(const std::vector<std::string>& command, const std::string& folder = "",
                         const std::vector<std::string>& environment = {});

}  // namespace tests

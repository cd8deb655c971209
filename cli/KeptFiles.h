// KeptFiles.h
//
// The old files of a project while it is converted in place: each is kept under a second name, or as a
// copy where the file system has no second names, in a folder beside the project. The folder goes when
// all is well; a run that is killed leaves it, with the old files in it.

#pragma once

#include <map>
#include <string>
#include <vector>

class KeptFiles {
public:
    // `projectDir` is the folder of the project.
    explicit KeptFiles(const std::string& projectDir);

    // Where the files are kept.
    const std::string& folder() const { return folder_; }

    // Whether there is a folder of another run, with `reason` set.
    bool isLeftOver(std::string& reason) const;

    // Makes the folder. False, with `reason` set, when that cannot be done or another run has left one.
    bool begin(std::string& reason);

    // Keeps one file; `asCopy` for a file that may be written to in place. False when it cannot be kept.
    bool keep(const std::string& path, bool asCopy);

    // Puts the file back where it was, if it is gone from there or another. False when that failed.
    // The path may be in another letter case. A file that was not kept is left alone.
    bool putBack(const std::string& path);
    // The same for all files; fills `failed` with those that could not be put back.
    bool putBackAll(std::vector<std::string>& failed);

    // Where the kept form of a file is; empty when it was not kept.
    std::string keptPath(const std::string& path) const;
    // Where the file was, as it is spelled; empty when it was not kept.
    std::string oldPath(const std::string& path) const;

    // Removes the kept names and the folder. False when something of them stays.
    bool release();

private:
    struct Kept {
        std::string path;
        std::string keptAs;
        bool isCopy = false;
    };
    static bool putBack(const Kept& file);

    std::string folder_;
    std::map<std::string, Kept> files_;  // by the lower-cased path
};

// A path in the form in which paths are compared.
std::string lowerCased(const std::string& text);

// Whether two files have the same bytes.
bool haveSameBytes(const std::string& a, const std::string& b);

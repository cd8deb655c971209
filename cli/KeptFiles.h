// KeptFiles.h
//
// The old files of a project while it is converted in place: each is kept under a second name, or as a copy
// if the file system has no second names, in a folder beside the project. The folder is removed if all goes
// well; a run that is killed leaves it, with the old files in it.

#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <memory_resource>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "fsutil/letterCase.h"

// The form in which paths are compared.
std::string lowerCased(const std::string& text);

class KeptFiles {
public:
    // `projectDir` is the folder of the project.
    explicit KeptFiles(const std::string& projectDir);

    // The folder that holds the kept files.
    const std::string& folder() const { return folder_; }

    // Whether another run has left its folder; if so, `reason` says it.
    bool isLeftOver(std::string& reason) const;

    // Makes the folder. False, with `reason` set, if that fails or another run has left one.
    bool begin(std::string& reason);

    // Keeps one file; `asCopy` for a file that may be written to in place. False if it cannot be kept.
    bool keep(const std::string& path, bool asCopy);

    // Restores the file at its old path if it is missing there or has been replaced. False if that failed.
    // The path may be in another letter case. A file that was not kept is left alone.
    bool putBack(const std::string& path);
    // The same for all files; `failed` gets those that could not be restored.
    bool putBackAll(std::vector<std::string>& failed);

    // The path of the kept file; empty if it was not kept.
    std::string keptPath(const std::string& path) const;
    // The old path of the file in its own spelling; empty if it was not kept.
    std::string oldPath(const std::string& path) const;

    // Removes the kept files and the folder. False if any of them could not be removed.
    bool release();

private:
    // There may be hundreds of thousands: the paths are stored one after the other in large blocks, freed
    // together.
    struct Kept {
        std::string_view path;
        std::size_t number = 0;
        mutable bool isCopy = false;  // known once the file has been kept
    };
    struct PathHash {
        std::size_t operator()(const Kept& file) const {
            return std::hash<std::string>()(lowerCased(std::string(file.path)));
        }
    };
    struct SamePath {
        bool operator()(const Kept& a, const Kept& b) const {
            return tvxconv::fsutil::equalIgnoringCase(a.path, b.path);
        }
    };
    struct Files {
        std::pmr::monotonic_buffer_resource memory;
        std::pmr::unordered_set<Kept, PathHash, SamePath> set{&memory};
    };

    // Null if the path was not kept.
    const Kept* find(const std::string& path) const;
    std::string keptAs(const Kept& file) const;
    bool putBack(const Kept& file) const;

    std::string folder_;
    std::unique_ptr<Files> files_ = std::make_unique<Files>();
};

// Whether two files have the same bytes.
bool haveSameBytes(const std::string& a, const std::string& b);
